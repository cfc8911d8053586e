"""The examples, run against a server in another process."""
import os
import socket
import subprocess
import sys
import unittest
import urllib.request
import xmlrpc.client

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support", "python"))

from peer_process import Peer, SOAPPeer  # noqa: E402

EXAMPLES = os.environ["EXAMPLES"]
REASON = "failed: HTTP/1.1 404 Not Found\n"
HUNDRED = "100 answers, 0 faults, sum %d\n" % sum(range(1, 101))


class ExamplesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.peer = Peer()
        cls.addClassCleanup(cls.peer.stop)

    def check(self, status, output, complaint, name, *arguments):
        run = subprocess.run([os.path.join(EXAMPLES, "example_" + name), *arguments], stdin=subprocess.DEVNULL,
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60, check=False, text=True)
        self.assertEqual((run.returncode, run.stdout), (status, output), (name, run.stderr))
        self.assertRegex(run.stderr, complaint or r"\A\Z")

    def test_clients_tell_results_faults_and_failures_apart(self):
        url, soap = self.peer.url, SOAPPeer()
        self.addCleanup(soap.stop)
        with socket.socket() as closed:
            closed.bind(("127.0.0.1", 0))
            for row in [
                (0, "5\n", "", "call", url()),
                (1, REASON, "", "call", url("/status/404")),
                (1, "failed: fault 7 of the server: one\ntwo\x7fthree\n", "", "call", url("/lines-in-fault")),
                (0, "é & <b>\n", "", "call_in_c", url(), "é & <b>"),
                (1, "", "fault 7 of the server: one", "call_in_c", url("/lines-in-fault"), "x"),
                (3, "", "404 Not Found", "call_in_c", url("/status/404"), "x"),
                (3, "", "refused", "call_in_c", "http://127.0.0.1:%d/" % closed.getsockname()[1], "x"),
                (0, HUNDRED, "", "concurrent_calls", url()),
                (1, "100 answers, 100 faults, sum 0\n", "", "concurrent_calls", url("/hang-up")),
                (0, "(-4.5, 3)\n", "", "soap_points", soap.url(), "3", "-4.5"),
                (1, REASON, "", "soap_points", url("/status/404"), "1", "2"),
                (2, "", "usage", "call"), (2, "", "usage", "call_in_c"), (2, "", "usage", "concurrent_calls"),
                (2, "", "usage", "soap_points"),
                (2, "", "is not a URL", "call", ""), (2, "", "is not a URL", "concurrent_calls", ""),
                (2, "", "is not a URL", "soap_points", "", "1", "2"),
            ]:
                self.check(*row)

    def test_server_answers_any_number_of_threads_and_any_bytes(self):
        path = os.path.join(EXAMPLES, "example_server")
        if not os.path.exists(path):
            self.skipTest("it was built without the HTTP library that the example uses")
        with subprocess.Popen([path, "0"], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as server:
            url = "http://127.0.0.1:%d/" % int(server.stdout.readline())
            for output, *command in [("5\n", "call", url), (HUNDRED, "concurrent_calls", url),
                                     ("é & <b>\n", "call_in_c", url, "é & <b>")]:
                self.check(0, output, "", *command)
            with xmlrpc.client.ServerProxy(url) as proxy:
                for call in (lambda: proxy.add(1, "b"), lambda: proxy.add(2147483647, 1), lambda: proxy.nope()):
                    self.assertRaises(xmlrpc.client.Fault, call)
            with urllib.request.urlopen(url, b"<junk", timeout=60) as reply:
                self.assertIn(b"<fault>", reply.read())
            with self.assertRaises(OSError):
                urllib.request.urlopen(url, bytes(5 << 20), timeout=60)
            server.stdin.close()
            self.assertEqual(server.wait(timeout=60), 0)

"""The examples, run against a server in another process."""
import os
import socket
import unittest
import urllib.request
import xmlrpc.client

from toolcase import Peer, Process, reply, response, run, soap_peer

EXAMPLES = os.environ["EXAMPLES"]
REASON = "failed: HTTP/1.1 404 Not Found\n"
HUNDRED = "100 answers, 0 faults, sum %d\n" % sum(range(1, 101))


class ExamplesTest(unittest.TestCase):
    def check(self, status, output, complaint, name, *arguments):
        ended = run(os.path.join(EXAMPLES, "example_" + name), *arguments)
        self.assertEqual((ended.returncode, ended.stdout), (status, output), (name, ended.stderr))
        self.assertRegex(ended.stderr, complaint or r"\A\Z")

    def test_clients_tell_results_faults_and_failures_apart(self):
        peer = Peer({"/404": reply("", "404 Not Found"), "/fault": response(xmlrpc.client.Fault(7, "one\ntwo")), "/hang-up": b""})
        soap, url = soap_peer(), peer.url
        self.addCleanup(peer.stop)
        self.addCleanup(soap.stop)
        with socket.socket() as closed:
            closed.bind(("127.0.0.1", 0))
            for row in [
                (0, "5\n", "", "call", url()), (1, REASON, "", "call", url("/404")),
                (1, "failed: fault 7 of the server: one\ntwo\n", "", "call", url("/fault")),
                (0, "é & <b>\n", "", "call_in_c", url(), "é & <b>"),
                (1, "", "fault 7 of the server: one", "call_in_c", url("/fault"), "x"),
                (3, "", "404 Not Found", "call_in_c", url("/404"), "x"),
                (3, "", "refused", "call_in_c", "http://127.0.0.1:%d/" % closed.getsockname()[1], "x"),
                (0, HUNDRED, "", "concurrent_calls", url()),
                (1, "100 answers, 100 faults, sum 0\n", "", "concurrent_calls", url("/hang-up")),
                (0, "(-4.5, 3)\n", "", "soap_points", soap.url(), "3", "-4.5"),
                (1, REASON, "", "soap_points", url("/404"), "1", "2"),
                *[(2, "", "usage", name) for name in ("call", "call_in_c", "concurrent_calls", "soap_points")],
                (2, "", "is not a URL", "call", ""), (2, "", "is not a URL", "concurrent_calls", ""),
                (2, "", "is not a URL", "soap_points", "", "1", "2"),
            ]:
                self.check(*row)

    @unittest.skipUnless(os.path.exists(EXAMPLES + "/example_server"), "built without the HTTP library that it uses")
    def test_server_answers_any_number_of_threads_and_any_bytes(self):
        server = Process(EXAMPLES + "/example_server", "0")
        url = server.url("/")
        for output, *command in [("5\n", "call", url), (HUNDRED, "concurrent_calls", url),
                                 ("é & <b>\n", "call_in_c", url, "é & <b>")]:
            self.check(0, output, "", *command)
        with xmlrpc.client.ServerProxy(url) as proxy:
            for call in (lambda: proxy.add(1, "b"), lambda: proxy.add(2147483647, 1), lambda: proxy.nope()):
                self.assertRaises(xmlrpc.client.Fault, call)
        with urllib.request.urlopen(url, b"<junk", timeout=60) as answer:
            self.assertIn(b"<fault>", answer.read())
        with self.assertRaises(OSError):
            urllib.request.urlopen(url, bytes(5 << 20), timeout=60)
        server.process.stdin.close()
        self.assertEqual(server.process.wait(60), 0)

"""The examples, run against a server in another process."""
import os
import re
import socket
import subprocess
import sys
import unittest
import urllib.request
import xmlrpc.client

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support", "python"))

from peer_process import Peer, SOAPPeer  # noqa: E402

EXAMPLES = os.environ["EXAMPLES"]


def run_example(name, *arguments):
    return subprocess.run([os.path.join(EXAMPLES, "example_" + name), *arguments], stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60, check=False, text=True)


class ExamplesTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.peer = Peer()
        cls.addClassCleanup(cls.peer.stop)

    def assert_run(self, run, status, output, complaint=r"\A\Z"):
        self.assertEqual((run.returncode, run.stdout), (status, output), run.stderr)
        self.assertRegex(run.stderr, complaint)

    def test_call_prints_the_value(self):
        self.assert_run(run_example("call", self.peer.url()), 0, "5\n")

    def test_call_tells_a_failure(self):
        reason = '{"msg": "HTTP/1.1 404 Not Found", "domain": -1, "error": -65795}'
        self.assert_run(run_example("call", self.peer.url("/status/404")), 1, "failed: " + reason + "\n")
        self.assert_run(run_example("call", self.peer.url("/lines-in-fault")), 1, "failed: one\ntwo\x7fthree\n")

    def test_c_program_tells_the_three_ends_apart(self):
        self.assert_run(run_example("call_in_c", self.peer.url(), "é & <b>"), 0, "é & <b>\n")
        self.assert_run(run_example("call_in_c", self.peer.url("/status/404"), "x"), 3, "", "404 Not Found")
        self.assert_run(run_example("call_in_c", self.peer.url("/lines-in-fault"), "x"), 1, "", "fault 7: one")
        with socket.socket() as closed:
            closed.bind(("127.0.0.1", 0))
            url = "http://127.0.0.1:%d/" % closed.getsockname()[1]
            self.assert_run(run_example("call_in_c", url, "x"), 3, "", "refused")

    def test_hundred_concurrent_calls_get_a_hundred_answers(self):
        run = run_example("concurrent_calls", self.peer.url())
        self.assert_run(run, 0, "100 answers, 0 faults, sum %d\n" % sum(range(1, 101)))

    def test_concurrent_calls_that_fail_are_all_answered(self):
        run = run_example("concurrent_calls", self.peer.url("/hang-up"))
        self.assert_run(run, 1, "100 answers, 100 faults, sum 0\n")

    def test_values_of_another_class_go_to_a_soap_server_and_back(self):
        peer = SOAPPeer()
        self.addCleanup(peer.stop)
        self.assert_run(run_example("soap_points", peer.url(), "3", "-4.5"), 0, "(-4.5, 3)\n")
        self.assert_run(run_example("soap_points", self.peer.url("/status/404"), "1", "2"), 1,
                        "failed: /BQStreamFault\n")

    def test_server_answers_any_number_of_threads_and_any_bytes(self):
        path = os.path.join(EXAMPLES, "example_server")
        if not os.path.exists(path):
            self.skipTest("it was built without the HTTP library that the example uses")
        with subprocess.Popen([path, "0"], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as server:
            url = "http://127.0.0.1:%d/" % int(server.stdout.readline())
            self.assert_run(run_example("call", url), 0, "5\n")
            run = run_example("concurrent_calls", url)
            self.assert_run(run, 0, "100 answers, 0 faults, sum %d\n" % sum(range(1, 101)))
            self.assert_run(run_example("call_in_c", url, "é & <b>"), 0, "é & <b>\n")
            with xmlrpc.client.ServerProxy(url) as proxy:
                for call in (lambda: proxy.add(1, "b"), lambda: proxy.add(2147483647, 1), lambda: proxy.nope()):
                    self.assertRaises(xmlrpc.client.Fault, call)
            with urllib.request.urlopen(url, b"<junk", timeout=60) as reply:
                self.assertIn(b"<fault>", reply.read())
            with self.assertRaises(OSError):
                urllib.request.urlopen(url, bytes(5 << 20), timeout=60)
            server.stdin.close()
            self.assertEqual(server.wait(timeout=60), 0)

    def test_wrong_arguments_show_the_usage(self):
        for name in ("call", "call_in_c", "concurrent_calls", "soap_points"):
            self.assertTrue(re.search("usage", run_example(name).stderr), name)


if __name__ == "__main__":
    unittest.main()

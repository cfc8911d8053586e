"""What the tests of vxcall share: the program under test and a server in another process."""
import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support", "python"))

from peer_process import Peer, SOAPDocumentPeer, SOAPPeer  # noqa: E402

VXCALL = os.environ["VXCALL"]


def vxcall(*arguments, **options):
    """Runs vxcall to its end."""
    options.setdefault("stdout", subprocess.PIPE)
    return subprocess.run([VXCALL, *map(str, arguments)], stdin=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          timeout=90, check=False, **options)


class VxcallCase(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.peer = Peer()
        cls.addClassCleanup(cls.peer.stop)

    def call(self, *arguments):
        """The standard output of a call of the peer that must succeed, without complaint."""
        run = vxcall(self.peer.url(), *arguments)
        self.assertEqual((run.returncode, run.stderr), (0, b""), arguments)
        return run.stdout.decode()

    def assert_complaint(self, run, status, *fragments):
        """One line on standard error that holds the fragments, and nothing on standard output."""
        line = run.stderr.decode()
        self.assertEqual((run.returncode, run.stdout or b""), (status, b""), line)
        self.assertRegex(line, r"\Avxcall: [^\n]*\n\Z")
        for fragment in fragments:
            self.assertIn(fragment, line)

"""What the tests of vxcall share: the program under test and a server in another process."""
import contextlib
import os
import re
import socketserver
import subprocess
import sys
import tempfile
import threading
import unittest
import xmlrpc.client

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support", "python"))

from peer_process import Peer, SOAPDocumentPeer, SOAPPeer  # noqa: E402

VXCALL = os.environ["VXCALL"]
# What a terminal obeys or reorders, and how it is shown instead.
CONTROLS = "\u0085\u009b2J\x7f\u061c\u200e\u202e\u2069"
ESCAPED = "".join(c if c in "2J" else "\\u%04x" % ord(c) for c in CONTROLS)
# Nothing that is printed holds these, nor the password of the tests.
UNSHOWN = "[\x00-\x08\x0b-\x1f\x7f-\x9f\u061c\u200e\u200f\u202a-\u202e\u2066-\u2069]|s3cret"


def vxcall(*arguments, **options):
    """Runs vxcall to its end."""
    options.setdefault("stdout", subprocess.PIPE)
    if "input" not in options:
        options.setdefault("stdin", subprocess.DEVNULL)
    return subprocess.run([VXCALL, *(a if isinstance(a, bytes) else str(a) for a in arguments)],
                          stderr=subprocess.PIPE, timeout=90, check=False, **options)


def reply(body):
    """A whole reply with a body, which is text."""
    body = body.encode()
    return b"HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: %d\r\n\r\n" % len(body) + body


class RawHandler(socketserver.StreamRequestHandler):
    def handle(self):
        head = b""
        while not head.endswith(b"\r\n\r\n"):
            head += self.rfile.readline() or b"\r\n\r\n"
        length = re.search(rb"(?i)\r\ncontent-length: *(\d+)", head)
        self.server.requests.append(head + self.rfile.read(int(length[1]) if length else 0))
        self.server.arrived.set()
        self.server.may_answer.wait()
        with contextlib.suppress(OSError):  # Some callers do not wait.
            self.request.sendall(self.server.answer)


class RawServer(socketserver.TCPServer):
    """Keeps each request as it came, one on each connection, and answers with the same bytes when it may."""

    def __init__(self, answer):
        super().__init__(("127.0.0.1", 0), RawHandler)
        self.url = "http://127.0.0.1:%d/RPC2" % self.server_address[1]
        self.answer, self.requests = answer, []
        self.arrived, self.may_answer = threading.Event(), threading.Event()
        self.may_answer.set()
        threading.Thread(target=self.serve_forever, args=(0.01,), daemon=True).start()

    def stop(self):
        self.may_answer.set()
        self.shutdown()
        self.server_close()


class VxcallCase(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.peer = Peer()
        cls.addClassCleanup(cls.peer.stop)

    def raw_server(self, answer=None):
        server = RawServer(answer or reply(xmlrpc.client.dumps((7,), methodresponse=True)))
        self.addCleanup(server.stop)
        return server

    def folder(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return folder.name

    def tls_peer(self):
        """A peer that speaks https, and the file of its certificate for 127.0.0.1, which vouches for itself."""
        certificate, key = (os.path.join(self.folder(), name) for name in ("certificate.pem", "key.pem"))
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                        "-days", "2", "-subj", "/CN=localhost", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key,
                        "-out", certificate], check=True, stderr=subprocess.DEVNULL)
        peer = Peer("--tls", certificate, key)
        self.addCleanup(peer.stop)
        return peer, certificate

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
        self.assertNotRegex(line, UNSHOWN)
        for fragment in fragments:
            self.assertIn(fragment, line)

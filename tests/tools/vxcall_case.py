"""What the tests of vxcall share: the program under test and a server in another process."""
import os
import socket
import subprocess
import sys
import tempfile
import threading
import unittest
import xmlrpc.client

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support", "python"))

from peer_process import Peer, SOAPDocumentPeer, SOAPPeer  # noqa: E402

VXCALL = os.environ["VXCALL"]


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


def reply_with(value):
    return reply(xmlrpc.client.dumps((value,), methodresponse=True))


class RawServer:
    """Keeps each request as it came, one on each connection, and answers with the same bytes when it may."""

    def __init__(self, answer=None):
        self.answer = answer or reply_with(7)
        self.requests = []
        self.arrived = threading.Event()
        self.may_answer = threading.Event()
        self.may_answer.set()
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.url = "http://127.0.0.1:%d/RPC2" % self.listener.getsockname()[1]
        self.thread = threading.Thread(target=self.serve, daemon=True)
        self.thread.start()

    def serve(self):
        while True:
            try:
                connection = self.listener.accept()[0]
            except OSError:
                return
            with connection, connection.makefile("rb") as stream:
                self.requests.append(self.read_request(stream))
                self.arrived.set()
                self.may_answer.wait()
                try:
                    connection.sendall(self.answer)
                except OSError:
                    pass  # Some callers do not wait.

    @staticmethod
    def read_request(stream):
        lines = []
        length = 0
        while not lines or lines[-1] not in (b"", b"\r\n"):
            lines.append(stream.readline())
            if lines[-1].lower().startswith(b"content-length:"):
                length = int(lines[-1].split(b":")[1])
        return b"".join(lines) + stream.read(length)

    def stop(self):
        self.may_answer.set()
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()
        self.thread.join()


def make_certificate(folder):
    """The files of a certificate for 127.0.0.1 that vouches for itself, and of its key."""
    certificate, key = os.path.join(folder, "certificate.pem"), os.path.join(folder, "key.pem")
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                    "-days", "2", "-subj", "/CN=localhost", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key,
                    "-out", certificate], check=True, stderr=subprocess.DEVNULL)
    return certificate, key


class VxcallCase(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.peer = Peer()
        cls.addClassCleanup(cls.peer.stop)

    def raw_server(self, answer=None):
        server = RawServer(answer)
        self.addCleanup(server.stop)
        return server

    def folder(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return folder.name

    def tls_peer(self):
        """A peer that speaks https, and the file of the certificate to trust."""
        certificate, key = make_certificate(self.folder())
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
        for fragment in fragments:
            self.assertIn(fragment, line)

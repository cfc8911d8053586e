"""What the tests in Python talk to: server programs, and an XML-RPC server within the test."""
import atexit
import contextlib
import os
import re
import signal
import socketserver
import ssl
import subprocess
import threading
import urllib.parse
import xmlrpc.client
import xmlrpc.server

SUPPORT = os.path.dirname(os.path.abspath(__file__))


class Process:
    """A server program. Its first line is its URL or port."""

    def __init__(self, *command):
        self.process = subprocess.Popen(list(map(str, command)), stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE)
        # A test that fails before it stops its server must not leave it running.
        atexit.register(self.process.kill)
        self.root = self.process.stdout.readline().decode().split()[-1]
        self.port = int(re.search(r"\d+(?=/?$)", self.root)[0])

    def url(self, path="/RPC2"):
        return "http://127.0.0.1:%d%s" % (self.port, path)

    def stop(self, number=signal.SIGTERM):
        """The exit status, and what it printed to standard error."""
        if self.process.poll() is None:
            self.process.send_signal(number)
        return self.wait()

    def wait(self):
        output, errors = self.process.communicate(timeout=60)
        assert output == b"", output
        return self.process.returncode, errors.decode()


def soap_peer():
    """The SOAP server of soap_lite.pl."""
    return Process("perl", os.path.join(SUPPORT, "soap_lite.pl"))


def reply(body, status="200 OK", headers=""):
    """A whole reply with a body, which is text."""
    body = body.encode()
    head = "HTTP/1.1 %s\r\nContent-Type: text/xml\r\nContent-Length: %d\r\n%s\r\n" % (status, len(body), headers)
    return head.encode() + body


def response(value):
    """The reply with a value or a fault."""
    fault = isinstance(value, xmlrpc.client.Fault)
    return reply(xmlrpc.client.dumps(value if fault else (value,), methodresponse=True))


def make_certificate(folder):
    """The files of a certificate for 127.0.0.1, which is its own authority, and of its key."""
    files = [os.path.join(folder, name) for name in ("certificate.pem", "key.pem")]
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                    "-days", "2", "-subj", "/CN=localhost", "-addext", "subjectAltName=IP:127.0.0.1", "-out", files[0],
                    "-keyout", files[1]], check=True, stderr=subprocess.DEVNULL)
    return files


class Handler(socketserver.StreamRequestHandler):
    def handle(self):
        self.server.connections += 1
        with contextlib.suppress(OSError):  # Some callers do not wait for an answer.
            while self.answer():
                pass

    def answer(self):
        """Whether the connection goes on."""
        self.head = b""
        while not self.head.endswith(b"\r\n\r\n"):
            line = self.rfile.readline()
            self.head += line
            if not line:
                return False
        path = urllib.parse.urlsplit(self.head.split()[1].decode()).path
        if path == "/hang-up-early":
            return False
        length = re.search(rb"(?i)\r\ncontent-length: *(\d+)", self.head)
        body = self.rfile.read(int(length[1]) if length else 0)
        self.server.requests.append(self.head + body)
        if path == "/silence":
            self.rfile.read(1)  # Ends when the caller gives up.
            return False
        answer = self.server.answers.get(path)
        if answer is None:
            answer = reply(self.server.perform(body, self.head))
        self.server.arrived.set()
        self.server.may_answer.wait()
        self.wfile.write(answer)
        return bool(answer)


class Peer(socketserver.ThreadingTCPServer, xmlrpc.server.SimpleXMLRPCDispatcher):
    """
    An XML-RPC server that keeps every request as it came. The answers to some paths are given in bytes, where none
    closes the connection; /silence gives none at all, and /hang-up-early closes before it has read the request.
    """
    daemon_threads = True
    request_queue_size = 256

    def __init__(self, answers=None, certificate=None):
        socketserver.ThreadingTCPServer.__init__(self, ("127.0.0.1", 0), Handler)
        xmlrpc.server.SimpleXMLRPCDispatcher.__init__(self)
        self.answers, self.requests, self.connections = answers or {}, [], 0
        self.arrived, self.may_answer = threading.Event(), threading.Event()
        self.may_answer.set()
        self.scheme = "https" if certificate else "http"
        if certificate:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(*certificate)
            self.socket = context.wrap_socket(self.socket, server_side=True)
        for function in (self.echo, self.echo_all, self.add, self.fault, self.kind, self.request):
            self.register_function(function)
        threading.Thread(target=self.serve_forever, args=(0.01,), daemon=True).start()

    def url(self, path="/RPC2"):
        return "%s://127.0.0.1:%d%s" % (self.scheme, self.server_address[1], path)

    def stop(self):
        self.may_answer.set()
        self.shutdown()
        self.server_close()

    def handle_error(self, request, client_address):
        """A caller that does not trust the certificate is part of the tests."""

    current = threading.local()

    def perform(self, body, head):
        self.current.head = head.decode()
        return self._marshaled_dispatch(body).decode()

    def echo(self, value=""):
        return value

    def echo_all(self, *values):
        return list(values)

    def add(self, a, b):
        return a + b

    def fault(self, code, text):
        raise xmlrpc.client.Fault(code, text)

    def kind(self, value):
        """The Python type of what arrived, and its value in Python's own notation."""
        shown = value.data if isinstance(value, xmlrpc.client.Binary) else value
        return [type(value).__name__, str(shown) if isinstance(value, xmlrpc.client.DateTime) else repr(shown)]

    def request(self):
        """The lines of this very request, without its body."""
        return self.current.head.split("\r\n")[:-2]

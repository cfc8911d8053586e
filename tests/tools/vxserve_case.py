"""What the tests of vxserve share: the server under test, and exchanges with it byte by byte."""
import atexit
import contextlib
import http.client
import os
import signal
import socket
import subprocess
import unittest

VXSERVE = os.environ["VXSERVE"]


def document(name, *values):
    """A call whose parameters are written as they are to stand in the document."""
    parameters = "".join("<param><value>%s</value></param>" % value for value in values)
    return ("<?xml version='1.0'?><methodCall><methodName>%s</methodName><params>%s</params></methodCall>"
            % (name, parameters)).encode()


def add_document(a, b):
    return document("add", "<int>%d</int>" % a, "<int>%d</int>" % b)


def slow_document(seconds):
    return document("slow", "<double>%f</double>" % seconds)


def request(body):
    return b"POST /RPC2 HTTP/1.1\r\nHost: a\r\nContent-Length: %d\r\n\r\n" % len(body) + body


class Server:
    """A vxserve on a free port."""

    def __init__(self, *arguments, descriptors=None):
        limit = ["prlimit", "--nofile=%d" % descriptors] if descriptors else []
        self.process = subprocess.Popen([*limit, VXSERVE, "--port", "0", *map(str, arguments)], stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        # A test that fails before it stops its server must not leave it behind.
        atexit.register(self.process.kill)
        line = self.process.stdout.readline().decode()
        self.root = line.removeprefix("listening on ").rstrip("\n")
        self.port = int(self.root.rstrip("/").rsplit(":", 1)[1])

    def url(self, path="/RPC2"):
        return self.root.rstrip("/") + path

    def connect(self):
        """A connection that no test waits on for ever."""
        return socket.create_connection(("127.0.0.1", self.port), timeout=60)

    def post(self, body, path="/RPC2", method="POST", headers=None):
        """The status, the headers and the body of the answer to one request."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        with contextlib.closing(connection):
            connection.request(method, path, body, headers or {})
            response = connection.getresponse()
            return response.status, response.headers, response.read()

    def status(self, field):
        """A figure of the process, as the system tells it."""
        with open("/proc/%d/status" % self.process.pid) as status:
            return next(int(line.split()[1]) for line in status if line.startswith(field + ":"))

    def stop(self, number=signal.SIGTERM):
        """The exit status and what was printed to standard error."""
        if self.process.returncode is None:
            self.process.send_signal(number)
        return self.wait()

    def wait(self):
        output, errors = self.process.communicate(timeout=60)
        assert output == b"", output
        return self.process.returncode, errors.decode()


def read_response(stream):
    """The status and the body of one answer on a connection that goes on."""
    status_line = stream.readline()
    headers = http.client.parse_headers(stream)
    return int(status_line.split()[1]), headers, stream.read(int(headers["Content-Length"]))


class ServerCase(unittest.TestCase):
    maxDiff = None
    options = ()

    @classmethod
    def setUpClass(cls):
        cls.server = Server(*cls.options)
        cls.addClassCleanup(cls.check_stop)

    @classmethod
    def check_stop(cls):
        """Whatever was done to it, the server stops as it should, and complains of nothing."""
        status, errors = cls.server.stop()
        if status != 0 or (errors and "--log" not in cls.options):
            raise AssertionError("vxserve ended with %d: %s" % (status, errors))

    def assert_serves(self):
        status, _, body = self.server.post(add_document(40, 2))
        self.assertEqual((status, b"<i4>42</i4>" in body), (200, True), body)

"""vxserve as a process: its options, its log, its end."""
import contextlib
import re
import select
import signal
import socket
import subprocess
import time
import unittest

from vxserve_case import VXSERVE, Server, add_document, document, read_response, request, slow_document


def run(*arguments):
    return subprocess.run([VXSERVE, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=60, check=False, text=True)


class CommandLineTest(unittest.TestCase):
    def test_what_cannot_be_is_told_in_a_line(self):
        help_ = "; vxserve --help lists the options"
        with socket.create_server(("127.0.0.1", 0)) as taken:
            port = taken.getsockname()[1]
            for status, complaint, *arguments in [
                (2, "--port: '65536' is no whole number from 0 to 65535" + help_, "--port", "65536"),
                (2, "--port: '-1' is no", "--port", "-1"), (2, "--port: 'x' is no", "--port", "x"),
                (2, "--threads: '0' is no whole number from 1 to 1024" + help_, "--threads", "0"),
                (2, "--deadline: '0' is no", "--deadline", "0"), (2, "--max-body: '0' is no", "--max-body", "0"),
                (2, "--max-body is given without its BYTES" + help_, "--max-body"), (2, "--log takes no value", "--log=x"),
                (2, "there is no option 8080" + help_, "8080"), (2, "there is no option --nope" + help_, "--nope"),
                (2, "there is no option --prot; did you mean --port?\n", "--prot=1"),
                (2, "there is no option --max; did you mean --max-body?\n", "--max"),
                (1, "cannot listen on 127.0.0.1 port %d: Address already in use; give --port another port" % port, "--port", str(port)),
                (1, "give --address an address of this machine", "--address", "192.0.2.1"),
                (1, "give --address an address of this machine", "--address", "no such host"),
            ]:
                ended = run(*arguments)
                self.assertEqual((ended.returncode, ended.stdout), (status, ""), arguments)
                self.assertRegex(ended.stderr, r"\Avxserve: [^\n]+\n\Z")
                self.assertIn(complaint, ended.stderr)

    def test_help_fits_a_screen_and_has_the_options(self):
        ended = run("--help")
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        lines = ended.stdout.splitlines()
        self.assertTrue(len(lines) < 40 and max(map(len, lines)) <= 80, lines)
        for option in ("--address", "--port", "--threads", "--max-body", "--deadline", "--log", "--version", "--help"):
            self.assertIn(option, ended.stdout)
        self.assertRegex(run("--version").stdout, r"\Avxserve \d+\.\d+\.\d+\n\Z")

    def test_listens_where_it_is_told(self):
        for address, host in (("127.0.0.1", r"127\.0\.0\.1"), ("localhost", r"(127\.0\.0\.1|\[::1\])"),
                              ("0.0.0.0", r"0\.0\.0\.0")):
            server = Server("--address", address, "--threads", "1")
            self.assertRegex(server.root, r"\Ahttp://%s:\d+/\Z" % host)
            self.assertEqual(server.stop(signal.SIGINT), (0, ""))


class LogTest(unittest.TestCase):
    LINE = r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z 127\.0\.0\.1:\d+ (\S+) (\S+) (\S+) \d+us"

    def test_has_a_safe_line_for_each_request(self):
        rows = [("/RPC2", add_document(1, 2), ("xml-rpc", "add", "ok")),
                ("/RPC2", add_document(1, 99999999999), ("xml-rpc", "add", "fault:-32602")),
                ("/RPC2", b"junk", ("xml-rpc", "-", "fault:-32700")), ("/soap", b"junk", ("soap-2001", "-", "fault:-32700")),
                ("/nowhere", b"", ("-", "-", "http-404")),
                ("/RPC2", document("a\nb ok 1us\n&#x9b;\u202e\\\"&#x7f;"),
                 ("xml-rpc", r"a\x0Ab\x20ok\x201us\x0A\xC2\x9B\xE2\x80\xAE\x5C\x22\x7F", "fault:-32601")),
                ("/RPC2", document("x" * 5000), ("xml-rpc", "x" * 200 + "...", "fault:-32601"))]
        server = Server("--log")
        for path, body, _ in rows:
            server.post(body, path)
        status, log = server.stop()
        self.assertEqual(status, 0)
        told = [re.fullmatch(self.LINE, line) for line in log.splitlines()]
        self.assertNotIn(None, told, log)
        # A line is written once its answer was sent, so that those of two threads may change places.
        self.assertCountEqual([line.groups() for line in told], [wanted for _, _, wanted in rows])


class HeldRequestsTest(unittest.TestCase):
    def test_are_bounded_and_hold_nobody_up_and_are_dropped_when_their_clients_leave(self):
        descriptors, reserved = 256, 64
        server = Server("--log", "--threads", 2, descriptors=descriptors)
        with contextlib.ExitStack() as stack:
            connections = [stack.enter_context(server.connect()) for _ in range((descriptors - reserved) // 2 + 1)]
            for connection in connections:
                connection.sendall(request(slow_document(20)))
            # The one that is refused tells that all others are held.
            refused = select.select(connections, [], [])[0]
            self.assertEqual([read_response(connection.makefile("rb"))[0] for connection in refused], [503])
            self.assertEqual(server.post(add_document(1, 2))[0], 200)
        # Those that are not dropped get their result in the end.
        lines = [server.process.stderr.readline() for _ in range(len(connections) + 1)]
        self.assertEqual(sum(b" slow http-503" in line for line in lines), len(connections), lines)
        self.assertEqual(server.stop(), (0, ""))


class StopTest(unittest.TestCase):
    def begin(self, stack, server, length):
        """A connection with a request that has begun: the server asks for its body."""
        connection = stack.enter_context(server.connect())
        stream = stack.enter_context(connection.makefile("rb"))
        connection.sendall(b"POST /RPC2 HTTP/1.1\r\nHost: a\r\nExpect: 100-continue\r\nContent-Length: %d\r\n\r\n" % length)
        self.assertEqual(stream.readline() + stream.readline(), b"HTTP/1.1 100 Continue\r\n\r\n")
        return connection, stream

    def test_lets_running_requests_finish_and_takes_no_others(self):
        server, body = Server(), slow_document(0.3)
        with contextlib.ExitStack() as stack:
            begun = [self.begin(stack, server, len(body)) for _ in range(20)]
            server.process.send_signal(signal.SIGTERM)
            self.wait_until_refused(server)
            for connection, stream in begun:
                connection.sendall(body)
                status, headers, answer = read_response(stream)
                self.assertEqual((status, headers["Connection"], b"done" in answer), (200, "close", True))
            self.assertEqual(server.wait(), (0, ""))

    def test_cuts_short_what_takes_too_long(self):
        # Without the second signal the shorter call would end by itself.
        for signals, seconds in ((1, 500), (2, 5)):
            server, body = Server(), slow_document(seconds)
            with contextlib.ExitStack() as stack:
                connection, stream = self.begin(stack, server, len(body))
                self.begin(stack, server, 1)
                server.process.send_signal(signal.SIGTERM)
                self.wait_until_refused(server)
                connection.sendall(body)
                if signals == 2:
                    server.process.send_signal(signal.SIGTERM)
                self.assertEqual(read_response(stream)[0], 503)
                self.assertEqual(server.wait(), (0, ""))

    def wait_until_refused(self, server):
        end = time.monotonic() + 30
        with contextlib.suppress(OSError):
            while time.monotonic() < end:
                server.connect().close()
            self.fail("the server goes on accepting")

    def test_under_load_answers_whole_or_not_at_all(self):
        server = Server("--threads", "2")
        load = [subprocess.Popen(["python3", "-c", LOAD, str(server.port)], stdout=subprocess.PIPE) for _ in range(4)]
        for process in load:
            self.assertEqual(process.stdout.readline(), b"going\n")
        server.process.send_signal(signal.SIGTERM)
        self.assertEqual(server.wait(), (0, ""))
        for process in load:
            output, _ = process.communicate(timeout=60)
            self.assertRegex(output, rb"\A\d+ whole\n\Z")


# Calls over a kept connection until the server is gone; an answer that has begun must end.
LOAD = """
import http.client, sys
body = b"<?xml version='1.0'?><methodCall><methodName>types</methodName></methodCall>"
count = 0
connection = http.client.HTTPConnection("127.0.0.1", int(sys.argv[1]), timeout=30)
while True:
    try:
        connection.request("POST", "/RPC2", body)
        response = connection.getresponse()
    except (OSError, http.client.RemoteDisconnected, http.client.BadStatusLine):
        break
    assert response.read().endswith(b"</methodResponse>\\r\\n")
    count += 1
    if count == 50:
        print("going", flush=True)
print(count, "whole")
"""

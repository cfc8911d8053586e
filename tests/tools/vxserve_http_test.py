"""What vxserve does with bodies and connections that are not as they should be."""
import concurrent.futures
import contextlib
import resource
import socket
import xmlrpc.client

from vxserve_case import ServerCase, add_document, document, read_response, request, slow_document

SOAP_CALL = (b'<?xml version="1.0"?><E:Envelope xmlns:E="http://schemas.xmlsoap.org/soap/envelope/"><E:Body>%s</E:Body>'
             b'</E:Envelope>')
CALL = b"<?xml version='1.0'?><methodCall>%s</methodCall>"
ADD, LIMIT = add_document(1, 2), 100000
NOT_A_REQUEST = {
    "empty": b"", "blanks": b" \r\n ", "zeros": bytes(5000), "binary": bytes(range(256)) * 20, "text": b"add 40 2",
    "cut short": ADD[:-20], "more behind it": ADD + b"<more/>",
    "of an unknown encoding": ADD.replace(b"'1.0'", b"'1.0' encoding='klingon'"),
    "not in its encoding": ADD.replace(b"add", b"\xff\xfe"),
    "too deep": CALL % (b"<a>" * 100000 + b"</a>" * 100000),
    "expanding": b"<?xml version='1.0'?><!DOCTYPE a [<!ENTITY a0 'aaaa'>" +
                 b"".join(b"<!ENTITY a%d '&a%d;&a%d;'>" % (i + 1, i, i) for i in range(64)) +
                 b"]><methodCall><params>&a64;</params></methodCall>",
    "of no kind": b"<?xml version='1.0'?><catalogue/>", "an empty envelope": SOAP_CALL % b"",
    "without a method": CALL % b"<params/>", "with an empty method": CALL % b"<methodName></methodName>",
    "with a broken value": document("echo", "<integer>1</integer>"),
    "a reply": b"<?xml version='1.0'?><methodResponse><params/></methodResponse>",
}
PATHS = {"/RPC2": 200, "/soap": 500, "/soap-1999": 500}


class BodiesTest(ServerCase):
    def test_that_are_no_request_of_the_protocol_get_a_fault_document(self):
        for path, wanted in PATHS.items():
            other = ADD if path != "/RPC2" else SOAP_CALL % b'<m:echoVoid xmlns:m="urn:interop"/>'
            for why, body in {**NOT_A_REQUEST, "of the other protocol": other}.items():
                status, headers, answer = self.server.post(body, path)
                self.assertEqual((status, headers["Content-Type"]), (wanted, "text/xml; charset=utf-8"), (path, why))
                if path == "/RPC2":
                    with self.assertRaises(xmlrpc.client.Fault) as caught:
                        xmlrpc.client.loads(answer)
                    self.assertEqual(caught.exception.faultCode, -32700, why)
                else:
                    self.assertIn(b"<faultstring>the body is not a well-formed SOAP 1.1 request</faultstring>", answer, why)
            self.assert_serves()

    def test_of_every_known_encoding_are_read(self):
        text = "\u00e9\u00fc"
        for encoding in ("utf-8", "iso-8859-1", "windows-1252", "macintosh"):
            body = document("echo", text).decode().replace("'1.0'", "'1.0' encoding='%s'" % encoding).encode(encoding)
            self.assertEqual(xmlrpc.client.loads(self.server.post(body)[2])[0], (text,), encoding)


class ExchangeTest(ServerCase):
    options = ("--max-body", LIMIT)

    def test_statuses(self):
        for wanted, method, path, body in [
            (404, "POST", "/", ADD), (404, "POST", "/RPC2/", ADD), (404, "GET", "/rpc2", ADD),
            (404, "POST", "/" + "x" * 5000, ADD), (405, "GET", "/RPC2", ADD), (405, "PUT", "/soap", ADD),
            (405, "DELETE", "/soap-1999", ADD), (200, "POST", "/RPC2?a=b", ADD),
            (413, "POST", "/RPC2", b"x" * (LIMIT + 1)), (413, "POST", "/RPC2", b"x" * (LIMIT + 1000000)),
            (413, "POST", "/RPC2", iter([b"x" * 10000] * 100)), (200, "POST", "/RPC2", ADD.ljust(LIMIT)),
        ]:
            status, headers, answer = self.server.post(body, path, method)
            self.assertEqual((status, headers["Allow"]), (wanted, "POST" if wanted == 405 else None), (method, path[:9]))
            self.assertTrue(answer)

    def test_endless_body_is_cut_off(self):
        before = self.server.status("VmHWM")
        for framing, piece in ((b"Content-Length: 99999999999", b"x" * 65536),
                               (b"Transfer-Encoding: chunked", b"10000\r\n" + b"x" * 65536 + b"\r\n")):
            with self.server.connect() as connection:
                connection.sendall(b"POST /RPC2 HTTP/1.1\r\nHost: a\r\n" + framing + b"\r\n\r\n")
                with self.assertRaises(OSError):
                    for _ in range(2000):
                        connection.sendall(piece)
        self.assertLess(self.server.status("VmHWM") - before, 8192)
        self.assert_serves()

    def test_peer_that_asks_before_it_sends_is_told_at_once(self):
        for length, line in ((10, b"HTTP/1.1 100 "), (LIMIT + 1, b"HTTP/1.1 413 ")):
            with self.server.connect() as connection:
                connection.sendall(b"POST /RPC2 HTTP/1.1\r\nHost: a\r\nExpect: 100-continue\r\nContent-Length: %d\r\n\r\n"
                                   % length)
                self.assertTrue(connection.recv(4096).startswith(line), length)

    def test_pipelined_requests_are_answered_in_their_order_though_no_more_will_come(self):
        with self.server.connect() as connection, connection.makefile("rb") as stream:
            documents = [add_document(i, 1) for i in range(100)]
            documents[50] = slow_document(0.05)
            connection.sendall(b"".join(map(request, documents)))
            connection.shutdown(socket.SHUT_WR)
            for i in range(100):
                status, _, body = read_response(stream)
                self.assertEqual((status, xmlrpc.client.loads(body)[0]), (200, ("done" if i == 50 else i + 1,)))

    def test_peer_that_leaves_in_the_middle_of_a_reply_does_no_harm(self):
        calls = [{"methodName": "types", "params": []}] * 700
        for body, taken in ((xmlrpc.client.dumps((calls,), "system.multicall").encode(), 1), (slow_document(0.05), 0)):
            for _ in range(10):
                with self.server.connect() as connection:
                    connection.sendall(request(body))
                    connection.recv(taken)
        self.assert_serves()

    def test_requests_do_not_mix(self):
        def add_many(seed):
            with xmlrpc.client.ServerProxy(self.server.url()) as proxy:
                return all(proxy.concat("%d:" % seed, str(i)) == "%d:%d" % (seed, i) for i in range(200))

        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            self.assertEqual(list(pool.map(add_many, range(8))), [True] * 8)


class ConnectionsTest(ServerCase):
    options = ("--threads", 2)

    def raise_limit(self, wanted):
        soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
        if soft < wanted:
            if hard != resource.RLIM_INFINITY and hard < wanted:
                self.skipTest("the system allows too few open files")
            resource.setrlimit(resource.RLIMIT_NOFILE, (wanted, hard))
            self.addCleanup(resource.setrlimit, resource.RLIMIT_NOFILE, (soft, hard))

    def test_thousand_idle_ones_cost_no_thread_and_hold_nobody_up(self):
        self.raise_limit(2500)
        threads = self.server.status("Threads")
        with contextlib.ExitStack() as stack:
            connections = [stack.enter_context(self.server.connect()) for _ in range(1000)]
            # Some have been of use, and some have begun what they do not go on with.
            for connection in connections[:300]:
                connection.sendall(request(ADD))
            for connection in connections[:300]:
                self.assertIn(b"<i4>3</i4>", connection.recv(65536))
            for connection in connections[300:600]:
                connection.sendall(request(ADD)[:-5])
            self.assert_serves()
            self.assertEqual(self.server.status("Threads"), threads)
            self.assertLess(self.server.status("VmRSS"), 200 * 1024)
            connections[-1].sendall(request(ADD))
            self.assertIn(b"<i4>3</i4>", connections[-1].recv(65536))


class DeadlineTest(ServerCase):
    options = ("--deadline", 1)

    def test_ends_requests_that_drip(self):
        head = b"POST /RPC2 HTTP/1.1\r\nHost: a\r\n"
        for start, drop in [
            (b"", b""), (b"POST /RP", b"C"), (head, b"a: b\r\n"), (head + b"Content-Length: 5000\r\n\r\n", b"x"),
            (head + b"Transfer-Encoding: chunked\r\n\r\n", b"1\r\nx\r\n"), (request(ADD), b""),
        ]:
            with self.server.connect() as connection, contextlib.suppress(ConnectionError):
                connection.settimeout(0.05)
                connection.sendall(start)
                for _ in range(200):
                    with contextlib.suppress(TimeoutError):
                        if connection.recv(4096) == b"":
                            break
                    connection.sendall(drop)
                else:
                    self.fail(start)
        self.assert_serves()

    def test_ends_replies_that_are_read_slowly(self):
        with self.server.connect() as connection, contextlib.suppress(ConnectionError):
            connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 65536)
            connection.sendall(request(document("echo", "x" * 8000000)))
            for _ in range(100):
                self.assertNotEqual(connection.recv(10000), b"")
                self.server.post(slow_document(0.05))
            self.fail("the reply is still being sent")

    def test_lets_slow_calls_and_busy_connections_be(self):
        with self.server.connect() as connection, connection.makefile("rb") as stream:
            for body in [slow_document(2.5)] + [slow_document(0.3)] * 5:
                connection.sendall(request(body))
                self.assertEqual(read_response(stream)[0], 200)

    def test_what_is_no_http_or_ends_early_does_no_harm(self):
        head, whole = b"POST /RPC2 HTTP/1.1\r\nHost: a\r\n", request(ADD)
        for garbage in [b"\r\n\r\n", b"\0" * 100, b"\x16\x03\x01\x02\x00\x01\x00", b"GET\r\n\r\n", b"hello\r\n\r\n", b"A" * 200000,
                        b"POST /RPC2 HTTP/9.9\r\n\r\n", head + b"Content-Length: -1\r\n\r\n",
                        head + b"Content-Length: 1x\r\n\r\n", head + b"Transfer-Encoding: chunked\r\n\r\nzz\r\n",
                        head + b"a: b\r\n" * 20000 + b"\r\n",
                        *(whole[:length] for length in (1, 10, 40, len(whole) - 60, len(whole) - 1))]:
            with self.server.connect() as connection, contextlib.suppress(OSError):
                connection.sendall(garbage)
                connection.shutdown(socket.SHUT_WR)
                self.assertNotIn(b"200 OK", connection.recv(65536), garbage[:50])
        self.assert_serves()

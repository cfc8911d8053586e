"""What vxserve does with bodies and connections that are not as they should be."""
import concurrent.futures
import contextlib
import resource
import socket
import time
import xmlrpc.client

from vxserve_case import Server, ServerCase, add_document, read_response, request, slow_document

SOAP_CALL = (b'<?xml version="1.0"?><E:Envelope xmlns:E="http://schemas.xmlsoap.org/soap/envelope/"><E:Body>%s</E:Body>'
             b'</E:Envelope>')
CALL = b"<?xml version='1.0'?><methodCall>%s</methodCall>"
NOT_XML = {
    "empty": b"",
    "blanks": b" \r\n ",
    "zeros": bytes(5000),
    "binary": bytes(range(256)) * 20,
    "text": b"add 40 2",
    "cut short": add_document(40, 2)[:-20],
    "more behind it": add_document(40, 2) + b"<more/>",
    "of an unknown encoding": add_document(1, 2).replace(b"'1.0'", b"'1.0' encoding='klingon'"),
    "not in its encoding": add_document(1, 2).replace(b"add", b"\xff\xfe"),
    "too deep": CALL % (b"<a>" * 100000 + b"</a>" * 100000),
    "expanding": b"<?xml version='1.0'?><!DOCTYPE a [<!ENTITY a0 'aaaa'>" +
                 b"".join(b"<!ENTITY a%d '&a%d;&a%d;'>" % (i + 1, i, i) for i in range(64)) +
                 b"]><methodCall><params>&a64;</params></methodCall>",
    "of no kind": b"<?xml version='1.0'?><catalogue/>",
    "without a method": CALL % b"<params/>",
    "with an empty method": CALL % b"<methodName></methodName>",
    "with a broken value": CALL % b"<methodName>echo</methodName><params><param><value><integer>1</integer></value></param></params>",
    "a reply": b"<?xml version='1.0'?><methodResponse><params/></methodResponse>",
    "an empty envelope": SOAP_CALL % b"",
}
PATHS = {"/RPC2": 200, "/soap": 500, "/soap-1999": 500}


class BodiesTest(ServerCase):
    def assert_fault(self, path, body, why):
        status, headers, answer = self.server.post(body, path)
        self.assertEqual((status, headers["Content-Type"]), (PATHS[path], "text/xml; charset=utf-8"), (path, why))
        if path == "/RPC2":
            with self.assertRaises(xmlrpc.client.Fault) as caught:
                xmlrpc.client.loads(answer)
            self.assertEqual(caught.exception.faultCode, -32700, why)
        else:
            self.assertIn(b"<faultstring>the body is not a well-formed SOAP 1.1 request</faultstring>", answer, why)

    def test_that_are_no_request_get_a_fault_document(self):
        for path in PATHS:
            for why, body in NOT_XML.items():
                self.assert_fault(path, body, why)
            self.assert_serves()

    def test_of_the_other_protocol_get_a_fault_document(self):
        self.assert_fault("/soap", add_document(1, 2), "XML-RPC")
        self.assert_fault("/RPC2", SOAP_CALL % b'<m:echoVoid xmlns:m="urn:interop"/>', "SOAP")

    def test_of_every_known_encoding_are_read(self):
        text = "\u00e9\u00fc"
        document = "<?xml version='1.0' encoding='%s'?><methodCall><methodName>echo</methodName><params><param><value>" \
                   + text + "</value></param></params></methodCall>"
        for encoding in ("utf-8", "iso-8859-1", "windows-1252", "macintosh"):
            body = (document % encoding).encode(encoding)
            self.assertEqual(xmlrpc.client.loads(self.server.post(body)[2])[0], (text,), encoding)


class ExchangeTest(ServerCase):
    options = ("--max-body", 100000)

    def test_statuses(self):
        rows = [(404, "POST", "/", {}), (404, "POST", "/RPC2/", {}), (404, "GET", "/rpc2", {}),
                (404, "POST", "/" + "x" * 5000, {}), (405, "GET", "/RPC2", {}), (405, "PUT", "/soap", {}),
                (405, "DELETE", "/soap-1999", {}), (200, "POST", "/RPC2?a=b", {})]
        for wanted, method, path, headers in rows:
            status, headers, body = self.server.post(add_document(1, 2), path, method, headers)
            self.assertEqual(status, wanted, (method, path))
            self.assertEqual(headers["Allow"], "POST" if wanted == 405 else None)
            self.assertTrue(body)

    def test_body_over_the_limit_is_refused_and_not_kept(self):
        limit = 100000
        chunks = [b"x" * 10000] * 100
        rows = {"just over": b"x" * (limit + 1), "much over": b"x" * (limit + 1000000), "in chunks": iter(chunks)}
        for why, body in rows.items():
            self.assertEqual(self.server.post(body)[0], 413, why)
        document = add_document(1, 2)
        self.assertEqual(self.server.post(document + b" " * (limit - len(document)))[0], 200)

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
        for length, line in ((10, b"HTTP/1.1 100 "), (100001, b"HTTP/1.1 413 ")):
            with self.server.connect() as connection:
                connection.sendall(b"POST /RPC2 HTTP/1.1\r\nHost: a\r\nExpect: 100-continue\r\nContent-Length: %d\r\n\r\n"
                                   % length)
                self.assertTrue(connection.recv(4096).startswith(line), length)

    def test_request_is_answered_when_its_peer_has_no_more_to_say(self):
        with self.server.connect() as connection, connection.makefile("rb") as stream:
            connection.sendall(request(add_document(1, 2)))
            connection.shutdown(socket.SHUT_WR)
            self.assertEqual(read_response(stream)[0], 200)

    def test_pipelined_requests_are_answered_in_their_order(self):
        with self.server.connect() as connection, connection.makefile("rb") as stream:
            documents = [add_document(i, 1) for i in range(100)]
            documents[50] = slow_document(0.05)
            connection.sendall(b"".join(map(request, documents)))
            for i in range(100):
                status, _, body = read_response(stream)
                self.assertEqual(status, 200)
                self.assertEqual(xmlrpc.client.loads(body)[0], ("done" if i == 50 else i + 1,))

    def test_peer_that_leaves_in_the_middle_of_a_reply_does_no_harm(self):
        calls = [{"methodName": "types", "params": []}] * 700
        body = xmlrpc.client.dumps((calls,), "system.multicall").encode()
        for delay in (b"", b"slow"):
            for _ in range(10):
                with self.server.connect() as connection:
                    connection.sendall(request(slow_document(0.05) if delay else body))
                    connection.recv(1 if not delay else 0)
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
                connection.sendall(request(add_document(1, 2)))
            for connection in connections[:300]:
                self.assertIn(b"<i4>3</i4>", connection.recv(65536))
            for connection in connections[300:600]:
                connection.sendall(request(add_document(1, 2))[:-5])
            self.assert_serves()
            self.assertEqual(self.server.status("Threads"), threads)
            self.assertLess(self.server.status("VmRSS"), 200 * 1024)
            connections[-1].sendall(request(add_document(1, 2)))
            self.assertIn(b"<i4>3</i4>", connections[-1].recv(65536))

    def test_slow_calls_hold_nobody_up(self):
        with contextlib.ExitStack() as stack:
            waiting = [stack.enter_context(self.server.connect()) for _ in range(50)]
            for connection in waiting:
                connection.sendall(request(slow_document(1.5)))
            start = time.monotonic()
            for _ in range(20):
                self.assert_serves()
            self.assertLess(time.monotonic() - start, 1)
            for connection in waiting:
                self.assertIn(b"done", connection.recv(65536))
            self.assertGreaterEqual(time.monotonic() - start, 1.4)


class DeadlineTest(ServerCase):
    options = ("--deadline", 1)

    def assert_is_closed(self, connection, pieces):
        """Sends a piece every now and then until the server has enough of it."""
        start = time.monotonic()
        connection.settimeout(0.05)
        with contextlib.suppress(ConnectionError):
            while time.monotonic() - start < 10:
                connection.sendall(next(pieces))
                with contextlib.suppress(TimeoutError):
                    if connection.recv(4096) == b"":
                        break
        took = time.monotonic() - start
        self.assertTrue(0.5 < took < 5, took)

    def test_ends_requests_that_drip(self):
        def dripping(start, drop):
            yield start
            while True:
                yield drop

        head = b"POST /RPC2 HTTP/1.1\r\nHost: a\r\n"
        rows = [(b"", b""), (b"POST /RP", b"C"), (head, b"a: b\r\n"), (head + b"Content-Length: 5000\r\n\r\n", b"x"),
                (head + b"Transfer-Encoding: chunked\r\n\r\n", b"1\r\nx\r\n"), (request(add_document(1, 2)), b"")]
        for start, drop in rows:
            with self.server.connect() as connection:
                self.assert_is_closed(connection, dripping(start, drop))
        self.assert_serves()

    def test_lets_slow_calls_and_busy_connections_be(self):
        with self.server.connect() as connection, connection.makefile("rb") as stream:
            for document in [slow_document(2.5)] + [slow_document(0.3)] * 5:
                connection.sendall(request(document))
                self.assertEqual(read_response(stream)[0], 200)

    def test_garbage_instead_of_http_does_no_harm(self):
        for garbage in (b"\r\n\r\n", b"\0" * 100, b"\x16\x03\x01\x02\x00\x01\x00", b"GET\r\n\r\n", b"hello\r\n\r\n",
                        b"POST /RPC2 HTTP/9.9\r\n\r\n", b"POST /RPC2 HTTP/1.1\r\nContent-Length: -1\r\n\r\n",
                        b"POST /RPC2 HTTP/1.1\r\nHost: a\r\nContent-Length: 1x\r\n\r\n",
                        b"POST /RPC2 HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n",
                        b"POST /RPC2 HTTP/1.1\r\nHost: a\r\n" + b"a: b\r\n" * 20000 + b"\r\n", b"A" * 200000):
            with self.server.connect() as connection, contextlib.suppress(OSError):
                connection.sendall(garbage)
                connection.shutdown(socket.SHUT_WR)
                answer = connection.recv(65536)
                self.assertNotIn(b"200 OK", answer, garbage[:50])
        self.assert_serves()

    def test_body_cut_short_leaves_nothing_behind(self):
        whole = request(add_document(1, 2))
        for length in (1, 10, 40, len(whole) - 60, len(whole) - 1):
            with self.server.connect() as connection:
                connection.sendall(whole[:length])
                connection.shutdown(socket.SHUT_WR)
                self.assertNotIn(b"200 OK", connection.recv(4096))
        self.assert_serves()

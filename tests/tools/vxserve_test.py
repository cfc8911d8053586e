"""vxserve as other clients see it, on connections that are not as they should be, and its end."""
import concurrent.futures
import contextlib
import datetime
import http.client
import json
import os
import re
import select
import signal
import socket
import unittest
import xmlrpc.client

from toolcase import SUPPORT, VXSERVE, Process, run

DATE = datetime.datetime(1998, 7, 17, 14, 8, 55)
TYPES = {
    "int": -2147483648, "double": -1234.5625, "boolean": True,
    "string": "<tag attr=\"x\"> & 'single' ]]> \u00e9 \u20ac \u65e5\u672c",
    "dateTime": DATE, "base64": bytes(range(256)), "array": [1, "two", [3, [4.5, []]], {"five": 5}],
    "struct": {"name": "outer", "inner": {"x": 1, "list": [True, False], "empty": ""}},
    "emptyString": "", "emptyArray": [], "emptyStruct": {},
}
EXAMPLES = {"int": 1, "double": 1.5, "boolean": True, "string": "s", "dateTime.iso8601": DATE, "base64": b"b", "array": [],
            "struct": {}}
INVALID_PARAMETERS, NO_METHOD = -32602, -32601
LIMIT = 100000


def document(name, *values):
    """A call whose parameters are written as they are to stand in the document."""
    parameters = "".join("<param><value>%s</value></param>" % value for value in values)
    return ("<?xml version='1.0'?><methodCall><methodName>%s</methodName><params>%s</params></methodCall>"
            % (name, parameters)).encode()


def slow(seconds):
    return document("slow", "<double>%f</double>" % seconds)


def expecting(length):
    """The head of a request that waits to be asked for its body."""
    return b"POST /RPC2 HTTP/1.1\r\nHost: a\r\nExpect: 100-continue\r\nContent-Length: %d\r\n\r\n" % length


def request(body):
    return b"POST /RPC2 HTTP/1.1\r\nHost: a\r\nContent-Length: %d\r\n\r\n" % len(body) + body


def read_response(stream):
    """The status and the body of one answer on a connection that goes on."""
    status_line = stream.readline()
    headers = http.client.parse_headers(stream)
    return int(status_line.split()[1]), headers, stream.read(int(headers["Content-Length"]))


ADD = document("add", "<int>1</int>", "<int>2</int>")


class Server(Process):
    def __init__(self, *arguments, limits=()):
        super().__init__(*limits, VXSERVE, "--port", 0, *arguments)

    def connect(self):
        """A connection that no test waits on for ever."""
        return socket.create_connection(("127.0.0.1", self.port), timeout=60)

    def post(self, body, path="/RPC2", method="POST"):
        """The status, the headers and the body of the answer to one request."""
        with contextlib.closing(http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)) as connection:
            connection.request(method, path, body)
            response = connection.getresponse()
            return response.status, response.headers, response.read()


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
        if cls.server.stop() != (0, ""):
            raise AssertionError("vxserve did not stop in peace")


class MethodsTest(ServerCase):
    def setUp(self):
        self.proxy = xmlrpc.client.ServerProxy(self.server.url(), use_builtin_types=True)
        self.addCleanup(self.proxy("close"))

    def call(self, name, *parameters):
        return getattr(self.proxy, name)(*parameters)

    def assert_fault(self, code, name, *parameters):
        with self.assertRaises(xmlrpc.client.Fault) as caught:
            self.call(name, *parameters)
        self.assertEqual(caught.exception.faultCode, code, caught.exception)

    def test_every_kind_of_value_comes_back_as_it_went(self):
        values = [*TYPES.values(), TYPES, [[[]]], [""], {"b c": "\n x"}, 2147483647, 0.0, 1e-300, 1.7976931348623157e308,
                  0.1 + 0.2, False, "x" * 100000, list(range(5000)), {"<a&b>": {"]]>": [""]}}, "\u2028\U0001f600"]
        for value in values:
            result = self.call("echo", value)
            self.assertEqual((result, type(result)), (value, type(value)))
        self.assertEqual((self.call("echo"), self.call("types")), ("", TYPES))
        reply = self.server.post(xmlrpc.client.dumps(([123456789.125, 1e-5, -0.0, DATE],), "echo").encode())[2]
        for form in (b"123456789.125</double>", b">0.00001</double>", b">-0</double>", b">19980717T14:08:55</dateTime.iso8601>"):
            self.assertIn(form, reply)
        # What cannot be sent back is a fault, or left out as a key of the library is, which would change the order.
        for value in ("<int>2147483648</int>", "<array><data><value><i4>-99999999999</i4></value></data></array>"):
            self.assertIn(b"<i4>%d</i4>" % INVALID_PARAMETERS, self.server.post(document("echo", value))[2])
        self.assertEqual(self.call("echo", {"a": 1, "/VXRecordParamOrder": ["b", "<c>"], "<": 2}), {"a": 1, "<": 2})

    def test_introspection_tells_the_truth_of_every_method(self):
        names = self.call("system.listMethods")
        self.assertEqual(len(names), len(set(names)))
        self.assertLessEqual({"system.multicall", "echo", "types", "validator1.manyTypesTest"}, set(names))
        for name in names:
            self.assertTrue(self.call("system.methodHelp", name))
            signatures = self.call("system.methodSignature", name)
            self.assertTrue(signatures)
            for result_type, *types in signatures:
                parameters = [EXAMPLES[kind] for kind in types]
                try:
                    self.assertIs(type(self.call(name, *parameters)), type(EXAMPLES[result_type]), name)
                except xmlrpc.client.Fault as fault:
                    # The parameters are of the right types, though they may mean nothing to the method.
                    self.assertNotIn("wrong parameters", fault.faultString)
                self.assert_fault(INVALID_PARAMETERS, name, *parameters, [], {}, [])

    def test_multicall_mixes_results_and_faults_and_refuses_what_it_cannot_call(self):
        def call(name, *parameters):
            return {"methodName": name, "params": list(parameters)}

        results = self.call("system.multicall", [call("add", 1, 2), call("fault", 9, "nine"), call("nope"), call("slow", 0)])
        self.assertEqual(results, [[3], {"faultCode": 9, "faultString": "nine"},
                                   {"faultCode": NO_METHOD, "faultString": "there is no method 'nope'"}, ["done"]])
        self.assertEqual(self.call("system.multicall", [call("echo", 1)] * 1000), [[1]] * 1000)
        self.assert_fault(INVALID_PARAMETERS, "system.multicall", [{}] * 1001)
        refused = [call("system.multicall", []), {"methodName": "add"}, 5, {"methodName": 5, "params": []},
                   {"methodName": "add", "params": {}}, call("slow", 600)]
        first, *others, last = self.call("system.multicall", [call("slow", 0.01), *refused, call("add", 1, 1)])
        self.assertEqual((first, last), (["done"], [2]))
        self.assertEqual([fault["faultCode"] for fault in others], [INVALID_PARAMETERS] * len(refused))


TEXT = "<a> & 'b' \"c\" ]]> \u00e9 \u20ac \u65e5"
STRUCT = {"varString": "s<", "varInt": -7, "varFloat": 2.5}
STRUCT_SEEN = {"varString": "s<", "varInt": "-7", "varFloat": "2.5"}
# (result or the text of a fault, method, parameters as [name, type or None for the client's own guess, value])
SOAP_CALLS = [
    (TEXT, "echoString", ["inputString", "string", TEXT]), ("-2147483648", "echoInteger", ["inputInteger", "int", -2147483648]),
    ("0.30000000000000004", "echoFloat", ["inputFloat", "double", "0.30000000000000004"]),
    ("3", "echoFloat", ["inputFloat", None, 3]), ("1", "echoBoolean", ["inputBoolean", "boolean", "true"]),
    ("1998-07-17T14:08:55Z", "echoDate", ["inputDate", "DATE", "1998-07-17T14:08:55Z"]),
    ("bytes \x00\x01\xff", "echoBase64", ["inputBase64", "base64", "bytes \x00\x01\xff"]),
    (["a<", "", TEXT], "echoStringArray", ["inputStringArray", None, ["a<", "", TEXT]]),
    ([STRUCT_SEEN] * 2, "echoStructArray", ["inputStructArray", None, [STRUCT] * 2]), (None, "echoVoid"),
    ("ba", "concat", ["t", "string", "a"], ["s", "string", "b"]), ("ab", "concat", ["x", None, "a"], ["y", None, "b"]),
]
SOAP_FAULTS = [(TEXT, "fault", ["message", "string", TEXT]),
               ("each item must be of the type int", "echoIntegerArray", ["inputIntegerArray", None, [1, "b"]])]


class SOAPLiteTest(ServerCase):
    def test_gets_every_result_and_fault(self):
        expected = [{"result": result} for result, *_ in SOAP_CALLS]
        expected += [{"fault": ["SOAP-ENV:Client", text]} for text, *_ in SOAP_FAULTS]
        for generation, path, date in (("1999", "/soap-1999", "timeInstant"), ("2001", "/soap", "dateTime")):
            lines = "".join(json.dumps(call) + "\n" for _, *call in SOAP_CALLS + SOAP_FAULTS).replace("DATE", date)
            answers = run("perl", os.path.join(SUPPORT, "soap_lite.pl"), self.server.url(path), "urn:interop", generation,
                          input=lines).stdout
            self.assertEqual(list(map(json.loads, answers.splitlines())), expected, generation)


class HTTPTest(ServerCase):
    options = ("--max-body", LIMIT, "--threads", 2)

    def test_body_that_is_no_call_gets_a_fault_document(self):
        envelope = "<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body>%s</e:Body></e:Envelope>"
        bodies = ["", "\0" * 5000, "add 40 2", ADD[:-20].decode(), ADD.decode() + "<more/>", "<catalogue/>", envelope % "",
                  "<methodCall><params/></methodCall>", "<methodCall><methodName/></methodCall>", "<methodResponse/>",
                  document("echo", "<integer>1</integer>").decode(), "<a>" * 9000 + "</a>" * 9000]
        for path, status, other in (("/RPC2", 200, envelope % "<m:echoVoid xmlns:m='urn:interop'/>"),
                                    ("/soap", 500, ADD.decode()), ("/soap-1999", 500, ADD.decode())):
            for body in [*bodies, other]:
                answer = self.server.post(body.encode(), path)
                self.assertEqual((answer[0], answer[1]["Content-Type"]), (status, "text/xml; charset=utf-8"), (path, body[:99]))
                self.assertIn(b"-32700" if status == 200 else b"<faultstring>the body is not a well-formed SOAP", answer[2])

    def test_statuses(self):
        for wanted, method, path, body in [
            (404, "POST", "/", ADD), (404, "POST", "/RPC2/", ADD), (404, "GET", "/rpc2", ADD), (405, "GET", "/RPC2", ADD),
            (405, "PUT", "/soap", ADD), (405, "DELETE", "/soap-1999", ADD), (200, "POST", "/RPC2?a=b", ADD),
            (413, "POST", "/RPC2", b"x" * (LIMIT + 1)), (413, "POST", "/RPC2", iter([b"x" * 10000] * 100)),
            (200, "POST", "/RPC2", ADD.ljust(LIMIT)),
        ]:
            status, headers, answer = self.server.post(body, path, method)
            self.assertEqual((status, headers["Allow"]), (wanted, "POST" if wanted == 405 else None), (method, path))
            self.assertTrue(answer)

    def test_client_that_asks_before_it_sends_too_much_is_told_at_once(self):
        with self.server.connect() as connection:
            connection.sendall(expecting(LIMIT + 1))
            self.assertTrue(connection.recv(4096).startswith(b"HTTP/1.1 413 "))


class DeadlineTest(ServerCase):
    options = ("--deadline", 1)

    def drip(self, start, drop):
        with self.server.connect() as connection, contextlib.suppress(ConnectionError):
            connection.settimeout(0.05)
            connection.sendall(start)
            received = None
            while received != b"":
                connection.sendall(drop)
                with contextlib.suppress(TimeoutError):
                    received = connection.recv(4096)

    def test_ends_requests_that_drip(self):
        head = b"POST /RPC2 HTTP/1.1\r\nHost: a\r\n"
        starts = [b"", b"POST /RP", head, head + b"Content-Length: 5000\r\n\r\n",
                  head + b"Transfer-Encoding: chunked\r\n\r\n", request(ADD)]
        with concurrent.futures.ThreadPoolExecutor() as pool:
            list(pool.map(self.drip, starts, [b"", b"C", b"a: b\r\n", b"x", b"1\r\nx\r\n", b""]))

    def test_ends_replies_that_are_read_slowly(self):
        with self.server.connect() as connection, self.assertRaises(ConnectionError):
            connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 65536)
            connection.sendall(request(document("echo", "x" * 8000000)))
            while True:
                self.assertNotEqual(connection.recv(10000), b"")
                self.server.post(slow(0.05))

    def test_lets_slow_calls_and_busy_connections_be(self):
        with self.server.connect() as connection, connection.makefile("rb") as stream:
            for body in [slow(1.5)] + [slow(0.3)] * 5:
                connection.sendall(request(body))
                self.assertEqual(read_response(stream)[0], 200)


class ProcessTest(unittest.TestCase):
    def test_listens_where_it_is_told(self):
        for address, host in (("127.0.0.1", r"127\.0\.0\.1"), ("localhost", r"(127\.0\.0\.1|\[::1\])"), ("0.0.0.0", r"0\.0\.0\.0")):
            server = Server("--address", address, "--threads", "1")
            self.assertRegex(server.root, r"\Ahttp://%s:\d+/\Z" % host)
            self.assertEqual(server.stop(signal.SIGINT), (0, ""))

    def test_logs_a_safe_line_for_each_request(self):
        rows = [("/RPC2", ADD, ("xml-rpc", "add", "ok")), ("/RPC2", b"junk", ("xml-rpc", "-", "fault:-32700")),
                ("/RPC2", document("add"), ("xml-rpc", "add", "fault:-32602")),
                ("/soap", b"junk", ("soap-2001", "-", "fault:-32700")), ("/soap-1999", b"", ("soap-1999", "-", "fault:-32700")),
                ("/nowhere", b"", ("-", "-", "http-404")),
                ("/RPC2", document("a\nb ok 1us\n&#x9b;\u202e\\\"&#x7f;"),
                 ("xml-rpc", r"a\x0Ab\x20ok\x201us\x0A\xC2\x9B\xE2\x80\xAE\x5C\x22\x7F", "fault:-32601")),
                ("/RPC2", document("x" * 5000), ("xml-rpc", "x" * 200 + "...", "fault:-32601"))]
        server = Server("--log")
        for path, body, _ in rows:
            server.post(body, path)
        status, log = server.stop()
        self.assertEqual(status, 0)
        line = r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z 127\.0\.0\.1:\d+ (\S+) (\S+) (\S+) \d{1,9}us"
        told = [re.fullmatch(line, each) for each in log.splitlines()]
        self.assertNotIn(None, told, log)
        # A line is written once its answer was sent, so that those of two threads may change places.
        self.assertCountEqual([each.groups() for each in told], [wanted for _, _, wanted in rows])

    def test_bounds_held_requests_and_drops_those_whose_clients_leave(self):
        descriptors, reserved = 256, 64
        server = Server("--log", "--threads", 2, limits=("prlimit", "--nofile=%d" % descriptors))
        with contextlib.ExitStack() as stack:
            connections = [stack.enter_context(server.connect()) for _ in range((descriptors - reserved) // 2 + 1)]
            for connection in connections:
                connection.sendall(request(slow(600)))
            # The one that is refused tells that all others are held.
            refused = select.select(connections, [], [])[0]
            self.assertEqual([read_response(connection.makefile("rb"))[0] for connection in refused], [503])
            self.assertEqual(server.post(ADD)[0], 200)
        lines = [server.process.stderr.readline() for _ in range(len(connections) + 1)]
        self.assertEqual(sum(b" slow http-503" in line for line in lines), len(connections), lines)
        self.assertEqual(server.stop(), (0, ""))


class StopTest(unittest.TestCase):
    def begin(self, stack, server, body):
        """A connection with a request that has begun: the server asks for its body."""
        connection = stack.enter_context(server.connect())
        stream = stack.enter_context(connection.makefile("rb"))
        connection.sendall(expecting(len(body)))
        self.assertEqual(stream.readline() + stream.readline(), b"HTTP/1.1 100 Continue\r\n\r\n")
        return connection, stream

    def stop_in_the_middle(self, stack, server, *bodies):
        """The streams of requests whose bodies arrive after the signal, when the server takes no others."""
        begun = [self.begin(stack, server, body) for body in bodies]
        server.process.send_signal(signal.SIGTERM)
        with self.assertRaises(OSError):
            for _ in range(1000000):
                server.connect().close()
        for (connection, _), body in zip(begun, bodies):
            connection.sendall(body)
        return [stream for _, stream in begun]

    def assert_ends(self, server, streams, wanted):
        for stream in streams:
            status, headers, _ = read_response(stream)
            self.assertEqual((status, headers["Connection"]), (wanted, "close"))
        self.assertEqual(server.wait(), (0, ""))

    def test_lets_running_requests_finish_and_takes_no_others(self):
        with contextlib.ExitStack() as stack:
            server = Server()
            self.assert_ends(server, self.stop_in_the_middle(stack, server, *[slow(0.3)] * 20), 200)

    def test_second_signal_cuts_short_at_once_what_the_first_cuts_short_later(self):
        with contextlib.ExitStack() as stack:
            patient, hurried = Server(), Server()
            waiting = self.stop_in_the_middle(stack, patient, slow(500))
            streams = self.stop_in_the_middle(stack, hurried, slow(500))
            hurried.process.send_signal(signal.SIGTERM)
            self.assert_ends(hurried, streams, 503)
            self.assertIsNone(patient.process.poll(), "the server that was told first ends last")
            self.assert_ends(patient, waiting, 503)

    def test_under_load_answers_whole_or_not_at_all(self):
        server = Server("--threads", "2")

        def load(number):
            """Calls over a kept connection until the server is gone. Each answer is its own, and whole."""
            with contextlib.closing(http.client.HTTPConnection("127.0.0.1", server.port, timeout=60)) as connection:
                for i in range(1000000):
                    try:
                        connection.request("POST", "/RPC2", document("echo", "%d:%d" % (number, i)))
                        response = connection.getresponse()
                    except (OSError, http.client.HTTPException):
                        return
                    self.assertRegex(response.read(), b"(?s)>%d:%d<.*</methodResponse>\r\n$" % (number, i))
                    if (number, i) == (0, 50):
                        server.process.send_signal(signal.SIGTERM)

        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            list(pool.map(load, range(4)))
        self.assertEqual(server.wait(), (0, ""))

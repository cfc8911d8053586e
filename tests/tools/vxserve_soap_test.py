"""vxserve as SOAP::Lite and vxcall see it."""
import json
import os
import subprocess

from vxcall_case import vxcall
from vxserve_case import ServerCase

CLIENT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support", "perl", "soap_client.pl")
TEXT = "<a> & 'b' \"c\" ]]> \u00e9 \u20ac \u65e5"
STRUCT = {"varString": "s<", "varInt": "-7", "varFloat": "2.5"}
PATHS = {"1999": "/soap-1999", "2001": "/soap"}
DATE_TYPES = {"1999": "timeInstant", "2001": "dateTime"}

# (result, method, parameters as [name, type or None for the client's own guess, value])
CALLS = [
    (TEXT, "echoString", ["inputString", "string", TEXT]),
    ("", "echoString", ["inputString", "string", ""]),
    ("12", "echoString", ["inputString", None, 12]),
    (TEXT, "echoString", ["other", "string", TEXT]),
    ("-2147483648", "echoInteger", ["inputInteger", "int", -2147483648]),
    ("0.30000000000000004", "echoFloat", ["inputFloat", "double", "0.30000000000000004"]),
    ("3", "echoFloat", ["inputFloat", None, 3]),
    ("INF", "echoFloat", ["inputFloat", "float", "INF"]),
    ("1e+300", "echoFloat", ["inputFloat", "float", "1e300"]),
    ("1", "echoBoolean", ["inputBoolean", "boolean", "true"]),
    ("0", "echoBoolean", ["inputBoolean", "boolean", 0]),
    ("1998-07-17T14:08:55Z", "echoDate", ["inputDate", "DATE", "1998-07-17T14:08:55Z"]),
    ("bytes \x00\x01\xff", "echoBase64", ["inputBase64", "base64", "bytes \x00\x01\xff"]),
    (["a<", "", TEXT], "echoStringArray", ["inputStringArray", None, ["a<", "", TEXT]]),
    ([], "echoStringArray", ["inputStringArray", None, []]),
    (["1", "-2", "2147483647"], "echoIntegerArray", ["inputIntegerArray", None, [1, -2, 2147483647]]),
    (STRUCT, "echoStruct", ["inputStruct", None, {"varString": "s<", "varInt": -7, "varFloat": 2.5}]),
    ([STRUCT, STRUCT], "echoStructArray",
     ["inputStructArray", None, [{"varString": "s<", "varInt": -7, "varFloat": 2.5}] * 2]),
    (None, "echoVoid"),
    ("42", "add", ["a", "int", 40], ["b", "int", 2]),
    ("42", "add", ["b", "int", 40], ["a", "int", 2]),
    ("42", "add", ["x", "int", 40], ["y", "int", 2]),
    ("ba", "concat", ["t", "string", "a"], ["s", "string", "b"]),
    ("done", "slow", ["seconds", "double", 0.01]),
]
FAULTS = [
    ("<b> & \u20ac", "fault", ["message", "string", "<b> & \u20ac"]),
    ("there is no method 'nope'", "nope"),
    ("inputInteger must be of the type int", "echoInteger", ["inputInteger", "string", "5x"]),
    ("inputInteger must be of the type int", "echoInteger", ["inputInteger", "string", "1e300"]),
    ("each item must be of the type int", "echoIntegerArray", ["inputIntegerArray", None, [1, "b"]]),
    ("varFloat must be of the type double", "echoStruct", ["inputStruct", None, {"varString": "a", "varInt": 1}]),
    ("b is missing; the call is add(int a, int b)", "add", ["a", "int", 1]),
    ("a is missing; the call is add(int a, int b)", "add", ["b", "int", 1], ["c", "int", 1]),
    ("the result 2147483648 is beyond 32 bits", "add", ["a", "int", 2147483647], ["b", "int", 1]),
    ("a request can be held back for 0 to 600 seconds", "slow", ["seconds", "double", -1]),
]


class SOAPLiteTest(ServerCase):
    def answers(self, generation, calls, namespace="urn:interop"):
        calls = json.dumps(calls).replace('"DATE"', '"%s"' % DATE_TYPES[generation])
        lines = "".join(json.dumps(call) + "\n" for call in json.loads(calls))
        run = subprocess.run(["perl", CLIENT, self.server.url(PATHS[generation]), namespace, generation],
                             input=lines.encode(), stdout=subprocess.PIPE, check=True, timeout=60)
        return [json.loads(line) for line in run.stdout.splitlines()]

    def test_gets_every_result_and_fault(self):
        for generation in PATHS:
            expected = [{"result": result} for result, *_ in CALLS]
            expected += [{"fault": ["SOAP-ENV:Client", text]} for text, *_ in FAULTS]
            calls = [call for _, *call in CALLS + FAULTS]
            for call, answer, wanted in zip(calls, self.answers(generation, calls), expected, strict=True):
                self.assertEqual(answer, wanted, (generation, call))

    def test_methods_of_another_namespace_are_not_there(self):
        for namespace in ("urn:other", "URN:INTEROP", "urn:interop&<"):
            answer = self.answers("2001", [["echoVoid"]], namespace)[0]
            self.assertIn("the methods are in the namespace urn:interop", answer["fault"][1])


class VxcallTest(ServerCase):
    def test_gets_results_and_faults_in_every_protocol(self):
        soap = ["-n", "urn:interop", "--result", "Result"]
        roads = [("/RPC2", "-p", "xml-rpc"), ("/soap", "-p", "soap-2001", "--style", "doc", *soap)]
        roads += [(path, "-p", "soap-" + generation, "--style", "rpc", *soap) for generation, path in PATHS.items()]
        rows = [(0, b"42\n", b"", "add", "a=40", "b=2"), (0, '"<a\u20ac"\n'.encode(), b"", "concat", "string:<a", "string:\u20ac"),
                (0, b'"done"\n', b"", "slow", "double:0.01"), (1, b"", b"no method 'nope'", "nope")]
        for path, *options in roads:
            for status, output, complaint, *call in rows:
                run = vxcall(*options, self.server.url(path), *call)
                self.assertEqual((run.returncode, run.stdout), (status, output), (path, call, run.stderr))
                self.assertIn(complaint, run.stderr)
        run = vxcall("-p", "soap-2001", "-n", "urn:interop", self.server.url("/RPC2"), "echoVoid")
        self.assertEqual((run.returncode, run.stdout), (3, b""))
        self.assertIn(b"is no answer to a SOAP call", run.stderr)

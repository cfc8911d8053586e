"""vxserve as Python's xmlrpc.client sees it."""
import datetime
import random
import xmlrpc.client

from vxserve_case import ServerCase, document

ARRAY = [1, "two", [3, [4.5, []]], {"five": 5}]
STRUCT = {"name": "outer", "inner": {"x": 1, "list": [True, False], "empty": ""}}
DATE = datetime.datetime(1998, 7, 17, 14, 8, 55)
TYPES = {
    "int": -2147483648, "double": -1234.5625, "boolean": True,
    "string": "<tag attr=\"x\"> & 'single' ]]> \u00e9 \u20ac \u65e5\u672c",
    "dateTime": DATE, "base64": bytes(range(256)), "array": ARRAY, "struct": STRUCT,
    "emptyString": "", "emptyArray": [], "emptyStruct": {},
}
INVALID_PARAMETERS, NO_METHOD = -32602, -32601


def call(name, *parameters):
    """One of the calls that system.multicall makes."""
    return {"methodName": name, "params": list(parameters)}


class XMLRPCCase(ServerCase):
    def setUp(self):
        self.proxy = xmlrpc.client.ServerProxy(self.server.url(), use_builtin_types=True)
        self.addCleanup(self.proxy("close"))

    def call(self, name, *parameters):
        return getattr(self.proxy, name)(*parameters)

    def assert_fault(self, code, text, name, *parameters):
        with self.assertRaises(xmlrpc.client.Fault) as caught:
            self.call(name, *parameters)
        self.assertEqual(caught.exception.faultCode, code, caught.exception)
        self.assertIn(text, caught.exception.faultString)


class MethodsTest(XMLRPCCase):
    def test_every_kind_of_value_comes_back_as_it_went(self):
        values = [*TYPES.values(), TYPES, [[[]]], [""], {"b c": "\n x"}, 2147483647, 0.0, 1e-300,
                  1.7976931348623157e308, 0.1 + 0.2, 123456789.125, False, "x" * 100000, list(range(5000)),
                  {"<a&b>": {"]]>": [""]}}, "\u2028\U0001f600"]
        for value in values:
            result = self.call("echo", value)
            self.assertEqual(result, value)
            self.assertIs(type(result), type(value))

    def test_values_are_written_as_every_client_reads_them(self):
        table = [(123456789.125, b"<double>123456789.125</double>"), (1e-5, b"<double>0.00001</double>"),
                 (-0.0, b"<double>-0</double>"), (DATE, b"<dateTime.iso8601>19980717T14:08:55</dateTime.iso8601>")]
        for value, form in table:
            self.assertIn(form, self.server.post(xmlrpc.client.dumps((value,), "echo").encode())[2])

    def test_results(self):
        table = [
            ("echo", (), ""), ("types", (), TYPES),
            ("add", (40, 2), 42), ("add", (2147483647, -2147483648), -1),
            ("sum", ({"a": 1, "b": 2, "c": -5},), -2), ("sum", ({},), 0),
            ("concat", ("<a", "\u20acb>"), "<a\u20acb>"), ("concat", ("", "b"), "b"), ("concat", ("", ""), ""),
            ("slow", (0,), "done"), ("slow", (0.01,), "done"),
        ]
        for name, parameters, result in table:
            self.assertEqual(self.call(name, *parameters), result, (name, parameters))

    def test_faults(self):
        table = [
            (7, "a <b> & \u20ac", "fault", 7, "a <b> & \u20ac"), (-2147483648, "", "fault", -2147483648, ""),
            (NO_METHOD, "'nope'", "nope"), (NO_METHOD, "'Add'", "Add", 1, 2),
            (INVALID_PARAMETERS, "add(int a, int b)", "add", 1), (INVALID_PARAMETERS, "add(", "add", 1, 2.0),
            (INVALID_PARAMETERS, "add(", "add", 1, 2, 3), (INVALID_PARAMETERS, "add(", "add", True, 2),
            (INVALID_PARAMETERS, "32 bits", "add", 2147483647, 1), (INVALID_PARAMETERS, "'b'", "sum", {"b": "1"}),
            (INVALID_PARAMETERS, "slow(int seconds) or slow(double seconds)", "slow", "1"),
            (INVALID_PARAMETERS, "600", "slow", -1), (INVALID_PARAMETERS, "600", "slow", float("nan")),
            (INVALID_PARAMETERS, "600", "slow", 1e9),
            (INVALID_PARAMETERS, "types()", "types", 1),
            (NO_METHOD, "'x'", "system.methodHelp", "x"), (NO_METHOD, "'x'", "system.methodSignature", "x"),
        ]
        for code, text, name, *parameters in table:
            self.assert_fault(code, text, name, *parameters)

    def test_integers_beyond_32_bits_are_not_cut(self):
        for value in ("<int>2147483648</int>", "<array><data><value><i4>-99999999999</i4></value></data></array>"):
            with self.assertRaises(xmlrpc.client.Fault) as caught:
                xmlrpc.client.loads(self.server.post(document("echo", value))[2])
            self.assertEqual(caught.exception.faultCode, INVALID_PARAMETERS)

    def test_keys_of_the_library_are_not_taken_from_the_peer(self):
        value = {"a": 1, "/VXRecordParamOrder": ["b", "<c>"], "<": 2}
        self.assertEqual(self.call("echo", value), {"a": 1, "<": 2})


class IntrospectionTest(XMLRPCCase):
    EXAMPLES = {"int": 1, "double": 1.5, "boolean": True, "string": "s", "dateTime.iso8601": DATE, "base64": b"b",
                "array": [], "struct": {}}

    def test_of_every_method_tells_the_truth(self):
        names = self.call("system.listMethods")
        self.assertEqual(len(names), len(set(names)))
        self.assertLessEqual({"system.multicall", "echo", "types", "validator1.manyTypesTest"}, set(names))
        for name in names:
            self.assertGreater(len(self.call("system.methodHelp", name)), 10)
            for result_type, *types in self.call("system.methodSignature", name):
                self.check_signature(name, result_type, [self.EXAMPLES[kind] for kind in types])

    def check_signature(self, name, result_type, parameters):
        try:
            result = self.call(name, *parameters)
            self.assertIs(type(result), type(self.EXAMPLES[result_type]), name)
        except xmlrpc.client.Fault as fault:
            # The parameters are of the right types, though they may mean nothing to the method.
            self.assertNotIn("wrong parameters", fault.faultString)
        with self.assertRaises(xmlrpc.client.Fault):
            self.call(name, *parameters, [], {}, [])


class MultiCallTest(XMLRPCCase):
    def test_mixes_results_and_faults_in_their_order(self):
        for calls, results in [
            ([call("add", 1, 2), call("fault", 9, "nine"), call("echo", [1]), call("nope"), call("slow", 0)],
             [[3], {"faultCode": 9, "faultString": "nine"}, [[1]],
              {"faultCode": NO_METHOD, "faultString": "there is no method 'nope'"}, ["done"]]),
            ([call("add", i, 1) for i in range(1000)], [[i + 1] for i in range(1000)]),
        ]:
            self.assertEqual(self.call("system.multicall", calls), results)
        self.assert_fault(INVALID_PARAMETERS, "1000", "system.multicall", [{}] * 1001)

    def test_refuses_recursion_delays_that_add_up_and_what_is_no_call(self):
        for refused in (call("system.multicall", []), {"methodName": "add"}, 5, {"methodName": 5, "params": []},
                        {"methodName": "add", "params": {}}, call("slow", 600)):
            calls = [call("slow", 0.01), refused, call("add", 1, 1)]
            before, result, after = self.call("system.multicall", calls)
            self.assertEqual((before, result["faultCode"], after), (["done"], INVALID_PARAMETERS, [2]), refused)


class ValidatorTest(XMLRPCCase):
    def setUp(self):
        super().setUp()
        self.random = random.Random(20260715)

    def stooges(self):
        return {name: self.random.randint(-1000, 1000) for name in ("moe", "larry", "curly")}

    def text(self):
        return "".join(self.random.choices("<>&'\"ab \u00e9\u65e5", k=self.random.randint(1, 60)))

    def validate(self, name, result, *parameters):
        self.assertEqual(self.call("validator1." + name, *parameters), result, (name, parameters))

    def test_with_random_data(self):
        for _ in range(20):
            structs = [self.stooges() for _ in range(self.random.randint(0, 20))]
            self.validate("arrayOfStructsTest", sum(struct["curly"] for struct in structs), structs)
            stooges, number, text = self.stooges(), self.random.randint(-2000000, 2000000), self.text()
            self.validate("easyStructTest", sum(stooges.values()), stooges)
            self.validate("echoStructTest", {"a": stooges, "b": text}, {"a": stooges, "b": text})
            counts = zip(("LeftAngleBrackets", "RightAngleBrackets", "Ampersands", "Apostrophes", "Quotes"), "<>&'\"")
            self.validate("countTheEntities", {"ct" + name: text.count(c) for name, c in counts}, text)
            many = [number, number % 2 == 0, text, self.random.random(), DATE, self.random.randbytes(30)]
            self.validate("manyTypesTest", many, *many)
            texts = [self.text().strip() or "-" for _ in range(self.random.randint(100, 200))]
            self.validate("moderateSizeArrayCheck", texts[0] + texts[-1], texts)
            calendar = {year: {"03": {}, "04": {"01": self.stooges(), "02": {}}} for year in ("1999", "2000")}
            self.validate("nestedStructTest", sum(calendar["2000"]["04"]["01"].values()), calendar)
            self.validate("simpleStructReturnTest", {"times%d" % n: number * n for n in (10, 100, 1000)}, number)

    def test_refuses_data_of_another_shape(self):
        for name, parameter in (("arrayOfStructsTest", [1]), ("easyStructTest", {"moe": 1}), ("nestedStructTest", {}),
                                ("moderateSizeArrayCheck", []), ("simpleStructReturnTest", 2147484)):
            self.assert_fault(INVALID_PARAMETERS, "", "validator1." + name, parameter)

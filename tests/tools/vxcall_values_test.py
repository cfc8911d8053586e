"""Parameters and results of vxcall: what is sent for what was typed, what is printed for what came."""
import base64
import json
import os
import plistlib
import tempfile
import unittest

from vxcall_case import VxcallCase, vxcall


class ParameterTest(VxcallCase):
    def test_arrive_as_the_kind_that_they_are_written_as(self):
        for written, kind, value in [
            ("5", "int", "5"),
            ("-5", "int", "-5"),
            ("+5", "int", "5"),
            ("007", "int", "7"),
            ("2147483647", "int", "2147483647"),
            ("-2147483648", "int", "-2147483648"),
            ("2.5", "float", "2.5"),
            ("-.5", "float", "-0.5"),
            ("+1e3", "float", "1000.0"),
            ("1.", "float", "1.0"),
            ("true", "bool", "True"),
            ("false", "bool", "False"),
            ("True", "str", "'True'"),
            ("text", "str", "'text'"),
            ("", "str", "''"),
            ("1 2", "str", "'1 2'"),
            ("-", "str", "'-'"),
            ("1e", "str", "'1e'"),
            ("0x10", "str", "'0x10'"),
            ("inf", "str", "'inf'"),
            ("nan", "str", "'nan'"),
            ("[1,2]", "str", "'[1,2]'"),
            ("{}", "str", "'{}'"),
            ("%%", "str", "'%%'"),
            ("a,b", "str", "'a,b'"),
            ("http://host:1/?a=b", "str", "'http://host:1/?a=b'"),
            ("é € 日本 <&>]]>", "str", "'é € 日本 <&>]]>'"),
            ("int:5", "int", "5"),
            ("int:-0", "int", "0"),
            ("double:5", "float", "5.0"),
            ("double:1e-7", "float", "1e-07"),
            ("bool:1", "bool", "True"),
            ("bool:false", "bool", "False"),
            ("string:5", "str", "'5'"),
            ("string:", "str", "''"),
            ("string:int:5", "str", "'int:5'"),
            ("string:--verbose", "str", "'--verbose'"),
            ("date:2005-02-28T13:45:09Z", "DateTime", "20050228T13:45:09Z"),
            ("date:20050228T13:45:09+01:00", "DateTime", "20050228T12:45:09Z"),
            ("date:2005-02-28T13:45:09.987-05:30", "DateTime", "20050228T19:15:09Z"),
            ("date:2005-02-28T23:59:59", "DateTime", "20050228T23:59:59Z"),
            ("date:2004-02-29", "DateTime", "20040229T00:00:00Z"),
            ("base64:AAH/", "Binary", "b'\\x00\\x01\\xff'"),
            ("base64:AA ==\n", "Binary", "b'\\x00'"),
            ("base64:", "Binary", "b''"),
            ("nil:", "int", "0"),
            ("json:7", "int", "7"),
            ("json:null", "int", "0"),
            ('json:"a=b"', "str", "'a=b'"),
            ('json:[1,2.5,"x",true,[],{}]', "list", "[1, 2.5, 'x', True, [], {}]"),
            ('json:{"z":{"b":1},"a":[2]}', "dict", "{'z': {'b': 1}, 'a': [2]}"),
        ]:
            for parameter in (written, "name=" + written, "_n.1-x=" + written):
                with self.subTest(parameter):
                    self.assertEqual(json.loads(self.call("kind", parameter)), [kind, value])

    def test_file_is_sent_as_bytes(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "a=b")
            for content in (b"", bytes(range(256)) * 600):
                with open(path, "wb") as file:
                    file.write(content)
                for parameter in ("file:" + path, "x=file:" + path):
                    self.assertEqual(base64.b64decode(json.loads(self.call("echo", parameter))), content)

    def test_come_from_standard_input_for_a_dash(self):
        for parameter, data, value in [("file:-", b"\x00\xff", "AP8="), ("x=json:@-", b'\n{"a": [1, 2]}\n', {"a": [1, 2]})]:
            run = vxcall(self.peer.url(), "echo", parameter, input=data)
            self.assertEqual((json.loads(run.stdout), run.stderr), (value, b""))

    def test_are_read_from_a_file_of_json(self):
        path = os.path.join(self.folder(), "value")
        for text, expected in [("7", 7), ("[1,\n2]", [1, 2]), ('"é"', "é")]:
            with open(path, "w", encoding="utf-8") as file:
                file.write(text)
            self.assertEqual(json.loads(self.call("echo", "json:@" + path)), expected)
        with open(path, "w", encoding="utf-8") as file:
            file.write("[1,\n2,\n}")
        self.assert_complaint(vxcall(self.peer.url(), "echo", "json:@" + path), 2, path + " is not JSON in line 3")

    def test_go_out_in_the_order_in_which_they_are_written(self):
        self.assertEqual(json.loads(self.call("echo_all", "z=1", "2", "a=3", "nil:", "p9=5")), [1, 2, 3, 0, 5])

    def test_behind_two_dashes_are_never_options(self):
        self.assertEqual(json.loads(self.call("echo_all", 1, "--", "-v", "--", "-x")), [1, "-v", "--", "-x"])

    def test_may_stand_before_and_behind_options(self):
        run = vxcall("--http", "1.1", self.peer.url(), "-o", "json", "echo_all", 1, "--timeout=9", -2, "-v", 3)
        self.assertEqual(json.loads(run.stdout), [1, -2, 3])


class ResultTest(VxcallCase):
    def test_is_printed_as_json(self):
        text = self.call("types")
        self.assertEqual(list(json.loads(text).items()), [
            ("int", -2147483648),
            ("double", -1234.5625),
            ("boolean", True),
            ("string", "<tag attr=\"x\"> & 'single' ]]> é € 日本"),
            ("date", "1998-07-17T14:08:55Z"),
            ("base64", base64.b64encode(bytes(range(256))).decode()),
            ("array", [1, "two", [3, [4.5, []]], {"five": 5}]),
            ("struct", {"z": 1, "a": {"list": [True, False]}}),
        ])
        self.assertLess(text.index('"z"'), text.index('"a"'))
        self.assertIn("é € 日本", text)

    def test_scalars_are_one_line(self):
        for parameter, line in [("5", "5"), ("1.0", "1.0"), ("0.1", "0.1"), ("true", "true"),
                                ('string:a"b\\', '"a\\"b\\\\"'), ("date:2005-02-28", '"2005-02-28T00:00:00Z"'),
                                ("base64:AAE=", '"AAE="'), ("json:[]", "[]"), ("json:{}", "{}")]:
            self.assertEqual(self.call("echo", parameter), line + "\n")

    def test_what_json_lacks_is_null(self):
        for path, printed in [("/nothing", None), ("/null-member", {"a": None}),
                              ("/doubles", [None, None, 0.30000000000000004])]:
            run = vxcall(self.peer.url(path), "echo")
            self.assertEqual((run.returncode, json.loads(run.stdout)), (0, printed), run.stderr)

    def test_is_printed_as_property_list(self):
        types = plistlib.loads(self.call("-o", "plist", "types").encode())
        self.assertEqual(types["base64"], bytes(range(256)))
        self.assertEqual(types["date"].isoformat(), "1998-07-17T14:08:55")
        self.assertEqual(types["array"], [1, "two", [3, [4.5, []]], {"five": 5}])
        self.assertEqual(types["string"], "<tag attr=\"x\"> & 'single' ]]> é € 日本")

    def test_without_a_property_list_is_empty_or_refused(self):
        self.assertEqual(vxcall("-o", "plist", self.peer.url("/nothing"), "echo").stdout, b"")
        self.assert_complaint(vxcall("-o", "plist", self.peer.url("/null-member"), "echo"), 3, "property list")

    def test_full_is_the_whole_dictionary(self):
        result = json.loads(self.call("-o", "full", "add", 2, 3))
        self.assertEqual(result["/Result"], 5)
        self.assertEqual(result["/kVXHTTPResponseMessage"]["statusLine"], "HTTP/1.1 200 OK")
        self.assertEqual(result["/kVXHTTPResponseMessage"]["headers"]["Content-type"], "text/xml")

    def test_full_shows_faults_too(self):
        run = vxcall("-o", "full", self.peer.url(), "fault", 4, "Too many parameters.")
        self.assertEqual(run.returncode, 1)
        fault = json.loads(run.stdout)
        self.assertEqual((fault["/FaultCode"], fault["/FaultString"]), (4, "Too many parameters."))

        run = vxcall("-o", "full", self.peer.url("/status/404"), "echo")
        self.assertEqual(run.returncode, 3)
        self.assertEqual(json.loads(run.stdout)["/FaultExtra"],
                         {"msg": "HTTP/1.1 404 Not Found", "domain": -1, "error": -65795})


if __name__ == "__main__":
    unittest.main()

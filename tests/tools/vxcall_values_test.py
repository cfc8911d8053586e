"""Parameters and results of vxcall: what is sent for what was typed, what is printed for what came."""
import base64
import json
import os
import plistlib

from vxcall_case import VxcallCase, reply, vxcall


# The kind that the server sees, and what is written and seen.
KINDS = {
    "int": [("5", "5"), ("-5", "-5"), ("+5", "5"), ("007", "7"), ("2147483647", "2147483647"), ("int:5", "5"),
            ("-2147483648", "-2147483648"), ("int:-0", "0"), ("json:7", "7")],
    "float": [("2.5", "2.5"), ("-.5", "-0.5"), ("+1e3", "1000.0"), ("1.", "1.0"), ("double:5", "5.0"),
              ("double:1e-7", "1e-07")],
    "bool": [("true", "True"), ("false", "False"), ("bool:1", "True"), ("bool:false", "False")],
    # Texts that are sent as they stand.
    "str": [(text, repr(text)) for text in ("True", "text", "", "1 2", "-", "1e", "0x10", "inf", "nan", "[x", "%%", "a,b",
                                            "http://host:1/?a=b", "é € 日本 <&>]]>")] +
           [("string:" + text, repr(text)) for text in ("5", "", "int:5", "--verbose", "[1,2]")] + [('json:"a=b"', "'a=b'")],
    "DateTime": [("date:2005-02-28T13:45:09Z", "20050228T13:45:09Z"),
                 ("date:20050228T13:45:09+01:00", "20050228T12:45:09Z"),
                 ("date:2005-02-28T13:45:09.987-05:30", "20050228T19:15:09Z"),
                 ("date:2005-02-28T23:59:59", "20050228T23:59:59Z"), ("date:2004-02-29", "20040229T00:00:00Z")],
    "Binary": [("base64:AAH/", "b'\\x00\\x01\\xff'"), ("base64:AA ==\n", "b'\\x00'"), ("base64:", "b''")],
    "list": [('json:[1,2.5,"x",true,[],{}]', "[1, 2.5, 'x', True, [], {}]")],
    "dict": [('json:{"z":{"b":1},"a":[2]}', "{'z': {'b': 1}, 'a': [2]}")],
}


class ParameterTest(VxcallCase):
    def test_arrive_as_the_kind_that_they_are_written_as(self):
        for kind, rows in KINDS.items():
            for written, seen in rows:
                for parameter in (written, "name=" + written, "_n.1-x=" + written):
                    with self.subTest(parameter):
                        self.assertEqual(json.loads(self.call("kind", parameter)), [kind, seen])

    def test_without_a_value_arrive_as_what_the_notes_say(self):
        run = vxcall(self.peer.url(), "echo_all", "nil:", "x=nil:", "json:null", "json:[null]")
        self.assertEqual((json.loads(run.stdout), run.stderr.count(b"\n")), ([0, 0, 0, ["null"]], 2), run.stderr)

    def test_come_from_files_and_from_standard_input(self):
        path = os.path.join(self.folder(), "a=b")
        for form, content, value in [
            ("file:", b"", ""), ("x=file:", bytes(range(256)) * 600, base64.b64encode(bytes(range(256)) * 600).decode()),
            ("json:@", b"7", 7), ("json:@", b"[1,\n2]", [1, 2]), ("x=json:@", '"é"'.encode(), "é"),
            ("x=json:@", b'\n{"a": [1, 2]}\n', {"a": [1, 2]}),
        ]:
            with open(path, "wb") as file:
                file.write(content)
            self.assertEqual(json.loads(self.call("echo", form + path)), value)
            run = vxcall(self.peer.url(), "echo", form + "-", input=content)
            self.assertEqual((json.loads(run.stdout), run.stderr), (value, b""))
        with open(path, "w", encoding="utf-8") as file:
            file.write('{"é":\n"é",, }\n')
        self.assert_complaint(vxcall(self.peer.url(), "echo", "json:@" + path), 2,
                              path + " is not JSON at line 2, column 5: unexpected ','; expected string literal\n")

    def test_go_out_in_the_order_in_which_they_are_written(self):
        for arguments, sent in [
            (["z=1", "2", "a=3", "p9=5"], [1, 2, 3, 5]),
            # Behind two dashes there are no options; in front of them options may stand anywhere.
            ([1, "--", "-v", "--", "-x"], [1, "-v", "--", "-x"]),
            ([1, "--timeout=9", -2, "-o", "json", 3], [1, -2, 3]),
        ]:
            self.assertEqual(json.loads(self.call("echo_all", *arguments)), sent)


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
        self.assertEqual(vxcall("-o", "plist", self.peer.url("/nothing"), "echo").stdout, b"")

    def test_says_what_a_property_list_has_no_room_for(self):
        soap = """<?xml version="1.0"?><e:Envelope xmlns:e="http://schemas.xmlsoap.org/soap/envelope/"
            xmlns:s="http://schemas.xmlsoap.org/soap/encoding/" xmlns:i="http://www.w3.org/2001/XMLSchema-instance"><e:Body>
            <m:mResponse xmlns:m="u">%s</m:mResponse></e:Body></e:Envelope>"""
        for content, what in [
            ("<a>x</a><b><c.d i:type='s:Array'><v>y</v><v/></c.d></b>", 'result.b["c.d"][1] is null'),
            ("<a><b>x</b><b/></a>", "result.a.b[1] is null"),
        ]:
            run = vxcall("-p", "soap-2001", "-o", "plist", self.raw_server(reply(soap % content)).url, "m")
            self.assert_complaint(run, 3, "vxcall: " + what + ", for which a property list has no room; --output json")
        self.assert_complaint(vxcall("-o", "plist", self.peer.url("/null-member"), "echo"), 3, "result.a is null, for which")

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

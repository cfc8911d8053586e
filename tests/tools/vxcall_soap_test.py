"""Calls of SOAP servers of two other makes, in both generations and both forms."""
import datetime
import json
import plistlib

from vxcall_case import SOAPDocumentPeer, SOAPPeer, VxcallCase, vxcall

ENVELOPE = """<?xml version="1.0" encoding="UTF-8"?>
  <SOAP-ENV:Envelope
    xmlns:xsd="http://www.w3.org/{year}/XMLSchema"
    xmlns:xsi="http://www.w3.org/{year}/XMLSchema-instance"
{names}>
{content}  </SOAP-ENV:Envelope>
"""
ENCODING = '    SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/"\n'
ENVELOPE_NAME = '    xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/"'
ENCODING_NAME = '    xmlns:SOAP-ENC="http://schemas.xmlsoap.org/soap/encoding/"'
NAMES = {"1999": ENCODING + ENVELOPE_NAME + "\n" + ENCODING_NAME, "2001": ENCODING_NAME + "\n" + ENCODING + ENVELOPE_NAME}
TYPES = {"1999": {"date": "timeInstant", "item": "ur-type"}, "2001": {"date": "dateTime", "item": "anyType"}}
FORMS = {"rpc": {"open": 'm:sum xmlns:m="urn:x"', "close": "m:sum"}, "doc": {"open": 'sum xmlns="urn:x"', "close": "sum"}}
HEADER = """      <SOAP-ENV:Header>
        <a>1</a>
        <b/>
      </SOAP-ENV:Header>
"""
BODY = """      <SOAP-ENV:Body>
        <{open}>
          <n xsi:type="xsd:int">1</n>
          <p2 xsi:type="xsd:string">a &lt; b</p2>
          <d xsi:type="xsd:{date}">2005-02-28T13:45:09Z</d>
          <l SOAP-ENC:arrayType="xsd:{item}[2]" xsi:type="SOAP-ENC:Array">
            <item_0 xsi:type="xsd:boolean">true</item_0>
            <item_1 xsi:type="SOAP-ENC:Dictionary">
              <x xsi:type="xsd:double">2.5</x>
            </item_1>
          </l>
          <e xsi:type="nil"/>
        </{close}>
      </SOAP-ENV:Body>
"""


class RequestTest(VxcallCase):
    def test_document_is_printed_byte_for_byte_and_not_sent(self):
        for year, form, options, header in [
            ("1999", "rpc", [], ""),
            ("1999", "rpc", ["--style", "doc"], ""),
            ("2001", "doc", [], ""),
            ("2001", "doc", ["--style", "doc"], ""),
            ("2001", "rpc", ["--style", "rpc"], ""),
            ("2001", "doc", ["--soap-header", "<a>1</a>", "--soap-header", "<b/>"], HEADER),
        ]:
            with self.subTest(year, options=options):
                run = vxcall("-p", "soap-" + year, *options, "-n", "urn:x", "--print-request", "http://127.0.0.1:1/", "sum",
                             "n=1", "string:a < b", "d=date:2005-02-28T13:45:09Z", 'l=json:[true,{"x":2.5}]', "e=nil:")
                content = header + BODY.format(**FORMS[form], **TYPES[year])
                document = ENVELOPE.format(year=year, names=NAMES[year], content=content)
                self.assertEqual((run.returncode, run.stdout.decode()), (0, document.replace("\n", "\r\n")))


class SOAPCase(VxcallCase):
    """Calls of another peer, with the result as Python sees its JSON."""
    peer_class = None

    @classmethod
    def setUpClass(cls):
        cls.peer = cls.peer_class()
        cls.addClassCleanup(cls.peer.stop)

    def value(self, *arguments):
        return json.loads(self.call(*arguments))


class RPCCases:
    """The rpc form, in the generation of the class."""
    peer_class = SOAPPeer
    generation = None

    def options(self, namespace="urn:echo"):
        return ["-p", self.generation, "--style", "rpc", "-n", namespace]

    def value(self, *arguments):
        return super().value(*self.options(), *arguments)

    def result(self, *arguments):
        return self.value("--result", "value", *arguments)

    def run_call(self, *arguments):
        return vxcall(*self.options(), self.peer.url(), *arguments)

    def test_values_of_each_type_come_back(self):
        text = "<b> & ]]> \u00e9 \u20ac \u65e5\u672c"
        rows = [
            ("echoString", "string:" + text, text), ("echoString", "string:007", "007"),
            ("echoInt", "2147483647", 2147483647), ("echoInt", "-2147483648", -2147483648),
            ("echoDouble", "-1234.5625", -1234.5625), ("echoDouble", "1e-7", 1e-7),
            ("echoBoolean", "true", True), ("echoBoolean", "false", False),
            ("echoDate", "date:1998-07-17T14:08:55Z", "1998-07-17T14:08:55Z"),
            ("echoBase64", "base64:" + "AAH/" * 100, "AAH/" * 100),
        ]
        rows += [("echo", "json:" + json.dumps(value), value) for value in [
            [], [1, "two", 2.5], [[1, 2], [], [[3]]], {"a": 1, "b": {"c": [1, 2], "d": "x"}},
            [{"x": 1, "y": 2}, {"x": 3, "y": 4}],
        ]]
        for method, parameter, value in rows:
            with self.subTest(parameter):
                self.assertEqual(self.result(method, parameter), value)

    def test_server_understands_each_type_as_it_was_meant(self):
        text = self.result("received", "true", "false", "-7", "string:a=<b>", "base64:QUJD",
                           "date:2005-02-28T13:45:09Z", "json:[[1],[]]", 'json:{"k":{"l":[]}}')
        # Perl knows scalars only: which of them are numbers depends on their use.
        self.assertEqual(text.replace('"', ""), "[1,0,-7,a=<b>,ABC,2005-02-28T13:45:09Z,[[1],[]],{k:{l:[]}}]")

    def test_value_that_is_referred_to_stands_at_each_place(self):
        run = self.run_call("--result", "value", "-v", "twice", 7)
        self.assertEqual(json.loads(run.stdout), [{"x": 1, "list": [7]}] * 2)
        self.assertGreaterEqual(run.stderr.decode().count('href="#'), 2)

    def test_result_is_one_output_or_all(self):
        self.assertEqual(self.value("divide", 17, 5), {"quotient": 3, "remainder": 2})
        self.assertEqual(self.value("--async", "--repeat", 20, "--result", "remainder", "divide", 17, 5), 2)
        full = self.value("--result", "quotient", "-o", "full", "divide", 17, 5)
        self.assertEqual([full[key] for key in ("/Result", "quotient", "remainder")], [3, 3, 2])
        self.assertEqual(self.value("nothing"), {})

    def test_failures_have_their_text(self):
        action = ["-H", 'SOAPAction: "urn:echo#echoInt"', "echoInt", 7]
        self.assertEqual(self.result(*action), 7)
        for status, complaint, *call in [
            (3, "Can't find method result parameter 'product' in reply; it has quotient, remainder\n", "--result", "product", "divide", 17, 5),
            (3, "'product' in reply; try without --result\n", "--result", "product", "nothing"),
            (1, "fault -1: no <way> & out", "fault", "Client.Authentication", "string:no <way> & out"),
            (1, "fault -1: ", "unknown"),
            (1, "got 'urn:other#echoInt'", "-H", "SOAPAction: urn:other#echoInt", "echoInt", 7),
            (1, "Unspecified namespace for type 'nil'", "received", "nil:"),
        ]:
            self.assert_complaint(self.run_call(*call), status, complaint)

    def test_header_elements_arrive(self):
        headers = ["--soap-header", '<t:one xmlns:t="urn:t">1</t:one>', "--soap-header", '<two xmlns="urn:u">zwei</two>']
        run = vxcall(*self.options("urn:headers"), *headers, "--result", "value", self.peer.url(), "received")
        self.assertEqual((run.stdout, run.stderr), (b'"{urn:t}one=1 {urn:u}two=zwei"\n', b""))


class RPC1999Test(RPCCases, SOAPCase):
    generation = "soap-1999"


class RPC2001Test(RPCCases, SOAPCase):
    generation = "soap-2001"


class DocumentTest(SOAPCase):
    peer_class = SOAPDocumentPeer
    OPTIONS = ("-p", "soap-2001", "-n", "urn:orders")

    def test_outputs_have_the_names_of_the_reply(self):
        # The reply of the document form tells no types, so that values are texts.
        for value, *call in [
            ({"ns1:sum": "5"}, "add", "a=2", "b=3"),
            ("5", "--style", "doc", "--result", "ns1:sum", "add", "a=2", "b=3"),
            ({"ns1:parts": {"ns1:part": ["a", "\u00e9", "<c>"]}}, "split", "separator=,", "text=a,\u00e9,<c>"),
        ]:
            self.assertEqual(self.value(*self.OPTIONS, *call), value)
        run = vxcall(*self.OPTIONS, self.peer.url(), "refuse", "reason=no <way> & out")
        self.assert_complaint(run, 1, "fault -1: no <way> & out")

    def test_server_understands_each_type_within_a_structure(self):
        # It goes by a schema. The reply tells no types, so that the text of the answer has to tell how it was understood.
        line = {"article": "a <b> \u00e9", "pieces": 3, "price": 2.5, "gift": True, "due": datetime.datetime(2001, 1, 1),
                "stamp": b"\1\xff"}
        call = {"ProtocolType": "SOAP-2001", "MethodName": "describe", "ServiceURL": self.peer.url(), "ParamOrder": ["line"],
                "ParamValues": {"line": line}, "Properties": {"/VXSOAPMethodNamespaceURI": "urn:orders"}}
        run = vxcall("--load", "-", input=plistlib.dumps(call, sort_keys=False))
        self.assertEqual(run.stderr, b"")
        answer = json.loads(run.stdout)
        self.assertEqual(json.loads(answer["ns1:text"]), {
            "article": "61203c623e20c3a9", "pieces": 3, "price": 2.5, "gift": True, "stamp": "01ff",
            "due": "323030312d30312d30315430303a30303a30305a"})
        self.assertEqual(answer["ns1:line"]["ns1:article"], "a <b> \u00e9")

"""Calls that one vxcall saves and another one makes."""
import os

from vxcall_case import VxcallCase, reply, vxcall

PARAMETERS = [
    "int:-2147483648", "2147483647", "0.1", "double:-0", "double:1e300", "double:5e-324", "double:3", "true", "bool:0",
    "string:", "string: ", "string:\t\r\n \r", "string:]]> &amp; <a> \" é € 日本 \U0001f600", "string:5", "nil:",
    "date:2005-02-28T13:45:09Z", "date:2005-02-28T13:45:09.987-05:30", "date:0001-01-01", "date:9999-12-31T23:59:59Z",
    "base64:", "base64:AAH/", "z=1", "a-b.c=2", "p0=json:[]", "json:{}",
    'json:{"z":{"":[[],[1,[2.5,true]]]}," b ":"","/a":[{"é":1}]}',
]

SOAP_REPLY = reply("""<?xml version="1.0"?><e:Envelope xmlns:e="http://schemas.xmlsoap.org/soap/envelope/"><e:Body>
<r:mResponse xmlns:r="urn:r"><one>first</one><two>second</two></r:mResponse></e:Body></e:Envelope>""")


class SavedCallTest(VxcallCase):
    def setUp(self):
        self.path = os.path.join(self.folder(), "saved call")

    def save(self, *arguments, **options):
        run = vxcall("--save", self.path, *arguments, **options)
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, b"", b""), arguments)

    def test_is_the_same_on_the_wire_as_when_it_is_made_directly(self):
        for options in [
            ["-H", "X-One: a, b", "-H", "Content-Type: text/xml; charset=utf-8", "--http", "1.0", "-t", "30",
             "--no-redirect", "--max-reply", "100000", "--ca", "/etc/hostname"],
            ["-p", "soap-1999", "--style", "rpc", "-n", "urn:x"],
            ["-p", "soap-2001", "-n", "urn:x", "--result", "x", "--soap-header", "<a>1</a>", "--soap-header", "<b c='&lt;'/>"],
            ["-p", "soap-2001", "--style", "rpc", "-H", 'SOAPAction: "urn:x#m"'],
            ["-p", "soap-2001", "--style", "doc", "--soap-header", "<a/>"],
        ]:
            for parameters in ([], PARAMETERS):
                with self.subTest(options, parameters=len(parameters)):
                    server = self.raw_server()
                    call = [*options, server.url + "?q=%20&r", "méthode.a", *parameters]
                    direct = vxcall(*call)
                    self.save(*call)
                    loaded = vxcall("--load", self.path)
                    again = vxcall("--load", "-", "--async", input=vxcall("--save", "-", *call).stdout)
                    self.assertEqual(len(server.requests), 3)
                    self.assertGreater(len(server.requests[0]), 200)
                    self.assertEqual(server.requests[1], server.requests[0])
                    self.assertEqual(server.requests[2], server.requests[0])
                    for run in (loaded, again):
                        self.assertEqual((run.returncode, run.stdout, run.stderr),
                                         (direct.returncode, direct.stdout, direct.stderr))
                    self.assertEqual(vxcall("--load", self.path, "--print-request").stdout,
                                     vxcall(*call, "--print-request").stdout)

    def test_keeps_how_it_is_to_be_made(self):
        tls_peer, certificate = self.tls_peer()
        soap = self.raw_server(SOAP_REPLY)
        redirect = [self.peer.url("/redirect"), "echo", 7]
        for saved, loaded, status, fragment in [
            (["--ca", os.path.basename(certificate), tls_peer.url(), "echo", 7], [], 0, "7\n"),
            ([tls_peer.url(), "echo", 7], [], 3, "certificate"),
            (["-t", 1, self.peer.url("/silence"), "m"], [], 3, "did not answer within 1 second;"),
            (redirect, [], 0, "7\n"),
            (["--no-redirect", *redirect], [], 3, "307"),
            (["--max-reply", 9, self.peer.url(), "echo", 7], [], 3, "larger than the limit"),
            (["-p", "soap-2001", "--result", "two", soap.url, "m"], [], 0, '"second"\n'),
            # What is given with --load replaces what was saved.
            (["-p", "soap-2001", "--result", "two", soap.url, "m"], ["--result", "one"], 0, '"first"\n'),
            (["--max-reply", 9, self.peer.url(), "echo", 7], ["--max-reply", 9999], 0, "7\n"),
            (["-H", "X-One: 1", self.peer.url(), "request"], ["-H", "X-One: 2", "--http", "1.0"], 0, '"X-One": "2"'),
            (["http://nonexistent.invalid/x", "request"], ["--proxy", self.peer.url("/")], 0,
             "POST http://nonexistent.invalid/x HTTP/1.1"),
            ([self.peer.url(), "echo", 7], ["--repeat", 3, "-o", "full"], 0, '"/Result": 7'),
            ([self.peer.url(), "fault", 4, "no"], [], 1, "fault 4: no"),
        ]:
            with self.subTest(saved, loaded=loaded):
                self.save(*saved, cwd=os.path.dirname(certificate))
                run = vxcall("--load", self.path, *loaded)
                self.assertEqual(run.returncode, status, run.stderr)
                self.assertIn(fragment, (run.stdout if status == 0 else run.stderr).decode())

    def test_can_be_changed_and_saved_again(self):
        server = self.raw_server()
        self.save(server.url, "m", 1)
        self.save("--load", self.path, "-H", "X-One: 1")
        self.assertIn(b"<methodName>m</methodName>", vxcall("--load", self.path, "-v").stderr)
        self.assertIn(b"X-One: 1\r\n", server.requests[0])

    def test_that_cannot_be_written_is_a_failure(self):
        call = [self.peer.url(), "echo", 7]
        for path, reason in [("/dev/full", "No space left"), ("/no/such/folder/file", "No such file"), ("/", "directory")]:
            self.assert_complaint(vxcall("--save", path, *call), 3, "cannot write to " + path, reason)
        with open("/dev/full", "wb") as full:
            self.assert_complaint(vxcall("--save", "-", *call, stdout=full), 3, "standard output", "No space left")

    def test_that_is_damaged_is_refused_or_fails_in_one_line(self):
        self.save(self.peer.url(), "echo", 'json:{"a":[1,"é"]}')
        with open(self.path, "rb") as file:
            whole = file.read()
        self.assertIn(b"</plist>", whole)
        for length in range(0, whole.index(b"</plist>"), 7):
            run = vxcall("--load", "-", input=whole[:length])
            self.assert_complaint(run, 2, "standard input holds no saved call")
        for old, new in [(b"echo", b""), (b"http:", b"ftp:"), (b"ServiceURL", b"x"), (b"XML-RPC", b"SOAP-3000"),
                         (b"MethodName", b"x"), (b"http:", b"")]:
            self.assert_complaint(vxcall("--load", "-", input=whole.replace(old, new)), 2)

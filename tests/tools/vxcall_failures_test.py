"""How vxcall fails: the exit status, and one line that says why."""
import re
import shlex
import socket
import subprocess
import tempfile
import unittest

from vxcall_case import VXCALL, VxcallCase, vxcall

DEEP = 600


class UsageTest(VxcallCase):
    def test_is_refused_with_a_line_that_names_the_mistake(self):
        url = "http://127.0.0.1:1/"
        for arguments, fragment in [
            ([], "URL"),
            ([url], "METHOD"),
            (["--load", "/no/such/file"], "cannot read /no/such/file: No such file"),
            (["--load", "/dev/null"], "/dev/null holds no saved call; --save makes one"),
            (["--load", "/etc/passwd"], "holds no saved call"),
            (["--load", "f", url], "--load takes no URL"),
            (["--load", "f", "-p", "xml-rpc"], "--load"),
            (["--save", "f", "--proxy", url, url, "m"], "give --proxy to the vxcall that loads it"),
            (["--save", "f", "--print-request", url, "m"], "--print-request"),
            (["--save", "f", "--async", url, "m"], "--async"),
            (["--save", "f", "-v", url, "m"], "--verbose"),
            (["--print-request", "--repeat", "2", url, "m"], "--repeat"),
            (["--print-request", "-o", "full", url, "m"], "--output"),
            (["--save", "f", url, "m", "json:[null]"], "no room for null"),
            (["--save", "f", url, "m", "string:\x01"], "control characters"),
            (["--ca", "/no/such/file", url, "m"], "cannot read /no/such/file: No such file"),
            (["--max-reply", "0", url, "m"], "0"),
            (["localhost:80", "m"], "not a URL of http or https"),
            (["ftp://host/", "m"], "not a URL of http or https"),
            (["/RPC2", "m"], "not a URL"),
            (["http://", "m"], "http://"),
            (["http://a b/", "m"], "a b"),
            (["--bogus", url, "m"], "--bogus"),
            ([url, "m", "-x"], "string:-x"),
            (["-p", "soap", url, "m"], "soap"),
            (["--style", "pretty", url, "m"], "pretty"),
            (["-o", "yaml", url, "m"], "yaml"),
            (["--http", "2", url, "m"], "--http"),
            (["-t", "soon", url, "m"], "soon"),
            (["-t", "-1", url, "m"], "-1"),
            (["-t", "99999999999", url, "m"], "99999999999"),
            (["--repeat", "0", url, "m"], "0"),
            ([url, "m", "-t"], "timeout"),
            (["-H", "no colon", url, "m"], "NAME: VALUE"),
            (["-H", ": x", url, "m"], "NAME: VALUE"),
            (["-H", "A B: x", url, "m"], "NAME: VALUE"),
            (["-H", "A: x\r\nB: y", url, "m"], "line break"),
            (["--proxy", "host", url, "m"], "host"),
            ([url, "m", "int:abc"], "'abc' is not an int"),
            ([url, "m", "int:"], "int"),
            ([url, "m", "int:+-5"], "int"),
            ([url, "m", "int:5.0"], "int"),
            ([url, "m", "2147483648"], "32 bits"),
            ([url, "m", "int:-2147483649"], "32 bits"),
            ([url, "m", "99999999999999999999"], "99999999999999999999 does not fit"),
            ([url, "m", "json:[9223372036854775808]"], "9223372036854775808 does not fit"),
            ([url, "m", "double:x"], "double"),
            ([url, "m", "double:"], "double"),
            ([url, "m", "double:+-1"], "double"),
            ([url, "m", "1e999"], "does not fit"),
            ([url, "m", "bool:maybe"], "maybe"),
            ([url, "m", "date:2005-02-29"], "date"),
            ([url, "m", "date:2005-13-01"], "date"),
            ([url, "m", "date:2005-0201"], "date"),
            ([url, "m", "date:2005-02-28T24:00:00"], "date"),
            ([url, "m", "date:2005-02-28T13:45:09+0100"], "date"),
            ([url, "m", "date:2005-02-28T13:45:09."], "date"),
            ([url, "m", "date:2005-02-28T13:45"], "date"),
            ([url, "m", "date:2005-02-28 "], "date"),
            ([url, "m", "date:2005"], "date"),
            ([url, "m", "date:"], "date"),
            ([url, "m", "base64:AAA"], "base64"),
            ([url, "m", "base64:A==="], "base64"),
            ([url, "m", "base64:AB=="], "base64"),
            ([url, "m", "base64:AA==AA=="], "base64"),
            ([url, "m", "base64:*"], "base64"),
            ([url, "m", "nil:x"], "nil"),
            ([url, "m", "json:{"], "JSON"),
            ([url, "m", "json:"], "JSON"),
            ([url, "m", "json:" + "[" * DEEP + "]" * DEEP], "nested"),
            ([url, "m", "json:" + "[" * 60000], "JSON"),
            ([url, "m", "json:" + "[" * 60000 + "]" * 60000], "nested"),
            ([url, "m", "file:/no/such/file"], "No such file"),
            ([url, "m", "file:/"], "directory"),
            ([url, "m", "json:@/no/such/file"], "No such file"),
            ([url, "m", "json:@/etc/passwd"], "/etc/passwd is not JSON in line 1"),
            ([url, "m", "json:@/dev/null"], "/dev/null is not JSON"),
            ([url, "m", "file:-", "json:@-"], "once"),
            ([url, "m", "a=1", "a=2"], "named a"),
            ([url, "m", "1", "p1=2"], "named p1"),
            ([url, "m", b"\xff"], "UTF-8"),
            ([url, b"\xff"], "UTF-8"),
        ]:
            with self.subTest([argument[:60] for argument in arguments]):
                run = subprocess.run([VXCALL, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                     timeout=60, check=False)
                self.assert_complaint(run, 2, fragment)

    def test_help_and_version_go_to_standard_output(self):
        run = vxcall("--version")
        self.assertEqual((run.returncode, run.stderr), (0, b""))
        self.assertRegex(run.stdout.decode(), r"\Avxcall \d+\.\d+\.\d+\n\Z")
        run = vxcall("--help")
        self.assertEqual((run.returncode, run.stderr), (0, b""))

    def test_help_fits_a_screen_and_its_examples_are_calls(self):
        text = vxcall("--help").stdout.decode()
        self.assertLessEqual(len(text.splitlines()), 45)
        self.assertLessEqual(max(map(len, text.splitlines())), 80)
        examples = re.findall(r"^  vxcall (.*http.*?)(?: \|.*)?$", text, re.MULTILINE)
        self.assertGreaterEqual(len(examples), 3)
        for example in examples:
            arguments = [argument for argument in shlex.split(example) if argument not in ("--save", "add.call")]
            self.assertEqual(vxcall("--print-request", *arguments).returncode, 0, example)


class FaultTest(VxcallCase):
    def test_of_the_server_is_its_code_and_text(self):
        for code, text, line in [(4, "Too many parameters.", "fault 4: Too many parameters."),
                                 (-1, "", "fault -1"),
                                 (0, "é <b>", "fault 0: é <b>")]:
            self.assert_complaint(vxcall(self.peer.url(), "fault", code, "string:" + text), 1, line)
        self.assert_complaint(vxcall(self.peer.url(), "no.such.method"), 1, "fault 1:", "no.such.method")

    def test_text_is_kept_on_one_line(self):
        self.assert_complaint(vxcall(self.peer.url("/lines-in-fault"), "m"), 1, "fault 7: one two three")

    def test_that_imitates_the_transport_is_still_the_servers(self):
        self.assert_complaint(vxcall(self.peer.url("/fault-like-transport"), "m"), 1, "fault -65794")

    def test_ends_a_repetition(self):
        before = self.peer.ask("connections")
        self.assert_complaint(vxcall("--repeat", 5, self.peer.url(), "fault", 3, "no"), 1, "fault 3: no")
        self.assertEqual(self.peer.ask("connections"), before + 2)


class TransportFailureTest(VxcallCase):
    def test_of_the_reply_says_what_is_wrong_with_it(self):
        for path, fragments in [
            ("/status/404", ["status HTTP/1.1 404 Not Found"]),
            ("/status/503", ["status HTTP/1.1 503 Out To Lunch"]),
            ("/image", ["did not return a 'text/xml' response"]),
            ("/garbage", ["the reply of", "is not usable: mismatched tag"]),
            ("/other-document", ["methodResponse"]),
            ("/hang-up", ["closed the connection without sending anything"]),
            ("/short", ["the connection ended before the whole reply had arrived"]),
            ("/not-http", ["not HTTP"]),
        ]:
            for road in ([], ["--async"]):
                with self.subTest(path, road=road):
                    url = self.peer.url(path)
                    self.assert_complaint(vxcall(*road, url, "echo", 1), 3, url, *fragments)

    def test_refused_connection(self):
        with socket.socket() as closed:
            closed.bind(("127.0.0.1", 0))
            url = "http://127.0.0.1:%d/RPC2" % closed.getsockname()[1]
            self.assert_complaint(vxcall(url, "m"), 3, "cannot reach " + url + ": the connection was refused")

    def test_unknown_host(self):
        self.assert_complaint(vxcall("http://nonexistent.invalid/", "m"), 3,
                              "cannot reach http://nonexistent.invalid/", "name")

    def test_unknown_proxy(self):
        self.assert_complaint(vxcall("--proxy", "http://nonexistent.invalid:1", self.peer.url(), "m"), 3, "proxy")

    def test_time_out(self):
        url = self.peer.url("/silence")
        self.assert_complaint(vxcall("-t", 1, url, "m"), 3, "timed out: " + url + " did not answer within 1 second")

    def test_redirect_that_is_not_followed(self):
        self.assert_complaint(vxcall("--no-redirect", self.peer.url("/redirect"), "echo", 7), 3,
                              "307 Temporary Redirect")

    def test_certificate_that_nobody_vouches_for(self):
        peer, certificate = self.tls_peer()
        for options in ([], ["--ca", "/etc/hostname"]):
            self.assert_complaint(vxcall(*options, peer.url(), "echo", 1), 3, "no secure connection to " + peer.url(),
                                  "certificate could not be verified; --ca FILE")
        self.assertEqual(vxcall("--ca", certificate, peer.url(), "echo", 1).stdout, b"1\n")

    def test_reply_beyond_the_limit(self):
        server = self.raw_server()
        size = len(server.answer.partition(b"\r\n\r\n")[2])
        self.assertEqual(vxcall("--max-reply", size, server.url, "m").stdout, b"7\n")
        self.assert_complaint(vxcall("--max-reply", size - 1, server.url, "m"), 3, "larger than the limit; --max-reply")

    def test_server_that_hangs_up_while_a_large_request_goes_out(self):
        tls_peer, certificate = self.tls_peer()
        with tempfile.NamedTemporaryFile() as file:
            file.truncate(20000000)
            for peer in (self.peer, tls_peer):
                run = vxcall("--ca", certificate, peer.url("/hang-up-early"), "echo", "file:" + file.name)
                self.assert_complaint(run, 3, peer.url("/hang-up-early"))


if __name__ == "__main__":
    unittest.main()

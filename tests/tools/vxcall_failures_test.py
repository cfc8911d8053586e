"""How vxcall fails: the exit status, and one line that says why."""
import os
import signal
import socket
import subprocess
import tempfile
import unittest

from vxcall_case import VXCALL, Peer, VxcallCase, vxcall

DEEP = 600


class UsageTest(VxcallCase):
    def test_is_refused_with_a_line_that_names_the_mistake(self):
        url = "http://127.0.0.1:1/"
        for arguments, fragment in [
            ([], "URL"),
            ([url], "METHOD"),
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
        for word in ("URL METHOD [PARAM...]", "--protocol", "-n", "--style", "--result", "-H", "--soap-header",
                     "-t", "--proxy", "--no-redirect", "--http", "--async", "--repeat", "-o", "-v",
                     "--print-request", "--version", "--help", "base64", "Exit status"):
            self.assertIn(word, run.stdout.decode())


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
        with tempfile.TemporaryDirectory() as folder:
            certificate, key = os.path.join(folder, "certificate"), os.path.join(folder, "key")
            subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                            "-nodes", "-days", "2", "-subj", "/CN=localhost", "-addext",
                            "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate],
                           check=True, stderr=subprocess.DEVNULL)
            peer = Peer("--tls", certificate, key)
            self.addCleanup(peer.stop)
            self.assert_complaint(vxcall(peer.url(), "echo", 1), 3, "no secure connection to " + peer.url(),
                                  "certificate")


class ProcessTest(VxcallCase):
    def test_closed_pipe_is_a_failed_write_and_no_crash(self):
        reader, writer = os.pipe()
        os.close(reader)
        try:
            run = vxcall(self.peer.url(), "echo", 1, stdout=writer)
        finally:
            os.close(writer)
        self.assert_complaint(run, 3, "standard output", "Broken pipe")

    def test_full_disk_is_not_success(self):
        with open("/dev/full", "wb") as full:
            self.assert_complaint(vxcall(self.peer.url(), "echo", 1, stdout=full), 3, "No space left")
            self.assert_complaint(vxcall("--print-request", self.peer.url(), "echo", stdout=full), 3, "No space left")

    def test_interrupt_ends_a_waiting_call(self):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            process = subprocess.Popen([VXCALL, "http://127.0.0.1:%d/" % listener.getsockname()[1], "m"])
            connection = listener.accept()[0]
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(timeout=60), -signal.SIGINT)
            connection.close()


if __name__ == "__main__":
    unittest.main()

"""What vxcall sends, how often, and over how many connections."""
import json
import os
import subprocess
import unittest

from vxcall_case import VXCALL, VxcallCase, vxcall

REQUEST = """<?xml version="1.0" encoding="UTF-8"?>
  <methodCall>
    <methodName>examples.add</methodName>
    <params>
      <param>
          <value>
            <i4>1</i4>
          </value>
      </param>
      <param>
          <value>
            <double>2.5</double>
          </value>
      </param>
      <param>
          <value>
            <string>a &lt; b</string>
          </value>
      </param>
    </params>
  </methodCall>
""".replace("\n", "\r\n")


class RequestTest(VxcallCase):
    def request(self, *arguments):
        return json.loads(self.call("-H", "X-One: 1", *arguments, "request"))

    def test_document_is_printed_byte_for_byte_and_not_sent(self):
        run = vxcall("--print-request", "http://127.0.0.1:1/", "examples.add", "a=1", "b=2.5", "string:a < b")
        self.assertEqual((run.returncode, run.stderr, run.stdout.decode()), (0, b"", REQUEST))

    def test_printed_document_is_the_one_that_is_sent(self):
        arguments = [self.peer.url(), "echo", 'json:{"b":[1,"é"],"a":{}}', "base64:" + "QUJD" * 40, "nil:"]
        printed = vxcall("--print-request", *arguments).stdout.decode()
        # What the library captures has its line ends made the same.
        self.assertIn(printed.replace("\r", "\n"), vxcall("-v", *arguments).stderr.decode())

    def test_has_the_headers_of_the_options(self):
        headers = self.request("-H", "User-Agent:me", "-H", "x-one:  2 ")["headers"]
        self.assertEqual((headers["User-Agent"], headers["X-One"]), ("me", "1, 2"))
        self.assertEqual(headers["Content-Type"], "text/xml")

    def test_has_the_version_of_the_options(self):
        self.assertEqual(self.request()["line"], "POST /RPC2 HTTP/1.1")
        self.assertEqual(self.request("--http", "1.0")["line"], "POST /RPC2 HTTP/1.0")

    def test_goes_through_the_proxy(self):
        run = vxcall("--proxy", self.peer.url("/"), "http://nonexistent.invalid/somewhere", "request")
        self.assertEqual(json.loads(run.stdout)["line"], "POST http://nonexistent.invalid/somewhere HTTP/1.1")

    def test_follows_a_redirect(self):
        self.assertEqual(vxcall(self.peer.url("/redirect"), "echo", 7).stdout, b"7\n")

    def test_is_shown_with_its_reply_on_standard_error(self):
        run = vxcall("-v", self.peer.url(), "echo", "string:shown")
        self.assertEqual((run.returncode, run.stdout), (0, b'"shown"\n'))
        trace = run.stderr.decode().replace("\r\n", "\n")
        places = [trace.index(part) for part in ("> User-Agent: ", "<methodName>echo</methodName>",
                                                 "< HTTP/1.1 200 OK\n", "< Content-type: text/xml\n",
                                                 "<methodResponse>")]
        self.assertEqual(places, sorted(places))

    def test_is_shown_when_the_call_fails(self):
        trace = vxcall("-v", self.peer.url("/status/404"), "echo").stderr.decode()
        self.assertIn("<methodName>echo</methodName>", trace)
        self.assertTrue(trace.splitlines()[-1].startswith("vxcall: http"), trace)


class RepetitionTest(VxcallCase):
    def test_uses_one_connection_and_prints_the_last_result(self):
        for road in ([], ["--async"]):
            before = self.peer.ask("connections")
            # Two more by now: the one of the question before, and this one.
            self.assertEqual(self.call(*road, "--repeat", 20, "connections"), "%d\n" % (before + 1))

    def test_of_ten_thousand_calls_keeps_memory_and_descriptors_flat(self):
        environment = dict(os.environ)
        # Memory that a sanitizer holds back for its checks would count as growth.
        environment["ASAN_OPTIONS"] = environment.get("ASAN_OPTIONS", "") + ":quarantine_size_mb=1"
        before = self.peer.ask("connections")
        # The shell's process becomes that of vxcall, so that the server knows whom to look at.
        script = 'exec "$0" --repeat 10000 "$1" probe "$$"'
        run = subprocess.run(["sh", "-c", script, VXCALL, self.peer.url()], stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, env=environment, timeout=300, check=False)
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, b"10000\n", b""))

        self.assertEqual(self.peer.ask("connections"), before + 2)
        early, late = map(self.peer.ask("samples").get, ("1000", "10000"))
        self.assertEqual(late["descriptors"], early["descriptors"])
        # 9,000 calls that each lost as little as 64 bytes would exceed it.
        self.assertLess(late["kilobytes"], early["kilobytes"] + 512)


if __name__ == "__main__":
    unittest.main()

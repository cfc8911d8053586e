"""
Runs the command lines of a table.

A row is: NAME | COMMAND | EXIT STATUS | OUTPUT | COMPLAINT. Bash runs the command in a folder of its own, after the
beginning that the last line with "$ " gives (the first part of a word if it ends in "_"). A row with <<a, b>> makes one
command with each. OUTPUT is compared as JSON if it is that. COMPLAINT has a part of each line on standard
error, with " ... " between the lines. After "~" OUTPUT is but parts of what is printed, and COMPLAINT parts of a trace.
"""
import concurrent.futures
import os
import re
import socket
import string
import subprocess
import tempfile
import unittest
import xmlrpc.client

from toolcase import (CONTROLS, UNSHOWN, VXCALL, VXSERVE, Peer, Process, make_certificate, parsed, reply, response,
                      soap_peer)

EXAMPLES = os.environ["EXAMPLES"]
ENVELOPE = """<?xml version="1.0"?><e:Envelope xmlns:e="http://schemas.xmlsoap.org/soap/envelope/"
xmlns:i="http://www.w3.org/2001/XMLSchema-instance" xmlns:s="http://schemas.xmlsoap.org/soap/encoding/"><e:Body>
<mResponse>%s</mResponse></e:Body></e:Envelope>"""
VALUE = "<?xml version='1.0'?><methodResponse><params><param><value>%s</value></param></params></methodResponse>"
ANSWERS = {
    "/401": reply("", "401 Who"), "/404": reply("", "404 Not Found"), "/hang-up": b"",
    "/no": response(xmlrpc.client.Fault(7, "no")),
    "/redirect": reply("", "307 Temporary Redirect", "Location: /RPC2\r\n"),
    "/fault": response(xmlrpc.client.Fault(7, "one\ntwo\x7f" + CONTROLS)),
    "/fault-like-transport": response(xmlrpc.client.Fault(-65794, "/BQStreamFault")),
    "/nothing": reply(VALUE % ""), "/null": reply(VALUE % "<struct><member><name>a</name><value/></member></struct>"),
    "/doubles": reply(VALUE % ("<array><data><value><double>nan</double></value><value><double>inf</double></value>"
                               "<value><double>0.30000000000000004</double></value></data></array>")),
    "/soap": reply(ENVELOPE % "<one>first</one><two>second</two>"),
    "/soap-list": reply(ENVELOPE % "<a>x</a><b><c.d i:type='s:Array'><v>y</v><v/></c.d></b>"),
}


def rows():
    beginning = ""
    with open(os.environ["CASES"] + ".cases", encoding="utf-8") as table:
        for line in map(str.strip, table):
            if line.startswith("$ "):
                beginning = line[2:] if line.endswith("_") else line[2:] + " "
            elif line and not line.startswith("#"):
                name, command, *expected = map(str.strip, re.split(r"\s\|(?=\s|$)", line))
                status, output, complaint = (expected + ["", ""])[:3]
                for each in variants(beginning + command):
                    yield name, each, int(status), output, complaint


def variants(command):
    choice = re.search("<<(.*?)>>", command)
    if choice is None:
        return [command]
    return [each for part in choice[1].split(", ")
            for each in variants(command[:choice.start()] + part + command[choice.end():])]


class CasesTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        certificate = make_certificate(folder.name)
        tls, peer = Peer(certificate=certificate), Peer(ANSWERS)
        closed = socket.socket()
        closed.bind(("127.0.0.1", 0))
        example, serve, soap = Process(EXAMPLES + "/example_server", 0), Process(VXSERVE, "--port", 0), soap_peer()
        for stop in (tls.stop, peer.stop, closed.close, example.stop, serve.stop, soap.stop):
            cls.addClassCleanup(stop)
        cls.environment = {
            **os.environ, "PATH": ":".join([os.path.dirname(VXCALL), os.path.dirname(VXSERVE), os.environ["PATH"]]),
            "LC_ALL": "C.UTF-8", "peer": peer.url(""), "tls": tls.url(), "ca": certificate[0], "soap": soap.url(),
            "examples": EXAMPLES, "example": example.url("/"),
            "serve": serve.url(""), "port": str(serve.port), "closed": "http://127.0.0.1:%d/" % closed.getsockname()[1]}

    def test_every_row(self):
        table = list(rows())
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            for (name, command, *expected), ended in zip(table, pool.map(lambda row: self.run_row(row[1]), table)):
                with self.subTest(name, command=command):
                    self.check(ended, *expected)

    def run_row(self, command):
        with tempfile.TemporaryDirectory() as folder:
            # `timeout` ends a tool that goes on, whatever bash has made of it.
            return subprocess.run(["timeout", "60", "bash", "-c", command], cwd=folder, env=self.environment, check=False,
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def check(self, ended, status, output, complaint):
        printed, errors = ended.stdout.decode(), ended.stderr.decode()
        output, complaint = (string.Template(text).safe_substitute(self.environment) for text in (output, complaint))
        self.assertEqual(ended.returncode, status, errors)
        self.assertNotRegex(errors.replace("\r", ""), UNSHOWN)
        if output.startswith("~"):
            self.assert_parts(output[1:], printed)
        else:
            self.assertEqual(parsed(printed), parsed(output), errors)
        if complaint.startswith("~"):
            return self.assert_parts(complaint[1:], errors)
        lines, parts = errors.splitlines(), list(filter(None, complaint.split(" ... ")))
        self.assertEqual(len(lines), len(parts), errors)
        for line, part in zip(lines, parts):
            self.assertRegex(line, "^(vxcall|vxserve): ")
            self.assertIn(part, line)

    def assert_parts(self, parts, text):
        self.assertRegex(text, "(?s)" + ".*".join(map(re.escape, parts.split(" ... "))))

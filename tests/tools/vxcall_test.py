"""vxcall as a process among others: terminals, signals, secrets on the wire and in files."""
import contextlib
import os
import pty
import signal
import subprocess
import tempfile
import unittest

from toolcase import CONTROLS, ESCAPED, UNSHOWN, VXCALL, Peer, reply, response, vxcall

PARAMETERS = ["2147483647", "double:5e-324", "bool:0", "string: ", "string:]]> &amp; <a> \" é \U0001f600", "nil:",
              "date:2005-02-28T13:45:09.987-05:30", "base64:AAH/", "a-b.c=2", 'json:{"z":{"":[[],[1,[2.5,true]]]}," b ":"","/a":[]}']


class VxcallCase(unittest.TestCase):
    def peer(self, answer=response(7)):
        """A server that answers every call alike, which may be made to wait."""
        peer = Peer({"/RPC2": answer})
        self.addCleanup(peer.stop)
        return peer


class RequestTest(VxcallCase):
    def test_of_a_saved_call_is_the_same_on_the_wire(self):
        with tempfile.NamedTemporaryFile() as file:
            for options in [
                ["-H", "X-One: a, b", "-H", "Content-Type: text/xml; charset=utf-8", "--http", "1.0", "-t", "30",
                 "--no-redirect", "--max-reply", "100000", "--ca", "/etc/hostname"],
                ["-p", "soap-1999", "--style", "rpc", "-n", "urn:x"],
                ["-p", "soap-2001", "-n", "urn:x", "--result", "x", "--soap-header", "<a>1</a>", "--soap-header", "<b c='&lt;'/>"],
                ["-p", "soap-2001", "--style", "rpc", "-H", 'SOAPAction: "urn:x#m"'],
            ]:
                for parameters in ([], PARAMETERS):
                    peer = self.peer()
                    call = [*options, peer.url() + "?q=%20&r", "méthode.a", *parameters]
                    direct = vxcall(*call)
                    self.assertEqual(vxcall("--save", file.name, *call).returncode, 0)
                    loaded = vxcall("--load", file.name)
                    self.assertEqual((loaded.returncode, loaded.stdout, loaded.stderr),
                                     (direct.returncode, direct.stdout, direct.stderr))
                    self.assertEqual(peer.requests, peer.requests[:1] * 2)

    def test_is_repeated_on_one_connection(self):
        for options in ([], ["--async"]):
            peer = self.peer()
            self.assertEqual(vxcall(*options, "--repeat", 20, peer.url(), "m").stdout, "7\n")
            self.assertEqual((len(peer.requests), peer.connections), (20, 1))
        peer = self.peer(reply("", "503 No"))
        self.assertEqual((vxcall("--repeat", 20, peer.url(), "m").returncode, len(peer.requests)), (3, 1))

    def test_is_shown_without_its_secrets(self):
        peer = self.peer(reply("<methodResponse/>", headers="Set-Cookie: s3cret\r\nLocation: /a?s3cret\r\n"
                               "WWW-Authenticate: x\r\nX-A: \u009b http://s3cret@h/?s3cret\r\n"))
        run = vxcall("-v", "-o", "full", "-H", "authorization: Basic s3cret", "-H", "X-Api-Key: s3cret",
                     peer.url("/RPC2?s3cret").replace("//", "//me:s3cret@"), "m")
        self.assertIn(b"X-Api-Key: s3cret", peer.requests[0])
        self.assertNotRegex(run.stderr, UNSHOWN)
        for line in ("> authorization: ***", "> X-Api-Key: ***", "< Set-Cookie: ***", "< Location: /a?***",
                     "< WWW-Authenticate: x", r"< X-A: \u009b http://***@h/?***"):
            self.assertIn(line + "\n", run.stderr)
        self.assertIn('"X-Api-Key": "***"', run.stdout)


def read_terminal(master, text=None, seen=""):
    """What it shows until a text is there, or for none to the end."""
    with contextlib.suppress(OSError):
        while text is None or text not in seen:
            seen += os.read(master, 4096).decode()
    return seen


class Terminal:
    """A vxcall whose standard error is a terminal."""

    def __init__(self, *arguments):
        self.master, slave = pty.openpty()
        self.seen = ""
        self.process = subprocess.Popen([VXCALL, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=slave, start_new_session=True)
        os.close(slave)

    def read_until(self, text):
        self.seen = read_terminal(self.master, text, self.seen)

    def end(self):
        """What stays on the screen in the end, the exit status and the standard output."""
        self.read_until(None)
        lines = []
        for line in self.seen.replace("\r\n", "\n").split("\n"):
            shown = ""
            for part in line.split("\r"):
                shown = part + shown[len(part):]
            lines.append(shown.rstrip(" "))
        output = self.process.communicate(timeout=60)[0]
        os.close(self.master)
        return "\n".join(lines), self.process.returncode, output


class TerminalTest(VxcallCase):
    def start(self, *options):
        self.server = self.peer()
        self.server.may_answer.clear()
        return Terminal(*options, self.server.url(), "m")

    def test_is_commanded_nothing_where_files_keep_their_bytes(self):
        peer = self.peer(response(CONTROLS))
        for arguments, raw in [(["m"], False), (["-o", "full", "m"], False), (["-o", "plist", "m"], True),
                               (["--print-request", "m", CONTROLS], True), (["--save", "-", "m", CONTROLS], True)]:
            master, slave = pty.openpty()
            vxcall(peer.url(), *arguments, stdout=slave)
            os.close(slave)
            shown = read_terminal(master)
            os.close(master)
            self.assertIn(ESCAPED, shown)
            self.assertNotRegex(shown.replace("\r", ""), UNSHOWN)
            self.assertIn(CONTROLS if raw else ESCAPED, vxcall(peer.url(), *arguments).stdout, arguments)

    def test_shows_that_a_call_waits_until_it_ends(self):
        for options in ([], ["--async"]):
            terminal = self.start(*options)
            terminal.read_until("waiting for the reply, 2 s")
            self.assertIn("waiting for the reply, 1 s", terminal.seen)
            self.server.may_answer.set()
            self.assertEqual(terminal.end(), ("", 0, b"7\n"))

    def test_is_left_clean_by_an_interrupt(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            terminal = self.start()
            terminal.read_until("waiting for the reply, 1 s")
            terminal.process.send_signal(number)
            self.assertEqual(terminal.end(), ("", -number, b""))

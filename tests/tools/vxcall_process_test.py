"""vxcall as a process among others: pipes, terminals, signals and streams that are missing."""
import fcntl
import os
import pty
import signal
import struct
import subprocess
import termios
import xmlrpc.client

from vxcall_case import CONTROLS, ESCAPED, UNSHOWN, VXCALL, VxcallCase, reply, vxcall


class OutputTest(VxcallCase):
    def test_reader_that_has_seen_enough_ends_it_quietly(self):
        value = "json:[%s]" % ",".join(map(str, range(10000)))
        for call in ([self.peer.url(), "echo", value], ["--print-request", self.peer.url(), "echo", value]):
            # The output exceeds what a pipe holds.
            script = '("$@"; echo "$?" >&2) | head -n 1'
            run = subprocess.run(["sh", "-c", script, "sh", VXCALL, *call], stdout=subprocess.PIPE,
                                 stderr=subprocess.PIPE, timeout=60, check=False)
            self.assertEqual(len(run.stdout.splitlines()), 1)
            self.assertEqual(run.stderr.decode(), "%d\n" % (128 + signal.SIGPIPE))

    def test_that_cannot_be_written_is_not_success(self):
        reader, writer = os.pipe()
        os.close(reader)
        with open(writer, "wb") as pipe, open("/dev/full", "wb") as full:
            run = vxcall(self.peer.url(), "echo", 1, stdout=pipe, restore_signals=False)
            self.assert_complaint(run, 3, "cannot write to standard output: Broken pipe")
            for arguments in (["echo", 1], ["types", "-o", "plist"], ["--print-request", "echo"], ["--help"], ["--version"]):
                self.assert_complaint(vxcall(self.peer.url(), *arguments, stdout=full), 3, "No space left")

    def test_streams_that_are_missing_are_not_taken_by_connections(self):
        for redirection, status, complaint in [(">&-", 3, b"Bad file descriptor"), ("2>&-", 0, b""), ("<&-", 0, b""),
                                               ("<&- >&- 2>&-", 3, b"")]:
            with self.subTest(redirection):
                run = subprocess.run(["sh", "-c", 'exec "$0" "$@" ' + redirection, VXCALL, self.peer.url(), "echo", "7"],
                                     stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60, check=False)
                self.assertEqual(run.returncode, status, run.stderr)
                self.assertEqual(run.stdout, b"7\n" if status == 0 else b"")
                self.assertIn(complaint, run.stderr)

    def test_keeps_its_bytes_but_on_a_terminal_commands_nothing(self):
        server = self.raw_server(reply(xmlrpc.client.dumps((CONTROLS,), methodresponse=True)))
        for arguments, raw in [(["m"], False), (["-o", "full", "m"], False), (["-o", "plist", "m"], True),
                               (["--print-request", "m", CONTROLS], True), (["--save", "-", "m", CONTROLS], True)]:
            master, slave = pty.openpty()
            vxcall(server.url, *arguments, stdout=slave)
            os.close(slave)
            shown = os.read(master, 4096).decode()
            self.assertIn(ESCAPED, shown)
            self.assertNotRegex(shown.replace("\r", ""), UNSHOWN)
            os.close(master)
            self.assertIn(CONTROLS if raw else ESCAPED, vxcall(server.url, *arguments).stdout.decode(), arguments)


class Terminal:
    """A vxcall whose standard error is a terminal."""

    def __init__(self, *arguments):
        self.master, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 80, 0, 0))
        self.seen = ""
        self.process = subprocess.Popen([VXCALL, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=slave, start_new_session=True)
        os.close(slave)

    def read_until(self, text):
        """Reads until a text is there, or for none to the end."""
        while text is None or text not in self.seen:
            try:
                self.seen += os.read(self.master, 1000).decode()
            except OSError:
                return

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


class WaitingTest(VxcallCase):
    def start(self, *options):
        self.server = self.raw_server()
        self.server.may_answer.clear()
        return Terminal(*options, self.server.url, "m")

    def test_is_shown_on_a_terminal_and_taken_away(self):
        for options in ([], ["--async"]):
            terminal = self.start(*options)
            terminal.read_until("waiting for the reply, 2 s")
            self.assertIn("waiting for the reply, 1 s", terminal.seen)
            self.server.may_answer.set()
            self.assertEqual(terminal.end(), ("", 0, b"7\n"))

    def test_gives_way_to_a_complaint(self):
        terminal = self.start("-t", "2")
        screen, *end = terminal.end()
        self.assertRegex(screen, r"\Avxcall: timed out: .*\n\Z")
        self.assertIn("waiting for the reply, 1 s", terminal.seen)
        self.assertEqual(end, [3, b""])

    def test_of_a_short_call_is_not_shown(self):
        terminal = self.start()
        self.server.may_answer.set()
        self.assertEqual((terminal.end(), terminal.seen), (("", 0, b"7\n"), ""))

    def test_interrupt_takes_it_away_and_ends_the_call(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            terminal = self.start()
            terminal.read_until("waiting for the reply, 1 s")
            terminal.process.send_signal(number)
            self.assertEqual(terminal.end(), ("", -number, b""))

    def test_interrupt_is_130_for_the_shell_at_once(self):
        server = self.raw_server()
        server.may_answer.clear()
        shell = subprocess.Popen(["sh", "-c", 'trap : INT; "$0" "$@"; echo "$?"', VXCALL, server.url, "m"],
                                 stdout=subprocess.PIPE, start_new_session=True)
        self.assertTrue(server.arrived.wait(60))
        os.killpg(shell.pid, signal.SIGINT)
        self.assertEqual(shell.communicate(timeout=60)[0], b"130\n")

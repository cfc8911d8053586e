"""The help, the man pages and the completions of the tools have the same options."""
import os
import re
import shlex
import unittest

from toolcase import VXCALL, VXSERVE, run

TOOLS = {"vxcall": VXCALL, "vxserve": VXSERVE}
PACKAGING = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "packaging")
COMPLETION, MAN = os.path.join(PACKAGING, "completion"), os.path.join(PACKAGING, "man")
METHODS = ["system." + name for name in ("listMethods", "methodHelp", "methodSignature", "multicall")]
OPTION = re.compile(r"^\s+(?:-(\w), ?)?--([\w-]+)(?: ([A-Z]+))?(?:\s|$)", re.MULTILINE)
MAN_OPTION = re.compile(r"^\.It (?:Fl (\w) , )?Fl -([\w-]+)(?: Ar ([A-Z]+))?$", re.MULTILINE)


def option_names(program):
    options = OPTION.findall(run(program, "--help").stdout)
    return sorted(name for short, long, _ in options for name in ("-" + short, "--" + long) if name != "-")


def complete_in_bash(name, *words):
    """What bash offers for the last of the words."""
    script = 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); "_$1"; printf "%s\\n" "${COMPREPLY[@]}"'
    completion = run("bash", "-c", script, "bash", os.path.join(COMPLETION, name + ".bash"), name, *words)
    return (sorted(completion.stdout.split()), completion.stderr)


class DocumentationTest(unittest.TestCase):
    def test_help_fits_a_screen_and_its_examples_are_right(self):
        for name, program in TOOLS.items():
            self.assertRegex(run(program, "--version").stdout, r"\A%s \d+\.\d+\.\d+\n\Z" % name)
            ended = run(program, "--help")
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertTrue(all(len(line) <= 80 for line in ended.stdout.splitlines()[:46]), ended.stdout)
            self.assertLessEqual(ended.stdout.count("\n"), 45)
            examples = re.findall(r"^  vxcall (.*http.*?)(?: \|.*)?$", ended.stdout, re.MULTILINE)
            self.assertGreaterEqual(len(examples), 3)
            for example in examples:
                arguments = [argument for argument in shlex.split(example) if argument not in ("--save", "add.call")]
                self.assertEqual(run(VXCALL, "--print-request", *arguments).returncode, 0, example)

    def test_man_pages_and_completions_have_the_options_of_the_help(self):
        for name, program in TOOLS.items():
            path, completion = os.path.join(MAN, name + ".1"), os.path.join(COMPLETION, "_" + name)
            with open(path, encoding="utf-8") as page:
                options = MAN_OPTION.findall(page.read())
            self.assertEqual(sorted(options), sorted(OPTION.findall(run(program, "--help").stdout)))
            formatted = run("groff", "-mdoc", "-Tascii", "-ww", path)
            self.assertEqual((formatted.returncode, formatted.stderr), (0, ""))
            self.assertGreater(len(formatted.stdout.splitlines()), 30)
            # In place of zsh's own function one that shows what it was called with.
            arguments = run("zsh", "-fc", '_arguments() { print -rl -- "$@" }; source "$1"', "zsh", completion)
            self.assertEqual((run("zsh", "-n", completion).stderr, arguments.stderr), ("", ""))
            offered = re.findall(r"^(?:\([^)]*\))?\*?(-[\w-]+)\[", arguments.stdout, re.MULTILINE)
            self.assertEqual(sorted(offered), option_names(program))
            self.assertEqual("2:method:(%s)" % " ".join(METHODS) in arguments.stdout, name == "vxcall")

    def test_bash_completes_options_and_values(self):
        url, file = ["http", ":", "//h", ":", "80/R"], os.path.join(COMPLETION, "_vxcall")
        for tool, offered, *words in [
            *[(name, option_names(program), "-") for name, program in TOOLS.items()],
            ("vxserve", ["--port"], "--po"), ("vxserve", [], "--port", ""),
            *[("vxcall", offered, *words) for offered, *words in [
                (["soap-1999", "soap-2001"], "-p", "soap"), (["soap-1999", "soap-2001"], "--protocol", "=", "soap"),
                (["--protocol=soap-1999", "--protocol=soap-2001"], "--protocol=soap"), (["full", "json", "plist"], "-o", ""),
                ([], "--timeout", ""), (["https://"], "https"), (METHODS, *url, ""), (METHODS[1:2], *url, "system.methodH"),
                (METHODS, "-v", "--proxy", *url, "-t", "5", *url, ""), (["http://", "https://"], "--proxy", *url, "http"),
                ([], "--load", "f", ""), ([], *url, "m", ""), ([file], "--load", file[:-1]), ([file], "--ca", "=", file[:-1]),
                ([file], *url, "m", "a", "=", "file", ":", file[:-1]), ([file], *url, "m", "json", ":@", file[:-1]),
                (["a=json:@" + file], "http://h", "m", "a=json:@" + file[:-1]), ([], *url, "m", "json", ":", file[:-1]),
            ]],
        ]:
            with self.subTest(words):
                self.assertEqual(complete_in_bash(tool, *words), (offered, ""))

"""The man pages and completions of the tools have the options of their --help, no more and no fewer."""
import os
import re
import shutil
import subprocess
import unittest

TOOLS = {name: os.environ[name.upper()] for name in ("vxcall", "vxserve") if name.upper() in os.environ}
PACKAGING = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "packaging")


def packaged(*path):
    return os.path.join(PACKAGING, *path)


def run(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60,
                          check=False, text=True)


def documented_in_help(program):
    """The options with all their names, each with what its argument is called."""
    options = set()
    for line in run(program, "--help").stdout.splitlines():
        match = re.match(r"\s+((?:-\w, ?)?--[\w-]+)(?: ([A-Z]+))?(?:\s|$)", line)
        if match:
            options.add((match[1].replace(" ", "").replace(",", " "), match[2]))
    return options


def documented_in_man(name):
    options = set()
    with open(packaged("man", name + ".1"), encoding="utf-8") as page:
        for line in page:
            match = re.match(r"\.It (?:Fl (\w) , )?Fl -([\w-]+)(?: Ar ([A-Z]+))?$", line)
            if match:
                options.add(((f"-{match[1]} " if match[1] else "") + "--" + match[2], match[3]))
    return options


def names_in_help(program):
    return {name for names, _ in documented_in_help(program) for name in names.split()}


def complete_in_bash(name, *words):
    """What bash offers for the last of the words."""
    script = 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); "_$1"; printf "%s\\n" "${COMPREPLY[@]}"'
    completion = run("bash", "-c", script, "bash", packaged("completion", name + ".bash"), name, *words)
    return (completion.stdout.split(), completion.stderr)


class DocumentationTest(unittest.TestCase):
    def test_man_page_has_the_options(self):
        for name, program in TOOLS.items():
            with self.subTest(name):
                self.assertGreater(len(documented_in_help(program)), 5)
                self.assertEqual(documented_in_man(name), documented_in_help(program))

    def test_man_page_formats_without_a_warning(self):
        if shutil.which("groff") is None:
            self.skipTest("no groff here")
        for name in ("vxcall", "vxserve"):
            formatted = run("groff", "-mdoc", "-Tascii", "-ww", packaged("man", name + ".1"))
            self.assertEqual((formatted.returncode, formatted.stderr), (0, ""))
            self.assertGreater(len(formatted.stdout.splitlines()), 30)

    def test_bash_completes_the_options(self):
        for name, program in TOOLS.items():
            with self.subTest(name):
                offered, complaint = complete_in_bash(name, "-")
                self.assertEqual((sorted(offered), complaint), (sorted(names_in_help(program)), ""))

    def test_bash_completes_values(self):
        for words, offered in [
            (["vxcall", "--prot"], ["--protocol"]),
            (["vxcall", "-p", "soap"], ["soap-1999", "soap-2001"]),
            (["vxcall", "-o", ""], ["json", "plist", "full"]),
            (["vxcall", "--timeout", ""], []),
            (["vxcall", "--load", packaged("completion", "_vxc")], [packaged("completion", "_vxcall")]),
            (["vxcall", "https"], ["https://"]),
            (["vxserve", "--po"], ["--port"]),
            (["vxserve", "--port", ""], []),
        ]:
            with self.subTest(words):
                self.assertEqual(complete_in_bash(*words), (offered, ""))

    def test_zsh_completes_the_options(self):
        if shutil.which("zsh") is None:
            self.skipTest("no zsh here")
        for name, program in TOOLS.items():
            with self.subTest(name):
                path = packaged("completion", "_" + name)
                self.assertEqual(run("zsh", "-n", path).stderr, "")
                # In place of zsh's own function one that shows what it was called with.
                arguments = run("zsh", "-fc", '_arguments() { print -rl -- "$@" }; source "$1"', "zsh", path)
                self.assertEqual(arguments.stderr, "")
                offered = re.findall(r"^(?:\([^)]*\))?\*?(-[\w-]+)\[", arguments.stdout, re.MULTILINE)
                self.assertEqual(sorted(offered), sorted(names_in_help(program)))


if __name__ == "__main__":
    unittest.main()

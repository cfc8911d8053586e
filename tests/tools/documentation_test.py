"""The man pages and completions of the tools have the options of their --help, no more and no fewer."""
import os
import re
import shutil
import subprocess
import unittest

TOOLS = {name: os.environ[name.upper()] for name in ("vxcall", "vxserve") if name.upper() in os.environ}
PACKAGING = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "packaging")
COMPLETION, MAN = os.path.join(PACKAGING, "completion"), os.path.join(PACKAGING, "man")
METHODS = ["system." + name for name in ("listMethods", "methodHelp", "methodSignature", "multicall")]
OPTION = re.compile(r"\s+((?:-\w, ?)?--[\w-]+)(?: ([A-Z]+))?(?:\s|$)")
MAN_OPTION = re.compile(r"\.It (?:Fl (\w) , )?Fl -([\w-]+)(?: Ar ([A-Z]+))?$", re.MULTILINE)


def run(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60,
                          check=False, text=True)


def options_of(program):
    """The options with all their names, each with what its argument is called."""
    matches = filter(None, map(OPTION.match, run(program, "--help").stdout.splitlines()))
    return {(match[1].replace(" ", "").replace(",", " "), match[2]) for match in matches}


def option_names(program):
    return sorted(name for names, _ in options_of(program) for name in names.split())


def complete_in_bash(name, *words):
    """What bash offers for the last of the words."""
    script = 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); "_$1"; printf "%s\\n" "${COMPREPLY[@]}"'
    completion = run("bash", "-c", script, "bash", os.path.join(COMPLETION, name + ".bash"), name, *words)
    return (sorted(completion.stdout.split()), completion.stderr)


class DocumentationTest(unittest.TestCase):
    def test_man_page_has_the_options(self):
        for name, program in TOOLS.items():
            with open(os.path.join(MAN, name + ".1"), encoding="utf-8") as page:
                options = {((f"-{short} " if short else "") + "--" + long, value or None)
                           for short, long, value in MAN_OPTION.findall(page.read())}
            self.assertGreater(len(options), 5)
            self.assertEqual(options, options_of(program))

    def test_man_page_formats_without_a_warning(self):
        if shutil.which("groff") is None:
            self.skipTest("no groff here")
        for name in ("vxcall", "vxserve"):
            formatted = run("groff", "-mdoc", "-Tascii", "-ww", os.path.join(MAN, name + ".1"))
            self.assertEqual((formatted.returncode, formatted.stderr), (0, ""))
            self.assertGreater(len(formatted.stdout.splitlines()), 30)

    def test_bash_completes_options_and_values(self):
        rows = [([name, "-"], option_names(program)) for name, program in TOOLS.items()]
        url, file = ["http", ":", "//h", ":", "80/R"], os.path.join(COMPLETION, "_vxcall")
        rows += [(["vxcall", *words], offered) for words, offered in [
            (["--prot"], ["--protocol"]),
            (["-p", "soap"], ["soap-1999", "soap-2001"]),
            (["--protocol", "=", "soap"], ["soap-1999", "soap-2001"]),
            (["--protocol=soap"], ["--protocol=soap-1999", "--protocol=soap-2001"]),
            (["-o", ""], ["full", "json", "plist"]),
            (["--timeout", ""], []),
            (["https"], ["https://"]),
            ([*url, ""], METHODS), ([*url, "system.methodH"], METHODS[1:2]),
            (["-v", "--proxy", *url, "-t", "5", *url, ""], METHODS),
            (["--proxy", *url, "http"], ["http://", "https://"]),
            (["--load", "f", ""], []), ([*url, "m", ""], []),
            (["--load", file[:-1]], [file]), (["--ca", "=", file[:-1]], [file]), (["--save", file[:-1]], [file]),
            ([*url, "m", "a", "=", "file", ":", file[:-1]], [file]),
            ([*url, "m", "json", ":@", file[:-1]], [file]),
            (["http://h", "m", "a=json:@" + file[:-1]], ["a=json:@" + file]),
            ([*url, "m", "json", ":", file[:-1]], []),
        ]]
        rows += [(["vxserve", "--po"], ["--port"]), (["vxserve", "--port", ""], [])]
        for words, offered in rows:
            with self.subTest(words):
                self.assertEqual(complete_in_bash(*words), (offered, ""))

    def test_zsh_completes_the_options(self):
        if shutil.which("zsh") is None:
            self.skipTest("no zsh here")
        for name, program in TOOLS.items():
            path = os.path.join(COMPLETION, "_" + name)
            self.assertEqual(run("zsh", "-n", path).stderr, "")
            # In place of zsh's own function one that shows what it was called with.
            arguments = run("zsh", "-fc", '_arguments() { print -rl -- "$@" }; source "$1"', "zsh", path)
            self.assertEqual(arguments.stderr, "")
            offered = re.findall(r"^(?:\([^)]*\))?\*?(-[\w-]+)\[", arguments.stdout, re.MULTILINE)
            self.assertEqual(sorted(offered), option_names(program))
            self.assertEqual("2:method:(%s)" % " ".join(METHODS) in arguments.stdout, name == "vxcall")

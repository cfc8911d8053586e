#!/usr/bin/env python3
"""Compiles and runs the snippets of the documents and prints every fault.

usage: check_snippets.py SOURCE BUILD CC CXX FLAGS DOCUMENT...     without a BUILD nothing is run

  c, cpp    Compiled, as the body of the function in FRAGMENT if it is not a file. A block that begins with a
            comment with a name ("// sum.cpp") is that file; a session or another file must use it.
  python    Compiled, and named likewise.
  sh        For the reader's own machine: not run. check_project.py looks for the project's commands in it.
  console   A session. Each line after "$ " is run and must print the lines below it, on either stream; a last
            line "(exit status N)" is the status if it is not 0. A command that ends with "&" is a server, which
            runs until the document ends. It gets port 0 for 8080, and prints its port in the first line.
  text      Not checked.
"""

import difflib
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile

from check_project import report

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)
NAME = re.compile(r"(?://|/\*|#) ([\w.]+\.(?:c|cpp|h|py))\b")
FILE = re.compile(r"^#include |^(?!(?:if|for|while|switch|else|do)\b)\w.*\)\s*(?:const )?\{$", re.M)
COMMAND = re.compile(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", re.M)
DOCUMENTED_PORT = "8080"
FRAGMENT = """#include <stdio.h>
#include <VX/VX.h>
void fragment(VXMethodInvocationRef invocation, VXProtocolHandlerRef handler, const BQURL* url,
              const BQDictionary* parameters, const BQDictionary* result, const BQData* document) {
"""


class Document:
    def __init__(self, path, folder, build, compilers):
        self.path, self.folder, self.build, self.compilers = path, folder, build, compilers
        text = path.read_text()
        self.blocks = [(text.count("\n", 0, match.start(2)) + 1, match[1], match[2]) for match in BLOCK.finditer(text)]
        self.files = {NAME.match(block)[1]: block for _, _, block in self.blocks if NAME.match(block)}
        self.port = DOCUMENTED_PORT
        self.write_files()

    def write_files(self):
        for name, text in self.files.items():
            (self.folder / name).write_text(text.replace(DOCUMENTED_PORT, self.port))

    def check(self):
        """Yields a fault, or None if it is in order, for each thing that was checked."""
        for line, language, text in self.blocks:
            place = f"{self.path}:{line}"
            if language in ("c", "cpp"):
                yield from self.check_code(place, line, language, text)
            elif language == "python":
                compile("\n" * (line - 1) + text, self.path, "exec")
            elif language not in ("console", "sh", "text"):
                yield f"{place}: nobody checks the language {language}"
        for name, text in self.files.items():
            users = [other for _, language, other in self.blocks if other != text and language != "text" and name in other]
            yield None if users else f"{self.path}: no session uses {name}"
        if self.build:
            yield from self.run_sessions()

    def check_code(self, place, line, language, text):
        flags = ["-Wall", "-Wextra", "-Werror", f"-I{self.folder}", "-fsyntax-only", "-"]
        if not FILE.search(text):
            text = FRAGMENT + f'#line {line} "{self.path}"\n' + text + "}\n"
            flags += ["-Wno-unused-parameter", "-Wno-unused-variable"]
        language = ["-std=c11", "-xc"] if language == "c" else ["-std=c++20", "-xc++"]
        outcome = subprocess.run([self.compilers / ("cc" if language[1] == "-xc" else "c++"), *language, *flags],
                                 input=text, text=True, capture_output=True)
        yield None if outcome.returncode == 0 else f"{place}: does not compile\n{outcome.stderr}"

    def run_sessions(self):
        """Runs all sessions, which share a directory, programs and servers."""
        self.servers = []
        try:
            for line, language, text in self.blocks:
                commands = COMMAND.findall(text) if language == "console" else []
                yield None if "".join(f"$ {c}\n{o}" for c, o in commands) in ("", text) else f"{self.path}:{line}: no command"
                for command, shown in commands:
                    printed = self.run(command)
                    differences = "\n".join(difflib.unified_diff(shown.splitlines(), printed, "shown", "printed", lineterm=""))
                    yield f"{self.path}:{line}: {command}\n{differences}" if differences else None
        finally:
            for server in self.servers:
                os.killpg(server.pid, signal.SIGTERM)
                server.communicate()

    def run(self, command):
        is_server = command.endswith("&")
        port = "0" if is_server else self.port
        process = subprocess.Popen(["bash", "-c", "exec " * is_server + command.rstrip("& ").replace(DOCUMENTED_PORT, port)],
                                   cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, start_new_session=True,
                                   stderr=None if is_server else subprocess.STDOUT, text=True,
                                   env={**os.environ, "PATH": f"{self.compilers}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8"})
        if is_server:
            self.servers.append(process)
            output = process.stdout.readline()
            self.port = re.search(r":(\d+)", output)[1]
            self.write_files()
        else:
            output = process.communicate(timeout=120)[0]
            output += f"(exit status {process.returncode})" if process.returncode else ""
        return [line.rstrip() for line in output.replace(f":{self.port}", f":{DOCUMENTED_PORT}").splitlines()]


def make_toolchain(folder, source, build, compilers, flags):
    """Makes a directory with the tools, and with compilers that know where the headers and the libraries are."""
    folder.mkdir()
    libraries = f"-L{build}/src -Wl,-rpath,{build}/src" if build else ""
    for name, compiler in zip(("cc", "c++"), compilers):
        (folder / name).write_text(f'#!/bin/sh\nexec {shutil.which(compiler)} -Wall -Wextra -Werror -I{source}/include {flags} '
                                   f'"$@" {libraries}\n')
        (folder / name).chmod(0o755)
    for tool in ("vxcall", "vxserve") if build else ():
        (folder / tool).symlink_to(f"{build}/tools/{tool}/{tool}")
    return folder


def main():
    source, build, cc, cxx, flags, *documents = sys.argv[1:]
    source = pathlib.Path(source).resolve()
    outcomes = []
    with tempfile.TemporaryDirectory() as scratch:
        compilers = make_toolchain(pathlib.Path(scratch) / "bin", source, build, (cc, cxx), flags)
        for number, path in enumerate(documents):
            folder = pathlib.Path(scratch) / str(number)
            folder.mkdir()
            outcomes += Document(pathlib.Path(path), folder, build, compilers).check()
    return report(outcomes)


if __name__ == "__main__":
    sys.exit(main())

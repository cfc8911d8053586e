#!/usr/bin/env python3
"""Compiles and runs what the documents show, so that none of it goes stale.

usage: check_snippets.py --source FOLDER [--build FOLDER] [--cc C] [--cxx C++] [--flags FLAGS] DOCUMENT...

A fenced block is treated as its language says:

  c, cpp    Compiled. A block that includes headers or defines functions is taken as a file, any other as
            statements of a function with the parameters in FRAGMENT. A file whose first line is a comment
            with a name ("// sum.cpp") is put under that name into the folder in which the sessions of the
            document run, and a session or another file must name it.
  python    Compiled, and named likewise.
  sh        For the reader's own machine: the syntax is checked, and that the programs exist.
  console   A session. A line that begins with "$ " is run, the lines below it are what it must print,
            both streams; a last line "(exit status N)" is the status if it is not 0. What ends with "&"
            is a server: it runs until the document ends.
  text      Not checked.

Without --build nothing can be run, and sessions are only read. The port 8080 of the documents is any
free port here: a server is started with 0 in its place, and tells the port in the first line that it
prints.
"""

import argparse
import difflib
import os
import pathlib
import re
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.M | re.S)
NAME = re.compile(r"(?://|/\*|#) ([\w.]+\.(?:c|cpp|h|py))\b")
FILE = re.compile(r"^#include |^(?!(?:if|for|while|switch|else|do)\b)\w.*\)\s*(?:const )?\{$", re.M)
DOCUMENTED_PORT = "8080"
OPTIONAL_PROGRAMS = {"gdb", "valgrind"}
SECONDS = 120
STANDARD = {"c": "c11", "cpp": "c++20"}
FRAGMENT = """#include <stdio.h>
#include <VX/VX.h>
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wunused-variable"
void fragment(VXMethodInvocationRef invocation, VXProtocolHandlerRef handler, const BQURL* url,
              const BQDictionary* parameters, const BQDictionary* result, const BQData* document);
void fragment(VXMethodInvocationRef invocation, VXProtocolHandlerRef handler, const BQURL* url,
              const BQDictionary* parameters, const BQDictionary* result, const BQData* document) {
"""


class Block:
    def __init__(self, document, text, match):
        self.language, self.text = match[1], match[2]
        self.document = document
        self.line = text.count("\n", 0, match.start(2)) + 1
        name = NAME.match(self.text)
        self.name = name and name[1]

    def place(self, offset=0):
        return f"{self.document}:{self.line + offset}"


def sessions_of(block):
    """The commands of a session: the line, the command and what it must print."""
    commands = []
    for offset, line in enumerate(block.text.splitlines()):
        if line.startswith("$ "):
            commands.append((offset, line[2:], []))
        elif commands:
            commands[-1][2].append(line)
        else:
            raise ValueError(f"{block.place(offset)}: output without a command")
    return commands


class Checker:
    def __init__(self, options, scratch):
        self.options = options
        self.scratch = scratch
        self.include = options.source / "include"
        self.counts = dict.fromkeys(("compiled", "commands"), 0)
        self.faults = 0

    def fail(self, place, message):
        print(f"{place}: {message}")
        self.faults += 1

    def check(self, document):
        text = document.read_text()
        blocks = [Block(document.relative_to(self.options.source), text, match) for match in BLOCK.finditer(text)]
        files = [block for block in blocks if block.name]
        folder = self.scratch / document.stem
        folder.mkdir()
        for block in files:
            (folder / block.name).write_text(block.text)
        for block in blocks:
            if block.language in STANDARD:
                self.compile(block, folder)
            elif block.language == "python":
                self.counts["compiled"] += 1
                compile("\n" * (block.line - 1) + block.text, str(block.document), "exec")
            elif block.language == "sh":
                self.check_commands(block)
            elif block.language not in ("console", "text"):
                self.fail(block.place(), f"nobody checks the language {block.language}")
        sessions = [block for block in blocks if block.language == "console"]
        for block in files:
            if not any(block.name in other.text for other in sessions + files if other is not block):
                self.fail(block.place(), f"no session uses {block.name}")
        if self.options.build:
            Sessions(self, files, folder).run(sessions)

    def compile(self, block, folder):
        source = f'#line {block.line} "{block.document}"\n{block.text}'
        if not FILE.search(block.text):
            source = FRAGMENT + source + "}\n"
        compiler = self.options.cc if block.language == "c" else self.options.cxx
        language = "c" if block.language == "c" else "c++"
        command = [compiler, "-Wall", "-Wextra", "-Werror", f"-std={STANDARD[block.language]}", f"-I{self.include}", f"-I{folder}",
                   "-x", language, "-fsyntax-only", "-"]
        self.counts["compiled"] += 1
        if subprocess.run(command, input=source, text=True).returncode != 0:
            self.fail(block.place(), "does not compile")

    def check_commands(self, block):
        syntax = subprocess.run(["bash", "-n"], input=block.text, text=True, capture_output=True)
        if syntax.returncode != 0:
            return self.fail(block.place(), syntax.stderr.strip())
        for offset, line in enumerate(block.text.splitlines()):
            words = shlex.split(line, comments=True)
            while words and "=" in words[0]:
                del words[0]
            if words and not self.is_program(words[0]):
                self.fail(block.place(offset), f"there is no program {words[0]}")

    def is_program(self, word):
        if word in OPTIONAL_PROGRAMS or shutil.which(word):
            return True
        built = re.match(r"build/\w+/(.*)", word)
        if built:  # a folder of its own per preset, of which this is one; benchmarks are not built in all
            return built[1].startswith("bench/") or not self.options.build or (self.options.build / built[1]).exists()
        return os.access(self.options.source / word, os.X_OK)

    def toolchain(self):
        """A folder with the compilers, which know where the headers and the libraries are, and the tools."""
        folder = self.scratch / "bin"
        if folder.exists():
            return folder
        folder.mkdir()
        libraries = self.options.build / "src"
        for name, compiler in (("cc", self.options.cc), ("c++", self.options.cxx)):
            path = folder / name
            path.write_text(f'#!/bin/sh\nexec {compiler} -Wall -Wextra -Werror -I{self.include} {self.options.flags} '
                            f'"$@" -L{libraries} -Wl,-rpath,{libraries}\n')
            path.chmod(0o755)
        for tool in ("vxcall", "vxserve"):
            (folder / tool).symlink_to(self.options.build / "tools" / tool / tool)
        return folder


class Sessions:
    """Those of one document, which share a folder, its programs and its servers."""

    def __init__(self, checker, programs, folder):
        self.checker = checker
        self.programs = programs
        self.folder = folder
        self.environment = dict(os.environ, PATH=f"{checker.toolchain()}:{os.environ['PATH']}", LC_ALL="C.UTF-8")
        self.port = DOCUMENTED_PORT
        self.servers = []

    def run(self, sessions):
        try:
            for session in sessions:
                for offset, command, shown in sessions_of(session):
                    self.checker.counts["commands"] += 1
                    if not self.run_command(session.place(offset), command, shown) and command.endswith("&"):
                        return  # the others would call whoever has the documented port
        finally:
            for server in self.servers:
                os.killpg(server.pid, signal.SIGTERM)
                server.communicate()

    def run_command(self, place, command, shown):
        if command.endswith("&"):
            printed = self.start_server(command)
        else:
            printed = self.run_to_its_end(command)
        if printed == shown:
            return True
        self.checker.fail(place, "prints something else: " + command)
        print("\n".join(difflib.unified_diff(shown, printed, "shown", "printed", lineterm="")))
        return False

    def start_server(self, command):
        server = subprocess.Popen(["bash", "-c", "exec " + command.replace(DOCUMENTED_PORT, "0").rstrip("& ")],
                                  cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, text=True, start_new_session=True)
        self.servers.append(server)
        line = server.stdout.readline()
        port = re.search(r":(\d+)", line)
        if port:
            self.port = port[1]
        return self.as_documented(line)

    def run_to_its_end(self, command):
        for program in self.programs:
            source = program.text.replace(DOCUMENTED_PORT, self.port)
            (self.folder / program.name).write_text(source)
        try:
            run = subprocess.run(["bash", "-c", command.replace(DOCUMENTED_PORT, self.port)], cwd=self.folder,
                                 env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                 stderr=subprocess.STDOUT, timeout=SECONDS)
        except subprocess.TimeoutExpired:
            return [f"(no end within {SECONDS} seconds)"]
        printed = self.as_documented(run.stdout.decode())
        return printed + ([f"(exit status {run.returncode})"] if run.returncode else [])

    def as_documented(self, output):
        return [line.rstrip() for line in output.replace(f":{self.port}", f":{DOCUMENTED_PORT}").splitlines()]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--build", type=pathlib.Path)
    parser.add_argument("--cc", default="cc")
    parser.add_argument("--cxx", default="c++")
    parser.add_argument("--flags", default="")
    parser.add_argument("documents", nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    options.source = options.source.resolve()
    options.documents = [document.resolve() for document in options.documents]
    options.cc, options.cxx = map(shutil.which, (options.cc, options.cxx))
    with tempfile.TemporaryDirectory() as scratch:
        checker = Checker(options, pathlib.Path(scratch))
        for document in options.documents:
            checker.check(document)
    print(f"{checker.counts['compiled']} blocks compiled, {checker.counts['commands']} commands run, "
          f"{checker.faults} faults")
    return checker.faults > 0 or checker.counts["compiled"] == 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Compiles the C and C++ snippets of the documents, so that none of them goes stale.

usage: check_snippets.py C-COMPILER C++-COMPILER INCLUDE-FOLDER DOCUMENT...
"""

import pathlib
import re
import subprocess
import sys


def main():
    c_compiler, cxx_compiler, include, *documents = sys.argv[1:]
    languages = {"c": (c_compiler, "c", "c11"), "cpp": (cxx_compiler, "c++", "c++20")}
    count, faults = 0, 0
    for document in documents:
        text = pathlib.Path(document).read_text()
        for match in re.finditer(r"^```(c|cpp)\n(.*?)^```", text, re.M | re.S):
            compiler, language, standard = languages[match[1]]
            command = [compiler, "-Wall", "-Wextra", "-Werror", f"-std={standard}", f"-I{include}",
                       "-x", language, "-fsyntax-only", "-"]
            # The line numbers of the messages are those of the document.
            first = text.count("\n", 0, match.start(2)) + 1
            source = f'#line {first} "{document}"\n{match[2]}'
            faults += subprocess.run(command, input=source, text=True).returncode != 0
            count += 1
    print(f"{count} snippets, {faults} do not compile")
    return faults > 0 or count == 0


if __name__ == "__main__":
    sys.exit(main())

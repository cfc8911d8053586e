#!/usr/bin/env python3
"""Compiles every public header alone, and twice in one file, in each language that a user may have; in C++
also where somebody else's C header includes it, between the brackets of extern "C".

usage: check_headers.py C-COMPILER C++-COMPILER INCLUDE-FOLDER
"""

import concurrent.futures
import os
import pathlib
import subprocess
import sys

WARNINGS = ["-Wall", "-Wextra", "-pedantic", "-Werror", "-Wstrict-prototypes"]


def compile_alone(header, compiler, language, standard, folder):
    flags = [flag for flag in WARNINGS if language == "c" or flag != "-Wstrict-prototypes"]
    command = [compiler, *flags, f"-std={standard}", f"-I{folder}", "-x", language, "-fsyntax-only", "-"]
    text = f"#include <{header}>\n#include <{header}>\nextern int unit;\n"
    if standard == "c++17":
        text = 'extern "C" {\n' + text + "}\n"
    result = subprocess.run(command, input=text, capture_output=True, text=True)
    return f"{header} as {standard}:\n{result.stderr}" if result.returncode else ""


def main():
    c_compiler, cxx_compiler, folder = sys.argv[1:]
    headers = [path.relative_to(folder).as_posix() for path in sorted(pathlib.Path(folder).rglob("*.h"))]
    languages = [(c_compiler, "c", "c11"), (cxx_compiler, "c++", "c++17"), (cxx_compiler, "c++", "c++20")]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        jobs = [pool.submit(compile_alone, header, *language, folder)
                for header in headers for language in languages]
    faults = [job.result() for job in jobs if job.result()]
    print("\n".join(faults) or f"{len(headers)} headers stand alone")
    return bool(faults) or not headers


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Compares what a shared library exports with its checked-in list and with its public headers.

usage: check_symbols.py [--update] LIBRARY LIST HEADER-FOLDER
"""

import argparse
import pathlib
import re
import subprocess
import sys


def read_exports(library):
    command = ["nm", "--dynamic", "--defined-only", "--format=just-symbols", library]
    return set(subprocess.run(command, check=True, capture_output=True, text=True).stdout.split())


def read_declarations(folder):
    """The names that the headers mark as exported: functions and constants."""
    names = set()
    for header in folder.glob("*.h"):
        text = re.sub(r"/\*.*?\*/|//[^\n]*|#define[^\n]*", "", header.read_text(), flags=re.S)
        for declaration in re.findall(r"\bBQ_EXPORT\b([^;({]*)", text):
            names.add(re.findall(r"\w+", declaration)[-1])
    return names


def report(kind, names):
    for name in sorted(names):
        print(f"{kind}: {name}")
    return bool(names)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--update", action="store_true", help="write the list instead")
    parser.add_argument("library")
    parser.add_argument("list", type=pathlib.Path)
    parser.add_argument("headers", type=pathlib.Path)
    arguments = parser.parse_args()
    exported = read_exports(arguments.library)
    if arguments.update:
        arguments.list.write_text("".join(f"{name}\n" for name in sorted(exported)))
        return 0
    listed = arguments.list.read_text().split()
    declared = read_declarations(arguments.headers)
    faults = [
        report("exported but not listed", exported - set(listed)),
        report("listed but not exported", set(listed) - exported),
        report("listed but not declared", set(listed) - declared),
        report("declared but not listed", declared - set(listed)),
    ]
    if listed != sorted(set(listed)):
        faults.append(report("not in order", [str(arguments.list)]))
    return any(faults)


if __name__ == "__main__":
    sys.exit(main())

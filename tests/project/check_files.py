#!/usr/bin/env python3
"""Checks the tracked text files: white space, paths of a machine, and what the documents refer to.

usage: check_files.py SOURCE-ROOT
"""

import json
import pathlib
import re
import subprocess
import sys

TEXT = {".c", ".cmake", ".cpp", ".h", ".json", ".md", ".py", ".txt", ".yaml", ".yml", ""}
MACHINE_PATH = re.compile(r"""(?:^|[\s"'=(:,])/(?:home|root|Users|work)/""")
LINK = re.compile(r"\]\(([^)#:\s]+)(?:#[^)]*)?\)")
COMMAND = re.compile(r"`((?:scripts|bench)/[\w.-]+)")
PRESET = re.compile(r"--preset[ =](\w+)")
NAME = re.compile(r"\bk?(?:VX|BQ)\w{3,}(?!\.\.\.|\w)")
# A document, and the header whose constants it must all name.
COMPLETE = {"docs/guide.md": "include/VX/VXConstants.h"}


def tracked_files(root):
    command = ["git", "-C", str(root), "ls-files", "-z"]
    names = subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\0")
    return [root / name for name in names if name and (root / name).is_file()]


def check_text(text):
    for number, line in enumerate(text.split("\n"), 1):
        if line != line.rstrip():
            yield number, "white space at the end of the line"
        if "\t" in line:
            yield number, "tab"
        if MACHINE_PATH.search(line):
            yield number, "path of a machine"
    if text and not text.endswith("\n"):
        yield text.count("\n") + 1, "no line end at the end of the file"


def names_of_sources(root):
    files = [path for folder in ("include", "src") for path in (root / folder).rglob("*.*")]
    return {name for path in files for name in NAME.findall(path.read_text())}


def check_document(path, text, root, presets, names):
    for number, line in enumerate(text.split("\n"), 1):
        for name in NAME.findall(line):
            if name not in names:
                yield number, f"names {name}, which does not exist"
        for link in LINK.findall(line):
            if not (path.parent / link).exists():
                yield number, f"link to {link}, which does not exist"
        for command in COMMAND.findall(line):
            if not (root / command).exists():
                yield number, f"names {command}, which does not exist"
        for preset in PRESET.findall(line):
            if preset not in presets:
                yield number, f"names the preset {preset}, which does not exist"


def main():
    root = pathlib.Path(sys.argv[1])
    presets = {preset["name"] for preset in json.loads((root / "CMakePresets.json").read_text())["configurePresets"]}
    names = names_of_sources(root)
    count, faults = 0, []
    for path in tracked_files(root):
        if path.suffix not in TEXT:
            continue
        count += 1
        text = path.read_bytes().decode("utf-8")
        found = list(check_text(text))
        if path.suffix == ".md":
            found += check_document(path, text, root, presets, names)
        header = COMPLETE.get(str(path.relative_to(root)))
        if header:
            constants = re.findall(r"\bextern .*\b(kVX\w+);", (root / header).read_text())
            found += [(1, f"does not name {name}") for name in constants if name not in text]
        faults += [f"{path.relative_to(root)}:{number}: {fault}" for number, fault in found]
    print("\n".join(faults) or f"{count} files are in order")
    return bool(faults) or count == 0


if __name__ == "__main__":
    sys.exit(main())

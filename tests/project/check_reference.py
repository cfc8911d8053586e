#!/usr/bin/env python3
"""Checks what doxygen does not: that enumerators have comments, and that no exported name is missing.

usage: check_reference.py XML-FOLDER SYMBOL-LIST...
"""

import pathlib
import sys
import xml.etree.ElementTree


def is_described(element):
    return any("".join(element.find(kind).itertext()).strip() for kind in ("briefdescription", "detaileddescription"))


def main():
    folder, *lists = map(pathlib.Path, sys.argv[1:])
    members = [member for path in folder.glob("*.xml") for member in xml.etree.ElementTree.parse(path).iter()
               if member.tag in ("memberdef", "enumvalue")]
    described = {member.findtext("name") for member in members if is_described(member)}
    exported = {name for path in lists for name in path.read_text().split()}
    enumerators = {member.findtext("name") for member in members if member.tag == "enumvalue"}
    missing = sorted((exported | enumerators) - described)
    print("\n".join("no comment: " + name for name in missing) or
          f"{len(exported)} exported names and {len(enumerators)} enumerators are described")
    return bool(missing) or not exported or not enumerators


if __name__ == "__main__":
    sys.exit(main())

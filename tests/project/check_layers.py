#!/usr/bin/env python3
"""Holds the #include lines of the sources against the table of the rooms.

usage: check_layers.py SOURCE-ROOT TABLE
"""

import pathlib
import re
import sys

INCLUDE = re.compile(r'\s*#\s*include\s*([<"])([^>"]+)[>"]')
SUFFIXES = {".c", ".cpp", ".h"}


def read_table(path):
    """The allowed items by room, groups resolved; a row goes on in indented lines."""
    text = re.sub(r"^#.*\n", "", path.read_text(), flags=re.M)
    groups, rooms = {}, {}
    for row in re.sub(r"\n[ \t]+", " ", text).splitlines():
        if not row.strip():
            continue
        is_group = row.startswith("@")
        name, items = (part.strip() for part in row.split("=" if is_group else ":", 1))
        items = [resolved for item in items.split() for resolved in groups.get(item, [item])]
        (groups if is_group else rooms)[name] = items
    return rooms


def room_of(name, rooms):
    """The innermost row that a file belongs to, or None."""
    path = pathlib.PurePosixPath(name)
    return next((str(part) for part in (path, *path.parents) if str(part) in rooms), None)


def covers(item, header):
    return header == item or header.startswith(item + "/")


def is_allowed(mark, header, room, items):
    if mark == "<" and not header.startswith(("BQ/", "VX/")):
        # The headers of the C++ library have neither suffix nor folder.
        is_standard = re.fullmatch(r"[a-z_]+", header)
        return is_standard or any(covers(item[1:-1], header) for item in items if item[0] == "<")
    return any(covers(item, header) for item in (room, *items))


def find_sources(root):
    """Every source by the name that an include line or the table uses for it."""
    places = [("include", "."), ("src", ".")] + [(".", top) for top in ("tools", "examples", "bench", "fuzz")]
    for base, top in places:
        for path in sorted((root / base / top).rglob("*")):
            if path.suffix in SUFFIXES:
                yield path.relative_to(root / base).as_posix(), path


def main():
    root, table = map(pathlib.Path, sys.argv[1:])
    rooms = read_table(table)
    count, faults = 0, []
    for name, path in find_sources(root):
        room = room_of(name, rooms)
        where = path.relative_to(root)
        if room is None:
            faults.append(f"{where}: belongs to no room of {table.name}")
            continue
        count += 1
        for number, line in enumerate(path.read_text().splitlines(), 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            mark, header = match.groups()
            if mark == '"' and (path.parent / header).exists():
                header = (pathlib.PurePosixPath(name).parent / header).as_posix()
            if not is_allowed(mark, header, room, rooms[room]):
                faults.append(f"{where}:{number}: {room} may not include {header}")
    print("\n".join(faults) or f"{count} files keep to their layers")
    # No file at all means that the check looked in the wrong place.
    return bool(faults) or count == 0


if __name__ == "__main__":
    sys.exit(main())

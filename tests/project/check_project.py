#!/usr/bin/env python3
"""Checks the project itself and prints every fault that it finds.

usage: check_project.py layers ROOT TABLE                     each #include against the table of modules
       check_project.py headers CC CXX INCLUDE                each public header compiles alone, in each language
       check_project.py symbols LIBRARY LIST INCLUDE [update] the exports against the list and the headers
       check_project.py reference XML LIST...                 each exported name and enumerator has a comment
       check_project.py files ROOT                            white space, paths, and what documents refer to
"""
import concurrent.futures
import json
import re
import subprocess
import sys
import xml.etree.ElementTree
from pathlib import Path, PurePosixPath


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def read_table(path):
    """The headers that each module may include, groups resolved. A row continues in indented lines."""
    text = re.sub(r"\n[ \t]+", " ", re.sub(r"^#.*\n", "", path.read_text(), flags=re.M))
    groups, modules = {}, {}
    for row in filter(str.strip, text.splitlines()):
        name, items = (part.strip() for part in re.split("[=:]", row, maxsplit=1))
        items = [resolved for item in items.split() for resolved in groups.get(item, [item])]
        for each in name.split():
            (groups if row.startswith("@") else modules)[each] = items
    return modules


def find_sources(root):
    """Each source with the name that #include lines and the table use for it."""
    for base, top in [("include", "."), ("src", "."), *((".", top) for top in ("tools", "examples", "bench", "fuzz"))]:
        for path in sorted((root / base / top).rglob("*")):
            if path.suffix in (".c", ".cpp", ".h", ".hpp"):
                yield PurePosixPath(path.relative_to(root / base)), path


def check_layers(root, table):
    modules = read_table(Path(table))
    for name, path in find_sources(Path(root)):
        module = next((str(part) for part in (name, *name.parents) if str(part) in modules), None)
        yield None if module else f"{path}: belongs to no module of {table}"
        for number, line in enumerate(path.read_text().splitlines(), 1):
            match = re.match(r'\s*#\s*include\s*([<"])([^>"]+)[>"]', line)
            if not match or not module:
                continue
            mark, header = match.groups()
            if mark == '"' and (path.parent / header).exists():
                header = (name.parent / header).as_posix()
            allowed = [module, *modules[module]]
            if mark == "<" and not header.startswith(("BQ/", "VX/", "orvane/")):
                if re.fullmatch(r"[a-z_]+", header):  # a header of the C++ library
                    continue
                allowed = [item[1:-1] for item in allowed if item.startswith("<")]
            if not any(header == item or header.startswith(item + "/") for item in allowed):
                yield f"{path}:{number}: {module} may not include {header}"


def check_headers(c_compiler, cxx_compiler, folder):
    """Compiles each header twice in one file; as C++17 inside extern "C", where a C header may include it."""
    def compile_alone(header, compiler, language, *flags):
        text = f"#include <{header}>\n#include <{header}>\nextern int unit;\n"
        if "-std=c++17" in flags:
            text = 'extern "C" {\n' + text + "}\n"
        command = [compiler, *flags, "-Wall", "-Wextra", "-pedantic", "-Werror", f"-I{folder}", "-x", language]
        result = subprocess.run([*command, "-fsyntax-only", "-"], input=text, capture_output=True, text=True)
        return f"{header} with {flags}:\n{result.stderr}" if result.returncode else None

    languages = [(c_compiler, "c", "-std=c11", "-Wstrict-prototypes"), (cxx_compiler, "c++", "-std=c++17"),
                 (cxx_compiler, "c++", "-std=c++20")]
    headers = [path.relative_to(folder).as_posix() for path in sorted(Path(folder).rglob("*.h"))]
    with concurrent.futures.ThreadPoolExecutor() as pool:
        yield from pool.map(lambda job: compile_alone(job[0], *job[1]), [(h, l) for h in headers for l in languages])


def declared_names(folder):
    """The functions and constants that the headers of a directory mark as exported."""
    for header in Path(folder).glob("*.h"):
        text = re.sub(r"/\*.*?\*/|//[^\n]*|#define[^\n]*", "", header.read_text(), flags=re.S)
        yield from (re.findall(r"\w+", found)[-1] for found in re.findall(r"\bBQ_EXPORT\b([^;({]*)", text))


def check_symbols(library, list_, headers, update=None):
    exported = set(output_of("nm", "--dynamic", "--defined-only", "--format=just-symbols", library).split())
    if update:
        Path(list_).write_text("".join(f"{name}\n" for name in sorted(exported)))
    listed, declared = Path(list_).read_text().split(), set(declared_names(headers))
    yield None if listed == sorted(set(listed)) else f"{list_}: not in order"
    for name in sorted(exported | declared | set(listed)):
        for place, names in (("exported", exported), ("listed", listed), ("declared", declared)):
            yield None if name in names else f"not {place}: {name}"


def check_reference(folder, *lists):
    members = [member for path in Path(folder).glob("*.xml") for member in xml.etree.ElementTree.parse(path).iter()
               if member.tag in ("memberdef", "enumvalue")]
    described = {member.findtext("name") for member in members for kind in ("briefdescription", "detaileddescription")
                 if "".join(member.find(kind).itertext()).strip()}
    exported = {name for path in lists for name in Path(path).read_text().split()}
    enumerators = {member.findtext("name") for member in members if member.tag == "enumvalue"}
    yield None if enumerators else "no enumerators"
    yield from (None if name in described else f"no comment: {name}" for name in sorted(exported | enumerators))


NAME = re.compile(r"\bk?(?:VX|BQ)\w{3,}(?!\.\.\.|\w)")
MACHINE_PATH = re.compile(r"""(?:^|[\s"'=(:,])/(?:home|root|Users|work)/""")


def check_files(root):
    root = Path(root)
    presets = {preset["name"] for preset in json.loads((root / "CMakePresets.json").read_text())["configurePresets"]}
    names = {name for folder in ("include", "src") for path in (root / folder).rglob("*.*")
             for name in NAME.findall(path.read_text())}
    for path in (root / name for name in output_of("git", "-C", str(root), "ls-files", "-z").split("\0") if name):
        if not path.is_file() or path.suffix not in (".c", ".cmake", ".cpp", ".h", ".hpp", ".json", ".md", ".py", ".txt", ""):
            continue
        text = path.read_text("utf-8")
        yield None if text.endswith("\n") or not text else f"{path}: no line end at the end of the file"
        for number, line in enumerate(text.split("\n"), 1):
            faults = ["tab, or white space at the end of the line"] if line != line.rstrip() or "\t" in line else []
            faults += ["path of a machine"] if MACHINE_PATH.search(line) else []
            if path.suffix == ".md":
                faults += [f"no such name: {name}" for name in NAME.findall(line) if name not in names]
                links = re.findall(r"\]\(([^)#:\s]+)(?:#[^)]*)?\)", line)
                faults += [f"no such file: {link}" for link in links if not (path.parent / link).exists()]
                commands = re.findall(r"(?:^|`)((?:scripts|bench)/[\w.-]+)", line)
                faults += [f"no such command: {command}" for command in commands if not (root / command).exists()]
                faults += [f"no such preset: {name}" for name in re.findall(r"--preset[ =](\w+)", line) if name not in presets]
            yield from (f"{path}:{number}: {fault}" for fault in faults)
    constants = re.findall(r"\bextern .*\b(kVX\w+);", (root / "include/VX/VXConstants.h").read_text())
    guide = (root / "docs/guide.md").read_text()
    yield from (None if name in guide else f"docs/guide.md: does not name {name}" for name in constants)


def report(outcomes):
    """Prints the faults. An outcome that is in order is None; none at all means having looked in the wrong place."""
    faults = list(filter(None, outcomes))
    print("\n".join(faults) or f"{len(outcomes)} in order")
    return bool(faults) or not outcomes


if __name__ == "__main__":
    sys.exit(report(list(globals()[f"check_{sys.argv[1]}"](*sys.argv[2:]))))

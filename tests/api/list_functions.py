"""Writes a line "sweep("NAME", NAME);" for each function that the public headers declare.

usage: list_functions.py INCLUDE_DIRECTORY OUTPUT
"""
import pathlib
import re
import sys

# The first two only take a va_list besides what the functions without AndArguments take; the last frees its argument.
LEFT_OUT = {"BQStringCreateWithFormatAndArguments", "BQStringAppendFormatAndArguments", "BQDataCreateWithOwnedBytes"}

include, output = map(pathlib.Path, sys.argv[1:])
text = "".join(header.read_text() for header in sorted(include.glob("[BV][QX]/*.h")))
text = re.sub(r"/\*.*?\*/|^#define.*?$", "", text, flags=re.DOTALL | re.MULTILINE)
names = re.findall(r"\bBQ_EXPORT (?!extern)[\w\s*]*?(\w+)\(", text)
if len(names) != text.count("BQ_EXPORT ") - text.count("BQ_EXPORT extern "):
    sys.exit("list_functions.py: cannot read some declaration")
output.write_text("".join(f'sweep("{name}", {name});\n' for name in names if name not in LEFT_OUT))

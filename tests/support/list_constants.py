"""Writes a line "{NAME, TEXT}," for each constant of a header, whose comment begins with the text in quotes."""
import pathlib
import re
import sys

header = pathlib.Path(sys.argv[1]).read_text()
found = re.findall(r'/\*\*[\s*]*("[^"]*")(?:[^*]|\*(?!/))*\*/\s*BQ_EXPORT extern const BQString\* const (\w+);', header)
if len(found) != header.count("BQ_EXPORT extern"):
    sys.exit("list_constants.py: a constant has no text")
pathlib.Path(sys.argv[2]).write_text("".join("{%s, %s},\n" % (name, text) for text, name in found))

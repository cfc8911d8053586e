"""What the tests of the tools share: the programs under test, and the servers of tests/support."""
import json
import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))

from peers import SUPPORT, Peer, Process, make_certificate, reply, response, soap_peer  # noqa: E402, F401

VXCALL, VXSERVE = os.environ["VXCALL"], os.environ["VXSERVE"]
# What a terminal obeys or reorders, and how it is shown instead.
CONTROLS = "\u0085\u009b2J\x7f\u061c\u200e\u202e\u2069"
ESCAPED = "".join(c if c in "2J" else "\\u%04x" % ord(c) for c in CONTROLS)
# Nothing that is printed holds these, nor the password of the tests.
UNSHOWN = "[\x00-\x08\x0b-\x1f\x7f-\x9f\u061c\u200e\u200f\u202a-\u202e\u2066-\u2069]|s3cret"


def run(*command, **options):
    """Runs a program to its end, with what it prints as text."""
    options = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, **options}
    if "input" in options:
        del options["stdin"]
    return subprocess.run(list(map(str, command)), stderr=subprocess.PIPE, timeout=90, check=False, text=True, **options)


def vxcall(*arguments, **options):
    return run(VXCALL, *arguments, **options)


def parsed(text):
    """What is compared: the value if it is JSON, whose layout and order do not matter."""
    try:
        return json.dumps(json.loads(text), sort_keys=True)
    except ValueError:
        return text.rstrip("\n")

#!/usr/bin/python3
"""Checks that the tree speaks of this program only, and of no particular machine.

    tools/check_words.py [ROOT]

Prints every line with a word that has no business here, and fails when there is one.
"""

import pathlib
import re
import sys

import tree

# Each in pieces, so that this file may stand in the tree that it checks.
FORBIDDEN = {
    "a numbered part of some paper": r"\bPart" + r" [1-9]\.[1-9]\b",
    "a paper that the program is not made of": r"\b(?:spec|design|lessons|speed)" + r"\.md\b",
    "a paper without a name": r"\b(?:the|this) specifi" + r"cation\b",
    "a path of one machine": r"/wo" + r"rk/(?:shared|main)\b|/tmp" + r"/wt\b",
    "a host that packages come from": r"\bdeb\.deb" + r"ian\.org|\bpy" + r"pi\.org|\bnpm" + r"js\.",
    "work left undone": r"\b(?:TO" + r"DO|FIX" + r"ME|XX" + r"X|HA" + r"CK)\b",
}


def check(root):
    """Every forbidden word as "file:line: text"."""
    patterns = [(what, re.compile(pattern)) for what, pattern in FORBIDDEN.items()]
    found = []
    for name in tree.files(root):
        lines = [(0, name)]
        path = root / name
        if path.is_file():
            content = path.read_bytes()
            if b"\0" not in content:
                lines += enumerate(content.decode(errors="replace").splitlines(), 1)
        for number, line in lines:
            found += [f"{name}:{number}: {what}: {line.strip()}"
                      for what, pattern in patterns if pattern.search(line)]
    return found


def main(arguments):
    root = pathlib.Path(arguments[0] if arguments else pathlib.Path(__file__).parent.parent)
    found = check(root.resolve())
    print("\n".join(found) or "no word out of place")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

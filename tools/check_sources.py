#!/usr/bin/python3
"""Checks that every source file is part of some build: named in a CMakeLists.txt at or above it.

    tools/check_sources.py [ROOT]

So are the headers, but for those of tests and benchmarks: naming a header compiles it alone.
"""

import pathlib
import re
import sys

import tree

WORD = re.compile(r'[^\s()"#]+')


def named(root, names):
    """Every path that some CMakeLists.txt names, relative to its own folder or to the root."""
    found = set()
    for name in names:
        if pathlib.PurePosixPath(name).name == "CMakeLists.txt":
            folder = pathlib.PurePosixPath(name).parent
            text = re.sub(r"#.*", "", (root / name).read_text())
            for word in WORD.findall(text):
                found.update(((folder / word).as_posix(), word))
    return found


def check(root):
    """Every file that no build knows."""
    names = tree.files(root)
    known = named(root, names)
    found = []
    for name in names:
        header = name.endswith(".h")
        if not (header or name.endswith((".cpp", ".c", ".mm"))) or name in known:
            continue
        if not (header and name.startswith(("tests/", "benchmarks/"))):
            found.append(f"{name}: no CMakeLists.txt names it")
    return found


def main(arguments):
    root = pathlib.Path(arguments[0] if arguments else pathlib.Path(__file__).parent.parent)
    found = check(root.resolve())
    print("\n".join(found) or "every source is built")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

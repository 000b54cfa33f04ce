#!/usr/bin/python3
"""Checks that every source is laid out as clang-format does with the .clang-format of the tree.

    tools/check_format.py [ROOT]

Prints every place that is not, and fails when there is one. The layout is that of version 14, which
Debian 12 has; where that is not installed, says so and ends with 77, which counts as skipped.
"""

import pathlib
import re
import subprocess
import sys

import tree

VERSION = 14
SKIPPED = 77


def formatter():
    """The program of that version; None where there is none."""
    for name in (f"clang-format-{VERSION}", "clang-format"):
        try:
            said = subprocess.run([name, "--version"], capture_output=True, text=True, check=True).stdout
        except (OSError, subprocess.CalledProcessError):
            continue
        if re.search(rf"version {VERSION}\.", said):
            return name
    return None


def check(root, program):
    """Every place that is laid out otherwise, as "file:line:column: text"."""
    names = [name for name in tree.files(root) if name.endswith((".cpp", ".h", ".mm"))]
    done = subprocess.run([program, "--dry-run", "--Werror", "--style=file", *names], cwd=root,
                          capture_output=True, text=True, check=False)
    found = [line.replace(": error:", ":") for line in done.stderr.splitlines()
             if "[-Wclang-format-violations]" in line]
    if done.returncode != 0 and not found:
        found = [done.stderr.strip() or f"{program} failed"]
    return found


def main(arguments):
    root = pathlib.Path(arguments[0] if arguments else pathlib.Path(__file__).parent.parent)
    program = formatter()
    if program is None:
        print(f"SKIPPED: clang-format {VERSION} is not installed")
        return SKIPPED
    found = check(root.resolve(), program)
    print("\n".join(found) or "every source is laid out as clang-format does")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

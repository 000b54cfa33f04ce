#!/usr/bin/python3
"""Checks sources with clang-tidy, by the .clang-tidy of the tree.

    tools/check_tidy.py BUILD [--since=COMMIT] [FILE...]

BUILD is the folder of a build without precompiled headers (build/release, build/core), whose
compile_commands.json says how each source is compiled. Checked are the FILEs, and the headers of
the tree that they include; without any, all sources of that build, or those that changed since
COMMIT and, for each changed header, one that includes it. Prints each finding once, and fails when
there is one.
"""

import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FINDING = re.compile(r"^(/\S+?:\d+:\d+): (?:warning|error): (.*\[[\w.,-]+\])$", re.MULTILINE)


def sources(build):
    """The sources of the program that the build compiles, relative to the root."""
    entries = json.loads((build / "compile_commands.json").read_text())
    files = {pathlib.Path(entry["file"]) for entry in entries}
    return sorted(file.relative_to(ROOT).as_posix() for file in files
                  if file.is_relative_to(ROOT) and not file.is_relative_to(build))


def touched(names, commit):
    """Those of the sources that show all that differs from the commit, in headers too."""
    changed = subprocess.run(["git", "diff", "--name-only", commit], cwd=ROOT, check=True,
                             capture_output=True, text=True).stdout.splitlines()
    found = set(names) & set(changed)
    texts = {name: (ROOT / name).read_text() for name in names}
    for header in changed:
        includers = {name for name in names if f'#include "{header}"' in texts[name]}
        if includers and not includers & found:
            found.add(min(includers))
    return sorted(found)


def check(build, names):
    """Every finding as "file:line:column: text", each once."""
    def one(name):
        done = subprocess.run(["clang-tidy", "--quiet", "-p", build, name], cwd=ROOT, check=False,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True)
        found = {f"{where}: {what}" for where, what in FINDING.findall(done.stdout)}
        if done.returncode != 0 and not found:
            found.add(f"{name}: {done.stderr.strip() or 'clang-tidy failed'}")
        return found

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        found = set().union(*workers.map(one, names))
    return sorted(line.removeprefix(f"{ROOT}/") for line in found)


def main(arguments):
    if not arguments:
        sys.exit(__doc__)
    build = pathlib.Path(arguments.pop(0)).resolve()
    names = [name for name in arguments if not name.startswith("--")]
    if not names:
        names = sources(build)
        for option in arguments:
            names = touched(names, option.removeprefix("--since="))
    found = check(build, names)
    print("\n".join([*found, f"clang-tidy: {len(names)} files, {len(found)} findings"]))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

#!/usr/bin/python3
"""Runs the tests of a GoogleTest program in one process: 0 passed, 1 failed, 77 all of them skipped.

    tools/run_gtest.py [--seconds=N] [--part=I/N] PROGRAM [argument for the program...]

--part runs every Nth test, beginning with the Ith, so that parts of a long program run at the same
time. With TAVO_ONLY set, only the tests whose names ("Suite.test") that regular expression finds run.

Says how many there are and what came of each in the words of tools/run_python_test.py. Where a test
ends the process, or takes longer than --seconds (240), that test has failed, and a new process runs
the rest.
"""

import os
import re
import select
import signal
import subprocess
import sys
import tempfile

_GRACE = 30
_LINE = re.compile(rb"^\[ +(RUN|OK|FAILED|SKIPPED) +\] ([\w/.]+)(?:,| \((\d+) ms\)|$)")


def say(outcome, name, more=""):
    print(f"[{outcome}] {name}{more}", flush=True)


def listed(command):
    """The names of the program's tests, those that are disabled excepted."""
    said = subprocess.run([*command, "--gtest_list_tests"], check=True, text=True,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE).stdout
    suite, names = "", []
    for line in said.splitlines():
        name = line.split("#")[0].rstrip()
        if not line.startswith(" ") and name.endswith("."):
            suite = name
        elif line.startswith("  ") and "DISABLED_" not in suite + name:
            names.append(suite + name.strip())
    return names


class Run:
    def __init__(self, command, names, limit):
        self._command, self._left, self._limit = command, list(names), limit
        self._outcomes, self._whole = [], True

    def run(self):
        while self._left:
            self._run_some()
        if "failed" in self._outcomes or not self._whole:
            return 1
        return 0 if "passed" in self._outcomes else 77

    def _run_some(self):
        before = len(self._left)
        # A file, because the names of all tests are longer than an argument may be.
        with tempfile.NamedTemporaryFile("w", prefix="gtest-") as flags:
            flags.write(f"--gtest_filter={':'.join(self._left)}\n")
            flags.flush()
            with subprocess.Popen([*self._command, f"--gtest_flagfile={flags.name}"],
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT) as process:
                running = self._follow(process)
        code = process.returncode
        ended = f"signal {-code}" if code < 0 else f"status {code}"
        if running or len(self._left) == before:
            print(f"the process of this test ended with {ended}")
            self._end("failed", running or self._left[0])
        elif code != 0 and "failed" not in self._outcomes:
            print(f"the process of these tests ended with {ended}", flush=True)
            self._whole = False

    def _follow(self, process):
        """Hears of the tests until their process has closed its output; answers the one that ran
        then."""
        running, rest, asked, reason = None, b"", False, ""
        while True:
            if not select.select([process.stdout], [], [], _GRACE if asked else self._limit)[0]:
                print(f"{running or 'the process'} took longer than {self._limit:.0f} s", flush=True)
                process.send_signal(signal.SIGKILL if asked else signal.SIGTERM)
                asked = True
                continue
            heard = os.read(process.stdout.fileno(), 65536)
            if not heard:
                return running
            *lines, rest = (rest + heard).split(b"\n")
            for line in lines:
                found = _LINE.match(line)
                name = found[2].decode() if found else None
                if found and found[1] == b"RUN":
                    running, reason = name, ""
                elif found and name == running:
                    outcome = {b"OK": "passed", b"FAILED": "failed", b"SKIPPED": "skipped"}[found[1]]
                    self._end(outcome, name, f": {reason or 'no reason given'}"
                              if outcome == "skipped" else f" ({int(found[3] or 0) / 1000:.2f} s)")
                    running = None
                elif running:
                    text = line.decode(errors="replace")
                    print(text, flush=True)
                    reason = text.strip() or reason

    def _end(self, outcome, name, more=""):
        say(outcome, name, more)
        self._left.remove(name)
        self._outcomes.append(outcome)


def main(arguments):
    limit, part, parts = 240.0, 1, 1
    while arguments and arguments[0].startswith("--"):
        option, _, value = arguments.pop(0).partition("=")
        if option == "--seconds":
            limit = float(value)
        elif option == "--part":
            part, parts = map(int, value.split("/"))
        else:
            sys.exit(__doc__)
    only = re.compile(os.environ.get("TAVO_ONLY", ""))
    names = [name for name in listed(arguments) if only.search(name)][part - 1::parts]
    # Without this word somewhere in it, ctest would shorten what is printed.
    print(f"CTEST_FULL_OUTPUT\n[{len(names)} tests]", flush=True)
    if not names:
        print(f"{arguments[0]} has no test" + (" of that name" if only.pattern else ""))
        return 1
    return Run(arguments, names, limit).run()


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

#!/usr/bin/python3
"""Runs the tests of one class of one file: 0 passed, 1 failed, 77 all of them skipped.

    tools/run_python_test.py FILE CLASS [SECONDS]

Those are its own and the ones of classes of the same file that it is derived from. With TAVO_ONLY
set, only those whose names that regular expression finds.

Prints how many there are, and after what each test printed what came of it:

    [3 tests]
    [passed] one_name (0.61 s)
    [failed] another_name (2.40 s)
    [skipped] a_third_name: why

The tests have a process together. It ends, and the next test has a new one, when a test ends it, when
a test takes longer than SECONDS, which has failed then, or when the class says that it is used up.
"""

import ctypes
import importlib.util
import json
import os
import pathlib
import re
import select
import signal
import sys
import time
import traceback
import unittest

_PR_SET_PDEATHSIG = 1
# What a test that took too long may take to end what it started.
_GRACE = 30


def load(path):
    path = pathlib.Path(path)
    sys.path[:0] = [str(path.parent), str(pathlib.Path(__file__).parent)]
    found = importlib.util.spec_from_file_location(path.stem, path)
    module = importlib.util.module_from_spec(found)
    sys.modules[path.stem] = module
    found.loader.exec_module(module)
    return module


def tests_of(cls):
    """The names of its tests, in the order of the file."""
    names = {}
    for base in reversed(cls.__mro__):
        if base.__module__ == cls.__module__:
            names.update((name, None) for name in vars(base) if name.startswith("test_"))
    return [name for name in names if callable(getattr(cls, name))]


def say(outcome, name, more):
    print(f"[{outcome}] {name.removeprefix('test_')}{more}", flush=True)


class Result(unittest.TestResult):
    """Says what came of each test as soon as it has ended, here and on the pipe."""

    def __init__(self, pipe):
        super().__init__()
        self._pipe, self._told = pipe, (0, 0)

    def startTest(self, test):
        super().startTest(test)
        self._start, self._skips = time.monotonic(), len(self.skipped)
        self._tell(started=test._testMethodName)

    def stopTest(self, test):
        seconds = time.monotonic() - self._start
        if self.print_faults():
            outcome, more = "failed", f" ({seconds:.2f} s)"
        elif len(self.skipped) > self._skips:
            outcome, more = "skipped", f": {' '.join(self.skipped[-1][1].split())}"
        else:
            outcome, more = "passed", f" ({seconds:.2f} s)"
        say(outcome, test._testMethodName, more)
        self._tell(ended=test._testMethodName, outcome=outcome)
        super().stopTest(test)
        if getattr(test, "process_is_used_up", bool)():
            self.stop()

    def print_faults(self):
        """Those that were not printed yet; answers how many."""
        new = self.errors[self._told[0]:] + self.failures[self._told[1]:]
        self._told = len(self.errors), len(self.failures)
        for where, error in new:
            print(f"{where}\n{error}")
        return len(new)

    def _tell(self, **what):
        os.write(self._pipe, json.dumps(what).encode() + b"\n")


def work(cls, names, pipe, parent):
    """The tests one after the other, until the process is used up."""
    ctypes.CDLL(None).prctl(_PR_SET_PDEATHSIG, signal.SIGTERM, 0, 0, 0)
    if os.getppid() != parent:
        return 1
    result = Result(pipe)
    unittest.TestSuite(map(cls, names)).run(result)
    # What belongs to no test: the class's own beginning and end.
    return 1 if result.print_faults() else 0


class Run:
    def __init__(self, cls, names, limit):
        self._class, self._left, self._limit = cls, list(names), limit
        self._outcomes, self._worker = [], None
        self._whole = True

    def run(self):
        signal.signal(signal.SIGTERM, self._interrupted)
        while self._left:
            self._run_some()
        if "failed" in self._outcomes or not self._whole:
            return 1
        return 0 if "passed" in self._outcomes else 77

    def _run_some(self):
        read, write = os.pipe()
        parent = os.getpid()
        self._worker = os.fork()
        if self._worker == 0:
            signal.signal(signal.SIGTERM, signal.SIG_DFL)
            os.close(read)
            status = 1
            try:
                status = work(self._class, self._left, write, parent)
            except BaseException:
                traceback.print_exc(file=sys.stdout)
            finally:
                sys.stdout.flush()
                sys.stderr.flush()
                os._exit(status)
        os.close(write)
        before = len(self._left)
        running = self._follow(read)
        os.close(read)
        _, status = os.waitpid(self._worker, 0)
        self._worker = None
        code = os.waitstatus_to_exitcode(status)
        ended = f"signal {-code}" if code < 0 else f"status {code}"
        if running or len(self._left) == before:
            print(f"the process of this test ended with {ended}")
            name = running or self._left[0]
            say("failed", name, "")
            self._left.remove(name)
            self._outcomes.append("failed")
        elif code != 0:
            print(f"the process of these tests ended with {ended}", flush=True)
            self._whole = False

    def _follow(self, pipe):
        """Hears of the tests until their process has closed the pipe; answers the one that ran then."""
        running, rest, asked = None, b"", False
        while True:
            if not select.select([pipe], [], [], _GRACE if asked else self._limit)[0]:
                print(f"{running or 'the process'} took longer than "
                      f"{self._limit:.0f} s: {'killed' if asked else 'interrupted'}", flush=True)
                os.kill(self._worker, signal.SIGKILL if asked else signal.SIGTERM)
                asked = True
                continue
            heard = os.read(pipe, 65536)
            if not heard:
                return running
            *lines, rest = (rest + heard).split(b"\n")
            for line in map(json.loads, lines):
                if "started" in line:
                    running = line["started"]
                else:
                    running = None
                    self._left.remove(line["ended"])
                    self._outcomes.append(line["outcome"])

    def _interrupted(self, number, _frame):
        if self._worker is not None:
            os.kill(self._worker, signal.SIGTERM)
            os.waitpid(self._worker, 0)
        os._exit(128 + number)


def main(path, name, limit="240"):
    cls = getattr(load(path), name)
    only = re.compile(os.environ.get("TAVO_ONLY", ""))
    names = [test for test in tests_of(cls) if only.search(test.removeprefix("test_"))]
    # Without this word somewhere in it, ctest would shorten what is printed.
    print(f"CTEST_FULL_OUTPUT\n[{len(names)} tests]", flush=True)
    if not names:
        print(f"{name} has no test" + (" of that name" if only.pattern else ""))
        return 1
    return Run(cls, names, float(limit)).run()


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

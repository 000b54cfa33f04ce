#!/usr/bin/python3
"""Sums up ctest's results: says which tests were skipped and why, which failed, and counts.

    tools/test_summary.py PRESET=results.xml...

A test of ctest's that is a class or a program of tests (tools/run_python_test.py, tools/run_gtest.py)
counts as those: each has its name, its reason and what it printed. What a failed test printed last
stands, indented, below its name. The last line is "N passed, N failed", with ", N skipped" when some were. Fails when a test
failed, when none ran, when a class was left before its end, or when a file is not there.
"""

import re
import sys
import xml.etree.ElementTree as xml


LINES_OF_A_FAILURE = 40

# What the two print first, and after each test.
NUMBER = re.compile(r"^\[(\d+) tests\]$", re.MULTILINE)
OUTCOME = re.compile(r"^\[(passed|failed|skipped)\] ([\w./]+)(?:: (.*)| \([\d.]+ s\))?$", re.MULTILINE)


def reason_of(case):
    """Why a test was skipped, as the test itself said it."""
    if case.get("status") == "disabled":
        return "disabled"
    said = case.findtext("system-out") or ""
    for pattern in (r"^SKIPPED: (.+)", r": Skipped\n(.+)"):
        if found := re.search(pattern, said, re.MULTILINE):
            return found.group(1).strip()
    skipped = case.find("skipped")
    return (skipped.get("message") if skipped is not None else None) or "no reason given"


def end_of(said):
    """The last lines of what a test printed, indented, none of them empty."""
    lines = [line for line in (said or "").splitlines() if line.strip()]
    return "".join(f"\n    {line}" for line in lines[-LINES_OF_A_FAILURE:])


class Results:
    """The names of the passed tests, the failed ones with what they said last, and the skipped ones
    with their reasons."""

    def __init__(self):
        self.passed, self.failed, self.skipped = [], [], []

    def read(self, path):
        for case in xml.parse(path).getroot().iter("testcase"):
            number = NUMBER.search(case.findtext("system-out") or "")
            if number and case.get("status") != "disabled":
                self._add_class(case, int(number[1]), number.end())
            else:
                self._add(case)

    def _add(self, case):
        status = case.get("status")
        if status == "run":
            self.passed.append(case.get("name"))
        elif status in ("notrun", "disabled"):
            skipped = case.find("skipped")
            message = (skipped.get("message") or "") if skipped is not None else ""
            # A test whose program is not there did not run, and that is no skip.
            if status == "notrun" and "SKIP_" not in message:
                self.failed.append(f"{case.get('name')}: {message or 'did not run'}")
            else:
                self.skipped.append((case.get("name"), reason_of(case)))
        else:
            self.failed.append(case.get("name") + end_of(case.findtext("system-out")))

    def _add_class(self, case, number, at):
        said, found = case.findtext("system-out"), 0
        failed_before = len(self.failed)
        for outcome in OUTCOME.finditer(said, at):
            kind, test, reason = outcome.groups()
            name = f"{case.get('name')}.{test}"
            if kind == "passed":
                self.passed.append(name)
            elif kind == "failed":
                self.failed.append(name + end_of(said[at:outcome.start()]))
            else:
                self.skipped.append((name, reason or "no reason given"))
            at, found = outcome.end(), found + 1
        if found != number or number == 0:
            self.failed.append(f"{case.get('name')}: {found} of {number} tests ended"
                               + end_of(said[at:]))
        elif case.get("status") == "fail" and len(self.failed) == failed_before:
            self.failed.append(case.get("name") + end_of(said[at:]))


def main(arguments):
    counts = [0, 0, 0]
    lines = []
    for argument in arguments:
        preset, _, path = argument.partition("=")
        results = Results()
        try:
            results.read(path)
        except (OSError, xml.ParseError) as error:
            lines.append(f"{preset}: no results: {error}")
            counts[1] += 1
            continue
        for name, reason in results.skipped:
            lines.append(f"{preset}: skipped {name}: {reason}")
        for name in results.failed:
            lines.append(f"{preset}: FAILED {name}")
        counts = [before + len(more) for before, more
                  in zip(counts, (results.passed, results.failed, results.skipped))]
    if lines:
        print("\n" + "\n".join(lines))
    if counts[0] + counts[1] == 0:
        print("no test ran")
    print(f"{counts[0]} passed, {counts[1]} failed" + (f", {counts[2]} skipped" if counts[2] else ""))
    return 0 if counts[0] > 0 and counts[1] == 0 else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

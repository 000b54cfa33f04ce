#!/usr/bin/python3
"""Sums up ctest's results: says which tests were skipped and why, which failed, and counts.

    tools/test_summary.py PRESET=results.xml...

What a failed test printed last stands, indented, below its name. The last line is "N passed, N
failed", with ", N skipped" when some were. Fails when a test failed, when none ran, or when a file is
not there.
"""

import re
import sys
import xml.etree.ElementTree as xml


LINES_OF_A_FAILURE = 40


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


def read(path):
    """The names of the passed tests, the failed ones with what they said last, and the skipped ones
    with their reasons."""
    passed, failed, skipped = [], [], []
    for case in xml.parse(path).getroot().iter("testcase"):
        status = case.get("status")
        if status == "run":
            passed.append(case.get("name"))
        elif status in ("notrun", "disabled"):
            message = (case.find("skipped").get("message") or "") if case.find("skipped") is not None else ""
            # A test whose program is not there did not run, and that is no skip.
            if status == "notrun" and "SKIP_" not in message:
                failed.append(f"{case.get('name')}: {message or 'did not run'}")
            else:
                skipped.append((case.get("name"), reason_of(case)))
        else:
            failed.append(case.get("name") + end_of(case.findtext("system-out")))
    return passed, failed, skipped


def main(arguments):
    counts = [0, 0, 0]
    lines = []
    for argument in arguments:
        preset, _, path = argument.partition("=")
        try:
            passed, failed, skipped = read(path)
        except (OSError, xml.ParseError) as error:
            lines.append(f"{preset}: no results: {error}")
            counts[1] += 1
            continue
        for name, reason in skipped:
            lines.append(f"{preset}: skipped {name}: {reason}")
        for name in failed:
            lines.append(f"{preset}: FAILED {name}")
        counts = [a + len(b) for a, b in zip(counts, (passed, failed, skipped))]
    if lines:
        print("\n" + "\n".join(lines))
    if counts[0] + counts[1] == 0:
        print("no test ran")
    print(f"{counts[0]} passed, {counts[1]} failed" + (f", {counts[2]} skipped" if counts[2] else ""))
    return 0 if counts[0] > 0 and counts[1] == 0 else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

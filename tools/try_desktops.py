#!/usr/bin/python3
"""Tries the program on whole desktops: what `./test desktops` runs.

    tools/try_desktops.py [RELEASE...] [SESSION...]

All of both without any. Each release is a system in a folder (tools/desktop_system.sh), in which the
program is built; each session comes up in it, is tried (tests/desktops/run.py) and goes. What came
of it lies in build/desktops/RELEASE/SESSION, from where tools/write_desktops.py writes the tables. The
last line counts; what failed stands before it.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
RELEASES = ["bookworm", "trixie"]
SESSIONS = ["gnome-wayland", "gnome-wayland-extension", "gnome-x11", "kde-wayland", "kde-x11", "xfce",
            "lxqt", "openbox", "sway"]
# A session that comes up and answers at all is through in a quarter of it.
SECONDS = 2400


def system(release, *words):
    """Runs tools/desktop_system.sh and shows what it says. Its last line, its "FAILED" lines, and
    whether it ended well and in time."""
    process = subprocess.Popen(
        ["timeout", "--kill-after=30", str(SECONDS), ROOT / "tools/desktop_system.sh", release,
         *words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
        errors="replace")
    last, failures = "", []
    for line in process.stdout:
        print(line, end="", flush=True)
        last = line.strip() or last
        if line.startswith("FAILED"):
            failures.append(f"{release}: {line.strip()}")
    return last, failures, process.wait() == 0


def main(words):
    unknown = [word for word in words if word not in RELEASES + SESSIONS]
    if unknown:
        sys.exit(f"neither release nor session: {' '.join(unknown)}\n\n{__doc__}")
    sessions = [word for word in words if word in SESSIONS] or SESSIONS
    passed = failed = 0
    all_failures = []
    for release in [word for word in words if word in RELEASES] or RELEASES:
        # What an earlier run has left is of another version.
        for session in sessions:
            shutil.rmtree(ROOT / "build/desktops" / release / session, ignore_errors=True)
        _, failures, well = system(release, "build")
        if not well:
            # None of the sessions can be had.
            failed += len(sessions)
            all_failures += failures or [f"{release}: could not be made"]
            continue
        for session in sessions:
            print(f"== {release}, {session}", flush=True)
            last, failures, well = system(release, "run", "/usr/bin/python3", "-W", "ignore", "-B",
                                          "/tree/tests/desktops/run.py", session)
            count = re.fullmatch(r"(\d+) passed, (\d+) failed", last)
            if not count or well != (count[2] == "0"):
                failures.append(f"{release}: {session} ended without a count")
                failed += 1
            else:
                passed += int(count[1])
                failed += int(count[2])
            all_failures += failures
    print()
    print("\n".join(all_failures))
    print(f"{passed} passed, {failed} failed")
    return 1 if failed or not passed else 0


if __name__ == "__main__":
    if os.geteuid() != 0:
        sys.exit("Only root can make systems in folders. Run: sudo ./test desktops")
    sys.exit(main(sys.argv[1:]))

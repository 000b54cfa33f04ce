#!/usr/bin/python3 -W ignore
"""Brings up one desktop inside a system that has it, and runs the trials on it:

    run.py SESSION [PATTERN]        those whose names the pattern finds; all without one
    run.py SESSION -- COMMAND...    runs a command there instead, with the session's environment

Leaves results.json, pictures and logs in /results/SESSION, TAVO_RESULTS names another folder.
Prints a line for each trial. Fails when one came out otherwise than expected.py says.
"""

import json
import os
import pathlib
import re
import shutil
import sys
import time
import traceback

import expected
from gnome import GnomeWayland, GnomeWaylandExtension, GnomeX11
from kde import KdeWayland, KdeX11
from others import Lxqt, Openbox, Sway, Xfce
from session import package_version
from trials import APPLICATIONS, No, Trials, trials

SESSIONS = {session.name: session for session in (
    GnomeX11, GnomeWayland, GnomeWaylandExtension, KdeX11, KdeWayland, Xfce, Lxqt,
    Openbox, Sway)}


def run_trials(session, release, results, pattern):
    """The answers, each a dictionary."""
    made = Trials(session, results)
    answers = []
    for name, trial in trials(session):
        if not re.search(pattern, name):
            continue
        begun = time.monotonic()
        reason = expected.not_there(release, session.name, name)
        if reason:
            answer, evidence = "not there", reason
        else:
            try:
                answer, evidence = "yes", trial(made)
            except No as seen:
                answer, evidence = "no", str(seen)
                keep_picture(session, results, name)
            except Exception as error:
                answer, evidence = "broken", f"{type(error).__name__}: {error}"
                print(traceback.format_exc())
                keep_picture(session, results, name)
            try:
                made.end()
            except Exception as error:
                answer, evidence = "broken", f"{evidence}; and then: {error}"
        verdict, why = expected.judge(release, session.name, name, answer)
        print(f"{verdict} {session.name}: {name}: {answer}: {evidence}"
              f"{f' [{why}]' if why else ''} ({time.monotonic() - begun:.0f} s)", flush=True)
        answers.append({"trial": name, "answer": answer, "evidence": evidence, "verdict": verdict,
                        "why": why or getattr(evidence, "note", "")})
    return answers, made.measures


def keep_picture(session, results, name):
    try:
        session.screenshot(results / f"no-{re.sub(r'[^a-z0-9]+', '-', name.lower())}.png")
    except Exception as error:
        print(f"no picture: {error}")


def keep_logs(session, results):
    for path in session.folder.glob("*.log"):
        shutil.copy(path, results / path.name)


def replace_answers(path, answers, measures):
    """In what a whole run has found, the answers of the trials that were tried again."""
    if path.is_file():
        found = json.loads(path.read_text())
        anew = {each["trial"]: each for each in answers}
        found["answers"] = [anew.get(each["trial"], each) for each in found["answers"]]
        found["measures"] |= measures
        path.write_text(json.dumps(found, indent=1))


def main(name, given):
    if name not in SESSIONS:
        sys.exit(f"no such session: {name}; there are {' '.join(SESSIONS)}")
    release = os.environ.get("RELEASE", "")
    results = pathlib.Path(os.environ.get("TAVO_RESULTS", "/results")) / name
    if not given:
        # What an earlier run has left would be taken for what this one has seen.
        shutil.rmtree(results, ignore_errors=True)
    results.mkdir(parents=True, exist_ok=True)
    session = SESSIONS[name]()
    entered = False
    try:
        with session:
            entered = True
            try:
                if given[:1] == ["--"]:
                    return session.start(given[1:], log="command.log").wait()
                pattern = given[0] if given else ""
                title = session.version()
                answers, measures = run_trials(session, release, results, pattern)
            finally:
                keep_logs(session, results)
    except Exception as error:
        if entered:
            raise
        print(traceback.format_exc())
        print(f"FAILED {name}: could not be brought up: {error}")
        answers, measures, title = [{"trial": "comes up", "answer": "broken", "evidence": str(error),
                                     "verdict": "FAILED", "why": ""}], {}, name
    if given:
        replace_answers(results / "results.json", answers, measures)
    else:
        versions = {each.name: {"version": package_version(each.package), "kind": each.kind}
                    for each in APPLICATIONS}
        (results / "results.json").write_text(json.dumps(
            {"release": release, "session": name, "title": title, "kind": session.kind,
             "answers": answers, "measures": measures, "applications": versions}, indent=1))
    failed = sum(each["verdict"] == "FAILED" for each in answers)
    print(f"{len(answers) - failed} passed, {failed} failed")
    return 1 if failed or not answers else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], sys.argv[2:]))

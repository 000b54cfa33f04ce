#!/usr/bin/python3
"""Writes what `./test desktops` has found into docs/desktops.md and README.md:

    tools/write_desktops.py [ROOT]

From build/desktops/RELEASE/SESSION/results.json, into the places between "<!-- trials -->" and
"<!-- end of trials -->". Sessions without results are left out, and named.
"""

import json
import pathlib
import sys

RELEASES = {"bookworm": "Debian 12", "trixie": "Debian 13"}
SESSIONS = {
    "gnome-wayland": "GNOME, Wayland", "gnome-wayland-extension": "GNOME, Wayland, our extension",
    "gnome-x11": "GNOME, X11", "kde-wayland": "KDE, Wayland", "kde-x11": "KDE, X11", "xfce": "Xfce",
    "lxqt": "LXQt", "openbox": "openbox, tint2", "sway": "sway, waybar"}
APPLICATION_TRIALS = ("new", "fronts", "restores")
# Columns of the README's table: what a cell sums up.
README_COLUMNS = {
    "Tray, left click": ["tray: left click"],
    "Tray, right click": ["tray: right click, first entry"],
    "Comes when called": ["hidden, second start", "behind another window, second start",
                          "behind another window, over the bus",
                          "behind another window with a menu open",
                          "behind another window with a sheet open", "on another workspace"],
    "Fronting": ["fronts: "],
    "Not in the taskbar": ["not in the taskbar"],
    "Dark, light and icons live": ["dark and light, live", "icon theme, live"]}
BEGIN, END = "<!-- trials -->", "<!-- end of trials -->"


def read(root):
    """The results of each release and session that there are."""
    found = {}
    for release in RELEASES:
        for session in SESSIONS:
            path = root / "build/desktops" / release / session / "results.json"
            if path.is_file():
                found[release, session] = json.loads(path.read_text())
    return found


class Notes:
    """Reasons, each told once and numbered."""

    def __init__(self):
        self.texts = []

    def mark(self, text):
        if text not in self.texts:
            self.texts.append(text)
        return f"({self.texts.index(text) + 1})"


def cell(answer, notes):
    if answer is None:
        return ""
    if answer["answer"] == "yes":
        return f"yes {notes.mark(answer['why'])}" if answer["why"] else "yes"
    if answer["answer"] == "not there":
        return f"– {notes.mark(answer['evidence'])}"
    return f"**no** {notes.mark(answer['why'] or 'Seen: ' + answer['evidence'])}"


def table(rows):
    head, *others = [f"| {' | '.join(row)} |" for row in rows]
    return "\n".join([head, "|" + " --- |" * len(rows[0]), *others])


def escaped(text):
    return text.replace("|", "\\|").replace("<", "&lt;")


def release_text(release, results):
    """The tables of a release."""
    sessions = [session for session in SESSIONS if (release, session) in results]
    answers = {session: {each["trial"]: each for each in results[release, session]["answers"]}
               for session in sessions}
    named = {}
    for session in sessions:
        named |= dict.fromkeys(answers[session])
    applications, notes = {}, Notes()
    for session in sessions:
        applications |= results[release, session]["applications"]
    rows = [["", *(SESSIONS[session] for session in sessions)],
            ["version", *(results[release, session]["title"] for session in sessions)]]
    for trial in named:
        what, _, application = trial.partition(": ")
        if what in APPLICATION_TRIALS and application in applications:
            if what == APPLICATION_TRIALS[0]:
                version = applications[application]
                rows.append([f"{application} {version['version']} ({version['kind']})", *(
                    " / ".join(cell(answers[session].get(f"{each}: {application}"), notes)
                               for each in APPLICATION_TRIALS) for session in sessions)])
        elif trial not in ("measures", "pictures"):
            rows.append([trial, *(cell(answers[session].get(trial), notes) for session in sessions)])
    for what, name in (("start, ms", "start_ms"), ("second start, ms", "second_start_ms"),
                       ("fronting, ms of a processor", "fronting_ms"),
                       ("memory, MB", "pss_mb")):
        rows.append([what, *(str(results[release, session]["measures"].get(name, "")).replace(
            "None", "") for session in sessions)])
    said = "".join(f"\n{number}. {escaped(text)}" for number, text in enumerate(notes.texts, 1))
    return f"### {RELEASES[release]}\n\n{table(rows)}\n{said}\n"


def summed_up(results, session, wanted):
    """What all releases say to some trials, or which of them says what."""
    said = {}
    for release, name in RELEASES.items():
        if (release, session) not in results:
            continue
        answers = [each for each in results[release, session]["answers"]
                   if any(each["trial"] == trial or (trial.endswith(": ")
                                                     and each["trial"].startswith(trial))
                          for trial in wanted)]
        conditional = any(each["answer"] == "yes" and each["why"] for each in answers)
        tried = [each["answer"] for each in answers if each["answer"] != "not there"]
        if not tried:
            said[name] = "–"
        elif all(answer == "yes" for answer in tried):
            said[name] = "yes, conditionally" if conditional else "yes"
        else:
            count = sum(answer == "yes" for answer in tried)
            said[name] = f"{count} of {len(tried)}" if count else "no"
    if len(set(said.values())) == 1:
        return next(iter(said.values()))
    return "; ".join(f"{name.removeprefix('Debian ')}: {what}" for name, what in said.items())


def readme_text(results):
    rows = [["Desktop", *README_COLUMNS]]
    for session, name in SESSIONS.items():
        titles = [results[release, session]["title"] for release in RELEASES
                  if (release, session) in results]
        if titles:
            rows.append([f"{name} ({' · '.join(titles)})", *(
                summed_up(results, session, wanted) for wanted in README_COLUMNS.values())])
    return table(rows) + "\n"


def put_between(path, text):
    """Replaces what stands between the two marks."""
    before, begin, rest = path.read_text().partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f"{path} has no {BEGIN} … {END}")
    path.write_text(f"{before}{BEGIN}\n\n{text}\n{END}{after}")


def main(words):
    root = pathlib.Path(words[0] if words else pathlib.Path(__file__).parent.parent).resolve()
    results = read(root)
    if not results:
        sys.exit("no results: run ./test desktops")
    put_between(root / "docs/desktops.md", "\n".join(
        release_text(release, results) for release in RELEASES
        if any(key[0] == release for key in results)))
    put_between(root / "README.md", readme_text(results))
    for release in RELEASES:
        for session in SESSIONS:
            if (release, session) not in results:
                print(f"no results of {session} on {release}")


if __name__ == "__main__":
    main(sys.argv[1:])

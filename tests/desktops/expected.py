"""How the trials come out where they do not come out with a yes.

Each line names releases, sessions and trials by patterns that have to fit the whole name, and gives
the reason. A line that no longer holds fails like any other surprise.
"""

import re

# Tried, and the answer is no.
NO = [
    (".*", "gnome-wayland.*", "not in the taskbar",
     "no Wayland protocol that GNOME knows keeps a window out of the overview and the dash"),
    (".*", "gnome-wayland", "(fronts|restores): (Galculator|KCalc|XTerm)",
     "GNOME tells no program of others' windows; its entry is neither activated over D-Bus nor hands "
     "over. The extension brings it forward"),
    (".*", "gnome-wayland", "(fronts|restores): Calculator",
     "GNOME tells no program of others' windows; started again, it opens another window of its first "
     "process, in front. The extension brings the first window forward"),
    (".*", "gnome-wayland", "(fronts|restores): FeatherPad",
     "GNOME tells no program of others' windows; its second start hands over without the activation "
     "token, so GNOME keeps it behind. The extension brings it forward"),
    ("trixie", "gnome-wayland.*", "says nothing on standard error",
     "Qt 6.8 itself writes that the input method leaves a surface that is gone, at each hiding"),
    (".*", "sway", "not in the taskbar",
     "no protocol offers it; sway itself has no taskbar, and its bars list workspaces"),
]

# Not tried, because the desktop has no such thing.
NOT_THERE = [
    (".*", "sway", "restores: .*", "sway does not minimise"),
]


def _reason(lines, *names):
    for *patterns, reason in lines:
        if all(re.fullmatch(pattern, name) for pattern, name in zip(patterns, names)):
            return reason
    return ""


def not_there(release, session, trial):
    return _reason(NOT_THERE, release, session, trial)


def judge(release, session, trial, answer):
    """"passed" or "FAILED", and why an expected no is one."""
    if answer == "not there":
        return "passed", ""
    reason = _reason(NO, release, session, trial)
    if answer == "yes" and reason:
        return "FAILED", f"expected to be impossible: {reason}"
    if answer == "no" and reason:
        return "passed", reason
    return ("passed" if answer == "yes" else "FAILED"), ""

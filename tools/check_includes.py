#!/usr/bin/python3
"""Checks who includes whom, that rooms stay small, and that only platform/ knows which system it is
built for.

    tools/check_includes.py [ROOT]

Prints every include that breaks a rule below, and fails when there is one.
"""

import collections
import pathlib
import re
import sys

SOURCES = (".h", ".cpp", ".mm")

CORE = {"catalogue", "launching", "platform", "support"}


def rooms(folder, beside, table):
    """What each room of `folder` may include: itself, the rooms that `table` names, and `beside`."""
    return {f"{folder}/{room}": {f"{folder}/{other}" for other in (room, *others.split())} | beside
            for room, others in table.items()}


# What each folder may include of the program, the folders without their sub-folders: platform/
# means the ports. The longest name that fits counts.
#
# Of the rooms of platform/linux, x11 and wayland never meet, only session chooses between them, and
# only app includes session.
ALLOWED = {
    "support": {"support"},
    "platform": {"platform", "support"},
    "platform/posix": {"platform", "platform/posix", "support"},
    "platform/qt": {"platform", "platform/posix", "platform/qt", "support"},
    "platform/macos": {"platform", "platform/macos", "platform/posix", "platform/qt", "support"},
    **rooms("platform/linux", {"platform", "platform/posix", "support"}, {
        "system": "",
        "dbus": "system",
        "entries": "system",
        "bundles": "system",
        "store": "system",
        "windows": "entries system",
        "x11": "windows entries system",
        "wayland": "windows entries system",
        "compositors": "dbus windows entries system",
        "renderer": "",
        "icons": "entries renderer system x11",
        "opening": "entries bundles dbus system x11",
        "tray": "dbus system",
        "instance": "dbus system",
        "settings": "dbus entries system",
        "session": "compositors dbus entries settings system tray wayland windows x11",
    }),
    "catalogue": CORE,
    "launching": CORE,
    **rooms("ui", CORE, {
        "look": "",
        "accessibility": "",
        "controls": "accessibility look",
        "grid": "accessibility controls look",
        "sidebar": "accessibility controls look",
        "editor": "accessibility controls look",
        "window": "accessibility controls editor grid look sidebar",
    }),
}
# The program itself may include everything.
for name in ("app", "app/status", "app/linux", "app/macos"):
    ALLOWED[name] = {*ALLOWED, "app", "app/status", "app/linux", "app/macos"}

# All files of these folders are in rooms, which stay small enough to be known by heart.
ROOMED = ("platform/linux", "ui")
MOST_FILES = 30
MOST_LINES = 2500

# Of one header of x11 alone may icons know, the settings that the session has there; and of one of
# the renderer, which is a program of its own, how to talk to it.
ONLY = {("platform/linux/icons", "platform/linux/x11"): {"platform/linux/x11/XSettings.h"},
        ("platform/linux/icons", "platform/linux/renderer"):
            {"platform/linux/renderer/Protocol.h"},
        ("platform/linux/opening", "platform/linux/x11"):
            {"platform/linux/x11/StartupNotification.h"}}

# Folders that know no toolkit and no system, with the libraries that they may use all the same.
BARE = {"support": ("unicode/", "nlohmann/"), "platform": (), "catalogue": (), "launching": ()}

STANDARD = frozenset("""
    algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv
    chrono cinttypes climits clocale cmath compare complex concepts condition_variable coroutine
    csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype
    deque exception execution filesystem format forward_list fstream functional future
    initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map
    memory memory_resource mutex new numbers numeric optional ostream queue random ranges ratio
    regex scoped_allocator semaphore set shared_mutex source_location span sstream stack stdexcept
    stop_token streambuf string string_view strstream syncstream system_error thread tuple
    type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector
    version
""".split())

INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s*([<"])([^>"]+)[>"]')
CONDITION = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif|elifdef|elifndef)\b(.*)")
SYSTEM = re.compile(r"\b(?:__linux(?:__)?|linux|__gnu_linux__|__unix(?:__)?|unix|__APPLE__|__MACH__|"
                    r"_WIN32|_WIN64|__ANDROID__|__FreeBSD__|__OpenBSD__|__NetBSD__|"
                    r"Q_OS_\w+|TARGET_OS_\w+)\b")


def folder_of(path, known):
    """The longest of the known folders that holds `path`, or its top folder."""
    parts = pathlib.PurePosixPath(path).parts[:-1]
    for length in range(len(parts), 0, -1):
        if "/".join(parts[:length]) in known:
            return "/".join(parts[:length])
    return parts[0] if parts else ""


def broken_rule(folder, bracket, included):
    """Why a file in `folder` may not include `included`; nothing when it may."""
    if bracket == '"':
        target = folder_of(included, ALLOWED)
        if not target:
            return "own headers are included from the root of the tree"
        if target not in ALLOWED.get(folder, ()):
            return f"{folder} may include {', '.join(sorted(ALLOWED.get(folder, ())))} only"
        only = ONLY.get((folder, target))
        if only and included not in only:
            return f"{folder} may include of {target} only {', '.join(sorted(only))}"
    elif folder in BARE and included not in STANDARD and not included.startswith(BARE[folder]):
        return f"{folder} knows the standard library only" + (
            f", and {' '.join(BARE[folder])}" if BARE[folder] else "")
    return None


def check(root):
    """Every broken rule as "file:line: text"."""
    found = []
    sizes = collections.defaultdict(list)
    tops = {folder.split("/")[0] for folder in ALLOWED}
    for path in sorted(root.rglob("*")):
        relative = path.relative_to(root).as_posix()
        top = relative.split("/")[0]
        if path.suffix not in SOURCES or top not in tops | {"tests", "benchmarks"}:
            continue
        folder = folder_of(relative, ALLOWED)
        if relative.rpartition("/")[0] in ROOMED:
            found.append(f"{relative}:1: {folder} has rooms, and every file is in one")
        lines = path.read_text(errors="replace").splitlines()
        if path.suffix != ".h" and path.with_suffix(".h").is_file() and top in tops:
            first = next((match[2] for line in lines if (match := INCLUDE.match(line))), None)
            if first != relative.rpartition(".")[0] + ".h":
                found.append(f"{relative}:1: includes its own header first, which proves that the "
                             "header compiles alone")
        sizes[folder].append(len(lines))
        for number, line in enumerate(lines, 1):
            where = f"{relative}:{number}"
            if top in tops and (match := INCLUDE.match(line)):
                if reason := broken_rule(folder, match[1], match[2]):
                    found.append(f"{where}: includes {match[2]}: {reason}")
            if top != "platform" and (match := CONDITION.match(line)) and SYSTEM.search(match[1]):
                found.append(f"{where}: only platform/ asks which system it is built for")
    for folder, lines in sizes.items():
        if folder.startswith(tuple(f"{roomed}/" for roomed in ROOMED)):
            if len(lines) > MOST_FILES or sum(lines) > MOST_LINES:
                found.append(f"{folder}:1: {len(lines)} files of {sum(lines)} lines; a room holds "
                             f"{MOST_FILES} files and {MOST_LINES} lines at most")
    return found


def main(arguments):
    root = pathlib.Path(arguments[0] if arguments else pathlib.Path(__file__).parent.parent)
    found = check(root.resolve())
    print("\n".join(found) or "every include keeps the rules")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

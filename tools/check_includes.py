#!/usr/bin/python3
"""Checks who includes whom, and that only platform/ knows which system it is built for.

    tools/check_includes.py [ROOT]

Prints every include that breaks a rule below, and fails when there is one.
"""

import pathlib
import re
import sys

SOURCES = (".h", ".cpp", ".mm")

# What each folder may include of the program, the folders without their sub-folders: platform/
# means the ports, platform/linux/ one system's adapters. The longest name that fits counts.
ALLOWED = {
    "support": {"support"},
    "platform": {"platform", "support"},
    "platform/linux": {"platform", "platform/linux", "support"},
    "platform/macos": {"platform", "platform/macos", "support"},
    "catalogue": {"catalogue", "launching", "platform", "support"},
    "launching": {"catalogue", "launching", "platform", "support"},
    "ui": {"ui", "catalogue", "launching", "platform", "support"},
    "app": {"app", "ui", "catalogue", "launching", "platform", "platform/linux", "platform/macos",
            "support"},
}

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
        if target not in ALLOWED[folder]:
            return f"{folder} may include {', '.join(sorted(ALLOWED[folder]))} only"
    elif folder in BARE and included not in STANDARD and not included.startswith(BARE[folder]):
        return f"{folder} knows the standard library only" + (
            f", and {' '.join(BARE[folder])}" if BARE[folder] else "")
    return None


def check(root):
    """Every broken rule as "file:line: text"."""
    found = []
    tops = {folder.split("/")[0] for folder in ALLOWED}
    for path in sorted(root.rglob("*")):
        relative = path.relative_to(root).as_posix()
        top = relative.split("/")[0]
        if path.suffix not in SOURCES or top not in tops | {"tests", "benchmarks"}:
            continue
        folder = folder_of(relative, ALLOWED)
        for number, line in enumerate(path.read_text(errors="replace").splitlines(), 1):
            where = f"{relative}:{number}"
            if top in tops and (match := INCLUDE.match(line)):
                if reason := broken_rule(folder, match[1], match[2]):
                    found.append(f"{where}: includes {match[2]}: {reason}")
            if top != "platform" and (match := CONDITION.match(line)) and SYSTEM.search(match[1]):
                found.append(f"{where}: only platform/ asks which system it is built for")
    return found


def main(arguments):
    root = pathlib.Path(arguments[0] if arguments else pathlib.Path(__file__).parent.parent)
    found = check(root.resolve())
    print("\n".join(found) or "every include keeps the rules")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

#!/usr/bin/env python3
"""Cold starts of this program, rofi and xfce4-appfinder, side by side.

    benchmarks/side_by_side.py [PROGRAM] [--beside OTHER] [--runs N] [--entries N[,N...]]
                               [--desktop NAME] [--drawings FOLDER]

PROGRAM is build/release/tavolauncher unless given; tavo_frame_watch is looked for in the folder
"bin" beside it. Needs Xvfb, openbox, dbus-daemon, xprop, rofi and xfce4-appfinder. OTHER is another
build of it, to be measured in turns with the first. With FOLDER every icon is one of the SVG files
there, such as an icon theme has them.

Every start happens on one private X desktop with a session bus, in a window of 980 x 640. The
desktop entries, with their icons, are generated, and XDG_DATA_DIRS names only the folder that
holds them. rofi shows a grid of six columns with icons of 68 pixels; all else is at its default
(its cache of entries is off then: it reads them all at every start). xfce4-appfinder shows its
list, not as a service. The runs are interleaved, and one of each that does not count comes before,
so the page cache is warm. "cache warm" means that what a program keeps under XDG_CACHE_HOME is
there from an earlier start, "cache cold" that this folder is empty.

"first" is the time from exec to the first picture with tiles or rows, "full" the time to the last
change before the picture stays the same for 0.4 s. Both look at the part of the window that has the
tiles or rows, as the X server sees it. Memory is read 3 s after "full".

The exit status is 0 when all was measured, whatever came out, and 1 when something could not be.
"""

import argparse
import collections
import json
import os
import pathlib
import shutil
import statistics
import struct
import subprocess
import sys
import tempfile
import time
import zlib

SOURCE = pathlib.Path(__file__).resolve().parent.parent
WINDOW = (980, 640)
SETTLE_MS = 3000
MEMORY_RUNS = 3

# The margins of each window outside its tiles or rows: left, top, right, bottom.
OURS, ROFI, APPFINDER = "tavolauncher", "rofi", "xfce4-appfinder"
BESIDE = "beside"
INSETS = {OURS: "210,56,12,44", BESIDE: "210,56,12,44", ROFI: "20,70,20,50", APPFINDER: "20,70,20,50"}

ROFI_THEME = """
window { width: %dpx; height: %dpx; location: center; anchor: center; padding: 16px; }
listview { columns: 6; flow: horizontal; spacing: 20px; fixed-height: false; dynamic: false; }
element { orientation: vertical; spacing: 8px; padding: 4px; }
element-icon { size: 68px; horizontal-align: 0.5; }
element-text { horizontal-align: 0.5; }
""" % WINDOW

APPFINDER_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-appfinder" version="1.0">
  <property name="last" type="empty">
    <property name="window-width" type="int" value="%d"/>
    <property name="window-height" type="int" value="%d"/>
  </property>
</channel>
""" % WINDOW

# Budgets as ratios ours / theirs: (entries, measure, other) -> at most.
BUDGETS = {
    (200, "first", ROFI): 1.0, (200, "first", APPFINDER): 0.5, (200, "full", ROFI): 0.5,
    (5000, "first", ROFI): 0.6, (5000, "full", ROFI): 0.6,
}
MEMORY_BUDGETS = {"pss": 35.0, "privateDirty": 10.0}


# --- desktop entries and icons ------------------------------------------------------------------

FIRST_WORDS = ["Photo", "Music", "Video", "Text", "Disk", "Network", "Font", "Mail", "Web", "Paint",
               "Sound", "Task", "Note", "Map", "Chess", "Scan", "Print", "Backup", "Archive",
               "Terminal", "Password", "Calendar", "Contact", "Recipe", "Weather"]
SECOND_WORDS = ["Viewer", "Editor", "Manager", "Player", "Browser", "Studio", "Recorder", "Helper",
                "Monitor", "Organizer", "Center", "Tool", "Designer", "Desk", "Box", "Lab", "Finder",
                "Writer", "Reader", "Converter"]
THIRD_WORDS = ["", " Pro", " Lite", " 2", " Plus", " Classic", " Next", " Mini", " Next 2", " XL"]
LANGUAGES = ["ar", "bg", "ca", "cs", "da", "de", "el", "en_GB", "eo", "es", "et", "eu", "fa", "fi",
             "fr", "gl", "he", "hi", "hr", "hu", "id", "it", "ja", "ko", "lt", "nb", "nl", "pl",
             "pt", "pt_BR", "ro", "ru", "sk", "sl", "sr", "sv", "th", "tr", "uk", "vi", "zh_CN",
             "zh_TW"]
CATEGORIES = ["AudioVideo;Audio;Player;", "Development;IDE;", "Education;Science;", "Game;",
              "Graphics;2DGraphics;", "Network;WebBrowser;", "Office;", "Settings;",
              "System;Monitor;", "Utility;TextEditor;"]
PNG_SIZES = (48, 64, 128)
PICTURES = 24
SHARED_ICONS = 20


def entry_name(index):
    count = len(FIRST_WORDS) * len(SECOND_WORDS)
    first = FIRST_WORDS[index % len(FIRST_WORDS)]
    second = SECOND_WORDS[index // len(FIRST_WORDS) % len(SECOND_WORDS)]
    return first + " " + second + THIRD_WORDS[index // count % len(THIRD_WORDS)]


def icon_name(index, drawings=()):
    """Half have PNG files of their own, one in eight a drawing, the others share a few."""
    if drawings:
        return f"drawn-{index:05d}"
    if index % 2 == 0:
        return f"generated-{index:05d}"
    if index % 8 == 1:
        return f"drawn-{index:05d}"
    return f"shared-{index % SHARED_ICONS:02d}"


def entry_text(index, drawings):
    name = entry_name(index)
    lines = ["[Desktop Entry]", "Type=Application", "Version=1.0", f"Name={name}"]
    lines += [f"Name[{language}]={name}" for language in LANGUAGES[index % 7:]]
    lines += [f"GenericName={name.split()[1]}", f"Comment=Work with {name.split()[0].lower()} files"]
    lines += [f"Comment[{language}]={name}: {language} words about what it does"
              for language in LANGUAGES[index % 11:]]
    lines += ["Exec=/bin/true %U", f"Icon={icon_name(index, drawings)}", "Terminal=false",
              f"Categories={CATEGORIES[index % len(CATEGORIES)]}",
              "StartupNotify=true", "MimeType=text/plain;image/png;audio/x-wav;"]
    return "\n".join(lines) + "\n"


def png(side, picture):
    """A rounded square in two colours, with a transparent margin and some grain."""
    def chunk(kind, data):
        return (struct.pack(">I", len(data)) + kind + data +
                struct.pack(">I", zlib.crc32(kind + data)))
    margin, hue = side // 12, picture * 37
    rows = bytearray()
    for y in range(side):
        rows.append(0)
        for x in range(side):
            inside = margin <= x < side - margin and margin <= y < side - margin
            grain = (x * 7 + y * 13 + x * y * picture) % 16
            bright = (x - side / 2) ** 2 + (y - side / 2) ** 2 < (side / 4) ** 2
            rows += bytes(((hue * 3 + grain) % 256, (60 + 4 * y + grain) % 256,
                           230 if bright else (hue + x) % 256, 255 if inside else 0))
    header = struct.pack(">IIBBBBB", side, side, 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
            chunk(b"IDAT", zlib.compress(bytes(rows), 6)) + chunk(b"IEND", b""))


def svg(picture):
    colour = f"#{picture * 53 % 256:02x}{picture * 97 % 256:02x}b0"
    return f"""<svg xmlns="http://www.w3.org/2000/svg" width="128" height="128" viewBox="0 0 128 128">
<defs><linearGradient id="a" x1="0" y1="0" x2="0" y2="1"><stop offset="0" stop-color="{colour}"/>
<stop offset="1" stop-color="#203040"/></linearGradient></defs>
<rect x="8" y="8" width="112" height="112" rx="24" fill="url(#a)"/>
<path d="M32 96 C 40 {picture + 20} 80 20 96 32 L 88 88 Z" fill="#ffffff" opacity="0.8"/>
<circle cx="64" cy="{40 + picture}" r="18" fill="none" stroke="#ffd040" stroke-width="6"/>
</svg>
"""


def make_tree(folder, entries, drawings=()):
    applications = folder / "applications"
    hicolor = folder / "icons" / "hicolor"
    applications.mkdir(parents=True)
    sizes = [f"{size}x{size}/apps" for size in PNG_SIZES]
    for name in [*sizes, "scalable/apps"]:
        (hicolor / name).mkdir(parents=True)
    (hicolor / "index.theme").write_text(
        "[Icon Theme]\nName=Hicolor\nComment=Fallback\n"
        f"Directories={','.join([*sizes, 'scalable/apps'])}\n" +
        "".join(f"\n[{size}x{size}/apps]\nSize={size}\nContext=Applications\nType=Threshold\n"
                for size in PNG_SIZES) +
        "\n[scalable/apps]\nSize=128\nMinSize=8\nMaxSize=512\nContext=Applications\nType=Scalable\n")
    pictures = {size: [png(size, picture) for picture in range(PICTURES)] for size in PNG_SIZES}
    for index in range(entries):
        name = icon_name(index, drawings)
        if name.startswith("drawn"):
            (hicolor / "scalable" / "apps" / f"{name}.svg").write_text(
                drawings[index % len(drawings)] if drawings else svg(index % PICTURES))
        else:
            for size in PNG_SIZES:
                (hicolor / f"{size}x{size}" / "apps" / f"{name}.png").write_bytes(
                    pictures[size][index % PICTURES])
        stem = entry_name(index).replace(" ", "-").lower()
        (applications / f"org.example.{stem}.desktop").write_text(
            entry_text(index, drawings))
    # GTK needs the MIME types and a theme for its own symbols.
    for name in ("mime", "icons/Adwaita"):
        if (installed := pathlib.Path("/usr/share") / name).exists():
            (folder / name).symlink_to(installed)


# --- the private desktop ------------------------------------------------------------------------

class Desktop:
    """An X server, a session bus and a window manager, ended with the block that uses them."""

    def __init__(self, folder, name):
        self.folder = folder
        self.processes = []
        home = folder / "home"
        runtime = folder / "run"
        settings = home / ".config/xfce4/xfconf/xfce-perchannel-xml"
        settings.mkdir(parents=True)
        runtime.mkdir(mode=0o700)
        (settings / "xfce4-appfinder.xml").write_text(APPFINDER_SETTINGS)
        kept = {key: os.environ[key] for key in ("PATH", "LD_LIBRARY_PATH") if key in os.environ}
        self.environment = {**kept, "HOME": str(home), "XDG_RUNTIME_DIR": str(runtime),
                            "LANG": "C.UTF-8", "XDG_SESSION_TYPE": "x11"}
        if name:
            self.environment["XDG_CURRENT_DESKTOP"] = name

    def start(self, *command, **more):
        log = open(self.folder / f"{command[0]}.log", "wb")
        process = subprocess.Popen(command, env=self.environment, stderr=log,
                                   stdin=subprocess.DEVNULL, **more)
        self.processes.append(process)
        return process

    def answer(self, process):
        line = process.stdout.readline().decode().strip()
        if not line:
            raise RuntimeError(f"{process.args[0]} does not start")
        return line

    def __enter__(self):
        try:
            server = self.start("Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24",
                                "-nolisten", "tcp", "-noreset", stdout=subprocess.PIPE)
            self.environment["DISPLAY"] = ":" + self.answer(server)
            bus = self.start("dbus-daemon", "--session", "--nofork", "--print-address=1",
                             stdout=subprocess.PIPE)
            self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.answer(bus)
            self.start("openbox", stdout=subprocess.DEVNULL)
            self.await_window_manager()
        except BaseException:
            self.__exit__()
            raise
        return self

    def await_window_manager(self):
        for _ in range(200):
            shown = subprocess.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], check=False,
                                   env=self.environment, capture_output=True, text=True)
            if "#" in shown.stdout:
                return
            time.sleep(0.05)
        raise RuntimeError("no window manager appears")

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()


# --- measuring ----------------------------------------------------------------------------------

class Contest:
    """The starts of the programs with one tree of desktop entries."""

    def __init__(self, desktop, watch, program, tree, caches, beside=None):
        theme = desktop.folder / "grid.rasi"
        theme.write_text(ROFI_THEME)
        self.commands = {
            OURS: [str(program)],
            ROFI: ["rofi", "-show", "drun", "-show-icons", "-no-lazy-grab", "-theme", str(theme)],
            APPFINDER: ["xfce4-appfinder", "--disable-server"],
        }
        if beside:
            self.commands[BESIDE] = [str(beside)]
        self.desktop, self.watch, self.tree, self.caches = desktop, watch, tree, caches
        self.failures = []

    def environment(self, name):
        cache = self.caches / name
        cache.mkdir(parents=True, exist_ok=True)
        return {**self.desktop.environment, "XDG_DATA_DIRS": str(self.tree),
                "XDG_CACHE_HOME": str(cache)}

    def start(self, name, settle=None):
        more = [] if settle is None else ["--settle", str(settle)]
        return self.look(name, self.commands[name], *more)

    def look(self, name, command, *more):
        """The findings of tavo_frame_watch when `command` shows the window of `name`."""
        run = subprocess.run([str(self.watch), "--inset", INSETS[name], *more, "--", *command],
                             env=self.environment(name), capture_output=True, text=True,
                             check=False)
        if run.returncode != 0:
            self.failures.append(f"{name}: {run.stdout.strip()[:200]} {run.stderr.strip()[:200]}")
            return None
        return json.loads(run.stdout)

    def rounds(self, count, cold=False, settle=None):
        """The findings of `count` starts of each program, taken in turns."""
        findings = {name: [] for name in self.commands}
        for turn in range(count + 1):
            for name in self.commands:
                if cold:
                    shutil.rmtree(self.caches / name, ignore_errors=True)
                found = self.start(name, settle)
                if turn > 0 and found is not None:
                    findings[name].append(found)
        return findings


def median(findings, measure):
    values = [found[measure] for found in findings]
    return statistics.median(values) if values else None


def spread(findings, measure):
    values = sorted(found[measure] for found in findings)
    if not values:
        return "not measured"
    low, high = (values[round((len(values) - 1) * part)] for part in (0.25, 0.75))
    return f"{statistics.median(values):7.1f} ({low:.0f}-{high:.0f})"


def verdict(ratio, budget):
    if ratio is None:
        return "-"
    if budget is None:
        return f"{ratio:.2f}"
    return f"{ratio:.2f} {'<=' if ratio <= budget else '> '} {budget}"


def print_times(title, entries, findings):
    print(f"\n{title}\n{'':17}{'first ms':>20}{'ours/theirs':>14}{'full ms':>22}{'ours/theirs':>14}")
    for name, found in findings.items():
        line = f"{name:17}"
        for measure in ("first", "full"):
            ours, theirs = median(findings[OURS], measure), median(found, measure)
            ratio = ours / theirs if ours and theirs and name != OURS else None
            line += f"{spread(found, measure):>22}" \
                    f"{verdict(ratio, BUDGETS.get((entries, measure, name))):>14}"
        print(line)


def print_memory(title, findings):
    print(f"\n{title}\n{'':17}{'PSS MB':>14}{'private dirty MB':>20}")
    for name, found in findings.items():
        line = f"{name:17}"
        for measure, budget in MEMORY_BUDGETS.items():
            value = median(found, measure)
            shown = "not measured" if value is None else f"{value / 1024:.1f}"
            if value is not None and name == OURS:
                shown += f" {'<=' if value / 1024 <= budget else '> '} {budget:.0f}"
            line += f"{shown:>17}"
        print(line)


def measure(desktop, watch, program, arguments, folder):
    failures = []
    looks = []
    # Files, not the links to them that themes are full of.
    drawings = [path.read_text() for path in sorted((arguments.drawings or pathlib.Path()).glob("*.svg"))
                if arguments.drawings and not path.is_symlink()]
    for number, entries in enumerate(arguments.entries):
        tree = folder / f"share-{entries}"
        make_tree(tree, entries, drawings)
        contest = Contest(desktop, watch, program, tree, folder / f"caches-{entries}",
                          arguments.beside and arguments.beside.resolve())
        for cold in (True, False):
            found = contest.rounds(arguments.runs, cold)
            looks += [one["worstLook"] for runs in found.values() for one in runs]
            print_times(f"{entries} entries, cache {'cold' if cold else 'warm'}, median (quartiles) "
                        f"of {arguments.runs}", entries, found)
            sys.stdout.flush()
        if number == 0:
            print_memory(f"Memory with {entries} entries, {SETTLE_MS // 1000} s after full, median "
                         f"of {MEMORY_RUNS}", contest.rounds(MEMORY_RUNS, settle=SETTLE_MS))
        failures += contest.failures
    if looks:
        print(f"\nOne look at the screen took up to {statistics.median(looks):.1f} ms (median of "
              "the runs' longest): no time is known better.")
    return failures


def parser_for(documentation):
    """A parser for the arguments that all measurements share."""
    parser = argparse.ArgumentParser(description=documentation.split("\n", 1)[0])
    parser.add_argument("program", nargs="?", default=SOURCE / "build/release/tavolauncher",
                        type=pathlib.Path)
    parser.add_argument("--watch", type=pathlib.Path, help="the path of tavo_frame_watch")
    return parser


def measured(arguments, programs, desktop_name, measure):
    """Calls `measure` on a private desktop and returns the exit status; `measure` returns what could
    not be measured. Measures nothing when one of `programs` is missing."""
    program = arguments.program.resolve()
    watch = (arguments.watch or program.parent / "bin/tavo_frame_watch").resolve()
    missing = [name for name in programs if not shutil.which(name)]
    missing += [str(path) for path in (program, watch) if not path.exists()]
    if missing:
        print("not measured, missing:", ", ".join(missing), file=sys.stderr)
        return 1
    with tempfile.TemporaryDirectory(prefix="measured-") as name:
        folder = pathlib.Path(name)
        with Desktop(folder, desktop_name) as desktop:
            failures = measure(desktop, watch, program, arguments, folder)
    for failure, times in collections.Counter(failures).items():
        print(f"not measured, {times} times:", failure, file=sys.stderr)
    return 1 if failures else 0


def main():
    parser = parser_for(__doc__)
    parser.add_argument("--runs", type=int, default=10, help="starts of each program that count")
    parser.add_argument("--entries", default=[200, 5000],
                        type=lambda text: [int(part) for part in text.split(",")],
                        help="numbers of desktop entries; memory is taken with the first")
    parser.add_argument("--beside", type=pathlib.Path, help="another build of the program")
    parser.add_argument("--drawings", type=pathlib.Path, help="a folder of SVG files")
    parser.add_argument("--desktop", default="", help="XDG_CURRENT_DESKTOP, otherwise not set")
    arguments = parser.parse_args()
    return measured(arguments, ("Xvfb", "dbus-daemon", "openbox", "xprop"), arguments.desktop,
                    measure)


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/python3 -W ignore
"""Tries real programs on real desktops: whether a press of a program's tile starts it, and the next
one brings it forward instead of starting it again.

    tools/try_programs.py PROGRAM                     all desktops; prints the table
    tools/try_programs.py PROGRAM sway foot.desktop   one desktop, those entries only

PROGRAM is the launcher. It is shown every desktop entry of the machine. Each tile is searched for
by its name and clicked with the pointer; then a window of another program is put in front, and the
tile is clicked again. What is in front is asked of the X server or of sway, never of the launcher.

By hand only. Installs nothing: what is missing is named, and `tools/packages.sh programs test
headless` installs it. Started as root it goes on as nobody, because neither sway nor Chromium run as
root; the launcher has to be where nobody can read it.
"""

import dataclasses
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time

import accessible
from gi.repository import Atspi
from private_desktop import (
    DesktopError, PrivateDesktop, processes_below, wait_until)

X11, WAYLAND = "X11", "Wayland"

ALERT = "Impossibile aprire l’app"

# Longer than an application without a window counts as still starting.
STARTING_SECONDS = 17


@dataclasses.dataclass
class Tried:
    """A program of Debian, by its entry in /usr/share/applications; with a command, by an entry that
    is made for the trial."""
    entry: str
    package: str
    kind: str
    only_on: str = ""
    command: str = ""


PROGRAMS = [
    Tried("debian-xterm.desktop", "xterm", "Athena, a terminal"),
    Tried("idle-python3.11.desktop", "idle-python3.11", "Tk"),
    Tried("viewnior.desktop", "viewnior", "GTK 2"),
    Tried("gpicview.desktop", "gpicview", "GTK 2"),
    Tried("galculator.desktop", "galculator", "GTK 3"),
    Tried("org.xfce.mousepad.desktop", "mousepad", "GTK 3, one process"),
    Tried("lxterminal.desktop", "lxterminal", "GTK 3, a terminal"),
    Tried("xfce4-terminal.desktop", "xfce4-terminal", "GTK 3, a terminal, one process"),
    Tried("org.gnome.Calculator.desktop", "gnome-calculator", "GTK 4, one process"),
    Tried("org.gnome.baobab.desktop", "baobab", "GTK 4, activated over D-Bus"),
    Tried("speedcrunch.desktop", "speedcrunch", "Qt 5"),
    Tried("featherpad.desktop", "featherpad", "Qt 5, one process"),
    Tried("qterminal.desktop", "qterminal", "Qt 5, a terminal"),
    Tried("qt6ct.desktop", "qt6ct", "Qt 6"),
    Tried("chromium.desktop", "chromium", "Chromium"),
    Tried("foot.desktop", "foot", "Wayland only, a terminal", WAYLAND),
    # xcalc has no entry of its own, galculator has.
    Tried("try-env.desktop", "x11-apps", "`env LC_ALL=C xcalc`", command="env LC_ALL=C xcalc"),
    Tried("try-wait.desktop", "x11-apps", "`sh -c \"xcalc; true\"`",
          command='sh -c "xcalc; true"'),
    Tried("try-leave.desktop", "x11-apps", "`sh -c \"xcalc &\"`", command='sh -c "xcalc &"'),
    Tried("try-named.desktop", "galculator", "`sh -c \"galculator; true\"`",
          command='sh -c "galculator; true"'),
]


class X11Desktop(PrivateDesktop):
    """A window manager of X11, asked by its standard hints."""

    kind = X11

    def __init__(self, wm):
        super().__init__(wm=wm, guarded=wm == "xfwm4")

    def title(self):
        if self.wm != "xfwm4":
            return self.wm
        said = self.run("xfconf-query", "-c", "xfwm4", "-p", "/general/prevent_focus_stealing")
        return f"xfwm4, prevent_focus_stealing={said.strip()}"

    def xdo(self, *words):
        return self.run("xdotool", *words)

    def windows(self):
        """Window ids, the lowest first."""
        def ids(name):
            return [int(each, 16) for each in re.findall(r"0x[0-9a-f]+", self._root_property(name))]
        # xfwm4 gives no order while there is one window only.
        return ids("_NET_CLIENT_LIST_STACKING") or ids("_NET_CLIENT_LIST")

    def in_front(self):
        """The window that is active and above all others, if it is one."""
        active = re.search(r"0x[0-9a-f]+", self._root_property("_NET_ACTIVE_WINDOW"))
        windows = self.windows()
        return windows[-1] if windows and active and int(active[0], 16) == windows[-1] else None

    def names(self, window):
        said = subprocess.run(["xprop", "-id", str(window), "WM_CLASS"], env=self.environment,
                              capture_output=True, text=True).stdout
        return "/".join(re.findall(r'"([^"]*)"', said))

    def front(self, window):
        self.run("wmctrl", "-i", "-a", hex(window))

    def minimise(self, window):
        self.run("xdotool", "windowminimize", window)
        wait_until(lambda: "_NET_WM_STATE_HIDDEN" in self.run("xprop", "-id", window, "_NET_WM_STATE"),
                   "the window to be minimised", 5)

    def close(self, window):
        subprocess.run(["wmctrl", "-i", "-c", hex(window)], env=self.environment)

    def origin(self, window):
        """Where the positions that the accessibility tree tells begin."""
        return 0, 0

    def cover(self):
        return ["xev", "-geometry", "1200x700", "-name", "cover"]


class SwayDesktop(PrivateDesktop):
    """sway in the window of an X server, which gives it a pointer; X11 programs over Xwayland."""

    kind = WAYLAND

    def __init__(self):
        super().__init__(wm=None, bus=False)

    def title(self):
        return "sway " + self._message("-t", "get_version")["human_readable"]

    def _bring_up(self):
        super()._bring_up()
        self.outside = dict(self.environment)
        shown = self.folder / "display"
        configuration = self.folder / "sway.conf"
        # As tabs, one window is in front and the others are not seen.
        configuration.write_text("xwayland enable\nworkspace_layout tabbed\ndefault_border none\n"
                                 f"output * mode 1280x800\nexec echo $DISPLAY >{shown}\n")
        self.environment |= {"XDG_CURRENT_DESKTOP": "sway", "XDG_SESSION_TYPE": "wayland"}
        self.start(["sway", "-c", configuration], {"WLR_BACKENDS": "x11", "WLR_RENDERER": "pixman"},
                   log="wm.log")
        runtime = self.folder / "run"
        socket = wait_until(lambda: list(runtime.glob("sway-ipc.*")), "sway")[0]
        display = wait_until(lambda: [path for path in runtime.glob("wayland-*")
                                      if path.suffix != ".lock"], "sway's display")[0]
        wait_until(lambda: shown.exists() and shown.read_text().strip(), "sway's X11 display")
        self.environment |= {"SWAYSOCK": str(socket), "WAYLAND_DISPLAY": display.name,
                             "DISPLAY": shown.read_text().strip()}
        self._start_bus()

    def _message(self, *words):
        return json.loads(self.run("swaymsg", "-r", *words))

    def _tree(self):
        found = []

        def visit(node):
            if node.get("pid") and node["type"] in ("con", "floating_con"):
                found.append(node)
            for inner in node["nodes"] + node["floating_nodes"]:
                visit(inner)
        visit(self._message("-t", "get_tree"))
        return found

    def xdo(self, *words):
        return subprocess.run(["xdotool", *map(str, words)], env=self.outside, check=True,
                              capture_output=True, text=True, timeout=30).stdout

    def windows(self):
        return [node["id"] for node in self._tree()]

    def in_front(self):
        return next((node["id"] for node in self._tree() if node["focused"] and node["visible"]),
                    None)

    def names(self, window):
        for node in self._tree():
            if node["id"] == window:
                x11 = node.get("window_properties", {})
                return node["app_id"] or f"{x11.get('instance')}/{x11.get('class')} (Xwayland)"
        return ""

    def front(self, window):
        self._message(f"[con_id={window}] focus")

    def close(self, window):
        subprocess.run(["swaymsg", f"[con_id={window}] kill"], env=self.environment,
                       capture_output=True)

    def origin(self, window):
        node = next(node for node in self._tree() if node["id"] == window)
        return (node["rect"]["x"] + node["window_rect"]["x"],
                node["rect"]["y"] + node["window_rect"]["y"])

    def cover(self):
        return ["foot", "--app-id=cover", "sleep", "100000"]


DESKTOPS = {"openbox": lambda: X11Desktop("openbox"), "xfwm4": lambda: X11Desktop("xfwm4"),
            "sway": SwayDesktop}


class Processes:
    """The processes of the desktop, with who started them, remembered beyond their end. Children
    of the launcher are looked for every few milliseconds; what lives shorter goes unseen."""

    def __init__(self):
        self.parent, self.program = {}, {}
        self.launcher, self.seen = None, set()

    def look(self):
        for pid in processes_below(os.getpid()):
            try:
                stat = pathlib.Path(f"/proc/{pid}/stat").read_text(errors="replace")
                self.program[pid] = os.readlink(f"/proc/{pid}/exe")
            except OSError:
                self.program.setdefault(pid, "")
                continue
            self.parent.setdefault(pid, int(stat.rpartition(")")[2].split()[1]))

    def look_at_children(self):
        there = {int(entry) for entry in os.listdir("/proc") if entry.isdigit()}
        for pid in there - self.seen:
            try:
                stat = pathlib.Path(f"/proc/{pid}/stat").read_text(errors="replace")
            except OSError:
                continue
            if int(stat.rpartition(")")[2].split()[1]) == self.launcher:
                self.parent.setdefault(pid, self.launcher)
                self.program.setdefault(pid, "ended before it was looked at")
        self.seen = there

    def look_until(self, condition, seconds):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            self.look()
            if condition():
                return True
            soon = time.monotonic() + 0.4
            while time.monotonic() < soon:
                self.look_at_children()
                time.sleep(0.002)
        return False

    def descends(self, pid, ancestors):
        while pid in self.parent:
            pid = self.parent[pid]
            if pid in ancestors:
                return True
        return False


class Trial:
    """The launcher on a desktop."""

    def __init__(self, desktop, launcher):
        self.desktop = desktop
        self.processes = Processes()
        before = set(desktop.windows())
        # Terminals run the user's shell, and nobody has none.
        self.launcher = desktop.start([launcher], {"SHELL": "/bin/sh"})
        self.processes.launcher = self.launcher.pid
        self.window = wait_until(lambda: set(desktop.windows()) - before, "the launcher").pop()
        self._await("list", "App")
        before = set(desktop.windows())
        desktop.start(desktop.cover(), log="cover.log")
        self.cover = wait_until(lambda: set(desktop.windows()) - before, "another window").pop()

    def _await(self, role, name):
        def there():
            root = accessible.application(self.launcher.pid)
            if root is not None:
                root.clear_cache()
            return accessible.find(root, role, name)
        return accessible.await_node(there, f"{role} “{name}”")

    def put_in_front(self, window):
        self.desktop.front(window)
        wait_until(lambda: self.desktop.in_front() == window, "the window to come to the front", 5)

    def press(self, name):
        """As a user does: the launcher in front, the tile found, and clicked."""
        self.put_in_front(self.window)
        search = self._await("text", "Cerca app o categoria…")
        Atspi.EditableText.set_text_contents(search, name)
        tile = self._await("list item", f"Apri {name}")
        last = [None]

        def at_rest():
            box = tile.get_extents(Atspi.CoordType.SCREEN)
            before, last[0] = last[0], (box.x, box.y, box.width, box.height)
            return before == last[0] and box.width > 0
        wait_until(at_rest, "the tile to come to rest", pause=0.1)
        left, top, width, height = last[0]
        x, y = self.desktop.origin(self.window)
        self.desktop.xdo("mousemove", x + left + width // 2, y + top + height // 2)
        self.desktop.xdo("click", "1")

    def try_program(self, tried):
        name = name_of(tried)
        row = {"entry": tried.entry, "started": False, "fronted": False, "second": "–", "names": ""}
        desktop, processes = self.desktop, self.processes
        processes.look()
        pids, windows = set(processes.parent), set(desktop.windows())
        self.press(name)
        pressed = time.monotonic()
        if not processes.look_until(lambda: set(desktop.windows()) - windows, 30):
            row["names"] = "no window within 30 s; " + (self.alert() or "no message")
            return self.end(row, pids, windows)
        row["started"] = True
        processes.look_until(lambda: False, 2.5)
        opened = [each for each in desktop.windows() if each not in windows]
        row["names"] = ", ".join(desktop.names(each) for each in opened)
        if not opened:
            row["names"] = "its window went away at once"
            return self.end(row | {"started": False}, pids, windows)
        row["in front at start"] = desktop.in_front() in opened
        first = set(processes.parent) - pids

        self.put_in_front(self.cover)
        self.press(name)
        row["fronted"] = processes.look_until(lambda: desktop.in_front() in opened, 5)
        processes.look_until(lambda: False, 2.5)
        row["fronted"] = row["fronted"] and desktop.in_front() in opened
        row["restored"] = self.is_restored(name, opened) if desktop.kind == X11 else None
        self.count(row, pids, windows, first, opened)
        if not row["fronted"] and row["second"] == "no":
            # A program whose window nobody recognises counts as starting for a while.
            processes.look_until(lambda: time.monotonic() > pressed + STARTING_SECONDS,
                                 STARTING_SECONDS)
            self.put_in_front(self.cover)
            self.press(name)
            processes.look_until(lambda: False, 5)
            self.count(row, pids, windows, first, opened)
            row["later in front"] = desktop.in_front() in opened
        row["message"] = self.alert()
        return self.end(row, pids, windows)

    def is_restored(self, name, opened):
        """Whether a press brings it back after all its windows were minimised."""
        for window in set(self.desktop.windows()) & set(opened):
            self.desktop.minimise(window)
        self.put_in_front(self.cover)
        self.press(name)
        return self.processes.look_until(lambda: self.desktop.in_front() in opened, 5)

    def count(self, row, pids, windows, first, opened):
        """What is there now of what was not there before the first press."""
        processes = self.processes
        programs = {processes.program.get(pid) for pid in first}
        again = [pid for pid in set(processes.parent) - pids - first
                 if processes.parent[pid] == self.launcher.pid
                 or processes.program.get(pid) in programs
                 and not processes.descends(pid, first)]
        row["windows"] = [len(opened), len(set(self.desktop.windows()) - windows)]
        row["processes"] = [len(first), [processes.program.get(pid) for pid in again]]
        if row["windows"][1] > row["windows"][0] or set(again) & set(processes_below(os.getpid())):
            row["second"] = "yes"
        else:
            row["second"] = "handed over" if again else "no"

    def alert(self):
        """What the launcher's alert says, which is then closed; empty without one."""
        root = accessible.application(self.launcher.pid)
        root.clear_cache()
        texts = [node.get_name() for node in accessible.walk(root)
                 if node.get_role_name() == "label"
                 and node.get_state_set().contains(Atspi.StateType.SHOWING)]
        if ALERT not in texts:
            return ""
        self.put_in_front(self.window)
        self.desktop.xdo("key", "Return")
        return texts[texts.index(ALERT) + 1]

    def end(self, row, pids, windows):
        for window in self.desktop.windows():
            if window not in windows:
                self.desktop.close(window)
        self.processes.look_until(lambda: set(self.desktop.windows()) <= windows, 2)
        for number in (signal.SIGTERM, signal.SIGKILL):
            for pid in set(processes_below(os.getpid())) - pids:
                try:
                    os.kill(pid, number)
                except ProcessLookupError:
                    pass
            self.processes.look_until(lambda: set(self.desktop.windows()) <= windows, 2)
        return row


def name_of(tried):
    if tried.command:
        return f"Prova {tried.entry.split('.')[0]}"
    text = pathlib.Path("/usr/share/applications", tried.entry).read_text()
    return re.search(r"^Name=(.*)$", text, re.MULTILINE)[1]


def missing():
    """The packages that are needed and not there."""
    wanted = {tried.package: pathlib.Path("/usr/share/applications", tried.entry).exists()
              for tried in PROGRAMS if not tried.command}
    wanted["x11-apps"] = shutil.which("xcalc") is not None
    for package, program in (("openbox", "openbox"), ("xfwm4", "xfwm4"), ("sway", "sway"),
                             ("xwayland", "Xwayland"), ("xfconf", "xfconf-query"),
                             ("xdotool", "xdotool"), ("wmctrl", "wmctrl"), ("foot", "foot")):
        wanted[package] = wanted.get(package, True) and shutil.which(program) is not None
    return sorted(package for package, there in wanted.items() if not there)


def try_desktop(launcher, desktop_name, entries):
    """Rows on one desktop; one JSON text a line, as they are made."""
    with DESKTOPS[desktop_name]() as desktop:
        accessible.connect(desktop)
        print(json.dumps({"desktop": desktop_name, "title": desktop.title()}), flush=True)
        applications = desktop.home / ".local/share/applications"
        applications.mkdir(parents=True)
        for tried in PROGRAMS:
            if tried.command:
                (applications / tried.entry).write_text(
                    "[Desktop Entry]\nType=Application\n"
                    f"Name={name_of(tried)}\nExec={tried.command}\n")
        trial = Trial(desktop, launcher)
        for tried in PROGRAMS:
            if (entries and tried.entry not in entries) or tried.only_on not in ("", desktop.kind):
                continue
            try:
                row = trial.try_program(tried)
            except Exception as error:
                row = {"entry": tried.entry, "started": None, "names": f"not tried: {error}"}
            print(json.dumps(row), flush=True)
            if trial.launcher.poll() is not None:
                raise DesktopError(f"the launcher ended: {trial.launcher.returncode}\n"
                                   + desktop.log()[-3000:])


def cell(row):
    if row is None:
        return "–"
    if not row["started"]:
        return row["names"] if row["started"] is None else f"not started ({row['names']})"
    def word(said):
        return {True: "yes", False: "**no**", None: "–"}[said]
    return f"yes / {word(row['fronted'])} / {word(row['restored'])} / " \
           f"{'**yes**' if row['second'] == 'yes' else row['second']}"


def print_table(rows, titles):
    def version(package):
        return subprocess.run(["dpkg-query", "-W", "-f", "${Version}", package],
                              capture_output=True, text=True).stdout
    print("| Program | Kind |" + "".join(f" {titles[each]} |" for each in titles))
    print("| --- | --- |" + " --- |" * len(titles))
    for tried in PROGRAMS:
        of = [rows.get((each, tried.entry)) for each in titles]
        if any(of):
            print(f"| {tried.package} {version(tried.package)} | {tried.kind} | "
                  + " | ".join(cell(row) for row in of) + " |")


def main(launcher, desktops, entries):
    absent = missing()
    if absent:
        sys.exit("missing packages: " + " ".join(absent))
    if os.geteuid() == 0:
        os.execvp("setpriv", ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups",
                              sys.executable, "-W", "ignore", __file__, *sys.argv[1:]])
    if len(desktops) == 1:
        try_desktop(launcher, desktops[0], entries)
        return
    rows, titles = {}, {}
    # A process each: one process joins one accessibility bus.
    runs = {desktop: subprocess.Popen(
        [sys.executable, "-W", "ignore", __file__, launcher, desktop, *entries],
        stdout=subprocess.PIPE, text=True) for desktop in desktops}
    for desktop, run in runs.items():
        for line in run.stdout:
            print(line.strip(), flush=True)
            row = json.loads(line)
            if "title" in row:
                titles[desktop] = row["title"]
            else:
                rows[desktop, row["entry"]] = row
        run.wait()
    print()
    print_table(rows, titles)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    words = sys.argv[2:]
    main(str(pathlib.Path(sys.argv[1]).absolute()),
         [word for word in words if word in DESKTOPS] or list(DESKTOPS),
         [word for word in words if word not in DESKTOPS])

"""What is tried on every desktop, in this order. A trial answers yes by returning what it saw, and no
by raising No with that; both come from the desktop, from the kernel or from a picture of the screen.
"""

import dataclasses
import os
import pathlib
import re
import signal
import statistics
import subprocess
import time

from gi.repository import GLib
from private_desktop import DesktopError, wait_until
from session import APPLICATION_ID, PREFIX

LAUNCHER = PREFIX / "bin/tavolauncher"
# How long a user would wait at the very most before calling it a no.
PATIENCE = 5.0
# Within this time an application has shown its first window, on a busy machine too.
STARTING = 20.0


# Longer than an application whose windows are not recognised counts as still starting, and a click
# on it does nothing.
PENDING = 17.0


SMALLEST = (760, 520)


class No(Exception):
    """The trial's answer, with what was seen instead."""


class Yes(str):
    """The trial's answer with what was seen, and a condition that belongs in the table."""

    note = ""

    @classmethod
    def but(cls, note, evidence):
        answer = cls(evidence)
        answer.note = note
        return answer


@dataclasses.dataclass
class Application:
    """A real program of Debian: its entry, what it is searched by, its kind, and how a part of what its
    windows call themselves ends, without hyphens."""
    entry: str
    name: str
    kind: str
    package: str
    word: str


APPLICATIONS = [
    Application("org.gnome.TextEditor.desktop", "Text Editor", "GTK 4, activated over D-Bus",
                "gnome-text-editor", "texteditor"),
    Application("org.gnome.baobab.desktop", "Disk Usage Analyzer", "GTK 4, activated over D-Bus",
                "baobab", "baobab"),
    Application("org.gnome.Calculator.desktop", "Calculator",
                "GTK 4, hands over to its first process, which opens another window",
                "gnome-calculator", "calculator"),
    Application("org.xfce.mousepad.desktop", "Mousepad", "GTK 3, hands over to its first process",
                "mousepad", "mousepad"),
    Application("galculator.desktop", "Galculator", "GTK 3, one process a start", "galculator",
                "galculator"),
    Application("org.kde.kcalc.desktop", "KCalc", "Qt and KDE's libraries", "kcalc", "kcalc"),
    Application("featherpad.desktop", "FeatherPad", "Qt, hands over to its first process",
                "featherpad", "featherpad"),
    Application("debian-xterm.desktop", "XTerm", "X11 without a toolkit", "xterm", "xterm"),
]


class Trials:
    """The trials on one session. `measures` are figures that never fail."""

    def __init__(self, session, results):
        self.session, self.results = session, results
        self.process = None
        self.cover = self.cover_process = None
        self.measures = {}
        self.frontings = []  # seconds on a processor, of clicks that brought an application forward
        self.log = session.folder / "launcher.log"
        # They would be found by the name of XTerm, and before it.
        for entry in ("debian-uxterm", "lxterminal"):
            session.write(f".local/share/applications/{entry}.desktop",
                          "[Desktop Entry]\nHidden=true\n")

    # What trials are made of

    def launch(self, accessible=False, log="launcher.log"):
        """The program, started afresh, with its window in front."""
        self.end()
        self.process = self.start_program(accessible, log)
        return self.await_front("a start", STARTING)

    def start_program(self, accessible=False, log="launcher.log"):
        extra = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"} if accessible else {}
        return self.session.start([LAUNCHER], extra, log=log)

    def end(self):
        """The program and every application that a trial has opened. The cover stays."""
        if self.process is not None:
            self.process.terminate()
            try:
                self.process.wait(timeout=10)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
            self.process = None
        self.close_applications()

    def close_applications(self):
        """By their processes, which the desktop tells of."""
        def left():
            return [window for window in self.session.normal_windows()
                    if self.cover is None or window.key != self.cover.key]
        for number in (signal.SIGTERM, signal.SIGKILL):
            for pid in {window.pid for window in left()} - {0}:
                try:
                    os.kill(pid, number)
                except (ProcessLookupError, PermissionError):
                    pass
            if self.happens(lambda: not left(), 5):
                return
        raise DesktopError(f"windows that do not close: {[each.app for each in left()]}")

    @staticmethod
    def happens(condition, seconds=PATIENCE, pause=0.05):
        try:
            return wait_until(condition, "it", seconds, pause)
        except DesktopError:
            return None

    def seen(self):
        """The windows, as evidence."""
        said = []
        for window in self.session.normal_windows():
            marks = [word for word, holds in (
                ("active", window.active), ("minimised", window.minimised),
                ("elsewhere", not window.here), ("wants attention", window.attention)) if holds]
            said.append(window.app + (f" ({', '.join(marks)})" if marks else ""))
        return "; ".join(said) or "no window"

    def in_front(self, match):
        """The window that `match` holds for, when it is active and no normal one lies above it."""
        windows = [window for window in self.session.normal_windows()
                   if window.here and not window.minimised]
        found = next((window for window in windows if window.active and match(window)), None)
        if found is None or not self.session.tells_order:
            return found
        return found if match(windows[-1]) else None

    def await_front(self, after, seconds=PATIENCE):
        window = self.happens(lambda: self.in_front(lambda each: each.is_ours), seconds)
        if not window:
            raise No(f"after {after}: {self.seen()}")
        return window

    def evidence(self):
        return f"in front: {self.seen()}"

    def put_cover_in_front(self):
        """A window of another program before ours."""
        if self.cover is None:
            before = {window.key for window in self.session.windows()}
            self.cover_process = self.session.start_cover()
            self.cover = wait_until(
                lambda: next((window for window in self.session.normal_windows()
                              if window.key not in before), None), "another program's window", 20)
        self.session.raise_(self.cover)
        wait_until(lambda: self.in_front(lambda each: each.key == self.cover.key),
                   "another program's window in front", 10)
        time.sleep(0.5)  # as long as a user takes at least for what comes next

    def end_cover(self):
        if self.cover is not None:
            self.cover_process.terminate()
            self.cover_process.wait()
            self.cover = None

    def hide(self):
        """With the key for it, which the window in front gets."""
        self.session.key("Escape")
        if not self.happens(lambda: not self.session.ours()):
            raise No(f"Escape does not hide it: {self.seen()}")

    def second_start(self):
        """Without a token or a startup id, as a keyboard shortcut's command is run."""
        process = self.session.start([LAUNCHER], log="launcher.log")
        if not self.happens(lambda: process.poll() is not None, 10):
            process.kill()
            process.wait()
            ended = self.process.poll() is not None
            raise No("the second start does not end: " + (
                f"the first has, with {self.process.returncode}" if ended else self.seen()))
        if process.returncode:
            raise No(f"the second start ended with {process.returncode}")

    def activate_over_bus(self):
        """Without a token."""
        self.session.call(APPLICATION_ID, "/" + APPLICATION_ID.replace(".", "/"),
                          "org.freedesktop.Application.Activate", GLib.Variant("(a{sv})", ({},)))

    def hidden_with_item(self):
        """The program runs and its window is hidden. Where its item is, once it stays there."""
        self.end()
        if not self.happens(lambda: self.session.item() is None):
            raise DesktopError("there is an item without the program")
        self.launch()
        self.hide()
        seen = []

        def still():
            seen.append(self.session.item())
            return seen[-1] if seen[-1] and seen[-3:-1] == [seen[-1]] * 2 else None
        place = self.happens(still, 15, 0.3)
        if not place:
            raise No("no item in the panel")
        return place

    def search(self, text):
        self.session.key("ctrl+f")
        self.session.key("ctrl+a")
        self.session.type(text)
        time.sleep(0.3)

    def picture(self, name):
        return self.session.screenshot(self.results / f"{name}.png")

    def colours(self, box, margin=0):
        """The pixels of a part of the screen, as rows of bytes, three for each."""
        path = self.session.screenshot(self.session.folder / "look.png")
        x, y, width, height = box
        said = subprocess.run(
            ["convert", str(path), "-crop",
             f"{width + 2 * margin}x{height + 2 * margin}+{max(0, x - margin)}+{max(0, y - margin)}",
             "+repage", "-depth", "8", "rgb:-"], capture_output=True, check=True).stdout
        return said

    @staticmethod
    def differences(first, second):
        """How many values differ to the eye; those of a translucent background differ a little."""
        return sum(abs(one - other) > 40 for one, other in zip(first, second))

    @staticmethod
    def brightness(pixels):
        return statistics.median(pixels)

    # The trials

    def starts_and_shows(self):
        window = self.launch()

        def colours():
            pixels = self.colours(window.box)
            return len({pixels[at:at + 3] for at in range(0, len(pixels), 3 * 7)})
        if not self.happens(lambda: colours() > 20):
            raise No(f"its window has {colours()} colours")
        self.picture("start")
        return f"{window.app}, {window.box[2]}×{window.box[3]}, {colours()} colours"

    def has_the_focus(self):
        self.put_cover_in_front()
        self.launch()
        # The proof of the focus: the key that hides it reaches it.
        self.hide()
        return "in front when another program's window was, and hears a key"

    def left_click_in_tray(self):
        times = self.session.clicks_to_show
        self.session.click(*self.hidden_with_item(), times=times)
        self.await_front("a click on the item")
        return self.evidence() if times == 1 else Yes.but(
            "a double click; one click opens the menu, as the extension that shows the item has it",
            self.evidence())

    def first_entry_of_tray_menu(self):
        self.session.click(*self.hidden_with_item(), button=3)
        time.sleep(0.7)
        self.picture("tray-menu")
        self.session.choose_entry(0)
        self.await_front("the first entry of the item's menu")
        return self.evidence()

    def second_entry_of_tray_menu(self):
        self.session.click(*self.hidden_with_item(), button=3)
        time.sleep(0.7)
        self.session.choose_entry(1)
        if not self.happens(lambda: self.process.poll() is not None):
            raise No("the program runs on")
        if self.process.returncode:
            raise No(f"the program ended with {self.process.returncode}")
        return "the program ended"

    def drag(self, x, y, across, down):
        """With the left button, in ten steps."""
        self.session.move_pointer(x, y)
        time.sleep(0.3)
        self.session.press(True)
        for step in range(1, 11):
            self.session.move_pointer(x + across * step // 10, y + down * step // 10)
            time.sleep(0.05)
        time.sleep(0.5)
        self.session.press(False)
        time.sleep(0.5)

    def smallest_size(self):
        """The right edge is dragged far to the left, and the lower one far up."""
        window = self.launch()
        self.session.let_float(window)
        x, y, width, height = self.await_front("a start").box
        self.drag(x + width - 3, y + height // 2, -600, 0)
        self.drag(x + 100, y + height - 3, 0, -450)
        if not self.happens(lambda: tuple(self.session.ours()[0].box[2:]) == SMALLEST):
            raise No(f"{width}×{height} became {self.session.ours()[0].box[2:]}")
        return f"{width}×{height} became 760×520"

    def desktop_logs_nothing(self):
        """In all trials before."""
        complaint = re.compile(r"tavolauncher|No such property", re.IGNORECASE)
        said = [line for path in self.session.folder.glob("*.log")
                if path.stem in ("shell", "kwin", "session", "panel", "wm", "sway")
                for line in path.read_text(errors="replace").splitlines() if complaint.search(line)]
        if said:
            raise No(f"{len(said)} lines, the first: {said[0][:300]}")
        return "nothing of it"

    def comes_back_when_hidden(self):
        self.launch()
        self.put_cover_in_front()
        self.session.raise_(self.session.ours()[0])
        self.await_front("the desktop's taskbar")
        self.hide()
        self.second_start()
        self.await_front("a second start")
        return self.evidence()

    def behind(self, call, before=None, accessible=False):
        """It is open behind another program's window, and is called."""
        self.launch(accessible)
        if before:
            before()
        self.put_cover_in_front()
        call()
        self.await_front("being called")
        return self.evidence()

    def second_start_behind(self):
        return self.behind(self.second_start)

    def activation_behind(self):
        return self.behind(self.activate_over_bus)

    def with_menu_open(self):
        def open_menu():
            self.session.key("Down")
            time.sleep(0.3)
            self.session.key("shift+F10")
            time.sleep(0.7)
            self.picture("menu")
        return self.behind(self.second_start, open_menu)

    def with_sheet_open(self):
        def open_sheet():
            done = subprocess.run(
                ["/usr/bin/python3", "-W", "ignore",
                 pathlib.Path(__file__).with_name("press_button.py"), str(self.process.pid),
                 "Modifica categorie"], env=self.session.environment, capture_output=True,
                text=True, timeout=60)
            if done.returncode:
                raise DesktopError(f"the sheet does not open: {done.stderr}")
            time.sleep(0.7)
            self.picture("sheet")
        return self.behind(self.second_start, open_sheet, accessible=True)

    def from_another_workspace(self):
        self.session.workspace(0)
        self.launch()
        try:
            self.session.workspace(1)
            time.sleep(0.5)
            self.second_start()
            self.await_front("a second start on another workspace")
            return self.evidence()
        finally:
            self.end()
            self.session.workspace(0)

    def open_(self, application):
        """As the user does: found by its name, opened by Return."""
        self.search(application.name)
        self.session.key("Return")

    def start_application(self, application):
        """Started from the launcher. Its windows, once it has shown them."""
        # What it says on its standard error, it says where the launcher does.
        self.launch(log="applications.log")
        before = {window.key for window in self.session.windows()}
        self.open_(application)

        def opened():
            return [window for window in self.session.normal_windows()
                    if window.key not in before and not window.is_ours]
        windows = self.happens(opened, STARTING)
        if not windows:
            raise No(f"no window of it: {self.seen()}")
        time.sleep(1.5)  # those that follow the first, and what the desktop makes of them
        windows = opened()
        if not any(part.endswith(application.word) for window in windows
                   for part in re.split(r"[/.]", window.app.lower().replace("-", ""))):
            raise No(f"another program's window came: {[each.app for each in windows]}")
        return windows

    def is_new_application_in_front(self, application):
        windows = self.start_application(application)
        keys = {window.key for window in windows}
        if not self.happens(lambda: self.in_front(lambda each: each.key in keys)):
            raise No(self.seen())
        return self.evidence()

    def front(self, application, before):
        """It runs, `before` puts it away, and it is opened again."""
        windows = self.start_application(application)
        started = time.monotonic()
        keys = {window.key for window in windows}
        before(windows)
        if self.comes_forward(application, keys):
            return self.evidence()
        time.sleep(max(0.0, started + PENDING - time.monotonic()))
        before([window for window in self.session.normal_windows() if window.key in keys])
        if self.comes_forward(application, keys):
            return Yes.but("only when 15 s had passed since its start", self.evidence())
        raise No(self.seen())

    def comes_forward(self, application, keys):
        """Whether one of those windows does when it is opened from the launcher."""
        self.session.raise_(self.session.ours()[0])
        self.await_front("the desktop's taskbar")
        self.search(application.name)
        before = self.processor_seconds()
        self.session.key("Return")
        came = self.happens(lambda: self.in_front(lambda each: each.key in keys))
        if came:
            self.frontings.append(self.processor_seconds() - before)
        time.sleep(1.5)  # a second copy would have come
        new = [window.app for window in self.session.normal_windows() if window.key not in keys
               and not window.is_ours and not self.is_cover(window)]
        if new:
            raise No(f"a second copy: {self.seen()}")
        return came and self.in_front(lambda each: each.key in keys)

    def processor_seconds(self):
        """What the program's threads have used of the processors since they began."""
        # A process's clock by its PID, as clock_getcpuclockid() of the GNU C library makes it.
        return time.clock_gettime((~self.process.pid << 3) | 2)

    def is_cover(self, window):
        return self.cover is not None and window.key == self.cover.key

    def fronts(self, application):
        return self.front(application, lambda windows: self.put_cover_in_front())

    def restores(self, application):
        def minimise(windows):
            for window in windows:
                self.session.minimise(window)
            keys = {window.key for window in windows}
            wait_until(lambda: all(window.minimised for window in self.session.windows()
                                   if window.key in keys), "minimised windows", 10)
        return self.front(application, minimise)

    def not_in_taskbar(self):
        window = self.launch()
        if not window.skips_taskbar:
            raise No("the desktop lists it like any other")
        self.hide()
        self.second_start()
        window = self.await_front("a second start")
        if not window.skips_taskbar:
            raise No("no longer when it was hidden and came back")
        return "also when it was hidden and came back"

    def dark_and_light(self):
        self.session.set_dark(False)
        window = self.launch()
        light = self.happens(lambda: self.brightness(self.colours(window.box)) > 170)
        self.session.set_dark(True)
        dark = light and self.happens(lambda: self.brightness(self.colours(window.box)) < 90)
        self.session.set_dark(False)
        back = dark and self.happens(lambda: self.brightness(self.colours(window.box)) > 170)
        self.measures["dark"] = bool(dark)
        if not (light and dark and back):
            raise No(f"light: {bool(light)}, then dark: {bool(dark)}, light again: {bool(back)}; the "
                     f"median of its pixels is {self.brightness(self.colours(window.box)):.0f}")
        return "each within five seconds, by the pixels of its window"

    def icon_theme(self):
        first, second = self.session.icon_themes

        def tile(fresh):
            if fresh:
                self.launch()
                self.search("Mousepad")
                time.sleep(1.5)
            x, y, width, height = self.session.ours()[0].box
            # Right of the list of views and below the search, so without the text cursor.
            return self.colours((x + 205, y + 60, width - 230, height // 2))

        def looks_like(wanted):
            return self.happens(lambda: self.differences(wanted, tile(False)) < 50)
        self.session.set_icon_theme(second)
        other = tile(fresh=True)
        self.session.set_icon_theme(first)
        one = tile(fresh=True)
        if self.differences(one, other) < 300:
            raise No(f"{first} and {second} look the same, also after a start")
        self.session.set_icon_theme(second)
        changed = looks_like(other)
        self.picture("icon-theme")
        self.session.set_icon_theme(first)
        back = looks_like(one)
        if not (changed and back):
            raise No(f"{second}: {'yes' if changed else 'no'}, {first} again: "
                     f"{'yes' if back else 'no'}; started afresh it has each")
        return f"{first}, {second} and back, by the pixels of a tile"

    def switches(self):
        """How often the kernel has given the program the processor, for each thread."""
        counts = {}
        for path in pathlib.Path(f"/proc/{self.process.pid}/task").glob("*/status"):
            try:
                said = path.read_text()
            except OSError:  # a thread that has ended
                continue
            counts[path.parent.name, said.split()[1]] = sum(
                map(int, re.findall(r"ctxt_switches:\s+(\d+)", said)))
        return counts

    def wake_ups(self, seconds):
        """For each thread that has any, by its name."""
        before = self.switches()
        time.sleep(seconds)
        return {name: count - before.get((id_, name), 0)
                for (id_, name), count in self.switches().items()
                if count != before.get((id_, name), 0)}

    def sleeps(self):
        """No thread wakes up in fifteen seconds, from a moment on that comes within forty-five: a
        text cursor blinks for ten, and threads that are no longer needed end."""
        woken = None
        for _ in range(4):
            woken = self.wake_ups(15)
            if not woken:
                return "no wake-up in 15 s"
        raise No("wake-ups in 15 s: " + ", ".join(
            f"{name} {count}" for name, count in woken.items()))

    def sleeps_when_shown(self):
        window = self.launch()
        # Away from the window: what the pointer is on has its own life.
        self.session.move_pointer(window.box[0] + window.box[2] + 100, window.box[1] + 200)
        return self.sleeps()

    def sleeps_when_hidden(self):
        self.launch()
        self.hide()
        return self.sleeps()

    def no_gtk(self):
        self.launch()
        time.sleep(1)
        maps = pathlib.Path(f"/proc/{self.process.pid}/maps").read_text()
        found = sorted(set(re.findall(r"/(libg[td]k-[34]\S*|libqgtk\S*)", maps)))
        if "libQt6Widgets" not in maps:
            raise DesktopError("this is not the program")
        if found:
            raise No(", ".join(found))
        return "nothing in /proc/PID/maps"

    def says_nothing(self):
        """In the trials before that start no application."""
        self.end()
        said = sorted(set(self.log.read_text(errors="replace").splitlines())) if (
            self.log.exists()) else []
        if said:
            raise No(" | ".join(said)[:1500])
        return "nothing in all trials that start no application"

    def pictures(self):
        """The window on white and on black, light and dark."""
        self.end_cover()
        self.session.let_float(self.launch())
        time.sleep(0.5)
        window = self.await_front("a start")
        self.session.move_pointer(2, self.session.size[1] // 2)
        for look in ("light", "dark"):
            self.session.set_dark(look == "dark")
            for name, colour in (("white", "#ffffff"), ("black", "#000000")):
                self.session.set_wallpaper(colour)
                wait_until(lambda: self.is_beside(window, colour), f"a {name} wallpaper", 10, 0.2)
                time.sleep(1)  # shadows fade in
                whole = self.session.screenshot(self.session.folder / "whole.png")
                x, y, width, height = window.box
                margin = 48
                subprocess.run(
                    ["convert", str(whole), "-crop", f"{width + 2 * margin}x{height + 2 * margin}"
                     f"+{max(0, x - margin)}+{max(0, y - margin)}", "+repage",
                     str(self.results / f"{look}-on-{name}.png")], check=True)
        self.session.set_dark(False)
        return "light and dark, each on white and on black"

    def is_beside(self, window, colour):
        """Whether the screen is of that colour left of the window, far from its shadow."""
        pixels = self.colours((window.box[0] // 4, window.box[1] + 300, 8, 8))
        return pixels == bytes.fromhex(colour[1:]) * 64

    def measure(self):
        """Seven starts and seven second starts, each until the window is painted; and the memory of
        the last. What a click on a running application takes of the processor was noted before."""
        self.end_cover()
        window = self.launch()
        x, y = window.box[0] + window.box[2] // 2, window.box[1] + window.box[3] // 2
        self.session.move_pointer(2, self.session.size[1] // 2)
        starts, seconds = [], []
        with self.session.painting(x, y) as painting:
            for _ in range(7):
                self.end()
                painting.await_rest()
                starts.append(self.time_of(painting, lambda: setattr(
                    self, "process", self.start_program())))
                self.await_front("a start")
                self.hide()
                painting.await_rest()
                seconds.append(self.time_of(painting, self.second_start))
                self.await_front("a second start")
        time.sleep(2)
        rollup = pathlib.Path(f"/proc/{self.process.pid}/smaps_rollup").read_text()
        self.measures |= {
            "start_ms": round(1000 * statistics.median(starts)),
            "second_start_ms": round(1000 * statistics.median(seconds)),
            "pss_mb": round(int(re.search(r"^Pss:\s+(\d+)", rollup, re.MULTILINE)[1]) / 1024, 1)}
        if self.frontings:
            self.measures["fronting_ms"] = round(1000 * statistics.median(self.frontings), 1)
        return ", ".join(f"{name} {value}" for name, value in self.measures.items())

    @staticmethod
    def time_of(painting, start):
        begun = time.monotonic()
        painting.begin()
        start()
        return painting.when() - begun


def trials(session):
    """Name and what to call on Trials, of all that the session is tried with."""
    listed = [
        ("starts and shows", Trials.starts_and_shows),
        ("has the focus", Trials.has_the_focus),
        ("tray: left click", Trials.left_click_in_tray),
        ("tray: right click, first entry", Trials.first_entry_of_tray_menu),
        ("tray: right click, second entry", Trials.second_entry_of_tray_menu),
        ("hidden, second start", Trials.comes_back_when_hidden),
        ("behind another window, second start", Trials.second_start_behind),
        ("behind another window, over the bus", Trials.activation_behind),
        ("behind another window with a menu open", Trials.with_menu_open),
        ("behind another window with a sheet open", Trials.with_sheet_open),
        ("on another workspace", Trials.from_another_workspace),
    ]
    for application in APPLICATIONS:
        for what, trial in (("new", Trials.is_new_application_in_front), ("fronts", Trials.fronts),
                            ("restores", Trials.restores)):
            listed.append((f"{what}: {application.name}",
                           lambda trials, trial=trial, given=application: trial(trials, given)))
    return listed + [
        ("no smaller than 760 × 520", Trials.smallest_size),
        ("not in the taskbar", Trials.not_in_taskbar),
        ("dark and light, live", Trials.dark_and_light),
        ("icon theme, live", Trials.icon_theme),
        ("no wake-ups, shown", Trials.sleeps_when_shown),
        ("no wake-ups, hidden", Trials.sleeps_when_hidden),
        ("no GTK in the process", Trials.no_gtk),
        ("pictures", Trials.pictures),
        ("measures", Trials.measure),
        ("says nothing on standard error", Trials.says_nothing),
        ("the desktop logs nothing of it", Trials.desktop_logs_nothing),
    ]

"""The whole program on a private desktop: what the tests in this folder are written with.

A DesktopTest has `self.desktop`, on which nothing is installed until the test writes it there, and
`self.launch()`, which starts the program and waits for its window. Input is that of a user: keys
and clicks through the X server, presses through the accessibility bus. Nothing sleeps: whatever
takes time is awaited.

The tests of a class share a desktop, one after the other: what a test left on it is cleared away, and
one that cannot be made as it was, or whose test failed, is not used again (reuse.py).
"""

import contextlib
import functools
import json
import os
import pathlib
import re
import shutil
import signal
import sqlite3
import struct
import subprocess
import sys
import time
import unittest
import zlib

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))

import accessible  # noqa: E402
from accessible import await_node, children, find, role_of, walk  # noqa: E402
from private_desktop import (  # noqa: E402,F401
    DesktopError, PrivateDesktop, _end_with_parent, processes_below, wait_until)
from gi.repository import Atspi  # noqa: E402

import reuse  # noqa: E402

PROGRAM = os.environ.get("TAVO_PROGRAM", "")
# Where pictures and logs of failed tests go.
ARTIFACTS = pathlib.Path(os.environ.get("TAVO_ARTIFACTS", "artifacts"))

# How often the tests bring the window back that do it time after time.
ROUNDS = int(os.environ.get("TAVO_ROUNDS", "5"))

# Fontconfig's settings: of families that are not there, and of none, DejaVu Sans is the one.
_FONTS = """<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <dir>/usr/share/fonts</dir>
  <dir>/usr/local/share/fonts</dir>
  <cachedir>/var/cache/fontconfig</cachedir>
  <cachedir>{cache}</cachedir>
  <match target="pattern">
    <test name="family" qual="any"><string>monospace</string></test>
    <edit name="family" mode="append" binding="strong"><string>DejaVu Sans Mono</string></edit>
  </match>
  <match target="pattern">
    <edit name="family" mode="append_last" binding="strong"><string>DejaVu Sans</string></edit>
  </match>
</fontconfig>
"""

SANITIZER_REPORT = re.compile(r"ERROR: \w+Sanitizer|WARNING: ThreadSanitizer|runtime error:")


class Desktop(PrivateDesktop):
    """A private desktop with a data folder of its own, the only one that the program looks in."""

    def __enter__(self):
        super().__enter__()
        self.data = self.folder / "data"
        self.data.mkdir()
        self.programs = self.folder / "programs"
        self.programs.mkdir()
        self.hermetic = {"XDG_DATA_DIRS": str(self.data)}
        accessible.connect(self)
        # Asked once, the service behind it is there: it is the desktop's, not that of a test.
        Atspi.get_desktop(0).get_child_count()
        self.origin = reuse.Origin(self)
        return self

    def _start_server(self):
        self._choose_font()
        super()._start_server()

    def _choose_font(self):
        """The same interface font on every machine, and every other font for what it lacks."""
        folder = self.folder / "fonts"
        self.font_cache = folder / "cache"
        self.font_cache.mkdir(parents=True)
        settings = folder / "fonts.conf"
        settings.write_text(_FONTS.format(cache=self.font_cache))
        self.environment["FONTCONFIG_FILE"] = str(settings)

    def _manages_windows(self):
        """Whether it does as it is told, and manages a window that is shown now. Openbox says that
        it is there, and takes over the windows, long before it reads its events; what programs ask
        for in between, the showing of a window for one, it may never hear of."""
        if not self._obeys():
            time.sleep(0.02)
            return False
        return super()._manages_windows()

    def _obeys(self):
        if "#" not in self._root_property("_NET_SUPPORTING_WM_CHECK"):
            return False
        done = subprocess.run(["xdotool", "set_num_desktops", "3"], env=self.environment,
                              capture_output=True)
        return done.returncode == 0 and "= 3" in self._root_property("_NET_NUMBER_OF_DESKTOPS")

    def copy_of_program(self):
        """A folder with the program and what belongs to it, to be changed as a test likes."""
        folder = self.folder / "copy"
        folder.mkdir()
        built = pathlib.Path(PROGRAM).parent
        for name in ("tavolauncher", "libtavolauncher.so"):
            shutil.copy(built / name, folder)
        for name in ("resources", "libexec"):
            shutil.copytree(built / name, folder / name)
        return folder

    def entry(self, name, id=None, folder=None, **keys):
        """Writes a desktop entry and answers its file. Keys with None are left out."""
        folder = folder or self.data / "applications"
        folder.mkdir(parents=True, exist_ok=True)
        path = folder / f"{id or re.sub(r'[^A-Za-z0-9]+', '-', name)}.desktop"
        keys = {"Type": "Application", "Name": name, "Exec": "/bin/true", **keys}
        lines = [f"{key}={value}" for key, value in keys.items() if value is not None]
        path.write_text("[Desktop Entry]\n" + "\n".join(lines) + "\n", errors="surrogateescape")
        return path

    def script(self, name, body):
        """Writes a program that runs `body` in the shell."""
        path = self.programs / name
        path.write_text(f"#!/bin/sh\n{body}\n")
        path.chmod(0o755)
        return path

    def marking_entry(self, name):
        """An entry whose program leaves a file when it runs; answers both paths."""
        mark = self.folder / f"{name}.ran"
        program = self.script(name.replace(" ", "-"), f"echo x >>'{mark}'")
        return self.entry(name, Exec=f'"{program}"'), mark

    def bundle(self, name, body):
        """A bundle in the user's application folder, with a program that runs `body`."""
        contents = self.home / "Applications" / f"{name}.app" / "Contents"
        (contents / "MacOS").mkdir(parents=True)
        program = contents / "MacOS" / name
        program.write_text(f"#!/bin/sh\n{body}\n")
        program.chmod(0o755)
        (contents / "Info.plist").write_text(
            '<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0"><dict>\n'
            f"<key>CFBundleExecutable</key><string>{name}</string>\n</dict></plist>\n")
        return contents.parent

    def icon(self, name, colour=(200, 60, 60), side=48, theme="hicolor"):
        """A square of one colour as an icon of a theme."""
        folder = self.data / f"icons/{theme}/{side}x{side}/apps"
        folder.mkdir(parents=True, exist_ok=True)
        path = folder / f"{name}.png"
        path.write_bytes(png(side, colour))
        index = self.data / f"icons/{theme}/index.theme"
        index.write_text(f"[Icon Theme]\nName={theme}\nDirectories={side}x{side}/apps\n\n"
                         f"[{side}x{side}/apps]\nSize={side}\nType=Fixed\nContext=Applications\n")
        return path

    @property
    def store(self):
        return Store(self.home / ".local/share/tavolauncher/defaults.sqlite")

    def xdo(self, *words):
        return self.run("xdotool", *words).strip()

    def type(self, text):
        self.xdo("type", "--delay", "5", "--", text)

    def key(self, *keys):
        self.xdo("key", "--delay", "5", *keys)

    def click(self, node, button=1):
        self.point_at(node)
        self.xdo("click", button)

    def point_at(self, node):
        """Where the node is, and only once the server has the pointer there."""
        box = node.get_extents(Atspi.CoordType.SCREEN)
        self.move_pointer(box.x + box.width // 2, box.y + box.height // 2)

    def move_pointer(self, x, y):
        # Waiting for a pointer to move that is there already would take for ever.
        if self.pointer() != (x, y):
            self.xdo("mousemove", "--sync", x, y)

    def pointer(self):
        said = self.xdo("getmouselocation", "--shell")
        return tuple(int(re.search(rf"{axis}=(\d+)", said)[1]) for axis in "XY")


    def pixels(self):
        """What the screen shows now."""
        picture = subprocess.run(["import", "-window", "root", "-depth", "8", "rgb:-"],
                                 env=self.environment, check=True, capture_output=True, timeout=30)
        return Pixels(self.size[0], picture.stdout)


def wait_until_still(question, what, looks=8, pause=0.05):
    """The answer of `question`, once it is true and has been the same at the last `looks` looks."""
    seen = []

    def still():
        seen.append(question())
        return seen[-1] if len(seen) > looks and len(set(seen[-looks:])) == 1 else None
    return wait_until(still, what, pause=pause)


class Pixels:
    """A picture of the screen: rows of red, green and blue, one byte each."""

    def __init__(self, width, content):
        self.width, self.content = width, content

    def at(self, x, y):
        start = 3 * (y * self.width + x)
        return tuple(self.content[start:start + 3])

    def part(self, box):
        """The rows of a box, anything with x, y, width and height."""
        return [self.content[3 * (y * self.width + box.x):][:3 * box.width]
                for y in range(box.y, box.y + box.height)]

    def differ_in(self, other, box):
        return self.part(box) != other.part(box)


def png(side, colour):
    """A square of one colour as a PNG file."""
    row = b"\0" + bytes(colour) * side
    return png_of((side, side, 8, 2), zlib.compress(row * side))


def png_of(head, pixels, *more):
    """A PNG file: width, height, bits and kind of colour; packed pixels; further chunks, each a
    name and its content."""
    def chunk(kind, content):
        return (struct.pack(">I", len(content)) + kind + content
                + struct.pack(">I", zlib.crc32(kind + content)))
    return b"".join((b"\x89PNG\r\n\x1a\n", chunk(b"IHDR", struct.pack(">IIBBBBB", *head, 0, 0, 0)),
                     *(chunk(*each) for each in more), chunk(b"IDAT", pixels), chunk(b"IEND", b"")))


class Store:
    """The user's defaults on disk: rows of key, type and value."""

    CATEGORIES = "mirvo.customCategories.v1"
    ASSIGNMENTS = "mirvo.categoryAssignments.v1"
    HIDDEN = "mirvo.hiddenApps.v1"
    RECENTS = "mirvo.recentApps.v1"
    RULES = "mirvo.categoryRules.v1"
    FAVORITES = "mirvo.favoriteApps"

    def __init__(self, path):
        self.path = path

    def write(self, key, value):
        """Categories and assignments are data that holds JSON, all else JSON of its own type."""
        text = json.dumps(value, ensure_ascii=False)
        if key in (self.CATEGORIES, self.ASSIGNMENTS):
            row = ("data", text.encode())
        else:
            row = ("dictionary" if isinstance(value, dict) else "array", text)
        self.path.parent.mkdir(mode=0o700, parents=True, exist_ok=True)
        database = sqlite3.connect(self.path)
        with database:
            database.execute("CREATE TABLE IF NOT EXISTS defaults (key TEXT PRIMARY KEY NOT NULL, "
                             "type TEXT NOT NULL, value NOT NULL) WITHOUT ROWID")
            database.execute("REPLACE INTO defaults VALUES (?, ?, ?)", (key, *row))
        database.close()

    def read(self, key):
        """The value, or None when there is none, no store, or a file that is no store."""
        if not self.path.exists():
            return None
        database = sqlite3.connect(self.path, timeout=5)
        try:
            row = database.execute("SELECT value FROM defaults WHERE key = ?", (key,)).fetchone()
        except sqlite3.DatabaseError:
            return None
        finally:
            database.close()
        return None if row is None else json.loads(row[0])


class Launcher:
    """The running program, as a screen reader and the window manager see it."""

    def __init__(self, desktop, process):
        self.desktop, self.process = desktop, process
        self._root = None

    def root(self):
        """The program itself, or None while it is not there. It alone is remembered, and nothing
        of what it said before."""
        if self.process.poll() is not None:
            return None
        if self._root is None:
            self._root = accessible.application(self.process.pid)
        if self._root is not None:
            self._root.clear_cache()
        return self._root

    def node(self, role, name=None):
        """The node now, or None; looked up anew, never remembered."""
        return find(self.root(), role, name)

    def await_node(self, role, name=None):
        def there():
            if self.process.poll() is not None:
                raise AssertionError(f"the program ended with status {self.process.returncode}")
            return self.node(role, name)
        return await_node(there, f"{role} “{name}”")

    def menu(self):
        """The open menu, the outermost of them, or None."""
        return self.node("popup menu")

    def await_menu(self, name):
        return self.await_node("popup menu", name)

    def await_no_menu(self):
        self.await_equal(self.menu, None)

    def menu_texts(self):
        """The open menu's entries, "—" for a divider, "✓" behind what is ticked, a submenu as a
        list of its title and its entries."""
        return texts_of_menu(self.menu())

    def focus_path(self):
        """Roles and names of what has the keyboard, the outermost first: a list and its item for
        one; those of the open menu while there is one."""
        path = []
        for node in walk(self.root()):
            if node.get_role_name() == "popup menu":
                path = [each for each in walk(node) if has_state(each, Atspi.StateType.FOCUSED)]
                break
            if has_state(node, Atspi.StateType.FOCUSED):
                path.append(node)
        return [(role_of(node), node.get_name()) for node in path]

    def focused(self):
        """Role and name of what has the keyboard, the innermost, or None."""
        path = self.focus_path()
        return path[-1] if path else None

    def await_focus(self, role, name):
        self.await_equal(self.focused, (role, name))

    def tiles(self):
        """The names of the applications that the grid shows, in its order."""
        return [item.get_name().removeprefix("Apri ") for item in children(self.node("list", "App"))]

    def footer(self):
        return next((node.get_name() for node in walk(self.root()) if node.get_role_name() == "label"
                     and re.fullmatch(r"\d+ app", node.get_name())), None)

    def rows(self):
        """The names in the sidebar."""
        return [row.get_name() for row in children(self.node("list", "Categorie"))]

    def selected_row(self):
        rows = children(self.node("list", "Categorie"))
        chosen = [row.get_name() for row in rows if has_state(row, Atspi.StateType.SELECTED)]
        return chosen[0] if len(chosen) == 1 else chosen

    def search_text(self):
        return text_of(self.node("text", "Cerca app o categoria…"))

    def await_tiles(self, names):
        """Waits for exactly these applications, in this order, and for their count."""
        self.await_equal(self.tiles, list(names))
        self.await_equal(self.footer, f"{len(names)} app")

    def await_equal(self, question, wanted):
        last = []

        def same():
            last[:] = [question()]
            return last[0] == wanted

        try:
            await_node(same, repr(wanted))
        except Exception as error:
            raise AssertionError(f"{question.__name__}: wanted {wanted!r}, got {last}") from error

    def await_change(self, question, before):
        """Waits for another answer than `before` and answers it."""
        answers = []

        def changed():
            answers[:] = [question()]
            return answers[0] != before

        await_node(changed, f"{question.__name__} to be other than {before!r}")
        return answers[0]

    def press(self, role, name):
        press(self.await_node(role, name))

    def window_id(self):
        """Of the window that the window manager manages, once it is there."""
        return wait_until(lambda: self._visible_windows()[:1], "the window")[0]

    def _visible_windows(self):
        try:
            found = self.desktop.xdo("search", "--all", "--onlyvisible", "--pid", self.process.pid,
                                     "--name", "^Tavo Launcher$")
        except Exception:  # xdotool fails when it finds none
            return []
        return found.split()

    def is_shown(self):
        return bool(self._visible_windows())

    def is_active(self):
        """By the window manager's word and the server's, not the program's own: the manager names
        the window before the server sends it the keys."""
        windows = self._visible_windows()
        said = self.desktop.run("xprop", "-root", "_NET_ACTIVE_WINDOW")
        active = re.search(r"0x[0-9a-f]+", said)
        return (bool(active) and str(int(active[0], 16)) in windows
                and self.desktop.xdo("getwindowfocus", "-f") in windows)

    def size(self):
        shape = self.desktop.xdo("getwindowgeometry", "--shell", self.window_id())
        return tuple(int(re.search(rf"{side}=(\d+)", shape)[1]) for side in ("WIDTH", "HEIGHT"))

    def geometry(self):
        """Left, top, width and height on the screen."""
        said = self.desktop.run("xwininfo", "-id", self.window_id())
        return tuple(int(re.search(rf"{what}: +(-?\d+)", said)[1]) for what in (
            "Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))

    def margins(self):
        """What the window says of the margin for its shadow: left, right, top, bottom, or nothing."""
        said = self.desktop.run("xprop", "-id", self.window_id(), "_GTK_FRAME_EXTENTS")
        return tuple(int(number) for number in re.findall(r"\d+", said.partition("=")[2]))

    def place(self):
        """Left, top, width and height of what the user sees of the window."""
        x, y, width, height = self.geometry()
        left, right, top, bottom = self.margins() or (0, 0, 0, 0)
        return x + left, y + top, width - left - right, height - top - bottom

    def await_place(self, wanted):
        wait_until(lambda: self.place() == wanted, f"the window at {wanted}")

    def await_active(self):
        def active():
            if self.process.poll() is not None:
                raise AssertionError(f"the program ended with status {self.process.returncode}")
            return self.is_active()
        wait_until(active, "the window to have the keyboard")
        return self

    def close(self):
        """By its keys: its window has the keyboard."""
        self.desktop.key("ctrl+w")
        self.await_hidden()

    def await_hidden(self):
        wait_until(lambda: not self.is_shown(), "the window to go")
        if self.process.poll() is not None:
            raise AssertionError(f"the program ended with status {self.process.returncode}")

    def kill(self):
        """As if the machine took it: without a chance to write anything."""
        self.process.kill()
        self.process.wait()

    def quit(self):
        """Ctrl+Q; answers the exit status. The keys are let go when it has ended: one that is on
        its way to the accessibility bus meanwhile is memory that Qt loses."""
        self.await_active()
        self.desktop.xdo("keydown", "ctrl", "keydown", "q")
        try:
            return self.process.wait(timeout=20)
        finally:
            self.desktop.xdo("keyup", "q", "keyup", "ctrl")


def has_state(node, state):
    return node.get_state_set().contains(state)


def actions(node):
    return [node.get_action_name(index) for index in range(node.get_n_actions())]


def press(node, action="Press"):
    node.do_action(actions(node).index(action))


def child_of(node, name):
    return next((each for each in children(node) if each.get_name() == name), None)


def texts_of_menu(menu):
    texts = []
    for entry in children(menu):
        if entry.get_role_name() == "separator":
            texts.append("—")
        elif children(entry):
            texts.append([entry.get_name(), *texts_of_menu(children(entry)[0])])
        else:
            ticked = has_state(entry, Atspi.StateType.CHECKED)
            texts.append(entry.get_name() + (" ✓" if ticked else ""))
    return texts


def text_of(node):
    return Atspi.Text.get_text(node, 0, -1)


def keeping_evidence(method):
    """The test, which leaves its evidence while the desktop still stands."""
    @functools.wraps(method)
    def kept(test):
        test.succeeded = True
        try:
            method(test)
        except unittest.SkipTest:
            raise
        except BaseException as error:
            test.succeeded = False
            if isinstance(error, Exception):
                test.keep_evidence()
            raise
    return kept


class DesktopTest(unittest.TestCase):
    wm = "openbox"
    size = (1280, 800)
    tray = False
    # For tests that change what cannot be looked at, a window manager's settings for one.
    own_desktop = False
    # The desktop that is there for the next test of the class. A process has one in its life: it
    # can join one accessibility bus only. tools/run_python_test.py starts another process when
    # there has to be a new one.
    _kept = None

    @classmethod
    def process_is_used_up(cls):
        return DesktopTest._kept is None

    @classmethod
    def tearDownClass(cls):
        cls._end_desktop()
        super().tearDownClass()

    @staticmethod
    def _end_desktop():
        if DesktopTest._kept is not None:
            DesktopTest._kept.__exit__(None, None, None)
            DesktopTest._kept = None

    def __init_subclass__(cls):
        for name, method in list(vars(cls).items()):
            if name.startswith("test_"):
                setattr(cls, name, keeping_evidence(method))

    @contextlib.contextmanager
    def subTest(self, *arguments, **parameters):
        with super().subTest(*arguments, **parameters):
            try:
                yield
            except Exception:
                self.succeeded = False
                self.keep_evidence()
                raise

    def setUp(self):
        if not PROGRAM:
            self.fail("TAVO_PROGRAM does not name the program")
        self.launchers = []
        self.succeeded = self.ended_well = False
        if DesktopTest._kept is None:
            desktop = Desktop(size=self.size, wm=self.wm, tray=self.tray,
                              guarded=bool(self.wm) and self.wm.startswith("xfwm4"))
            DesktopTest._kept = desktop.__enter__()
        self.desktop = DesktopTest._kept
        self.addCleanup(self._leave_desktop)

    def _leave_desktop(self):
        """To the next test, when this one has left it in order."""
        if self.succeeded and self.ended_well and not self.own_desktop:
            try:
                self.desktop.origin.restore()
                return
            except Exception as error:
                print(f"a new desktop for the next test: {error}")
        self._end_desktop()

    def tearDown(self):
        for launcher in self.launchers:
            if launcher.process.poll() is None:
                launcher.process.terminate()
                launcher.process.wait(timeout=20)
        log = self.desktop.log()
        if report := SANITIZER_REPORT.search(log):
            self.fail(f"a sanitizer reported:\n{log[report.start():][:20000]}")
        self.ended_well = True

    def launch(self, wait=True, program=None, **environment):
        """Starts the program; with `wait`, answers when its window has the keyboard."""
        process = self.desktop.start([program or PROGRAM], {**self.desktop.hermetic, **environment})
        launcher = Launcher(self.desktop, process)
        self.launchers.append(launcher)
        if wait:
            launcher.await_node("list", "App")
            launcher.await_active()
        return launcher

    def another_server(self, *arguments):
        """The display of an X server without a window manager, and the server."""
        read, write = os.pipe()
        server = self.desktop.start(["Xvfb", "-displayfd", write, "-nolisten", "tcp", "-noreset",
                                     *arguments], log="server2.log", pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as pipe:
            return f":{pipe.readline().strip()}", server

    def silent_server(self):
        """One that takes connections and never answers."""
        display, server = self.another_server()
        server.send_signal(signal.SIGSTOP)
        return display, server

    def stand_in(self, name, *arguments):
        """Starts a program of this folder, to be talked to line by line, and waits until it says that
        it is ready. It ends with the test."""
        process = subprocess.Popen(
            ["/usr/bin/python3", "-W", "ignore", str(pathlib.Path(__file__).with_name(name)),
             *arguments],
            env=self.desktop.environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
            preexec_fn=_end_with_parent)
        self.addCleanup(self.end_stand_in, process)
        self.assertEqual(process.stdout.readline().split()[:1], ["ready"])
        return process

    @staticmethod
    def end_stand_in(process):
        process.kill()
        process.wait()
        process.stdin.close()
        process.stdout.close()

    def picture(self, name):
        """Leaves what the screen shows now, to be looked at."""
        self.desktop.screenshot(ARTIFACTS / f"{type(self).__name__}.{name}.png")

    def await_file(self, path):
        wait_until(path.exists, str(path))

    def keep_evidence(self):
        """What the screen looked like when the test failed, which windows the server had, and
        what the programs said."""
        name = ".".join(self.id().split(".")[-2:])
        print(f"picture: {self.desktop.screenshot(ARTIFACTS / f'{name}.png')}")
        windows = self.desktop.run("xwininfo", "-root", "-tree").splitlines()
        print("windows:", *(line for line in windows if "has no name" not in line), sep="\n")
        print("the window manager said:", self.desktop.log("wm.log") or "nothing", sep="\n")
        print("the program said:", self.desktop.log()[-5000:] or "nothing", sep="\n")

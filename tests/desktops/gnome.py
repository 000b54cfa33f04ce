"""GNOME Shell, on X11 and as a Wayland compositor."""

import json
import pathlib
import time

from gi.repository import GLib
from session import KEYSYMS, Session, Window, X11Session, package_version
from private_desktop import DesktopError, wait_until

_HELPER = "tavolauncher-trials@tavolauncher.org"
_INDICATORS = "ubuntu-appindicators@ubuntu.com"
_OURS = "tavolauncher@tavolauncher.org"
_HEADS = {
    False: ("const {Clutter, Gio, GLib, Meta, Shell} = imports.gi;\n"
            "const Main = imports.ui.main;\n",
            "\nfunction init() { return new Helper(); }\n"),
    True: ("import Clutter from 'gi://Clutter';\nimport Gio from 'gi://Gio';\n"
           "import GLib from 'gi://GLib';\nimport Meta from 'gi://Meta';\n"
           "import Shell from 'gi://Shell';\n"
           "import * as Main from 'resource:///org/gnome/shell/ui/main.js';\n",
           "\nexport default Helper;\n"),
}


class Gnome:
    """What both have in common."""

    desktop_name, session_name = "GNOME", "gnome"
    # The AppIndicator extension opens the menu at a click, and tells of double clicks.
    clicks_to_show = 2
    extensions = ()

    def configure(self):
        version = package_version("gnome-shell").partition(".")[0]
        folder = self.home / ".local/share/gnome-shell/extensions" / _HELPER
        folder.mkdir(parents=True)
        head, end = _HEADS[int(version) >= 45]
        body = pathlib.Path(__file__).with_name("gnome_helper.js").read_text()
        (folder / "extension.js").write_text(head + body + end)
        (folder / "metadata.json").write_text(json.dumps(
            {"uuid": _HELPER, "name": "Trials", "description": "Tells and does what trials ask",
             "shell-version": [version], "url": ""}))
        for schema, key, value in (
                ("org.gnome.shell", "enabled-extensions",
                 str([_INDICATORS, _HELPER, *self.extensions])),
                ("org.gnome.shell", "welcome-dialog-last-shown-version", "99"),
                ("org.gnome.desktop.interface", "enable-animations", "false"),
                ("org.gnome.mutter", "center-new-windows", "true"),
                ("org.gnome.desktop.session", "idle-delay", "0")):
            self.gsettings(schema, key, value)
        # Mutter asks for its session, even without a screen.
        self.start(["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"],
                   log="logind.log")
        wait_until(lambda: "login1" in self.run(
            "gdbus", "call", "--address", self.environment["DBUS_SYSTEM_BUS_ADDRESS"],
            "--dest", "org.freedesktop.DBus", "--object-path", "/", "--method",
            "org.freedesktop.DBus.ListNames"), "logind", 20, 0.1)
        self.publish_environment()

    def await_shell(self):
        def ready():
            try:
                return self.ask("ready")
            except DesktopError:
                return False
        wait_until(ready, "GNOME Shell", 90, 0.1)
        self.await_tray()

    def ask(self, name, *given):
        """What the helper answers."""
        try:
            (said,) = self.call("org.gnome.Shell", "/org/tavolauncher/Trials",
                                "org.tavolauncher.Trials.Ask",
                                GLib.Variant("(ss)", (name, json.dumps(given))))
        except GLib.Error as error:
            raise DesktopError(f"the shell: {error.message}") from error
        return json.loads(said)

    def version(self):
        return f"GNOME Shell {package_version('gnome-shell')}"

    def item(self):
        items = self.ask("items")
        # An item that was added just now has no place yet.
        if not items or None in items[-1]["box"]:
            return None
        x, y, width, height = items[-1]["box"]
        return x + width / 2, y + height / 2

    def set_wallpaper(self, colour):
        for key, value in (("picture-options", "none"), ("primary-color", colour)):
            self.gsettings("org.gnome.desktop.background", key, value)


class GnomeX11(Gnome, X11Session):
    name = "gnome-x11"

    def start_desktop(self):
        self.configure()
        self.start(["gnome-shell", "--x11", "--sm-disable"], log="shell.log")
        self.await_window_manager()
        self.await_shell()


class GnomeWayland(Gnome, Session):
    """Without a screen and without a graphics card; the helper plays the user."""

    name = "gnome-wayland"
    kind = "Wayland"

    def _start_server(self):
        pass

    def start_desktop(self):
        self.configure()
        self.start(["gnome-shell", "--headless", "--wayland", "--wayland-display", "wayland-0",
                    "--virtual-monitor", f"{self.size[0]}x{self.size[1]}"], log="shell.log")
        wait_until((self.folder / "run/wayland-0").exists, "the compositor", 60, 0.05)
        self.environment["WAYLAND_DISPLAY"] = "wayland-0"
        self.await_shell()
        # The shell has told the bus which X11 display its own is; programs get the same.
        socket = next(pathlib.Path("/tmp/.X11-unix").glob("X*"))
        cookie = next((self.folder / "run").glob(".mutter-Xwaylandauth.*"))
        self.environment |= {"DISPLAY": f":{socket.name[1:]}", "XAUTHORITY": str(cookie)}
        self.publish_environment()

    def windows(self):
        return [Window(**said) for said in self.ask("windows")]

    def raise_(self, window):
        self.ask("raise", window.key)

    def minimise(self, window):
        self.ask("minimise", window.key)

    def workspace(self, number):
        self.ask("workspace", number)

    def key(self, *keys):
        for each in keys:
            self._press([KEYSYMS.get(part) or ord(part) for part in each.split("+")])

    def _press(self, symbols):
        for down, order in ((True, symbols), (False, symbols[::-1])):
            for symbol in order:
                self.ask("key", symbol, down)
                time.sleep(0.02)

    def type(self, text):
        for character in text:
            self._press([ord(character)])

    def click(self, x, y, button=1, times=1):
        self.move_pointer(x, y)
        time.sleep(0.15)  # the shell looks where the pointer is once a frame
        for _ in range(times):
            self.ask("button", button, True)
            time.sleep(0.06)
            self.ask("button", button, False)
            time.sleep(0.06)

    def move_pointer(self, x, y):
        self.ask("move", x, y)

    def press(self, down):
        self.ask("button", 1, down)

    def painting(self, x, y):
        return ToldPainting(self)

    def screenshot(self, path):
        path = pathlib.Path(path)
        path.parent.mkdir(parents=True, exist_ok=True)
        done, _ = self.call("org.gnome.Shell", "/org/gnome/Shell/Screenshot",
                            "org.gnome.Shell.Screenshot.Screenshot",
                            GLib.Variant("(bbs)", (False, False, str(path))), seconds=30)
        if not done:
            raise DesktopError("the shell made no picture")
        return path


class ToldPainting:
    """When our window was first painted, as the compositor has noted it: no X server has its screen."""

    def __init__(self, session):
        self._session = session

    def __enter__(self):
        return self

    def __exit__(self, *_):
        pass

    def await_rest(self):
        time.sleep(0.5)

    def begin(self):
        self._begun = time.monotonic()

    def when(self):
        return wait_until(lambda: next((window.painted for window in self._session.ours()
                                        if window.painted > self._begun), None),
                          "the window's painting", 20, 0.01)


class GnomeWaylandExtension(GnomeWayland):
    """With the extension of ours that lets programs be fronted, of the tree that was built."""

    name = "gnome-wayland-extension"
    extensions = (_OURS,)

    def configure(self):
        version = package_version("gnome-shell").partition(".")[0]
        self.run("/source/extensions/gnome-shell/make.sh", version,
                 self.home / ".local/share/gnome-shell/extensions")
        super().configure()

    def await_shell(self):
        super().await_shell()
        wait_until(lambda: self.try_call("org.freedesktop.DBus", "/", "org.freedesktop.DBus.GetNameOwner",
                                         GLib.Variant("(s)", ("org.tavolauncher.GnomeShell",))),
                   "the extension on the bus", 20)

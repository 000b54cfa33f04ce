"""A whole desktop without a screen, and what it says of the windows on it.

A Session brings a desktop up as its login does, as far as that can be had without one, and answers
for it: which windows there are, which is in front, where the panel has the status item. The user's
keys and clicks go in where a keyboard and a mouse would. Nothing is asked of the launcher itself.
"""

import dataclasses
import os
import pathlib
import re
import subprocess
import sys
import time

_ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(_ROOT / "tools"), str(_ROOT / "tests/desktop")]

import gi  # noqa: E402

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402
from painted import Patch  # noqa: E402
from private_desktop import DesktopError, PrivateDesktop, wait_until  # noqa: E402

PREFIX = pathlib.Path(os.environ.get("TAVO_PREFIX", "/opt/tavolauncher"))
APPLICATION_ID = "org.tavolauncher.TavoLauncher"
KEYSYMS = {"Return": 0xff0d, "Escape": 0xff1b, "Down": 0xff54, "Menu": 0xff67, "Tab": 0xff09,
           "ctrl": 0xffe3, "shift": 0xffe1, "alt": 0xffe9, "F10": 0xffc7}
_LEFT, _RIGHT = 1, 3

_SYSTEM_BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:path={path}</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*" eavesdrop="true"/>
<allow eavesdrop="true"/><allow own="*"/></policy></busconfig>
"""


@dataclasses.dataclass
class Window:
    """What the desktop says of a window. `key` names it to the session that it is of."""
    key: object
    app: str
    title: str
    pid: int
    active: bool
    minimised: bool = False
    skips_taskbar: bool = False
    attention: bool = False
    here: bool = True      # on the workspace that is shown
    normal: bool = True    # neither panel nor desktop
    box: tuple = ()
    painted: float = 0.0   # when first, by the monotonic clock, where the desktop tells it

    @property
    def is_ours(self):
        return "tavolauncher" in self.app.lower()


class Session(PrivateDesktop):
    """See the module. `environment` is that of programs on the desktop."""

    name = ""
    kind = "X11"            # or "Wayland"
    desktop_name = ""       # XDG_CURRENT_DESKTOP
    session_name = ""       # DESKTOP_SESSION
    screen = ("+extension", "GLX", "+extension", "RANDR", "+extension", "RENDER")
    # How many clicks on the item show the window: the panel's choice.
    clicks_to_show = 1
    tells_order = True      # windows() are in their order
    icon_themes = ("Adwaita", "Papirus")

    def __init__(self):
        super().__init__(wm=None, size=(1280, 800))

    # Coming up

    def _bring_up(self):
        self._connection = None
        super()._bring_up()

    def _start_bus(self):
        """The last that PrivateDesktop starts: buses first, then the desktop on them."""
        self.environment |= {
            "XDG_DATA_DIRS": f"{PREFIX}/share:/usr/local/share:/usr/share",
            "PATH": f"{PREFIX}/bin:/usr/local/bin:/usr/bin:/bin:/usr/games",
            "XDG_CONFIG_DIRS": "/etc/xdg", "SHELL": "/bin/bash", "USER": "user", "LOGNAME": "user",
            "XDG_CURRENT_DESKTOP": self.desktop_name, "XDG_SESSION_DESKTOP": self.session_name,
            "DESKTOP_SESSION": self.session_name, "XDG_SESSION_TYPE": self.kind.lower(),
            "XDG_SESSION_CLASS": "user", "LIBGL_ALWAYS_SOFTWARE": "1"}
        # Only what a trial asks to be accessible is: it costs time.
        del self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"]
        super()._start_bus()
        self._start_system_bus()
        self.start_desktop()

    def _start_system_bus(self):
        """One of our own, on which there is nothing but what a session puts there."""
        path, settings = self.folder / "system-bus", self.folder / "system-bus.conf"
        settings.write_text(_SYSTEM_BUS.format(path=path))
        self.start(["dbus-daemon", f"--config-file={settings}", "--nofork", "--nopidfile"],
                   log="system-bus.log")
        self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={path}"
        wait_until(path.exists, "a system bus", 10)

    def start_desktop(self):
        raise NotImplementedError

    def publish_environment(self):
        """To what the bus starts."""
        self.run("dbus-update-activation-environment", *(
            f"{name}={value}" for name, value in self.environment.items()))

    def write(self, name, text):
        """A file of the user's, below the home folder."""
        path = self.home / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def await_tray(self, seconds=60):
        """Until there is a panel that takes status items."""
        wait_until(lambda: self.try_call(
            "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
            "org.freedesktop.DBus.Properties.Get",
            GLib.Variant("(ss)", ("org.kde.StatusNotifierWatcher",
                                  "IsStatusNotifierHostRegistered"))) == (True,),
            "a panel for status items", seconds, 0.1)

    def version(self):
        """Which desktop this is, as it tells itself."""
        raise NotImplementedError

    # The bus

    @property
    def connection(self):
        if self._connection is None:
            self._connection = Gio.DBusConnection.new_for_address_sync(
                self.environment["DBUS_SESSION_BUS_ADDRESS"],
                Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
                | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)
        return self._connection

    def call(self, name, path, method, given=None, seconds=10):
        interface, _, member = method.rpartition(".")
        return self.connection.call_sync(name, path, interface, member, given, None,
                                  Gio.DBusCallFlags.NONE, int(seconds * 1000), None).unpack()

    def try_call(self, *given, **options):
        """None when it cannot be had."""
        try:
            return self.call(*given, **options)
        except GLib.Error:
            return None

    # Windows

    def windows(self):
        """All of them, from the lowest to the topmost where the desktop tells the order."""
        raise NotImplementedError

    def raise_(self, window):
        """As the desktop's own taskbar does."""
        raise NotImplementedError

    def minimise(self, window):
        raise NotImplementedError

    def workspace(self, number):
        """Shows the workspace of that number; 0 is the first."""
        raise NotImplementedError

    def normal_windows(self):
        return [window for window in self.windows() if window.normal]

    def ours(self):
        return [window for window in self.normal_windows() if window.is_ours]

    def active(self):
        return next((window for window in self.windows() if window.active), None)

    def start_cover(self):
        """A program with one large window."""
        return self.start(["/usr/bin/python3", "-W", "ignore",
                           pathlib.Path(__file__).with_name("cover.py")], log="cover.log")

    def let_float(self, window):
        """Gives the window its own size, where the desktop would fill the screen with it."""

    # The user

    def key(self, *keys):
        """Each a key, or several to be held together: "ctrl+f"."""
        self.xdo("key", "--delay", "20", *keys)

    def type(self, text):
        self.xdo("type", "--delay", "20", "--", text)

    def click(self, x, y, button=_LEFT, times=1):
        self.xdo("mousemove", round(x), round(y))
        time.sleep(0.15)  # panels look where the pointer is once a frame
        self.xdo("click", "--repeat", times, "--delay", 120, button)

    def move_pointer(self, x, y):
        self.xdo("mousemove", round(x), round(y))

    def press(self, down):
        """The left button, or lets it go."""
        self.xdo("mousedown" if down else "mouseup", _LEFT)

    def xdo(self, *words):
        done = subprocess.run(["xdotool", *map(str, words)], capture_output=True, text=True,
                              env=self.screen_environment(), timeout=30)
        if done.returncode:
            raise DesktopError(f"xdotool {words}: {done.stderr.strip()}")
        return done.stdout

    def screen_environment(self):
        """Of programs that look at the screen or play the user."""
        return self.environment

    def screenshot(self, path):
        path = pathlib.Path(path)
        path.parent.mkdir(parents=True, exist_ok=True)
        subprocess.run(["import", "-window", "root", f"png:{path}"], check=True, timeout=30,
                       env=self.screen_environment(), capture_output=True)
        return path

    def painting(self, x, y):
        """What notices when the screen is painted there: begin(), when(), await_rest()."""
        return Patch(self.screen_environment()["DISPLAY"], x, y)

    # The panel

    def item(self):
        """The middle of our item in the panel, or None."""
        raise NotImplementedError

    def choose_entry(self, number):
        """Of the two in the menu that a right click on the item has opened, 0 or 1."""
        for _ in range(number + 1):
            self.key("Down")
            time.sleep(0.2)
        self.key("Return")

    # Settings of the user's

    def set_dark(self, dark):
        self.gsettings("org.gnome.desktop.interface", "color-scheme",
                       "prefer-dark" if dark else "default")

    def set_icon_theme(self, name):
        self.gsettings("org.gnome.desktop.interface", "icon-theme", name)

    def set_wallpaper(self, colour):
        """A plain one, "#rrggbb"."""
        raise NotImplementedError

    def gsettings(self, schema, key, value):
        self.run("gsettings", "set", schema, key, value)

    def plain_picture(self, colour):
        """A file with a picture of one colour."""
        path = self.folder / f"{colour[1:]}.png"
        if not path.exists():
            self.run("convert", "-size", "1280x800", f"xc:{colour}", path)
        return path


class X11Session(Session):
    """Asked by the standard hints of window managers."""

    def windows(self):
        active = (self._ids("_NET_ACTIVE_WINDOW") or [0])[0]
        ids = self._ids("_NET_CLIENT_LIST_STACKING") or self._ids("_NET_CLIENT_LIST")
        desktop = self._number(self._root_property("_NET_CURRENT_DESKTOP"))
        found = [self._window(each, active, desktop) for each in ids]
        return [window for window in found if window]

    def _ids(self, name):
        return [int(each, 16) for each in re.findall(r"0x[0-9a-f]+", self._root_property(name))]

    @staticmethod
    def _number(said):
        found = re.search(r"= (\d+)", said)
        return int(found[1]) if found else None

    def _window(self, id_, active, desktop):
        done = subprocess.run(
            ["xprop", "-id", str(id_), "WM_CLASS", "_NET_WM_NAME", "WM_NAME", "_NET_WM_PID",
             "_NET_WM_STATE", "_NET_WM_WINDOW_TYPE", "_NET_WM_DESKTOP", "_GTK_FRAME_EXTENTS"],
            env=self.environment, capture_output=True, text=True)
        if done.returncode:
            return None
        said = {}
        for line in done.stdout.splitlines():
            name, _, value = line.partition("(")
            said.setdefault(name, value)
        state, kind = said.get("_NET_WM_STATE", ""), said.get("_NET_WM_WINDOW_TYPE", "")
        title = re.search(r'"(.*)"', said.get("_NET_WM_NAME") or said.get("WM_NAME") or "")
        on = self._number(said.get("_NET_WM_DESKTOP", ""))
        return Window(
            key=id_, app="/".join(re.findall(r'"([^"]*)"', said.get("WM_CLASS", ""))),
            title=title[1] if title else "", pid=self._number(said.get("_NET_WM_PID", "")) or 0,
            active=id_ == active, minimised="_HIDDEN" in state,
            skips_taskbar="_SKIP_TASKBAR" in state and "_SKIP_PAGER" in state,
            attention="_DEMANDS_ATTENTION" in state,
            here=on is None or on in (desktop, 0xffffffff),
            normal="_DOCK" not in kind and "_DESKTOP" not in kind,
            box=self._box(id_, said.get("_GTK_FRAME_EXTENTS", "")))

    def _box(self, id_, margins):
        """Without the margin that a window keeps for its own shadow."""
        said = subprocess.run(["xwininfo", "-id", str(id_)], env=self.environment,
                              capture_output=True, text=True).stdout
        found = [re.search(rf"{what}:\s+(-?\d+)", said) for what in
                 ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")]
        if not all(found):
            return ()
        x, y, width, height = (int(each[1]) for each in found)
        numbers = re.findall(r"\d+", margins.partition("=")[2])
        left, right, top, bottom = map(int, numbers) if len(numbers) == 4 else (0, 0, 0, 0)
        return x + left, y + top, width - left - right, height - top - bottom

    def raise_(self, window):
        self.run("wmctrl", "-i", "-a", hex(window.key))

    def minimise(self, window):
        self.run("xdotool", "windowminimize", window.key)

    def workspace(self, number):
        count = self._number(self._root_property("_NET_NUMBER_OF_DESKTOPS")) or 1
        if count <= number:
            self.run("wmctrl", "-n", number + 1)
            wait_until(lambda: (self._number(self._root_property("_NET_NUMBER_OF_DESKTOPS")) or 1)
                       > number, "another workspace", 5)
        self.run("wmctrl", "-s", number)
        wait_until(lambda: self._number(self._root_property("_NET_CURRENT_DESKTOP")) == number,
                   "the workspace", 5)

    def await_window_manager(self, seconds=60):
        wait_until(lambda: "#" in self._root_property("_NET_SUPPORTING_WM_CHECK"),
                   "the window manager", seconds, 0.05)

    def window_manager(self):
        """Its name, as it tells."""
        check = self._ids("_NET_SUPPORTING_WM_CHECK")[0]
        said = self.run("xprop", "-id", check, "_NET_WM_NAME")
        return re.search(r'"(.*)"', said)[1]


def package_version(package):
    """Of an installed Debian package, without what Debian adds."""
    said = subprocess.run(["dpkg-query", "--show", "--showformat=${Version}", package],
                          capture_output=True, text=True).stdout
    return re.sub(r"^\d+:|[-+~].*", "", said)

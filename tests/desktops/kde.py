"""KDE Plasma, on X11 and as a Wayland compositor in the window of an X server."""

import json
import pathlib
import shutil
import subprocess

from gi.repository import Gio, GLib
from session import Session, Window, X11Session, package_version
from private_desktop import DesktopError, wait_until

_LIBEXEC = pathlib.Path("/usr/lib/x86_64-linux-gnu/libexec")
_ANSWERS = Gio.DBusNodeInfo.new_for_xml(
    '<node><interface name="org.tavolauncher.Trials"><method name="Said">'
    '<arg type="s" direction="in"/></method></interface></node>').interfaces[0]

# In the scripting language of KWin 5 and 6, which differ in names.
_COMMON = """
var all = workspace.windowList ? workspace.windowList() : workspace.clientList();
var active = workspace.activeWindow || workspace.activeClient;
function byKey(key) { return all.filter(function(w) { return "" + w.internalId === key; })[0]; }
"""
_WINDOWS = """
var here = workspace.currentDesktop;
SAY(JSON.stringify(all.map(function(w) {
    var box = w.frameGeometry;
    return {key: "" + w.internalId, app: "" + w.resourceClass, title: w.caption, pid: w.pid,
        active: w === active, minimised: w.minimized,
        skips_taskbar: w.skipTaskbar && w.skipSwitcher, attention: w.demandsAttention,
        here: w.desktops ? w.desktops.length === 0 || w.desktops.indexOf(here) >= 0
                         : w.desktop === here || w.desktop === -1,
        normal: w.normalWindow || w.dialog, order: w.stackingOrder || 0,
        box: [box.x, box.y, box.width, box.height]};
})));
"""


class Kde:
    """What both have in common."""

    desktop_name = "KDE"
    icon_themes = ("breeze", "Papirus")

    @property
    def generation(self):
        return 6 if shutil.which("kded6") else 5

    def configure(self):
        self.environment |= {"KDE_FULL_SESSION": "true", "QT_QUICK_BACKEND": "software",
                             "KDE_SESSION_VERSION": str(self.generation)}
        self.write(".config/ksplashrc", "[KSplash]\nEngine=none\nTheme=None\n")
        self.write(".config/baloofilerc", "[Basic Settings]\nIndexing-Enabled=false\n")
        self.write(".config/kwinrc", "[Desktops]\nNumber=2\nRows=1\n")
        self.write(".config/kscreenlockerrc", "[Daemon]\nAutolock=false\nLockOnResume=false\n")
        self.publish_environment()

    def start_shell(self):
        self.start([f"kded{self.generation}"], log="kded.log")
        self.start([_LIBEXEC / "kactivitymanagerd"], log="activities.log")
        # Its accessible tree tells where on the panel the item is.
        self.start(["plasmashell", "--no-respawn"], {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"},
                   log="shell.log")
        self.await_tray(90)

    def version(self):
        return f"Plasma {package_version('plasma-workspace')}"

    def set_dark(self, dark):
        self.run("plasma-apply-colorscheme", "BreezeDark" if dark else "BreezeLight")

    def set_icon_theme(self, name):
        self.run(_LIBEXEC / "plasma-changeicons", name)

    def set_wallpaper(self, colour):
        self.run("plasma-apply-wallpaperimage", self.plain_picture(colour))

    def item(self):
        """As Plasma's own accessible tree has it."""
        done = subprocess.run(
            ["/usr/bin/python3", "-W", "ignore", pathlib.Path(__file__).with_name("panel_item.py"),
             "plasmashell", "Tavo Launcher"], env=self.environment,
            capture_output=True, text=True, timeout=60)
        if done.returncode:
            return None
        x, y, width, height = map(int, done.stdout.split())
        return x + width / 2, y + height / 2


class KdeX11(Kde, X11Session):
    name = "kde-x11"
    session_name = "plasma"

    def start_desktop(self):
        self.configure()
        self.start(["kwin_x11"], {"KWIN_COMPOSE": "O2"}, log="kwin.log")
        self.await_window_manager()
        self.start_shell()


class KdeWayland(Kde, Session):
    """The X server around it plays the user."""

    name = "kde-wayland"
    kind = "Wayland"
    session_name = "plasmawayland"

    def start_desktop(self):
        self.outside = dict(self.environment)
        self.configure()
        width, height = map(str, self.size)
        self.start(["kwin_wayland", "--x11-display", self.outside["DISPLAY"], "--width", width,
                    "--height", height, "--socket", "wayland-0", "--no-lockscreen", "--xwayland"],
                   {"KWIN_COMPOSE": "Q"}, log="kwin.log")
        del self.environment["DISPLAY"]
        wait_until((self.folder / "run/wayland-0").exists, "the compositor", 60, 0.05)
        self.environment["WAYLAND_DISPLAY"] = "wayland-0"
        number = self.outside["DISPLAY"][1:]
        sockets = pathlib.Path("/tmp/.X11-unix")
        other = wait_until(lambda: [path.name[1:] for path in sockets.glob("X*")
                                    if path.name != f"X{number}"], "KWin's X11 display", 30)
        self.environment["DISPLAY"] = f":{other[0]}"
        cookie = next((self.folder / "run").glob("xauth_*"), None)
        if cookie is not None:
            self.environment["XAUTHORITY"] = str(cookie)
        self.publish_environment()
        self._script_number = 0
        self.start_shell()

    def screen_environment(self):
        return self.outside

    def script(self, code, answers=True):
        """Runs a script in KWin. With `answers`, what it hands to SAY()."""
        self._script_number += 1
        name = f"trials{self._script_number}"
        said = []
        bus = self.connection
        registered = bus.register_object("/Trials", _ANSWERS, lambda *given: (
            said.append(given[5].unpack()[0]), given[6].return_value(None)), None, None)
        path = self.folder / f"{name}.js"
        path.write_text(_COMMON + code.replace("SAY(", (
            f'callDBus("{bus.get_unique_name()}", "/Trials", "org.tavolauncher.Trials", "Said", ')))
        try:
            (number,) = self.call("org.kde.KWin", "/Scripting", "org.kde.kwin.Scripting.loadScript",
                                  GLib.Variant("(ss)", (str(path), name)))
            for place in (f"/{number}", f"/Scripting/Script{number}"):
                if self.try_call("org.kde.KWin", place, "org.kde.kwin.Script.run") is not None:
                    break
            if answers:
                def heard():
                    GLib.MainContext.default().iteration(False)
                    return said
                wait_until(heard, "KWin's answer", 10, 0.001)
        except GLib.Error as error:
            raise DesktopError(f"KWin: {error.message}") from error
        finally:
            self.try_call("org.kde.KWin", "/Scripting", "org.kde.kwin.Scripting.unloadScript",
                          GLib.Variant("(s)", (name,)))
            bus.unregister_object(registered)
            path.unlink()
        return said[0] if said else None

    def windows(self):
        said = json.loads(self.script(_WINDOWS))
        said.sort(key=lambda each: each.pop("order"))
        return [Window(**each) for each in said]

    def _tell(self, window, code):
        self.script(f'var w = byKey("{window.key}"); {code}; SAY("done");')

    def raise_(self, window):
        self._tell(window, "if (workspace.windowList) workspace.activeWindow = w;"
                           "else workspace.activeClient = w")

    def minimise(self, window):
        self._tell(window, "w.minimized = true")

    def workspace(self, number):
        path, interface = "/VirtualDesktopManager", "org.kde.KWin.VirtualDesktopManager"
        properties = "org.freedesktop.DBus.Properties"
        (desktops,) = self.call("org.kde.KWin", path, f"{properties}.Get",
                                GLib.Variant("(ss)", (interface, "desktops")))
        self.call("org.kde.KWin", path, f"{properties}.Set", GLib.Variant(
            "(ssv)", (interface, "current", GLib.Variant("s", desktops[number][1]))))

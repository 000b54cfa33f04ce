"""Xfce and LXQt as whole sessions, openbox with tint2, and sway with waybar."""

import json
import re
import subprocess
import time

from session import Session, Window, X11Session, package_version
from private_desktop import DesktopError, wait_until
from windows import window_tree

# The item is the first on a panel at the top, as narrow as it may be for the rest of the panel.
_XFCE_PANEL = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
<property name="configver" type="int" value="2"/>
<property name="panels" type="array"><value type="int" value="1"/>
<property name="panel-1" type="empty">
<property name="position" type="string" value="p=6;x=0;y=0"/>
<property name="position-locked" type="bool" value="true"/>
<property name="length" type="uint" value="100"/><property name="size" type="uint" value="32"/>
<property name="plugin-ids" type="array"><value type="int" value="1"/><value type="int" value="2"/>
<value type="int" value="3"/></property></property></property>
<property name="plugins" type="empty">
<property name="plugin-1" type="string" value="systray"/>
<property name="plugin-2" type="string" value="separator">
<property name="expand" type="bool" value="true"/><property name="style" type="uint" value="0"/>
</property>
<property name="plugin-3" type="string" value="tasklist"/></property></channel>
"""
_LXQT_PANEL = """panels=panel1
[panel1]
plugins=statusnotifier, spacer, taskbar
position=Top
panelSize=32
width=100
width-percent=true
alignment=-1
desktop=0
[statusnotifier]
type=statusnotifier
[spacer]
type=spacer
size=400
[taskbar]
type=taskbar
"""
_TINT2 = """panel_items = TSC
panel_size = 100% 32
panel_position = top center horizontal
systray_icon_size = 24
time1_format = %H:%M
"""
_SWAY = """output * mode {width}x{height}
default_border none
workspace_layout tabbed
focus_on_window_activation focus
xwayland enable
exec echo $DISPLAY >{display}
exec waybar -c {bar} -s {style}
"""
_WAYBAR_STYLE = """* { border: none; padding: 0; margin: 0 }
window#waybar, #tray { background: #202020 }
"""


class FirstOnPanel:
    """A panel whose first place is the item's. It is there when its symbol is: two colours far from
    each other."""

    item_place = ()

    def item(self):
        x, y = self.item_place
        pixels = subprocess.run(
            ["import", "-window", "root", "-crop", f"24x24+{x - 12}+{y - 12}", "-depth", "8", "rgb:-"],
            env=self.screen_environment(), capture_output=True).stdout
        return self.item_place if pixels and max(pixels) - min(pixels) > 120 else None


class Xfce(FirstOnPanel, X11Session):
    name = "xfce"
    desktop_name, session_name = "XFCE", "xfce"
    item_place = 12, 16

    def start_desktop(self):
        self.environment |= {"XDG_MENU_PREFIX": "xfce-", "XFCE_PANEL_MIGRATE_DEFAULT": "1"}
        self.write(".config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", _XFCE_PANEL)
        self.publish_environment()
        self.start(["xfce4-session", "--disable-tcp"], log="session.log")
        self.await_window_manager()
        self.await_tray()

    def version(self):
        return f"xfce4-session {package_version('xfce4-session')}"

    def set_dark(self, dark):
        """By the theme, and as newer ones do, which tell the portal."""
        self.run("xfconf-query", "-c", "xsettings", "-p", "/Net/ThemeName", "-n", "-t", "string",
                 "-s", "Adwaita-dark" if dark else "Adwaita")
        super().set_dark(dark)

    def set_icon_theme(self, name):
        self.run("xfconf-query", "-c", "xsettings", "-p", "/Net/IconThemeName", "-n", "-t", "string",
                 "-s", name)

    def set_wallpaper(self, colour):
        screen = "/backdrop/screen0/monitorscreen/workspace"
        for number in range(4):
            self.run("xfconf-query", "-c", "xfce4-desktop", "-p", f"{screen}{number}/last-image",
                     "-n", "-t", "string", "-s", self.plain_picture(colour))


class Lxqt(FirstOnPanel, X11Session):
    name = "lxqt"
    desktop_name, session_name = "LXQt", "lxqt"
    item_place = 15, 16

    def start_desktop(self):
        self.environment["XDG_MENU_PREFIX"] = "lxqt-"
        self.write(".config/lxqt/session.conf",
                   "[General]\nwindow_manager=openbox\n__userfile__=true\n")
        self.write(".config/lxqt/panel.conf", _LXQT_PANEL)
        self.publish_environment()
        self.start(["lxqt-session"], log="session.log")
        self.await_window_manager()
        self.await_tray()

    def version(self):
        return f"LXQt {package_version('lxqt-session')} with {self.window_manager()}"

    def set_wallpaper(self, colour):
        self.run("pcmanfm-qt", f"--set-wallpaper={self.plain_picture(colour)}",
                 "--wallpaper-mode=stretch")


class Openbox(X11Session):
    """A window manager and a panel that takes windows in."""

    name = "openbox"
    desktop_name, session_name = "openbox", "openbox"

    def start_desktop(self):
        self.publish_environment()
        self.start(["openbox"], log="wm.log")
        wait_until(self._manages_windows, "openbox")
        (self.folder / "tint2rc").write_text(_TINT2)
        self.start(["tint2", "-c", self.folder / "tint2rc"], log="panel.log")
        wait_until(lambda: any("tint2" in line for line in window_tree(self)), "tint2")

    def version(self):
        return f"openbox {package_version('openbox')} with tint2 {package_version('tint2')}"

    def item(self):
        for line in window_tree(self):
            found = re.search(r'\("tavolauncher" "TavoLauncher"\)\s+(\d+)x(\d+)\+\S+\s+'
                              r"\+(-?\d+)\+(-?\d+)", line)
            if found:
                width, height, x, y = map(int, found.groups())
                if 8 < width < 100 and y >= 0 and x >= 0:
                    return x + width / 2, y + height / 2
        return None

    def set_wallpaper(self, colour):
        self.run("xsetroot", "-solid", colour)


class Sway(FirstOnPanel, Session):
    """In the window of an X server, which plays the user."""

    name = "sway"
    kind = "Wayland"
    desktop_name, session_name = "sway", "sway"
    item_place = 1268, 16  # at the right end of the bar
    tells_order = False    # of its tabs one is seen

    def start_desktop(self):
        self.outside = dict(self.environment)
        display, bar, style, settings = (self.folder / name for name in (
            "display", "waybar", "waybar.css", "sway.conf"))
        bar.write_text('{"height":32,"modules-right":["tray"],"tray":{"icon-size":24}}')
        style.write_text(_WAYBAR_STYLE)
        settings.write_text(_SWAY.format(width=self.size[0], height=self.size[1], display=display,
                                         bar=bar, style=style))
        self.start(["sway", "-c", settings], {"WLR_BACKENDS": "x11", "WLR_RENDERER": "pixman"},
                   log="sway.log")
        runtime = self.folder / "run"
        socket = wait_until(lambda: next(runtime.glob("sway-ipc.*.sock"), None), "sway")
        wayland = wait_until(lambda: next((path for path in runtime.glob("wayland-*")
                                           if path.suffix != ".lock"), None), "sway's display")
        wait_until(lambda: display.exists() and display.read_text().strip(), "sway's X11 display")
        self.environment |= {"SWAYSOCK": str(socket), "WAYLAND_DISPLAY": wayland.name,
                             "DISPLAY": display.read_text().strip()}
        self.publish_environment()
        self.await_tray()

    def version(self):
        said = json.loads(self.run("swaymsg", "-r", "-t", "get_version"))["human_readable"]
        return f"sway {said} with waybar {package_version('waybar')}"

    def screen_environment(self):
        return self.outside

    def windows(self):
        found = []

        def visit(node):
            if node.get("pid") and node["type"] in ("con", "floating_con"):
                x11, box = node.get("window_properties") or {}, node["rect"]
                found.append(Window(
                    key=node["id"], title=node["name"] or "", pid=node["pid"],
                    app=node.get("app_id") or "/".join(
                        filter(None, (x11.get("instance"), x11.get("class")))),
                    active=node["focused"] and node["visible"], attention=node["urgent"],
                    here=node["visible"] or bool(node.get("urgent")),
                    box=(box["x"], box["y"], box["width"], box["height"])))
            for inner in node["nodes"] + node["floating_nodes"]:
                visit(inner)
        visit(json.loads(self.run("swaymsg", "-r", "-t", "get_tree")))
        return found

    def _tell(self, command):
        self.run("swaymsg", command)

    def raise_(self, window):
        self._tell(f"[con_id={window.key}] focus")

    def let_float(self, window):
        # Later versions leave it the size of its tile.
        self._tell(f"[con_id={window.key}] floating enable, resize set 980 640, "
                   "move position center")

    def workspace(self, number):
        self._tell(f"workspace number {number + 1}")

    def set_wallpaper(self, colour):
        self._tell(f"output * bg {colour} solid_color")

    def click(self, x, y, button=1, times=1):
        if button == 3:
            self.before_menu = self._gray()
        super().click(x, y, button, times)

    def choose_entry(self, number):
        """By the pointer: the bar's menus do not get the keys. One that was opened as soon as the bar
        had the item does not get the pointer either, and is opened again."""
        def chosen():
            left, top, bottom = wait_until(self._menu_place, "the menu", 5)
            menu, y = self._gray(), top + (bottom - top) * (1 + 2 * number) // 4
            self.move_pointer(left + 40, y)
            at = y * self.size[0] + left + 6
            try:
                wait_until(lambda: self._gray()[at] != menu[at], "the entry to light up", 1.5)
            except DesktopError:
                super(Sway, self).click(400, 400)
                time.sleep(0.3)
                self.click(*self.item_place, button=3)
                return False
            self.xdo("click", 1)
            return True
        wait_until(chosen, "an entry that takes the click", 20)

    def _gray(self):
        return subprocess.run(["import", "-window", "root", "-depth", "8", "gray:-"],
                              env=self.outside, capture_output=True, check=True).stdout

    def _menu_place(self):
        """Left edge, top and bottom of what has changed beside the item, once it stays so."""
        def changed():
            now, width = self._gray(), self.size[0]
            return [(x, y) for y in range(120)
                    for x in range(self.item_place[0] - 260, self.item_place[0] - 20)
                    if now[y * width + x] != self.before_menu[y * width + x]]
        found = changed()
        if len(found) < 1000 or found != changed():
            return None
        rows = [y for _, y in found]
        return min(x for x, _ in found), min(rows), max(rows)

import collections
import contextlib
import pathlib
import time

import settings_portal
from gi.repository import GLib
from harness import PROGRAM, DesktopTest, wait_until, wait_until_still

# Platform themes of Qt as desktops install them, under every name that Qt asks for.
PLUGINS = pathlib.Path(PROGRAM).parent / "bin/plugins"

Box = collections.namedtuple("Box", "x y width height")


class SettingsTest(DesktopTest):
    """The desktop tells how programs should look and feel, and may change its mind at any time."""

    def setUp(self):
        super().setUp()
        self.desktop.entry("Ananas")

    def window(self, launcher):
        """What the window shows but for the text cursor, once it is still."""
        x, y, width, height = launcher.geometry()
        parts = (Box(x + 1, y + 1, 198, height - 2), Box(x + 200, y + 60, width - 201, height - 61))
        # Out of the way: a row under the pointer looks different.
        self.desktop.move_pointer(1, 1)
        return wait_until_still(
            lambda: b"".join(b"".join(self.desktop.pixels().part(part)) for part in parts), "a window")

    def await_look_of_a_start(self, launcher, before, **environment):
        """Waits until the window no longer looks as before; then it looks as one started now."""
        after = wait_until(
            lambda: (look := self.window(launcher)) != before and look, "another look")
        launcher.quit()
        self.assertEqual(self.window(self.launch(**environment)), after)

    def background(self, launcher):
        """The colour of the window between toolbar and grid."""
        x, y, *_ = launcher.geometry()
        return self.desktop.pixels().at(x + 500, y + 100)

    def await_background(self, launcher, dark):
        wait_until(lambda: (max(self.background(launcher)) < 80) == dark,
                   "a dark window" if dark else "a light window")

    def await_colour(self, launcher, colour):
        """Waits until something in the sidebar has that colour."""
        x, y, _, height = launcher.geometry()

        def seen():
            rows = b"".join(self.desktop.pixels().part(Box(x, y, 200, height)))
            return any(rows[at:at + 3] == bytes(colour) for at in range(0, len(rows), 3))
        wait_until(seen, f"the colour {colour}")

    def portal(self, values=()):
        portal = settings_portal.SettingsPortal(
            self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"], values)
        portal.__enter__()
        self.addCleanup(portal.__exit__, None, None, None)
        return portal

    def publish(self, manager=None, **settings):
        """The X settings of the desktop, by the words of their names with "_" for "/"."""
        path = self.desktop.folder / "xsettingsd.conf"
        path.write_text("".join(
            f"{name.replace('_', '/')} " + (f'"{value}"' if isinstance(value, str) else str(value))
            + "\n" for name, value in settings.items()))
        if manager:
            manager.send_signal(1)
            return manager
        manager = self.desktop.start(["xsettingsd", "-c", path], log="xsettingsd.log")

        def published():
            # It fails while there is no manager.
            with contextlib.suppress(Exception):
                return next(iter(settings)).replace("_", "/") in self.desktop.run("dump_xsettings")
        wait_until(published, "the settings")
        return manager

    def double_clicks_a_word(self, launcher, milliseconds, between=lambda: None):
        """Whether two clicks so far apart on the search text select a word, which the next key
        replaces."""
        self.desktop.key("ctrl+a")
        self.desktop.type("una due")
        launcher.await_equal(launcher.search_text, "una due")
        # Later than any double click with a press of the round before.
        time.sleep(1.2)
        x, y, *_ = launcher.geometry()
        self.desktop.move_pointer(x + 268, y + 32)
        self.desktop.xdo("click", 1)
        end = time.monotonic() + milliseconds / 1000
        between()
        time.sleep(end - time.monotonic())
        self.desktop.xdo("click", 1)
        self.desktop.type("x")
        return launcher.await_change(launcher.search_text, "una due") == "x due"


class ChosenFont(SettingsTest):
    def test_the_font_of_x_settings_is_used_and_followed(self):
        manager = self.publish(Gtk_FontName="DejaVu Sans 11")
        launcher = self.launch(XDG_CURRENT_DESKTOP="XFCE")
        before = self.window(launcher)
        self.publish(manager, Gtk_FontName="DejaVu Sans Mono Bold 11")
        self.await_look_of_a_start(launcher, before, XDG_CURRENT_DESKTOP="XFCE")

    def test_the_font_of_the_portal_is_used_and_followed(self):
        portal = self.portal({settings_portal.FONT: GLib.Variant("s", "DejaVu Sans 11")})
        launcher = self.launch(XDG_CURRENT_DESKTOP="GNOME")
        before = self.window(launcher)
        portal.set(settings_portal.FONT, GLib.Variant("s", "DejaVu Sans Mono 11"))
        self.await_look_of_a_start(launcher, before, XDG_CURRENT_DESKTOP="GNOME")


class Colours(SettingsTest):
    def kde(self, *, window, selection, signal=()):
        folder = self.desktop.home / ".config"
        folder.mkdir(exist_ok=True)
        colours = {"Window": window, "Selection": selection}
        (folder / "kdeglobals").write_text("".join(
            f"[Colors:{group}]\nBackgroundNormal={','.join(map(str, colour))}\n"
            for group, colour in colours.items()))
        if signal:
            self.desktop.run("dbus-send", "--session", "--type=signal", *signal)

    def test_kdes_colour_scheme_is_used_and_followed(self):
        self.kde(window=(42, 46, 50), selection=(255, 120, 200))
        launcher = self.launch(XDG_CURRENT_DESKTOP="KDE")
        self.await_background(launcher, dark=True)
        self.await_colour(launcher, (255, 120, 200))
        for signal, dark, window, selection in (
                (("/kdeglobals", "org.kde.kconfig.notify.ConfigChanged"), False, (239, 240, 241),
                 (150, 0, 160)),
                (("/KGlobalSettings", "org.kde.KGlobalSettings.notifyChange", "int32:0", "int32:0"),
                 True, (20, 20, 20), (120, 255, 200))):
            with self.subTest(signal=signal):
                self.kde(window=window, selection=selection, signal=signal)
                self.await_background(launcher, dark)
                self.await_colour(launcher, selection)

    def test_the_accent_of_the_portal_is_used_and_followed(self):
        portal = self.portal({settings_portal.ACCENT: GLib.Variant("(ddd)", (150 / 255, 0, 160 / 255))})
        launcher = self.launch(XDG_CURRENT_DESKTOP="GNOME")
        self.await_colour(launcher, (150, 0, 160))
        portal.set(settings_portal.ACCENT, GLib.Variant("(ddd)", (0, 100 / 255, 50 / 255)))
        self.await_colour(launcher, (0, 100, 50))

    def test_a_dark_theme_of_x_settings_makes_it_dark_and_a_light_one_light(self):
        manager = self.publish(Net_ThemeName="Greybird-dark")
        launcher = self.launch(XDG_CURRENT_DESKTOP="XFCE")
        self.await_background(launcher, dark=True)
        self.publish(manager, Net_ThemeName="Greybird")
        self.await_background(launcher, dark=False)


class MouseAndCursor(SettingsTest):
    def test_the_double_click_of_x_settings_is_used_and_followed(self):
        manager = self.publish(Net_DoubleClickTime=1000)
        launcher = self.launch(XDG_CURRENT_DESKTOP="XFCE")
        self.assertTrue(self.double_clicks_a_word(launcher, 600))
        self.publish(manager, Net_DoubleClickTime=200)
        wait_until(lambda: not self.double_clicks_a_word(launcher, 400), "two single clicks")

    def test_a_cursor_that_does_not_blink_is_left_alone(self):
        portal = self.portal({settings_portal.CURSOR_BLINK: GLib.Variant("b", False)})
        launcher = self.launch(XDG_CURRENT_DESKTOP="GNOME")
        x, y, width, _ = launcher.geometry()
        field = Box(x + 222, y + 16, width - 330, 32)
        self.desktop.type("una")
        launcher.await_equal(launcher.search_text, "una")

        def looks():
            """How many looks the field has in the time of three blinks."""
            seen, end = set(), time.monotonic() + 3
            while time.monotonic() < end:
                seen.add(b"".join(self.desktop.pixels().part(field)))
            return len(seen)
        self.assertEqual(looks(), 1)
        portal.set(settings_portal.CURSOR_BLINK, GLib.Variant("b", True))
        portal.set(settings_portal.CURSOR_BLINK_TIME, GLib.Variant("i", 600))
        self.desktop.type("x")
        wait_until(lambda: looks() > 1, "a cursor that blinks")


class Toolkits(SettingsTest):
    def loaded_themes(self, launcher):
        maps = pathlib.Path(f"/proc/{launcher.process.pid}/maps").read_text()
        return sorted({line.split("/")[-1] for line in maps.splitlines()
                       if "platformthemes" in line or "libgtk" in line})

    def test_no_theme_that_the_desktop_brings_comes_into_the_process(self):
        self.assertTrue(list((PLUGINS / "platformthemes").glob("*.so")))
        for desktop, more in (("GNOME", {}), ("XFCE", {}), ("KDE", {"KDE_FULL_SESSION": "true"}),
                              ("XFCE", {"QT_QPA_PLATFORMTHEME": "gtk3"})):
            with self.subTest(desktop=desktop, **more):
                launcher = self.launch(XDG_CURRENT_DESKTOP=desktop, QT_PLUGIN_PATH=str(PLUGINS), **more)
                self.assertEqual(self.loaded_themes(launcher), [])
                launcher.quit()

    def test_what_it_starts_gets_the_environment_of_the_session(self):
        seen = self.desktop.folder / "environment"
        program = self.desktop.script("ciliege", f"env >'{seen}.new'; mv '{seen}.new' '{seen}'")
        self.desktop.entry("Ciliege", Exec=str(program))
        launcher = self.launch(QT_QPA_PLATFORMTHEME="qt6ct")
        launcher.await_tiles(["Ananas", "Ciliege"])
        launcher.press("list item", "Apri Ciliege")
        self.await_file(seen)
        self.assertEqual([line for line in seen.read_text().splitlines() if line.startswith("QT_QPA")],
                         ["QT_QPA_PLATFORMTHEME=qt6ct"])

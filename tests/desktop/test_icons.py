import contextlib
import gzip
import os
import shutil
import subprocess
import time
import zlib

from gi.repository import GLib

import settings_portal
from harness import Atspi, DesktopTest, png_of, processes_below, wait_until

RED, BLUE = (200, 60, 60), (60, 90, 200)


class IconTest(DesktopTest):
    ICON = 68

    def icon_of(self, launcher, name):
        """The rows of what is drawn where the tile has its icon."""
        box = launcher.node("list item", f"Apri {name}").get_extents(Atspi.CoordType.SCREEN)
        box.x += (box.width - self.ICON) // 2
        box.width = box.height = self.ICON
        return self.desktop.pixels().part(box)

    def colour_of(self, launcher, name):
        """Of the middle of the icon."""
        row = self.icon_of(launcher, name)[self.ICON // 2]
        return tuple(row[3 * self.ICON // 2:][:3])

    def await_colour(self, launcher, name, colour):
        """On the screen."""
        launcher.await_equal(lambda: self.colour_of(launcher, name), colour)

    def themes(self):
        """Two icon themes, one red and one blue, and an application with an icon in both."""
        for theme, colour in (("Rosso", RED), ("Blu", BLUE)):
            self.desktop.icon("tavo-test-square", colour, theme=theme)
        self.desktop.entry("Ananas", Icon="tavo-test-square")


class Icons(IconTest):
    def test_icons_of_every_kind_and_none_leave_the_list_whole(self):
        self.desktop.icon("tavo-test-square")
        broken = self.desktop.folder / "broken.png"
        broken.write_bytes(b"\x89PNG\r\n\x1a\nnot really")
        self.desktop.entry("A theme icon", Icon="tavo-test-square")
        blue = self.desktop.icon("other", colour=(60, 90, 200))
        self.desktop.entry("B absolute icon", Icon=str(blue))
        self.desktop.entry("C missing icon", Icon="no-such-icon")
        self.desktop.entry("D broken icon", Icon=str(broken))
        self.desktop.entry("E no icon")
        self.desktop.entry("F device", Icon="/dev/zero")
        launcher = self.launch()
        launcher.await_equal(lambda: [name[0] for name in launcher.tiles()], list("ABCDEF"))
        # In its tile each icon is what its file holds, and the generic one where there is none.
        launcher.await_equal(lambda: self.colour_of(launcher, "A theme icon"), (200, 60, 60))
        launcher.await_equal(lambda: self.colour_of(launcher, "B absolute icon"), (60, 90, 200))
        launcher.await_equal(lambda: len(set(self.icon_of(launcher, "E no icon"))) > 1, True)
        generic = self.icon_of(launcher, "E no icon")
        for name in ("C missing icon", "D broken icon", "F device"):
            with self.subTest(name=name):
                launcher.await_equal(lambda: self.icon_of(launcher, name) == generic, True)

    def test_a_changed_file_is_drawn_with_the_next_reload(self):
        self.desktop.icon("tavo-test-square", RED)
        self.desktop.entry("Ananas", Icon="tavo-test-square")
        launcher = self.launch()
        self.await_colour(launcher, "Ananas", RED)
        self.desktop.icon("tavo-test-square", BLUE)
        launcher.press("push button", "Aggiorna app")
        self.await_colour(launcher, "Ananas", BLUE)

    def test_another_icon_of_the_same_application_is_drawn_with_the_next_reload(self):
        self.desktop.icon("red", RED)
        self.desktop.icon("blue", BLUE)
        self.desktop.entry("Ananas", Icon="red")
        launcher = self.launch()
        self.await_colour(launcher, "Ananas", RED)
        self.desktop.entry("Ananas", Icon="blue")
        launcher.press("push button", "Aggiorna app")
        self.await_colour(launcher, "Ananas", BLUE)

    def test_a_program_without_a_renderer_shows_generic_icons(self):
        self.desktop.icon("tavo-test-square", RED)
        self.desktop.entry("Ananas", Icon="tavo-test-square")
        self.desktop.entry("Bosco")
        folder = self.desktop.copy_of_program()
        (folder / "libexec/tavolauncher/icon-renderer").unlink()
        launcher = self.launch(program=folder / "tavolauncher")
        launcher.await_equal(lambda: len(set(self.icon_of(launcher, "Bosco"))) > 1, True)
        generic = self.icon_of(launcher, "Bosco")
        launcher.await_equal(lambda: self.icon_of(launcher, "Ananas") == generic, True)
        self.assertEqual(self.desktop.log().count("icons are not drawn"), 1)

    def test_the_renderer_is_gone_when_no_icon_was_wanted_for_a_while(self):
        self.desktop.icon("tavo-test-square", RED)
        self.desktop.entry("Ananas", Icon="tavo-test-square")
        launcher = self.launch()
        self.await_colour(launcher, "Ananas", RED)
        self.assertTrue(self.renderers(launcher))
        wait_until(lambda: not self.renderers(launcher), "the renderer to end")
        self.desktop.icon("tavo-test-square", BLUE)
        launcher.press("push button", "Aggiorna app")
        self.await_colour(launcher, "Ananas", BLUE)

    def test_icons_that_were_drawn_before_need_no_renderer(self):
        self.desktop.icon("tavo-test-square", RED)
        self.desktop.entry("Ananas", Icon="tavo-test-square")
        launcher = self.launch()
        self.await_colour(launcher, "Ananas", RED)
        launcher.quit()
        launcher = self.launch()
        self.await_colour(launcher, "Ananas", RED)
        self.assertEqual(self.renderers(launcher), [])

    def renderers(self, launcher):
        """The processes that the launcher has started."""
        return processes_below(launcher.process.pid)


class LiveThemes(IconTest):
    """The theme changes while nothing is touched."""

    def test_on_the_settings_portal(self):
        self.themes()
        address = self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"]
        with settings_portal.SettingsPortal(
                address, {settings_portal.ICON_THEME: GLib.Variant("s", "Rosso")}) as portal:
            launcher = self.launch(XDG_CURRENT_DESKTOP="GNOME")
            self.await_colour(launcher, "Ananas", RED)
            portal.set(settings_portal.ICON_THEME, GLib.Variant("s", "Blu"))
            self.await_colour(launcher, "Ananas", BLUE)

    def test_on_a_portal_that_comes_after_the_window(self):
        self.themes()
        launcher = self.launch(XDG_CURRENT_DESKTOP="GNOME")
        launcher.await_equal(lambda: len(set(self.icon_of(launcher, "Ananas"))) > 1, True)
        address = self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"]
        with settings_portal.SettingsPortal(
                address, {settings_portal.ICON_THEME: GLib.Variant("s", "Blu")}):
            self.await_colour(launcher, "Ananas", BLUE)

    def test_on_xsettings(self):
        self.themes()
        manager = self.manage_settings("Rosso")
        launcher = self.launch(XDG_CURRENT_DESKTOP="XFCE")
        self.await_colour(launcher, "Ananas", RED)
        manager.terminate()
        manager.wait(timeout=20)
        self.manage_settings("Blu")
        self.await_colour(launcher, "Ananas", BLUE)

    def test_on_xsettings_that_change_under_one_manager(self):
        self.themes()
        manager = self.manage_settings("Rosso")
        launcher = self.launch(XDG_CURRENT_DESKTOP="XFCE")
        self.await_colour(launcher, "Ananas", RED)
        self.settings_file("Blu")
        manager.send_signal(1)
        self.await_colour(launcher, "Ananas", BLUE)

    def test_on_kde(self):
        self.themes()
        self.kde_theme("Rosso")
        launcher = self.launch(XDG_CURRENT_DESKTOP="KDE")
        self.await_colour(launcher, "Ananas", RED)
        for theme, colour, signal in (
                ("Blu", BLUE, ("/KIconLoader", "org.kde.KIconLoader.iconChanged", "int32:0")),
                ("Rosso", RED, ("/kdeglobals", "org.kde.kconfig.notify.ConfigChanged"))):
            with self.subTest(signal=signal):
                self.kde_theme(theme)
                self.desktop.run("dbus-send", "--session", "--type=signal", *signal)
                self.await_colour(launcher, "Ananas", colour)

    def kde_theme(self, name):
        folder = self.desktop.home / ".config"
        folder.mkdir(exist_ok=True)
        (folder / "kdeglobals").write_text(f"[Icons]\nTheme={name}\n")

    def settings_file(self, theme):
        path = self.desktop.folder / "xsettingsd.conf"
        path.write_text(f'Net/IconThemeName "{theme}"\n')
        return path

    def manage_settings(self, theme):
        """A manager of X settings that names this theme."""
        manager = self.desktop.start(["xsettingsd", "-c", self.settings_file(theme)],
                                     log="xsettingsd.log")
        def named():
            # It fails while there is no manager.
            with contextlib.suppress(subprocess.CalledProcessError):
                return theme in self.desktop.run("dump_xsettings")
        wait_until(named, "the settings")
        return manager


class HostilePictures(IconTest):
    """One of twenty applications has a picture that is hostile or cannot be had."""

    def pictures(self):
        """The names and the files."""
        folder = self.desktop.folder / "pictures"
        folder.mkdir()

        def svg(content, head=""):
            return (f"{head}<svg xmlns='http://www.w3.org/2000/svg' "
                    "xmlns:xlink='http://www.w3.org/1999/xlink' viewBox='0 0 64 64'>"
                    f"{content}</svg>").encode()

        def put(name, content):
            path = folder / name
            path.write_bytes(content)
            return path

        attributes = " ".join(f"a{i}='1'" for i in range(100_000))
        yield "100,000 attributes", put("attributes.svg", svg(f"<rect {attributes}/>"))
        yield "100,000 uses", put("uses.svg", svg(
            "<g id='a'><circle r='9'/></g>" + "<use xlink:href='#a'/>" * 100_000))
        rules = "".join(f"g{i} > rect:first-child{{fill:red}}" for i in range(30_000))
        yield "1 MB of style rules", put("rules.svg", svg(
            f"<style>{rules}</style>" + "<g><rect/></g>" * 5000))
        gradients = "".join(f"<linearGradient id='g{i}' xlink:href='#g{i - 1}'/>"
                            for i in range(1, 20_000))
        yield "chained gradients", put("gradients.svg", svg(
            f"<linearGradient id='g0'/>{gradients}"
            "<rect width='64' height='64' fill='url(#g19999)'/>"))
        entities = "".join(f"<!ENTITY a{i} '{f'&a{i - 1};' * 10}'>" for i in range(1, 10))
        yield "an entity bomb", put("entities.svg", svg(
            "<title>&a9;</title>", f"<!DOCTYPE svg [<!ENTITY a0 'aaaaaaaaaa'>{entities}]>"))
        yield "external references", put("external.svg", svg(
            "<image width='64' height='64' xlink:href='/etc/hostname'/>",
            "<!DOCTYPE svg [<!ENTITY x SYSTEM 'file:///etc/hostname'>]>"))
        yield "nested svgz", put("nested.svgz", gzip.compress(gzip.compress(svg("<rect/>"))))
        yield "300 MB in 300 KB", put("large.svgz", gzip.compress(svg(" " * 300_000_000), 1))
        yield "PNG of 30,000 x 30,000", put("huge.png", png_of(
            (30_000, 30_000, 1, 0), zlib.compress(bytes(3751 * 30_000), 1)))
        yield "200 MB of text in a PNG", put("text.png", png_of(
            (48, 48, 8, 0), zlib.compress(bytes(49 * 48)),
            (b"zTXt", b"Comment\0\0" + zlib.compress(bytes(200_000_000), 1))))
        pipe = folder / "pipe.png"
        os.mkfifo(pipe)
        yield "a FIFO", pipe
        yield "a device", "/dev/zero"
        yield "a folder", folder
        sparse = put("sparse.png", b"")
        os.truncate(sparse, 4 << 30)
        yield "4 GB of nothing", sparse
        closed = put("closed.png", b"")
        closed.chmod(0)
        yield "an unreadable file", closed

    def test_costs_its_own_icon_and_no_other(self):
        self.desktop.icon("tavo-test-square", RED)
        for number in range(19):
            self.desktop.entry(f"Buona {number:02}", Icon="tavo-test-square")
        cache = self.desktop.home / ".cache/tavolauncher"
        for name, path in self.pictures():
            with self.subTest(name=name):
                self.desktop.entry("A cattiva", Icon=str(path))
                shutil.rmtree(cache, ignore_errors=True)
                start = time.monotonic()
                launcher = self.launch()
                tiles = sorted(launcher.tiles())
                self.assertEqual(len(tiles), 20)
                for tile in tiles[1:12]:
                    self.await_colour(launcher, tile, RED)
                others = time.monotonic() - start
                launcher.await_equal(
                    lambda: len(set(self.icon_of(launcher, "A cattiva"))) > 1, True)
                own = time.monotonic() - start
                self.assertNotEqual(self.colour_of(launcher, "A cattiva"), RED)
                start = time.monotonic()
                self.assertEqual(launcher.quit(), 0)
                print(f"{name:24} others {others:.2f} s, its own {own:.2f} s, "
                      f"quit {time.monotonic() - start:.2f} s")

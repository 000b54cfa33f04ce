"""The window on screens of every scale, on several at once, and on ones that come, go and turn."""

import json
import math
import os
import re
import subprocess

from gi.repository import Atspi, GLib
from harness import PROGRAM, DesktopTest, Launcher, wait_until
from test_desktop_settings import SettingsTest

APP_ID = "org.tavolauncher.TavoLauncher"
SCALES = (1, 1.25, 1.5, 2)


def height_of_row(launcher):
    return launcher.node("list item", "Tutte").get_extents(Atspi.CoordType.SCREEN).height


class ScreensTest(DesktopTest):
    size = (2560, 1600)
    # The monitors of an X server outlive the test that made them.
    own_desktop = True

    def monitor(self, name, width, height, x, y):
        """A monitor of that size there; the first one made takes the server's one output."""
        output = "none" if getattr(self, "monitors", None) else "screen"
        self.monitors = [*getattr(self, "monitors", []), name]
        self.desktop.run("xrandr", "--setmonitor", name,
                         f"{width}/300x{height}/200+{x}+{y}", output)

    def set_resolution(self, dots):
        """As desktops publish it: the scale of the screens and of text, in one number."""
        settings = self.desktop.folder / "xsettingsd.conf"
        settings.write_text(f"Xft/DPI {round(dots * 1024)}\n")
        if hasattr(self, "manager"):
            self.manager.send_signal(1)
            return
        self.manager = self.desktop.start(["xsettingsd", "-c", settings], log="xsettingsd.log")

        def published():
            done = subprocess.run(["dump_xsettings"], env=self.desktop.environment, text=True,
                                  capture_output=True)
            return "Xft/DPI" in done.stdout
        wait_until(published, "the settings")

    def assert_within(self, launcher, left, top, width, height):
        x, y, wide, high = launcher.geometry()
        self.assertTrue(left <= x and top <= y and x + wide <= left + width
                        and y + high <= top + height, launcher.geometry())

    def summon(self):
        self.assertEqual(self.launch(wait=False).process.wait(timeout=20), 0)

    def assert_painted(self, launcher):
        """That the window's last row of pixels, the footer's, is as wide as the window."""
        def painted():
            x, y, width, height = launcher.geometry()
            row = [self.desktop.pixels().at(x + round(width * part), y + height - 4)
                   for part in (0.3, 0.5, 0.8, 0.95)]
            return len(set(row)) == 1 and sum(row[0]) > 0
        wait_until(painted, "a footer from the sidebar to the window's end", seconds=10)


class OneScreen(ScreensTest):
    def test_at_every_scale_it_is_in_the_middle_with_its_usual_size(self):
        self.desktop.entry("Ananas")
        for scale in SCALES:
            with self.subTest(scale=scale):
                self.set_resolution(96 * scale)
                launcher = self.launch()
                x, y, width, height = launcher.geometry()
                self.assertEqual((width, height), (round(980 * scale), round(640 * scale)))
                self.assertLessEqual(abs(x + width / 2 - 1280), 2)
                self.assertLessEqual(abs(y + height / 2 - 800), 2)
                self.assert_painted(launcher)
                self.picture(f"at-{scale}")
                launcher.quit()

    def test_it_follows_when_the_scale_changes_while_it_is_shown(self):
        self.set_resolution(96)
        launcher = self.launch()
        for scale in (1.25, 2, 1.5, 1):
            with self.subTest(scale=scale):
                self.set_resolution(96 * scale)
                wanted = round(980 * scale), round(640 * scale)
                wait_until(lambda: launcher.size() == wanted, f"the size {wanted}")
                self.assert_within(launcher, 0, 0, *self.size)
                self.assert_painted(launcher)

    def test_it_follows_when_the_scale_has_changed_while_it_was_hidden(self):
        self.set_resolution(96)
        launcher = self.launch()
        launcher.close()
        self.set_resolution(192)
        # Once the program has seen it: what else it is asked for comes later.
        self.summon()
        wait_until(lambda: launcher.size() == (1960, 1280), "twice the size")
        self.assert_painted(launcher)

    def test_resolutions_that_make_no_sense_leave_it_within_the_screen(self):
        self.set_resolution(96)
        launcher = self.launch()
        # Qt takes the last but one for a scale of 50, of which nothing but the window can be small.
        for dots in (0, -96, 96 * 50, 96):
            with self.subTest(dots=dots):
                self.set_resolution(dots)
                self.summon()
                launcher.await_active()
                self.assert_within(launcher, 0, 0, *self.size)
                if dots <= 96:
                    wait_until(lambda: height_of_row(launcher) == 34, "rows of the usual height")


class ScaleVariables(ScreensTest):
    own_desktop = False

    def test_those_that_make_no_sense_are_passed_over(self):
        for value in ("nan", "0", "-1", "50", "inf"):
            with self.subTest(value=value):
                launcher = self.launch(QT_SCALE_FACTOR=value, QT_SCREEN_SCALE_FACTORS=value,
                                       QT_FONT_DPI=value)
                self.assertEqual(launcher.size(), (980, 640))
                launcher.quit()

    def test_those_that_do_are_followed(self):
        launcher = self.launch(QT_SCALE_FACTOR="1.5")
        self.assertEqual(launcher.size(), (1470, 960))


class TwoScreens(ScreensTest):
    size = (3200, 1200)
    LEFT = 0, 0, 1600, 1200
    RIGHT = 1600, 0, 1600, 1200

    def setUp(self):
        super().setUp()
        self.monitor("LEFT", *self.LEFT[2:], *self.LEFT[:2])
        self.monitor("RIGHT", *self.RIGHT[2:], *self.RIGHT[:2])

    def point_at_screen(self, screen):
        self.desktop.move_pointer(screen[0] + 30, screen[1] + 30)

    def await_in_middle_of(self, launcher, screen, width, height):
        wanted = (screen[0] + (screen[2] - width) // 2, screen[1] + (screen[3] - height) // 2,
                  width, height)

        def there():
            return all(abs(is_ - should) <= 2 for is_, should in zip(launcher.geometry(), wanted))
        wait_until(there, f"the window at {wanted}")

    def test_summoned_again_it_comes_to_the_screen_with_the_pointer(self):
        launcher = self.launch()
        for hidden in (True, False):
            for screen in (self.RIGHT, self.LEFT):
                with self.subTest(hidden=hidden, screen=screen):
                    if hidden:
                        launcher.close()
                    self.point_at_screen(screen)
                    self.summon()
                    self.await_in_middle_of(launcher, screen, 980, 640)
                    launcher.await_active()

    def test_it_keeps_its_size_and_on_its_own_screen_its_place(self):
        launcher = self.launch()
        window = hex(int(launcher.window_id()))
        self.desktop.run("wmctrl", "-i", "-r", window, "-e", "0,100,50,1100,700")
        wait_until(lambda: launcher.geometry() == (100, 50, 1100, 700), "the window there")
        self.point_at_screen(self.LEFT)
        launcher.close()
        self.summon()
        wait_until(lambda: launcher.geometry() == (100, 50, 1100, 700), "the window there again")
        launcher.close()
        self.point_at_screen(self.RIGHT)
        self.summon()
        self.await_in_middle_of(launcher, self.RIGHT, 1100, 700)

    def test_it_has_the_scale_of_the_screen_that_it_comes_to(self):
        self.desktop.entry("Ananas")
        for number in range(12):
            self.desktop.entry(f"App {number}")
        launcher = self.launch(QT_SCREEN_SCALE_FACTORS="LEFT=1;RIGHT=1.5")
        for hidden in (True, False):
            for screen, scale in ((self.RIGHT, 1.5), (self.LEFT, 1)):
                with self.subTest(hidden=hidden, scale=scale):
                    if hidden:
                        launcher.close()
                    self.point_at_screen(screen)
                    self.summon()
                    self.await_in_middle_of(launcher, screen, round(980 * scale),
                                            round(640 * scale))
                    self.assert_painted(launcher)
                    self.picture(f"two-{scale}-{'hidden' if hidden else 'open'}")

    def test_moved_to_a_screen_of_another_scale_it_keeps_its_size(self):
        self.desktop.entry("Ananas")
        launcher = self.launch(QT_SCREEN_SCALE_FACTORS="LEFT=1;RIGHT=1.5")
        window = hex(int(launcher.window_id()))
        for left, size in ((1700, (1470, 960)), (100, (980, 640)), (1700, (1470, 960))):
            with self.subTest(left=left):
                self.desktop.run("wmctrl", "-i", "-r", window, "-e", f"0,{left},100,-1,-1")
                wait_until(lambda: launcher.size() == size, f"the size {size}")
                self.assert_painted(launcher)

    def test_maximised_it_comes_to_the_screen_with_the_pointer(self):
        self.point_at_screen(self.LEFT)
        launcher = self.launch()
        self.desktop.run("wmctrl", "-i", "-r", hex(int(launcher.window_id())),
                         "-b", "add,maximized_vert,maximized_horz")
        wait_until(lambda: launcher.geometry() == self.LEFT, "the window over the whole screen")
        for hidden, screen in ((False, self.RIGHT), (True, self.LEFT)):
            with self.subTest(hidden=hidden):
                if hidden:
                    launcher.close()
                self.point_at_screen(screen)
                self.summon()
                wait_until(lambda: launcher.geometry() == screen, "the window over the other one")
                launcher.await_active()

    def test_a_screen_that_is_taken_away_leaves_it_whole_on_the_other(self):
        self.point_at_screen(self.RIGHT)
        launcher = self.launch()
        self.await_in_middle_of(launcher, self.RIGHT, 980, 640)
        self.desktop.run("xrandr", "--delmonitor", "RIGHT")
        wait_until(lambda: launcher.geometry()[0] + 980 <= 1600, "the window on the left")
        self.assert_within(launcher, *self.LEFT)

    def test_a_screen_that_is_turned_while_it_is_closed_has_it_whole(self):
        self.point_at_screen(self.RIGHT)
        launcher = self.launch()
        self.await_in_middle_of(launcher, self.RIGHT, 980, 640)
        launcher.close()
        self.desktop.run("xrandr", "--delmonitor", "RIGHT")
        self.desktop.run("xrandr", "--setmonitor", "RIGHT", "700/200x1200/300+1600+0", "none")

        def narrow():
            # The X server tells of the screens whenever it does; before, it comes to another one.
            self.summon()
            if launcher.size() == (700, 640):
                return True
            launcher.close()
            return False
        wait_until(narrow, "a window as narrow as the screen")
        self.assert_within(launcher, 1600, 0, 700, 1200)
        self.picture("narrow")

    def test_screens_that_come_and_go_while_it_is_shown_do_it_no_harm(self):
        launcher = self.launch()
        for _ in range(4):
            launcher.close()
            shown = self.desktop.start([PROGRAM], self.desktop.hermetic)
            self.desktop.run("xrandr", "--delmonitor", "RIGHT")
            self.desktop.run("xrandr", "--setmonitor", "RIGHT", "1600/300x1200/200+1600+0", "none")
            self.assertEqual(shown.wait(timeout=20), 0)
            launcher.await_active()
            self.assert_within(launcher, 0, 0, *self.size)


class SmallScreen(ScreensTest):
    size = (640, 400)
    own_desktop = False

    def test_it_is_no_larger_than_the_screen(self):
        self.desktop.entry("Ananas")
        launcher = self.launch()
        launcher.await_place((0, 0, 640, 400))
        self.picture("small")
        launcher.press("push button", "Modifica categorie")
        launcher.await_node("dialog", "Modifica categorie")
        self.picture("small-editor")
        for name in ("Salva", "Annulla", "Aggiungi"):
            box = launcher.await_node("push button", name).get_extents(0)
            self.assertTrue(0 <= box.x and box.x + box.width <= 640 and 0 <= box.y
                            and box.y + box.height <= 400, (name, box.x, box.y, box.width, box.height))


class SmallScreenUnderXfwm4(SmallScreen):
    wm = "xfwm4 --compositor=on"


class TextSize(SettingsTest):
    """As the settings portal tells it. On X11 that counts where no X settings have it."""

    SCALING = "org.gnome.desktop.interface", "text-scaling-factor"

    def test_it_is_followed_at_once_and_nonsense_is_the_usual_one(self):
        portal = self.portal({self.SCALING: GLib.Variant("d", 1.5)})
        launcher = self.launch()
        for scale, height in ((1.5, 42), (2, 50), (0, 34), (1.25, 38), (-1, 34), (2, 50), (50, 34),
                              (1.25, 38), (float("nan"), 34), (1, 34)):
            with self.subTest(scale=scale):
                portal.set(self.SCALING, GLib.Variant("d", scale))
                wait_until(lambda: height_of_row(launcher) == height, f"rows {height} high")
                self.assertEqual(launcher.size(), (980, 640))


class TwoOutputs(SettingsTest):
    """Sway without a screen, with an output of scale 1 and one of scale 1.5. The compositor places
    the window, so it is the output with the focus that it comes to."""

    wm = None

    def setUp(self):
        if os.geteuid() == 0:
            self.skipTest("sway refuses to run as root")
        super().setUp()
        settings = self.desktop.folder / "sway.conf"
        settings.write_text("xwayland disable\n"
                            "output HEADLESS-1 mode 1280x900 scale 1 pos 0 0\n"
                            "output HEADLESS-2 mode 1920x1350 scale 1.5 pos 1280 0\n"
                            f"for_window [app_id={APP_ID}] floating enable\n")
        self.desktop.start(
            ["sway", "-c", settings],
            {"WLR_BACKENDS": "headless", "WLR_HEADLESS_OUTPUTS": "2", "WLR_RENDERER": "pixman",
             "WLR_LIBINPUT_NO_DEVICES": "1"}, log="sway.log")
        run = self.desktop.folder / "run"
        socket = wait_until(lambda: next(run.glob("sway-ipc.*.sock"), None), "sway")
        display = wait_until(lambda: next(run.glob("wayland-?"), None), "sway's display")
        self.session = {"SWAYSOCK": str(socket), "WAYLAND_DISPLAY": display.name,
                        "XDG_CURRENT_DESKTOP": "sway", "WAYLAND_DEBUG": "client"}
        wait_until(lambda: len(self.said("get_outputs")) == 2, "two outputs")

    def start_there(self):
        environment = {**self.desktop.environment, **self.desktop.hermetic, **self.session}
        words = ["env", "-u", "DISPLAY", *(f"{name}={value}" for name, value in environment.items()
                                           if name != "DISPLAY"), PROGRAM]
        return self.desktop.start(words)

    def said(self, question):
        done = subprocess.run(["swaymsg", "-t", question, "-r"], capture_output=True, text=True,
                              env={**self.desktop.environment, **self.session})
        return json.loads(done.stdout) if done.returncode == 0 else []

    def tell(self, command):
        subprocess.run(["swaymsg", command], check=True, capture_output=True,
                       env={**self.desktop.environment, **self.session})

    def window(self):
        """Name of the output that the window is on, and its size; nothing while it is not shown."""
        open_ = [(node, None) for node in [self.said("get_tree")] if node]
        while open_:
            node, output = open_.pop()
            output = node["name"] if node["type"] == "output" else output
            if node.get("app_id") == APP_ID:
                return output, node["rect"]["width"], node["rect"]["height"]
            open_ += [(below, output) for below in node["nodes"] + node["floating_nodes"]]
        return None

    def await_window(self, *wanted):
        try:
            wait_until(lambda: self.window() == wanted, f"the window {wanted}", seconds=20)
        except Exception as error:
            raise AssertionError(f"the window is {self.window()}, not {wanted}") from error

    def await_scale(self, scale):
        """Awaits that the program paints its window at that scale. Qt 6.8 does so at any scale that
        the compositor prefers, into buffers of as many pixels as that makes of the window. Earlier
        ones paint at the next whole scale, and the compositor makes that smaller."""
        def painted():
            log = self.desktop.log()
            if "preferred_scale(" not in log:
                whole = re.findall(r"wl_surface[@#]\d+\.set_buffer_scale\((\d+)\)", log)
                return (whole or ["1"])[-1] == str(math.ceil(scale))
            *_, preferred, after = re.split(r"_scale_v1[@#]\d+\.preferred_scale\((\d+)\)", log)
            windows = re.findall(r"wp_viewport[@#]\d+\.set_destination\((\d+),", after)
            buffers = re.findall(r"\.create_buffer\(new id wl_buffer[@#]\d+, \d+, (\d+),", after)
            return preferred == str(round(scale * 120)) and any(
                abs(int(pixels) - int(points) * scale) <= 1
                for points in windows[-1:] for pixels in buffers)
        wait_until(painted, f"the scale {scale}")

    def close_window(self):
        self.tell(f"[app_id={APP_ID}] kill")
        wait_until(lambda: self.window() is None, "the window to go")

    def test_summoned_again_it_is_on_the_output_with_the_focus_at_its_scale(self):
        self.tell("focus output HEADLESS-1")
        program = self.start_there()
        self.await_window("HEADLESS-1", 980, 640)
        for output, scale in (("HEADLESS-2", 1.5), ("HEADLESS-1", 1), ("HEADLESS-2", 1.5)):
            with self.subTest(output=output):
                self.close_window()
                self.tell(f"focus output {output}")
                self.assertEqual(self.start_there().wait(timeout=20), 0)
                # It is smaller where 980 × 640 has no room, which is on none of these two.
                self.await_window(output, 980, 640)
                self.await_scale(scale)
        self.assertIsNone(program.poll())

    def test_moved_to_the_other_output_it_has_its_scale_and_its_size(self):
        self.tell("focus output HEADLESS-1")
        self.start_there()
        self.await_window("HEADLESS-1", 980, 640)
        self.tell(f"[app_id={APP_ID}] move container to output HEADLESS-2")
        self.await_window("HEADLESS-2", 980, 640)
        self.await_scale(1.5)

    def test_at_every_scale_of_its_output_it_has_its_usual_size(self):
        self.tell("focus output HEADLESS-2")
        self.tell("output HEADLESS-2 mode --custom 2560x1800")
        for scale in SCALES:
            with self.subTest(scale=scale):
                self.tell(f"output HEADLESS-2 scale {scale}")
                program = self.start_there()
                self.await_window("HEADLESS-2", 980, 640)
                self.await_scale(scale)
                # Not asked to end: Qt leaves its proxies of the outputs behind then, and the
                # address sanitizer says so.
                program.kill()
                program.wait(timeout=20)
                wait_until(lambda: self.window() is None, "the window to go")

    def test_the_size_of_text_is_followed(self):
        scaling = TextSize.SCALING
        portal = self.portal({scaling: GLib.Variant("d", 1.0)})
        self.tell("focus output HEADLESS-1")
        process = self.start_there()
        launcher = Launcher(self.desktop, process)
        row = launcher.await_node("list item", "Tutte").get_extents(Atspi.CoordType.WINDOW)
        for scale, growth in ((2, 16), (0, 0), (1.5, 8), (50, 0)):
            with self.subTest(scale=scale):
                portal.set(scaling, GLib.Variant("d", scale))

                def right():
                    box = launcher.node("list item", "Tutte").get_extents(Atspi.CoordType.WINDOW)
                    return box.height == row.height + growth
                wait_until(right, f"rows {growth} higher", seconds=10)

import contextlib
import subprocess

import settings_portal
from harness import DesktopTest, wait_until

BLUR = "_KDE_NET_WM_BLUR_BEHIND_REGION"


class Appearance(DesktopTest):
    """The desktop's settings and its compositor may change at any time."""

    def ground(self, place):
        """The colour that the screen has between toolbar and grid of a window at that place."""
        x, y = place[0] + 500, place[1] + 100
        words = self.desktop.run("import", "-window", "root", "-crop", f"1x1+{x}+{y}", "-depth", "8",
                                 "txt:-").splitlines()[-1]
        return tuple(int(number) for number in words[words.index("(") + 1:].split(")")[0].split(","))

    def await_ground(self, launcher, dark):
        """Waits until the window's ground is as dark as that."""
        place = launcher.place()
        wait_until(lambda: (max(self.ground(place)) < 80) == dark,
                   "a dark window" if dark else "a light window")

    def portal(self, values=()):
        """One that answers with these values."""
        address = self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"]
        portal = settings_portal.SettingsPortal(address, values)
        portal.__enter__()
        self.addCleanup(portal.__exit__, None, None, None)
        return portal

    def test_the_window_turns_dark_and_light_with_the_desktop(self):
        portal = self.portal()
        launcher = self.launch()
        self.await_ground(launcher, dark=False)
        portal.set(settings_portal.COLOR_SCHEME, settings_portal.DARK)
        self.await_ground(launcher, dark=True)
        portal.set(settings_portal.COLOR_SCHEME, settings_portal.LIGHT)
        self.await_ground(launcher, dark=False)

    def test_the_window_is_dark_where_the_desktop_is_already(self):
        self.portal({settings_portal.COLOR_SCHEME: settings_portal.DARK})
        launcher = self.launch()
        self.await_ground(launcher, dark=True)

    def edge(self, place):
        """Whether a line parts the sidebar from the grid."""
        seen = self.desktop.pixels()
        x, y = place[0] + 200, place[1] + 300
        return max(abs(one - other) for one, other in zip(seen.at(x, y), seen.at(x + 3, y))) > 60

    def test_more_contrast_is_there_when_the_user_wants_it_and_follows(self):
        portal = self.portal({settings_portal.COLOR_SCHEME: settings_portal.DARK,
                              settings_portal.CONTRAST: settings_portal.MORE})
        launcher = self.launch()
        place = launcher.place()
        wait_until(lambda: self.edge(place), "a line beside the sidebar")
        for scheme, dark in ((settings_portal.DARK, True), (settings_portal.LIGHT, False)):
            portal.set(settings_portal.COLOR_SCHEME, scheme)
            self.await_ground(launcher, dark)
            portal.set(settings_portal.CONTRAST, settings_portal.NONE)
            wait_until(lambda: not self.edge(place), "no line beside the sidebar")
            portal.set(settings_portal.CONTRAST, settings_portal.MORE)
            wait_until(lambda: self.edge(place), "a line beside the sidebar again")

    def compositor(self):
        """Starts one; a real one, so that what is on the screen can be looked at."""
        return self.desktop.start(["picom", "--backend", "xrender", "--config", "/dev/null"],
                                  log="compositor.log")

    def test_a_compositor_that_comes_and_goes_takes_neither_window_nor_keyboard(self):
        self.desktop.entry("Ananas")
        self.desktop.entry("Ciliege")
        launcher = self.launch()
        launcher.await_tiles(["Ananas", "Ciliege"])
        place = launcher.place()
        opaque = self.ground(place)
        def blended():
            # Another window takes the place of the first one meanwhile.
            with contextlib.suppress(subprocess.CalledProcessError):
                return self.is_blended(launcher)
        for typed, left in (("a", ["Ananas"]), ("an", ["Ananas"]),
                            ("ana", ["Ananas"]), ("anan", ["Ananas"])):
            with self.subTest(typed=typed):
                compositor = self.compositor()
                wait_until(blended, "a window that is blended")
                launcher.await_place(place)
                launcher.await_active()
                wait_until(lambda: self.is_accessory(launcher), "no entry in the taskbar")
                self.desktop.type(typed[-1])
                launcher.await_tiles(left)
                launcher.await_equal(launcher.search_text, typed)
                self.assertEqual(self.ground(place), opaque)
                compositor.terminate()
                compositor.wait(timeout=20)
                wait_until(lambda: not blended(), "a window whose corners are cut")
                # No contour behind it shows, with a compositor and without.
                self.assertEqual(self.ground(place), opaque)
                launcher.await_place(place)
                launcher.await_active()

    def test_blur_is_asked_for_behind_the_window_while_the_compositor_offers_it(self):
        self.desktop.run("xprop", "-root", "-f", BLUR, "32c", "-set", BLUR, "0")
        launcher = self.launch()
        self.assertIsNone(self.blurred(launcher))
        width, height = launcher.size()
        self.compositor()

        def region():
            # Another window takes the place of the first one meanwhile.
            with contextlib.suppress(subprocess.CalledProcessError):
                return self.blurred(launcher)

        rectangles = wait_until(region, "a region")
        covers = [any(left <= x < left + w and top <= y < top + h
                      for left, top, w, h in rectangles)
                  for x, y in ((width // 2, height // 2), (width // 2, 0), (0, height // 2), (1, 1),
                               (width - 2, 1), (1, height - 2), (width - 2, height - 2))]
        self.assertEqual(covers, [True, True, True, False, False, False, False])

    def blurred(self, launcher):
        """The rectangles behind which the window asks for blur, or None."""
        said = self.desktop.run("xprop", "-id", launcher.window_id(), BLUR)
        if "=" not in said:
            return None
        numbers = [int(number) for number in said.split("=")[1].split(",")]
        return [tuple(numbers[at:at + 4]) for at in range(0, len(numbers), 4)]

    def is_blended(self, launcher):
        said = self.desktop.run("xwininfo", "-id", launcher.window_id(), "-stats", "-shape")
        return "Depth: 32" in said and "No window shape defined" in said

    def is_accessory(self, launcher):
        said = self.desktop.run("xprop", "-id", launcher.window_id(), "_NET_WM_STATE")
        return "SKIP_TASKBAR" in said and "SKIP_PAGER" in said


class AppearanceUnderXfwm4(Appearance):
    wm = "xfwm4 --compositor=off"

"""Applets: bundles whose program only starts a script, whose window is the one that users want."""

import shutil
import time

from harness import DesktopTest, wait_until
from test_launching import alert_of, texts_of
from windows import is_in_front, show_window, windows_called

# Left behind by the window manager, so that in front it is by the launcher's doing alone.
SHOW_WINDOW = show_window("Ananas di script", modest=True)

NO_WINDOW = "Velumo non ha mostrato la sua finestra. Controlla che la sua installazione sia completa."


class Applets(DesktopTest):
    def setUp(self):
        super().setUp()
        self.python = self.desktop.programs / "Python"
        shutil.copy(shutil.which("python3", path="/usr/bin"), self.python)

    def applet(self, seconds, script):
        """A bundle whose program leaves a mark, and later starts Python with the script; answers
        the mark."""
        mark = self.desktop.folder / "applet.ran"
        contents = self.desktop.home / "Applications/Ananas.app/Contents"
        for folder in ("MacOS", "Resources"):
            (contents / folder).mkdir(parents=True)
        source = contents / "Resources/Ananas.py"
        source.write_text(script)
        program = contents / "MacOS/applet"
        program.write_text(f"#!/bin/sh\necho x >>'{mark}'\nsleep {seconds}\n"
                           f"exec '{self.python}' '{source}'\n")
        program.chmod(0o755)
        (contents / "Info.plist").write_text(
            '<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0"><dict>\n'
            "<key>CFBundleExecutable</key><string>applet</string>\n</dict></plist>\n")
        return mark

    def window(self):
        """The script's window, once it is shown, or None."""
        return next(iter(windows_called(self.desktop, "Ananas di script")), None)

    def in_front(self):
        window = self.window()
        return window is not None and is_in_front(self.desktop, window)

    def await_fronted(self):
        wait_until(self.window, "the script's window")
        shown = time.monotonic()
        wait_until(self.in_front, "the script's window in front")
        print(f"in front {1000 * (time.monotonic() - shown):.0f} ms after it was seen first")

    def test_the_window_that_an_applets_script_shows_after_seconds_is_fronted(self):
        self.applet(3, SHOW_WINDOW)
        launcher = self.launch()
        launcher.press("list item", "Apri Ananas")
        self.await_fronted()
        self.assertIsNone(alert_of(launcher))

    def test_a_script_that_runs_a_second_before_its_window_is_fronted_with_it(self):
        self.applet(1, "import time\ntime.sleep(1)\n" + SHOW_WINDOW)
        launcher = self.launch()
        launcher.press("list item", "Apri Ananas")
        self.await_fronted()
        self.assertIsNone(alert_of(launcher))

    def test_an_applet_whose_script_runs_is_fronted_and_not_opened_again(self):
        mark = self.applet(0, SHOW_WINDOW)
        launcher = self.launch()
        launcher.press("list item", "Apri Ananas")
        self.await_fronted()
        self.desktop.run("wmctrl", "-i", "-a", hex(int(launcher.window_id())))
        launcher.await_active()
        launcher.press("list item", "Apri Ananas")
        self.await_fronted()
        self.assertEqual(mark.read_text(), "x\n")

    def test_a_script_that_never_shows_a_window_is_told_after_ten_seconds(self):
        self.applet(0, "import time\ntime.sleep(600)\n")
        launcher = self.launch()
        launcher.press("list item", "Apri Ananas")
        pressed = time.monotonic()
        launcher.await_node("label", NO_WINDOW)
        waited = time.monotonic() - pressed
        print(f"told after {waited:.1f} s")
        # The last of 41 checks, a quarter of a second apart; the press itself takes a moment.
        self.assertGreater(waited, 9.5)
        self.assertIn(NO_WINDOW, texts_of(alert_of(launcher)))


class AppletsUnderXfwm4(Applets):
    wm = "xfwm4"

"""Clicks on applications that run, that are starting, and that the user has left meanwhile."""

import os
import re

from harness import DesktopTest, wait_until
from windows import (active_window, ids, is_in_front, is_minimised, show_window, windows_called)


class Fronting(DesktopTest):
    def setUp(self):
        super().setUp()
        self.other = self.show("Altra", class_name="altra")

    def show(self, title, **options):
        """Shows a window by a program that the launcher does not know; answers its id."""
        source = self.desktop.programs / f"{title}.py"
        source.write_text(show_window(title, **options))
        self.desktop.start(["/usr/bin/python3", source])
        return self.await_window(title)

    def await_window(self, title):
        return wait_until(lambda: windows_called(self.desktop, title), f"the window {title}")[0]

    def entry(self, name, titles=None, wait="", command='"{}"', class_name="", **keys):
        """An entry whose program leaves a mark, reads `wait` if there is one, and shows windows of
        these titles; answers the mark."""
        source = self.desktop.programs / f"{name}.py"
        source.write_text(show_window(*(titles or [name]), class_name=class_name, modest=True))
        mark = self.desktop.folder / f"{name}.ran"
        wait = f"read line <'{wait}'" if wait else ""
        program = self.desktop.script(
            name, f"echo \"id=$DESKTOP_STARTUP_ID\" >>'{mark}'\n{wait}\n"
                  f"exec /usr/bin/python3 '{source}'")
        self.desktop.entry(name, Exec=command.format(program), **keys)
        return mark

    def activate(self, window):
        self.desktop.run("wmctrl", "-i", "-a", hex(int(window)))
        wait_until(lambda: active_window(self.desktop) == int(window), "the window to be active")

    def click(self, launcher, name, *options):
        """As the user does: turns to the launcher, and clicks."""
        self.activate(launcher.window_id())
        launcher.await_active()
        self.desktop.point_at(launcher.await_node("list item", f"Apri {name}"))
        self.desktop.xdo("click", *options, 1)

    def start_by_click(self, launcher, name, *options):
        """Answers the application's window, which is in front."""
        self.click(launcher, name, *options)
        window = self.await_window(name)
        self.await_front(window)
        return window

    def front_by_click(self, launcher, name, window):
        """From another program, which the user has turned to meanwhile."""
        self.activate(self.other)
        self.click(launcher, name)
        self.await_front(window)

    def await_front(self, window):
        wait_until(lambda: is_in_front(self.desktop, window), "the window in front")

    def await_in_log(self, log, text, times=1):
        wait_until(lambda: self.desktop.log(log).count(text) >= times, f"{text} in {log}")

    def runs(self, mark):
        return len(mark.read_text().splitlines())

    def test_a_click_starts_and_another_click_fronts(self):
        mark = self.entry("Ananas")
        launcher = self.launch()
        window = self.start_by_click(launcher, "Ananas")
        self.front_by_click(launcher, "Ananas", window)
        self.assertEqual(self.runs(mark), 1)

    def test_all_minimised_windows_are_restored_the_upper_one_active(self):
        mark = self.entry("Ananas", titles=["Primo", "Secondo"], class_name="ananas")
        launcher = self.launch()
        self.click(launcher, "Ananas")
        windows = [self.await_window(title) for title in ("Primo", "Secondo")]
        wait_until(lambda: active_window(self.desktop) in windows, "the application in front")
        for window in windows:
            self.activate(window)
        for window in windows:
            self.desktop.xdo("windowminimize", window)
            wait_until(lambda: is_minimised(self.desktop, window), "the window to be minimised")
        self.activate(self.other)
        self.click(launcher, "Ananas")
        wait_until(lambda: not any(is_minimised(self.desktop, each) for each in windows),
                   "both windows")
        wait_until(lambda: active_window(self.desktop) in windows, "one of them to be active")
        # Which one was the upper one, of two that are minimised, is the manager's to say.
        self.assertEqual(set(ids(self.desktop, "_NET_CLIENT_LIST_STACKING")[-2:]), set(windows))
        self.assertEqual(self.runs(mark), 1)

    def test_an_application_on_another_desktop_is_gone_to(self):
        mark = self.entry("Ananas")
        launcher = self.launch()
        window = self.start_by_click(launcher, "Ananas")
        self.desktop.xdo("set_desktop_for_window", window, 1)
        self.front_by_click(launcher, "Ananas", window)
        self.assertEqual(self.desktop.xdo("get_desktop"), "1")
        self.assertEqual(self.runs(mark), 1)

    def test_a_slow_program_takes_no_focus_from_a_user_who_has_gone_on(self):
        go_on = self.desktop.folder / "go-on"
        os.mkfifo(go_on)
        mark = self.entry("Lumaca", wait=go_on, StartupNotify="true")
        self.entry("Celere")
        self.desktop.start(["xev", "-root"], log="root.log")
        launcher = self.launch()
        self.click(launcher, "Lumaca")
        self.await_file(mark)
        self.activate(self.other)
        self.desktop.start(["xprop", "-root", "-spy", "_NET_ACTIVE_WINDOW"], log="active.log")
        self.await_in_log("active.log", hex(self.other))
        go_on.write_text("now\n")
        slow = self.await_window("Lumaca")
        # Its start is announced, and that it is over, which is when it would have come to the front.
        self.await_in_log("root.log", "_NET_STARTUP_INFO_BEGIN", times=2)
        # What is started after it comes to the front when it would have.
        quick = self.start_by_click(launcher, "Celere")
        self.await_in_log("active.log", hex(quick))
        self.assertNotIn(hex(slow), self.desktop.log("active.log"))

    def test_a_program_that_a_shell_waits_for_is_started_once_and_fronted(self):
        mark = self.entry("Ananas", command='sh -c "{} ; true"')
        launcher = self.launch()
        window = self.start_by_click(launcher, "Ananas", "--repeat", 2, "--delay", 80)
        self.front_by_click(launcher, "Ananas", window)
        self.assertEqual(self.runs(mark), 1)

    def test_a_left_over_name_of_a_compositor_changes_nothing(self):
        mark = self.entry("Ananas", StartupNotify="true")
        launcher = self.launch(WAYLAND_DISPLAY="wayland-77")
        window = self.start_by_click(launcher, "Ananas")
        self.assertRegex(mark.read_text(), re.compile(r"id=tavo-.*_TIME\d+"))
        self.front_by_click(launcher, "Ananas", window)
        self.assertEqual(self.runs(mark), 1)


class FrontingUnderXfwm4(Fronting):
    wm = "xfwm4"

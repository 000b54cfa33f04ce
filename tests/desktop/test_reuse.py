"""What one test leaves on the desktop, the next one does not find."""

import os
import pathlib
import signal

import reuse
from harness import DesktopTest, processes_below, wait_until
from windows import ids, show_window


class Reuse(DesktopTest):
    def setUp(self):
        super().setUp()
        self.addCleanup(setattr, self.desktop.origin, "patience", self.desktop.origin.patience)
        self.desktop.origin.patience = 0.5

    def restore(self):
        self.desktop.origin.restore()

    def contents(self):
        return sorted(str(path) for path in self.desktop.folder.rglob("*")
                      if not path.is_relative_to(self.desktop.font_cache))

    def process(self, name):
        return next(pid for pid in processes_below(os.getpid())
                    if name in pathlib.Path(f"/proc/{pid}/cmdline").read_bytes())

    def assert_refused(self, why):
        with self.assertRaisesRegex(reuse.Changed, why):
            self.restore()

    def test_programs_and_windows_of_a_test_are_gone(self):
        source = self.desktop.programs / "windows.py"
        source.write_text(show_window("One", "Two"))
        before = set(processes_below(os.getpid()))
        self.desktop.start(["/usr/bin/python3", source])
        wait_until(lambda: len(ids(self.desktop, "_NET_CLIENT_LIST")) == 2, "the windows")
        stopped = self.desktop.start(["sleep", "600"])
        stopped.send_signal(signal.SIGSTOP)
        orphan = self.desktop.script("orphan", "sleep 600 >/dev/null 2>&1 &")
        self.desktop.run(orphan)
        self.restore()
        self.assertEqual(set(processes_below(os.getpid())), before)
        self.assertEqual(ids(self.desktop, "_NET_CLIENT_LIST"), [])

    def test_what_the_program_stored_and_what_was_installed_is_gone(self):
        before = self.contents()
        self.desktop.marking_entry("Ananas")
        self.desktop.icon("ananas")
        self.desktop.bundle("Fagotto", "true")
        closed = self.desktop.home / "closed/within"
        closed.mkdir(parents=True)
        closed.parent.chmod(0)
        self.desktop.data.chmod(0o500)
        self.launch().press("list item", "Apri Ananas")
        wait_until(self.desktop.store.path.exists, "the store")
        self.restore()
        self.assertEqual(self.contents(), before)
        self.assertEqual(self.desktop.log(), "")
        self.assertEqual(self.desktop.data.stat().st_mode & 0o777, 0o755)

    def test_pointer_desktop_and_properties_of_the_screen_are_as_they_were(self):
        before = self.desktop.pointer()
        self.desktop.move_pointer(3, 4)
        self.desktop.xdo("set_desktop", 2)
        self.desktop.run("xprop", "-root", "-f", "LEFT", "8s", "-set", "LEFT", "x")
        self.restore()
        self.assertEqual(self.desktop.pointer(), before)
        self.assertEqual(self.desktop.xdo("get_desktop"), "0")
        self.assertNotIn("LEFT", self.desktop.run("xprop", "-root"))

    def test_variables_for_programs_are_as_they_were(self):
        before = dict(self.desktop.environment), dict(self.desktop.hermetic)
        self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent"
        self.desktop.hermetic["LEFT"] = "x"
        self.restore()
        self.assertEqual((self.desktop.environment, self.desktop.hermetic), before)

    def test_services_that_a_test_made_known_to_the_bus_are_forgotten(self):
        services = pathlib.Path(self.desktop.environment["XDG_DATA_HOME"]) / "dbus-1/services"
        services.mkdir(parents=True)
        (services / "org.example.Left.service").write_text(
            "[D-BUS Service]\nName=org.example.Left\nExec=/bin/true\n")
        bus = ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/"]
        self.desktop.run(*bus, "org.freedesktop.DBus.ReloadConfig")
        known = [*bus, "org.freedesktop.DBus.ListActivatableNames"]
        self.assertIn("org.example.Left", self.desktop.run(*known))
        self.restore()
        self.assertNotIn("org.example.Left", self.desktop.run(*known))

    def test_a_held_key_or_button_is_not_handed_on(self):
        for press, release, what in ((["keydown", "shift"], ["keyup", "shift"], "held keys"),
                                     (["mousedown", 3], ["mouseup", 3], "modifiers and buttons")):
            with self.subTest(what):
                self.desktop.xdo(*press)
                self.assert_refused(what)
                self.desktop.xdo(*release)
                self.restore()

    def test_another_keyboard_is_not_handed_on(self):
        self.desktop.run("setxkbmap", "de")
        self.assert_refused("meaning of the keys")

    def test_a_desktop_without_its_window_manager_is_not_handed_on(self):
        manager = self.process(b"openbox")
        os.kill(manager, signal.SIGKILL)
        wait_until(lambda: manager not in processes_below(os.getpid()), "the end of openbox")
        self.assert_refused("has ended")

    def test_a_stopped_bus_is_not_handed_on(self):
        bus = self.process(b"--print-address=")
        os.kill(bus, signal.SIGSTOP)
        self.addCleanup(os.kill, bus, signal.SIGCONT)
        self.assert_refused("was stopped")

    def test_a_failed_test_hands_nothing_on(self):
        self.succeeded = False
        self._leave_desktop()
        self.assertTrue(self.process_is_used_up())
        self.assertFalse(self.desktop.folder.exists())


class Fonts(DesktopTest):
    def test_the_interface_font_is_the_same_on_every_machine(self):
        for family in ("", "sans-serif", "Sans Serif", "Helvetica", "No Such Family"):
            with self.subTest(family):
                self.assertEqual(self.desktop.run("fc-match", "-f", "%{family}", family),
                                 "DejaVu Sans")
        self.assertEqual(self.desktop.run("fc-match", "-f", "%{family}", "monospace"),
                         "DejaVu Sans Mono")

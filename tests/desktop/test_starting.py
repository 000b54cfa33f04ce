"""The seconds in which an application starts, and a session bus that keeps it waiting."""

import os
import pathlib
import signal

from harness import Atspi, DesktopTest, await_node, processes_below, wait_until
from test_launching import alert_of, texts_of

SERVICE = "org.example.Silent"
RUNNING = "org.example.Running"


def command_of(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/cmdline").read_bytes().decode(errors="replace")
    except OSError:
        return ""


class Starting(DesktopTest):
    def lasting_program(self, name):
        """A program that shows no window and goes on."""
        begun = self.desktop.folder / f"{name}.begun"
        return self.desktop.script(name, f"echo x >'{begun}'; sleep 600"), begun

    def running(self, program):
        return [pid for pid in processes_below(os.getpid()) if str(program) in command_of(pid)]

    def silent_service(self):
        """An entry to be activated over the bus, whose service never takes its name."""
        program, begun = self.lasting_program("silent-service")
        services = pathlib.Path(self.desktop.environment["XDG_DATA_HOME"]) / "dbus-1/services"
        services.mkdir(parents=True)
        (services / f"{SERVICE}.service").write_text(
            f"[D-BUS Service]\nName={SERVICE}\nExec={program}\n")
        self.desktop.run("dbus-send", "--session", "--print-reply",
                         "--dest=org.freedesktop.DBus", "/", "org.freedesktop.DBus.ReloadConfig")
        self.desktop.entry("Silenzio", id=SERVICE, DBusActivatable="true")
        return begun

    def stop_bus(self):
        """The session's bus, not that of accessibility, which answers this test."""
        bus = next(pid for pid in processes_below(os.getpid())
                   if command_of(pid).startswith("dbus-daemon")
                   and "--print-address" in command_of(pid))
        os.kill(bus, signal.SIGSTOP)
        self.addCleanup(os.kill, bus, signal.SIGCONT)
        return bus

    def await_answers(self, launcher):
        """The window takes what is typed, and shows what comes of it."""
        before = self.desktop.pixels()
        box = launcher.await_node("list", "App").get_extents(Atspi.CoordType.SCREEN)
        self.desktop.type("zep")
        launcher.await_tiles(["Zeppelin"])
        self.assertEqual(launcher.search_text(), "zep")
        wait_until(lambda: self.desktop.pixels().differ_in(before, box), "the window to repaint")

    def test_a_double_click_on_a_tile_starts_one_program(self):
        program, begun = self.lasting_program("doppio")
        self.desktop.entry("Doppio", Exec=str(program))
        _, other = self.desktop.marking_entry("Zeppelin")
        launcher = self.launch()
        self.desktop.point_at(launcher.await_node("list item", "Apri Doppio"))
        self.desktop.xdo("click", "--repeat", "2", "--delay", "60", "1")
        self.await_file(begun)
        # Starts come one after the other: once this one has come, both clicks have had their turn.
        launcher.press("list item", "Apri Zeppelin")
        self.await_file(other)
        self.assertEqual(len(self.running(program)), 1)

    def test_the_window_answers_while_a_service_does_not(self):
        begun = self.silent_service()
        self.desktop.entry("Zeppelin")
        launcher = self.launch()
        launcher.press("list item", "Apri Silenzio")
        self.await_file(begun)
        self.await_answers(launcher)
        self.assertIsNone(alert_of(launcher))

    def test_the_window_answers_while_the_bus_does_not(self):
        self.silent_service()
        _, mark = self.desktop.marking_entry("Zeppelin")
        launcher = self.launch()
        launcher.await_tiles(["Silenzio", "Zeppelin"])
        self.stop_bus()
        launcher.press("list item", "Apri Silenzio")
        self.await_answers(launcher)
        alert = await_node(lambda: alert_of(launcher), "the alert")
        self.assertTrue(any("il bus di sessione non risponde" in text for text in texts_of(alert)),
                        texts_of(alert))
        self.desktop.key("Return")
        launcher.await_equal(lambda: alert_of(launcher), None)
        # What needs no bus starts all the same.
        launcher.press("list item", "Apri Zeppelin")
        self.await_file(mark)

    def running_service(self):
        """An application that has its name on the bus and says what it is told, and an entry to
        activate it by; answers the file that shows when the entry's command was run instead."""
        mark = self.desktop.folder / "command.ran"
        command = self.desktop.script("command", f"echo x >'{mark}'")
        self.desktop.entry("Servizio", id=RUNNING, DBusActivatable="true", Exec=str(command))
        self.desktop.start(["/usr/bin/python3", "-W", "ignore",
                            pathlib.Path(__file__).with_name("application_stand_in.py"), RUNNING],
                           log="service.log")
        wait_until(lambda: "ready" in self.desktop.log("service.log"), "the service")
        return mark

    def test_a_bus_that_answers_only_after_our_start_is_used_from_then_on(self):
        mark = self.running_service()
        bus = self.stop_bus()
        # The test cannot read the window: Qt has looked for that bus, and found none.
        self.launch(wait=False).await_active()
        os.kill(bus, signal.SIGCONT)
        self.desktop.type("serv")
        self.desktop.key("Return")
        wait_until(lambda: "desktop-startup-id" in self.desktop.log("service.log")
                   or mark.exists(), "the application's start")
        self.assertFalse(mark.exists())

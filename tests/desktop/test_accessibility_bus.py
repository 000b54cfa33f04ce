"""The bus that screen readers use fails: whoever uses the window all the same notices nothing."""

import os
import pathlib
import signal
import time

from harness import DesktopTest, processes_below, wait_until


class AccessibilityBus(DesktopTest):
    # The bus is the test's own too, and it is never the same after it.
    own_desktop = True

    def setUp(self):
        super().setUp()
        self.entry, self.mark = self.desktop.marking_entry("Ananas")

    def bus(self):
        return self.process_with(b"dbus-daemon", b"accessibility.conf")

    @staticmethod
    def process_with(*words):
        """The id of the process of the desktop with all these words in its command line, or None."""
        for pid in processes_below(os.getpid()):
            try:
                line = pathlib.Path(f"/proc/{pid}/cmdline").read_bytes()
            except OSError:
                continue
            if all(word in line for word in words):
                return pid
        return None

    def start_without_looking(self):
        """The program, once its window has the keyboard; nothing is asked over the bus."""
        launcher = self.launch(wait=False)
        launcher.await_active()
        return launcher

    def use(self, launcher):
        """Searches and opens, and answers how many seconds it took."""
        before = time.monotonic()
        self.desktop.key("ctrl+f")
        self.desktop.type("ananas")
        self.desktop.key("Return")
        self.await_file(self.mark)
        took = time.monotonic() - before
        self.mark.unlink()
        self.assertIsNone(launcher.process.poll())
        return took

    def stop(self):
        bus = self.bus()
        os.kill(bus, signal.SIGSTOP)
        self.addCleanup(self.go_on, bus)
        return bus

    @staticmethod
    def go_on(bus):
        try:
            os.kill(bus, signal.SIGCONT)
        except ProcessLookupError:
            pass

    def test_one_that_is_silent_from_the_start_delays_no_window_and_no_key(self):
        self.stop()
        before = time.monotonic()
        launcher = self.start_without_looking()
        self.assertLess(time.monotonic() - before, 10)
        self.assertLess(self.use(launcher), 10)

    def test_one_that_falls_silent_delays_no_key(self):
        launcher = self.launch()
        bus = self.stop()
        for _ in range(3):
            self.assertLess(self.use(launcher), 10)
        # All that was not told meanwhile is told now.
        self.go_on(bus)
        launcher.await_equal(launcher.search_text, "ananas")

    def test_one_that_goes_and_comes_back_takes_nothing_with_it(self):
        launcher = self.launch()
        service = self.process_with(b"at-spi-bus-launcher")
        os.kill(self.bus(), signal.SIGKILL)
        os.kill(service, signal.SIGKILL)
        wait_until(lambda: self.bus() is None, "the end of the bus")
        self.assertLess(self.use(launcher), 10)
        # The session bus starts the service anew for the next program that asks.
        self.desktop.run("gdbus", "call", "--session", "-d", "org.a11y.Bus", "-o",
                         "/org/a11y/bus", "-m", "org.a11y.Bus.GetAddress")
        wait_until(self.bus, "another bus")
        self.assertLess(self.use(launcher), 10)
        launcher.close()

    def test_a_service_that_does_not_say_where_the_bus_is_delays_no_window_and_no_key(self):
        service = self.process_with(b"at-spi-bus-launcher")
        os.kill(service, signal.SIGSTOP)
        self.addCleanup(self.go_on, service)
        launcher = self.start_without_looking()
        self.assertLess(self.use(launcher), 10)

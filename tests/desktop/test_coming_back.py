"""The window comes back by every road, time after time."""

from harness import ROUNDS
from test_status_item import TRAYER, TrayTest


class ComingBack(TrayTest):
    command = TRAYER

    def test_by_a_second_start_and_by_a_click_it_is_visible_active_and_focused(self):
        """Asked from the server: what is shown, what is active, and what the keys go to."""
        launcher = self.launch_in_tray()
        for number in range(ROUNDS):
            with self.subTest(round=number):
                for come in (self.second_start, lambda: self.desktop.xdo("click", 1)):
                    launcher.close()
                    come()
                    launcher.await_active()


    def test_typing_replaces_the_search_of_the_last_time(self):
        for name in ("Ananas", "Banana", "Ciliege"):
            self.desktop.entry(name)
        launcher = self.launch_in_tray()
        self.desktop.type("ban")
        launcher.await_tiles(["Banana"])
        self.desktop.key("Down")
        launcher.close()
        self.second_start()
        launcher.await_active()
        launcher.await_equal(launcher.search_text, "ban")
        self.desktop.type("cil")
        launcher.await_tiles(["Ciliege"])
        launcher.await_equal(launcher.search_text, "cil")


class ComingBackUnderXfwm4(ComingBack):
    wm = "xfwm4 --compositor=off"

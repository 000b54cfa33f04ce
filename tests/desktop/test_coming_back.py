"""The window comes back by every road, time after time."""

import os

from test_status_item import TrayTest

# How many rounds are made.
ROUNDS = int(os.environ.get("TAVO_ROUNDS", "10"))


class ComingBack(TrayTest):
    command = ["trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
               "--height", "32"]

    def test_by_a_second_start_and_by_a_click_it_is_visible_active_and_focused(self):
        """Asked from the server: what is shown, what is active, and what the keys go to."""
        self.start_tray()
        launcher = self.launch()
        self.point_at_item()
        for number in range(ROUNDS):
            with self.subTest(round=number):
                for come in (self.second_start, lambda: self.desktop.xdo("click", 1)):
                    self.desktop.key("ctrl+w")
                    self.await_hidden(launcher)
                    come()
                    launcher.await_active()


class ComingBackUnderXfwm4(ComingBack):
    wm = "xfwm4 --compositor=off"

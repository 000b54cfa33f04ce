"""What the guide tells to put into files of settings, put there."""

import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/desktop"))

from harness import PROGRAM, processes_below, wait_until  # noqa: E402
from test_single_instance import InstanceTest  # noqa: E402
import test_sway  # noqa: E402

# Where desktops look for what the guide calls "tavolauncher".
os.environ["PATH"] = f"{pathlib.Path(PROGRAM).parent}:{os.environ['PATH']}"


def snippet(desktop):
    """The first block of code that the guide has for a shortcut on that desktop."""
    section = (ROOT / "docs/guida.md").read_text().split("## Una scorciatoia da tastiera")[1]
    entry = section.split(f"- **{desktop}**")[1]
    return re.search(r"^  ```\w*\n(.*?)^  ```", entry, re.MULTILINE | re.DOTALL)[1]


class Openbox(InstanceTest):
    own_desktop = True

    def test_the_shortcut_of_the_guide_brings_a_closed_window_back(self):
        settings = self.desktop.home / ".config/openbox/rc.xml"
        settings.parent.mkdir(parents=True)
        usual = pathlib.Path("/etc/xdg/openbox/rc.xml").read_text()
        settings.write_text(usual.replace("</keyboard>", snippet("openbox") + "</keyboard>"))
        self.desktop.run("openbox", "--reconfigure")
        launcher = self.launch()
        launcher.close()

        # Openbox does not say when it has read its settings.
        def pressed():
            self.desktop.key("super+space")
            return launcher.is_shown()
        wait_until(pressed, "the window", pause=0.2)
        launcher.await_active()
        # A start that is still under way keeps the first from ending.
        wait_until(lambda: self.programs() == 1, "the other starts to end")

    @staticmethod
    def programs():
        """How many processes of the program run on this desktop."""
        found = 0
        for process in processes_below(os.getpid()):
            try:
                found += os.path.samefile(f"/proc/{process}/exe", PROGRAM)
            except OSError:
                pass  # it has ended
        return found


class Sway(test_sway.Sway):
    def message(self, *words):
        return subprocess.run(["swaymsg", *words], check=True, capture_output=True, text=True,
                              env={**self.desktop.environment, **self.session}).stdout

    def floating(self, app_id):
        """Whether the application's window floats, or None when there is none."""
        nodes = [json.loads(self.message("-t", "get_tree"))]
        while nodes:
            node = nodes.pop()
            if node.get("app_id") == app_id:
                return node["type"] == "floating_con"
            nodes += node["nodes"] + node["floating_nodes"]
        return None

    def test_the_lines_of_the_guide_bring_the_window_forward_above_the_others(self):
        (self.desktop.folder / "sway.conf").write_text("xwayland disable\n" + snippet("sway"))
        self.message("reload")
        first = self.start_there([PROGRAM])
        self.await_focused(test_sway.APP_ID)
        self.assertTrue(self.floating(test_sway.APP_ID))
        self.start_there(["foot", "sleep", "100"])
        self.await_focused("foot")
        self.desktop.key("super+space")
        self.await_focused(test_sway.APP_ID)
        self.message(f"[app_id={test_sway.APP_ID}] kill")
        self.await_focused("foot")
        self.desktop.key("super+space")
        self.await_focused(test_sway.APP_ID)
        self.assertTrue(self.floating(test_sway.APP_ID))
        self.assertIsNone(first.poll())

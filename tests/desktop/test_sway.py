"""The program under sway: a Wayland compositor, nested in an X server that plays the user."""

import json
import os
import re
import shutil
import subprocess

from harness import PROGRAM, DesktopError, Launcher, wait_until, wait_until_still
from test_single_instance import InstanceTest

APP_ID = "org.tavolauncher.TavoLauncher"
BAR = {"dark": "window#waybar { background: #202020 } #tray { background: #202020 }",
       "light": "window#waybar { background: #f8f8f8 } #tray { background: #f8f8f8 }"}


class Sway(InstanceTest):
    """The X server's own window manager is sway's one window."""
    wm = None

    def setUp(self):
        if os.geteuid() == 0:
            self.skipTest("sway refuses to run as root")
        for program in ("sway", "waybar", "foot"):
            self.assertTrue(shutil.which(program), f"{program} is not installed")
        super().setUp()
        run = self.desktop.folder / "run"
        settings = self.desktop.folder / "sway.conf"
        # Sway's own bar, which a test starts itself.
        settings.write_text("xwayland disable\nbar {\n id own\n swaybar_command true\n"
                            " position top\n height 32\n tray_padding 4\n}\n")
        self.sway = self.desktop.start(
            ["sway", "-c", settings], {"WLR_BACKENDS": "x11", "WLR_RENDERER": "pixman",
                                       "XDG_CURRENT_DESKTOP": "sway"}, log="sway.log")
        socket = wait_until(lambda: next(run.glob("sway-ipc.*.sock"), None), "sway")
        display = wait_until(lambda: next(run.glob("wayland-?"), None), "sway's display")
        self.session = {"SWAYSOCK": str(socket), "WAYLAND_DISPLAY": display.name,
                        "XDG_CURRENT_DESKTOP": "sway"}
        self.bar = self.start_bar("dark")

    def start_bar(self, look):
        settings, style = self.desktop.folder / "waybar", self.desktop.folder / "waybar.css"
        settings.write_text('{"height":32,"modules-right":["tray"],"tray":{"icon-size":24}}')
        style.write_text("* { border: none; padding: 0; margin: 0 } " + BAR[look])
        return self.start_there(["waybar", "-c", settings, "-s", style], "bar.log")

    def start_there(self, command, log="program.log", **variables):
        environment = {**self.desktop.environment, **self.desktop.hermetic, **self.session,
                       **variables}
        words = ["env", "-u", "DISPLAY", *(f"{k}={v}" for k, v in environment.items()
                                           if k != "DISPLAY"), *map(str, command)]
        return self.desktop.start(words, log=log)

    def swaymsg(self, *words):
        return subprocess.run(["swaymsg", *words], capture_output=True, text=True,
                              env={**self.desktop.environment, **self.session})

    def tell(self, command):
        self.assertEqual(self.swaymsg(command).returncode, 0)

    def close_window(self):
        self.tell(f"[app_id={APP_ID}] kill")
        wait_until(lambda: self.focused() != APP_ID, "the window to go")

    def symbol(self):
        """The pixels where the item is, at the bar's right end; None unless some are light and some
        dark."""
        (output,) = json.loads(self.swaymsg("-t", "get_outputs", "-r").stdout)
        self.item = output["rect"]["width"] - 12, 16
        shown = subprocess.run(["import", "-window", "root", "-crop", f"24x24+{self.item[0] - 12}+4",
                                "-depth", "8", "gray:-"], env=self.desktop.environment,
                               capture_output=True).stdout
        return shown if shown and min(shown) < 100 and max(shown) > 200 else None

    def await_symbol(self):
        wait_until_still(self.symbol, "the symbol in the bar")

    def click_item(self, button=1):
        self.desktop.move_pointer(*self.item)
        self.desktop.xdo("click", button)

    def focused(self):
        """The application id of the window that sway gives the keys to."""
        return (self.focused_window() or {}).get("app_id")

    def focused_window(self):
        """What sway says of it, or None."""
        done = subprocess.run(["swaymsg", "-t", "get_tree"], capture_output=True, text=True,
                              env={**self.desktop.environment, **self.session})
        nodes = [json.loads(done.stdout)] if done.returncode == 0 else []
        while nodes:
            node = nodes.pop()
            if node.get("focused"):
                return node
            nodes += node.get("nodes", []) + node.get("floating_nodes", [])
        return None

    def await_focused(self, app_id):
        wait_until(lambda: self.focused() == app_id, f"{app_id} to have the keyboard")

    def test_a_closed_window_comes_back_with_a_second_start(self):
        first = self.start_there([PROGRAM])
        self.await_focused(APP_ID)
        self.start_there(["foot", "sleep", "100"])
        self.await_focused("foot")
        self.close_window()
        self.assertEqual(self.start_there([PROGRAM]).wait(timeout=20), 0)
        self.await_focused(APP_ID)
        self.picture("back")
        self.assertIsNone(first.poll())

    def test_shown_again_typing_replaces_the_text_of_the_search(self):
        launcher = Launcher(self.desktop, self.start_there([PROGRAM]))
        for text in ("cal", "ed"):
            launcher.await_node("list", "App")
            self.await_focused(APP_ID)
            self.desktop.type(text)
            launcher.await_equal(launcher.search_text, text)
            self.close_window()
            self.assertEqual(self.start_there([PROGRAM]).wait(timeout=20), 0)

    def test_a_floating_window_has_its_usual_size_without_its_shadow(self):
        # From its first moment, because sway 1.7 mixes the sizes up where a window begins to float
        # before it has taken its tile's size.
        self.tell(f"for_window [app_id={APP_ID}] floating enable")
        self.start_there([PROGRAM])
        self.await_focused(APP_ID)

        def place():
            box = self.focused_window()["rect"]
            return box["x"], box["y"], box["width"], box["height"]
        wait_until(lambda: place()[2:] == (980, 640), "its usual size")

        def ground(below):
            x, y, width, height = place()  # anew, because the bar comes late and moves the window
            return self.desktop.pixels().at(x + width // 2, y + height + below)
        self.tell("output * bg #ffffff solid_color")
        wait_until(lambda: max(ground(1)) < min(ground(10)) < 255 == min(ground(28)), "a shadow")
        self.picture("floating")
        self.tell("fullscreen enable")
        wait_until(lambda: min(self.desktop.pixels().at(0, 0)) < 255, "a window to the corners")

    def test_the_item_is_seen_on_a_dark_bar_and_on_a_light_one(self):
        self.start_there([PROGRAM])
        self.await_focused(APP_ID)
        for look in BAR:
            self.bar.kill()
            self.bar.wait()
            self.bar = self.start_bar(look)
            self.await_symbol()
            self.picture(f"{look}-bar")

    def test_a_click_on_the_item_brings_a_closed_window_back(self):
        self.start_there([PROGRAM])
        self.await_focused(APP_ID)
        self.await_symbol()
        for _ in range(3):
            self.close_window()
            self.click_item()
            self.await_focused(APP_ID)

    def test_the_items_menu_opens_and_quits(self):
        # A program that ends in order leaves memory of Qt's behind on Wayland; one with
        # nothing but an empty window does so too.
        program = self.start_there(["env", "ASAN_OPTIONS=detect_leaks=0", PROGRAM])
        self.await_focused(APP_ID)
        self.await_symbol()
        self.start_there(["foot", "sleep", "100"])
        self.await_focused("foot")
        self.choose_from_menu(0.25)
        self.await_focused(APP_ID)
        self.choose_from_menu(0.75)
        self.assertEqual(program.wait(timeout=20), 0)

    def test_on_a_bar_without_menus_left_and_right_show_the_window_and_the_middle_does_not(self):
        self.bar.kill()
        self.bar.wait()
        self.start_there(["swaybar", "-b", "own"], "bar.log")
        self.start_there([PROGRAM])
        self.await_focused(APP_ID)
        self.await_symbol()
        self.start_there(["foot", "sleep", "100"])
        self.await_focused("foot")
        for button in (1, 3):
            self.close_window()
            for other in (2, 4, 5):  # 4 and 5: the wheel
                self.click_item(other)
            self.assertEqual(self.focused(), "foot")
            self.click_item(button)
            self.await_focused(APP_ID)
        self.picture("swaybar")

    def choose_from_menu(self, height):
        """Clicks on the item's menu, so far down in it. The bar's menus do not get the keys, and
        one that was opened as soon as the bar had the item does not get the pointer either."""
        def chosen():
            before = self.desktop.pixels()
            self.click_item(3)
            left, top, bottom = wait_until(lambda: self.menu_place(before), "the menu")
            self.picture("menu")
            menu, y = self.desktop.pixels(), round(top + (bottom - top) * height)
            self.desktop.move_pointer(left + 40, y)
            try:
                wait_until(lambda: self.desktop.pixels().at(left + 6, y) != menu.at(left + 6, y),
                           "the entry to light up", seconds=1.5)
                return True
            except DesktopError:
                self.desktop.move_pointer(400, 400)
                return False
            finally:
                self.desktop.xdo("click", 1)
        wait_until(chosen, "an entry that takes the click")

    def menu_place(self, before):
        """Left, top and bottom of what has changed beside the item, once it stays so."""
        def changed():
            now = self.desktop.pixels()
            return [(x, y) for y in range(0, 120) for x in range(self.item[0] - 260,
                                                                 self.item[0] - 20)
                    if now.at(x, y) != before.at(x, y)]
        found = changed()
        if len(found) < 1000 or found != changed():
            return None
        rows = [y for _, y in found]
        return min(x for x, _ in found), min(rows), max(rows)

    def test_the_token_that_a_panel_provides_is_what_the_window_comes_forward_with(self):
        program = self.start_there(["env", "WAYLAND_DEBUG=client", PROGRAM])
        self.await_focused(APP_ID)
        self.await_symbol()
        self.start_there(["foot", "sleep", "100"], "foot.log")
        self.await_focused("foot")
        for method, arguments in (("ProvideXdgActivationToken", ["from-the-panel"]),
                                  ("Activate", ["0", "0"])):
            self.desktop.run("gdbus", "call", "--session", "--dest",
                             f"org.kde.StatusNotifierItem-{program.pid}-1", "--object-path",
                             "/StatusNotifierItem", "--method",
                             f"org.kde.StatusNotifierItem.{method}", *arguments)
        wait_until(lambda: 'activate("from-the-panel"' in self.desktop.log(), "the token's use")

    def test_wherever_the_window_is_it_comes_back_by_each_road(self):
        def second_start(**variables):
            self.assertEqual(self.start_there([PROGRAM], **variables).wait(timeout=20), 0)
        first = self.start_there([PROGRAM])
        self.await_focused(APP_ID)
        self.start_there(["foot", "sleep", "100"])
        self.await_focused("foot")
        wait_until(lambda: self.bus_owner() is not None, "the bus name")
        for place, commands in (("behind another", ["[app_id=foot] focus"]),
                                ("closed", [f"[app_id={APP_ID}] kill"]),
                                ("on another workspace",
                                 ["workspace 2", "[app_id=foot] move workspace 2"]),
                                ("hidden", [f"[app_id={APP_ID}] move scratchpad"])):
            for road, come in (("a second start", second_start),
                               ("a second start with a token that names nothing",
                                lambda: second_start(XDG_ACTIVATION_TOKEN="nothing")),
                               ("the bus", lambda: self.call("Activate", "{}"))):
                with self.subTest(place=place, road=road):
                    for command in commands:
                        self.tell(command)
                    self.tell("[app_id=foot] focus")
                    self.await_focused("foot")
                    come()
                    self.await_focused(APP_ID)
                    self.tell(f"[app_id={APP_ID}] floating disable, move workspace 1")
                    self.tell("[app_id=foot] move workspace 1")
                    self.tell("workspace 1")
        self.assertIsNone(first.poll())

    def test_the_token_of_each_start_reaches_the_compositor(self):
        """The library that speaks to it tells what it sends, with another sign since version 1.23."""
        def await_sent(token):
            wait_until(lambda: re.search(
                rf'xdg_activation_v1[@#]\d+\.activate\("{token}", wl_surface', self.desktop.log()),
                "the token to be sent")
        self.start_there([PROGRAM], WAYLAND_DEBUG="client", XDG_ACTIVATION_TOKEN="first-token")
        await_sent("first-token")
        self.await_focused(APP_ID)
        second = self.start_there([PROGRAM], log="second.log", XDG_ACTIVATION_TOKEN="the-token")
        self.assertEqual(second.wait(timeout=20), 0)
        await_sent("the-token")

    def test_a_click_starts_and_another_click_fronts_also_from_another_workspace(self):
        mark = self.desktop.folder / "ran"
        program = self.desktop.script("ananas", f"echo x >>'{mark}'\n"
                                                "exec foot --app-id=ananas sleep 1000")
        self.desktop.entry("Ananas", Exec=f'"{program}"')
        launcher = Launcher(self.desktop, self.start_there([PROGRAM], WAYLAND_DEBUG="client"))
        self.await_focused(APP_ID)
        launcher.press("list item", "Apri Ananas")
        self.await_focused("ananas")
        # Sway does that by itself. The launcher asks for it too, a moment later, which would take the
        # keyboard from whatever was shown meanwhile.
        wait_until(lambda: re.search(r"zwlr_foreign_toplevel_handle_v1[@#]\d+\.activate\(",
                                     self.desktop.log()), "the launcher to bring it forward")
        for workspace in ("1", "2"):
            with self.subTest(f"from workspace {workspace}"):
                self.tell(f"workspace {workspace}")
                other = self.start_there(["foot", f"--app-id=altra{workspace}", "sleep", "100"])
                self.await_focused(f"altra{workspace}")
                self.tell(f"[app_id={APP_ID}] move container to workspace {workspace}")
                self.tell(f"[app_id={APP_ID}] focus")
                self.await_focused(APP_ID)
                launcher.press("list item", "Apri Ananas")
                self.await_focused("ananas")
                self.assertIsNone(other.poll())
        self.assertEqual(mark.read_text(), "x\n")

    def test_when_the_compositor_goes_the_program_ends_with_a_line_and_status_1(self):
        first = self.start_there([PROGRAM])
        self.await_focused(APP_ID)
        self.sway.kill()
        self.assertEqual(first.wait(timeout=20), 1)
        said = set(self.desktop.log().splitlines())
        self.assertEqual(len(said), 1, said)

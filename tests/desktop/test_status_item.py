"""The item in the panel: on the trays and panels that are installed, and on one made up."""

import re
import signal
import subprocess
import time

from harness import ROUNDS, wait_until, wait_until_still
from test_single_instance import InstanceTest
from windows import window_tree

OPEN, QUIT = "Apri Tavo Launcher", "Esci da Tavo Launcher"
TRAYER = ["trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
          "--height", "32"]
# A second longer than the program waits for a bus before it makes do with a tray.
LATE = 3.0


def facts(desktop, window):
    """What xwininfo(1) says of it; nothing once it is destroyed."""
    try:
        return desktop.run("xwininfo", "-id", window)
    except subprocess.CalledProcessError:
        return ""


class TrayTest(InstanceTest):
    """With a tray that embeds; what the panel is comes from the derived class."""
    command = None

    def start_tray(self):
        return self.desktop.start(self.command, log="tray.log")

    def own_windows(self):
        """Id, and place and size on the screen, of each of the program's windows."""
        for line in window_tree(self.desktop):
            found = re.search(r'\("tavolauncher" "TavoLauncher"\)\s+(\d+)x(\d+)\+\S+\s+'
                              r"\+(-?\d+)\+(-?\d+)", line)
            if found:
                width, height, x, y = map(int, found.groups())
                yield line.split()[0], (x, y, width, height)

    def item(self):
        """Place and size of the item's window on the screen, or None."""
        for _, (x, y, width, height) in self.own_windows():
            if 8 < width < 100 and x >= 0 and y >= 0:
                return x, y, width, height
        return None

    def await_item(self):
        """Once it is where it stays."""
        return wait_until_still(self.item, "the item in the tray")

    def point_at_item(self):
        x, y, width, height = self.await_item()
        self.desktop.move_pointer(x + width // 2, y + height // 2)

    def menu_window(self):
        """Place and size of the open menu, or None."""
        for window, (x, y, width, height) in self.own_windows():
            if 100 < width < 500 and 40 < height < 300 and self.mapped(window):
                return x, y, width, height
        return None

    def mapped(self, window):
        return "IsViewable" in facts(self.desktop, window)

    def await_menu_window(self):
        """Once it is where it stays."""
        return wait_until_still(self.menu_window, "the menu", looks=4, pause=0.02)

    def launch_in_tray(self):
        """A tray, and the program, with the pointer at its item."""
        self.start_tray()
        launcher = self.launch()
        self.point_at_item()
        return launcher

    def open_menu(self):
        self.desktop.xdo("click", 3)
        wait_until(self.menu_window, "the menu")

    def close_and_click(self, launcher):
        """The click on the item, where the pointer is, brings the closed window back."""
        launcher.close()
        self.desktop.xdo("click", 1)
        launcher.await_active()

    def bring_back(self, launcher):
        """Closed, by a click on the item, which is in the tray."""
        self.point_at_item()
        self.close_and_click(launcher)


class Embedded(TrayTest):
    command = TRAYER

    def test_a_left_click_brings_the_window_forward_when_the_button_is_let_go(self):
        launcher = self.launch_in_tray()
        for _ in range(ROUNDS):
            self.another_window_in_front(launcher)
            self.desktop.xdo("mousedown", 1)
            self.assertFalse(launcher.is_active())
            self.desktop.xdo("mouseup", 1)
            launcher.await_active()

    def test_a_left_click_brings_a_closed_window_back(self):
        launcher = self.launch_in_tray()
        for _ in range(ROUNDS):
            self.close_and_click(launcher)
            self.assert_accessory(launcher)

    def test_a_button_let_go_beside_the_item_does_nothing(self):
        launcher = self.launch_in_tray()
        launcher.close()
        self.desktop.xdo("mousedown", 1)
        self.desktop.move_pointer(400, 400)
        self.desktop.xdo("mouseup", 1)
        self.point_at_item()
        self.assertFalse(launcher.is_shown())
        self.desktop.xdo("click", 2)
        self.desktop.xdo("click", 1)
        launcher.await_active()

    def test_a_right_click_opens_the_menu_at_the_items_edge_when_let_go(self):
        self.start_tray()
        launcher = self.launch()
        x, y, width, height = self.await_item()
        self.point_at_item()
        self.desktop.xdo("mousedown", 3)
        self.assertIsNone(self.menu_window())
        self.desktop.xdo("mouseup", 3)
        menu = wait_until(self.menu_window, "the menu")
        self.picture("menu")
        self.assertGreaterEqual(menu[1], y + height)
        self.assertLessEqual(menu[0], x + width)
        self.assertGreaterEqual(menu[0] + menu[2], x)
        self.assertEqual(launcher.menu_texts(), [OPEN, "—", QUIT])

    def test_the_menus_first_entry_opens_and_its_last_quits(self):
        launcher = self.launch_in_tray()
        launcher.close()
        self.open_menu()
        self.desktop.key("Down", "Return")
        launcher.await_active()
        self.open_menu()
        self.desktop.key("Up", "Return")
        self.assertEqual(launcher.process.wait(timeout=20), 0)

    def test_ctrl_q_quits_while_the_menu_is_open(self):
        launcher = self.launch_in_tray()
        launcher.close()
        self.open_menu()
        self.desktop.key("ctrl+q")
        self.assertEqual(launcher.process.wait(timeout=20), 0)

    def test_a_click_on_the_menus_first_entry_opens(self):
        launcher = self.launch_in_tray()
        launcher.close()
        self.desktop.xdo("click", 3)
        self.await_menu_window()
        self.desktop.click(launcher.await_node("menu item", OPEN))
        launcher.await_active()

    def test_the_item_says_its_name_under_the_pointer(self):
        launcher = self.launch_in_tray()
        self.assertEqual(launcher.await_node("tool tip", "Tavo Launcher").get_name(),
                         "Tavo Launcher")
        self.picture("tip")

    def test_a_tray_that_comes_after_seconds_gets_the_item(self):
        launcher = self.launch()
        time.sleep(LATE)
        self.start_tray()
        self.bring_back(launcher)

    def test_a_tray_that_comes_late_gets_the_item(self):
        launcher = self.launch()
        self.assertIsNone(self.item())
        self.start_tray()
        self.bring_back(launcher)

    def test_a_tray_that_crashes_and_returns_gets_the_item_again(self):
        tray = self.start_tray()
        launcher = self.launch()
        self.await_item()
        tray.kill()
        tray.wait()
        wait_until(lambda: self.item() is None, "the item to go")
        self.start_tray()
        self.bring_back(launcher)
        self.picture("returned")


class EmbeddedUnderXfwm4(Embedded):
    wm = "xfwm4 --compositor=off"


class EmbeddedInTint2(Embedded):
    def setUp(self):
        super().setUp()
        settings = self.desktop.folder / "tint2rc"
        settings.write_text("panel_items = TSC\npanel_size = 100% 32\n"
                            "panel_position = top center horizontal\nsystray_icon_size = 24\n")
        self.command = ["tint2", "-c", str(settings)]


class TrayAtEachSide(TrayTest):
    """The menu opens beside the panel, whole, wherever that is."""

    def open_menu_at(self, position, items="SC"):
        settings = self.desktop.folder / "tint2rc"
        settings.write_text(f"panel_items = {items}\npanel_size = 100% 32\nsystray_icon_size = 24\n"
                            f"strut_policy = follow_size\npanel_position = {position}\n")
        self.command = ["tint2", "-c", str(settings)]
        self.start_tray()
        self.launch()
        item = self.await_item()
        self.point_at_item()
        self.desktop.xdo("click", 3)
        x, y, width, height = menu = self.await_menu_window()
        self.picture(f"{position} {items}".replace(" ", "-"))
        self.assertGreater(height, 60, "both entries are in view")
        self.assertTrue(0 <= x <= 1280 - width and 0 <= y <= 800 - height, menu)
        return item, menu

    def assert_adjoins(self, edge, items):
        """But for what the panel keeps free around the item."""
        self.assertIn(edge - items, range(5))

    def test_at_the_bottom_it_opens_above_the_item(self):
        item, menu = self.open_menu_at("bottom left horizontal")
        self.assert_adjoins(item[1], menu[1] + menu[3])

    def test_in_the_corner_at_the_bottom_it_opens_above_the_item(self):
        item, menu = self.open_menu_at("bottom right horizontal", "FS")
        self.assertGreater(item[0], 1000)
        self.assert_adjoins(item[1], menu[1] + menu[3])

    def test_at_the_left_it_opens_beside_the_item(self):
        item, menu = self.open_menu_at("center left vertical")
        self.assert_adjoins(menu[0], item[0] + item[2])

    def test_at_the_right_it_opens_beside_the_item(self):
        item, menu = self.open_menu_at("center right vertical")
        self.assert_adjoins(item[0], menu[0] + menu[2])

    def test_in_the_corner_at_the_right_it_opens_beside_the_item(self):
        item, menu = self.open_menu_at("center right vertical", "FS")
        self.assertGreater(item[1], 700)
        self.assert_adjoins(item[0], menu[0] + menu[2])


class Notified(TrayTest):
    """A panel that draws the item itself; made up, so that it does what the protocol says."""

    def start_panel(self, *arguments):
        return self.stand_in("status_notifier_watcher.py", *arguments)

    def await_registered(self, panel):
        self.assertIn("registered", panel.stdout.readline())

    def start_panel_with_item(self):
        """After the program was started."""
        panel = self.start_panel()
        self.await_registered(panel)
        return panel

    def launch_on_panel(self, **options):
        """A panel, and the program, whose item is on it."""
        panel = self.start_panel()
        launcher = self.launch(**options)
        self.await_registered(panel)
        return panel, launcher

    def click_in(self, panel, launcher):
        """The click on the item in the panel brings the closed window back."""
        launcher.close()
        self.tell(panel, "activate")
        launcher.await_active()

    def assert_menu(self, panel):
        self.assertEqual(self.ask(panel, "menu"), f"{OPEN} | — | {QUIT}")

    def ask(self, panel, command):
        self.tell(panel, command)
        return panel.stdout.readline().strip().partition(" ")[2]

    def tell(self, panel, command):
        panel.stdin.write(command + "\n")
        panel.stdin.flush()

    def test_a_click_brings_a_closed_window_back(self):
        panel, launcher = self.launch_on_panel()
        for _ in range(ROUNDS):
            self.click_in(panel, launcher)
            self.assert_accessory(launcher)

    def test_the_panel_is_given_menu_tool_tip_and_symbol(self):
        panel, _ = self.launch_on_panel()
        self.assert_menu(panel)
        self.assertEqual(self.ask(panel, "tooltip"), "Tavo Launcher")
        sizes = [int(size) for size in self.ask(panel, "sizes").split()]
        self.assertGreaterEqual(len(sizes), 3)
        self.assertTrue({16, 22, 32} <= set(sizes), sizes)

    def test_without_a_drawing_of_the_symbol_there_are_tool_tip_menu_and_clicks(self):
        folder = self.desktop.copy_of_program()
        (folder / "resources/symbols/square.grid.3x3.svg").unlink()
        panel, launcher = self.launch_on_panel(program=folder / "tavolauncher")
        self.assertEqual(self.ask(panel, "tooltip"), "Tavo Launcher")
        self.assert_menu(panel)
        self.click_in(panel, launcher)

    def launch_with_returning_bus(self):
        """The program, and what starts a bus for it and ends that again."""
        address = self.desktop.folder / "returning-bus"
        self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={address}"

        def start():
            daemon = self.desktop.start(["dbus-daemon", "--session", "--nofork", "--nopidfile",
                                         f"--address=unix:path={address}"], log="bus2.log")
            wait_until(lambda: subprocess.run(
                ["dbus-send", "--session", "--dest=org.freedesktop.DBus", "--print-reply",
                 "/", "org.freedesktop.DBus.GetId"], env=self.desktop.environment,
                capture_output=True).returncode == 0, "the bus")
            return daemon

        def end(daemon):
            daemon.kill()
            daemon.wait()
            address.unlink(missing_ok=True)
        return start, end

    def test_after_the_bus_died_and_returned_the_item_is_there_again(self):
        start_bus, end_bus = self.launch_with_returning_bus()
        bus = start_bus()
        panel = self.start_panel()
        launcher = self.launch(wait=False).await_active()
        self.await_registered(panel)
        for _ in range(2):
            self.click_in(panel, launcher)
            end_bus(bus)
            self.end_stand_in(panel)
            bus = start_bus()
            panel = self.start_panel_with_item()
        self.click_in(panel, launcher)

    def test_a_bus_that_comes_after_the_program_has_the_item(self):
        start_bus, _ = self.launch_with_returning_bus()
        launcher = self.launch(wait=False).await_active()
        start_bus()
        panel = self.start_panel_with_item()
        self.click_in(panel, launcher)

    def test_a_panel_that_comes_after_seconds_has_the_item(self):
        launcher = self.launch()
        time.sleep(LATE)
        panel = self.start_panel_with_item()
        self.click_in(panel, launcher)

    def test_a_panel_after_a_tray_and_a_tray_after_a_panel_have_the_item(self):
        tray = self.desktop.start(TRAYER, log="tray.log")
        launcher = self.launch()
        self.bring_back(launcher)
        tray.kill()
        tray.wait()
        panel = self.start_panel_with_item()
        self.click_in(panel, launcher)
        self.assert_menu(panel)
        self.end_stand_in(panel)
        self.desktop.start(TRAYER, log="tray.log")
        self.bring_back(launcher)

    def test_the_item_moves_to_a_panel_that_draws_it_and_back_to_the_tray(self):
        self.desktop.start(TRAYER, log="tray.log")
        launcher = self.launch()
        self.await_item()
        panel = self.start_panel_with_item()
        wait_until(lambda: self.item() is None, "the item to leave the tray")
        self.click_in(panel, launcher)
        self.end_stand_in(panel)
        self.bring_back(launcher)

    def test_a_panel_that_embeds_first_and_draws_itself_a_moment_later_has_the_menu(self):
        self.desktop.start(TRAYER, log="tray.log")
        wait_until(lambda: any("Trayer Panel" in line or '"trayer"' in line
                               for line in window_tree(self.desktop)), "the tray")
        panel = self.start_panel("late")
        self.launch()
        self.await_registered(panel)
        self.assert_menu(panel)

    def test_the_menus_first_entry_opens_and_its_last_quits(self):
        panel, launcher = self.launch_on_panel()
        launcher.close()
        self.tell(panel, f"choose {OPEN}")
        launcher.await_active()
        self.tell(panel, f"choose {QUIT}")
        self.assertEqual(launcher.process.wait(timeout=20), 0)

    def launch_on_panel_without_menus(self):
        """A panel at the bottom of the screen, 32 pixels high, and the program, closed."""
        settings = self.desktop.folder / "tint2rc"
        settings.write_text("panel_items = C\npanel_size = 100% 32\nstrut_policy = follow_size\n"
                            "panel_position = bottom center horizontal\n")
        self.desktop.start(["tint2", "-c", str(settings)], log="tint2.log")
        wait_until(lambda: "1280, 768" in self.desktop.run("xprop", "-root", "_NET_WORKAREA"),
                   "the panel's place")
        panel, launcher = self.launch_on_panel()
        launcher.close()
        return panel, launcher

    def test_the_menu_that_a_panel_leaves_to_the_program_opens_at_the_panels_edge(self):
        panel, launcher = self.launch_on_panel_without_menus()
        for pointer, said, left in (((600, 300), (300, 790), 300),
                                    ((700, 790), (12, 12), 700),
                                    ((1270, 790), (1270, 790), None)):
            with self.subTest(pointer=pointer, said=said):
                self.desktop.move_pointer(*pointer)
                self.ask(panel, f"ask {said[0]} {said[1]}")
                x, y, width, height = self.await_menu_window()
                self.picture(f"asked-{pointer[0]}")
                self.assertEqual(y + height, 768)
                self.assertEqual(x, 1280 - width if left is None else left)
                self.desktop.key("Escape")
                wait_until(lambda: self.menu_window() is None, "the menu to close")
        self.desktop.move_pointer(640, 400)
        self.ask(panel, "ask 12 12")  # neither is in the panel: the pointer counts
        self.assertEqual(self.await_menu_window()[:2], (640, 401))
        self.desktop.key("Down", "Return")
        launcher.await_active()

    def test_the_menu_that_is_asked_for_while_the_button_is_held_opens_when_it_is_let_go(self):
        panel, launcher = self.launch_on_panel_without_menus()
        for leave in (lambda: self.desktop.key("Escape"), self.click_elsewhere):
            self.desktop.move_pointer(700, 790)
            self.desktop.xdo("mousedown", 3)
            self.ask(panel, "ask 700 790")
            self.assertIsNone(self.menu_window())
            self.desktop.xdo("mouseup", 3)
            self.await_menu_window()
            leave()
            wait_until(lambda: self.menu_window() is None, "the menu to close")
        self.assertFalse(launcher.is_shown())

    def click_elsewhere(self):
        self.desktop.move_pointer(100, 100)
        self.desktop.xdo("click", 1)

    def test_a_middle_click_does_nothing(self):
        panel, launcher = self.launch_on_panel()
        launcher.close()
        self.ask(panel, "secondary")
        self.assertFalse(launcher.is_shown())
        self.click_in(panel, launcher)

    def test_a_window_that_is_not_painted_keeps_no_item_from_the_panel(self):
        manager = self.desktop.manager
        manager.send_signal(signal.SIGSTOP)  # so the window is never mapped
        self.addCleanup(manager.send_signal, signal.SIGCONT)
        panel = self.start_panel()
        launcher = self.launch(wait=False)
        self.await_registered(panel)
        self.assertFalse(launcher.is_shown())
        self.assert_menu(panel)

    def test_a_panel_that_comes_late_crashes_and_returns_has_the_item_each_time(self):
        launcher = self.launch()
        for _ in range(3):
            panel = self.start_panel_with_item()
            self.click_in(panel, launcher)
            self.end_stand_in(panel)


class NotifiedUnderXfwm4(Notified):
    wm = "xfwm4 --compositor=off"


class PanelTest(InstanceTest):
    """A real panel that draws the item itself, alone on it at the screen's left upper corner."""
    item = None  # the middle of the symbol
    command = None

    def setUp(self):
        super().setUp()
        self.configure()

    def close_and_click(self, launcher):
        """The click on the item brings the closed window back."""
        launcher.close()
        self.click()
        launcher.await_active()

    def start_panel(self):
        return self.desktop.start(self.command, self.session, log="panel.log")

    def symbol(self):
        """The colours where the item is, as a picture's bytes. None unless it is light on dark or
        dark on light: two colours far from each other."""
        shown = subprocess.run(["import", "-window", "root", "-crop", "28x28+2+2", "rgb:-"],
                               env=self.desktop.environment, capture_output=True).stdout
        return shown if shown and max(shown) - min(shown) > 120 else None

    def await_symbol(self):
        wait_until_still(self.symbol, "the symbol in the panel")

    def launch_on_panel(self):
        """A panel, and the program, whose item can be seen on it."""
        self.start_panel()
        launcher = self.launch()
        self.await_symbol()
        return launcher

    def menu_heights(self):
        """Of the panel's menus in view: windows of some size that no manager has."""
        found = []
        for line in self.desktop.run("xwininfo", "-root", "-children").splitlines():
            window = re.match(r"\s+(0x[0-9a-f]+) .*  (\d+)x(\d+)\+", line)
            if window and 50 < int(window[2]) < 500 and 30 < int(window[3]) < 300:
                said = facts(self.desktop, window[1])
                if "IsViewable" in said and "Override Redirect State: yes" in said:
                    found.append(int(window[3]))
        return found

    def open_menu(self):
        """Until a panel has read the item's menu, it may show a longer one of its own."""
        def item_menu():
            wait_until(lambda: not self.menu_heights(), "tool tips and menus to go")
            self.click(3)
            if max(wait_until(self.menu_heights, "a menu")) < 100:
                return True
            self.desktop.key("Escape")
            return False
        wait_until(item_menu, "the item's menu")

    def click(self, button=1):
        self.desktop.move_pointer(*self.item)
        self.desktop.xdo("click", button)


class XfcePanel(PanelTest):
    item = (25, 16)  # right of the panel's handle
    command = ["xfce4-panel", "--disable-wm-check"]
    session = {"XDG_CURRENT_DESKTOP": "XFCE"}

    def configure(self):
        folder = self.desktop.home / ".config/xfce4/xfconf/xfce-perchannel-xml"
        folder.mkdir(parents=True)
        (folder / "xfce4-panel.xml").write_text(
            '<?xml version="1.0" encoding="UTF-8"?><channel name="xfce4-panel" version="1.0">'
            '<property name="configver" type="int" value="2"/>'
            '<property name="panels" type="array"><value type="int" value="1"/>'
            '<property name="panel-1" type="empty">'
            '<property name="position" type="string" value="p=6;x=0;y=0"/>'
            '<property name="length" type="uint" value="100"/>'
            '<property name="size" type="uint" value="32"/>'
            '<property name="plugin-ids" type="array"><value type="int" value="1"/></property>'
            '</property></property><property name="plugins" type="empty">'
            '<property name="plugin-1" type="string" value="systray"/></property></channel>')

    def test_a_left_click_brings_a_closed_window_back(self):
        launcher = self.launch_on_panel()
        self.picture("symbol")
        for _ in range(ROUNDS):
            self.close_and_click(launcher)
            self.assert_accessory(launcher)

    def test_a_right_click_opens_the_menu_whose_entries_open_and_quit(self):
        launcher = self.launch_on_panel()
        launcher.close()
        self.open_menu()
        self.picture("menu")
        self.desktop.key("Down", "Return")
        launcher.await_active()
        self.open_menu()
        self.desktop.key("Up", "Return")
        self.assertEqual(launcher.process.wait(timeout=20), 0)

    def test_a_panel_that_comes_late_crashes_and_returns_has_the_item_each_time(self):
        launcher = self.launch()
        for _ in range(2):
            panel = self.start_panel()
            self.desktop.move_pointer(600, 700)  # what it points at may look different
            self.await_symbol()
            self.close_and_click(launcher)
            panel.kill()
            panel.wait()


class XfcePanelEmbedding(XfcePanel):
    """The same panel, and the program without a bus: the panel takes its window in."""

    def launch(self, wait=True, **environment):
        launcher = super().launch(wait=False, **environment,
                                  DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
        launcher.await_active()
        return launcher


class LxqtPanel(XfcePanel):
    item = (15, 16)
    command = ["lxqt-panel"]
    session = {"XDG_CURRENT_DESKTOP": "LXQt"}

    def configure(self):
        folder = self.desktop.home / ".config/lxqt"
        folder.mkdir(parents=True)
        (folder / "panel.conf").write_text(
            "panels=panel1\n[panel1]\nplugins=statusnotifier\nposition=Top\npanelSize=32\n"
            "width=100\nwidth-percent=true\nalignment=-1\ndesktop=0\n"
            "[statusnotifier]\ntype=statusnotifier\n")

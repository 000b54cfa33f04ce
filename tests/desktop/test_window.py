import re

from harness import DesktopTest, wait_until
from windows import active_window, show_window, windows_called

MARGIN = 28

class Window(DesktopTest):
    def test_a_first_window_has_its_usual_size_and_the_keyboard(self):
        launcher = self.launch()
        self.assertEqual(launcher.size(), (980, 640))

    def test_it_grows_as_asked_and_shrinks_no_further_than_its_minimum(self):
        launcher = self.launch()
        for asked, wanted in (((1100, 700), (1100, 700)), ((300, 200), (760, 520))):
            with self.subTest(asked=asked):
                # As a pager asks: by way of the window manager.
                self.desktop.run("wmctrl", "-i", "-r", hex(int(launcher.window_id())), "-e",
                                 f"0,-1,-1,{asked[0]},{asked[1]}")
                wait_until(lambda: launcher.size() == wanted, f"the size {wanted}")

    def test_it_has_no_title_bar(self):
        launcher = self.launch()
        window = launcher.window_id()
        said = self.desktop.run("xprop", "-id", window, "_MOTIF_WM_HINTS", "_NET_FRAME_EXTENTS")
        hints = re.search(r"_MOTIF_WM_HINTS.* = (.*)", said)[1].split(", ")
        decorations = 2  # of the flags, that the third number counts
        self.assertTrue(int(hints[0], 16) & decorations, said)
        self.assertEqual(int(hints[2], 16), 0, said)
        self.assertRegex(said, r"_NET_FRAME_EXTENTS.* = 0, 0, 0, 0")

    def test_every_control_has_a_name_for_a_screen_reader(self):
        self.desktop.entry("Ananas")
        launcher = self.launch()
        launcher.await_tiles(["Ananas"])
        for role, name in (("text", "Cerca app o categoria…"), ("list", "App"),
                           ("list", "Categorie"), ("push button", "Aggiorna app"),
                           ("push button", "Suggerimenti di ricerca")):
            with self.subTest(role=role, name=name):
                self.assertIsNotNone(launcher.node(role, name))

    def test_the_window_is_called_tavo_launcher(self):
        self.assertIsNotNone(self.launch().node("frame", "Tavo Launcher"))

    def test_quitting_by_the_keyboard_ends_the_program_in_order(self):
        self.assertEqual(self.launch().quit(), 0)


class WindowUnderXfwm4(Window):
    wm = "xfwm4 --compositor=off"


class WindowWithShadow(DesktopTest):
    """Where the window manager takes a margin around the window, and a compositor runs."""
    wm = "xfwm4 --compositor=on"

    def another_window(self, x, y, width, height):
        """A white window there, which does not take the keyboard."""
        source = self.desktop.folder / "below.py"
        source.write_text(show_window("Sotto", modest=True))
        self.desktop.start(["/usr/bin/python3", source])
        window = wait_until(lambda: windows_called(self.desktop, "Sotto"), "another window")[0]
        self.desktop.run("wmctrl", "-i", "-r", hex(window), "-e", f"0,{x},{y},{width},{height}")
        return window

    def drag(self, launcher, begin, step):
        """Moves the pressed pointer by so much a step until the window follows."""
        before = launcher.geometry()
        self.desktop.move_pointer(*begin)
        self.desktop.xdo("mousedown", 1)
        place = begin

        def follows():
            nonlocal place
            place = place[0] + step[0], place[1] + step[1]
            self.desktop.move_pointer(*place)
            return launcher.geometry() != before
        wait_until(follows, "the window to follow the pointer")
        self.desktop.xdo("mouseup", 1)

    def test_it_is_in_the_middle_with_its_usual_size(self):
        launcher = self.launch()
        self.assertEqual(launcher.margins(), (MARGIN,) * 4)
        width, height = self.desktop.size
        launcher.await_place(((width - 980) // 2, (height - 640) // 2, 980, 640))

    def test_it_shrinks_no_further_than_its_minimum(self):
        launcher = self.launch()
        self.desktop.run("wmctrl", "-i", "-r", hex(int(launcher.window_id())), "-e",
                         "0,-1,-1,300,200")
        wait_until(lambda: launcher.place()[2:] == (760, 520), "the smallest size")

    def test_its_shadow_is_on_the_screen(self):
        self.another_window(0, 0, *self.desktop.size)
        launcher = self.launch()
        x, y, width, height = launcher.place()

        def brightness(below):
            return sum(self.desktop.pixels().at(x + width // 2, y + height + below)) // 3
        wait_until(lambda: brightness(1) < brightness(10) < 255 == brightness(MARGIN), "a shadow")
        self.picture("on_white")

    def test_a_click_in_the_shadow_is_for_the_window_below(self):
        launcher = self.launch()
        x, y, _, _ = launcher.place()
        below = self.another_window(x - 140, y + 100, 135, 200)  # half of it in the shadow
        launcher.await_active()
        self.desktop.move_pointer(x - 15, y + 200)
        self.desktop.xdo("click", 1)
        wait_until(lambda: active_window(self.desktop) == below, "the window below to be active")

    def test_it_is_resized_at_its_edge(self):
        launcher = self.launch()
        x, y, width, height = launcher.place()
        self.drag(launcher, (x + width - 3, y + 300), (5, 0))
        self.assertEqual(launcher.place()[:2], (x, y))
        self.assertGreater(launcher.place()[2], width)
        self.assertEqual(launcher.place()[3], height)

    def test_it_is_resized_a_little_outside_its_edge(self):
        launcher = self.launch()
        x, y, width, height = launcher.place()
        self.drag(launcher, (x - 4, y + 300), (-5, 0))
        left, top, wider, same = launcher.place()
        self.assertEqual((left + wider, top, same), (x + width, y, height))
        self.assertGreater(wider, width)

    def test_a_maximised_one_is_flush_and_comes_back_as_it_was(self):
        launcher = self.launch()
        before = launcher.geometry()
        for state in ("maximized_vert,maximized_horz", "fullscreen"):
            with self.subTest(state=state):
                window = hex(int(launcher.window_id()))
                self.desktop.run("wmctrl", "-i", "-r", window, "-b", f"add,{state}")
                wait_until(lambda: launcher.geometry() == (0, 0, *self.desktop.size), "all of it")
                self.assertEqual(launcher.margins(), ())
                self.desktop.run("wmctrl", "-i", "-r", window, "-b", f"remove,{state}")
                wait_until(lambda: launcher.geometry() == before, f"its place {before}")
                wait_until(lambda: launcher.margins() == (MARGIN,) * 4, "its margin")

    def test_it_comes_back_where_it_was(self):
        launcher = self.launch()
        before = launcher.geometry()
        for _ in range(2):
            launcher.close()
            self.assertEqual(self.launch(wait=False).process.wait(timeout=20), 0)
            wait_until(lambda: launcher.geometry() == before, f"its place {before}")

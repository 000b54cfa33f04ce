import re

from harness import DesktopTest, wait_until


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

"""The menus of tiles and of the search, by keyboard and by screen reader."""

from harness import DesktopTest, wait_until


class Menus(DesktopTest):
    def launch_with(self, *names):
        for name in names:
            self.desktop.entry(name)
        launcher = self.launch()
        launcher.await_tiles(names)
        return launcher

    def open_first_tiles_menu(self, launcher):
        self.desktop.key("ctrl+f", "Down", "shift+F10")
        launcher.await_node("popup menu", "Ananas")

    def await_no_menu(self, launcher):
        wait_until(lambda: launcher.node("popup menu") is None, "the menu to close")

    def test_an_entry_pressed_by_a_screen_reader_acts_and_closes_its_menus(self):
        launcher = self.launch_with("Ananas", "Banana")
        self.open_first_tiles_menu(launcher)
        launcher.press("menu item", "Lavoro")  # of a submenu that nobody opened
        self.await_no_menu(launcher)
        launcher.press("push button", "Suggerimenti di ricerca")
        launcher.press("menu item", "Categoria: Lavoro")
        self.await_no_menu(launcher)
        launcher.await_tiles(["Ananas"])

    def test_a_menu_is_walked_by_keyboard_and_gives_the_keyboard_back(self):
        launcher = self.launch_with("Ananas", "Banana")
        self.open_first_tiles_menu(launcher)
        self.desktop.key("Escape")
        self.await_no_menu(launcher)
        self.desktop.key("shift+F10", "Return")  # the tile still has the keyboard
        launcher.await_tiles(["Banana"])
        self.desktop.type("ban")
        launcher.await_equal(launcher.search_text, "ban")

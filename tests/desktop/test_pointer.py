"""What the pointer does in the window, and the keys that lead about in it."""

import itertools

from harness import Atspi, DesktopTest, Store, children, has_state, wait_until, wait_until_still


class HandsTest(DesktopTest):
    CORNER = (1279, 799)

    def setUp(self):
        super().setUp()
        self.desktop.move_pointer(*self.CORNER)
        self.opened = self.desktop.folder / "opened"
        self.program = self.desktop.script("opens", f"echo \"$1\" >>'{self.opened}'")

    def install(self, *names):
        """Applications that write their names when they are opened."""
        for name in names:
            self.desktop.entry(name, Exec=f'"{self.program}" "{name}"')

    def opened_names(self):
        return self.opened.read_text().splitlines() if self.opened.exists() else []

    def await_opened(self, launcher, *names):
        launcher.await_equal(self.opened_names, list(names))


class Pointer(HandsTest):
    def item_at_pointer(self, launcher):
        x, y = self.desktop.pointer()
        return next((item.get_name() for item in children(launcher.node("list", "App"))
                     if (box := item.get_extents(Atspi.CoordType.SCREEN))
                     and box.x <= x < box.x + box.width and box.y <= y < box.y + box.height), None)

    def drag(self, launcher, start, by, wanted):
        """Drags until the window is there, left, top, width and height. The window manager, which
        does the rest, takes its time to begin, and counts from where the pointer is then: that
        stays within a pixel of `start` until the window follows."""
        before = launcher.geometry()
        change = [there - here for there, here in zip(wanted, before)]

        steps = itertools.cycle((1, 0))

        def follows():
            step = next(steps)
            self.desktop.xdo("mousemove", start[0] + step, start[1] + step)
            return launcher.geometry() != before
        self.desktop.move_pointer(*start)
        self.desktop.xdo("mousedown", 1)
        try:
            wait_until(follows, "the window manager to begin", pause=0.05)
            self.desktop.xdo("mousemove", *start)
            began = wait_until_still(launcher.geometry, "the window to stand")
            for there, here in zip(began, before):
                self.assertLessEqual(abs(there - here), 1)
            self.desktop.xdo("mousemove", start[0] + by[0], start[1] + by[1])
            launcher.await_equal(launcher.geometry,
                                 tuple(here + step for here, step in zip(began, change)))
        finally:
            self.desktop.xdo("mouseup", 1)

    def test_the_wheel_scrolls_and_a_click_opens_what_stands_there_then(self):
        self.install(*(f"Programma {number:03}" for number in range(100)))
        launcher = self.launch()
        self.desktop.point_at(launcher.await_node("list item", "Apri Programma 007"))
        launcher.await_equal(lambda: self.item_at_pointer(launcher), "Apri Programma 007")
        self.desktop.xdo("click", "--repeat", 3, "--delay", 5, 5)
        self.desktop.xdo("click", 1)
        wait_until(self.opened_names, "something to be opened")
        found = self.item_at_pointer(launcher)
        self.assertNotEqual(found, "Apri Programma 007")
        self.assertEqual([f"Apri {name}" for name in self.opened_names()], [found])

    def test_a_right_click_opens_the_menu_of_the_tile_and_not_the_application(self):
        self.install("Ananas", "Bosco")
        launcher = self.launch()
        self.desktop.click(launcher.await_node("list item", "Apri Bosco"), button=3)
        launcher.await_menu("Bosco")
        self.desktop.click(launcher.node("menu item", "Nascondi dall’elenco"))
        launcher.await_tiles(["Ananas"])
        launcher.await_no_menu()
        self.assertEqual(self.opened_names(), [])

    def test_a_click_on_the_star_marks_and_opens_nothing(self):
        self.install("Ananas", "Bosco")
        launcher = self.launch()
        self.desktop.point_at(launcher.await_node("list item", "Apri Ananas"))
        for star, stored in (("Aggiungi ai preferiti", 1), ("Rimuovi dai preferiti", 0)):
            with self.subTest(star=star):
                self.desktop.click(launcher.await_node("push button", star))
                launcher.await_equal(lambda: len(self.desktop.store.read(Store.FAVORITES) or []),
                                     stored)
        self.desktop.click(launcher.await_node("list item", "Apri Bosco"))
        self.await_opened(launcher, "Bosco")

    def test_a_resting_pointer_opens_nothing_that_the_keyboard_did_not_choose(self):
        self.install("Ananas", "Bosco")
        launcher = self.launch()
        self.desktop.point_at(launcher.await_node("list item", "Apri Bosco"))
        self.desktop.key("Down", "Return")
        self.await_opened(launcher, "Ananas")

    def test_a_corner_drags_the_window_larger(self):
        launcher = self.launch()
        x, y, width, height = launcher.geometry()
        # Within the round corner: beyond it there is no window where nothing blends.
        self.drag(launcher, (x + width - 7, y + height - 7), by=(60, 40),
                  wanted=(x, y, width + 60, height + 40))

    def test_an_edge_drags_the_window_wider(self):
        launcher = self.launch()
        x, y, width, height = launcher.geometry()
        self.drag(launcher, (x + 1, y + height // 2), by=(-50, 20),
                  wanted=(x - 50, y, width + 50, height))

    def test_what_is_empty_of_the_sidebar_drags_the_window(self):
        launcher = self.launch()
        below = launcher.node("push button", "Modifica categorie").get_extents(
            Atspi.CoordType.SCREEN)
        x, y, width, height = launcher.geometry()
        self.drag(launcher, (below.x + 40, below.y - 40), by=(40, 30),
                  wanted=(x + 40, y + 30, width, height))

    def test_what_is_empty_of_the_toolbar_drags_the_window(self):
        launcher = self.launch()
        reload = launcher.node("push button", "Aggiorna app").get_extents(Atspi.CoordType.SCREEN)
        x, y, width, height = launcher.geometry()
        self.drag(launcher, (reload.x + reload.width // 2, reload.y - 5), by=(-60, 40),
                  wanted=(x - 60, y + 40, width, height))

    def test_a_suggestion_replaces_the_search_and_the_selection(self):
        self.install("Ananas", "Bosco")
        self.desktop.store.write(Store.CATEGORIES, [{"id": "wood", "name": "Legno"}])
        self.desktop.store.write(Store.RULES, {"wood": "bosco"})
        launcher = self.launch()
        self.desktop.type("ana")
        launcher.press("list item", "Preferite")
        for entry, text, row, tiles in (
                ("Categoria: Legno", "cat:Legno", "Tutte", ["Bosco"]),
                ("Recenti", "", "Recenti", []),
                ("Preferite", "", "Preferite", [])):
            with self.subTest(entry=entry):
                self.desktop.click(launcher.node("push button", "Suggerimenti di ricerca"))
                launcher.await_menu("Suggerimenti di ricerca")
                self.desktop.click(launcher.node("menu item", entry))
                launcher.await_no_menu()
                launcher.await_equal(launcher.search_text, text)
                launcher.await_equal(launcher.selected_row, row)
                launcher.await_tiles(tiles)

    def test_a_tool_tip_says_the_whole_name_as_it_is_spelt(self):
        name = "<b>Nome</b> &amp; cognome che non finisce mai e poi mai"
        self.desktop.entry(name, id="markup")
        launcher = self.launch()
        self.desktop.point_at(launcher.await_node("list item", f"Apri {name}"))
        # It has lines, and words may be broken at places that are not seen.
        tip = launcher.await_node("tool tip").get_name().replace("\u200b", "").replace("\n", " ")
        self.assertEqual(tip, f"Apri {name}")

    def test_the_star_has_a_tool_tip_of_its_own(self):
        self.install("Ananas")
        launcher = self.launch()
        self.desktop.point_at(launcher.await_node("list item", "Apri Ananas"))
        self.desktop.point_at(launcher.await_node("push button", "Aggiungi ai preferiti"))
        launcher.await_node("tool tip", "Aggiungi ai preferiti")

    def test_the_wheel_over_a_picker_scrolls_the_editor_and_moves_no_category(self):
        self.desktop.store.write(Store.CATEGORIES, [
            {"id": str(number), "name": f"Categoria {number}"} for number in range(12)])
        launcher = self.launch()
        launcher.press("push button", "Modifica categorie")
        picker = launcher.await_node("combo box", "Posizione: Categoria 1")

        def top():
            node = launcher.node("combo box", "Posizione: Categoria 1")
            return node.get_extents(Atspi.CoordType.SCREEN).y
        before = top()
        self.desktop.point_at(picker)
        self.desktop.xdo("click", 5)
        wait_until(lambda: top() < before, "the list to scroll")
        chosen = [choice.get_name()
                  for choice in children(launcher.node("combo box", "Posizione: Categoria 1"))
                  if has_state(choice, Atspi.StateType.SELECTED)]
        self.assertEqual(chosen, ["Categoria principale"])

    def test_a_link_that_nothing_opens_is_told_on_standard_error(self):
        self.launch().press("push button", "Powered by qt.io")
        wait_until(lambda: "no program opens https://www.qt.io\n" in self.desktop.log(),
                   "the message")

    def test_the_credit_opens_its_site_in_the_desktops_browser(self):
        browser = self.desktop.script("browser", f"echo \"$@\" >>'{self.opened}'")
        self.desktop.entry("Navigatore", id="browser", Exec=f'"{browser}" %u',
                           MimeType="x-scheme-handler/https;", NoDisplay="true")
        (self.desktop.data / "applications/mimeapps.list").write_text(
            "[Default Applications]\nx-scheme-handler/https=browser.desktop\n")
        launcher = self.launch()
        self.desktop.click(launcher.await_node("push button", "Powered by qt.io"))
        self.await_opened(launcher, "https://www.qt.io")


class Keys(HandsTest):
    def test_the_menu_key_and_shift_f10_open_the_menu_of_the_keyboards_tile(self):
        self.install("Ananas", "Bosco")
        launcher = self.launch()
        self.desktop.key("Down", "Right")
        launcher.await_focus("list item", "Apri Bosco")
        for key in ("Menu", "shift+F10"):
            with self.subTest(key=key):
                self.desktop.key(key)
                launcher.await_menu("Bosco")
                self.desktop.key("Escape")
                launcher.await_no_menu()
        launcher.await_focus("list item", "Apri Bosco")

    def test_tab_goes_round_in_reading_order_and_shows_where_it_is(self):
        self.install("Ananas", "Bosco")
        launcher = self.launch()
        launcher.await_focus("text", "Cerca app o categoria…")
        launcher.await_tiles(["Ananas", "Bosco"])
        before = self.desktop.pixels()
        for stop in (("push button", "Suggerimenti di ricerca"), ("push button", "Aggiorna app"),
                     ("list item", "Apri Ananas"), ("push button", "Powered by qt.io"),
                     ("push button", "Chiudi"), ("list item", "Tutte"),
                     ("push button", "Modifica categorie")):
            with self.subTest(stop=stop):
                self.desktop.key("Tab")
                launcher.await_focus(*stop)
                box = launcher.node(*stop).get_extents(Atspi.CoordType.SCREEN)
                wait_until(lambda: self.desktop.pixels().differ_in(before, box), "a ring")
        self.desktop.key("Tab")
        launcher.await_focus("text", "Cerca app o categoria…")
        self.desktop.key("shift+Tab")
        launcher.await_focus("push button", "Modifica categorie")

    def test_typing_searches_from_wherever_the_keyboard_is(self):
        self.install("Ananas", "Bosco", "Cedro")
        launcher = self.launch()
        for stop, letter, found in ((("push button", "Aggiorna app"), "a", "Ananas"),
                                    (("list item", "Tutte"), "b", "Bosco"),
                                    (("push button", "Modifica categorie"), "c", "Cedro")):
            with self.subTest(stop=stop):
                while launcher.focused() != stop:
                    before = launcher.focused()
                    self.desktop.key("Tab")
                    launcher.await_change(launcher.focused, before)
                self.desktop.type(letter)
                launcher.await_equal(launcher.search_text, letter)
                launcher.await_focus("text", "Cerca app o categoria…")
                self.desktop.key("Escape")
                launcher.await_equal(launcher.search_text, "")

    def test_a_dead_key_composes_also_when_it_is_the_first_one_typed(self):
        self.desktop.run("setxkbmap", "us", "-variant", "intl")
        self.install("Àncora", "Bosco")
        launcher = self.launch()
        self.desktop.key("Down")
        launcher.await_focus("list item", "Apri Àncora")
        self.desktop.key("dead_grave", "a")
        launcher.await_equal(launcher.search_text, "à")
        launcher.await_tiles(["Àncora"])

    def test_ctrl_f_takes_the_keyboard_to_the_search_and_selects_its_text(self):
        self.install("Ananas", "Bosco")
        launcher = self.launch()
        self.desktop.type("bo")
        self.desktop.key("Down")
        launcher.await_focus("list item", "Apri Bosco")
        self.desktop.key("ctrl+f")
        launcher.await_focus("text", "Cerca app o categoria…")
        self.desktop.type("an")
        launcher.await_tiles(["Ananas"])

    def test_escape_leaves_menu_editor_and_alert_and_nothing_else(self):
        self.install("Ananas")
        launcher = self.launch()
        self.desktop.type("an")
        launcher.await_equal(launcher.search_text, "an")
        self.desktop.key("Down", "Menu")
        launcher.await_menu("Ananas")
        self.desktop.key("Escape")
        launcher.await_no_menu()
        launcher.press("push button", "Modifica categorie")
        launcher.await_focus("text", "Nuova categoria")
        self.desktop.key("Escape")
        launcher.await_equal(lambda: launcher.node("dialog"), None)
        (self.desktop.data / "applications/Ananas.desktop").unlink()
        self.desktop.key("Return")
        launcher.await_node("dialog", "Impossibile aprire l’app")
        self.desktop.key("Escape")
        launcher.await_equal(lambda: launcher.node("dialog"), None)
        self.assertEqual(launcher.search_text(), "an")

    def test_ctrl_w_takes_the_window_away(self):
        launcher = self.launch()
        launcher.close()

    def test_ctrl_q_ends_the_program_also_while_categories_are_edited(self):
        launcher = self.launch()
        launcher.press("push button", "Modifica categorie")
        launcher.await_focus("text", "Nuova categoria")
        self.desktop.type("Frutta")
        self.assertEqual(launcher.quit(), 0)
        self.assertIsNone(self.desktop.store.read(Store.CATEGORIES))

    def test_ctrl_w_takes_the_window_away_also_while_categories_are_edited(self):
        launcher = self.launch()
        launcher.press("push button", "Modifica categorie")
        launcher.await_focus("text", "Nuova categoria")
        launcher.close()


class KeysUnderXfwm4(HandsTest):
    wm = "xfwm4 --compositor=off"

    def test_the_keyboard_leads_from_search_to_grid_and_opens(self):
        self.install("Ananas", "Bosco")
        launcher = self.launch()
        self.desktop.key("Down", "Right", "Return")
        self.await_opened(launcher, "Bosco")

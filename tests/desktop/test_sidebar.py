from harness import DesktopTest, Store

FIXED = ["Tutte", "Preferite", "Recenti", "Nascoste"]


class Sidebar(DesktopTest):
    def setUp(self):
        super().setUp()
        self.paths = {name: str(self.desktop.entry(name)) for name in ("Ananas", "Bosco", "Cedro")}

    def test_a_first_start_shows_the_fixed_and_the_default_categories_and_writes_nothing(self):
        launcher = self.launch()
        self.assertEqual(launcher.rows(), [*FIXED, "Lavoro", "Creatività", "Utility"])
        self.assertEqual(launcher.selected_row(), "Tutte")
        self.assertFalse(self.desktop.store.path.exists())

    def test_pressing_a_row_selects_it_and_shows_its_applications(self):
        self.desktop.store.write(Store.FAVORITES, [self.paths["Cedro"], self.paths["Ananas"]])
        self.desktop.store.write(Store.RECENTS, [self.paths["Cedro"], self.paths["Bosco"]])
        self.desktop.store.write(Store.HIDDEN, [self.paths["Bosco"]])
        launcher = self.launch()
        launcher.await_tiles(["Ananas", "Cedro"])
        for row, names in (("Preferite", ["Ananas", "Cedro"]), ("Recenti", ["Cedro"]),
                           ("Nascoste", ["Bosco"]), ("Tutte", ["Ananas", "Cedro"])):
            with self.subTest(row=row):
                launcher.press("list item", row)
                launcher.await_equal(launcher.selected_row, row)
                launcher.await_tiles(names)

    def test_clicking_a_row_selects_it_and_leaves_the_search(self):
        self.desktop.store.write(Store.FAVORITES, [self.paths["Cedro"], self.paths["Ananas"]])
        launcher = self.launch()
        self.desktop.type("ce")
        launcher.await_tiles(["Cedro"])
        self.desktop.click(launcher.await_node("list item", "Preferite"))
        launcher.await_equal(launcher.selected_row, "Preferite")
        launcher.await_tiles(["Cedro"])
        self.assertEqual(launcher.search_text(), "ce")

    def test_categories_stand_below_their_parents(self):
        self.desktop.store.write(Store.CATEGORIES, [
            {"id": "child", "name": "Figlia", "parentID": "parent"},
            {"id": "parent", "name": "Madre"},
            {"id": "other", "name": "Altra"}])
        self.desktop.store.write(Store.RULES, {"child": "bosco"})
        launcher = self.launch()
        self.assertEqual(launcher.rows(), [*FIXED, "Madre", "Figlia", "Altra"])
        launcher.press("list item", "Figlia")
        launcher.await_tiles(["Bosco"])
        launcher.press("list item", "Madre")
        launcher.await_tiles([])

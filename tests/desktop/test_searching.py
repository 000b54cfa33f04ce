from harness import DesktopTest, Store, wait_until


class Searching(DesktopTest):
    def setUp(self):
        super().setUp()
        for name in ("Zeppelin", "Zebra Photo", "Quartz", "Quince"):
            self.desktop.entry(name)

    def test_typing_anywhere_narrows_the_grid_and_its_count(self):
        launcher = self.launch()
        launcher.await_tiles(["Quartz", "Quince", "Zebra Photo", "Zeppelin"])
        self.desktop.type("ze")
        launcher.await_tiles(["Zebra Photo", "Zeppelin"])
        self.desktop.type("bra")
        launcher.await_tiles(["Zebra Photo"])
        self.desktop.type("x")
        launcher.await_tiles([])

    def test_typing_goes_to_the_search_also_from_within_the_grid(self):
        launcher = self.launch()
        launcher.await_tiles(["Quartz", "Quince", "Zebra Photo", "Zeppelin"])
        self.desktop.key("Down", "Right")
        self.desktop.type("qu")
        launcher.await_equal(launcher.search_text, "qu")
        launcher.await_tiles(["Quartz", "Quince"])

    def test_case_does_not_count_and_accents_do(self):
        self.desktop.entry("Éclair")
        launcher = self.launch()
        self.desktop.type("QUINCE")
        launcher.await_tiles(["Quince"])
        self.desktop.key("ctrl+a")
        self.desktop.type("eclair")
        launcher.await_tiles([])
        self.desktop.key("ctrl+a")
        self.desktop.type("éclair")
        launcher.await_tiles(["Éclair"])

    def test_escape_clears_the_search_then_hides_the_window_and_never_ends_the_program(self):
        launcher = self.launch()
        self.desktop.type("zebra")
        launcher.await_tiles(["Zebra Photo"])
        self.desktop.key("Escape")
        launcher.await_tiles(["Quartz", "Quince", "Zebra Photo", "Zeppelin"])
        self.assertEqual(launcher.search_text(), "")
        self.assertTrue(launcher.is_shown())
        self.desktop.key("Escape")
        launcher.await_equal(launcher.is_shown, False)
        self.assertIsNone(launcher.process.poll())

    def test_a_category_term_narrows_by_hand_made_membership_and_by_rule(self):
        self.desktop.store.write(Store.CATEGORIES, [{"id": "minerals", "name": "Minerali"},
                                                    {"id": "fruit", "name": "Frutta"}])
        self.desktop.store.write(Store.RULES, {"minerals": "quartz, photo"})
        self.desktop.store.write(Store.ASSIGNMENTS, {
            "fruit": [str(self.desktop.data / "applications/Quince.desktop")]})
        launcher = self.launch()
        launcher.await_tiles(["Quartz", "Quince", "Zebra Photo", "Zeppelin"])
        self.desktop.type("cat:miner")
        launcher.await_tiles(["Quartz", "Zebra Photo"])
        self.desktop.type(" zeb")
        launcher.await_tiles(["Zebra Photo"])
        self.desktop.key("ctrl+a")
        self.desktop.type("categoria:FRUTTA")
        launcher.await_tiles(["Quince"])
        self.desktop.key("ctrl+a")
        self.desktop.type("cat:nessuna")
        launcher.await_tiles([])

    def test_return_opens_nothing_when_nothing_is_found(self):
        launcher = self.launch()
        self.desktop.type("nothing of the kind")
        launcher.await_tiles([])
        self.desktop.key("Return", "Escape")
        launcher.await_tiles(["Quartz", "Quince", "Zebra Photo", "Zeppelin"])
        self.assertIsNone(self.desktop.store.read(Store.RECENTS))

from harness import DesktopTest, Store


class StoreFile(DesktopTest):
    GARBAGE = b"this is not a database\0\xff\xfe" * 100

    def test_a_file_that_is_no_store_is_put_aside_at_the_first_write_and_kept(self):
        path = self.desktop.store.path
        path.parent.mkdir(mode=0o700, parents=True)
        path.write_bytes(self.GARBAGE)
        entry, mark = self.desktop.marking_entry("Ananas")
        launcher = self.launch()
        launcher.await_tiles(["Ananas"])
        self.assertEqual(path.read_bytes(), self.GARBAGE, "reading alone changes nothing")

        launcher.press("list item", "Apri Ananas")
        self.await_file(mark)
        self.assertEqual(self.desktop.store.read(Store.RECENTS), [str(entry)])
        aside = [other for other in path.parent.iterdir()
                 if other.is_file() and other.read_bytes() == self.GARBAGE]
        self.assertEqual(len(aside), 1, sorted(path.parent.iterdir()))

    def test_values_of_other_forms_read_as_absent(self):
        self.desktop.entry("Ananas")
        self.desktop.store.write(Store.CATEGORIES, {"not": "an array"})
        self.desktop.store.write(Store.HIDDEN, {"not": "an array"})
        self.desktop.store.write(Store.RULES, ["not a dictionary"])
        launcher = self.launch()
        launcher.await_tiles(["Ananas"])
        self.assertEqual(launcher.rows()[4:], ["Lavoro", "Creatività", "Utility"])

    def test_the_store_is_the_users_alone(self):
        _, mark = self.desktop.marking_entry("Ananas")
        launcher = self.launch()
        launcher.press("list item", "Apri Ananas")
        self.await_file(mark)
        path = self.desktop.store.path
        self.assertEqual((path.stat().st_mode & 0o777, path.parent.stat().st_mode & 0o777),
                         (0o600, 0o700))

    def test_the_program_works_where_the_store_cannot_be_written(self):
        # A file where the folder should be: refused to every user, root too.
        blocker = self.desktop.store.path.parent
        blocker.parent.mkdir(parents=True, exist_ok=True)
        blocker.write_text("in the way")
        _, mark = self.desktop.marking_entry("Ananas")
        launcher = self.launch()
        launcher.press("list item", "Apri Ananas")
        self.await_file(mark)
        launcher.press("list item", "Recenti")
        launcher.await_tiles(["Ananas"])
        self.assertEqual(blocker.read_text(), "in the way")

import check_words
from planted import PlantedTree

# In pieces, because this file stands in the tree that is checked.
OUT_OF_PLACE = (
    "as Part" + " 2.3 says",
    "see des" + "ign.md",
    "as the specifi" + "cation wants",
    "in /wo" + "rk/shared",
    "from deb.deb" + "ian.org",
    "// TO" + "DO: later",
)


class CheckWords(PlantedTree):
    def test_finds_each_word_out_of_place_with_its_line(self):
        for text in OUT_OF_PLACE:
            with self.subTest(text=text):
                path = self.plant("ui/Tile.cpp", f"// A tile.\n{text}\n")
                found = check_words.check(self.root)
                self.assertEqual(len(found), 1, found)
                self.assertTrue(found[0].startswith("ui/Tile.cpp:2: "), found)
                path.unlink()

    def test_finds_them_in_a_file_name_too(self):
        self.plant("docs/des" + "ign.md", "nothing\n")
        self.assertEqual(len(check_words.check(self.root)), 1)

    def test_looks_past_pictures_and_what_is_ignored(self):
        self.plant(".gitignore", "*.log\n")
        self.plant("build.log", OUT_OF_PLACE[0])
        self.plant("mark.png", "\0" + OUT_OF_PLACE[0])
        self.assertEqual(check_words.check(self.root), [])

    def test_fails_on_a_bad_tree_and_passes_a_good_one(self):
        self.plant("ui/Tile.cpp", "// Part of the window.\n")
        self.assertEqual(check_words.main([str(self.root)]), 0)
        self.plant("ui/Grid.cpp", OUT_OF_PLACE[0])
        self.assertEqual(check_words.main([str(self.root)]), 1)

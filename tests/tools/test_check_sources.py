import check_sources
from planted import PlantedTree


class CheckSources(PlantedTree):
    def test_knows_a_file_named_beside_it_or_from_the_root(self):
        self.plant("ui/CMakeLists.txt", "add_library(ui Tile.cpp)\nheaders(ui/Tile.h)\n")
        self.plant("ui/Tile.cpp", "")
        self.plant("ui/Tile.h", "")
        self.assertEqual(check_sources.check(self.root), [])

    def test_finds_a_source_that_no_build_names(self):
        self.plant("ui/CMakeLists.txt", "add_library(ui Tile.cpp)  # Grid.cpp is not\n")
        self.plant("ui/Tile.cpp", "")
        self.plant("ui/Grid.cpp", "")
        self.assertEqual(check_sources.check(self.root),
                         ["ui/Grid.cpp: no CMakeLists.txt names it"])

    def test_finds_a_header_of_the_program_but_not_one_of_the_tests(self):
        self.plant("ui/Tile.h", "")
        self.plant("tests/fakes/FakeTile.h", "")
        self.assertEqual(check_sources.check(self.root), ["ui/Tile.h: no CMakeLists.txt names it"])

    def test_looks_past_what_is_built_and_ignored(self):
        self.plant(".gitignore", "/build/\n")
        self.plant("build/alone/Tile.cpp", "")
        self.assertEqual(check_sources.check(self.root), [])

    def test_fails_on_a_bad_tree_and_passes_a_good_one(self):
        self.assertEqual(check_sources.main([str(self.root)]), 0)
        self.plant("ui/Grid.cpp", "")
        self.assertEqual(check_sources.main([str(self.root)]), 1)

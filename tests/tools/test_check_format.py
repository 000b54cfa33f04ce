import pathlib
import shutil

import check_format
from planted import PlantedTree

ROOT = pathlib.Path(__file__).resolve().parents[2]


class CheckFormat(PlantedTree):
    def setUp(self):
        super().setUp()
        self.program = check_format.formatter()
        if self.program is None:
            self.skipTest(f"clang-format {check_format.VERSION} is not installed")
        shutil.copy(ROOT / ".clang-format", self.root)

    def test_finds_a_line_that_is_laid_out_otherwise(self):
        self.plant("support/Text.h", "namespace tavo {\nint  length();\n}  // namespace tavo\n")
        found = check_format.check(self.root, self.program)
        self.assertEqual(len(found), 1, found)
        self.assertTrue(found[0].startswith("support/Text.h:2:"), found)

    def test_finds_a_line_of_more_than_a_hundred_columns(self):
        self.plant("support/Text.h", f"int {'a' * 50}(int {'b' * 50});\n")
        self.assertEqual(len(check_format.check(self.root, self.program)), 1)

    def test_lets_pass_what_clang_format_would_write(self):
        self.plant("support/Text.h", "namespace tavo {\nint length();\n}  // namespace tavo\n")
        self.assertEqual(check_format.check(self.root, self.program), [])

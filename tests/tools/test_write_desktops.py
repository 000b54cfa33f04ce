"""The tables of desktops are what the trials have found."""

import contextlib
import io
import json
import pathlib
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tools"), str(ROOT / "tests/desktops")]

import expected  # noqa: E402
import write_desktops  # noqa: E402


def answer(trial, said="yes", why="", evidence="seen"):
    return {"trial": trial, "answer": said, "evidence": evidence, "why": why, "verdict": ""}


def result(title, *answers):
    return {"title": title, "answers": answers, "measures": {"start_ms": 120},
            "applications": {"KCalc": {"version": "22.12", "kind": "Qt"}}}


class Written(unittest.TestCase):
    def written(self, results):
        """README.md and docs/desktops.md, when those are the results."""
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / "docs").mkdir()
            for name in ("README.md", "docs/desktops.md"):
                (root / name).write_text(
                    "before\n<!-- trials -->\nold\n<!-- end of trials -->\nafter\n")
            for (release, session), content in results.items():
                path = root / "build/desktops" / release / session / "results.json"
                path.parent.mkdir(parents=True)
                path.write_text(json.dumps(content))
            with contextlib.redirect_stdout(io.StringIO()):
                write_desktops.main([folder])
            return [(root / name).read_text() for name in ("README.md", "docs/desktops.md")]

    def test_what_stood_between_the_marks_is_replaced_and_the_rest_kept(self):
        for text in self.written({("bookworm", "sway"): result(
                "sway 1.7", answer("not in the taskbar"))}):
            self.assertTrue(text.startswith("before\n"))
            self.assertTrue(text.endswith("\nafter\n"))
            self.assertNotIn("old", text)
            self.assertIn("sway 1.7", text)

    def test_each_no_and_each_condition_has_its_reason_once_below_the_table(self):
        _, text = self.written({("bookworm", "sway"): result(
            "sway 1.7", answer("one", "no", "cannot be"), answer("two", "no", "cannot be"),
            answer("three", "no", evidence="nothing came"),
            answer("four", "not there", evidence="has none"), answer("five", why="later"))})
        for line in ("| one | **no** (1) |", "| two | **no** (1) |", "| three | **no** (2) |",
                     "| four | – (3) |", "\n1. cannot be\n", "\n2. Seen: nothing came\n",
                     "\n3. has none\n", "| five | yes (4) |", "\n4. later\n"):
            self.assertIn(line, text)

    def test_an_application_has_its_three_answers_in_one_cell(self):
        _, text = self.written({("trixie", "xfce"): result(
            "Xfce", answer("new: KCalc"), answer("fronts: KCalc", "no", "so"),
            answer("restores: KCalc"))})
        self.assertIn("| KCalc 22.12 (Qt) | yes / **no** (1) / yes |", text)

    def test_the_short_table_counts_and_tells_the_releases_apart(self):
        def lxqt(fronts):
            return result("LXQt", answer("fronts: KCalc", fronts), answer("fronts: Mousepad"),
                          answer("tray: left click"))
        text, _ = self.written({("bookworm", "lxqt"): lxqt("yes"), ("trixie", "lxqt"): lxqt("no")})
        self.assertIn("| LXQt (LXQt · LXQt) | yes |", text)
        self.assertIn("| 12: yes; 13: 1 of 2 |", text)

    def test_without_results_nothing_is_written(self):
        with self.assertRaises(SystemExit):
            self.written({})


class Expected(unittest.TestCase):
    def test_a_yes_passes_and_anything_else_fails_unless_it_has_a_reason(self):
        for said, verdict in (("yes", "passed"), ("no", "FAILED"), ("broken", "FAILED")):
            self.assertEqual(expected.judge("bookworm", "xfce", "starts and shows", said)[0],
                             verdict)

    def test_an_expected_no_passes_with_its_reason_and_a_yes_in_its_place_fails(self):
        given = ("bookworm", "sway", "not in the taskbar")
        self.assertEqual(expected.judge(*given, "no")[0], "passed")
        self.assertIn("protocol", expected.judge(*given, "no")[1])
        self.assertEqual(expected.judge(*given, "yes")[0], "FAILED")
        self.assertEqual(expected.judge(*given, "broken")[0], "FAILED")

    def test_what_a_desktop_has_not_is_not_tried_there(self):
        self.assertTrue(expected.not_there("trixie", "sway", "restores: KCalc"))
        self.assertFalse(expected.not_there("trixie", "xfce", "restores: KCalc"))


if __name__ == "__main__":
    unittest.main()

import pathlib
import re
import unittest

from documents import CODE, LINK

ROOT = pathlib.Path(__file__).resolve().parents[2]
GUIDES = {name: (ROOT / "docs" / name).read_text() for name in ("guida.md", "guide.md")}
SHORTCUTS = {"guida.md": "## Una scorciatoia da tastiera", "guide.md": "## A keyboard shortcut"}

# Where the program's texts are written.
TEXTS = ("ui/look/Texts.h", "app", "catalogue/LauncherCategory.cpp")
DESKTOPS = {"GNOME", "KDE Plasma", "Xfce", "LXQt", "sway", "openbox"}
# Names of desktops and keys stand out in the guides too.
OTHERS = DESKTOPS | {"altrove", "elsewhere", "grassetto", "bold", "Invio", "Return", "Esc"}
# Explanations, what stands before or after names and numbers, and what only a screen reader says.
NOT_NAMED = {"kApplications", "kAssignedTo", "kCountSuffix", "kCredit", "kCreditAddress",
             "kEditorExplanation", "kFavorite", "kFirstApp", "kHasBecomeFavorite", "kIsHidden",
             "kIsNoFavorite", "kIsShown", "kLevelPrefix", "kNoApps", "kOpenPrefix", "kReloaded",
             "kRemovedFrom", "kScrollBar"}


def interface_texts():
    files = [file for name in TEXTS for file in
             ([ROOT / name] if (ROOT / name).is_file() else (ROOT / name).rglob("*.[ch]*"))]
    return {text.strip() for file in files
            for text in re.findall(r'"((?:[^"\\]|\\.)*)"', file.read_text())}


def named(text):
    """What of the interface stands out in each part of a guide, in the order of the parts."""
    return [set(re.findall(r"\*\*([^*]+)\*\*", part)) - OTHERS
            for part in re.split(r"^#+ .*$", text, flags=re.MULTILINE)]


class Guide(unittest.TestCase):
    def test_every_word_that_it_says_the_interface_shows_is_shown(self):
        for name, guide in GUIDES.items():
            with self.subTest(guide=name):
                self.assertEqual(set().union(*named(guide)) - interface_texts(), set())

    def test_it_names_every_control_of_the_window_the_editor_and_the_status_item(self):
        texts = dict(re.findall(r'\b(k\w+) =\s+u"([^"]*)"', (ROOT / "ui/look/Texts.h").read_text()))
        self.assertEqual(NOT_NAMED - texts.keys(), set())
        for name, guide in GUIDES.items():
            for text in texts.keys() - NOT_NAMED:
                with self.subTest(guide=name, text=text):
                    self.assertIn(f"**{texts[text].strip()}**", guide)

    def test_it_says_how_to_bind_a_shortcut_on_each_desktop(self):
        for name, guide in GUIDES.items():
            section = guide.split(SHORTCUTS[name])[1].split("\n## ")[0]
            for desktop in DESKTOPS:
                self.assertIn(f"**{desktop}**", section, name)


class BothLanguages(unittest.TestCase):
    """What of the two guides has to be the same, part by part."""

    def assert_same(self, what):
        italian, english = (what(guide) for guide in GUIDES.values())
        self.assertGreater(len(italian), 3)
        self.assertEqual(english, italian)

    def test_they_have_the_same_parts(self):
        self.assert_same(lambda text: re.findall(r"^(#+) ", CODE.sub("", text), re.MULTILINE))

    def test_each_part_names_the_same_words_of_the_interface(self):
        self.assert_same(named)

    def test_they_have_the_same_pictures(self):
        self.assert_same(lambda text: [link for link in LINK.findall(text) if link.endswith(".png")])

    def test_they_give_the_same_commands_paths_and_lines(self):
        self.assert_same(CODE.findall)

    def test_their_tables_and_lists_are_as_long(self):
        self.assert_same(lambda text: re.findall(r"^ *(\||-|\d\.) ", text, re.MULTILINE))

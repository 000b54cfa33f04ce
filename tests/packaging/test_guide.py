import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
GUIDE = (ROOT / "docs/guida.md").read_text()

# Where the program's texts are written.
TEXTS = ("ui/look/Texts.h", "app", "catalogue/LauncherCategory.cpp")
# Names of desktops and keys stand out in the guide too.
OTHERS = {"GNOME", "KDE Plasma", "Xfce", "LXQt", "sway", "openbox", "altrove", "grassetto", "Invio",
          "Esc"}
# Explanations, what stands before or after names and numbers, and what only a screen reader says.
NOT_NAMED = {"kApplications", "kCountSuffix", "kCredit", "kCreditAddress", "kEditorExplanation",
             "kLevelPrefix", "kOpenPrefix", "kScrollBar"}


def interface_texts():
    files = [file for name in TEXTS for file in
             ([ROOT / name] if (ROOT / name).is_file() else (ROOT / name).rglob("*.[ch]*"))]
    return {text.strip() for file in files
            for text in re.findall(r'"((?:[^"\\]|\\.)*)"', file.read_text())}


class Guide(unittest.TestCase):
    def test_every_word_that_it_says_the_interface_shows_is_shown(self):
        named = set(re.findall(r"\*\*([^*]+)\*\*", GUIDE)) - OTHERS
        self.assertEqual(named - interface_texts(), set())

    def test_it_names_every_control_of_the_window_the_editor_and_the_status_item(self):
        texts = dict(re.findall(r'\b(k\w+) =\s+u"([^"]*)"', (ROOT / "ui/look/Texts.h").read_text()))
        self.assertEqual(NOT_NAMED - texts.keys(), set())
        for name in texts.keys() - NOT_NAMED:
            with self.subTest(text=name):
                self.assertIn(f"**{texts[name].strip()}**", GUIDE)

    def test_it_says_how_to_bind_a_shortcut_on_each_desktop(self):
        section = GUIDE.split("## Una scorciatoia da tastiera")[1].split("\n## ")[0]
        for desktop in ("GNOME", "KDE Plasma", "Xfce", "LXQt", "sway", "openbox"):
            self.assertIn(f"**{desktop}**", section)

import pathlib
import re
import sys
import tempfile
import unittest

from documents import dead_links, first_cells

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools"))

import tree  # noqa: E402

NEEDS = (ROOT / "docs/dependencies.md").read_text()
OPTIONAL = "## Recommended and suggested by the Debian package"


def sections():
    """Each section of docs/dependencies.md by its title."""
    parts = re.split(r"^(## .*)$", NEEDS, flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


def packages(text):
    return [name for cell in first_cells(text) for name in cell.split(", ")]


class Links(unittest.TestCase):
    def test_every_link_of_a_document_to_a_file_leads_to_one(self):
        documents = [ROOT / name for name in tree.files(ROOT) if name.endswith(".md")]
        self.assertGreater(len(documents), 5)
        for document in documents:
            self.assertEqual(dead_links(document), [], document)

    def test_a_dead_link_is_found(self):
        with tempfile.TemporaryDirectory() as folder:
            document = pathlib.Path(folder, "a document.md")
            document.write_text("[a](b.md) ![c](a%20document.md) [d](https://example.org/e) [f](#g) "
                                "`[h](i.md)` [j](k.md#l \"m\")\n```\n[n](o.md)\n```\n")
            self.assertEqual(dead_links(document), ["b.md", "k.md"])


class Dependencies(unittest.TestCase):
    def test_every_package_has_a_reason_and_every_reason_a_package(self):
        lines = re.findall(r"^\w+:(.*)$", (ROOT / "packaging/packages.txt").read_text(), re.MULTILINE)
        listed = [name for line in lines for name in line.split()]
        explained = [name for title, text in sections().items() if title != OPTIONAL
                     for name in packages(text)]
        self.assertEqual(sorted(explained), sorted(listed))

    def test_what_the_debian_package_recommends_and_suggests_has_a_reason(self):
        control = (ROOT / "packaging/debian/control").read_text()
        control = control.split("\nPackage: ")[1]  # the program's
        fields = re.findall(r"^(?:Recommends|Suggests):\n((?: .*\n)+)", control, re.MULTILINE)
        self.assertEqual(len(fields), 2)
        named = [name for name in re.split(r"[\s,|]+", " ".join(fields)) if name]
        self.assertEqual(sorted(packages(sections()[OPTIONAL])), sorted(named))

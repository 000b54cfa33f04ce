import configparser
import os
import pathlib
import re
import struct
import subprocess
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
PACKAGING = ROOT / "packaging"
ID = "org.tavolauncher.TavoLauncher"


def entry(name):
    parser = configparser.ConfigParser(interpolation=None, delimiters="=", comment_prefixes="#")
    parser.optionxform = str
    parser.read_string((PACKAGING / name).read_text())
    return dict(parser["Desktop Entry"])


def version():
    return re.search(r"project\(TavoLauncher VERSION ([0-9.]+)",
                     (ROOT / "CMakeLists.txt").read_text())[1]


class Validators(unittest.TestCase):
    """What the tools of desktops say of our files."""

    def assert_silent(self, *command):
        ran = subprocess.run(command, capture_output=True, text=True,
                             env={"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8"})
        self.assertEqual((ran.returncode, ran.stdout + ran.stderr), (0, ""))

    def test_the_desktop_entry_is_valid(self):
        self.assert_silent("desktop-file-validate", PACKAGING / f"{ID}.desktop")

    def test_the_autostart_entry_is_valid(self):
        self.assert_silent("desktop-file-validate", PACKAGING / f"{ID}.autostart.desktop")

    def test_the_metainfo_is_valid(self):
        ran = subprocess.run(["appstreamcli", "validate", "--no-net", "--no-color",
                              PACKAGING / f"{ID}.metainfo.xml"], capture_output=True, text=True)
        # Newer versions warn of a home page, which there is none of.
        problems = [line for line in re.findall("^[EW]: .*$", ran.stdout, re.MULTILINE)
                    if not line.endswith(" url-homepage-missing")]
        self.assertEqual(problems, [])
        self.assertIn(ran.returncode, (0, 3), ran.stdout + ran.stderr)

    def test_the_manual_pages_are_set_without_a_complaint(self):
        for page in ("tavolauncher.1", "it/tavolauncher.1"):
            with self.subTest(page=page):
                self.assert_silent("sh", "-c",
                                   'man --warnings -E UTF-8 -l -Tutf8 -Z "$0" >/dev/null',
                                   PACKAGING / "man" / page)


class Entries(unittest.TestCase):
    def test_the_launcher_starts_by_its_name_and_says_so_in_italian_too(self):
        keys = entry(f"{ID}.desktop")
        self.assertEqual(keys["Exec"], "tavolauncher")
        self.assertEqual(keys["Icon"], ID)
        for key in ("GenericName", "Comment", "Keywords"):
            self.assertTrue(keys[key] and keys[f"{key}[it]"], key)
            self.assertNotEqual(keys[key], keys[f"{key}[it]"], key)

    def test_starting_with_the_session_is_off_for_everybody(self):
        keys = entry(f"{ID}.autostart.desktop")
        self.assertEqual(keys["Hidden"], "true")
        # Other ways of being off would stay when a desktop's settings turn this one on.
        self.assertEqual([key for key in keys if key.startswith("X-") or key == "NoDisplay"], [])

    def test_the_metainfo_names_the_entry_and_no_address(self):
        text = (PACKAGING / f"{ID}.metainfo.xml").read_text()
        component = xml.etree.ElementTree.fromstring(text)
        self.assertEqual(component.findtext("id"), ID)
        self.assertEqual(component.findtext("launchable"), f"{ID}.desktop")
        self.assertNotRegex(text, r"https?:|mailto:|@")


class Versions(unittest.TestCase):
    def test_every_file_gives_the_version_of_the_build(self):
        metainfo = xml.etree.ElementTree.parse(PACKAGING / f"{ID}.metainfo.xml")
        release = metainfo.find("releases/release")
        first_change = re.search(r"^## ([0-9.]+) – ([0-9-]+)$", (ROOT / "CHANGELOG.md").read_text(),
                                 re.MULTILINE)
        package = re.match(r"tavolauncher \(([^)]+)\)",
                           (PACKAGING / "debian/changelog").read_text())
        self.assertEqual(
            {"metainfo": release.get("version"), "changes": first_change[1], "package": package[1]},
            dict.fromkeys(("metainfo", "changes", "package"), version()))
        self.assertEqual(release.get("date"), first_change[2])
        for page in ("tavolauncher.1", "it/tavolauncher.1"):
            self.assertIn(f'{first_change[2]} "TavoLauncher {version()}"',
                          (PACKAGING / "man" / page).read_text())

    def test_the_package_is_built_with_what_the_program_is_built_with(self):
        """All but the compiler, which every package has, and its cache."""
        listed = " ".join(re.findall(r"^build:(.*)$", (PACKAGING / "packages.txt").read_text(),
                                     re.MULTILINE)).split()
        control = (PACKAGING / "debian/control").read_text()
        field = re.search(r"^Build-Depends:\n((?: .*\n)+)", control, re.MULTILINE)[1]
        needed = {line.strip(" ,").split(" ")[0] for line in field.splitlines()}
        self.assertEqual(needed - {"debhelper-compat"}, set(listed) - {"g++", "ccache"})

    def test_the_package_depends_on_what_the_program_calls(self):
        control = (PACKAGING / "debian/control").read_text()
        for package in re.search(r"^run:(.*)$", (PACKAGING / "packages.txt").read_text(),
                                 re.MULTILINE)[1].split():
            self.assertRegex(control, rf"\n {re.escape(package)},\n")


class Icons(unittest.TestCase):
    def test_each_picture_has_the_size_of_its_folder(self):
        for side in (16, 22, 24, 32, 48, 64, 128, 256, 512):
            with self.subTest(side=side):
                header = (ROOT / f"resources/icons/{side}/{ID}.png").read_bytes()[:24]
                self.assertEqual(struct.unpack(">II", header[16:24]), (side, side))

import contextlib
import os
import pathlib
import re
import shutil
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "desktop"))

import harness  # noqa: E402
from documents import dead_links  # noqa: E402
from harness import DesktopTest, processes_below, wait_until  # noqa: E402

ID = "org.tavolauncher.TavoLauncher"
SIDES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
FILES = {
    "bin/tavolauncher",
    f"{os.environ['TAVO_LIBRARIES']}/tavolauncher/libtavolauncher.so",
    "libexec/tavolauncher/icon-renderer",
    f"etc/xdg/autostart/{ID}.desktop",
    f"share/applications/{ID}.desktop",
    f"share/dbus-1/services/{ID}.service",
    f"share/metainfo/{ID}.metainfo.xml",
    f"share/icons/hicolor/scalable/apps/{ID}.svg",
    f"share/icons/hicolor/symbolic/apps/{ID}-symbolic.svg",
    *(f"share/icons/hicolor/{side}x{side}/apps/{ID}.png" for side in SIDES),
    "share/man/man1/tavolauncher.1",
    "share/man/it/man1/tavolauncher.1",
    "share/doc/tavolauncher/LICENSE",
    "share/doc/tavolauncher/desktops.md",
    "share/doc/tavolauncher/guida.md",
    "share/doc/tavolauncher/guide.md",
    *(f"share/doc/tavolauncher/{name}-light.png" for name in ("launcher", "search", "menu", "editor")),
}


class Installed(DesktopTest):
    """The program and its files below a prefix of their own."""

    def setUp(self):
        super().setUp()
        self.prefix = self.desktop.folder / "prefix"
        # The rules alone: the whole installation would write a list into the build folder, which
        # the user of the tests may not.
        subprocess.run([os.environ["TAVO_CMAKE"], f"-DCMAKE_INSTALL_PREFIX={self.prefix}", "-P",
                        os.environ["TAVO_INSTALL_SCRIPT"]], check=True, capture_output=True)

    def start(self, program):
        process = self.desktop.start([program], self.desktop.hermetic)
        launcher = harness.Launcher(self.desktop, process)
        self.launchers.append(launcher)
        launcher.await_node("list", "App")
        return launcher.await_active()

    def test_everything_has_its_place(self):
        found = {path.relative_to(self.prefix).as_posix()
                 for path in self.prefix.rglob("*") if not path.is_dir()}
        own = {name for name in found if name.startswith("share/tavolauncher/")}
        self.assertEqual(found - own, FILES)
        self.assertIn("share/tavolauncher/TavoLauncherMark.png", own)
        symbols = pathlib.Path(harness.PROGRAM).parent / "resources/symbols"
        self.assertEqual({name.rpartition("/")[2] for name in own if "/symbols/" in name},
                         {path.name for path in symbols.iterdir()})

    def test_whatever_a_document_links_to_is_installed_too(self):
        documents = list(self.prefix.rglob("*.md"))
        self.assertGreater(len(documents), 0)
        for document in documents:
            self.assertEqual(dead_links(document), [], document)

    def test_the_bus_service_names_the_installed_program(self):
        service = (self.prefix / f"share/dbus-1/services/{ID}.service").read_text()
        self.assertEqual(service.splitlines(),
                         ["[D-BUS Service]", f"Name={ID}", f"Exec={self.prefix}/bin/tavolauncher"])

    def test_it_finds_its_files_and_still_does_when_moved_as_a_whole(self):
        self.desktop.icon("tavo-test-square")
        self.desktop.entry("Ananas", Icon="tavo-test-square")
        launcher = self.start(self.prefix / "bin/tavolauncher")
        launcher.await_tiles(["Ananas"])
        self.await_renderer(launcher)
        self.assertEqual(launcher.quit(), 0)

        shutil.rmtree(self.desktop.home / ".cache/tavolauncher")
        moved = self.desktop.folder / "moved"
        self.prefix.rename(moved)
        launcher = self.start(moved / "bin/tavolauncher")
        launcher.await_tiles(["Ananas"])
        self.await_renderer(launcher)
        self.assertEqual(launcher.quit(), 0)

    def await_renderer(self, launcher):
        """Waits until the program has started the icon renderer of its own installation."""
        def programs():
            for pid in processes_below(launcher.process.pid):
                with contextlib.suppress(OSError):
                    yield os.readlink(f"/proc/{pid}/exe")
        bin_folder = pathlib.Path(os.readlink(f"/proc/{launcher.process.pid}/exe")).parent
        wanted = str(bin_folder.parent / "libexec/tavolauncher/icon-renderer")
        wait_until(lambda: wanted in programs(), f"the program {wanted}")

    def test_it_finds_its_files_through_a_link_to_it(self):
        link = self.desktop.programs / "tavo"
        link.symlink_to(self.prefix / "bin/tavolauncher")
        self.assertEqual(self.start(link).quit(), 0)

    def test_a_start_that_hands_over_loads_no_toolkit(self):
        """The executable is linked to the C++ library alone; sanitizers add theirs."""
        said = subprocess.run(["readelf", "--dynamic", "--wide", self.prefix / "bin/tavolauncher"],
                              check=True, capture_output=True, text=True).stdout
        needed = set(re.findall(r"\(NEEDED\).*\[(\w+)", said))
        self.assertLessEqual(needed - {"libasan", "libubsan", "libtsan"},
                             {"libstdc", "libm", "libgcc_s", "libc"})

    def test_without_its_library_there_is_one_line_and_status_1_and_the_next_start_is_the_first(self):
        library = self.prefix / os.environ["TAVO_LIBRARIES"] / "tavolauncher/libtavolauncher.so"
        elsewhere = library.rename(self.desktop.folder / "elsewhere.so")
        done = subprocess.run([self.prefix / "bin/tavolauncher"], capture_output=True, text=True,
                              timeout=60, env={**self.desktop.environment, **self.desktop.hermetic})
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stderr, r"\Atavolauncher: the program cannot be loaded: [^\n]*"
                                      r"libtavolauncher\.so[^\n]*\n\Z")
        elsewhere.rename(library)
        self.assertEqual(self.start(self.prefix / "bin/tavolauncher").quit(), 0)

    def test_its_window_has_the_class_that_its_entry_names(self):
        launcher = self.start(self.prefix / "bin/tavolauncher")
        said = self.desktop.run("xprop", "-id", launcher.window_id(), "WM_CLASS")
        entry = (self.prefix / f"share/applications/{ID}.desktop").read_text()
        wanted = re.search(r"^StartupWMClass=(.*)$", entry, re.MULTILINE)[1]
        self.assertEqual(re.findall(r'"([^"]*)"', said), ["tavolauncher", wanted])

    def test_it_shows_its_own_tile_as_menus_do(self):
        data = self.prefix / "share"
        process = self.desktop.start([self.prefix / "bin/tavolauncher"],
                                     {"XDG_DATA_DIRS": str(data),
                                      "PATH": f"{self.prefix}/bin:{os.environ['PATH']}"})
        launcher = harness.Launcher(self.desktop, process)
        self.launchers.append(launcher)
        launcher.await_node("list", "App")
        launcher.await_active()
        launcher.await_tiles(["Tavo Launcher"])

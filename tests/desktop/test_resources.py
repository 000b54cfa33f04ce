import os
import re
import shutil
import subprocess

import harness
from harness import DesktopTest, wait_until

LOGO = "TavoLauncherMark.png"
MESSAGE = b"Unexpectedly found nil while unwrapping an Optional value\n"


class LogoFile(DesktopTest):
    """The logo is a file beside the program; without it there is no launcher."""

    def setUp(self):
        super().setUp()
        self.folder = self.desktop.copy_of_program()
        self.program = self.folder / "tavolauncher"
        self.logo = self.folder / "resources" / LOGO

    def start(self):
        return subprocess.Popen([self.program], cwd=self.desktop.folder,
                                env={**self.desktop.environment, **self.desktop.hermetic},
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE)

    def assert_ends(self, libpng_may_complain=False):
        """At once, in order, with that one line; nothing was stored, nothing dumped."""
        program = self.start()
        output, errors = program.communicate(timeout=30)
        if libpng_may_complain:
            errors = b"".join(line for line in errors.splitlines(keepends=True)
                              if not line.startswith((b"libpng ", b"qt.gui.imageio: libpng ")))
        self.assertEqual((program.returncode, output, errors), (1, b"", MESSAGE))
        self.assertFalse(self.desktop.store.path.parent.exists())
        self.assertEqual(list(self.desktop.folder.glob("core*")), [])

    def test_the_copy_beside_whole_resources_shows_its_window(self):
        program = self.start()
        launcher = harness.Launcher(self.desktop, program)
        launcher.await_node("list", "App")
        launcher.await_active()
        self.assertEqual(launcher.quit(), 0)
        program.communicate()

    def test_without_the_logo_the_program_ends_with_one_line(self):
        self.logo.unlink()
        self.assert_ends()

    def test_without_a_resource_folder_the_program_ends_with_one_line(self):
        shutil.rmtree(self.folder / "resources")
        self.assert_ends()

    def test_with_a_logo_that_may_not_be_read_the_program_ends_with_one_line(self):
        if os.geteuid() == 0:
            self.skipTest("root may read every file")
        self.logo.chmod(0)
        self.assert_ends()

    def test_with_an_empty_logo_the_program_ends_with_one_line(self):
        self.logo.write_bytes(b"")
        self.assert_ends()

    def test_with_a_folder_for_a_logo_the_program_ends_with_one_line(self):
        self.logo.unlink()
        self.logo.mkdir()
        self.assert_ends()

    def test_with_a_dangling_link_for_a_logo_the_program_ends_with_one_line(self):
        self.logo.unlink()
        self.logo.symlink_to("nowhere.png")
        self.assert_ends()

    def test_with_a_logo_that_is_no_png_the_program_ends(self):
        whole = self.logo.read_bytes()
        for what, content in (("text", b"not a picture"),
                              ("a drawing", self.logo.with_suffix(".svg").read_bytes()),
                              ("half of it", whole[:len(whole) // 2])):
            with self.subTest(what=what):
                self.logo.write_bytes(content)
                self.assert_ends(libpng_may_complain=True)


class WindowIcon(DesktopTest):
    def test_lists_of_windows_get_the_icon_in_every_size_they_use(self):
        launcher = self.launch()

        def sizes():
            said = self.desktop.run("xprop", "-id", launcher.window_id(), "_NET_WM_ICON")
            return [int(side) for side in re.findall(r"Icon \((\d+) x \d+\)", said)]

        wait_until(lambda: sizes(), "the icon")
        self.assertEqual(sorted(sizes()), [16, 22, 24, 32, 48, 64, 128])

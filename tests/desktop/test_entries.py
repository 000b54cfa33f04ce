import os

from harness import DesktopTest


class Entries(DesktopTest):
    def test_reload_finds_what_was_installed_since(self):
        self.desktop.entry("Ananas")
        launcher = self.launch()
        launcher.await_tiles(["Ananas"])
        self.desktop.entry("Bosco")
        launcher.press("push button", "Aggiorna app")
        launcher.await_tiles(["Ananas", "Bosco"])

    def test_reload_forgets_what_was_removed_since(self):
        self.desktop.entry("Ananas")
        entry = self.desktop.entry("Bosco")
        launcher = self.launch()
        launcher.await_tiles(["Ananas", "Bosco"])
        entry.unlink()
        launcher.press("push button", "Aggiorna app")
        launcher.await_tiles(["Ananas"])

    def test_entries_that_are_not_for_this_session_are_not_listed(self):
        self.desktop.entry("Ananas")
        self.desktop.entry("Nascosto", Hidden="true")
        self.desktop.entry("Senza", NoDisplay="true")
        self.desktop.entry("Altrove", OnlyShowIn="NoSuchDesktop;")
        self.desktop.entry("Mancante", TryExec="/nonexistent/program")
        self.desktop.entry("Collegamento", Type="Link", URL="https://localhost/", Exec=None)
        self.launch().await_tiles(["Ananas"])

    def test_the_users_own_entry_shadows_that_of_the_system(self):
        self.desktop.entry("Sistema", id="same")
        self.desktop.entry("Utente", id="same",
                           folder=self.desktop.home / ".local/share/applications")
        self.launch().await_tiles(["Utente"])

    def test_markup_in_a_name_is_shown_as_it_stands(self):
        self.desktop.entry("<b>Bold</b> &amp; <img src=x>", id="markup")
        self.launch().await_tiles(["<b>Bold</b> &amp; <img src=x>"])

    def test_an_ampersand_in_a_name_is_no_mnemonic(self):
        self.desktop.entry("Salt && Pepper & Co", id="ampersand")
        self.launch().await_tiles(["Salt && Pepper & Co"])

    def test_control_and_direction_characters_do_no_harm(self):
        self.desktop.entry("Bell\x07and\x1bescape", id="control")
        self.desktop.entry("Good\u202eevil\u2066", id="direction")
        launcher = self.launch()
        launcher.await_equal(lambda: len(launcher.tiles()), 2)
        shown = "".join(launcher.tiles())
        self.assertFalse([character for character in shown
                          if ord(character) < 32 or character in "\u202a\u202b\u202d\u202e\u2066"],
                         ascii(shown))

    def test_right_to_left_names_are_listed(self):
        self.desktop.entry("مرحبا", id="arabic")
        self.desktop.entry("שלום", id="hebrew")
        launcher = self.launch()
        launcher.await_equal(lambda: sorted(launcher.tiles()), sorted(["مرحبا", "שלום"]))

    def test_a_name_of_ten_thousand_characters_leaves_the_others_alone(self):
        self.desktop.entry("Ananas")
        self.desktop.entry("W" * 10_000, id="long")
        launcher = self.launch()
        launcher.await_equal(lambda: len(launcher.tiles()), 2)
        self.assertIn("Ananas", launcher.tiles())
        self.desktop.type("ana")
        launcher.await_tiles(["Ananas"])

    def test_garbage_among_the_entries_leaves_the_good_ones(self):
        folder = self.desktop.entry("Ananas").parent
        (folder / "binary.desktop").write_bytes(bytes(range(256)) * 64)
        (folder / "empty.desktop").write_bytes(b"")
        (folder / "huge.desktop").write_bytes(b"[Desktop Entry]\nType=Application\nExec=true\nName="
                                              + b"x" * 10_000_000)
        (folder / "headless.desktop").write_text("Name=Headless\nExec=true\n")
        (folder / "folder.desktop").mkdir()
        os.mkfifo(folder / "pipe.desktop")
        (folder / "dangling.desktop").symlink_to("nowhere")
        (folder / "itself.desktop").symlink_to("itself.desktop")
        launcher = self.launch()
        launcher.await_equal(lambda: "Ananas" in launcher.tiles(), True)
        self.assertFalse({"Headless"} & set(launcher.tiles()))
        self.desktop.type("ana")
        launcher.await_tiles(["Ananas"])

    def test_folders_that_loop_or_cannot_be_read_leave_the_others(self):
        folder = self.desktop.entry("Ananas").parent
        (folder / "loop").symlink_to(folder)
        closed = folder / "closed"
        closed.mkdir()
        closed.chmod(0)
        self.addCleanup(closed.chmod, 0o700)
        nowhere = f"{self.desktop.folder}/nowhere:relative/path::/dev/null"
        launcher = self.launch(XDG_DATA_DIRS=f"{nowhere}:{self.desktop.data}")
        launcher.await_equal(lambda: "Ananas" in launcher.tiles(), True)

    def test_the_window_comes_up_with_nothing_to_show(self):
        self.launch().await_tiles([])

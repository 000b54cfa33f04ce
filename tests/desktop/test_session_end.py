"""The end of the user's session, as a session manager of X11 announces it."""

import os
import re
import shutil
import signal
import subprocess

from harness import DesktopTest, Store, wait_until


class SessionEnd(DesktopTest):
    """Under xsm, which keeps a record of the programs that it will start again."""

    def setUp(self):
        self.assertTrue(shutil.which("xsm"), "xsm is not installed")
        super().setUp()

    def start_manager(self, log="xsm.log"):
        """Nothing outside of this machine can reach it: it has a network of its own where the
        system grants that, as it listens on each that it finds."""
        (self.desktop.home / ".xsmstartup").write_text("")
        apart = ["unshare", "--user", "--map-root-user", "--net"]
        if subprocess.run([*apart, "true"], capture_output=True).returncode != 0:
            apart = []
        manager = self.desktop.start([*apart, "stdbuf", "-oL", "xsm", "-verbose"],
                                     {"SM_SAVE_DIR": str(self.desktop.home)}, log=log)
        self.log = log
        said = wait_until(lambda: re.search(r"setenv SESSION_MANAGER \S*,(unix/[^\s,]+)",
                                            self.desktop.log(self.log)), "the session manager")
        self.session = {"SESSION_MANAGER": said[1]}
        return manager

    def await_said(self, text):
        wait_until(lambda: text in self.desktop.log(self.log), text)

    def launch_in_session(self):
        launcher = self.launch(**self.session)
        self.await_said("REGISTER CLIENT REPLY")
        self.await_said("SAVE YOURSELF DONE [Success = True]")
        return launcher

    def saved_session(self):
        path = self.desktop.home / ".XSM-Default"
        return path.read_text() if path.exists() else None

    def test_the_program_ends_with_the_session_and_loses_nothing(self):
        self.desktop.marking_entry("Ananas")
        manager = self.start_manager()
        launcher = self.launch_in_session()
        launcher.press("list item", "Apri Ananas")
        wait_until(lambda: self.desktop.store.read(Store.RECENTS), "the application to be opened")
        os.kill(manager.pid, signal.SIGTERM)
        self.assertEqual(launcher.process.wait(timeout=20), 0)
        self.assertEqual(manager.wait(timeout=20), 0)
        self.assertNotIn("Success = False", self.desktop.log(self.log))
        self.assertEqual(len(self.desktop.store.read(Store.RECENTS)), 1)
        self.assertEqual(self.desktop.log(), "")

    def test_it_ends_with_the_session_while_its_window_is_hidden(self):
        manager = self.start_manager()
        launcher = self.launch_in_session()
        launcher.close()
        os.kill(manager.pid, signal.SIGTERM)
        self.assertEqual(launcher.process.wait(timeout=20), 0)

    def test_it_ends_with_the_session_while_a_dialog_or_a_menu_is_open(self):
        self.desktop.entry("Ananas")
        for what in ("dialog", "menu"):
            with self.subTest(what):
                manager = self.start_manager(f"{what}.log")
                launcher = self.launch_in_session()
                if what == "dialog":
                    launcher.press("push button", "Modifica categorie")
                    launcher.await_node("dialog", "Modifica categorie")
                else:
                    self.desktop.click(launcher.await_node("list item", "Apri Ananas"), button=3)
                    launcher.await_node("popup menu")
                os.kill(manager.pid, signal.SIGTERM)
                self.assertEqual(launcher.process.wait(timeout=20), 0)
                self.assertEqual(manager.wait(timeout=20), 0)

    def test_a_session_that_is_saved_does_not_start_it_again(self):
        manager = self.start_manager()
        launcher = self.launch_in_session()
        os.kill(manager.pid, signal.SIGUSR1)
        saved = wait_until(self.saved_session, "the saved session")
        self.await_said("sent SAVE COMPLETE")
        self.assertNotIn("tavolauncher", saved)
        self.assertTrue(launcher.is_active(), "saving a session leaves the window alone")
        os.kill(manager.pid, signal.SIGTERM)
        self.assertEqual(launcher.process.wait(timeout=20), 0)
        self.assertEqual(manager.wait(timeout=20), 0)
        self.assertNotIn("tavolauncher", self.saved_session())

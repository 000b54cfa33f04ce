"""How the program ends, and what it does where something is missing."""

import os
import signal
import socket
import struct
import subprocess

from harness import PROGRAM, DesktopTest
from private_desktop import _end_with_parent, processes_below


class Ending(DesktopTest):
    def test_ctrl_q_ends_it(self):
        self.assertEqual(self.launch().quit(), 0)

    def test_each_of_the_sessions_signals_ends_it_cleanly(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number.name):
                launcher = self.launch()
                launcher.process.send_signal(number)
                self.assertEqual(launcher.process.wait(timeout=20), 0)
                self.assertEqual(self.desktop.log(), "")

    def test_a_signal_ends_it_while_its_window_is_hidden(self):
        launcher = self.launch()
        launcher.close()
        launcher.process.terminate()
        self.assertEqual(launcher.process.wait(timeout=20), 0)

    def test_a_signal_ends_it_even_when_another_start_has_just_asked_for_its_window(self):
        for _ in range(5):
            launcher = self.launch()
            launcher.process.send_signal(signal.SIGSTOP)
            self.assertEqual(self.launch(wait=False).process.wait(timeout=60), 0)
            launcher.process.send_signal(signal.SIGTERM)
            launcher.process.send_signal(signal.SIGCONT)
            self.assertEqual(launcher.process.wait(timeout=60), 0)

    def test_a_signal_that_was_ignored_stays_ignored(self):
        launcher = self.launch(wait=False)
        launcher.process.kill()
        launcher.process.wait()
        nohup = self.desktop.start(["nohup", PROGRAM], self.desktop.hermetic)
        other = type(launcher)(self.desktop, nohup)
        self.launchers.append(other)
        other.await_active()
        nohup.send_signal(signal.SIGHUP)
        other.close()
        self.assertIsNone(nohup.poll())

    def test_nothing_of_it_is_left_in_the_runtime_folder_that_a_next_start_could_find(self):
        self.launch().quit()
        self.assertFalse((self.desktop.folder / "run/tavolauncher.socket").exists())

    def test_when_the_x_server_goes_it_ends_with_a_line_and_status_1(self):
        launcher = self.launch()
        server = next(pid for pid in processes_below(os.getpid())
                      if b"Xvfb" in open(f"/proc/{pid}/cmdline", "rb").read())
        os.kill(server, signal.SIGKILL)
        self.assertEqual(launcher.process.wait(timeout=20), 1)
        self.assertEqual(len(self.desktop.log().splitlines()), 1, self.desktop.log())


class Missing(DesktopTest):
    def start(self, without=(), **environment):
        env = {**self.desktop.environment, **self.desktop.hermetic}
        for name in without:
            env.pop(name)
        env.update(environment)
        return subprocess.run([PROGRAM], env=env, capture_output=True, text=True, timeout=60,
                              preexec_fn=_end_with_parent)

    def test_without_a_display_there_is_one_line_and_status_1(self):
        done = self.start(without=["DISPLAY"])
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, "tavolauncher: no display could be opened "
                                      "(neither DISPLAY nor WAYLAND_DISPLAY is set)\n")

    def test_a_display_that_refuses_is_named_in_one_line(self):
        for name, value in (("DISPLAY", ":987"), ("WAYLAND_DISPLAY", "wayland-987")):
            with self.subTest(name):
                done = self.start(without=["DISPLAY"], **{name: value})
                self.assertEqual(done.returncode, 1)
                self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
                self.assertIn(f"{name}={value}", done.stderr)

    def test_a_display_that_wants_a_password_is_named_in_one_line(self):
        """What the library that speaks to it writes by itself is not a second one."""
        cookie = self.desktop.folder / "cookie"
        fields = (b"", b"", b"MIT-MAGIC-COOKIE-1", bytes(16))
        cookie.write_bytes(b"\xff\xff" + b"".join(struct.pack(">H", len(field)) + field
                                                  for field in fields))
        display, _ = self.another_server("-auth", cookie)
        nothing = self.desktop.folder / "nothing"
        nothing.mkdir()
        for what, environment in (("a runtime folder", {}),
                                  ("none", {"XDG_RUNTIME_DIR": "", "TMPDIR": str(nothing)})):
            with self.subTest(what):
                done = self.start(DISPLAY=display, XAUTHORITY="/dev/null", **environment)
                self.assertEqual(done.returncode, 1)
                self.assertEqual(done.stderr, "tavolauncher: no display could be opened "
                                              f"(DISPLAY={display})\n")

    def test_a_display_that_takes_the_connection_and_never_answers_is_named_in_one_line(self):
        server, _ = self.silent_server()
        socket_file = self.desktop.folder / "compositor"
        with socket.socket(socket.AF_UNIX) as compositor:
            compositor.bind(str(socket_file))
            compositor.listen(20)
            # Both at once: each takes its ten seconds.
            started = [(f"{variable}={display}", self.start_elsewhere(variable, display))
                       for variable, display in (("DISPLAY", server),
                                                 ("WAYLAND_DISPLAY", str(socket_file)))]
            for named, process in started:
                with self.subTest(named):
                    _, said = process.communicate(timeout=60)
                    self.assertEqual(process.returncode, 1)
                    self.assertEqual(said,
                                     f"tavolauncher: the display does not answer ({named})\n")

    def start_elsewhere(self, variable, display):
        """A start that knows this display only, and no other start."""
        run = self.desktop.folder / variable
        run.mkdir(mode=0o700)
        environment = {**self.desktop.environment, **self.desktop.hermetic,
                       "XDG_RUNTIME_DIR": str(run)}
        environment.pop("DISPLAY")
        return subprocess.Popen([PROGRAM], env={**environment, variable: display},
                                stderr=subprocess.PIPE, text=True, preexec_fn=_end_with_parent)

    def test_where_a_platform_plugin_is_missing_qt_says_so_itself_before_the_line(self):
        nothing = self.desktop.folder / "nothing"
        nothing.mkdir()
        for what, environment in (
                ("a platform of no plugin", {"QT_QPA_PLATFORM": "nonsense"}),
                ("a folder of no plugins", {"QT_QPA_PLATFORM_PLUGIN_PATH": str(nothing),
                                            "QT_PLUGIN_PATH": str(nothing),
                                            "QT_QPA_PLATFORM": "nonsense"}),
                ("a plugin missing, and no display", {"QT_QPA_PLATFORM": "nonsense;xcb",
                                                      "DISPLAY": ":987"})):
            with self.subTest(what):
                done = self.start(**environment)
                self.assertEqual(done.returncode, 1)
                self.assertIn('Could not find the Qt platform plugin "nonsense"', done.stderr)
                self.assertIn("no Qt platform plugin could be initialized", done.stderr)
                last = done.stderr.splitlines()[-1]
                self.assertTrue(last.startswith("tavolauncher: no display could be opened "), last)
                self.assertIn(f"QT_QPA_PLATFORM={environment['QT_QPA_PLATFORM']}", last)

    def test_what_the_toolkit_says_while_it_comes_up_is_said_all_the_same(self):
        """Without a runtime folder it says where it puts its own files."""
        nothing = self.desktop.folder / "nothing"
        nothing.mkdir()
        launcher = self.launch(wait=False, XDG_RUNTIME_DIR="", TMPDIR=str(nothing)).await_active()
        self.assertIn("XDG_RUNTIME_DIR", self.desktop.log())
        self.assertEqual(launcher.quit(), 0)

    def test_a_bus_that_accepts_and_never_answers_does_not_keep_the_window_away(self):
        path = self.desktop.folder / "silent"
        with socket.socket(socket.AF_UNIX) as silent:
            silent.bind(str(path))
            silent.listen(20)
            launcher = self.launch(wait=False, DBUS_SESSION_BUS_ADDRESS=f"unix:path={path}")
            launcher.await_active()
            self.desktop.key("ctrl+q")
            self.assertEqual(launcher.process.wait(timeout=20), 0)

    def test_with_each_of_these_missing_the_window_comes_all_the_same(self):
        nothing = self.desktop.folder / "nothing"
        nothing.mkdir()
        fonts = self.desktop.folder / "fonts.conf"
        fonts.write_text("<?xml version='1.0'?><!DOCTYPE fontconfig SYSTEM 'fonts.dtd'>"
                         f"<fontconfig><dir>{nothing}</dir></fontconfig>")
        closed = self.desktop.folder / "closed"
        closed.mkdir(mode=0o500)
        for what, environment in (
                ("fonts", {"FONTCONFIG_FILE": str(fonts)}),
                ("icon themes", {"XDG_DATA_DIRS": str(nothing)}),
                ("a home", {"HOME": "", "XDG_DATA_HOME": "", "XDG_CACHE_HOME": "",
                            "XDG_CONFIG_HOME": ""}),
                ("a home that exists", {"HOME": "/dev/null/home", "XDG_DATA_HOME": "",
                                        "XDG_CACHE_HOME": "", "XDG_CONFIG_HOME": ""}),
                ("a home to write to", {"HOME": str(closed), "XDG_DATA_HOME": "",
                                        "XDG_CACHE_HOME": "", "XDG_CONFIG_HOME": ""}),
                ("a bus", {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}),
                ("a runtime folder", {"XDG_RUNTIME_DIR": "", "TMPDIR": str(nothing)})):
            with self.subTest(what):
                launcher = self.launch(wait=False, **environment)
                self.assertEqual(launcher.quit(), 0)

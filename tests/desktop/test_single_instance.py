"""One process a user, whose window every other start brings forward."""

import json
import os
import re
import signal
import subprocess

from harness import PROGRAM, ROUNDS, DesktopTest, wait_until
from private_desktop import _end_with_parent, processes_below

NAME = "org.tavolauncher.TavoLauncher"


class InstanceTest(DesktopTest):
    def second_start(self, status=0, **environment):
        """Starts the program once more and awaits its end."""
        second = self.launch(wait=False, **environment)
        self.assertEqual(second.process.wait(timeout=20), status, self.desktop.log())

    def another_window_in_front(self, launcher):
        self.desktop.start(["xmessage", "-title", "Another program", "in front"])
        wait_until(lambda: "Another program" in self.active_title(), "the other window in front")
        self.assertFalse(launcher.is_active())

    def active_title(self):
        said = self.desktop.run("xprop", "-root", "_NET_ACTIVE_WINDOW")
        active = re.search(r"0x[0-9a-f]+", said)
        if active is None or int(active[0], 16) == 0:
            return ""
        return self.desktop.run("xprop", "-id", active[0], "WM_NAME")

    def stacking(self):
        """The windows that the manager manages, the bottom one first."""
        said = self.desktop.run("xprop", "-root", "_NET_CLIENT_LIST_STACKING")
        return [str(int(window, 16)) for window in re.findall(r"0x[0-9a-f]+", said)]

    def bus_owner(self):
        """The process that owns the program's bus name, or None."""
        done = subprocess.run(
            ["dbus-send", "--session", "--print-reply=literal", "--dest=org.freedesktop.DBus",
             "/org/freedesktop/DBus", "org.freedesktop.DBus.GetConnectionUnixProcessID",
             f"string:{NAME}"], env=self.desktop.environment, capture_output=True, text=True)
        found = re.search(r"uint32 (\d+)", done.stdout)
        return int(found[1]) if found else None

    def await_owner(self, launcher):
        wait_until(lambda: self.bus_owner() == launcher.process.pid, "the bus name")

    def call(self, method, *arguments):
        return self.desktop.run("gdbus", "call", "--session", "--dest", NAME, "--object-path",
                                "/org/tavolauncher/TavoLauncher", "--method",
                                f"org.freedesktop.Application.{method}", *arguments)

    def states(self, launcher):
        said = self.desktop.run("xprop", "-id", launcher.window_id(), "_NET_WM_STATE")
        return set(re.findall(r"_NET_WM_STATE_\w+", said))

    def assert_accessory(self, launcher):
        wanted = {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"}
        wait_until(lambda: wanted <= self.states(launcher), "neither taskbar nor pager")


class Instance(InstanceTest):
    def test_a_second_start_brings_the_first_window_forward_and_ends(self):
        launcher = self.launch()
        self.another_window_in_front(launcher)
        self.second_start()
        launcher.await_active()

    def test_a_closed_window_comes_back_with_a_second_start(self):
        launcher = self.launch()
        launcher.close()
        self.second_start()
        launcher.await_active()

    def test_a_window_closed_by_the_desktop_comes_back_with_a_second_start(self):
        launcher = self.launch()
        self.desktop.run("wmctrl", "-i", "-c", launcher.window_id())
        launcher.await_hidden()
        self.second_start()
        launcher.await_active()

    def test_escape_without_a_search_hides_the_window_and_keeps_the_program(self):
        launcher = self.launch()
        self.desktop.key("Escape")
        launcher.await_hidden()
        self.second_start()
        launcher.await_active()

    def test_a_minimised_window_comes_back_with_a_second_start(self):
        launcher = self.launch()
        self.desktop.xdo("windowminimize", launcher.window_id())
        launcher.await_hidden()
        self.second_start()
        launcher.await_active()

    def test_a_window_on_another_desktop_comes_to_the_current_one(self):
        launcher = self.launch()
        self.desktop.xdo("set_desktop", 1)
        wait_until(lambda: not launcher.is_active(), "the window to stay behind")
        self.second_start()
        launcher.await_active()
        self.assertEqual(self.desktop.xdo("get_desktop"), "1")

    def test_a_window_kept_below_or_above_others_comes_back_to_the_usual_level(self):
        launcher = self.launch()
        self.another_window_in_front(launcher)
        for level in ("below", "above"):
            with self.subTest(level):
                state = f"_NET_WM_STATE_{level.upper()}"
                self.desktop.run("wmctrl", "-i", "-r", launcher.window_id(), "-b", f"add,{level}")
                wait_until(lambda: state in self.states(launcher), f"the window {level} others")
                self.desktop.run("wmctrl", "-a", "Another program")
                wait_until(lambda: "Another program" in self.active_title(), "the other window")
                self.second_start()
                launcher.await_active()
                wait_until(lambda: state not in self.states(launcher), "the usual level")
                wait_until(lambda: self.stacking()[-1] == launcher.window_id(), "it to be on top")

    def test_there_is_always_one_window_to_show_for_closing_never_destroys_it(self):
        launcher = self.launch()
        window = launcher.window_id()
        for close in (lambda: self.desktop.key("ctrl+w"), lambda: self.desktop.key("Escape"),
                      lambda: self.desktop.run("wmctrl", "-i", "-c", window)):
            close()
            launcher.await_hidden()
            self.second_start()
            self.assertEqual(launcher.await_active().window_id(), window)

    def test_the_bus_activates_the_window_by_each_of_its_methods(self):
        launcher = self.launch()
        self.await_owner(launcher)
        for method, arguments in (("Activate", ["{}"]),
                                  ("Open", ["['file:///tmp/x']", "{}"]),
                                  ("ActivateAction", ["nothing", "[]",
                                                      "{'desktop-startup-id': <'x_TIME0'>}"])):
            with self.subTest(method):
                launcher.close()
                self.call(method, *arguments)
                launcher.await_active()

    def test_the_window_stays_out_of_taskbar_and_pager_however_often_it_is_shown(self):
        launcher = self.launch()
        self.assert_accessory(launcher)
        for _ in range(3):
            launcher.close()
            self.second_start()
            launcher.await_active()
            self.assert_accessory(launcher)
        self.desktop.xdo("windowminimize", launcher.window_id())
        self.second_start()
        launcher.await_active()
        self.assert_accessory(launcher)

    def test_closing_and_starting_again_always_ends_with_the_window_in_front(self):
        launcher = self.launch()
        for _ in range(ROUNDS):
            launcher.close()
            self.second_start()
            launcher.await_active()

    def test_the_desktop_hears_that_a_start_with_a_startup_id_is_over(self):
        """First or second: else its panel would show for half a minute that something starts."""
        self.desktop.start(["stdbuf", "-oL", "xev", "-root", "-event", "property"], log="xev.log")

        def listening():
            self.desktop.run("xprop", "-root", "-f", "TEST", "8s", "-set", "TEST", "x")
            return "TEST" in self.desktop.log("xev.log")
        wait_until(listening, "the listener")

        def heard():
            return self.desktop.log("xev.log").count("(_NET_STARTUP_INFO_BEGIN)")
        self.launch(DESKTOP_STARTUP_ID="tests-1_TIME0")
        wait_until(lambda: heard() == 1, "the end of the first start")
        self.second_start(DESKTOP_STARTUP_ID="tests-2_TIME0")
        wait_until(lambda: heard() == 2, "the end of the second start")


class InstanceUnderXfwm4(Instance):
    wm = "xfwm4 --compositor=off"

    def test_the_manager_guards_the_focus(self):
        """Else the other tests under it would prove less than they say."""
        self.assertEqual(self.desktop.run("xfconf-query", "-c", "xfwm4", "-p",
                                          "/general/prevent_focus_stealing").strip(), "true")


class OneProcess(InstanceTest):
    def processes(self):
        return [launcher for launcher in self.launchers if launcher.process.poll() is None]

    def await_one(self):
        wait_until(lambda: len(self.processes()) == 1, "all but one to end")
        return self.processes()[0]

    def test_of_many_starts_at_once_exactly_one_stays_and_shows_its_window(self):
        for _ in range(8):
            self.launch(wait=False)
        self.await_one().await_active()

    def test_of_starts_without_a_common_runtime_folder_one_stays_by_the_bus(self):
        launcher = self.launch()
        self.await_owner(launcher)
        launcher.close()
        other = self.desktop.folder / "other"
        other.mkdir(mode=0o700)
        self.second_start(XDG_RUNTIME_DIR=str(other))
        launcher.await_active()

    def test_without_a_bus_a_second_start_finds_the_first(self):
        nowhere = {"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}
        launcher = self.launch(wait=False, **nowhere).await_active()
        launcher.close()
        self.second_start(**nowhere)
        launcher.await_active()

    def test_a_start_without_a_display_takes_nobodys_window(self):
        for _ in range(ROUNDS):
            self.desktop.start(["env", "-u", "DISPLAY", PROGRAM], self.desktop.hermetic)
            launcher = self.launch(wait=False).await_active()
            launcher.process.terminate()
            self.assertEqual(launcher.process.wait(timeout=20), 0)

    def test_a_start_waits_for_one_that_waits_for_its_display_and_then_takes_its_place(self):
        display, server = self.silent_server()
        doomed = self.launch(wait=False, DISPLAY=display)
        wait_until((self.desktop.folder / "run/tavolauncher.socket").exists, "it to be the first")
        launcher = self.launch(wait=False)
        # Longer than a start waits for one that says nothing.
        with self.assertRaises(subprocess.TimeoutExpired):
            launcher.process.wait(timeout=1)
        self.assertFalse(launcher.is_shown())
        server.kill()
        self.assertEqual(doomed.process.wait(timeout=20), 1)
        launcher.await_active()

    def test_what_a_second_start_was_started_with_reaches_whoever_has_the_bus_name(self):
        """A stand-in has it, which says what it is told."""
        owner = self.stand_in("application_stand_in.py", NAME)
        self.second_start(DESKTOP_STARTUP_ID="panel-1_TIME42", XDG_ACTIVATION_TOKEN="token")
        self.assertEqual(json.loads(owner.stdout.readline()),
                         {"desktop-startup-id": "panel-1_TIME42", "activation-token": "token"})

    def test_after_the_first_was_killed_the_next_start_is_the_first(self):
        first = self.launch()
        self.await_owner(first)
        first.kill()
        second = self.launch()
        self.await_owner(second)
        self.second_start()

    def test_a_start_while_the_first_does_not_react_ends_and_is_served_later(self):
        launcher = self.launch()
        launcher.close()
        os.kill(launcher.process.pid, signal.SIGSTOP)
        self.second_start()
        os.kill(launcher.process.pid, signal.SIGCONT)
        launcher.await_active()

    def test_without_a_runtime_folder_a_private_one_is_made(self):
        folder = self.desktop.folder / "tmp"
        folder.mkdir()
        places = {"XDG_RUNTIME_DIR": "", "TMPDIR": str(folder)}
        launcher = self.launch(**places)
        (made,) = folder.glob("tavolauncher-*")
        self.assertEqual(made.stat().st_mode & 0o777, 0o700)
        self.second_start(**places)
        launcher.await_active()

    def test_where_nothing_could_bring_it_back_closing_quits_and_escape_does_nothing(self):
        nowhere = "/dev/null/folder"
        launcher = self.launch(wait=False, XDG_RUNTIME_DIR=nowhere, TMPDIR=nowhere,
                               DBUS_SESSION_BUS_ADDRESS=f"unix:path={nowhere}").await_active()
        self.desktop.key("Escape")
        self.desktop.type("x")
        self.desktop.key("Escape")
        self.assertTrue(launcher.is_shown())
        self.desktop.key("ctrl+w")
        self.assertEqual(launcher.process.wait(timeout=20), 0)

    def test_with_a_bus_that_hangs_later_the_window_works_and_comes_back(self):
        self.desktop.entry("Ananas")
        self.desktop.entry("Banana")
        launcher = self.launch()
        self.await_owner(launcher)
        daemon = next(pid for pid in processes_below(os.getpid())
                      if b"--print-address=" in open(f"/proc/{pid}/cmdline", "rb").read())
        os.kill(daemon, signal.SIGSTOP)
        self.addCleanup(os.kill, daemon, signal.SIGCONT)
        launcher.close()
        self.second_start()
        launcher.await_active()
        self.desktop.type("ban")
        launcher.await_tiles(["Banana"])
        self.assertEqual(launcher.quit(), 0)

    def test_the_name_is_claimed_again_when_the_bus_returns(self):
        address = self.desktop.folder / "returning-bus"
        environment = {"DBUS_SESSION_BUS_ADDRESS": f"unix:path={address}"}
        self.desktop.environment.update(environment)
        launcher = self.launch(wait=False).await_active()
        for _ in range(2):
            daemon = self.desktop.start(["dbus-daemon", "--session", "--nofork", "--nopidfile",
                                         f"--address=unix:path={address}"], log="bus2.log")
            self.await_owner(launcher)
            daemon.kill()
            daemon.wait()
            address.unlink(missing_ok=True)
            launcher.close()
            self.second_start()
            launcher.await_active()


class Arguments(InstanceTest):
    def refusal(self, *arguments):
        """What it says, once it has refused them with status 2."""
        done = subprocess.run([PROGRAM, *arguments], env=self.desktop.environment,
                              capture_output=True, text=True, timeout=20,
                              preexec_fn=_end_with_parent)
        self.assertEqual(done.returncode, 2)
        self.assertEqual(done.stdout, "")
        return done.stderr

    def test_the_toolkits_own_options_are_refused_like_all_others(self):
        for arguments, refused in ((["-style", "fusion"], "-style"),
                                   (["-platform", "offscreen"], "-platform"),
                                   (["--display=:0"], "--display=:0"), (["-session", "x"], "-session"),
                                   (["file.txt"], "file.txt"), (["--help", "more"], "more"),
                                   (["--version", "--help"], "--help"), ([""], "")):
            with self.subTest(" ".join(arguments)):
                self.assertEqual(self.refusal(*arguments),
                                 f'tavolauncher: the argument "{refused}" is refused; it takes '
                                 "--help or --version alone\n")

    def test_a_refused_argument_is_told_on_one_harmless_line_whatever_its_bytes(self):
        for argument, shown in ((b"\x1b[31mred\n", r'"\x1b[31mred\x0a"'),
                                (b'say "hi"\\', r'"say \x22hi\x22\x5c"'),
                                ("perché".encode(), r'"perch\xc3\xa9"'),
                                (b"%s%n\xff", r'"%s%n\xff"'),
                                (b"a" * 100_000, '"' + "a" * 100 + '"...')):
            with self.subTest(argument[:20]):
                self.assertEqual(self.refusal(argument),
                                 f"tavolauncher: the argument {shown} is refused; it takes --help "
                                 "or --version alone\n")

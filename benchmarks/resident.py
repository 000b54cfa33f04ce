#!/usr/bin/env python3
"""How soon the running program shows its window, beside a cold start of rofi, and how idle it is.

    benchmarks/resident.py [PROGRAM] [--runs N] [--idle SECONDS]

PROGRAM is build/release/tavolauncher unless given; tavo_frame_watch is looked for in the folder
"bin" beside it. Needs Xvfb, openbox, dbus-daemon, tint2, xdotool, xprop, xwininfo and rofi.

Everything happens on one private X desktop with a session bus, tint2's tray and 200 generated
desktop entries, as in side_by_side.py, whose rofi this is too. The program runs all the time and
its window is hidden before each measurement. In turns, after a round that does not count:

  second start   from the exec of the program, to the end of that process ("exit") and to the first
                 picture with tiles ("painted")
  tray click     from the exec of xdotool, which moves the pointer to the item and clicks, to the
                 same; xdotool's own time is part of it, and is printed
  rofi           from its exec to the first picture with rows

Then wake-ups, with the window shown and with the window hidden, are counted over the idle time,
which begins 15 s after the last input, when the caret has stopped blinking. A wake-up is a voluntary
context switch of any thread of the process, as the kernel counts them, or the end of a thread. There
is no input meanwhile; wake-ups that tray and bus cause are part of the count.

The exit status is 0 when all was measured, whatever came out, and 1 when something could not be.
"""

import collections
import pathlib
import re
import statistics
import subprocess
import sys
import time

from side_by_side import (
    OURS, ROFI, Contest, make_tree, measured, median, parser_for, spread)

ENTRIES = 200
# The caret stops blinking ten seconds after the last input.
REST_SECONDS = 15
SECOND, CLICK = "second start", "tray click"
PAINTED_BUDGETS = {SECOND: 60.0, CLICK: 20.0}
EXIT_BUDGET = 25.0
ROFI_SHARE = 1 / 3

TINT2 = """panel_items = S
panel_size = 100% 32
panel_position = top center horizontal
systray_icon_size = 24
"""


def wait_for(question, what, seconds=20):
    end = time.monotonic() + seconds
    while not (answer := question()):
        if time.monotonic() > end:
            raise RuntimeError(f"{what} did not come")
        time.sleep(0.02)
    return answer


class Resident:
    """The running program, with its window and its status item."""

    def __init__(self, contest):
        self.contest = contest
        self.desktop = contest.desktop
        settings = self.desktop.folder / "tint2rc"
        settings.write_text(TINT2)
        self.desktop.start("tint2", "-c", str(settings), stdout=subprocess.DEVNULL)
        wait_for(lambda: "tint2" in self.ask("xwininfo", "-root", "-tree"), "the tray")
        self.process = subprocess.Popen(contest.commands[OURS], env=contest.environment(OURS),
                                        stdin=subprocess.DEVNULL)
        self.desktop.processes.append(self.process)
        self.await_shown(True)
        self.item = wait_for(self.find_item, "the item in the tray")

    def ask(self, *command):
        return subprocess.run(command, env=self.desktop.environment, check=False,
                              capture_output=True, text=True).stdout

    def windows(self):
        """Width, height, left and top of each of the program's windows."""
        return [tuple(map(int, found)) for found in re.findall(
            r'\("tavolauncher" "TavoLauncher"\)\s+(\d+)x(\d+)\+\S+\s+\+(-?\d+)\+(-?\d+)',
            self.ask("xwininfo", "-root", "-tree"))]

    def find_item(self):
        """The middle of the status item, once its place no longer changes."""
        seen = []
        for _ in range(8):
            seen.append(next((window for window in self.windows()
                              if 8 < window[0] < 100 and window[2] >= 0 <= window[3] < 32), None))
            time.sleep(0.05)
        if seen[-1] is None or len(set(seen)) > 1:
            return None
        width, height, left, top = seen[-1]
        return left + width // 2, top + height // 2

    def shown(self):
        return bool(self.ask("xdotool", "search", "--all", "--onlyvisible", "--pid",
                             str(self.process.pid), "--name", "^Tavo Launcher$").split())

    def await_shown(self, wanted):
        wait_for(lambda: self.shown() == wanted, "the window to come or go")

    def hide(self):
        if self.shown():
            self.ask("xdotool", "key", "ctrl+w")
            self.await_shown(False)

    def call(self, command):
        """The times of one showing of the hidden window; None when it was not measured."""
        self.hide()
        return self.contest.look(OURS, command, "--resident", str(self.process.pid))

    def second_start(self):
        return self.call(self.contest.commands[OURS])

    def click(self):
        left, top = map(str, self.item)
        return self.call(["xdotool", "mousemove", left, top, "mousedown", "1", "mouseup", "1"])

    def switches(self):
        """Voluntary context switches so far, by thread."""
        counted = {}
        for task in pathlib.Path(f"/proc/{self.process.pid}/task").iterdir():
            status = (task / "status").read_text()
            counted[int(task.name)] = (
                re.search(r"^Name:\s*(.*)$", status, re.MULTILINE)[1],
                int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", status, re.MULTILINE)[1]))
        return counted

    def wake_ups(self, seconds):
        """The wake-ups in `seconds`, by thread, once the caret has stopped blinking."""
        time.sleep(REST_SECONDS)
        before = self.switches()
        time.sleep(seconds)
        after = self.switches()
        counted = {f"{name} {task}": count - before.get(task, (name, 0))[1]
                   for task, (name, count) in after.items()}
        # A thread that has ended woke up at least once, to end.
        return counted | {f"{name} {task}, ended": 1 for task, (name, _) in before.items()
                          if task not in after}


def measure_calls(resident, runs):
    found = collections.defaultdict(list)
    for turn in range(runs + 1):
        for name, call in ((SECOND, resident.second_start), (CLICK, resident.click)):
            seen = call()
            if turn > 0 and seen is not None:
                found[name].append(seen)
        resident.hide()
        seen = resident.contest.start(ROFI)
        if turn > 0 and seen is not None:
            found[ROFI].append(seen)
    return found


def against(value, budget):
    return f"{value:.1f} {'<=' if value <= budget else '> '} {budget:.1f}"


def print_calls(found, runs):
    print(f"The window of the running program, {ENTRIES} entries, ms, median (quartiles) of {runs}")
    for name, measure, what in ((SECOND, "exit", "exit"), (SECOND, "first", "painted"),
                                (CLICK, "exit", "xdotool alone"), (CLICK, "first", "painted"),
                                (ROFI, "first", "cold start, painted")):
        print(f"  {name:13} {what:20} {spread(found[name], measure)}")
    rofi = median(found[ROFI], "first")
    print("Medians against what was set")
    print(f"  {SECOND}, exit ms          {against(median(found[SECOND], 'exit'), EXIT_BUDGET)}")
    for name, budget in PAINTED_BUDGETS.items():
        painted = median(found[name], "first")
        print(f"  {name + ', painted ms':26} {against(painted, budget)}")
        print(f"  {name + ', share of rofi':26} {painted / rofi:.2f} "
              f"{'<=' if painted <= ROFI_SHARE * rofi else '> '} {ROFI_SHARE:.2f}")
    looks = statistics.median(one["worstLook"] for seen in found.values() for one in seen)
    print(f"  One look at the screen took up to {looks:.1f} ms: no time is known better.")


def print_wake_ups(what, counted, seconds):
    print(f"Wake-ups in {seconds} s with the window {what}: {sum(counted.values())} in "
          f"{len(counted)} threads")
    for thread, count in counted.items():
        if count:
            print(f"  {thread}: {count}")
    sys.stdout.flush()


def measure(desktop, watch, program, arguments, folder):
    make_tree(folder / "share", ENTRIES)
    contest = Contest(desktop, watch, program, folder / "share", folder / "caches")
    resident = Resident(contest)
    found = measure_calls(resident, arguments.runs)
    if all(found[name] for name in (SECOND, CLICK, ROFI)):
        print_calls(found, arguments.runs)
        sys.stdout.flush()
    if arguments.idle > 0:
        # The pointer goes to a corner of the screen, where no window is.
        resident.ask("xdotool", "mousemove", "0", "799")
        resident.second_start()
        resident.await_shown(True)
        print_wake_ups("shown", resident.wake_ups(arguments.idle), arguments.idle)
        resident.hide()
        print_wake_ups("hidden", resident.wake_ups(arguments.idle), arguments.idle)
    return contest.failures


def main():
    parser = parser_for(__doc__)
    parser.add_argument("--runs", type=int, default=20, help="showings of each kind that count")
    parser.add_argument("--idle", type=int, default=60, help="seconds; 0 leaves this out")
    return measured(parser.parse_args(), ("Xvfb", "dbus-daemon", "openbox", "tint2", "xdotool",
                                          "xprop", "xwininfo", "rofi"), "", measure)


if __name__ == "__main__":
    sys.exit(main())

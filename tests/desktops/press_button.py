#!/usr/bin/python3 -W ignore
"""Presses a button of a program, as a screen reader does:

    press_button.py PID NAME

A process of its own, because one can join one accessibility bus only.
"""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tools"))

import accessible  # noqa: E402
from gi.repository import Atspi  # noqa: E402


def main(pid, name):
    Atspi.init()

    def button():
        desktop = Atspi.get_desktop(0)
        desktop.clear_cache()
        # A library of the program's may have joined the bus too, with nothing to show.
        return next((node for root in accessible.children(desktop)
                     if root.get_process_id() == int(pid) for node in accessible.walk(root)
                     if accessible.role_of(node) == "push button" and node.get_name() == name), None)
    node = accessible.await_node(button, f"the button “{name}”", 20)
    names = [node.get_action_name(index) for index in range(node.get_n_actions())]
    node.do_action(names.index("Press"))


if __name__ == "__main__":
    main(*sys.argv[1:])

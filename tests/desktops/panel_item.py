#!/usr/bin/python3 -W ignore
"""Where a panel's accessible tree has an item of that name, the rightmost of several:

    panel_item.py PROGRAM NAME

Prints x, y, width and height. A process of its own, because one can join one accessibility bus only.
"""

import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


def places(node, name):
    try:
        if node is None:
            return
        if node.get_name() == name:
            box = node.get_extents(Atspi.CoordType.SCREEN)
            if 8 < box.width < 100 and 8 < box.height < 100:
                yield box
        for index in range(node.get_child_count()):
            yield from places(node.get_child_at_index(index), name)
    except GLib.Error:
        return


def main(program, name):
    Atspi.init()
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        if application is not None and application.get_name() == program:
            found = sorted(places(application, name), key=lambda box: box.x)
            if found:
                print(found[-1].x, found[-1].y, found[-1].width, found[-1].height)
                return 0
    return 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

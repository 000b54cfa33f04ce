"""Windows of made-up programs, and what the X server says of them."""

import re
import subprocess

from private_desktop import wait_until

_SHOW_WINDOWS = """
import ctypes
from ctypes import c_ulong, c_void_p
x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = c_void_p
x11.XInternAtom.restype = x11.XCreateSimpleWindow.restype = x11.XDefaultRootWindow.restype = c_ulong
display = c_void_p(x11.XOpenDisplay(None))

def show(title, class_name, modest):
    window = c_ulong(x11.XCreateSimpleWindow(
        display, c_ulong(x11.XDefaultRootWindow(display)), 20, 20, 300, 200, 0, c_ulong(0),
        c_ulong(0xffffff)))

    def say(name, kind, *numbers):
        name, kind = (c_ulong(x11.XInternAtom(display, each, 0)) for each in (name, kind))
        x11.XChangeProperty(display, window, name, kind, 32, 0,
                            (c_ulong * len(numbers))(*numbers), len(numbers))

    x11.XStoreName(display, window, title.encode())
    if class_name:
        names = (class_name.encode() + b"\\0") * 2
        x11.XChangeProperty(display, window, c_ulong(67), c_ulong(31), 8, 0, names, len(names))
    if modest:
        say(b"_NET_WM_USER_TIME", b"CARDINAL", 0)
    say(b"WM_HINTS", b"WM_HINTS", 1, 1, 0, 0, 0, 0, 0, 0, 0)
    x11.XMapWindow(display, window)

for title in {titles!r}:
    show(title, {class_name!r}, {modest!r})
event = ctypes.create_string_buffer(192)
while True:
    x11.XNextEvent(display, event)
"""


def show_window(*titles, class_name="", modest=False):
    """The text of a Python program that shows windows of these titles. A modest one does not want
    the focus when it is shown (_NET_WM_USER_TIME is 0), but takes it when it is given."""
    text = _SHOW_WINDOWS
    for name, value in (("titles", titles), ("class_name", class_name), ("modest", modest)):
        text = text.replace(f"{{{name}!r}}", repr(value))
    return text


def windows_called(desktop, title):
    """The ids of the windows with that title, whether they can be seen or not."""
    return [int(line.split()[0], 16) for line in window_tree(desktop) if f'"{title}"' in line]


def window_tree(desktop):
    """The lines of xwininfo(1) about all windows. It fails, and is run again, when a window goes
    while it asks."""
    def tree():
        done = subprocess.run(["xwininfo", "-root", "-tree"], env=desktop.environment,
                              capture_output=True, text=True, timeout=30)
        return done.returncode == 0 and done.stdout.splitlines()
    return wait_until(tree, "the tree of windows")


def ids(desktop, property_name):
    """The numbers in a property of the root window."""
    said = desktop.run("xprop", "-root", property_name)
    return [int(each, 16) for each in re.findall(r"0x[0-9a-f]+", said)]


def active_window(desktop):
    return (ids(desktop, "_NET_ACTIVE_WINDOW") or [0])[0]


def is_in_front(desktop, window):
    """Whether it is the active one and above all others."""
    return (active_window(desktop) == window
            and ids(desktop, "_NET_CLIENT_LIST_STACKING")[-1:] == [window])


def is_minimised(desktop, window):
    return "_NET_WM_STATE_HIDDEN" in desktop.run("xprop", "-id", window, "_NET_WM_STATE")

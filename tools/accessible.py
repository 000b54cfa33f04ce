"""What a screen reader sees of the programs on a private desktop."""

import os

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402  (the version has to be asked for first)

from private_desktop import wait_until  # noqa: E402


def connect(desktop):
    """Joins the desktop's accessibility bus. Once a process, before anything else here."""
    for name in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"):
        os.environ[name] = desktop.environment[name]
    os.environ.pop("AT_SPI_BUS_ADDRESS", None)
    Atspi.init()


def await_node(condition, what, seconds=60.0):
    """Like wait_until, but a node that vanishes while it is read counts as not there yet."""

    def asked():
        context = GLib.MainContext.default()
        while context.pending():
            context.iteration(False)
        try:
            return condition()
        except GLib.Error:
            return None

    return wait_until(asked, what, seconds)


def children(node):
    if node is None:
        return []
    found = (node.get_child_at_index(index) for index in range(node.get_child_count()))
    return [child for child in found if child is not None]


def walk(node):
    yield node
    for child in children(node):
        yield from walk(child)


def application(pid):
    """The root of the program with that process id, when it is there already."""
    desktop = Atspi.get_desktop(0)
    desktop.clear_cache()
    return next((each for each in children(desktop) if each.get_process_id() == pid), None)


def role_of(node):
    """The name of the node's role. Newer versions of AT-SPI call a push button a button."""
    role = node.get_role_name()
    return "push button" if role == "button" else role


def find(root, role, name=None):
    """The first node of that role, and of that name when one is given."""
    if root is None:
        return None
    return next((node for node in walk(root) if role_of(node) == role
                 and (name is None or node.get_name() == name)), None)

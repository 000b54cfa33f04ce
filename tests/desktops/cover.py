#!/usr/bin/python3 -W ignore
"""Another program, with one plain window."""

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk  # noqa: E402

GLib.set_prgname("cover")
window = Gtk.Window(title="cover", default_width=1000, default_height=600)
window.connect("destroy", Gtk.main_quit)
window.show()
Gtk.main()

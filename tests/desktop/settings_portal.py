"""A settings portal on a private desktop, which says what a test tells it to."""

import threading

from gi.repository import Gio, GLib

_NAME = "org.freedesktop.portal.Desktop"
_PATH = "/org/freedesktop/portal/desktop"
_INTERFACE = "org.freedesktop.portal.Settings"
_DESCRIPTION = f"""<node><interface name="{_INTERFACE}">
<method name="ReadAll"><arg type="as" direction="in"/><arg type="a{{sa{{sv}}}}" direction="out"/></method>
<signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>"""

COLOR_SCHEME = ("org.freedesktop.appearance", "color-scheme")
CONTRAST = ("org.freedesktop.appearance", "contrast")
ACCENT = ("org.freedesktop.appearance", "accent-color")
FONT = ("org.gnome.desktop.interface", "font-name")
CURSOR_BLINK = ("org.gnome.desktop.interface", "cursor-blink")
CURSOR_BLINK_TIME = ("org.gnome.desktop.interface", "cursor-blink-time")
ICON_THEME = ("org.gnome.desktop.interface", "icon-theme")
NONE, DARK, LIGHT = (GLib.Variant("u", number) for number in range(3))
MORE = GLib.Variant("u", 1)


class SettingsPortal:
    """Serves `values`, by (group, key), on the bus while it is entered."""

    def __init__(self, address, values):
        self.address, self.values = address, dict(values)
        self.asked = threading.Event()

    def __enter__(self):
        self._context = GLib.MainContext.new()
        self._loop = GLib.MainLoop.new(self._context, False)
        ready = threading.Event()
        self._thread = threading.Thread(target=self._serve, args=(ready,), daemon=True)
        self._thread.start()
        if not ready.wait(20):
            raise RuntimeError("the settings portal did not reach its bus")
        return self

    def __exit__(self, *_):
        self._loop.quit()
        self._thread.join()
        self._bus.close_sync(None)

    def set(self, key, value):
        """The user chooses; programs are told."""
        self.values[key] = value
        self._bus.emit_signal(None, _PATH, _INTERFACE, "SettingChanged",
                              GLib.Variant("(ssv)", (*key, value)))
        self._bus.flush_sync(None)

    def _serve(self, ready):
        self._context.push_thread_default()
        flags = Gio.DBusConnectionFlags
        self._bus = Gio.DBusConnection.new_for_address_sync(
            self.address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)
        node = Gio.DBusNodeInfo.new_for_xml(_DESCRIPTION)
        self._bus.register_object(_PATH, node.interfaces[0], self._called, None, None)
        self._bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus",
                            "org.freedesktop.DBus", "RequestName",
                            GLib.Variant("(su)", (_NAME, 0)), None, Gio.DBusCallFlags.NONE, -1, None)
        ready.set()
        self._loop.run()
        self._context.pop_thread_default()

    def _called(self, _bus, _sender, _path, _interface, _method, parameters, invocation):
        (groups,) = parameters.unpack()
        told = {group: {name: value for (of, name), value in self.values.items() if of == group}
                for group in groups}
        invocation.return_value(GLib.Variant("(a{sa{sv}})", (told,)))
        self.asked.set()

#!/usr/bin/python3
"""A panel made up: it takes status items over the bus, and does with them what it is told.

    status_notifier_watcher.py [late]

With "late" the first who asks hears that no panel is there yet; it is a moment later. Says
"registered BUS-NAME" for each item. On standard input: "activate" clicks on the last item,
"secondary" clicks on it with the middle button, "ask X Y" asks it for a menu there; "menu" prints
the entries of the menu that it gives to panels, "choose TEXT" picks one of them.
"""

import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
INTROSPECTION = f"""<node><interface name="{NAME}">
<method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
<method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
<property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
<property name="RegisteredStatusNotifierItems" type="as" access="read"/>
<property name="ProtocolVersion" type="i" access="read"/>
<signal name="StatusNotifierHostRegistered"/></interface></node>"""


def say(*words):
    print(*words, flush=True)


class Watcher(dbus.service.Object):
    def __init__(self, bus, late):
        super().__init__(bus, "/StatusNotifierWatcher")
        self.bus, self.item, self.late = bus, None, late

    @dbus.service.method(NAME, in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, _service, sender=None):
        self.item = sender
        say("registered", sender)

    @dbus.service.signal(NAME)
    def StatusNotifierHostRegistered(self):
        pass

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, _interface, name):
        return self.GetAll(_interface)[name]

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="s", out_signature="a{sv}")
    def GetAll(self, _interface):
        there = not self.late
        if self.late:
            self.late = False
            GLib.idle_add(self.StatusNotifierHostRegistered)
        return {"IsStatusNotifierHostRegistered": there, "ProtocolVersion": dbus.Int32(0),
                "RegisteredStatusNotifierItems": dbus.Array([], signature="s")}

    @dbus.service.method(dbus.INTROSPECTABLE_IFACE, out_signature="s")
    def Introspect(self):
        return INTROSPECTION

    def call(self, path, interface, method, *arguments):
        return self.bus.get_object(self.item, path, introspect=False).get_dbus_method(
            method, interface)(*arguments)

    def entries(self):
        path = self.call("/StatusNotifierItem", dbus.PROPERTIES_IFACE, "Get", ITEM, "Menu")
        _, (_, _, children) = self.call(path, MENU, "GetLayout", dbus.Int32(0), dbus.Int32(-1),
                                        dbus.Array([], signature="s"))
        return path, [(number, properties) for number, properties, _ in children]

    def obey(self, line):
        command, _, text = line.strip().partition(" ")
        if command == "activate":
            self.call("/StatusNotifierItem", ITEM, "Activate", dbus.Int32(0), dbus.Int32(0))
        elif command == "secondary":
            self.call("/StatusNotifierItem", ITEM, "SecondaryActivate", dbus.Int32(0),
                      dbus.Int32(0))
            say(command)
        elif command == "ask":
            self.call("/StatusNotifierItem", ITEM, "ContextMenu", *map(dbus.Int32, text.split()))
            say(command)
        elif command == "tooltip":
            tip = self.call("/StatusNotifierItem", dbus.PROPERTIES_IFACE, "Get", ITEM, "ToolTip")
            say("tooltip", tip[2])
        elif command == "sizes":
            icons = self.call("/StatusNotifierItem", dbus.PROPERTIES_IFACE, "Get", ITEM,
                              "IconPixmap")
            say("sizes", *(int(icon[0]) for icon in icons))
        elif command == "menu":
            texts = ["—" if entry.get("type") == "separator"
                     else str(entry.get("label", "")).replace("_", "")
                     for _, entry in self.entries()[1]]
            say("menu", " | ".join(texts))
        elif command == "choose":
            path, entries = self.entries()
            number = next(number for number, entry in entries
                          if str(entry.get("label", "")).replace("_", "") == text)
            self.call(path, MENU, "Event", dbus.Int32(number), "clicked",
                      dbus.String("", variant_level=1), dbus.UInt32(0))


def main():
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    watcher = Watcher(bus, "late" in sys.argv[1:])
    name = dbus.service.BusName(NAME, bus, do_not_queue=True)
    say("ready", name.get_name())

    def readable(source, condition):
        line = source.readline()
        try:
            if line:
                watcher.obey(line)
                return True
        except dbus.DBusException as error:
            print(error, file=sys.stderr)
        loop.quit()
        return False

    loop = GLib.MainLoop()
    GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, readable)
    loop.run()


if __name__ == "__main__":
    main()

#!/usr/bin/python3
"""Another owner of an application's bus name.

    application_stand_in.py NAME

Says "ready", then what comes with each call of Activate as JSON.
"""

import json
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = sys.argv[1]


class Application(dbus.service.Object):
    @dbus.service.method("org.freedesktop.Application", in_signature="a{sv}")
    def Activate(self, platform_data):
        print(json.dumps({str(key): str(value) for key, value in platform_data.items()}),
              flush=True)


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
name = dbus.service.BusName(NAME, bus, do_not_queue=True)
application = Application(bus, "/" + NAME.replace(".", "/"))
print("ready", flush=True)
GLib.MainLoop().run()

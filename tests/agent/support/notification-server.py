#!/usr/bin/env python3
"""A notification server for the bus at DBUS_SESSION_BUS_ADDRESS: writes each notification as a line of JSON, and does
with it what a line of its input says: "press ACTION", "dismiss", or "keep"."""
import json
import sys
import threading

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.freedesktop.Notifications"


class Server(dbus.service.Object):
    last = 0

    @dbus.service.method(NAME, in_signature="susssasa{sv}i", out_signature="u")
    def Notify(self, app, replaces, icon, summary, body, actions, hints, timeout):
        self.last += 1
        print(json.dumps({"summary": summary, "body": body, "actions": list(actions)}), flush=True)
        return dbus.UInt32(self.last)

    @dbus.service.method(NAME, in_signature="u")
    def CloseNotification(self, number):
        print(json.dumps({"closed": True}), flush=True)
        self.NotificationClosed(number, 3)

    @dbus.service.method(NAME, out_signature="as")
    def GetCapabilities(self):
        return sys.argv[1:]

    @dbus.service.method(NAME, out_signature="ssss")
    def GetServerInformation(self):
        return "test", "test", "1", "1.2"

    @dbus.service.signal(NAME, signature="us")
    def ActionInvoked(self, number, action):
        pass

    @dbus.service.signal(NAME, signature="uu")
    def NotificationClosed(self, number, reason):
        pass

    def act(self, line):
        if line.startswith("press "):
            self.ActionInvoked(self.last, line.split()[1])
        self.NotificationClosed(self.last, 2)


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
server = Server(bus, "/org/freedesktop/Notifications")
owned = dbus.service.BusName(NAME, bus)
print(json.dumps({"ready": True}), flush=True)


def read_input():
    for line in sys.stdin:
        GLib.idle_add(lambda text=line.strip(): server.act(text) and False)


threading.Thread(target=read_input, daemon=True).start()
GLib.MainLoop().run()

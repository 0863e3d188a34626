#!/usr/bin/env python3
"""A notification server as the Desktop Notifications Specification 1.2 has it: numbers what it is given, and says that
a message was clicked, has expired or was closed when the test says "ActionInvoked ID ACTION" or "NotificationClosed ID
REASON". The arguments are its capabilities; with "hangs" among them it never answers the call that shows a message."""

import sys

import dbus
import dbus.service
import peer

NAME = "org.freedesktop.Notifications"


class Server(dbus.service.Object):
    last = 40

    @dbus.service.method(NAME, in_signature="", out_signature="as")
    def GetCapabilities(self):
        return dbus.Array(sys.argv[1:], signature="s")

    @dbus.service.method(
        NAME, in_signature="susssasa{sv}i", out_signature="u", async_callbacks=("done", "failed")
    )
    def Notify(self, application, replaces, icon, title, text, actions, hints, expiry, done, failed):
        self.last += 1
        peer.tell("Notify", application, replaces, title, text, ",".join(actions[::2]), int(hints["urgency"]), expiry)
        if "hangs" not in sys.argv:
            done(self.last)

    @dbus.service.signal(NAME, signature="us")
    def ActionInvoked(self, message, action):
        pass

    @dbus.service.signal(NAME, signature="uu")
    def NotificationClosed(self, message, reason):
        pass


server = Server(peer.bus, "/org/freedesktop/Notifications", dbus.service.BusName(NAME, peer.bus))


def hear(signal, message, value):
    if signal == "ActionInvoked":
        server.ActionInvoked(int(message), value)
    else:
        server.NotificationClosed(int(message), int(value))


peer.run(hear)

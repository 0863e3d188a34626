#!/usr/bin/env python3
"""An application of KDE's: IDENTIFIER WINDOW... It tells which of its main windows' actions to quit is triggered, and
ends with that at once. With "--busy" as a window those before it cannot be quit."""

import os
import sys

import dbus.service
import peer

ACTION = "org.qtproject.Qt.QAction"


class Action(dbus.service.Object):
    def __init__(self, window):
        super().__init__(peer.bus, f"/editor/{window}/actions/file_quit")
        self.window = window

    @dbus.service.method("org.freedesktop.DBus.Properties", in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return interface == ACTION and name == "enabled" and "--busy" not in sys.argv

    @dbus.service.method(ACTION)
    def trigger(self):
        peer.tell("quit", self.window)
        os._exit(0)


name = dbus.service.BusName(sys.argv[1], peer.bus)
actions = [Action(window) for window in sys.argv[2:] if window != "--busy"]
peer.run()

#!/usr/bin/env python3
"""A user's service manager: its arguments are the environment that it knows, and it tells which units it is to make."""

import sys

import dbus
import dbus.service
import peer

NAME = "org.freedesktop.systemd1"


class Manager(dbus.service.Object):
    @dbus.service.method("org.freedesktop.DBus.Properties", in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        assert (interface, name) == ("org.freedesktop.systemd1.Manager", "Environment")
        return dbus.Array(sys.argv[1:], signature="s")

    @dbus.service.method("org.freedesktop.systemd1.Manager", in_signature="ssa(sv)a(sa(sv))", out_signature="o")
    def StartTransientUnit(self, unit, mode, properties, others):
        processes = dict(properties)["PIDs"]
        assert processes.signature == "u" and not others
        peer.tell("StartTransientUnit", unit, mode, *processes)
        return "/org/freedesktop/systemd1/job/1"


manager = Manager(peer.bus, "/org/freedesktop/systemd1", dbus.service.BusName(NAME, peer.bus))
peer.run()

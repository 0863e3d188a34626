#!/usr/bin/env python3
"""A file manager that tells what it is asked to show; an argument makes it refuse."""

import sys

import dbus
import dbus.service
import peer

NAME = "org.freedesktop.FileManager1"


class FileManager(dbus.service.Object):
    @dbus.service.method(NAME, in_signature="ass")
    def ShowItems(self, addresses, startup):
        peer.tell("ShowItems", *addresses)
        if sys.argv[1:]:
            raise dbus.DBusException("refused")


manager = FileManager(peer.bus, "/org/freedesktop/FileManager1", dbus.service.BusName(NAME, peer.bus))
peer.run()

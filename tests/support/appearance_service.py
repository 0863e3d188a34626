#!/usr/bin/python3
"""Stands in for the desktop's settings service on the session bus: tells that dark (1) or light (2) colours are wanted.

Usage: appearance_service.py SCHEME. Prints "ready" once it answers. A line on standard input changes the scheme.
"""
import sys

from gi.repository import Gio, GLib

INTERFACE = """<node><interface name="org.freedesktop.portal.Settings">
<method name="Read"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>
<signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>"""
PATH = "/org/freedesktop/portal/desktop"
GROUP, KEY = "org.freedesktop.appearance", "color-scheme"

scheme = int(sys.argv[1])
bus = Gio.bus_get_sync(Gio.BusType.SESSION)


def answer(_bus, _sender, _path, _interface, _method, arguments, invocation):
    if arguments.unpack() == (GROUP, KEY):
        inner = GLib.Variant("v", GLib.Variant("u", scheme))
        invocation.return_value(GLib.Variant.new_tuple(GLib.Variant("v", inner)))
    else:
        invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "no such setting")


def change(_channel, _condition):
    global scheme
    line = sys.stdin.readline()
    if not line:
        return False
    scheme = int(line)
    value = GLib.Variant("(ssv)", (GROUP, KEY, GLib.Variant("u", scheme)))
    bus.emit_signal(None, PATH, "org.freedesktop.portal.Settings", "SettingChanged", value)
    return True


bus.register_object(PATH, Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0], answer, None, None)
Gio.bus_own_name_on_connection(bus, "org.freedesktop.portal.Desktop", Gio.BusNameOwnerFlags.NONE,
                               lambda *_: print("ready", flush=True), None)
GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, change)
GLib.MainLoop().run()

#!/usr/bin/env python3
"""A GTK-like application: IDENTIFIER ACTION... It tells when it is activated, when it is given files, when one of its
actions is called and when it gets SIGTERM; the action "quit" and SIGTERM end it. With the argument "--asks" the action
asks the user first, who is away: it does not return, and the application goes on meanwhile."""

import signal
import sys

import peer
from gi.repository import Gio, GLib

application = Gio.Application(application_id=sys.argv[1], flags=Gio.ApplicationFlags.HANDLES_OPEN)
application.connect("activate", lambda *_: peer.tell("activate"))
application.connect("open", lambda _, files, *rest: peer.tell("open", *[file.get_path() for file in files]))


def end(reason):
    peer.tell(reason)
    if reason == "quit" and "--asks" in sys.argv:
        GLib.MainLoop().run()
    elif reason in ("quit", "SIGTERM"):
        peer.loop.quit()


for name in sys.argv[2:]:
    action = Gio.SimpleAction.new(name, None)
    action.connect("activate", lambda action, _: end(action.get_name()))
    application.add_action(action)
GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGTERM, end, "SIGTERM")
application.register(None)
peer.run()

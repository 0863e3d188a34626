#!/usr/bin/env python3
"""A program that hears what is announced."""

import peer

peer.bus.add_signal_receiver(
    lambda *values, name: peer.tell(name, *values),
    dbus_interface="com.quarrywell.Announcements",
    path="/com/quarrywell/Announcements",
    member_keyword="name",
)
peer.run()

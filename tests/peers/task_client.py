#!/usr/bin/env python3
"""A companion tool: task_client.py SERVICE BEHAVIOUR MEMBER... has only the members named and, when one is called,
"answers", "hangs" or "dies"."""

import os
import sys

import dbus
import dbus.service
import peer

service, behaviour, members = sys.argv[1], sys.argv[2], sys.argv[3:]


def member(signature):
    interface = "com.quarrywell.QWGearwrightErrorCallbackProtocol"
    return dbus.service.method(interface, in_signature=signature, async_callbacks=("done", "failed"))


def heard(done, *texts):
    peer.tell(*texts)
    if behaviour == "dies":
        os._exit(1)
    if behaviour == "answers":
        done()


class Client(dbus.service.Object):
    @member("sa{sv}")
    def postErrorStringuserInfo(self, text, info, done, failed):
        heard(done, "postErrorStringuserInfo", text, info["appName"])

    @member("s")
    def postErrorString(self, text, done, failed):
        heard(done, "postErrorString", text)

    @member("s")
    def postError(self, error, done, failed):
        heard(done, "postError", error)


for name in [name for name in vars(Client) if name.startswith("post") and name not in members]:
    delattr(Client, name)
client = Client(peer.bus, f"/com/quarrywell/{service}", dbus.service.BusName(f"com.quarrywell.{service}", peer.bus))
peer.run()

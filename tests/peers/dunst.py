#!/usr/bin/env python3
"""The notification server "dunst" on a display of its own. The test says "click" for the message that is shown."""

import os
import subprocess
import time

import peer

display = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp"],
                           stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
number = display.stdout.readline().strip()
dunst = subprocess.Popen(["dunst", "-conf", "/dev/null"], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                         env=dict(os.environ, DISPLAY=f":{number}"))
try:
    while not peer.bus.name_has_owner("org.freedesktop.Notifications"):
        time.sleep(0.01)
    peer.run(lambda *said: subprocess.run(["dunstctl", "action", "0"]))
finally:
    dunst.kill()
    display.kill()

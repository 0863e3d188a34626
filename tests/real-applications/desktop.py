"""A user's session: a display with a window manager, and its windows as assistive technologies see them."""
import atexit
import os
import subprocess
import time

import pyatspi


def start_display():
    server = subprocess.Popen(['Xvfb', '-displayfd', '1', '-noreset', '-screen', '0', '1280x900x24', '-nolisten', 'tcp'],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    atexit.register(server.kill)
    os.environ['DISPLAY'] = ':' + server.stdout.readline().decode().strip()
    os.environ['QT_LINUX_ACCESSIBILITY_ALWAYS_ON'] = '1'
    start('xfwm4')


def start(*command):
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    atexit.register(process.kill)
    return process


def below(thing):
    yield thing
    try:
        # A table may claim more cells than anybody would read.
        for i in range(min(thing.childCount, 300)):
            child = thing.getChildAtIndex(i)
            if child is not None:
                yield from below(child)
    except Exception:  # what has just closed cannot be asked
        return


def find(application, role, name, shown=True):
    """None where there is none now."""
    for top in pyatspi.Registry.getDesktop(0):
        if top is None or top.name != application:
            continue
        for thing in below(top):
            try:
                if thing.getRoleName() == role and thing.name.strip() == name and (
                        not shown or thing.getState().contains(pyatspi.STATE_SHOWING)):
                    return thing
            except Exception:
                continue
    return None


def wait_for(application, role, name, seconds=30):
    """None when it does not appear in that time."""
    end = time.time() + seconds
    while time.time() < end:
        found = find(application, role, name)
        if found is not None:
            return found
        time.sleep(0.2)
    return None


def gone(application, role, name, seconds):
    """Whether it stays away for that time."""
    return wait_for(application, role, name, seconds) is None


def press(thing):
    thing.queryAction().doAction(0)
    time.sleep(0.5)


def menu(application, name):
    press(find(application, 'menu item', name, shown=False))


def key(*keys):
    subprocess.run(['xdotool', 'key', *keys], check=True)
    time.sleep(0.3)


def picture(path):
    subprocess.run(['import', '-window', 'root', path], check=False)

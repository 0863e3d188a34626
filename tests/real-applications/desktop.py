"""A user's session: a display with a window manager, and what is seen and done there."""
import atexit
import os
import pathlib
import subprocess
import sys
import time

LOOK = pathlib.Path(__file__).with_name('look.py')


def start_display():
    server = subprocess.Popen(['Xvfb', '-displayfd', '1', '-noreset', '-screen', '0', '1280x900x24', '-nolisten', 'tcp'],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    atexit.register(server.kill)
    os.environ['DISPLAY'] = ':' + server.stdout.readline().decode().strip()
    os.environ['QT_LINUX_ACCESSIBILITY_ALWAYS_ON'] = '1'
    os.environ['GTK_MODULES'] = 'gail:atk-bridge'  # GTK 2 knows them as packages of their own
    # Its services need it too: without a mark of theirs on the display, Qt 5 reaches assistive technologies by chance.
    subprocess.run(['dbus-update-activation-environment', 'DISPLAY'], check=True)
    subprocess.run(['gdbus', 'call', '--session', '-d', 'org.a11y.Bus', '-o', '/org/a11y/bus', '-m',
                    'org.a11y.Bus.GetAddress'], check=True, stdout=subprocess.DEVNULL)
    start('xfwm4')


def start(*command):
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    atexit.register(process.kill)
    return process


def wait_until(holds, seconds=30):
    """Whether it came to hold in that time."""
    end = time.time() + seconds
    while not holds():
        if time.time() > end:
            return False
        time.sleep(0.2)
    return True


def look(application, role, name, what=''):
    return subprocess.run([sys.executable, LOOK, application, role, name, what], timeout=60).returncode == 0


def shows(application, role, name, seconds=30):
    return wait_until(lambda: look(application, role, name), seconds)


def shows_after(complaint, application, role, name):
    """Once it has said in an alert of that title what is wrong with its preferences, where it says so."""
    said = (application, 'alert', complaint)
    wait_until(lambda: look(*said) or look(application, role, name), seconds=60)
    if look(*said):
        press(application, 'push button', 'OK')
    return shows(application, role, name, seconds=60)


def is_checked(application, role, name):
    return shows(application, role, name) and look(application, role, name, 'checked')


def press(application, role, name):
    """Once it is there."""
    assert wait_until(lambda: look(application, role, name, 'press')), f'no {role} "{name}"'
    time.sleep(0.5)


def click(application, role, name):
    """With the mouse, where pressing it would only tick it."""
    assert shows(application, role, name), f'no {role} "{name}"'
    place = subprocess.run([sys.executable, LOOK, application, role, name, 'where'], capture_output=True, text=True)
    click_at(*place.stdout.split())


def click_at(x, y):
    subprocess.run(['xdotool', 'mousemove', str(x), str(y), 'sleep', '0.5', 'click', '1'], check=True)
    time.sleep(1)


def menu(application, name):
    press(application, 'menu item', name)


def window(title, seconds=30):
    """Whether a window with such a title, a regular expression, is there."""
    return wait_until(lambda: search(title), seconds)


def search(title):
    return subprocess.run(['xdotool', 'search', '--onlyvisible', '--name', title], capture_output=True, text=True).stdout


def focus(title):
    subprocess.run(['xdotool', 'search', '--onlyvisible', '--name', title, 'windowactivate', '--sync'], check=True)


def key(*keys):
    subprocess.run(['xdotool', 'key', *keys], check=True)
    time.sleep(0.3)


def write(text):
    subprocess.run(['xdotool', 'type', '--delay', '50', text], check=True)
    time.sleep(0.5)


def pixels(place):
    """How light the display is there, a byte each; WIDTHxHEIGHT+X+Y."""
    return subprocess.run(['import', '-window', 'root', '-crop', place, '-depth', '8', 'gray:-'], check=True,
                          capture_output=True).stdout


def picture(path):
    subprocess.run(['import', '-window', 'root', path], check=False)

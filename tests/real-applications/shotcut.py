"""Shotcut, as its user works it."""
from desktop import focus, is_checked, key, menu, press, shows, window

NAME = 'Shotcut'
PACKAGES = 'shotcut'
ENTRY = 'org.shotcut.Shotcut'
PROCESS = 'shotcut'
KEY = 'shotcutPrefs'
FILE = '.config/Meltytech/Shotcut.conf'

RIPPLE = ('Shotcut', 'menu item', 'Ripple')


def has_started():
    return shows('Shotcut', 'push button', 'Open File')


def has_defaults():
    return not is_checked(*RIPPLE)


def has_users_settings():
    return is_checked(*RIPPLE)


def change_a_setting():
    press(*RIPPLE)


def work():
    """A video track more, once there is a timeline again."""
    press('Shotcut', 'push button', 'Timeline')
    focus('Shotcut$')
    key('ctrl+i')


def has_unsaved_work():
    return window('^Untitled\\*')


def asks_about_work():
    return shows('Shotcut', 'label', 'The project has been modified.\nDo you want to save your changes?')


def keep_on_working():
    press('Shotcut', 'push button', 'Cancel')


def discard_work():
    press('Shotcut', 'push button', 'No')


def quit():
    menu('Shotcut', 'Exit')

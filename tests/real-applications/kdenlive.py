"""Kdenlive, as its user works it. At its start it complains of packages that it misses."""
from desktop import is_checked, menu, press, shows, window

NAME = 'Kdenlive'
PACKAGES = 'kdenlive frei0r-plugins mediainfo'
ENTRY = 'org.kde.kdenlive'
PROCESS = 'kdenlive'
KEY = 'kdenlivePrefs'
FILE = '.config/kdenliverc'

STATUS_BAR = ('kdenlive', 'menu item', 'Show Statusbar')


def has_started():
    return shows('kdenlive', 'menu item', 'Timeline')


def has_defaults():
    return is_checked(*STATUS_BAR)


def has_users_settings():
    return shows(*STATUS_BAR) and not is_checked(*STATUS_BAR)


def change_a_setting():
    press(*STATUS_BAR)


def work():
    press('kdenlive', 'push button', 'Create Folder')


def has_unsaved_work():
    return window('^Untitled\\*')


def asks_about_work():
    return shows('kdenlive', 'label', 'Save changes to document?')


def keep_on_working():
    press('kdenlive', 'push button', 'Cancel')


def discard_work():
    press('kdenlive', 'push button', 'Do Not Save')


def quit():
    menu('kdenlive', 'Quit')

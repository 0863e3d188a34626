"""Pitivi, as its user works it."""
from desktop import press, shows, window

NAME = 'Pitivi'
PACKAGES = 'pitivi librsvg2-common'
ENTRY = 'org.pitivi.Pitivi'
PROCESS = 'pitivi'
KEY = 'pitiviPrefs'
FILE = '.config/pitivi/pitivi.conf'

VIEWER = ('pitivi', 'frame', '')


def has_started():
    return shows('pitivi', 'label', 'Welcome to Pitivi', seconds=60)


def has_defaults():
    """The viewer is a part of the main window."""
    return not shows(*VIEWER, seconds=5)


def has_users_settings():
    return shows(*VIEWER)


def change_a_setting():
    press('pitivi', 'push button', 'New')
    press('pitivi', 'push button', 'undock_button')
    assert shows(*VIEWER)


def work():
    press('pitivi', 'push button', 'New')
    press('pitivi', 'push button', 'Create a color clip')


def has_unsaved_work():
    return window('^\\*Untitled')


def asks_about_work():
    return shows('pitivi', 'label', 'Save changes to the current project before closing?')


def keep_on_working():
    press('pitivi', 'push button', 'Cancel')


def discard_work():
    press('pitivi', 'push button', 'Close without saving')


def quit():
    press('pitivi', 'push button', 'Close')

"""Audacity, as its user works it."""
from desktop import look, menu, press, shows

NAME = 'Audacity'
PACKAGES = 'audacity'
ENTRY = 'audacity'
PROCESS = 'audacity'
KEY = 'audacityPrefs'
FILE = '.config/audacity/audacity.cfg'

WELCOME = ('audacity', 'frame', 'Welcome to Audacity!')


def has_started():
    return shows('audacity', 'menu', 'Tracks')


def has_defaults():
    """Each start shows a welcome until one does not want it any more."""
    return shows(*WELCOME, seconds=20)


def has_users_settings():
    return not shows(*WELCOME, seconds=5)


def dismiss_greeting():
    if look(*WELCOME):
        press('audacity', 'push button', 'OK')


def change_a_setting():
    press('audacity', 'check box', "Don't show this again at start up")
    dismiss_greeting()


def work():
    menu('audacity', 'Mono Track')


def has_unsaved_work():
    return shows('audacity', 'menu item', 'Undo New Track')


def asks_about_work():
    return shows('audacity', 'label', 'Save project before closing?')


def keep_on_working():
    press('audacity', 'push button', 'Cancel')


def discard_work():
    press('audacity', 'push button', 'No')


def quit():
    menu('audacity', 'Exit')

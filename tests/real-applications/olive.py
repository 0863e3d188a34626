"""Olive, as its user works it."""
from desktop import look, menu, press, shows, shows_after, window

NAME = 'Olive'
PACKAGES = 'olive-editor'
ENTRY = 'org.olivevideoeditor.Olive'
PROCESS = 'olive-editor'
KEY = 'olivePrefs'
FILE = '.local/share/olivevideoeditor.org/Olive/config.xml'

WELCOME = ('Olive', 'dialog', 'Welcome to Olive')


def has_started():
    return shows_after('Error loading settings', 'Olive', 'menu item', 'Sequence')


def has_defaults():
    """Each start shows a welcome until one does not want it any more."""
    return shows(*WELCOME)


def has_users_settings():
    return not shows(*WELCOME, seconds=10)


def dismiss_greeting():
    if look(*WELCOME):
        press('Olive', 'push button', 'OK')


def change_a_setting():
    press('Olive', 'check box', "Don't show this message again")
    dismiss_greeting()


def work():
    menu('Olive', 'Folder')


def has_unsaved_work():
    return window('\\*\\(untitled\\)')


def asks_about_work():
    return shows('Olive', 'alert', 'Unsaved Changes')


def keep_on_working():
    press('Olive', 'push button', 'Cancel')


def discard_work():
    press('Olive', 'push button', "Don't Save")


def quit():
    menu('Olive', 'Exit')

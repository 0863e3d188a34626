"""OpenShot, as its user works it."""
from desktop import look, menu, press, shows, shows_after, window

NAME = 'OpenShot'
PACKAGES = 'openshot-qt'
ENTRY = 'org.openshot.OpenShot'
PROCESS = 'openshot-qt'
KEY = 'openshotPrefs'
FILE = '.openshot_qt/openshot.settings'

ADD_TRACK = ('openshot', 'push button', 'Add Track')
HIDE_TUTORIAL = ('openshot', 'push button', 'Hide Tutorial')


def has_started():
    return shows_after('Settings Error', *ADD_TRACK)


def has_defaults():
    """Each start begins a tutorial until its user does not want it any more."""
    return shows(*HIDE_TUTORIAL)


def has_users_settings():
    return not shows(*HIDE_TUTORIAL, seconds=10)


def change_a_setting():
    press(*HIDE_TUTORIAL)


def dismiss_greeting():
    if look(*HIDE_TUTORIAL):
        press(*HIDE_TUTORIAL)


def work():
    press(*ADD_TRACK)


def has_unsaved_work():
    return window('^\\* Untitled Project')


def asks_about_work():
    return shows('openshot', 'label', 'Save changes to project before closing?')


def keep_on_working():
    press('openshot', 'push button', 'Cancel')


def discard_work():
    press('openshot', 'push button', 'No')


def quit():
    menu('openshot', 'Quit')

"""OBS Studio, as its user works it."""
from desktop import click, is_checked, look, menu, press, shows, window

NAME = 'OBS Studio'
PACKAGES = 'obs-studio'
ENTRY = 'com.obsproject.Studio'
PROCESS = 'obs'
KEY = 'obsPrefs'
FILE = '.config/obs-studio/global.ini'

STATUS_BAR = ('obs', 'menu item', 'Status Bar')


def has_started():
    return shows('obs', 'check box', 'Studio Mode', seconds=60)


def has_defaults():
    return is_checked(*STATUS_BAR)


def has_users_settings():
    return look(*STATUS_BAR) and not is_checked(*STATUS_BAR)


def dismiss_greeting():
    if window('^Auto-Configuration Wizard', seconds=5):
        press('obs', 'push button', 'Cancel')


def change_a_setting():
    dismiss_greeting()
    press(*STATUS_BAR)


def work():
    """It asks whether a blank screen is meant."""
    click('obs', 'check box', 'Start Recording')
    press('obs', 'push button', 'Yes')


def has_unsaved_work():
    return shows('obs', 'check box', 'Stop Recording')


def asks_about_work():
    return window('^Exit OBS')


def keep_on_working():
    press('obs', 'push button', 'No')


def discard_work():
    press('obs', 'push button', 'Yes')


def quit():
    menu('obs', 'Exit')

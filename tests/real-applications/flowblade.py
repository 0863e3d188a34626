"""Flowblade, as its user works it."""
from desktop import is_checked, menu, press, shows

NAME = 'Flowblade'
PACKAGES = 'flowblade'
ENTRY = 'io.github.jliljebl.Flowblade'
PROCESS = 'flowblade'
KEY = 'flowbladePrefs'
FILE = '.config/flowblade/prefs'

CENTERED = ('flowblade', 'radio menu item', 'Timecode Center')
GREETING = ('flowblade', 'push button', 'Select Preset Workflow and Continue')
CLIP = ('flowblade', 'label', 'Color Clip')


def has_started():
    return shows('flowblade', 'menu', 'Sequence', seconds=60)


def has_defaults():
    return not is_checked(*CENTERED)


def has_users_settings():
    return is_checked(*CENTERED)


def dismiss_greeting():
    if shows(*GREETING, seconds=5):
        press(*GREETING)


def change_a_setting():
    dismiss_greeting()
    press(*CENTERED)


def work():
    menu('flowblade', 'Create Color Clip...')
    press('flowblade', 'push button', 'Create')


def has_unsaved_work():
    return shows(*CLIP)


def asks_about_work():
    return shows('flowblade', 'label', "Save project 'untitled.flb' before exiting?")


def keep_on_working():
    press('flowblade', 'push button', 'Cancel')


def discard_work():
    press('flowblade', 'push button', "Don't Save")


def quit():
    menu('flowblade', 'Quit')

"""Audacity, as its user works it."""
from desktop import find, gone, menu, press, wait_for

NAME = 'Audacity'
PACKAGES = 'audacity'
ENTRY = 'audacity'
PROCESS = 'audacity'
KEY = 'audacityPrefs'
FILE = '.config/audacity/audacity.cfg'

WELCOME = dict(application='audacity', role='frame', name='Welcome to Audacity!')


def wait_until_started():
    wait_for('audacity', 'menu', 'Tracks')


def has_defaults():
    """Each start shows a welcome until one does not want it any more."""
    return wait_for(**WELCOME, seconds=20) is not None


def has_users_settings():
    return gone(**WELCOME, seconds=5)


def dismiss_greeting():
    if find(**WELCOME):
        press(wait_for('audacity', 'push button', 'OK'))


def change_a_setting():
    press(wait_for('audacity', 'check box', "Don't show this again at start up"))
    dismiss_greeting()


def leave_work_unsaved():
    menu('audacity', 'Mono Track')


def asks_about_work():
    return wait_for('audacity', 'label', 'Save project before closing?') is not None


def keep_on_working():
    press(wait_for('audacity', 'push button', 'Cancel'))


def discard_work():
    press(wait_for('audacity', 'push button', 'No'))


def quit():
    menu('audacity', 'Exit')

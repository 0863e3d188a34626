"""Ardour, as its user works it. It opens nothing without a session, and no session without sound."""
from desktop import click, click_at, focus, is_checked, key, look, menu, press, shows, start, wait_until, window, write

NAME = 'Ardour'
PACKAGES = 'ardour pulseaudio libatk-adaptor libgail-common'
ENTRY = 'ardour'
PROCESS = 'ArdourGUI'
KEY = 'ardourPrefs'
FILE = '.config/ardour7/config'

APPLICATION = 'ardour-7.3.0~ds0'
SAFETY_COPIES = (APPLICATION, 'check box', 'Make periodic backups of the session file')
START = (852, 640)  # a button that it draws itself


def start_sound():
    """As a desktop does. Without a card it plays into nothing."""
    start('pulseaudio', '--exit-idle-time=-1')


def button(name):
    return lambda: press(APPLICATION, 'push button', name)


def name_session():
    focus('^Session Setup')
    write('Song')
    press(APPLICATION, 'push button', 'Open')


def open_session():
    click(APPLICATION, 'table cell', 'Song')
    press(APPLICATION, 'push button', 'Open')


def choose_sound():
    press(APPLICATION, 'combo box', 'ALSA')
    menu(APPLICATION, 'PulseAudio')
    click_at(*START)


# What it asks until a session is open, as far as its preferences do not tell.
QUESTIONS = [
    ('push button', 'Forward', button('Forward')),
    ('push button', 'Apply', button('Apply')),
    ('label', 'Session name:', name_session),
    ('label', 'Recent Sessions', open_session),
    ('alert', 'Warning', button('OK')),
    ('combo box', 'ALSA', choose_sound),
    ('alert', 'Information', button('OK')),
]


def has_asked_all():
    for role, name, answer in QUESTIONS:
        if look(APPLICATION, role, name):
            answer()
            return False
    return window('^\\*?Song - Ardour', seconds=1)


def has_started():
    return wait_until(has_asked_all, seconds=90)


def refuses_to_start():
    refused = shows(APPLICATION, 'label', 'Could not initialize Ardour (likely due to corrupt config files).\n'
                                          'Run Ardour from a commandline for more information.')
    press(APPLICATION, 'push button', 'OK')
    return refused


def makes_safety_copies():
    menu(APPLICATION, 'Preferences')
    ticked = is_checked(*SAFETY_COPIES)
    close_preferences()
    return ticked


def close_preferences():
    focus('^Ardour - Preferences')
    key('alt+F4')


def has_defaults():
    return makes_safety_copies()


def has_users_settings():
    return not makes_safety_copies()


def change_a_setting():
    menu(APPLICATION, 'Preferences')
    press(*SAFETY_COPIES)
    close_preferences()


def work():
    menu(APPLICATION, 'Add Mark from Playhead')


def has_unsaved_work():
    return shows(APPLICATION, 'menu item', 'Undo (add marker)')


def asks_about_work():
    return shows(APPLICATION, 'dialog', 'Unsaved Session')


def keep_on_working():
    press(APPLICATION, 'push button', "Don't quit")


def discard_work():
    press(APPLICATION, 'push button', 'Just quit')


def quit():
    menu(APPLICATION, 'Save')
    menu(APPLICATION, 'Quit')

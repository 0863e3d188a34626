"""Blender, as its user works it. It draws all itself: what it shows is told by its colours, and by its window's title."""
import pathlib
import time

from desktop import click_at, focus, key, pixels, search, wait_until, window

NAME = 'Blender'
PACKAGES = 'blender'
ENTRY = 'blender'
PROCESS = 'blender'
KEY = 'blenderPrefs'
FILE = '.config/blender/3.4/config/userpref.blend'

ALL = '1280x900+0+0'
EMPTY = '1x1+1000+790'  # of the scene, beside what lies over it
QUESTION = '1x1+410+515'  # of the dark box in which it asks about work
GREETING = '1x1+400+690'  # of the dark box of its first question
THEME, LIGHT, NEXT = (680, 632), (668, 675), (795, 674)  # in it
THEMES = '100x20+610+720'  # once they are listed
DONT_SAVE, CANCEL = (545, 498), (695, 498)  # in it


def colour():
    return pixels(EMPTY)[0]


def is_dark():
    return 30 < colour() < 80


def is_light():
    return 80 < colour() < 120


def repeat(act, holds):
    """What comes while it draws is lost."""
    for _ in range(6):
        act()
        if wait_until(holds, seconds=4):
            return
    raise AssertionError('it does not listen')


def has_drawn():
    before = pixels(ALL)
    time.sleep(1)
    return (is_dark() or is_light()) and pixels(ALL) == before


def has_started():
    return window('^Blender', seconds=60) and wait_until(has_drawn, seconds=60)


def has_defaults():
    return wait_until(is_dark, seconds=5)


def has_users_settings():
    return wait_until(is_light, seconds=5)


def dismiss_greeting():
    focus('^Blender')
    key('Escape')


def change_a_setting():
    assert wait_until(lambda: pixels(GREETING)[0] < 30)
    unlisted = pixels(THEMES)
    repeat(lambda: click_at(*THEME), lambda: pixels(THEMES) != unlisted)
    repeat(lambda: click_at(*LIGHT), is_light)
    repeat(lambda: click_at(*NEXT), (pathlib.Path.home() / FILE).exists)


def save():
    key('ctrl+s')
    if window('^Blender File View', seconds=10):
        click_at(700, 600)  # a key goes to what the mouse is over
        key('Return')


def work():
    """A second cube, in a file that has one."""
    repeat(save, (pathlib.Path.home() / 'untitled.blend').exists)
    focus('^Blender')
    repeat(lambda: key('shift+d', 'Return'), lambda: search('^Blender\\*'))


def has_unsaved_work():
    return window('^Blender\\*')


def asks():
    focus('^Blender\\*')
    return pixels(QUESTION)[0] < 30 < colour()


def asks_about_work():
    return wait_until(asks)


def keep_on_working():
    repeat(lambda: click_at(*CANCEL), lambda: not asks())


def discard_work():
    repeat(lambda: click_at(*DONT_SAVE), lambda: not search('^Blender\\*'))


def ask_to_quit():
    dismiss_greeting()
    key('ctrl+q')


def quit():
    repeat(ask_to_quit, lambda: not search('^Blender'))

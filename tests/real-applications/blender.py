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
MIDDLE = '400x100+420+410'  # where it asks
THEME, LIGHT, NEXT = (680, 632), (668, 675), (795, 674)  # of its first question
THEMES = '100x20+610+720'  # once they are listed
DONT_SAVE, CANCEL = (545, 498), (695, 498)

scene = b''


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
    click_at(1000, 790)
    key('Escape')


def change_a_setting():
    unlisted = pixels(THEMES)
    repeat(lambda: click_at(*THEME), lambda: pixels(THEMES) != unlisted)
    repeat(lambda: click_at(*LIGHT), is_light)
    repeat(lambda: click_at(*NEXT), (pathlib.Path.home() / FILE).exists)
    dismiss_greeting()


def work():
    """A second cube, in a file that has one."""
    global scene
    repeat(lambda: key('ctrl+s'), lambda: search('^Blender File View'))
    repeat(lambda: key('Return'), (pathlib.Path.home() / 'untitled.blend').exists)
    focus('^Blender')
    click_at(1000, 790)
    repeat(lambda: key('shift+d', 'Return'), lambda: search('^Blender\\*'))
    time.sleep(2)
    scene = pixels(MIDDLE)


def has_unsaved_work():
    return window('^Blender\\*')


def asks_about_work():
    focus('^Blender\\*')
    return wait_until(lambda: pixels(MIDDLE) != scene)


def keep_on_working():
    click_at(*CANCEL)
    assert wait_until(lambda: pixels(MIDDLE) == scene)


def discard_work():
    click_at(*DONT_SAVE)


def quit():
    key('ctrl+q')

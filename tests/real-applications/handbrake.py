"""HandBrake, as its user works it. Its work is a film that it encodes."""
import pathlib
import subprocess

from desktop import is_checked, key, menu, press, shows, wait_until, window, write

NAME = 'HandBrake'
PACKAGES = 'handbrake ffmpeg'
ENTRY = 'fr.handbrake.ghb'
PROCESS = 'ghb'
KEY = 'handbrakePrefs'
FILE = '.config/ghb/preferences.json'

APPLICATION = 'fr.handbrake.ghb'
CLEAR_QUEUE = (APPLICATION, 'check box', 'Clear completed queue items after an encode completes')


def has_started():
    return shows(APPLICATION, 'push button', 'Open Source')


def clears_queue():
    menu(APPLICATION, 'Preferences')
    ticked = is_checked(*CLEAR_QUEUE)
    press(APPLICATION, 'push button', 'Close')
    return ticked


def has_defaults():
    return not clears_queue()


def has_users_settings():
    return clears_queue()


def change_a_setting():
    menu(APPLICATION, 'Preferences')
    press(*CLEAR_QUEUE)
    press(APPLICATION, 'push button', 'Close')
    wait_until(lambda: '"RemoveFinishedJobs": true' in (pathlib.Path.home() / FILE).read_text())


def make_film():
    """Long enough to be under way for some minutes."""
    scene, film = pathlib.Path.home() / 'scene.mkv', pathlib.Path.home() / 'film.mkv'
    make = ['ffmpeg', '-loglevel', 'error', '-y']
    subprocess.run([*make, '-f', 'lavfi', '-i', 'testsrc=size=1280x720:rate=25', '-t', '4', '-pix_fmt', 'yuv420p', scene],
                   check=True)
    subprocess.run([*make, '-stream_loop', '200', '-i', scene, '-c', 'copy', film], check=True)
    return str(film)


def work():
    film = make_film()
    press(APPLICATION, 'push button', 'Open Source')
    assert window('^Open Source')
    write(film)
    key('Return')
    assert shows(APPLICATION, 'label', 'film')
    press(APPLICATION, 'push button', 'Start')


def has_unsaved_work():
    return shows(APPLICATION, 'push button', 'Stop')


def asks_about_work():
    return shows(APPLICATION, 'label',
                 "Closing HandBrake will terminate encoding.\nYour movie will be lost if you don't continue encoding.")


def keep_on_working():
    press(APPLICATION, 'push button', 'Continue Encoding')


def discard_work():
    press(APPLICATION, 'push button', 'Cancel Current and Stop')


def quit():
    menu(APPLICATION, 'Quit')

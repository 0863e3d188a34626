"""What a person goes through with an editor that misbehaves: loop.py EDITOR. Prints "yes WHAT" or "no WHAT" for each
thing that it looks at."""
import importlib
import os
import pathlib
import subprocess
import sys

import desktop
from desktop import focus, key, look, press, shows, wait_until

editor = importlib.import_module(sys.argv[1])
home = pathlib.Path.home()
preferences = home / editor.FILE
backup = home / 'Library/Application Support/Quarrywell/Vantory/Backups/Mine.vnt'


def say(holds, what):
    print('yes' if holds else 'no', what, flush=True)
    if not holds:
        desktop.picture(str(home / 'picture.png'))


def vantory(*arguments):
    return subprocess.run(['vantory', *arguments], capture_output=True, text=True)


def runs():
    return subprocess.run(['pgrep', '-u', str(os.getuid()), '-x', editor.PROCESS],
                          stdout=subprocess.DEVNULL).returncode == 0


def ends():
    return wait_until(lambda: not runs())


def ask_for_start():
    """As a desktop starts it from its menu."""
    desktop.start('gtk-launch', editor.ENTRY)


def launch():
    ask_for_start()
    return editor.has_started()


def set_up_and_back_up():
    say(launch() and editor.has_defaults(), 'its first start shows defaults')
    editor.change_a_setting()
    editor.quit()
    say(ends() and preferences.exists(), 'quit, it has written its preferences')
    made = vantory('-backup', 'Mine', editor.KEY)
    say(made.returncode == 0 and vantory('--verify', 'Mine').returncode == 0, 'they are backed up, and the backup is sound')


def spoil():
    """Cut in half, where it has lines at the end of one."""
    content = preferences.read_bytes()
    half = content[:len(content) // 2]
    preferences.write_bytes(half[:half.rfind(b'\n') + 1] or half)


def trash_by_command():
    """The cure where it does not even start."""
    ask_for_start()
    say(editor.refuses_to_start() and ends(), 'with half of them it does not start, and says so')
    trashed = vantory('-trash', editor.KEY)
    say(trashed.returncode == 0 and not preferences.exists() and launch() and editor.has_defaults(),
        'a command trashes them, and it starts with defaults')
    editor.quit()
    say(ends() and preferences.exists(), '... and quits')


def do(what):
    """For what not every editor has."""
    if hasattr(editor, what):
        getattr(editor, what)()


def restore_while_it_runs():
    say(launch(), 'it starts with what there is of them')
    do('dismiss_greeting')
    editor.work()
    say(editor.has_unsaved_work(), '... and its user has work that is not saved')
    spoiled = preferences.read_bytes()
    restored = vantory('-restore', str(backup))
    say(f'{editor.NAME} is running and was skipped.' in restored.stderr and preferences.read_bytes() == spoiled,
        'while it runs a command restores nothing, and says so')


def trash_in_the_window():
    window = desktop.start('vantory-window')
    tick_and_trash()
    press('vantory', 'push button', 'Close and Relaunch')
    answer_about_unsaved_work()
    say(shows('vantory', 'dialog', 'Preferences successfully trashed', seconds=90),
        'closed, its preferences go to the Trash')
    say(editor.has_started() and editor.has_defaults(), '... and it starts again, with defaults')
    press('vantory', 'push button', 'OK')
    do('dismiss_greeting')
    editor.quit()
    say(ends(), '... and quits')
    window.terminate()


def tick_and_trash():
    press('vantory', 'check box', 'All')
    focus('^Vantory$')
    key('Home')
    while not look('vantory', 'table cell', editor.NAME, 'selected'):
        key('Down')
    key('space')
    press('vantory', 'push button', 'Move Preferences to Trash')


def answer_about_unsaved_work():
    """First that it is to be kept, then that it is not."""
    say(editor.asks_about_work(), 'asked to close, it asks about that work')
    editor.keep_on_working()
    say(shows('vantory', 'dialog', 'Nothing was trashed', seconds=90) and runs() and preferences.exists(),
        'kept open, it keeps its preferences')
    say(editor.has_unsaved_work(), '... and the work')
    press('vantory', 'push button', 'Try Again')
    press('vantory', 'push button', 'Close and Relaunch')
    editor.asks_about_work()
    editor.discard_work()


def restore():
    restored = vantory('-restore', str(backup))
    say(restored.returncode == 0 and restored.stderr == '', 'quit, it gets its preferences back')
    say(preferences.read_bytes() == (backup / 'Users/user' / editor.FILE).read_bytes(), '... the same bytes')
    say(launch() and editor.has_users_settings(), '... and starts with what its user had set')
    editor.quit()
    say(ends() and not list(home.rglob('.vantory-*')), '... and nothing half-made is left')


os.chdir(home)
desktop.start_display()
do('start_sound')
try:
    set_up_and_back_up()
    spoil()
    if hasattr(editor, 'refuses_to_start'):
        trash_by_command()
    restore_while_it_runs()
    trash_in_the_window()
    restore()
except Exception:
    desktop.picture(str(home / 'picture.png'))
    raise

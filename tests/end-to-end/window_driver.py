#!/usr/bin/python3
"""Works the program's window over the accessibility bus, as a screen reader does, and by keys. Prints "yes WHAT" or
"no WHAT" for each thing that it looks at."""
import subprocess
import sys
import time

import pyatspi


def say(holds, what):
    print("yes" if holds else "no", what, flush=True)


def children(thing):
    try:
        return [child for child in (thing.getChildAtIndex(i) for i in range(thing.childCount)) if child is not None]
    except Exception:
        return []


def below(thing):
    yield thing
    for child in children(thing):
        yield from below(child)


def everything():
    for application in children(pyatspi.Registry.getDesktop(0)):
        if application.name == "vantory":
            yield from below(application)


def all_of(role=None, name=None):
    for thing in everything():
        try:
            if role in (None, thing.getRoleName()) and name in (None, thing.name):
                if thing.getState().contains(pyatspi.STATE_SHOWING):
                    yield thing
        except Exception:
            continue


def wait_for(role=None, name=None, seconds=15):
    end = time.time() + seconds
    while time.time() < end:
        for thing in all_of(role, name):
            return thing
        time.sleep(0.1)
    print("no", "waited in vain for", role, repr(name))
    for thing in everything():
        print("   ", thing.getRoleName(), repr(thing.name), file=sys.stderr)
    sys.exit(1)


def has(thing, state):
    return thing.getState().contains(state)


def do(thing, name="Press"):
    actions = thing.queryAction()
    names = [actions.getName(i) for i in range(actions.nActions)]
    actions.doAction(names.index(name) if name in names else 0)
    time.sleep(0.4)


def key(*keys):
    subprocess.run(["xdotool", "key", *keys], check=True)
    time.sleep(0.4)


def focus():
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "."], capture_output=True, text=True)
    subprocess.run(["xdotool", "windowfocus", "--sync", found.stdout.split()[-1]], check=False)
    time.sleep(0.3)


CONTROLS = ("push button", "check box", "text", "tree", "list", "spin button", "combo box", "table", "tree table")


def say_names(place):
    nameless = [t.getRoleName() for t in all_of() if t.getRoleName() in CONTROLS and not t.name]
    say(not nameless, f"every control of {place} has a name {nameless or ''}")


notice = wait_for(name="Vantory ended unexpectedly the last time")
say("/Library/Logs/CrashReporter/Vantory_" in notice.description, "a crash is told of at the next start")
say(any(all_of(role="tree")), "... over the window, which is there first")
focus()
key("Return")
wait_for(name="Motion")
focus()

panes = ("Trash", "Backup", "Lock", "Restore")
on = [name for name in panes if any(has(button, pyatspi.STATE_CHECKED) for button in all_of(name=name))]
say(on == ["Trash"], "of the four toolbar buttons that of the Trash pane is on")

tree = wait_for(role="tree", name="Applications whose preferences go to the Trash")
say(has(tree, pyatspi.STATE_FOCUSED) or has(tree, pyatspi.STATE_FOCUSABLE), "the outline can be reached by keys")
header = wait_for(role="check box", name="All")
say(has(header, pyatspi.STATE_CHECKED), "the header's check box tells that all are ticked")
do(header, "Toggle")
say(not has(header, pyatspi.STATE_CHECKED), "... and that none is, after a click")
say(any(all_of(name="none")), "the panes tell of what there is nothing")
button = wait_for(role="push button", name="Move Preferences to Trash")
say(not has(button, pyatspi.STATE_ENABLED), "with nothing ticked there is nothing to trash")

key("Home")
subprocess.run(["xdotool", "type", "Motion"], check=True)
time.sleep(0.3)
key("space")
motion = wait_for(name="Motion")
say(has(motion, pyatspi.STATE_CHECKED), "typing a name and the space bar ticks its row")
say(has(header, pyatspi.STATE_INDETERMINATE), "the header's check box tells that some are ticked")
say(has(button, pyatspi.STATE_ENABLED), "now there is something to trash")
do(button)
alert = wait_for(name="Preferences successfully trashed")
say("Please empty your Trash." in alert.description, "the alert is read out whole")
focus()
key("Return")

focus()
key("ctrl+2")
wait_for(role="tree", name="Applications and items to back up")
key("ctrl+a")
key("ctrl+b")
wait_for(role="push button", name="Cancel")
say_names("the backup dialog")
focus()
subprocess.run(["xdotool", "type", "Typed/name"], check=True)
said = [thing.name for thing in all_of(role="label")]
say(any(text.startswith("The backup will hold 2 items of 1 application, ") for text in said),
    "the dialog says what the backup will hold")
say('"Typed/name" is kept as "Typedname".' in said, "... and what becomes of the name")
key("ctrl+a")
subprocess.run(["xdotool", "type", "Typed name"], check=True)
key("Return")
wait_for(role="tree", name="Backups")
wait_for(name="Typed name")
say(True, "a backup made by keys alone is listed")
focus()
key("ctrl+3")
wait_for(role="tree", name="Applications and items that can be locked")

say_names("the Lock pane")
key("ctrl+4")
wait_for(role="tree", name="Backups")
say_names("the Restore pane")
focus()
subprocess.run(["xdotool", "type", "Typed name"], check=True)
key("ctrl+k")
wait_for(role="tree", name="Differences")
say_names("the comparison")
focus()
key("Escape")
focus()
key("ctrl+comma")
wait_for(name="Backup folder")
for number, pane in enumerate(("General", "Autosave", "Project Handling", "Hotkeys"), 1):
    focus()
    key(f"ctrl+{number}")
    say_names(f"the settings, {pane}")
key("Escape")
focus()
key("ctrl+1")
key("ctrl+q")

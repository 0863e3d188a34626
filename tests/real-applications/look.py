"""One look at an application as assistive technologies see it, by a process that remembers nothing of earlier ones:
look.py APPLICATION ROLE NAME [press|checked|selected|where]. Ends with 0 when it is there, was pressed,
or is so; tells where its middle lies."""
import sys

import pyatspi
from gi.repository import GLib


def is_shown(thing):
    return thing.getState().contains(pyatspi.STATE_SHOWING)


def below(thing, only_shown):
    yield thing
    try:
        # A table may claim more cells than anybody would read.
        for i in range(min(thing.childCount, 300)):
            child = thing.getChildAtIndex(i)
            if child is not None and (not only_shown or is_shown(child)):
                yield from below(child, only_shown)
    except Exception:  # what has just closed cannot be asked
        return


# The items of a menu are there before it is opened, the rows of a list before they are scrolled to.
def find(application, role, name):
    for top in pyatspi.Registry.getDesktop(0):
        if top is None or top.name != application:
            continue
        for thing in below(top, only_shown=not role.endswith(('menu item', 'table cell'))):
            try:
                if thing.getRoleName() == role and thing.name.strip() == name:
                    return thing
            except Exception:
                continue
    return None


found = find(*sys.argv[1:4])
what = sys.argv[4] if len(sys.argv) > 4 else ''
if found is None:
    sys.exit(1)
if what == 'press':
    try:
        found.queryAction().doAction(0)
    except GLib.GError as error:  # a dialog that it opens may keep the answer
        print(error, file=sys.stderr)
if what == 'where':
    place = found.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    print(place.x + place.width // 2, place.y + place.height // 2)
states = {'checked': pyatspi.STATE_CHECKED, 'selected': pyatspi.STATE_SELECTED}
sys.exit(what in states and not found.getState().contains(states[what]))

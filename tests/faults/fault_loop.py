#!/usr/bin/env python3
"""Kills the program, or fails one of its system calls, at every step of a task, and looks at what is left.

usage: fault_loop.py PROGRAM DRIVER [--every N] [TASK...]

For each file-changing system call of the task, one run is killed on entry of that call and one run for each error gets
that error from it. After each run every preference file must be whole, in its place or in the Trash, or still be in
the backup it comes from; after the same task is then run once more without a fault it must have succeeded and have
left no unfinished work. A task that was killed is also taken back, after which every preference file must be what
it was before; that is killed as well. With --every N only each N-th call is tried. DRIVER is services_driver, for what only the window
does. The task "lock" needs root, the user vanna with a home that can be made, and the lock helper with its capability
beside the program."""
import argparse
import array
import collections
import fcntl
import os
import pathlib
import plistlib
import pwd
import re
import shutil
import subprocess
import sys
import tempfile

CALLS = ('openat,write,pwrite64,ftruncate,copy_file_range,fsync,fdatasync,syncfs,close,renameat,renameat2,linkat,symlinkat,'
         'unlinkat,mkdirat,mkdir,fchmod,fchown,utimensat,fsetxattr,setxattr,ioctl,flock')
FAULTS = ['signal=SIGKILL', 'error=EIO', 'error=ENOSPC', 'error=EACCES', 'error=EINTR']
ON_DARWIN = os.environ.get('VANTORY_SYSTEM') == 'macos'  # where an owner locks without a helper
TRASHES = ('.local/share/Trash/files', '.Trash')  # of each system
LIBRARY = 'Library/Application Support/Quarrywell/Vantory/Backups'
AUTOMATIC = [f'Autosaves/Auto Backup 2026-01-0{day}_00_00_00.vnt' for day in (1, 2, 3)]
PREFERENCES = 'Library/Preferences'
COMMAND_SETS = 'Library/Application Support/Motion/Command Sets'
MOTION = f'{PREFERENCES}/com.apple.motion.plist'
UNDONE = ('backup', 'replace', 'trash', 'restore', 'restore-keys', 'update')
FILES = {
    f'{PREFERENCES}/com.apple.FinalCutPro.plist': b'old plist ' * 500,
    f'{PREFERENCES}/Final Cut Pro User Data/Final Cut Pro 7.0 Prefs.fcset': b'old prefs ' * 900,
    f'{PREFERENCES}/Final Cut Pro User Data/Button Bars/Default/a.fcbar': b'bar a ' * 300,
    f'{PREFERENCES}/Final Cut Pro User Data/Button Bars/b.fcbar': b'bar b ' * 700,
    MOTION: plistlib.dumps({'Look': 'old look', 'Others': ['motion'] * 50}),
    # An item of so many files is copied by two threads, and belongs to two applications.
    **{f'{COMMAND_SETS}/set{i}.commandset': b'old set ' * 50 for i in range(8)},
}


def put(home, files):
    for name, content in files.items():
        path = pathlib.Path(home, name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)


def all_files(folder):
    for above, _, names in os.walk(folder):
        for name in names:
            yield os.path.join(above, name)


def read(path):
    return pathlib.Path(path).read_bytes()


def is_locked(path):
    if ON_DARWIN:
        return 'user.darwin.flags' in os.listxattr(path)
    flags = array.array('L', [0])
    with open(path, 'rb') as file:
        fcntl.ioctl(file, 0x80086601, flags)  # FS_IOC_GETFLAGS
    return flags[0] & 0x10 != 0


class Bench:
    """One task on a scratch home, and what must hold whenever it stops."""

    def __init__(self, options, task, scratch, home, other):
        program, driver = os.path.abspath(options.program), os.path.abspath(options.driver)
        self.task, self.home, self.other = task, home, other
        self.automatic = AUTOMATIC if task == 'prune' else AUTOMATIC[-1:]
        self.library = os.path.join(home, LIBRARY)
        self.backup = os.path.join(self.library, 'Old.vnt')
        self.command = {
            'backup': [program, '-backup', 'New'],
            'replace': [program, '-backup', 'Old'],
            'trash': [program, '-trash', '-allfiles'],
            'restore': [program, '-restore', self.backup],
            'restore-keys': [program, '--restore-keys', 'Old', 'motionPrefs', 'Look'],
            'update': [driver, 'update', 'Old'],
            'move': [driver, 'move-library', self.library, other],
            'prune': [driver, 'prune'],
            'lock': [program, '-lock'],
            'undo-trash': [program, '--undo'],
            'undo-restore': [program, '--undo'],
            'undo-update': [program, '--undo'],
        }[task]
        # What an undo takes back is done anew each time: a copied home has other files.
        self.undoing = [program, '--undo']
        self.first = {
            'undo-trash': [program, '-trash', '-allfiles'],
            'undo-restore': [program, '-restore', self.backup],
            'undo-update': [program, '--update', 'Old'],
        }.get(task)
        user = pwd.getpwnam('vanna').pw_uid if needs_helper(task) else os.getuid()
        self.user = ['setpriv', f'--reuid={user}', f'--regid={user}', '--clear-groups'] if needs_helper(task) else []
        self.new = {name: content.replace(b'old', b'new').replace(b'bar', b'BAR') for name, content in FILES.items()}
        self.template = os.path.join(scratch, 'template')
        # A home with a backup of the files as they were, automatic ones, and newer files in place.
        put(self.home, FILES)
        put(self.home, {f'{PREFERENCES}/com.quarrywell.Vantory.plist': plistlib.dumps({'maxAutoBackups': 1})})
        subprocess.run(['chown', '-R', str(user), self.home], check=True)
        assert self.run([program, '-backup', 'Old']) == 0 and os.path.isdir(self.backup)
        for day, name in enumerate(self.automatic):
            copy = os.path.join(self.library, name)
            os.makedirs(os.path.dirname(copy), exist_ok=True)
            subprocess.run(['cp', '-a', self.backup, copy], check=True)
            os.utime(copy, (day, day))
        put(self.home, self.new)
        subprocess.run(['chown', '-R', str(user), self.home], check=True)
        subprocess.run(['cp', '-a', self.home, self.template], check=True)

    def clear(self):
        if needs_helper(self.task):
            subprocess.run(['chattr', '-R', '-f', '-i', self.home], check=True)
        for folder in (self.home, self.other):
            shutil.rmtree(folder, ignore_errors=True)

    def reset(self):
        self.clear()
        os.mkdir(self.other)
        subprocess.run(['cp', '-a', self.template, self.home], check=True)
        if self.first:
            assert self.run(self.first) == 0

    def run(self, command=None, prefix=()):
        # The leak check of a sanitized build cannot work while strace holds the process.
        environment = {'HOME': self.home, 'PATH': '/usr/bin:/bin', 'LANG': 'C', 'ASAN_OPTIONS': 'detect_leaks=0'}
        done = subprocess.run([*prefix, *self.user, *(command or self.command)], env=environment, timeout=60,
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return done.returncode

    def try_fault(self, call, number, fault):
        """What does not hold after that fault, or after the same task once more."""
        self.reset()
        first = self.run(prefix=['strace', '-f', '-qq', '-o', '/dev/null', '-e', 'trace=' + CALLS,
                         '-e', f'inject={call}:{fault}:when={number}'])
        wrong = self.wrong(finished=False)
        if not wrong and self.task in UNDONE and fault == 'signal=SIGKILL':
            # Where the receipt was not begun there was no change either.
            self.run(self.undoing)
            wrong = self.wrong(finished=False) or self.wrong_undone()
            self.reset()
            self.run(prefix=['strace', '-f', '-qq', '-o', '/dev/null', '-e', 'trace=' + CALLS,
                             '-e', f'inject={call}:{fault}:when={number}'])
        again = 0 if wrong else self.run()
        # Of an undo that was killed when it was through nothing is left to take back, nor are keys that are back to put.
        if (self.first or self.task == 'restore-keys') and again == 1:
            again = 0
        # Of a backup that was copied but not yet removed when the process was killed there are two.
        if self.task == 'move' and first != 0:
            again = 0
        return wrong or self.wrong(finished=True) or (again != 0 and f'the next run ended with {again}')

    def wrong(self, finished):
        """What does not hold; none when all is well."""
        trash = collections.defaultdict(list)
        for path in self.trashed_files():
            trash[os.path.basename(path).split('.')[0]].append(read(path))
        for name, content in self.new.items():
            place = os.path.join(self.home, name)
            here = read(place) if os.path.exists(place) else None
            if here is not None and here not in (content, FILES[name]):
                return f'{name} is neither the old nor the new file'
            if here != content and content not in trash[os.path.basename(name).split('.')[0]]:
                return f'{name} is lost'
            if finished and self.task == 'restore' and here != FILES[name]:
                return f'{name} was not restored'
            # One that a killed task left in the Trash has no keys to put back.
            if finished and self.task == 'restore-keys' and name == MOTION and here not in (None, FILES[name]):
                return f'the key of {name} was not restored'
            if finished and self.first and here != content:
                return f'{name} did not come back'
            # The item of the button bars is the folder, which is locked without what it holds.
            if finished and self.task == 'lock' and 'Button Bars' not in name and not is_locked(os.path.join(self.home, name)):
                return f'{name} was not locked'
        return self.wrong_library(finished) or (finished and self.leftovers())

    def wrong_undone(self):
        for name, content in self.new.items():
            place = os.path.join(self.home, name)
            if not os.path.exists(place) or read(place) != content:
                return f'{name} did not come back'
        return None

    def wrong_library(self, finished):
        """Whatever bears a final name in a backup is whole, and what the backups held is in its place or in the Trash."""
        whole = collections.defaultdict(list)
        for backup in self.backups():
            copies = {name: os.path.join(backup, 'Users/user', name) for name in FILES}
            found = {name: read(copy) for name, copy in copies.items() if os.path.exists(copy)}
            for name, content in found.items():
                if content not in (FILES[name], self.new[name]):
                    return f'{copies[name]} is half a file'
            settings = os.path.join(backup, 'Settings.plist')
            if not os.path.exists(settings):
                continue
            if not read(settings).rstrip().endswith(b'</plist>'):
                return f'{settings} is half a file'
            if self.task in ('move', 'prune') and len(found) < len(FILES):
                return f'{backup} passes for complete'
            whole[found == FILES and 'old', found == self.new and 'new'].append(os.path.relpath(backup, self.home))
        old, new = whole['old', False], whole[False, 'new']
        if self.task in ('update', 'undo-update'):
            kept = collections.defaultdict(set)
            for path in [*all_files(self.library), *self.trashed_files()]:
                if os.path.relpath(path, self.library).split('/')[0] != 'Autosaves':
                    kept[os.path.basename(path)].add(read(path))
            if any(content not in kept[os.path.basename(name)] for name, content in FILES.items()):
                return 'a replaced copy is lost'
        elif not any('Old' in os.path.basename(backup) for backup in old):
            return 'the old backup is lost'
        if os.path.basename(AUTOMATIC[-1]) not in map(os.path.basename, old):
            return 'an automatic backup is lost'
        made = {'backup': 'New', 'replace': 'Old', 'update': 'Old'}.get(self.task)
        if finished and made and f'{LIBRARY}/{made}.vnt' not in new:
            return 'the new backup is not complete'
        there = {os.path.relpath(backup, self.other) for backup in self.backups(self.other)}
        if finished and self.task == 'move' and there != {'Old.vnt', *self.automatic}:
            return f'only {there} were moved'
        if finished and self.task == 'undo-update' and f'{LIBRARY}/Old.vnt' not in old:
            return 'the updated backup did not come back'
        if finished and self.task == 'prune' and os.listdir(os.path.join(self.library, 'Autosaves')) != [
                os.path.basename(AUTOMATIC[-1])]:
            return 'older backups were left'
        return None

    def trashed_files(self):
        for trash in TRASHES:
            yield from all_files(os.path.join(self.home, trash))

    def backups(self, *folders):
        for folder in folders or (self.library, self.other, *(os.path.join(self.home, trash) for trash in TRASHES)):
            for place in (folder, os.path.join(folder, 'Autosaves')):
                if os.path.isdir(place):
                    yield from (os.path.join(place, name) for name in os.listdir(place) if '.vnt' in name)

    def leftovers(self):
        # A half-made backup that the next run put into the Trash may hold a half-made folder. What a killed move had
        # copied and not yet removed is hidden in the library that is no more.
        # The same goes for a folder of a backup that an undo was killed in exchanging.
        aside = [] if self.task == 'move' else [f'/{trash}/' for trash in TRASHES]
        if self.task in ('move', 'undo-update'):
            aside.append(self.library + '/')
        left = [path for place in (self.home, self.other) for path in all_files(place)
                if '/.vantory-' in path and not any(place in path for place in aside)]
        return f'left behind: {left}' if left else None


def needs_helper(task):
    return task == 'lock' and not ON_DARWIN


def points_of(bench, log):
    """The system calls of a run that change files of the home: name, number of that call, and the call itself."""
    bench.reset()
    bench.run(prefix=['strace', '-f', '-qq', '-y', '-e', 'signal=none', '-o', log, '-e', 'trace=' + CALLS])
    counts, points = collections.Counter(), []
    with open(log, errors='replace') as lines:
        for line in lines:
            match = re.match(r'(\d+)\s+(\w+)\((.*)', line)
            if not match:
                continue
            process, call, rest = match.groups()
            counts[process, call] += 1
            if (bench.home in rest or bench.other in rest) and 'ENOENT' not in rest:
                points.append((call, counts[process, call], line.strip()[:140]))
    return points


def missing_for(task):
    """What the machine lacks; none when the task can be tried."""
    if task == 'move' and os.stat('/tmp').st_dev == os.stat('/dev/shm').st_dev:
        return '/dev/shm is no file system of its own'
    if needs_helper(task) and os.getuid() != 0:
        return 'needs root'
    return None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('program')
    parser.add_argument('driver')
    parser.add_argument('task', nargs='*',
                        default=['backup', 'replace', 'trash', 'restore', 'restore-keys', 'update', 'move', 'prune',
                                 'undo-trash', 'undo-restore', 'undo-update'])
    parser.add_argument('--every', type=int, default=1)
    options = parser.parse_intermixed_args()
    passed = failed = 0
    for task in options.task:
        if missing_for(task):
            print(f'{task}: skipped: {missing_for(task)}')
            continue
        # A home lies two levels deep; that of the lock helper's user is where the password database says.
        with tempfile.TemporaryDirectory(prefix='vfault') as scratch, \
                tempfile.TemporaryDirectory(prefix='vhome', dir='/tmp') as home, \
                tempfile.TemporaryDirectory(prefix='vother', dir='/dev/shm') as other:
            bench = Bench(options, task, scratch, pwd.getpwnam('vanna').pw_dir if needs_helper(task) else home, other)
            log = os.path.join(scratch, 'log')
            points = points_of(bench, log)
            print(f'{task}: {len(points)} calls', flush=True)
            if not points:
                failed += 1
                print(f'BAD {task}: nothing was done')
            for call, number, line in points[::options.every]:
                for fault in FAULTS[:1] if call == 'close' or task == 'undo-update' else FAULTS:
                    wrong = bench.try_fault(call, number, fault)
                    passed, failed = (passed, failed + 1) if wrong else (passed + 1, failed)
                    if wrong:
                        print(f'BAD {task} {fault} at {call} #{number}: {wrong}\n    {line}', flush=True)
            bench.reset()  # so that nothing is locked any more
    print(f'{passed} passed, {failed} failed')
    return failed != 0


if __name__ == '__main__':
    sys.exit(main())

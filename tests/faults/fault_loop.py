#!/usr/bin/env python3
"""Kills the program, or fails one of its system calls, at every step of a task, and looks at what is left.

usage: fault_loop.py PROGRAM [--every N]

For each file-changing system call of the task, one run is killed on entry of that call and one run for each error gets
that error from it. After each run every preference file must be whole, in its place or in the Trash, or still be in
the backup it comes from; after the same task is then run once more without a fault it must have succeeded and have
left no unfinished work. With --every N only each N-th call is tried."""
import argparse
import collections
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

CALLS = ('openat,write,ftruncate,copy_file_range,fsync,syncfs,close,renameat,renameat2,linkat,symlinkat,'
         'unlinkat,mkdirat,mkdir,fchmod,fchown,utimensat,fsetxattr,ioctl,flock')
TASKS = {'backup': ['-backup', 'New'], 'replace': ['-backup', 'Old'], 'trash': ['-trash', '-allfiles'], 'restore': None}
FAULTS = ['signal=SIGKILL', 'error=EIO', 'error=ENOSPC', 'error=EACCES', 'error=EINTR']
LIBRARY = 'Library/Application Support/Quarrywell/Vantory/Backups'
PREFERENCES = 'Library/Preferences'
COMMAND_SETS = 'Library/Application Support/Motion/Command Sets'
FILES = {
    f'{PREFERENCES}/com.apple.FinalCutPro.plist': b'old plist ' * 500,
    f'{PREFERENCES}/Final Cut Pro User Data/Final Cut Pro 7.0 Prefs.fcset': b'old prefs ' * 900,
    f'{PREFERENCES}/Final Cut Pro User Data/Button Bars/Default/a.fcbar': b'bar a ' * 300,
    f'{PREFERENCES}/Final Cut Pro User Data/Button Bars/b.fcbar': b'bar b ' * 700,
    f'{PREFERENCES}/com.apple.motion.plist': b'motion ' * 100,
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


class Bench:
    """One task on a scratch home, and what must hold whenever it stops."""

    def __init__(self, program, task, scratch, home):
        self.program, self.task, self.home = program, task, home
        self.backup = os.path.join(self.home, LIBRARY, 'Old.vnt')
        self.arguments = TASKS[task] or ['-restore', self.backup]
        self.new = {name: content.replace(b'old', b'new').replace(b'bar', b'BAR') for name, content in FILES.items()}
        self.template = os.path.join(scratch, 'template')
        # A home with a backup of the files as they were, and newer files in place.
        put(self.home, FILES)
        assert self.run(['-backup', 'Old']) == 0 and os.path.isdir(self.backup)
        put(self.home, self.new)
        subprocess.run(['cp', '-a', self.home, self.template], check=True)

    def reset(self):
        shutil.rmtree(self.home, ignore_errors=True)
        subprocess.run(['cp', '-a', self.template, self.home], check=True)

    def run(self, arguments=None, prefix=()):
        # The leak check of a sanitized build cannot work while strace holds the process.
        environment = {'HOME': self.home, 'PATH': '/usr/bin:/bin', 'LANG': 'C', 'ASAN_OPTIONS': 'detect_leaks=0'}
        done = subprocess.run([*prefix, self.program, *(arguments or self.arguments)], env=environment, timeout=60,
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        return done.returncode

    def try_fault(self, call, number, fault):
        """What does not hold after that fault, or after the same task once more."""
        self.reset()
        self.run(prefix=['strace', '-f', '-qq', '-o', '/dev/null', '-e', 'trace=' + CALLS,
                         '-e', f'inject={call}:{fault}:when={number}'])
        wrong = self.wrong(finished=False)
        again = 0 if wrong else self.run()
        return wrong or self.wrong(finished=True) or (again != 0 and f'the next run ended with {again}')

    def wrong(self, finished):
        """What does not hold; none when all is well."""
        trash = collections.defaultdict(list)
        for path in all_files(os.path.join(self.home, '.local/share/Trash/files')):
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
        return self.wrong_library(finished) or (finished and self.leftovers())

    def wrong_library(self, finished):
        """Whatever bears a final name in a backup is whole, and the old backup is in its place or in the Trash."""
        kept = False
        for backup in self.backups():
            for name, content in FILES.items():
                copy = os.path.join(backup, 'Users/user', name)
                if os.path.exists(copy) and read(copy) not in (content, self.new[name]):
                    return f'{copy} is half a file'
            settings = os.path.join(backup, 'Settings.plist')
            complete = all(os.path.exists(os.path.join(backup, 'Users/user', name)) for name in FILES)
            if os.path.exists(settings):
                if not read(settings).rstrip().endswith(b'</plist>'):
                    return f'{settings} is half a file'
                kept = kept or (complete and all(
                    read(os.path.join(backup, 'Users/user', name)) == content for name, content in FILES.items()))
        if not kept:
            return 'the old backup is lost'
        if finished and self.task in ('backup', 'replace'):
            made = os.path.join(self.home, LIBRARY, self.arguments[1] + '.vnt')
            if any(read(os.path.join(made, 'Users/user', name)) != content for name, content in self.new.items()):
                return 'the new backup is not complete'
        return None

    def backups(self):
        for folder in (os.path.join(self.home, LIBRARY), os.path.join(self.home, '.local/share/Trash/files')):
            if os.path.isdir(folder):
                yield from (os.path.join(folder, name) for name in os.listdir(folder) if '.vnt' in name)

    def leftovers(self):
        # A half-made backup that the next run put into the Trash may hold a half-made folder.
        left = [path for path in all_files(self.home) if '/.vantory-' in path and '/Trash/files/' not in path]
        return f'left behind: {left}' if left else None


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
            if bench.home in rest and 'ENOENT' not in rest:
                points.append((call, counts[process, call], line.strip()[:140]))
    return points


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('program')
    parser.add_argument('--every', type=int, default=1)
    options = parser.parse_args()
    passed = failed = 0
    for task in TASKS:
        # A home lies two levels deep.
        with tempfile.TemporaryDirectory(prefix='vfault') as scratch, \
                tempfile.TemporaryDirectory(prefix='vhome', dir='/tmp') as home:
            bench = Bench(os.path.abspath(options.program), task, scratch, home)
            log = os.path.join(scratch, 'log')
            points = points_of(bench, log)
            print(f'{task}: {len(points)} calls', flush=True)
            for call, number, line in points[::options.every]:
                for fault in FAULTS[:1] if call == 'close' else FAULTS:
                    wrong = bench.try_fault(call, number, fault)
                    passed, failed = (passed, failed + 1) if wrong else (passed + 1, failed)
                    if wrong:
                        print(f'BAD {task} {fault} at {call} #{number}: {wrong}\n    {line}', flush=True)
    print(f'{passed} passed, {failed} failed')
    return failed != 0


if __name__ == '__main__':
    sys.exit(main())

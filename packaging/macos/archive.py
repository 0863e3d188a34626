#!/usr/bin/env python3
"""Looks through an archive for a Mac: archive.py ARCHIVE CONTENTS

Each line of CONTENTS is the mode of files that have to be there, and their path below the archive's one folder, in
which "*" stands for any text. Programs must be what universal.py says. Tells what is otherwise, and ends with 1 then.
"""
import fnmatch
import os
import struct
import sys
import tarfile

from universal import UNIVERSAL, faults_of_universal


def faults_of(archive, folder, wanted):
    found, programs = set(), 0
    for member in archive:
        if member.isdir():
            continue
        name = member.name.removeprefix(folder + "/")
        mode, pattern = next((line for line in wanted if fnmatch.fnmatchcase(name, line[1])), (None, None))
        found.add(pattern)
        content = archive.extractfile(member).read() if member.isreg() else b""
        if not pattern:
            yield f"{name} is not expected"
        elif not content:
            yield f"{name} is no file, or an empty one"
        elif f"{member.mode:04o}" != mode:
            yield f"{name} has the mode {member.mode:04o}"
        if content[:4] == struct.pack(">I", UNIVERSAL):
            programs += 1
            yield from faults_of_universal(name, content)
    yield from (f"{pattern} is missing" for _, pattern in wanted if pattern not in found)
    if programs == 0:
        yield "it holds no program for both processors"


def main(path, contents):
    with open(contents, encoding="utf-8") as lines:
        wanted = [line.split() for line in lines]
    with tarfile.open(path) as archive:
        faults = list(faults_of(archive, os.path.basename(path).removesuffix(".tar.gz"), wanted))
    print("\n".join(f"{path}: {fault}" for fault in faults) or f"{path}: all is there as it should be")
    return 1 if faults else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))

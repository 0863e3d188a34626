#!/usr/bin/env python3
"""Programs for macOS, without that system's tools.

universal.py join UNIVERSAL PROGRAM...   joins programs for one processor each
universal.py check UNIVERSAL             tells what would keep it from running on a Mac, and ends with 1 then
"""
import hashlib
import os
import struct
import sys

PROCESSORS = {0x01000007: "x86_64", 0x0100000C: "arm64"}
UNIVERSAL, PROGRAM = 0xCAFEBABE, 0xFEEDFACF
PAGE_BITS = 14  # each part begins on a page of the processor with the largest ones
LOAD_LIBRARY, SIGNATURE, BUILD_VERSION = 0xC, 0x1D, 0x32
SYSTEM_LIBRARY = "/usr/lib/libSystem.B.dylib"
MACOS, OLDEST = 1, 12 << 16
SIGNATURES, CODE_DIRECTORY = 0xFADE0CC0, 0xFADE0C02
AD_HOC, SHA256 = 0x2, 2


def read(path):
    with open(path, "rb") as file:
        return file.read()


def join(target, programs):
    parts = [read(program) for program in programs]
    table, body = struct.pack(">II", UNIVERSAL, len(parts)), b""
    first = position = 1 << PAGE_BITS
    for part in parts:
        body += b"\0" * (position - first - len(body)) + part
        processor, kind = struct.unpack_from("<II", part, 4)
        table += struct.pack(">IIIII", processor, kind, position, len(part), PAGE_BITS)
        position = -(-(first + len(body)) // first) * first
    with open(target, "wb") as file:
        file.write(table.ljust(first, b"\0") + body)
    os.chmod(target, 0o755)


def parts_of(universal):
    magic, count = struct.unpack_from(">II", universal)
    if magic != UNIVERSAL:
        sys.exit("no universal program")
    for i in range(count):
        processor, _, position, size, _ = struct.unpack_from(">IIIII", universal, 8 + 20 * i)
        yield PROCESSORS.get(processor, hex(processor)), universal[position:position + size]


def commands_of(program):
    magic, count = struct.unpack_from("<I12xI", program)
    if magic != PROGRAM:
        sys.exit("a part is no program of 64 bits")
    position = 32
    for _ in range(count):
        kind, size = struct.unpack_from("<II", program, position)
        yield kind, program[position:position + size]
        position += size


def faults_of_signature(program, command):
    """The kernel ends a program whose pages are not what its signature says."""
    position, _ = struct.unpack_from("<II", command, 8)
    magic, _, count = struct.unpack_from(">III", program, position)
    places = [struct.unpack_from(">II", program, position + 12 + 8 * i)[1] for i in range(count)]
    directories = [position + place for place in places
                   if struct.unpack_from(">I", program, position + place)[0] == CODE_DIRECTORY]
    if magic != SIGNATURES or not directories:
        yield "its signature cannot be read"
        return
    start = directories[0]
    (_, _, _, flags, hashes, _, _, pages, end, size, kind, _, bits) = struct.unpack_from(">IIIIIIIIIBBBB", program, start)
    if not flags & AD_HOC:
        yield "it is not signed ad hoc"
    if kind != SHA256 or end != position:
        yield "its signature covers something else"
        return
    page = 1 << bits
    if pages != -(-end // page):
        yield "its signature leaves pages out"
    for i in range(pages):
        wanted = program[start + hashes + i * size:][:size]
        if hashlib.sha256(program[i * page:min((i + 1) * page, end)]).digest() != wanted:
            yield f"page {i} is not the one that was signed"


def faults_of(processor, program):
    libraries, oldest, signed = [], None, False
    for kind, command in commands_of(program):
        if kind == LOAD_LIBRARY:
            libraries.append(command[struct.unpack_from("<I", command, 8)[0]:].rstrip(b"\0").decode())
        elif kind == BUILD_VERSION:
            oldest = struct.unpack_from("<II", command, 8)
        elif kind == SIGNATURE:
            signed = True
            yield from faults_of_signature(program, command)
    if libraries != [SYSTEM_LIBRARY]:
        yield f"it loads {', '.join(libraries) or 'nothing'}"
    if oldest != (MACOS, OLDEST):
        yield f"it is not for macOS 12 and later: {oldest}"
    if processor == "arm64" and not signed:
        yield "it is not signed"


def faults_of_universal(name, universal):
    parts = list(parts_of(universal))
    for processor, part in parts:
        for fault in faults_of(processor, part):
            yield f"{name} ({processor}): {fault}"
    if sorted(processor for processor, _ in parts) != ["arm64", "x86_64"]:
        yield f"{name} is for {', '.join(processor for processor, _ in parts)}"


def check(path):
    faults = list(faults_of_universal(path, read(path)))
    print("\n".join(faults) or f"{path}: for both processors")
    return 1 if faults else 0


if __name__ == "__main__":
    if len(sys.argv) == 3 and sys.argv[1] == "check":
        sys.exit(check(sys.argv[2]))
    if len(sys.argv) < 4 or sys.argv[1] != "join":
        sys.exit(__doc__)
    join(sys.argv[2], sys.argv[3:])

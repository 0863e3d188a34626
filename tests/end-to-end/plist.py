"""plist.py write FILE xml|binary KEY=VALUE...   writes a property list (true and numbers as such)
plist.py get FILE KEY                          prints a value, lists sorted by comma; nothing for a missing key
plist.py listing FIELD...                      reads what -list printed and prints these fields, an entry a line"""
import plistlib
import re
import sys


def write(path, form, *pairs):
    values = {}
    for key, text in (pair.split('=', 1) for pair in pairs):
        values[key] = text == 'true' or (int(text) if text.isdigit() else text)
    with open(path, 'wb') as file:
        plistlib.dump(values, file, fmt=plistlib.FMT_BINARY if form == 'binary' else plistlib.FMT_XML)


def get(path, key):
    with open(path, 'rb') as file:
        value = plistlib.load(file).get(key, '')
    print(','.join(value) if isinstance(value, list) else value)


def parse(text):
    """The old text form, as far as a listing needs it: dictionaries of texts, bytes outside ASCII in octal or UTF-8."""
    tokens = re.finditer(rb'\s*(?:([{}=;])|"((?:[^"\\]|\\.)*)"|([A-Za-z0-9]+))', text, re.DOTALL)

    def unquoted(match):
        code = match[1]
        return bytes([int(code, 8)]) if code.isdigit() else {b'n': b'\n'}.get(code, code)

    def value():
        token = next(tokens)
        if token[1] is None:
            return token[3] or re.sub(rb'\\([0-7]{3}|.)', unquoted, token[2] or b'', flags=re.DOTALL)
        assert token[1] == b'{', token
        entries = {}
        while True:
            key = next(tokens)
            if key[1] == b'}':
                return entries
            name = key[3] or re.sub(rb'\\([0-7]{3}|.)', unquoted, key[2], flags=re.DOTALL)
            assert next(tokens)[1] == b'='
            entries[name] = value()
            assert next(tokens)[1] == b';'

    return value()


def listing(*fields):
    entries = parse(sys.stdin.buffer.read())
    for path, entry in sorted(entries.items()):
        assert set(entry) == {b'name', b'path', b'date'} and entry[b'path'] == path, entry
        sys.stdout.buffer.write(b'\t'.join(entry[field.encode()] for field in fields) + b'\n')


{'write': write, 'get': get, 'listing': listing}[sys.argv[1]](*sys.argv[2:])

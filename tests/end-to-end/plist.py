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


def listing(*fields):
    """Of the old text form as much as a listing needs: dictionaries of texts, bytes outside ASCII in octal or UTF-8."""
    word = rb'("(?:[^"\\]|\\.)*"|\w+)'
    pair = rb'\s*%s\s*=\s*%s\s*;' % (word, word)
    entry = rb'\s*%s\s*=\s*\{((?:%s)*)\s*\}\s*;' % (word, pair.replace(b'("', b'(?:"'))
    text = sys.stdin.buffer.read()
    assert re.fullmatch(rb'\s*\{(?:%s)*\s*\}\s*' % entry, text, re.DOTALL), text

    def unquoted(token):
        def byte(match):
            return bytes([int(match[1], 8)]) if match[1].isdigit() else {b'n': b'\n'}.get(match[1], match[1])

        return re.sub(rb'\\([0-7]{3}|.)', byte, token[1:-1] if token[:1] == b'"' else token, flags=re.DOTALL)

    entries = {unquoted(path): {unquoted(key): unquoted(value) for key, value in re.findall(pair, pairs, re.DOTALL)}
               for path, pairs in re.findall(entry, text, re.DOTALL)}
    for path, found in sorted(entries.items()):
        assert set(found) == {b'name', b'path', b'date'} and found[b'path'] == path, found
        sys.stdout.buffer.write(b'\t'.join(found[field.encode()] for field in fields) + b'\n')


{'write': write, 'get': get, 'listing': listing}[sys.argv[1]](*sys.argv[2:])

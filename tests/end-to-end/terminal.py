"""terminal.py COLUMNS COMMAND...: runs the command with standard error on a terminal of that width, and writes to standard
output what it wrote to its own, to standard error what it drew. As "interrupt" the width is 80, and what is drawn first
is answered with the interrupt key.
terminal.py keys TEXT COMMAND...: types the text, in which a tab completes, into an interactive shell that says READY>, and
prints the last line that begins with a less-than sign."""
import fcntl
import os
import pty
import re
import struct
import subprocess
import sys
import termios

columns = {'keys': 400, 'interrupt': 80}.get(sys.argv[1]) or int(sys.argv[1])
keys, command = (sys.argv[2], sys.argv[3:]) if sys.argv[1] == 'keys' else (None, sys.argv[2:])
master, terminal = pty.openpty()
fcntl.ioctl(terminal, termios.TIOCSWINSZ, struct.pack('HHHH', 24, columns, 0, 0))


def take_terminal():
    os.setsid()
    fcntl.ioctl(terminal, termios.TIOCSCTTY, 0)


def read_until(mark):
    text = b''
    while mark not in text:
        try:
            block = os.read(master, 4096)
        except OSError:
            break
        if not block:
            break
        text += block
    return text


output = terminal if keys else None
process = subprocess.Popen(command, stdin=terminal, stdout=output, stderr=terminal, preexec_fn=take_terminal)
os.close(terminal)
if keys is None:
    drawn = b''
    if sys.argv[1] == 'interrupt':
        drawn = read_until(b'Backups')
        os.write(master, b'\3')
    drawn += read_until(b'\0')
    sys.stderr.buffer.write(drawn)
    sys.exit(process.wait())
read_until(b'READY>')
os.write(master, os.fsencode(keys))
# The shell is done with the keys when it has drawn what comes last.
os.write(master, b'\n')
said = read_until(b'|END')
os.write(master, b'exit\n')
for line in re.findall(rb'<[^\r\n]*(?=\|END)', said)[-1:]:
    print(os.fsdecode(line))
process.terminate()

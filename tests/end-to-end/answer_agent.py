#!/usr/bin/python3
"""answer_agent.py ANSWER PROMPTS PROGRAM [ARGUMENT...]: runs the program with a polkit agent on a terminal of its own.

The agent serves this one process. Each password prompt is answered with ANSWER, or hung up on when that is "hang up";
the file PROMPTS gets a line for each. Ends with the program's exit code.
"""
import os
import pty
import sys
import termios
import time


def wait_until_unseen(terminal):
    """Waits for the agent to turn echoing off; what is typed before that is thrown away."""
    while termios.tcgetattr(terminal)[3] & termios.ECHO:
        time.sleep(0.01)


answer, prompts, program = sys.argv[1], sys.argv[2], sys.argv[3:]
go, gate = os.pipe()
child = os.fork()
if child == 0:  # waits for the agent; keeps its process number when it becomes the program
    os.close(gate)
    os.read(go, 1)
    os.close(go)
    os.execv(program[0], program)

ready, notify = os.pipe()
agent, terminal = pty.fork()
if agent == 0:
    os.set_inheritable(notify, True)
    os.execv("/usr/bin/pkttyagent", ["pkttyagent", "--process", str(child), "--notify-fd", str(notify)])
os.close(notify)
os.read(ready, 1)  # closed when the agent is registered
os.close(gate)

if os.fork() == 0:
    seen = b""
    try:
        while True:
            seen += os.read(terminal, 1024)
            if b"Password: " in seen:
                seen = b""
                with open(prompts, "a") as file:
                    file.write("asked\n")
                wait_until_unseen(terminal)
                os.write(terminal, b"\x04" if answer == "hang up" else answer.encode() + b"\n")
    except OSError:
        os._exit(0)
_, status = os.waitpid(child, 0)
os.kill(agent, 15)
sys.exit(os.waitstatus_to_exitcode(status) & 0xFF)

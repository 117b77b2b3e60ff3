"""Runs a program on a pseudo-terminal: python3 on_terminal.py EVENTS PROGRAM ARGUMENT...

EVENTS holds pairs TEXT=SIGNAL, separated by commas: once the program has written TEXT it is sent SIGNAL, one after
another. Prints what the program has written, and then a line with its exit status; with the number of the signal that
ended it, negative, when one did.
"""

import os
import pty
import signal
import sys

events = [event.split("=") for event in sys.argv[1].split(",") if event]
process, terminal = pty.fork()
if process == 0:
    os.execv(sys.argv[2], sys.argv[2:])
output = b""
seen = 0
while True:
    try:
        output += os.read(terminal, 65536)
    except OSError:  # the other end is closed
        break
    while events and (at := output.find(events[0][0].encode(), seen)) >= 0:
        text, name = events.pop(0)
        seen = at + len(text)
        os.kill(process, getattr(signal, "SIG" + name))
sys.stdout.buffer.write(output)
print("\nended with", os.waitstatus_to_exitcode(os.waitpid(process, 0)[1]))

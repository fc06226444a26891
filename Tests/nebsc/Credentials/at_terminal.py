#!/usr/bin/env python3
"""Runs a program at a terminal of its own, and answers its prompts as a person does.

usage: at_terminal.py [PROMPT ANSWER]... -- PROGRAM ARGUMENT...
Types each answer when its prompt has appeared; the answer ^C interrupts, ^D ends the input, and one
that begins with ^\\ or ^Z has that key in front; "hang up" closes the terminal. A program that shows
nothing for a minute is hung up on, too; one that does not end in a minute after that is killed.
Prints what the terminal shows. The exit status is that of the program, 99 after a signal, 98 if it
ended before all answers were typed, 97 if it cannot be run and after other errors of this script.
"""
import os
import pty
import select
import signal
import sys
import traceback

LIMIT = 60


def fail(*error):
    """Prints the error and ends this process with a status that programs do not have."""
    traceback.print_exception(*error)
    sys.stderr.flush()
    os._exit(97)


sys.excepthook = fail
CONTROL = {"^C": b"\x03", "^D": b"\x04"}
KEYS = {"^\\": b"\x1c", "^Z": b"\x1a"}
end = sys.argv.index("--")
dialogue = list(zip(sys.argv[1:end:2], sys.argv[2:end:2]))
process, terminal = pty.fork()
if process == 0:
    os.execvp(sys.argv[end + 1], sys.argv[end + 1:])
shown = b""
start = 0
while True:
    if not select.select([terminal], [], [], LIMIT)[0]:
        os.close(terminal)
        break
    try:
        piece = os.read(terminal, 4096)
    except OSError:
        piece = b""
    if not piece:
        break
    shown += piece
    if dialogue and dialogue[0][0].encode() in shown[start:]:
        answer = dialogue.pop(0)[1]
        start = len(shown)
        if answer == "hang up":
            os.close(terminal)
            break
        key, text = KEYS.get(answer[:2], b""), answer[2:] if answer[:2] in KEYS else answer
        os.write(terminal, CONTROL.get(answer, key + text.encode() + b"\n"))
print(shown.decode(errors="replace").replace("\r\n", "\n"), end="")
signal.signal(signal.SIGALRM, lambda *_: os.kill(process, signal.SIGKILL))
signal.alarm(LIMIT)
_, status = os.waitpid(process, 0)
if dialogue:
    sys.exit(98)
sys.exit(os.waitstatus_to_exitcode(status) if not os.WIFSIGNALED(status) else 99)

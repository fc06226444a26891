#!/usr/bin/env python3
"""Makes a repository with a long history, the same one each time.

Usage: generate.py FOLDER COMMITS

A main line of commits of three files each, out of 5,000 in 60 folders; every 50th commit merges a
side branch of one commit, every 200th moves a file, every 500th takes one away. Subjects, bodies and
authors are like people's, with names beyond ASCII and a mail map among them.
"""
import subprocess
import sys

FOLDER, COMMITS = sys.argv[1], int(sys.argv[2])
NAMES = ["Ann Example", "Jörg Müller", "Ωmega Ωne", "李 小龍", "O'Brien, Pat", "x"]
BODY = ("\nUntil now it did so only when not observed, which a test could not see.\n"
        "The order of the two calls decides; it is the other way round now.\n")


def path_of(number):
    number %= 5000
    return f"source/folder{number % 50}/a file{number}.cpp" if number % 10 else f"dé{number % 7}/{number}.txt"


def data(text):
    raw = text.encode()
    return b"data %d\n%s\n" % (len(raw), raw)


def commit(out, branch, number, mark, parent, merged, changes):
    name = NAMES[number % len(NAMES)]
    when = 1200000000 + number * 60
    zone = ["+0000", "+0530", "-0330", "+1400"][number % 4]
    message = f"Change {number}: M\tnot/a/file\n" + (BODY if number % 4 else "")
    out.write(f"commit refs/heads/{branch}\nmark :{mark}\n"
              f"author {name} <a{number % 40}@example.org> {when} {zone}\n"
              f"committer C <c@example.org> {when} +0000\n".encode())
    out.write(data(message))
    if parent:
        out.write(b"from :%d\n" % parent)
    if merged:
        out.write(b"merge :%d\n" % merged)
    out.write(changes)
    out.write(b"\n")


def change(number, index):
    path = path_of(number * 7 + index * 1663)
    text = "".join(f"line {line} of {path}\n" for line in range(20)) + f"change {number}\n"
    return f"M 100{'755' if number % 9 == 0 else '644'} inline {path}\n".encode() + data(text)


def main():
    subprocess.run(["git", "init", "--quiet", "--initial-branch=main", FOLDER], check=True)
    process = subprocess.Popen(["git", "-C", FOLDER, "fast-import", "--quiet"],
                               stdin=subprocess.PIPE)
    out = process.stdin
    parent, mark, number = 0, 0, 0
    while number < COMMITS:
        number += 1
        mark += 1
        merged = 0
        if number % 50 == 0 and number + 1 < COMMITS:
            commit(out, "side", number, mark, parent, 0, change(number, 5))
            merged, mark, number = mark, mark + 1, number + 1
        changes = b"".join(change(number, index) for index in range(3))
        if number == 1:
            changes += (b"M 100644 inline .mailmap\n"
                        + data("Ann The Example <ann@example.com> <a0@example.org>\n"))
        if number % 200 == 0:
            changes += f"R \"{path_of(number * 7)}\" \"moved/{number}.cpp\"\n".encode()
        if number % 500 == 0:
            changes += f"D \"{path_of(number * 7 + 1663)}\"\n".encode()
        commit(out, "main", number, mark, parent, merged, changes)
        parent = mark
    out.close()
    if process.wait() != 0:
        sys.exit("git fast-import failed")
    subprocess.run(["git", "-C", FOLDER, "commit-graph", "write"], check=True)
    subprocess.run(["git", "-C", FOLDER, "checkout", "--quiet", "main"], check=True)


main()

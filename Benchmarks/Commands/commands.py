#!/usr/bin/env python3
"""Compares whole commands of nebsc with git's own, and prints a table.

    Benchmarks/Commands/commands.py NEBSC [ROUNDS]

Each round runs every command once, first nebsc and then git or the other way round. Output goes to
/dev/null. A ratio is the median of the ratios within each round, with the ratio of the two fastest
runs, which a busy machine disturbs less. Git runs with GIT_OPTIONAL_LOCKS=0, as nebsc runs it.
The count of processes is the one that --trace reports. A second table compares nebsc with and
without --inspect; the cost is the median of the differences within each round.
"""

import os
import re
import statistics
import subprocess
import sys
import tempfile
import time

SMALL = [
    ("status", ["status"], ["status"]),
    ("log -n 20", ["log", "-n", "20"], ["log", "-n", "20"]),
    ("log v1 -- file", ["log", "v1", "--", "dir0/a0"], ["log", "v1", "--", "dir0/a0"]),
    ("branch", ["branch"], ["branch"]),
    ("blame", ["blame", "dir0/a0"], ["blame", "dir0/a0"]),
    ("diff v1", ["diff", "v1"], ["diff", "v1"]),
]
INSPECTED = [["status"], ["log", "-n", "20"], ["branch"], ["blame", "dir0/a0"], ["diff", "v1"]]
LARGE = [
    ("status --short", ["status", "--short"], ["status", "--porcelain", "-z"]),
    ("status", ["status"], ["status", "--porcelain=v2", "-z", "--branch", "--show-stash"]),
]


def git(folder, *arguments):
    subprocess.run(["git", "-C", folder, *arguments], check=True, stdout=subprocess.DEVNULL)


def write(folder, name, text):
    path = os.path.join(folder, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


def new_repository(folder):
    os.makedirs(folder)
    git(folder, "init", "--quiet", "--initial-branch=main")
    git(folder, "config", "user.name", "Ann Example")
    git(folder, "config", "user.email", "ann@example.org")
    return folder


def small_repository(folder):
    """Thirty commits, a tag, a branch, a changed file and an untracked one."""
    new_repository(folder)
    for i in range(30):
        write(folder, f"dir{i % 3}/a{i % 3}", f"{i}\n" * 20)
        git(folder, "add", ".")
        git(folder, "commit", "--quiet", "--message", f"Change {i}")
        if i == 10:
            git(folder, "tag", "v1")
    git(folder, "branch", "topic", "HEAD~3")
    write(folder, "dir0/a0", "changed\n")
    write(folder, "new", "")
    return folder


def changed_repository(folder, entries):
    """As many entries of status: half changed files, half untracked ones."""
    new_repository(folder)
    for i in range(entries // 2):
        write(folder, f"dir{i // 100:04}/changed{i:06}.c", "one\n")
    git(folder, "add", ".")
    git(folder, "commit", "--quiet", "--message", "Files")
    for i in range(entries // 2):
        write(folder, f"dir{i // 100:04}/changed{i:06}.c", "another\n")
        write(folder, f"dir{i // 100:04}/untracked{i:06}.c", "one\n")
    return folder


def seconds(command, folder):
    start = time.perf_counter()
    subprocess.run(command, cwd=folder, check=True, stdout=subprocess.DEVNULL)
    return time.perf_counter() - start


def count_processes(nebsc, arguments, folder):
    trace = subprocess.run([nebsc, "--trace", *arguments], cwd=folder, check=True,
                           capture_output=True, text=True).stderr
    return len(re.findall(r"^trace \d+: exit status", trace, re.MULTILINE))


def rounds_of(commands, folder, rounds):
    """The times of both commands in each round, after one that warms up."""
    runs = []
    for i in range(rounds + 1):
        order = (0, 1) if i % 2 == 0 else (1, 0)
        measured = {which: seconds(commands[which], folder) for which in order}
        runs.append((measured[0], measured[1]))
    return runs[1:]


def compare(label, nebsc, case, folder, rounds):
    name, ours, theirs = case
    runs = rounds_of(([nebsc, *ours], ["git", *theirs]), folder, rounds)
    nebsc_times, git_times = zip(*runs)
    ratio = statistics.median(a / b for a, b in runs)
    print(f"| {name} | {label} | {count_processes(nebsc, ours, folder)} "
          f"| {statistics.median(git_times) * 1000:.2f} | {statistics.median(nebsc_times) * 1000:.2f} "
          f"| {ratio:.2f} | {min(nebsc_times) / min(git_times):.2f} |", flush=True)


def compare_inspection(nebsc, arguments, folder, rounds):
    runs = rounds_of(([nebsc, *arguments], [nebsc, "--inspect", *arguments]), folder, rounds)
    plain, inspected = zip(*runs)
    cost = statistics.median(b - a for a, b in runs)
    print(f"| {' '.join(arguments)} | {statistics.median(plain) * 1000:.2f} "
          f"| {statistics.median(inspected) * 1000:.2f} | {cost * 1000:.2f} "
          f"| {(min(inspected) - min(plain)) * 1000:.2f} |", flush=True)


def main():
    nebsc = os.path.abspath(sys.argv[1])
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 100
    os.environ["GIT_OPTIONAL_LOCKS"] = "0"
    print("| command | repository | processes | git ms | nebsc ms | ratio | ratio of the fastest |")
    print("| --- | --- | --: | --: | --: | --: | --: |")
    with tempfile.TemporaryDirectory() as top:
        folder = small_repository(os.path.join(top, "small"))
        for case in SMALL:
            compare("small", nebsc, case, folder, rounds)
        for entries in (20000, 100000):
            folder = changed_repository(os.path.join(top, str(entries)), entries)
            for case in LARGE:
                compare(f"{entries:,} entries", nebsc, case, folder, max(rounds // 5, 3))
        print("\n| command | ms | with --inspect | cost | cost of the fastest |")
        print("| --- | --: | --: | --: | --: |")
        folder = small_repository(os.path.join(top, "inspected"))
        for arguments in INSPECTED:
            compare_inspection(nebsc, arguments, folder, rounds)


if __name__ == "__main__":
    main()

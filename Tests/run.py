#!/usr/bin/env python3
"""Runs the test programs of a build folder, split over the processors, and reports failures.

Usage: run.py BUILD-FOLDER [--threaded] [--only PROGRAM…] [--without-package] [--filter TEXT] [--slowest COUNT]

Each program runs as several processes, each with a share of its tests (GoogleTest's sharding).
Prints the name and the output of each test that fails, the name of each skipped test with the reason,
and nothing of a test that passes. Kills a process whose test runs longer than LIMIT seconds, and
names that test.
"""
import argparse
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from collections import namedtuple
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

SOURCE = Path(__file__).resolve().parent
LIMIT = 120
PROCESSORS = len(os.sched_getaffinity(0))
IN_MEMORY = Path("/dev/shm")
# Compares messages of git, which differ where the temporary folder is a file system of its own.
ON_DISK = ["failure_tests"]

# Slowest first, so that the last process to end is a short one.
PROGRAMS = ["git_tests", "nebsc_tests", "fault_tests", "failure_tests", "host_tests", "gateway_tests"]

# What the thread sanitizer runs: the tests in which the code of this project runs on several threads.
# Without git_tests and failure_tests, which run one operation at a time and wait for it: its threads
# (queue, cancellation) are those of the host library. Without the tests of nebsc's commands, which
# run on one thread; nebsc_thread_tests has those of its server, interruption and progress indicator.
THREADED = ["fault_tests", "host_tests", "nebsc_thread_tests"]

Job = namedtuple("Job", "name command environment isGoogleTest", defaults=[True])
# The skipped tests are pairs of name and reason, the failures pairs of name and lines of output.
Result = namedtuple("Result", "job passed skipped failures seconds times")


def google_test_jobs(build, programs, text):
    """The processes of the programs, each with its share of the tests that match."""
    shards = 2 * PROCESSORS
    for program in programs:
        if not (build / "bin" / program).exists():
            sys.exit(f"{program} is not built in {build}")
        for shard in range(shards):
            yield Job(f"{program} {shard + 1}/{shards}",
                      [build / "bin" / program, f"--gtest_filter={text or '*'}"],
                      {"GTEST_TOTAL_SHARDS": str(shards), "GTEST_SHARD_INDEX": str(shard)})


def neovim_job(build, text):
    """The tests of the plug-in for Neovim, in Neovim. They print what GoogleTest prints."""
    runner = SOURCE / "Editors/neovim/run.lua"
    return Job("Neovim", [Path("nvim"), "--headless", "-u", "NONE", "-i", "NONE", "-n",
                          "-c", f"luafile {runner}"],
               {**editor_environment(build), "TESTS": text})


def editor_environment(build):
    """The variables of the tests in editors, which share a large repository."""
    return {"NEBSC": str(build / "bin/nebsc"), "NEB_TEMPLATES": str(build / "templates")}


def editor_jobs(build):
    """The clients in editors."""
    yield neovim_job(build, "")
    yield Job("EditorClient", [Path("node"), "--test", SOURCE / "EditorClient/serve.test.js"],
              {"NEBSC": str(build / "bin/nebsc"),
               "NODE_PATH": str(build / "editor-client/node_modules")}, False)
    yield Job("Emacs", [Path("emacs"), "--batch", "-Q", "-l", SOURCE / "Editors/emacs/run.el"],
              editor_environment(build), False)


def browse_jobs(build):
    """The page of nebsc browse: its modules in node, its views in Chromium."""
    for name in ["units", "hub", "page", "begin", "live", "screenshots"]:
        yield Job(f"Browse {name}", [Path("node"), "--test", SOURCE / f"Browse/{name}.test.mjs"],
                  {"NEBSC": str(build / "bin/nebsc"),
                   "NODE_PATH": str(build / "browse-tests/node_modules")}, False)


def setting(build, name):
    """The value of a setting of the build; empty if it has none."""
    found = re.search(rf"^{name}:\w+=(.*)$", (build / "CMakeCache.txt").read_text(), re.MULTILINE)
    return found.group(1) if found else ""


def package_jobs(build):
    """The package; not of a library with a sanitizer or libc++, which a plain program cannot link."""
    if setting(build, "NEB_SANITIZER") or setting(build, "NEB_LIBCXX"):
        return
    compiler = setting(build, "CMAKE_CXX_COMPILER")
    yield Job("Interface", [Path(sys.executable), SOURCE / "Package/interface_test.py"], {}, False)
    for case in ["Installation", "Examples", "SourceArchive"]:
        yield Job(f"Package {case}", [Path(sys.executable), SOURCE / "Package/package_test.py", build, case],
                  {"CXX": compiler}, False)
    yield Job("Package Debian", [Path(sys.executable), SOURCE / "Package/debian_test.py", build], {}, False)


def wait_for(process, log, limit):
    """Returns the exit status of the process; None if one test took too long and it was killed."""
    last, since = None, time.monotonic()
    while True:
        try:
            return process.wait(timeout=1)
        except subprocess.TimeoutExpired:
            progress = running_test(Path(log.name).read_text(errors="replace"))
        if progress != last:
            last, since = progress, time.monotonic()
        elif time.monotonic() - since > limit:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return None


def running_test(output):
    """The name of the test that started last; None before the first."""
    names = re.findall(r"^\[ RUN      \] (\S+)", output, re.MULTILINE)
    return names[-1] if names else None


def google_test_result(job, output, status, seconds):
    """Counts the tests of a process and collects the output of those that failed."""
    passed, skipped, failures, times = 0, [], [], []
    name, lines = None, []
    for line in output.splitlines():
        start = re.match(r"\[ RUN      \] (\S+)", line)
        end = re.search(r"\[ +(OK|FAILED|SKIPPED) +\] ([^\s,]+).*\((\d+) ms\)", line)
        if start:
            name, lines = start.group(1), []
        elif name and end and end.group(2) == name:
            outcome = end.group(1)
            passed += outcome == "OK"
            if outcome == "SKIPPED":
                skipped.append((name, " ".join(" ".join(lines).split(": Skipped ", 1)[-1].split())))
            if outcome == "FAILED":
                failures.append((name, lines))
            times.append((int(end.group(3)), name))
            name = None
        else:
            lines.append(line)
    if status is None:
        failures.append((f"{name}, which did not end within {LIMIT} seconds", lines))
    elif name:
        failures.append((f"{name}, which ended the process with {description(status)}", lines))
    elif status != 0 and not failures:
        failures.append((f"{job.name}: {description(status)}", output.splitlines()[-40:]))
    return Result(job, passed, skipped, failures, seconds, times)


def temporary_folder(program):
    """The folder for the repositories of tests: in memory where there is room, which is faster."""
    if (program.name not in ON_DISK and IN_MEMORY.is_dir()
            and shutil.disk_usage(IN_MEMORY).free > 2 << 30):
        return str(IN_MEMORY)
    return tempfile.gettempdir()


def description(status):
    return f"exit status {status}" if status >= 0 else signal.Signals(-status).name


def run(job):
    begin = time.monotonic()
    with tempfile.NamedTemporaryFile(prefix="neb-run-") as log:
        process = subprocess.Popen(job.command, stdin=subprocess.DEVNULL, stdout=log,
                                   stderr=subprocess.STDOUT, start_new_session=True,
                                   env={**os.environ, "TMPDIR": temporary_folder(job.command[0]),
                                        **job.environment})
        status = wait_for(process, log, LIMIT if job.isGoogleTest else 5 * LIMIT)
        output = Path(log.name).read_text(errors="replace")
    seconds = time.monotonic() - begin
    if job.isGoogleTest:
        result = google_test_result(job, output, status, seconds)
    else:
        failures = [] if status == 0 else [(job.name, output.splitlines())]
        result = Result(job, int(status == 0), [], failures, seconds, [])
    report(result)
    return result


def report(result):
    if result.passed or result.skipped or result.failures:
        counts = f"{result.passed} passed, {len(result.skipped)} skipped, {len(result.failures)} failed"
        print(f"{result.job.name:20} {counts}, {result.seconds:.1f} s", flush=True)
    for name, lines in result.failures:
        print("\n".join([f"---- FAILED: {name}", *lines, "----"]), flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--threaded", action="store_true",
                        help="only the programs and tests that the thread sanitizer runs")
    parser.add_argument("--only", nargs="+", metavar="PROGRAM", help="only the tests of these programs")
    parser.add_argument("--without-package", action="store_true",
                        help="leave out the tests of the package, which need a compiler")
    parser.add_argument("--filter", default="",
                        help="a part of the names of tests, or a pattern as GoogleTest takes it")
    parser.add_argument("--slowest", type=int, default=0, help="print so many of the slowest tests")
    options = parser.parse_args()
    build = options.build.resolve()
    text = options.filter
    if text and not re.search(r"[*?:]", text):
        text = f"*{text}*"

    has_page = (build / "bin/nebsc-browse").exists()
    programs = THREADED if options.threaded else options.only or [
        program for program in PROGRAMS if has_page or program != "gateway_tests"]
    jobs = list(google_test_jobs(build, programs, text))
    if not options.threaded and not options.only and not text:
        package = [] if options.without_package else package_jobs(build)
        chaos = Job("Chaos", [Path(sys.executable), SOURCE / "Chaos/chaos_test.py"], {}, False)
        page = browse_jobs(build) if has_page else []
        jobs = [*page, *editor_jobs(build), *package, *jobs, chaos]
    if not has_page and not options.threaded and not options.only:
        print("Without the tests of 'nebsc browse', which is not built.", flush=True)
    begin = time.monotonic()
    with ThreadPoolExecutor(PROCESSORS) as pool:
        results = list(pool.map(run, jobs))
    passed = sum(result.passed for result in results)
    skipped = [pair for result in results for pair in result.skipped]
    failures = [name for result in results for name, _ in result.failures]
    for milliseconds, name in sorted((t for r in results for t in r.times), reverse=True)[
            :options.slowest]:
        print(f"{milliseconds:6} ms {name}")
    for name, reason in sorted(skipped):
        print(f"SKIPPED {name}: {reason}")
    print(f"{passed} passed, {len(skipped)} skipped, {len(failures)} failed in"
          f" {time.monotonic() - begin:.0f} s")
    for name in failures:
        print(f"FAILED {name}")
    if passed + len(skipped) + len(failures) == 0:
        print(f"No test matches '{options.filter}'.", file=sys.stderr)
        return 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())

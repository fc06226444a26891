#!/usr/bin/env python3
"""Compares what nebsc answers about a repository with what git's plumbing says of the same.

Usage: compare.py NEBSC REPOSITORY [FILES]

Log (every commit of HEAD's history, with its files), blame (every line), diff (text, and names with
states), listing (every folder) and export (every byte and the mode); then history (every commit with
its parents and references), references, annotation (every line) and tree (every entry). Blame, diff,
export and annotation of FILES files, 200 unless given, spread evenly over the tree. Ends with status 1
where anything differs.
"""
import base64
import datetime
import json
import os
import re
import subprocess
import sys
import tempfile

NEBSC, REPOSITORY = sys.argv[1], os.path.realpath(sys.argv[2])
FILES = int(sys.argv[3]) if len(sys.argv) > 3 else 200
KEY = "NEBSourceControlOperation%sKey"
STATES = {"A": 1, "D": 2, "M": 4, "T": 4, "R": 4096, "C": 4096, "U": 16}


def git(*words, stdin=None):
    """What git prints, as bytes; nothing of the user's configuration that could change it."""
    quiet = ["-c", "core.quotePath=false", "-c", "diff.renames=true", "-c", "color.ui=false"]
    return subprocess.run(["git", "-C", REPOSITORY, *quiet, *words], input=stdin, check=True,
                          stdout=subprocess.PIPE).stdout


def outcome_of(number, **members):
    """The outcome of the request, which must not be an error."""
    members |= {"type": number, "sourceTree": {"location": REPOSITORY}}
    answer = subprocess.run([NEBSC, "request"], input=json.dumps(members).encode(), check=True,
                            stdout=subprocess.PIPE).stdout
    outcome = json.loads(answer)
    if outcome["error"]:
        sys.exit(f"request {number}: {outcome['error']}")
    return outcome


def request(number, **members):
    """The records that the request is answered with; none where there is no result."""
    return outcome_of(number, **members)["result"] or []


def tree_entries(*words):
    """The entries that git ls-tree lists; not those whose name is not UTF-8, which JSON cannot hold."""
    entries = []
    for entry in git("ls-tree", *words).split(b"\0")[:-1]:
        try:
            entries.append(entry.decode())
        except UnicodeDecodeError:
            pass
    return entries


def record(**fields):
    return {KEY % name: value for name, value in fields.items()}


def instant(seconds):
    epoch = datetime.datetime(1970, 1, 1)
    seconds = max(-2**31, min(2**31 - 1, seconds))
    return (epoch + datetime.timedelta(seconds=seconds)).strftime("%Y-%m-%dT%H:%M:%SZ")


class Comparison:
    """Counts, and shows the first differences."""
    differing = 0

    def __init__(self, name):
        self.name, self.compared, self.different = name, 0, 0

    def check(self, place, answered, expected):
        self.compared += 1
        if answered != expected:
            self.different += 1
            if self.different <= 3:
                print(f"  {self.name} {place}:\n    nebsc {answered!r:.400}\n    git   {expected!r:.400}")

    def end(self, unit):
        Comparison.differing += self.different
        print(f"{self.name:8} {self.compared:9} {unit} compared, {self.different} differing", flush=True)


def commits():
    """Each commit of HEAD's history, newest first: its name and its raw object."""
    names = git("rev-list", "HEAD")
    raw = git("cat-file", "--batch", stdin=names)
    place = 0
    for name in names.decode().split():
        start = raw.index(b"\n", place) + 1
        size = int(raw[place:start].split()[2])
        yield name, raw[start:start + size]
        place = start + size + 1


def path_text(printed):
    """A path as git prints it; one that is not UTF-8 in quotes, with octal escapes."""
    try:
        return printed.decode()
    except UnicodeDecodeError:
        text = "".join(chr(byte) if byte < 128 else f"\\{byte:03o}" for byte in printed)
        return text if text.startswith('"') else f'"{text}"'


def files_by_commit():
    """The lines "state TAB path…" of each commit's comparison with its parent."""
    files, name = {}, None
    text = git("diff-tree", "--stdin", "--root", "-r", "-M", "--name-status",
               stdin=git("rev-list", "HEAD"))
    for line in text.split(b"\n"):
        if re.fullmatch(b"[0-9a-f]{40}|[0-9a-f]{64}", line):
            name = line.decode()
        elif line:
            state, path = line.split(b"\t")[:2]
            files.setdefault(name, {})[path_text(path)] = STATES[chr(state[0])]
    return files


def commit_record(name, text, author, identity):
    """The record of a commit; raises UnicodeDecodeError where it can have none."""
    person, mail = re.fullmatch(r"(.*?) ?<(.*)>", identity.decode()).groups()
    return record(Revision=name[:12], Author=person, AuthorEmail=mail, Date=instant(int(author[2])),
                  Message=text[text.index(b"\n\n") + 2:].decode().strip("\n"))


def compare_log():
    comparison = Comparison("log")
    files = files_by_commit()
    raw = list(commits())
    authors = [re.search(rb"^author (.*>) (-?\d+) ", text, re.M) for _, text in raw]
    mapped = git("check-mailmap", "--stdin", stdin=b"".join(a[1] + b"\n" for a in authors))
    expected, omitted = [], []
    for (name, text), author, identity in zip(raw, authors, mapped.split(b"\n")):
        try:
            entry = commit_record(name, text, author, identity)
        except UnicodeDecodeError:
            omitted.append(name[:12])
            continue
        if name in files:
            entry |= record(Files=files[name])
        expected.append(entry)
    outcome = outcome_of(18, options={"NEBSourceControlRequestOptionLogOutputFilesChanged": True})
    answered = outcome["result"]
    comparison.check("count", len(answered), len(expected))
    comparison.check("omitted", outcome.get("omittedRevisions", []), omitted)
    for answer, entry in zip(answered, expected):
        comparison.check(entry[KEY % "Revision"], answer, entry)
    comparison.end("records")


def compare_blame(paths):
    comparison = Comparison("blame")
    for path in paths:
        people, expected, revision = {}, [], ""
        for line in git("blame", "--porcelain", "HEAD", "--", path).split(b"\n"):
            head = re.match(rb"([0-9a-f]{40,64}) \d+ (\d+)", line)
            if head:
                revision, number = head[1].decode(), head[2].decode()
            elif line.startswith(b"author "):
                people[revision] = [line[7:].decode()]
            elif line.startswith(b"author-time "):
                people[revision].append(instant(int(line[12:])))
            elif line.startswith(b"\t"):
                person, date = people[revision]
                expected.append(record(Revision=revision[:12], Author=person, Date=date,
                                       LineNumber=number))
        expected.append({})  # the answer ends with an empty record
        answered = request(28, startingRevision="HEAD", files=[os.path.join(REPOSITORY, path)])
        comparison.check(path, len(answered), len(expected))
        for answer, entry in zip(answered, expected):
            comparison.check(path, answer, entry)
    comparison.end("lines")


def compare_diff(paths):
    comparison = Comparison("diff")
    names = git("rev-list", "--first-parent", "--max-count=200", "HEAD").decode().split()
    for newer, older in zip(names, names[1:]):
        revisions = {"startingRevision": older, "endingRevision": newer}
        plumbing = ["diff-tree", "-r", "-M", older, newer]
        text = git(*plumbing, "-p").decode(errors="replace")
        answered = request(30, **revisions)
        comparison.check(newer, answered, [record(Content=text)] if text else [])
        states = []
        for line in git(*plumbing, "--name-status").decode(errors="replace").split("\n")[:-1]:
            # What stands behind the letter is the path: of a rename with the score, and both paths.
            path = re.fullmatch(r"[A-Z]\s*(.*)", line)[1]
            states.append(record(WCStatus=STATES[line[0]], Path=os.path.join(REPOSITORY, path)))
        answered = request(30, **revisions, options={
            "NEBSourceControlRequestOptionDiffFileNameAndStatusOnly": True})
        comparison.check(newer, answered, states)
    first = git("rev-list", "--max-parents=0", "HEAD").decode().split()[0]
    for path in paths[:20]:
        text = git("diff-tree", "-r", "-p", first, "HEAD", "--", path).decode(errors="replace")
        answered = request(30, startingRevision=first, endingRevision="HEAD",
                           files=[os.path.join(REPOSITORY, path)])
        comparison.check(path, answered, [record(Content=text)] if text else [])
    comparison.end("answers")


def compare_listing(paths):
    comparison = Comparison("ls")
    folders = {""}
    for path in paths:
        while path := os.path.dirname(path):
            folders.add(path)
    for folder in sorted(folders):
        expected = []
        for entry in tree_entries("-z", "HEAD:" + folder):
            kind, name = entry.split(" ")[1], entry.split("\t")[1]
            if not name.startswith("."):  # such names the answer leaves out
                expected.append(record(IsLeaf=kind == "blob", Name=name))
        answered = request(17, files=[os.path.join(REPOSITORY, folder)])
        comparison.check(folder or ".", answered, expected)
    comparison.end("folders")


def compare_export(paths):
    comparison = Comparison("export")
    modes = {entry.split("\t")[1]: entry.split(" ")[0]
             for entry in tree_entries("-rz", "HEAD")}
    with tempfile.TemporaryDirectory() as folder:
        for path in paths:
            target = os.path.join(folder, os.path.basename(path))
            request(21, startingRevision="HEAD", files=[os.path.join(REPOSITORY, path)],
                    destination=target)
            with open(target, "rb") as file:
                comparison.check(path, file.read(), git("cat-file", "blob", "HEAD:" + path))
            comparison.check(path, os.access(target, os.X_OK), modes[path] == "100755")
            os.remove(target)
    comparison.end("answers")


# ---- the types from 1000 on ----------------------------------------------------------------------

def is_text(printed):
    try:
        printed.decode()
        return True
    except UnicodeDecodeError:
        return False


def in_base64(printed):
    return {"base64": base64.b64encode(printed).decode()}


def name(field, printed):
    """The members of a name: its text, and its bytes where they are not UTF-8."""
    members = record(**{field: printed.decode(errors="replace")})
    return members if is_text(printed) else members | record(**{field + "Bytes": in_base64(printed)})


def minutes(zone):
    """A time zone, "-0230", in minutes."""
    return (-1 if zone[0] == "-" else 1) * (int(zone[1:3]) * 60 + int(zone[3:5]))


def identities(lines):
    """Name and address of each "NAME <ADDRESS>", as .mailmap maps them."""
    mapped = git("check-mailmap", "--stdin", stdin=b"".join(line + b"\n" for line in lines))
    return [re.fullmatch(r"(.*?) ?<(.*)>", line.decode(errors="replace")).groups()
            for line in mapped.split(b"\n")[:-1]]


def message_parts(text):
    """Subject and body: the first paragraph on one line, and what follows it."""
    text = re.sub(r"\A(\s*\n)+", "", text)
    first, *rest = re.split(r"\n[ \t\r\f\v]*\n", text, maxsplit=1)
    subject = " ".join(line.rstrip() for line in first.rstrip("\n").split("\n"))
    return subject, rest[0].strip("\n") if rest else ""


def references_by_commit():
    """The full names of all references to each object."""
    names = {}
    for line in git("for-each-ref", "--format=%(objectname) %(*objectname) %(refname)").split(b"\n")[:-1]:
        own, peeled, full = line.split(b" ", 2)
        names.setdefault((peeled or own).decode(), []).append(full)
    return names


def without_absent(members):
    return {key: value for key, value in members.items() if value not in ("", None, [])}


def person_members(role, identity, time):
    """The members of an author or committer."""
    seconds, zone = time.split()
    return record(**{role: identity[0], role + "Email": identity[1], role + "Time": int(seconds),
                     role + "TimeOffset": minutes(zone)})


def commit_people():
    """Of each commit its raw text, and the identities and times of author and committer."""
    raw = list(commits())
    lines = {}
    for role in (b"author", b"committer"):
        lines[role] = [re.search(rb"^%s (.*>) (-?\d+ [-+]\d{4})" % role, text, re.M) for _, text in raw]
    people = {role: identities([line[1] for line in found]) for role, found in lines.items()}
    for i, (commit, text) in enumerate(raw):
        yield commit, text, {role.decode().capitalize(): (people[role][i], lines[role][i][2].decode())
                             for role in lines}


def compare_history():
    comparison = Comparison("history")
    parents = {line.split()[0]: line.split()[1:]
               for line in git("rev-list", "--parents", "HEAD").decode().split("\n")[:-1]}
    references = references_by_commit()
    head = git("rev-parse", "HEAD").decode().strip()
    expected = []
    for commit, text, people in commit_people():
        encoding = re.search(rb"^encoding (\S+)$", text[:text.index(b"\n\n")], re.M)
        message = text[text.index(b"\n\n") + 2:].decode(
            encoding[1].decode() if encoding else "utf-8", errors="replace")
        subject, body = message_parts(message)
        members = record(ObjectID=commit, Parents=parents[commit], Subject=subject, Body=body)
        for role, (identity, time) in people.items():
            members |= person_members(role, identity, time)
        members |= record(References=sorted(
            (full.decode() if is_text(full) else in_base64(full) for full in references.get(commit, [])),
            key=str), IsHEAD=True if commit == head else None)
        expected.append(without_absent(members))
    answered = request(1001)
    comparison.check("count", len(answered), len(expected))
    for answer, entry in zip(answered, expected):
        if KEY % "References" in answer:
            answer[KEY % "References"].sort(key=str)
        answer.pop(KEY % "IsGrafted", None)
        comparison.check(entry[KEY % "ObjectID"], answer, entry)
    comparison.end("commits")


def compare_references():
    comparison = Comparison("refs")
    peeled, names = {}, []
    for line in git("show-ref", "--dereference").split(b"\n")[:-1]:
        own, full = line.split(b" ", 1)
        if full.endswith(b"^{}"):
            peeled[full[:-3]] = own.decode()
        elif full.startswith((b"refs/heads/", b"refs/remotes/", b"refs/tags/")):
            names.append((full, own.decode()))
    types = git("cat-file", "--batch-check=%(objecttype)",
                stdin="".join(own + "\n" for _, own in names).encode()).decode().split()
    answered = request(1008)
    comparison.check("count", len(answered), len(names))
    for answer, (full, own), kind in zip(answered, names, types):
        members = name("Name", full) | record(ObjectID=own, ObjectType=kind)
        if full in peeled:
            members |= record(PeeledID=peeled[full])
        comparison.check(full, {key: answer.get(key) for key in members}, members)
        if KEY % "Ahead" in answer:
            upstream = answer[KEY % "Upstream"]
            counts = git("rev-list", "--left-right", "--count", f"{full.decode()}...{upstream}").split()
            comparison.check(full, [answer[KEY % "Ahead"], answer[KEY % "Behind"]],
                             [int(count) for count in counts])
    comparison.end("references")


def annotated_lines(path):
    """Commit, number in it, number, person, time and bytes of each line of a file."""
    fields = {}
    for line in git("blame", "--line-porcelain", "HEAD", "--", path).split(b"\n"):
        head = re.match(rb"([0-9a-f]{40,64}) (\d+) (\d+)", line)
        if head:
            fields = {"ids": (head[1].decode(), int(head[2]), int(head[3]))}
        elif line.startswith(b"\t"):
            yield (*fields["ids"], fields[b"author"].decode(errors="replace"),
                   int(fields[b"author-time"]), fields[b"summary"].decode(errors="replace"), line[1:])
        elif line:
            key, _, value = line.partition(b" ")
            fields[key] = value


def line_bytes(line):
    return base64.b64decode(line["base64"]) if isinstance(line, dict) else line.encode()


def compare_annotation(paths):
    comparison = Comparison("annotate")
    for path in paths:
        answered = []
        for group in request(1003, startingRevision="HEAD", files=[path]):
            for i, line in enumerate(group.get(KEY % "Lines", [])):
                answered.append((group[KEY % "ObjectID"], group[KEY % "OriginalLine"] + i,
                                 group[KEY % "FirstLine"] + i, group.get(KEY % "Author", ""),
                                 group[KEY % "AuthorTime"], group.get(KEY % "Subject", ""),
                                 line_bytes(line)))
        expected = list(annotated_lines(path))
        comparison.check(path, len(answered), len(expected))
        for answer, line in zip(answered, expected):
            comparison.check(path, answer, line)
    comparison.end("lines")


def compare_tree():
    comparison = Comparison("tree")
    kinds = {"100755": "executable", "120000": "symbolic link", "040000": "folder", "160000": "submodule"}
    entries = [re.fullmatch(rb"(\d+) (\w+) ([0-9a-f]+)\t(.*)", entry, re.S)
               for entry in git("ls-tree", "-r", "-t", "-z", "--full-tree", "HEAD").split(b"\0")[:-1]]
    blobs = b"".join(entry[3] + b"\n" for entry in entries if entry[2] == b"blob")
    sizes = iter(git("cat-file", "--batch-check=%(objectsize)", stdin=blobs).split())
    expected = []
    for entry in entries:
        mode = entry[1].decode()
        members = record(Kind=kinds.get(mode, "file"), Mode=mode, ObjectID=entry[3].decode())
        members |= name("Name", entry[4].rsplit(b"/", 1)[-1]) | name("Path", entry[4])
        if entry[2] == b"blob":
            members |= record(Size=int(next(sizes)))
        expected.append(members)
    answered = request(1019, startingRevision="HEAD",
                       options={"NEBSourceControlRequestOptionRecursive": True})
    comparison.check("count", len(answered), len(expected))
    for answer, entry in zip(answered, expected):
        comparison.check(entry[KEY % "Path"], answer, entry)
    comparison.end("entries")


def main():
    entries = [entry.split("\t") for entry in tree_entries("-rz", "HEAD")]
    paths = [path for kind, path in entries if kind.startswith("100")]
    some = paths[::max(1, len(paths) // FILES)][:FILES]
    compare_log()
    compare_blame(some)
    compare_diff(some)
    compare_listing([path for _, path in entries])
    compare_export(some)
    compare_history()
    compare_references()
    compare_annotation(some)
    compare_tree()
    sys.exit(1 if Comparison.differing else 0)


main()

"""The repositories on which the chaos run works, and what must hold for them at all times."""

import hashlib
import json
import os
import re
import shutil
import subprocess

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
MAKE_REPOSITORIES = os.path.join(SOURCE, "Tests/nebsc/Requests/make-example-repositories")
REQUESTS_PAGE = os.path.join(SOURCE, "docs/requests.md")
EXAMPLE_FOLDER = "/home/ann"
# Files of git that differ between runs that did the same, or say only what was asked last.
VARYING = re.compile(r"\.git/(.*/)?(objects|logs)(/|$)|"
                     r"\.git/(.*/)?(index|FETCH_HEAD|ORIG_HEAD|COMMIT_EDITMSG|svn/.*)$|^tmp(/|$)")
RANDOM_NAME = "[0-9A-F]{16}-"


class Example:
    """A request of docs/requests.md, with the script that prepares the repositories for it."""

    def __init__(self, heading, number, script, request):
        self.name = "%s, example %d" % (heading, number)
        self.script = script
        self.request = request


def examples():
    """Every request of the page that is carried out."""
    found = []
    with open(REQUESTS_PAGE) as file:
        sections = file.read().split("\n## ")[1:]
    for section in sections:
        heading = section.split("\n", 1)[0]
        script, is_outcome, number = "", False, 0
        for kind, content in re.findall(r"^```(.*)\n((?:.*\n)*?)```$", section, re.MULTILINE):
            if kind == "sh":
                script = content
                continue
            if not is_outcome:
                number += 1
                if kind == "json":
                    found.append(Example(heading, number, script, content))
                script = ""
            is_outcome = not is_outcome
    return found


class World:
    """A folder with the repositories of the examples, restored before each request."""

    def __init__(self, folder, disk):
        """`folder` keeps the original; the copy that is worked on is below `disk`."""
        self.path = os.path.join(disk, "ann")
        self.original = os.path.join(folder, "original")
        home = os.path.join(folder, "home")
        os.mkdir(home)
        with open(os.path.join(home, ".gitconfig"), "w") as file:
            file.write("[user]\n\tname = Ann Example\n\temail = ann@example.org\n"
                       "[init]\n\tdefaultBranch = main\n[protocol \"file\"]\n\tallow = always\n"
                       "[gc]\n\tauto = 0\n[maintenance]\n\tauto = false\n")
        self.variables = {name: value for name, value in os.environ.items()
                          if not name.startswith("GIT_")}
        self.variables.update(HOME=home, XDG_CONFIG_HOME=home, GIT_CONFIG_NOSYSTEM="1",
                              GIT_AUTHOR_DATE="2020-09-13T12:26:40Z",
                              GIT_COMMITTER_DATE="2020-09-13T12:26:40Z", LC_ALL="C", TZ="UTC",
                              TMPDIR=os.path.join(self.path, "tmp"))
        self.repositories = [os.path.join(self.path, name) for name in ("demo", "shared.git")]
        subprocess.run([MAKE_REPOSITORIES, self.path], check=True, env=dict(
            self.variables, TMPDIR=folder))
        shutil.copytree(self.path, self.original, symlinks=True)

    def restore(self, example):
        shutil.rmtree(self.path, ignore_errors=True)
        shutil.copytree(self.original, self.path, symlinks=True)
        subprocess.run(["/bin/sh", "-e", "-c", example.script, "sh", self.path], check=True,
                       cwd=self.repositories[0], env=self.variables, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)

    def request_of(self, example):
        return example.request.replace(EXAMPLE_FOLDER, self.path)

    def git(self, repository, *arguments):
        return subprocess.run(["git", "-C", repository, *arguments], env=self.variables,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    def records(self, outcome):
        """The result of an outcome, without what varies between runs, as text."""
        text = json.dumps(outcome["result"], sort_keys=True).replace(self.path, EXAMPLE_FOLDER)
        text = re.sub(RANDOM_NAME, "", text)
        return re.sub(r'"milliseconds": [0-9.e+-]*', "", text)

    def state(self):
        """What the repositories and their folders hold, by name."""
        state = {}
        for folder, folders, files in os.walk(self.path):
            for name in files + [name for name in folders if not name.startswith(".")]:
                path = os.path.join(folder, name)
                relative = os.path.relpath(path, self.path)
                if VARYING.search(relative.replace("shared.git/", "shared.git/.git/")):
                    continue
                state[re.sub(RANDOM_NAME, "", relative)] = digest(path)
        for repository in self.repositories:
            for question in (["for-each-ref"], ["ls-files", "-s"], ["stash", "list"]):
                answer = self.git(repository, *question).stdout.decode(errors="replace")
                state["%s: git %s" % (os.path.basename(repository), " ".join(question))] = answer
        state.pop("demo/.git/packed-refs", None)
        return state

    def damage(self, is_git_killed):
        """Sentences about what must never be: a damaged repository and forgotten locks."""
        sentences = []
        for repository in self.repositories:
            check = self.git(repository, "fsck", "--no-dangling", "--no-progress")
            if check.returncode != 0:
                sentences.append("git fsck in %s: %s" % (os.path.basename(repository),
                                                         check.stdout.decode(errors="replace")))
        # A git that is killed cannot remove its locks.
        if not is_git_killed:
            sentences += ["left behind: %s" % os.path.join(folder, name)
                          for folder, _, files in os.walk(self.path) for name in files
                          if name.endswith(".lock")]
        return sentences

    def temporary_files(self):
        """The names in the folder for temporary files, where some requests leave their result."""
        names = os.listdir(self.variables["TMPDIR"])
        return sorted(re.sub(RANDOM_NAME, "", name) for name in names)


def digest(path):
    if os.path.islink(path):
        return "link to " + os.readlink(path)
    if os.path.isdir(path):
        return "folder"
    with open(path, "rb") as file:
        return hashlib.sha1(file.read()).hexdigest()

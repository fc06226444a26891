"""What the tests of the installation and of the packages share. The build folder is the first argument."""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
BUILD = Path(sys.argv[1]).resolve()
COMPILER = os.environ.get("CXX", "c++")

ENVIRONMENT = {name: value for name, value in os.environ.items()
               if not name.startswith(("GIT_", "LD_LIBRARY", "PKG_CONFIG", "CMAKE_"))}
ENVIRONMENT.update(
    LC_ALL="C.UTF-8", GIT_CONFIG_GLOBAL="/dev/null", GIT_CONFIG_NOSYSTEM="1",
    GIT_AUTHOR_NAME="Ann Example", GIT_AUTHOR_EMAIL="ann@example.org",
    GIT_AUTHOR_DATE="2026-03-04T05:06:07 +0100", GIT_COMMITTER_DATE="2026-03-04T05:06:07 +0100",
    GIT_COMMITTER_NAME="Ann Example", GIT_COMMITTER_EMAIL="ann@example.org")


def run(*command, folder=None, status=0, **variables):
    """Runs the program and returns its standard output, or its standard error if status is not 0.

    Fails on another exit status.
    """
    done = subprocess.run([str(argument) for argument in command], cwd=folder, text=True, timeout=300,
                          env={**ENVIRONMENT, **variables}, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if done.returncode != status:
        raise AssertionError(f"{command}: exit status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout if status == 0 else done.stderr


def files_below(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


def project_version():
    return re.search(r"project\(NEBGit VERSION (\S+)", (SOURCE / "CMakeLists.txt").read_text()).group(1)


def major_version():
    return project_version().split(".", maxsplit=1)[0]


def build_setting(name):
    """The variable of CMake in the build folder."""
    return re.search(rf"^{name}:\w+=(.*)$", (BUILD / "CMakeCache.txt").read_text(), re.M).group(1)


class PackageTest(unittest.TestCase):
    """With a temporary folder, and in it a repository of some commits and a folder that is none."""

    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp(prefix="nebgit-package-")).resolve()
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        ENVIRONMENT["GIT_CEILING_DIRECTORIES"] = str(cls.folder.parent)
        cls.repository = cls.folder / "repository"
        run("git", "init", "--quiet", "--initial-branch=main", cls.repository)
        for message in ["First", "Grüße an alle\n\nMore of it.", "Third \"one\""]:
            run("git", "commit", "--quiet", "--allow-empty", "-m", message, folder=cls.repository)
        cls.plain_folder = cls.folder / "plain"
        cls.plain_folder.mkdir()

    @classmethod
    def log_of_git(cls):
        return run("git", "log", "--abbrev=12", "--date=format-local:%Y-%m-%dT%H:%M:%SZ",
                   "--format=%h  %ad  %an  %s", folder=cls.repository, TZ="UTC")

    @classmethod
    def install(cls):
        """Installs, moves the prefix, and returns its new location."""
        run("cmake", "--install", BUILD, "--prefix", cls.folder / "before")
        (cls.folder / "before").rename(cls.folder / "moved")
        return cls.folder / "moved"


def main():
    unittest.main(module="__main__", argv=[sys.argv[0], *sys.argv[2:]], verbosity=2)

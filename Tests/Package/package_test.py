#!/usr/bin/env python3
"""Installs the build, moves the prefix, and uses it without the build folder.

Usage: package_test.py BUILD-FOLDER [CLASS-OR-TEST…]
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
BUILD = Path()  # given as an argument
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


def contract_version():
    header = (SOURCE / "Host/NEBFoundation/NEBSourceControlPlugIn.h").read_text()
    return re.search(r"NEBSourceControlContractVersion = (\d+);", header).group(1)


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


# Where Neovim finds the plug-in.
NEOVIM = "share/nvim/site/pack/nebgit/start/nebgit/"


class Installation(PackageTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.prefix = cls.install()

    def test_has_everything_in_its_usual_place(self):
        installed = files_below(self.prefix)
        headers = {name for name in installed if name.startswith("include/NEBGit/")}
        documents = {name for name in installed if name.startswith("share/doc/nebgit/")}
        neovim = {name for name in installed if name.startswith(NEOVIM)}
        version = contract_version()
        self.assertEqual(installed - headers - documents - neovim, {
            "bin/nebsc",
            "lib/libNEBFoundation.so",
            f"lib/libNEBFoundation.so.{version}",
            f"lib/libNEBFoundation.so.{self.project_version()}",
            "lib/nebgit/NEBGit.so",
            "lib/pkgconfig/nebgit.pc",
            "lib/cmake/NEBGit/NEBGitConfig.cmake",
            "lib/cmake/NEBGit/NEBGitConfigVersion.cmake",
            "lib/cmake/NEBGit/NEBGitTargets.cmake",
            f"lib/cmake/NEBGit/NEBGitTargets-{self.configuration()}.cmake",
            "share/man/man1/nebsc.1",
            "share/bash-completion/completions/nebsc",
            "share/zsh/site-functions/_nebsc",
            "share/fish/vendor_completions.d/nebsc.fish",
        })
        self.assertLessEqual({f"share/doc/nebgit/{name}" for name in [
            "README.md", "CONTRIBUTING.md", "LICENSE", "copyright", "docs/hosts.md", "docs/server.md",
            "examples/client.py", "examples/client.mjs", "examples/log-host/main.cpp"]}, documents)

    def test_neovim_loads_the_plug_in(self):
        script = ("lua local failure; require('nebgit.server').request('sourceControl/plan', {type = 15},"
                  " function(f) failure = f or 'none' end); vim.wait(60000, function() return failure end);"
                  " io.stdout:write(vim.inspect(failure))")
        home = self.folder / "home"
        output = run("nvim", "--headless", "-i", "NONE", "-n", "-c", "help nebgit", "-c", script,
                     "-c", "qall!", HOME=str(home), XDG_DATA_DIRS=str(self.prefix / "share"),
                     PATH=f"{self.prefix / 'bin'}:{os.environ['PATH']}")
        self.assertEqual(output, '"none"')

    def test_nothing_of_it_knows_where_it_was_built_or_installed(self):
        for name in files_below(self.prefix):
            if name.endswith((".cmake", ".pc")):
                text = (self.prefix / name).read_text()
                for place in [str(SOURCE), str(BUILD), str(self.folder), "-Werror", "-Wall"]:
                    self.assertNotIn(place, text, name)
        for name in ["bin/nebsc", "lib/libNEBFoundation.so", "lib/nebgit/NEBGit.so"]:
            paths = re.findall(r"R(?:UN)?PATH\).*\[(.*)\]", run("readelf", "-dW", self.prefix / name))
            for path in ":".join(paths).split(":"):
                self.assertRegex(path, r"^(\$ORIGIN/.*)?$", name)

    def test_nebsc_finds_plug_in_and_library(self):
        nebsc = self.prefix / "bin/nebsc"
        self.assertIn(f"NEBGit {self.project_version()}\n", run(nebsc, "--version"))
        link = self.folder / "link to nebsc"
        link.symlink_to(nebsc)
        self.assertIn("Third", run(link, "log", folder=self.repository))
        complaint = run(nebsc, "log", folder=self.plain_folder, status=1)
        self.assertIn("nebsc: the folder is not in a git repository\n", complaint)

    def test_each_header_compiles_alone(self):
        include = self.prefix / "include/NEBGit"
        headers = sorted(files_below(include))

        def failure_of(header):
            source = f'#include "{header}"\n#include "{header}"\n'
            done = subprocess.run([COMPILER, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra",
                                   "-Wpedantic", "-Werror", f"-I{include}", "-x", "c++", "-"],
                                  input=source, text=True, capture_output=True, env=ENVIRONMENT)
            return done.stderr if done.returncode != 0 else ""

        with ThreadPoolExecutor(os.cpu_count()) as pool:
            failures = list(pool.map(failure_of, headers))
        self.assertEqual([failure for failure in failures if failure], [])

        everything = run(COMPILER, "-std=c++20", "-MM", f"-I{include}",
                         include / "NEBFoundation/NEBFoundation.h")
        self.assertEqual({os.path.relpath(path, include) for path in re.findall(r"/\S+\.h", everything)},
                         set(headers), "what NEBFoundation.h does not bring is of no use to a host")

    def test_library_is_named_after_the_contract_version(self):
        dynamic = run("readelf", "-dW", self.prefix / "lib/libNEBFoundation.so")
        name = re.search(r"SONAME\).*\[(.*)\]", dynamic).group(1)
        self.assertEqual(name, f"libNEBFoundation.so.{contract_version()}")
        for user in ["bin/nebsc", "lib/nebgit/NEBGit.so"]:
            self.assertIn(f"[{name}]", run("readelf", "-dW", self.prefix / user))

    def test_plug_in_exports_what_it_documents_and_nothing_else(self):
        self.assertEqual({name for _, name in self.exports("lib/nebgit/NEBGit.so")}, {
            "NEBSourceControlDescribePlugIn", "NEBGitVersionString", "NEBGitVersionNumber"})

    def test_library_exports_its_own_names_alone(self):
        exports = self.exports("lib/libNEBFoundation.so")
        own = re.compile(r"(vtable for |typeinfo for |typeinfo name for |VTT for |guard variable for |"
                         r"virtual thunk to |non-virtual thunk to )?neb::")
        # What the compiler makes of the standard library's templates is weak (V, W) or unique (u).
        foreign = [(kind, name) for kind, name in exports if not own.match(name) and kind not in "VWu"]
        self.assertEqual(foreign, [])
        self.assertTrue([name for _, name in exports if name.startswith("neb::NEBSourceControlPlugIn::load")])
        hidden = ["neb::ChildSession", "neb::CapturedStream"]  # the library's own
        self.assertEqual([name for _, name in exports if name.startswith(tuple(hidden))], [])

    def exports(self, library):
        lines = run("nm", "--dynamic", "--defined-only", "--demangle", self.prefix / library)
        return [tuple(line.split(" ", 2)[1:]) for line in lines.splitlines()]

    @staticmethod
    def project_version():
        return re.search(r"project\(NEBGit VERSION (\S+)", (SOURCE / "CMakeLists.txt").read_text()).group(1)

    @staticmethod
    def configuration():
        cache = (BUILD / "CMakeCache.txt").read_text()
        return re.search(r"^CMAKE_BUILD_TYPE:\w+=(.*)$", cache, re.M).group(1).lower()


class Examples(PackageTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.prefix = cls.install()
        cls.path = f"{cls.prefix / 'bin'}:{ENVIRONMENT['PATH']}"

    def expect_log(self, *words, **variables):
        """Expects the program to print the same log as git, and to report a missing repository."""
        self.assertEqual(run(*words, self.repository, **variables), self.log_of_git())
        complaint = run(*words, self.plain_folder, status=1, **variables)
        self.assertIn("The folder is not in a git repository.", complaint)

    def build(self, example):
        """Builds the example with CMake and find_package, and returns the path of the program."""
        folder = self.folder / example
        run("cmake", "-S", self.prefix / "share/doc/nebgit/examples" / example, "-B", folder,
            f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_CXX_COMPILER={shutil.which(COMPILER)}")
        run("cmake", "--build", folder)
        return folder / example

    def test_host_built_with_cmake(self):
        host = self.build("log-host")
        self.expect_log(host)
        self.assertEqual(run(host, status=2), "usage: log-host FOLDER\n")

        plug_in = self.prefix / "lib/nebgit/NEBGit.so"
        plug_in.rename(plug_in.with_suffix(".away"))
        self.addCleanup(plug_in.with_suffix(".away").rename, plug_in)
        self.assertRegex(run(host, self.repository, status=1), "NEBGit.so\" could not be read")

    def test_host_built_with_pkg_config(self):
        search = {"PKG_CONFIG_PATH": str(self.prefix / "lib/pkgconfig")}
        flags = run("pkg-config", "--cflags", "--libs", "nebgit >= 1.0", **search).split()
        plug_in = run("pkg-config", "--variable=plugin", "nebgit", **search).strip()
        host = self.folder / "host"
        run(COMPILER, "-std=c++20", "-Wall", "-Wextra", "-Werror", f'-DNEBGIT_PLUGIN="{plug_in}"', "-o",
            host, self.prefix / "share/doc/nebgit/examples/log-host/main.cpp", *flags)
        self.expect_log(host, LD_LIBRARY_PATH=str(self.prefix / "lib"))

    def test_client_in_python(self):
        client = [sys.executable, SOURCE / "examples/client.py"]
        self.expect_log(*client, PATH=self.path)
        self.assertEqual(run(*client, self.repository, "2", PATH=self.path), self.log_of_git())

    def test_client_in_javascript(self):
        client = ["node", SOURCE / "examples/client.mjs"]
        self.expect_log(*client, PATH=self.path)
        self.assertEqual(run(*client, self.repository, "2", PATH=self.path), self.log_of_git())

    def test_package_of_another_major_version_is_not_taken(self):
        (self.folder / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.25)\nproject(test LANGUAGES CXX)\n"
            "find_package(NEBGit 2.0 REQUIRED)\n")
        complaint = run("cmake", "-S", self.folder, "-B", self.folder / "two",
                        f"-DCMAKE_PREFIX_PATH={self.prefix}", status=1)
        self.assertIn("compatible with requested version \"2.0\"", " ".join(complaint.split()))

    def test_code_of_the_guide(self):
        guide = self.build("guide")
        repository = self.folder / "guided"
        run("git", "init", "--quiet", "--initial-branch=main", repository)
        (repository / "hello.c").write_text("int main() { return 0; }\n")
        run("git", "add", ".", folder=repository)
        told = run(guide, repository)
        self.assertEqual(told, (SOURCE / "Tests/Package/guide.expected").read_text())
        self.assertEqual(run("git", "log", "--format=%s", folder=repository), "Say hello\n")
        self.assertIn("\"/nonexistent/git\"", run(guide, repository, "/nonexistent"))

    def test_guide_quotes_the_examples(self):
        # Where lines end and begin is the page's own affair.
        examples = ["".join(path.read_text().split()) for path in (SOURCE / "examples").rglob("*")
                    if path.is_file()]
        guide = (SOURCE / "docs/hosts.md").read_text()
        blocks = re.findall(r"^```(?:cpp|cmake)\n(.*?)^```$", guide, re.M | re.S)
        self.assertGreater(len(blocks), 8)
        for block in blocks:
            code = "".join(block.split())
            self.assertTrue(any(code in example for example in examples), f"no example holds\n{block}")


class DebianPackage(PackageTest):
    """Installed below a folder of its own, beside a copy of this machine's list of packages."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if not Path("/var/lib/dpkg/status").exists() or not shutil.which("dpkg-deb"):
            raise unittest.SkipTest("this is no Debian")
        # Files of the package belong to root, whoever installs them.
        cls.as_root = [] if os.geteuid() == 0 else ["fakeroot"]
        if cls.as_root and not shutil.which("fakeroot"):
            raise unittest.SkipTest("not root, and there is no fakeroot")
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-G", "DEB", "-B", cls.folder / "packages")
        [cls.package] = (cls.folder / "packages").glob("*.deb")
        cls.root = cls.folder / "root"
        cls.root.mkdir()
        cls.lists = cls.folder / "lists"
        (cls.lists / "info").mkdir(parents=True)
        (cls.lists / "updates").mkdir()
        (cls.lists / "info/format").write_text("1\n")
        shutil.copy("/var/lib/dpkg/status", cls.lists / "status")

    def dpkg(self, *words):
        # dpkg looks for programs of which it has no need here.
        path = f"{ENVIRONMENT['PATH']}:/usr/local/sbin:/usr/sbin:/sbin"
        return run(*self.as_root, "dpkg", f"--instdir={self.root}", f"--admindir={self.lists}",
                   "--force-script-chrootless", *words, PATH=path)

    def field(self, name):
        return run("dpkg-deb", "--field", self.package, name).strip()

    def test_is_installed_runs_and_is_removed(self):
        self.dpkg("--install", self.package)
        self.assertEqual(run("dpkg-query", f"--admindir={self.lists}", "--show",
                             "--showformat=${Status}", "nebgit"), "install ok installed")
        nebsc = self.root / "usr/bin/nebsc"
        self.assertIn("Grüße an alle", run(nebsc, "log", folder=self.repository))
        outcome = run("python3", SOURCE / "examples/client.py", self.repository,
                      PATH=f"{nebsc.parent}:{ENVIRONMENT['PATH']}")
        self.assertEqual(outcome, self.log_of_git())

        zsh = self.root / "usr/share/zsh"  # where Debian's zsh looks
        self.assertEqual(files_below(zsh), {"vendor-completions/_nebsc"})

        self.dpkg("--purge", "nebgit")
        self.assertEqual(sorted(self.root.iterdir()), [])

    def test_says_what_it_is_and_what_it_needs(self):
        self.assertEqual(self.field("Package"), "nebgit")
        self.assertEqual(self.field("Section"), "vcs")
        self.assertEqual(self.field("Architecture"), run("dpkg", "--print-architecture").strip())
        needs = self.field("Depends")
        for need in [r"\bgit \(>= 1:2\.31\)", r"\blibc6 \(>= ", r"\blibstdc\+\+6 \(>= "]:
            self.assertRegex(needs, need)
        self.assertNotIn("nebgit", needs)

        control = self.folder / "control"
        run("dpkg-deb", "--control", self.package, control)
        self.assertEqual({path.name for path in control.iterdir()},
                         {"control", "md5sums", "postinst", "postrm", "shlibs"})
        for script in ["postinst", "postrm"]:
            self.assertIn("ldconfig", (control / script).read_text())
        self.assertRegex((control / "shlibs").read_text(),
                         rf"^libNEBFoundation {contract_version()} nebgit \(>= \d\S*\)\n$")

    def test_its_files_belong_to_root_and_only_their_owner_writes(self):
        programs = set()
        for line in run("dpkg-deb", "--contents", self.package).splitlines():
            mode, owner, _, _, _, name = line.split(None, 5)
            self.assertEqual(owner, "root/root", line)
            if mode[0] == "-" and "x" in mode:
                programs.add(name)
            self.assertIn(mode, ["drwxr-xr-x", "-rwxr-xr-x", "-rw-r--r--", "lrwxrwxrwx"], line)
        self.assertEqual(programs, {"./usr/bin/nebsc"})


if __name__ == "__main__":
    BUILD = Path(sys.argv.pop(1)).resolve()
    unittest.main(verbosity=2)

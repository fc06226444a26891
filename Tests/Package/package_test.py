#!/usr/bin/env python3
"""Installs the build, moves the prefix, and uses it without the build folder.

Usage: package_test.py BUILD-FOLDER [CLASS-OR-TEST…]
"""
import os
import re
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

from support import (BUILD, COMPILER, ENVIRONMENT, SOURCE, PackageTest, build_setting, files_below, main,
                     major_version, project_version, run)

PRODUCTS = ["bin/nebsc", "lib/libNEBFoundation.so", "lib/nebgit/NEBGit.so"]

# Whether 'nebsc browse' is built, see Tools/browse/CMakeLists.txt.
HAS_PAGE = (BUILD / "bin/nebsc-browse").exists()

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
        self.assertEqual(installed - headers - documents - neovim, {
            "bin/nebsc",
            "lib/libNEBFoundation.so",
            f"lib/libNEBFoundation.so.{major_version()}",
            f"lib/libNEBFoundation.so.{project_version()}",
            "lib/nebgit/NEBGit.so",
            *(["lib/nebgit/nebsc-browse"] if HAS_PAGE else []),
            "lib/pkgconfig/nebgit.pc",
            "lib/cmake/NEBGit/NEBGitConfig.cmake",
            "lib/cmake/NEBGit/NEBGitConfigVersion.cmake",
            "lib/cmake/NEBGit/NEBGitTargets.cmake",
            f"lib/cmake/NEBGit/NEBGitTargets-{build_setting('CMAKE_BUILD_TYPE').lower()}.cmake",
            "share/man/man1/nebsc.1",
            "share/bash-completion/completions/nebsc",
            "share/zsh/site-functions/_nebsc",
            "share/fish/vendor_completions.d/nebsc.fish",
        })
        self.assertLessEqual({f"share/doc/nebgit/{name}" for name in [
            "README.md", "CONTRIBUTING.md", "LICENSE", "docs/hosts.md", "docs/server.md",
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
        for name in PRODUCTS:
            paths = re.findall(r"R(?:UN)?PATH\).*\[(.*)\]", run("readelf", "-dW", self.prefix / name))
            for path in ":".join(paths).split(":"):
                self.assertRegex(path, r"^(\$ORIGIN/.*)?$", name)

    def test_nebsc_finds_plug_in_and_library(self):
        nebsc = self.prefix / "bin/nebsc"
        self.assertIn(f"NEBGit {project_version()}\n", run(nebsc, "--version"))
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
            # Hosts may be compiled without exceptions.
            done = subprocess.run([COMPILER, "-std=c++20", "-fsyntax-only", "-fno-exceptions", "-Wall",
                                   "-Wextra", "-Wpedantic", "-Werror", f"-I{include}", "-x", "c++", "-"],
                                  input=source, text=True, capture_output=True, env=ENVIRONMENT)
            return done.stderr if done.returncode != 0 else ""

        with ThreadPoolExecutor(os.cpu_count()) as pool:
            failures = list(pool.map(failure_of, headers))
        self.assertEqual([failure for failure in failures if failure], [])

        umbrella = include / "NEBFoundation/NEBPlugIn.h"
        run(COMPILER, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Wpedantic", "-Werror",
            f"-I{include}", "-include", umbrella, "-x", "c++", "/dev/null")
        everything = run(COMPILER, "-std=c++20", "-MM", f"-I{include}", umbrella)
        self.assertEqual({os.path.relpath(path, include) for path in re.findall(r"/\S+\.h", everything)},
                         set(headers), "what NEBPlugIn.h does not bring is of no use to a host or a plug-in")

    def test_library_is_named_after_the_major_version(self):
        dynamic = run("readelf", "-dW", self.prefix / "lib/libNEBFoundation.so")
        name = re.search(r"SONAME\).*\[(.*)\]", dynamic).group(1)
        self.assertEqual(name, f"libNEBFoundation.so.{major_version()}")
        for user in ["bin/nebsc", "lib/nebgit/NEBGit.so"]:
            self.assertIn(f"[{name}]", run("readelf", "-dW", self.prefix / user))

    def test_plug_in_exports_what_it_documents_and_nothing_else(self):
        self.assertEqual({name for _, name in self.exports("lib/nebgit/NEBGit.so")}, {
            "NEBSourceControlDescribePlugIn", "NEBGitVersionString", "NEBGitVersionNumber"})

    def test_library_exports_its_own_names_alone(self):
        exports = self.exports("lib/libNEBFoundation.so")
        own = re.compile(r"(vtable for |typeinfo for |typeinfo name for |VTT for |guard variable for |"
                         r"virtual thunk to |non-virtual thunk to )?neb::")
        self.assertEqual([name for _, name in exports if not own.match(name)], [])
        self.assertTrue([name for _, name in exports if name.startswith("neb::NEBSourceControlPlugIn::load")])
        hidden = ["neb::ChildSession", "neb::CapturedStream"]  # the library's own
        self.assertEqual([name for _, name in exports if name.startswith(tuple(hidden))], [])

    def test_exported_symbols_are_those_of_the_symbols_file(self):
        library = self.prefix / "lib/libNEBFoundation.so"
        run(SOURCE / "scripts/symbols", library)
        # A library that lacks a symbol, and one that has a symbol too many.
        symbols = self.folder / "sources/debian/libnebgit1.symbols"
        for name in ["scripts/symbols", "debian/libnebgit1.symbols", "CMakeLists.txt"]:
            (self.folder / "sources" / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(SOURCE / name, self.folder / "sources" / name)
        text = symbols.read_text()
        changed = text.replace('"neb::NEBSourceControlPlugIn::loadFile(', '"neb::NEBSourceControlPlugIn::unloadFile(')
        self.assertNotEqual(changed, text)
        symbols.write_text(changed)
        done = subprocess.run([symbols.parents[1] / "scripts/symbols", library], text=True,
                              capture_output=True)
        self.assertEqual(done.returncode, 1)
        self.assertRegex(done.stdout, r"^no longer exported: neb::NEBSourceControlPlugIn::unloadFile\(.*\n"
                                      r"new: neb::NEBSourceControlPlugIn::loadFile\(.*\n$")
        run(symbols.parents[1] / "scripts/symbols", "--write", library)
        self.assertEqual(symbols.read_text(), text)

    def test_products_are_hardened(self):
        # Checked functions of the C library need the optimizer.
        without = ["--nofortify"] if build_setting("CMAKE_BUILD_TYPE") == "Debug" else []
        check = SOURCE / "scripts/hardening"
        run(check, *without, *[self.prefix / name for name in PRODUCTS])
        self.assertIn("no shadow stack", run(check, "/bin/true", status=1))
        for name in PRODUCTS:
            dynamic = run("readelf", "-dlW", self.prefix / name)
            self.assertRegex(dynamic, r"FLAGS_1.*NOW", name)
            self.assertRegex(dynamic, r"GNU_STACK .* RW ", name)

    def test_uninstall_leaves_nothing(self):
        prefix = self.folder / "short lived"
        run("cmake", "--install", BUILD, "--prefix", prefix)
        build = self.folder / "build"
        build.mkdir()
        # The lists in the build folder are of whichever test was last.
        files = sorted(str(prefix / name) for name in files_below(prefix))
        (build / "install_manifest.txt").write_text("\n".join(files))
        (build / "install_prefix.txt").write_text(str(prefix))
        other = prefix / "share/doc/nebgit/of the user"
        other.write_text("mine")
        script = SOURCE / "Packaging/Uninstall.cmake"
        run("cmake", "-P", script, folder=build)
        self.assertEqual(files_below(prefix), {"share/doc/nebgit/of the user"})
        self.assertFalse((prefix / "include/NEBGit").exists())
        self.assertTrue((prefix / "include").exists(), "a folder that others may use")
        complaint = run("cmake", "-P", script, folder=build, status=1)
        self.assertIn("'cmake --install' has not run", " ".join(complaint.split()))
        self.assertIn(str(script), run("ninja", "-C", BUILD, "-t", "commands", "uninstall"))

    def exports(self, library):
        lines = run("nm", "--dynamic", "--defined-only", "--demangle", self.prefix / library)
        return [tuple(line.split(" ", 2)[1:]) for line in lines.splitlines()]


class SourceArchive(PackageTest):
    """scripts/package builds all of it; this only configures it, and compiles a file."""

    def test_is_complete_and_needs_no_network(self):
        run("cpack", "--config", BUILD / "CPackSourceConfig.cmake", "-B", self.folder / "archive")
        name = f"nebgit-{project_version()}"
        run("tar", "-xzf", self.folder / "archive" / f"{name}.tar.gz", "-C", self.folder)
        if (SOURCE / ".git").exists():
            tracked = run("git", "ls-files", "-z", folder=SOURCE).split("\0")[:-1]
            missing = {file for file in tracked if (SOURCE / file).exists()} - files_below(self.folder / name)
            self.assertEqual(missing, set())
        self.assertFalse((self.folder / name / "build").exists())
        self.assertFalse((self.folder / name / ".git").exists())

        offline = ["unshare", "--net"] if os.geteuid() == 0 else []
        build = self.folder / "from archive"
        run(*offline, "cmake", "-S", self.folder / name, "-B", build, "-G", "Ninja", "-DNEB_BUILD_TESTS=OFF",
            f"-DCMAKE_CXX_COMPILER={shutil.which(COMPILER)}")
        run(*offline, "ninja", "-C", build, "Host/CMakeFiles/NEBFoundation.dir/Platform/ErrnoText.cpp.o")

    def test_leaves_out_the_page_if_the_library_for_http_does_not_fit(self):
        (self.folder / "cpp-httplib.pc").write_text("Name: cpp-httplib\nDescription: -\nVersion: 0.41.0\n")
        build = self.folder / "without the page"
        output = run("sh", "-c", 'exec cmake "$@" 2>&1', "sh", "-S", SOURCE, "-B", build, "-G", "Ninja",
                     "-DNEB_BUILD_TESTS=OFF", f"-DCMAKE_CXX_COMPILER={shutil.which(COMPILER)}",
                     PKG_CONFIG_PATH=str(self.folder))
        self.assertIn("'nebsc browse' is left out: it needs cpp-httplib 0.11 or 0.18, because it overrides"
                      " functions that other versions declare differently or do not call; found: 0.41.0",
                      " ".join(output.split()))
        targets = run("ninja", "-C", build, "-t", "targets", "all")
        self.assertIn("\nnebsc:", targets)
        self.assertNotIn("nebsc-browse:", targets)


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

    def build(self, example, result=None):
        """Builds the example with CMake and find_package, and returns the path of the result."""
        folder = self.folder / example
        run("cmake", "-S", self.prefix / "share/doc/nebgit/examples" / example, "-B", folder,
            f"-DCMAKE_PREFIX_PATH={self.prefix}", f"-DCMAKE_CXX_COMPILER={shutil.which(COMPILER)}")
        run("cmake", "--build", folder)
        return folder / (result or example)

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
        for guide in ["docs/hosts.md", "docs/plug-ins.md"]:
            blocks = re.findall(r"^```(?:cpp|cmake)\n(.*?)^```$", (SOURCE / guide).read_text(), re.M | re.S)
            self.assertGreater(len(blocks), 8)
            for block in blocks:
                code = "".join(block.split())
                self.assertTrue(any(code in example for example in examples), f"no example holds\n{block}")

    def test_plug_in_for_another_program(self):
        plug_in = self.build("mercurial-plug-in", "mercurial.so")
        repository = self.folder / "of-hg"
        run("hg", "init", repository)
        (repository / "hello.txt").write_text("hello\n")
        nebsc = [self.prefix / "bin/nebsc", "--plugin", plug_in]
        run(*nebsc, "add", "--all", folder=repository)
        run(*nebsc, "commit", "-m", "Say hello", folder=repository, HGUSER="Ann Example <ann@example.org>")
        self.assertEqual(run("hg", "log", "--template={desc} {author}", folder=repository),
                         "Say hello Ann Example <ann@example.org>")
        self.assertIn("  Ann Example  Say hello\n", run(*nebsc, "log", folder=repository))
        exports = run("nm", "--dynamic", "--defined-only", "--format=posix", plug_in)
        strong = {line.split()[0] for line in exports.splitlines() if line.split()[1] == "T"}
        self.assertEqual(strong, {"NEBSourceControlDescribePlugIn"})


if __name__ == "__main__":
    main()

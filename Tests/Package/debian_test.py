#!/usr/bin/env python3
"""Packages the build for Debian, installs the packages with apt, upgrades and purges them.

Usage: debian_test.py BUILD-FOLDER [CLASS-OR-TEST…]

The packages are those of debian/, with the programs of the build folder instead of newly built ones.
"""
import os
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

from support import BUILD, SOURCE, PackageTest, build_setting, main, run

VERSION = "1.0"
FORMER = "1.0~rc1"
LIBRARIES = f"usr/{build_setting('CMAKE_INSTALL_LIBDIR')}"
NAMES = ["elpa-nebgit", "libnebgit-dev", "libnebgit1", "nebgit", "nebgit-browse", "neovim-nebgit"]
# Findings that come from the build folder: its libraries are not in the folder of an architecture.
LINTIAN_EXCEPTIONS = ["arch-dependent-file-not-in-arch-specific-directory", "custom-library-search-path",
                      "pkg-config-unavailable-for-cross-compilation", "hardening-no-fortify-functions"]


def copy_sources(folder):
    """Copies the sources, as they are now, without what is built from them."""
    shutil.copytree(SOURCE, folder, symlinks=True,
                    ignore=shutil.ignore_patterns("build", ".git", "__pycache__"))
    return folder


def make_packages(folder, **variables):
    """Packages the build in the folder, and returns the paths of the packages by their names."""
    sources = copy_sources(folder / "sources")
    run("debian/rules", "binary", folder=sources, NEB_BUILD=str(BUILD), **variables,
        DEB_BUILD_OPTIONS="noautodbgsym", DPKG_DEB_COMPRESSOR_TYPE="gzip", DPKG_DEB_COMPRESSOR_LEVEL="1")
    return {path.name.partition("_")[0]: path for path in folder.glob("*.deb")}


class Debian(PackageTest):
    """With the packages by their names."""

    packages = {}

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if not shutil.which("dh_elpa"):
            raise unittest.SkipTest("dh-elpa is not installed; this is no Debian")
        if not (BUILD / "bin/nebsc-browse").exists():
            raise unittest.SkipTest("nebsc-browse is not built, which is a package of its own")
        if not cls.packages:
            folder = Path(tempfile.mkdtemp(prefix="nebgit-debian-"))
            unittest.addModuleCleanup(shutil.rmtree, folder)
            cls.packages.update(make_packages(folder))


class Packages(Debian):
    def field(self, package, name):
        return run("dpkg-deb", "--field", self.packages[package], name).strip()

    def contents(self, package):
        """The files of the package, with their modes."""
        lines = run("dpkg-deb", "--contents", self.packages[package]).splitlines()
        files = {}
        for line in lines:
            mode, owner, _, _, _, name = line.split(None, 5)
            self.assertEqual(owner, "root/root", line)
            if mode[0] != "d":
                files[name.partition(" -> ")[0].removeprefix("./")] = mode
        return files

    def control(self, package):
        folder = self.folder / f"control-of-{package}"
        run("dpkg-deb", "--control", self.packages[package], folder)
        return folder

    def test_packages_are_complete(self):
        self.assertEqual(sorted(self.packages), NAMES)

    def test_each_package_has_its_files(self):
        for package, expected in {
            "nebgit": {"usr/bin/nebsc", f"{LIBRARIES}/nebgit/NEBGit.so", "usr/share/man/man1/nebsc.1.gz",
                       "usr/share/bash-completion/completions/nebsc",
                       "usr/share/fish/vendor_completions.d/nebsc.fish",
                       "usr/share/zsh/vendor-completions/_nebsc"},
            "nebgit-browse": {f"{LIBRARIES}/nebgit/nebsc-browse"},
            "libnebgit1": {f"{LIBRARIES}/libNEBFoundation.so.1", f"{LIBRARIES}/libNEBFoundation.so.1.0",
                           "usr/share/lintian/overrides/libnebgit1"},
        }.items():
            files = {name for name in self.contents(package) if not name.startswith("usr/share/doc/")}
            self.assertEqual(files, expected)
        for package, expected in {
            "nebgit": {"usr/share/doc/nebgit/docs/hosts.md", "usr/share/doc/nebgit/README.md",
                       "usr/share/doc/nebgit/examples/log-host/main.cpp"},
            "libnebgit-dev": {f"{LIBRARIES}/libNEBFoundation.so", f"{LIBRARIES}/pkgconfig/nebgit.pc",
                              f"{LIBRARIES}/cmake/NEBGit/NEBGitConfig.cmake",
                              "usr/share/doc/libnebgit-dev/docs", "usr/share/doc/libnebgit-dev/examples",
                              "usr/include/NEBGit/NEBFoundation/NEBFoundation.h"},
            "neovim-nebgit": {"usr/share/nvim/site/pack/nebgit/start/nebgit/doc/nebgit.txt"},
            "elpa-nebgit": {f"usr/share/emacs/site-lisp/elpa-src/nebgit-{VERSION}/vc-nebgit.el"},
        }.items():
            self.assertLessEqual(expected, self.contents(package).keys())

    def test_only_programs_are_executable_and_only_root_writes(self):
        programs = set()
        for package in NAMES:
            for name, mode in self.contents(package).items():
                self.assertIn(mode, ["-rwxr-xr-x", "-rw-r--r--", "lrwxrwxrwx"], name)
                if mode == "-rwxr-xr-x" and "/emacsen-common/" not in name:
                    programs.add(name)
        self.assertEqual(programs, {"usr/bin/nebsc", f"{LIBRARIES}/nebgit/nebsc-browse"})

    def test_dependencies(self):
        for need in [r"\bgit \(>= 1:2\.31\)", r"\blibc6 \(>= ", r"\blibstdc\+\+6 \(>= ",
                     r"\blibnebgit1 \(>= 1\.0\)"]:
            self.assertRegex(self.field("nebgit", "Depends"), need)
        self.assertNotIn("nebgit", self.field("libnebgit1", "Depends"))
        self.assertEqual(self.field("libnebgit-dev", "Depends"),
                         f"libnebgit1 (= {VERSION}), nebgit (= {VERSION})")
        self.assertEqual(self.field("libnebgit1", "Multi-Arch"), "same")

    def test_those_who_link_the_library_depend_on_it(self):
        control = self.control("libnebgit1")
        self.assertIn("activate-noawait ldconfig\n", (control / "triggers").read_text())
        self.assertEqual((control / "shlibs").read_text(), "libNEBFoundation 1 libnebgit1 (>= 1.0)\n")
        self.assertRegex((control / "symbols").read_text(), r"(?m)^ _ZN3neb\w+@Base 1\.0$")

    def test_lintian_is_content(self):
        sources = copy_sources(self.folder / "sources/nebgit")
        run("dpkg-source", "--compression=gzip", "--build", sources, folder=sources.parent)
        run("lintian", "--fail-on", "error,warning", "--suppress-tags", ",".join(LINTIAN_EXCEPTIONS),
            f"{sources.parent}/nebgit_{VERSION}.dsc", *self.packages.values())

    def test_packaging_again_elsewhere_gives_the_same(self):
        folder = self.folder / "another-place"
        folder.mkdir()
        mask = os.umask(0o077)
        self.addCleanup(os.umask, mask)
        again = make_packages(folder, TZ="Pacific/Auckland", LC_ALL="C")
        for name, package in self.packages.items():
            self.assertEqual(package.read_bytes(), again[name].read_bytes(), name)

    def object(self, name, **variables):
        """Compiles a file with the variables of debian/rules in a copy of the sources, and returns the object."""
        sources = copy_sources(self.folder / name)
        command = (f"ccache g++ $$(dpkg-buildflags --get CXXFLAGS) -std=c++20 -I{sources}/Host"
                   f" -c {sources}/Host/Platform/ErrnoText.cpp -o object.o")
        run("make", "-f", "debian/rules", f"--eval=object.o: ; {command}", "object.o", folder=sources, **variables)
        return (sources / "object.o").read_bytes()

    def test_compiling_with_ccache_gives_the_same(self):
        if not shutil.which("ccache"):
            self.skipTest("ccache is not installed")
        with_ccache = self.object("with-ccache", CCACHE_DIR=str(self.folder / "ccache"),
                                  CCACHE_BASEDIR=str(self.folder))
        self.assertEqual(with_ccache, self.object("without-ccache", CCACHE_DISABLE="1"))


class FreshSystem:
    """This machine's files with a layer of their own for what is written, in a mount namespace."""

    def __init__(self, folder):
        layer = folder / "layer"
        layer.mkdir()
        mounts = ('mount -t tmpfs layer "$0" && cd "$0" && mkdir upper work root'
                  ' && mount -t overlay -o lowerdir=/,upperdir=upper,workdir=work root root'
                  ' && mount -t tmpfs tmp root/tmp && mount --rbind /dev root/dev'
                  ' && mount -t proc proc root/proc && echo ready && exec cat')
        self.process = subprocess.Popen(
            ["unshare", "--mount", "--propagation", "private", "sh", "-c", mounts, str(layer)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.root = layer / "root"
        self.failure = self.process.stdout.readline().strip()
        self.failure = "" if self.failure == "ready" else self.failure or "no mount namespace"

    def run(self, *command, **arguments):
        return run("nsenter", f"--mount=/proc/{self.process.pid}/ns/mnt", "chroot", self.root, "env", "-i",
                   "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "HOME=/tmp", "LC_ALL=C.UTF-8",
                   "DEBIAN_FRONTEND=noninteractive", *command, **arguments)

    def copy(self, path, name):
        """Copies the file to /tmp/NAME there."""
        run("nsenter", f"--mount=/proc/{self.process.pid}/ns/mnt", "cp", "-r", path, self.root / "tmp" / name)

    def close(self):
        self.process.stdin.close()
        self.process.wait(10)
        self.process.stdout.close()


APT = ["apt-get", "-o", "APT::Sandbox::User=root", "-o", "DPkg::Options::=--force-unsafe-io", "--yes",
       "--no-install-recommends", "-qq"]


class Apt(Debian):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        if os.geteuid() != 0:
            raise unittest.SkipTest("only root can install packages")
        cls.system = FreshSystem(cls.folder)
        cls.addClassCleanup(cls.system.close)
        if cls.system.failure:
            raise unittest.SkipTest(f"cannot mount: {cls.system.failure}")
        for folder in ["new", "old"]:
            (cls.folder / folder).mkdir()
        for package in cls.packages.values():
            shutil.copy(package, cls.folder / "new")
            cls.rename_version(package, cls.folder / "old")
        for folder in ["new", "old"]:
            cls.system.copy(cls.folder / folder, folder)
        cls.system.copy(SOURCE / "debian/tests/host", "host-test")

    @classmethod
    def rename_version(cls, package, folder):
        """Writes the package to the folder as one of the former version."""
        contents = folder / "contents"
        run("dpkg-deb", "--raw-extract", package, contents)
        control = contents / "DEBIAN/control"
        control.write_text(re.sub(r"(?m)(^Version: |(?:nebgit\S*) \([>=]+ )1\.0", rf"\g<1>{FORMER}",
                                  control.read_text()))
        run("dpkg-deb", "-Zgzip", "-z1", "--build", contents, folder)
        shutil.rmtree(contents)

    def installed(self):
        """The versions of the packages that are installed."""
        lines = self.system.run("dpkg-query", "--show", "--showformat=${Package} ${Version} ${Status}\n")
        rows = [line.split(" ", 2) for line in lines.splitlines()]
        return {name: version for name, version, status in rows if name in NAMES and "ok installed" in status}

    def files(self):
        """The files with a name of this project, outside of /tmp."""
        found = self.system.run("find", "/usr", "/etc", "/var/lib", "-xdev",
                                "-iregex", r".*/[^/]*\(nebgit\|nebsc\|nebfoundation\)[^/]*")
        return set(found.split())

    def test_install_use_upgrade_and_purge(self):
        self.system.run("sh", "-c", f"dpkg --purge {' '.join(NAMES)} 2>&1")  # what this machine has
        before = self.files()
        self.system.run("sh", "-c", f"{' '.join(APT)} install /tmp/old/*.deb 2>&1")
        self.assertEqual(self.installed(), dict.fromkeys(NAMES, FORMER))
        self.assertIn("libNEBFoundation.so.1 ", self.system.run("ldconfig", "--print-cache"))
        self.system.run("mkdir", "/tmp/kept")
        self.system.run("AUTOPKGTEST_TMP=/tmp/kept", "sh", "/tmp/host-test")

        self.system.run("sh", "-c", f"{' '.join(APT)} install /tmp/new/*.deb 2>&1")
        self.assertEqual(self.installed(), dict.fromkeys(NAMES, VERSION))
        self.assertEqual(self.system.run("dpkg", "--verify", *NAMES), "")
        host = "/tmp/kept/with-pkg-config"  # linked with the former library
        self.assertIn("Say hello", self.system.run(host, "/tmp/kept/repository"))
        self.editors_load_their_integration()

        self.system.run("sh", "-c", f"{' '.join(APT)} purge {' '.join(NAMES)} 2>&1")
        self.assertEqual(self.installed(), {})
        self.assertEqual(self.files() - before, set())
        self.assertNotIn("libNEBFoundation", self.system.run("ldconfig", "--print-cache"))
        self.assertEqual(self.system.run("dpkg", "--audit"), "")

    def editors_load_their_integration(self):
        loaded = self.system.run("nvim", "--headless", "-i", "NONE", "-n", "-c", "help nebgit", "-c",
                                 "lua io.stdout:write(type(require('nebgit.server')))", "-c", "qall!")
        self.assertEqual(loaded, "table")
        loaded = self.system.run(
            "emacs", "--batch", "--funcall", "package-initialize", "--eval",
            "(progn (require 'vc-nebgit) (princ (list (commandp 'nebgit-status) (locate-library \"nebgit\"))))")
        self.assertRegex(loaded, rf"^\(t \S+/elpa/nebgit-{VERSION}/nebgit\.elc\)$")


if __name__ == "__main__":
    main()

// InstalledGit.h - the version of the git that the tests run.
#pragma once

namespace neb::test {

/// Returns whether the installed git is version 2.MINOR or newer.
[[nodiscard]] bool isGitSince(int minor);

}  // namespace neb::test

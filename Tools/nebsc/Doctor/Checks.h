// Checks.h - the checks of `nebsc doctor`. Each one is in its own source file and adds its findings
// to the examination.
#pragma once

#include "Doctor/Examination.h"
#include "Session/PlugInFile.h"

namespace neb::nebsc {

/// The advice on lost objects. A fetch without --refetch skips objects that the local references
/// should reach.
inline constexpr const char* adviceOnLostObjects =
    "'git fetch --refetch REMOTE' (git 2.36 or newer) fetches them again from any clone that has "
    "them.";

/// Checks git, its version and its support for HTTPS. Sets `hasGit` and `programs`.
void checkGit(Examination& examination);
void checkPlugIn(Examination& examination, const PlugInFile& plugIn);
/// Notes what the system lacks that nebsc uses beyond POSIX.
void checkSystem(Examination& examination);
/// Checks that the folder is in a repository that git can read. Sets `repository`.
void checkRepository(Examination& examination);

// ---- repository

/// Finds orphaned lock files.
void checkLocks(Examination& examination);
void checkIndex(Examination& examination);
/// Returns the advice on an index that git cannot read.
[[nodiscard]] std::string adviceOnDamagedIndex(Examination& examination);
/// Checks that every reference names an existing object.
void checkReferences(Examination& examination);
/// Checks that the HEAD commit and its root tree are readable.
void checkHEADCommit(Examination& examination);
/// Checks the shallow file, alternates and packs.
void checkObjects(Examination& examination);
/// Finds linked worktrees whose folder is missing.
void checkWorktrees(Examination& examination);
/// Notes merges, rebases and similar operations in progress.
void checkUnfinishedWork(Examination& examination);
void checkHooks(Examination& examination);
/// Runs git fsck on all objects. Slow, so only `--full` runs it.
void checkIntegrity(Examination& examination);

/// Finds what makes git slow in the repository, and measures it for at most two seconds. Requires
/// `settings`.
void checkSpeed(Examination& examination);

// ---- user

/// Notes settings that nebsc overrides. Sets `settings`.
void checkSettings(Examination& examination);
/// Checks the author and committer of commits.
void checkIdentity(Examination& examination);
/// Notes environment variables that are not passed on to git.
void checkEnvironment(Examination& examination);
/// Checks credential helpers, the ssh agent and askpass programs.
void checkCredentials(Examination& examination);
void checkSubversion(Examination& examination);

}  // namespace neb::nebsc

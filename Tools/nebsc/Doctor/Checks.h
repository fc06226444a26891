// Checks.h - the checks of `nebsc doctor`, each in a source file of its own. Each adds what it
// finds to the examination.
#pragma once

#include "Doctor/Examination.h"

namespace neb::nebsc {

/// The advice on lost objects. A fetch without --refetch brings none that the local references
/// should reach.
inline constexpr const char* adviceOnLostObjects =
    "'git fetch --refetch REMOTE' (git 2.36 or newer) fetches them again, REMOTE being any clone "
    "that has them.";

/// git itself, its version and its programs for HTTPS. Sets `hasGit` and `programs`.
void checkGit(Examination& examination);
void checkPlugIn(Examination& examination, const PlugInFile& plugIn);
/// Whether there is a repository around the folder that git can read. Sets `repository`.
void checkRepository(Examination& examination);

// ---- of a repository

/// Lock files that were left behind.
void checkLocks(Examination& examination);
void checkIndex(Examination& examination);
/// Returns the advice on an index that git cannot read.
[[nodiscard]] std::string adviceOnDamagedIndex(Examination& examination);
/// Whether every reference names an object that exists.
void checkReferences(Examination& examination);
/// Whether the HEAD commit and its root tree can be read.
void checkHEADCommit(Examination& examination);
/// The shallow file, alternates and packs.
void checkObjects(Examination& examination);
/// Linked worktrees whose folder is gone.
void checkWorktrees(Examination& examination);
/// A merge, a rebase and the like that is under way.
void checkUnfinishedWork(Examination& examination);
void checkHooks(Examination& examination);
/// Everything, by git fsck: this may take long. Not a part of the common examination.
void checkIntegrity(Examination& examination);

// ---- of the user

/// Settings that do not count. Sets `settings`.
void checkSettings(Examination& examination);
/// The name and address of commits.
void checkIdentity(Examination& examination);
/// Variables that do not reach git.
void checkEnvironment(Examination& examination);
/// Credential helpers, the ssh agent, askpass.
void checkCredentials(Examination& examination);
void checkSubversion(Examination& examination);

}  // namespace neb::nebsc

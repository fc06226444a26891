// NEBSourceControlKeys.h - keys of options, of results and of the user info of errors; symbolic
// revision names; error codes. It includes the keys of the request types from 1000 on.
//
// The text of each constant is its identifier. This makes requests readable as JSON, and prevents
// that a branch has the name of a symbolic revision. All constants live as long as the process and
// may be used by any thread. docs/requests.md describes each type of request with an example.
//
//     request->setOptions(NEBDictionary{{NEBSourceControlRequestOptionLogOutputLimit, 50}});
//     …
//     record.text(NEBSourceControlOperationAuthorKey);   // "Ann Example"
#pragma once

#include <array>
#include <cstdint>

#include "NEBFoundation/NEBConstant.h"
// IWYU pragma: begin_exports
#include "NEBFoundation/NEBSourceControlChangeOptions.h"
#include "NEBFoundation/NEBSourceControlExtendedKeys.h"
#include "NEBFoundation/NEBSourceControlExtendedOptions.h"
// IWYU pragma: end_exports

namespace neb {

// Option keys. The comment states the kind of the value, what it means, and which types of request
// use it; other types ignore it. Every option may be absent. Where a boolean is expected, the value
// counts as NEBValue::boolValue() says; absent means false.

/// String: the path of the git directory, may start with "~"; the argument of `--git-dir`. Absent:
/// git looks for it from the source tree's location upwards. Used by add, add files, commit, update
/// by fast-forward, log, export files, export, export tree, list remotes, create repository, blame,
/// diff, list remote branches, add remote, remove remote and tracking branch name. For create
/// repository it is the path of the new bare repository.
inline constexpr NEBConstant NEBSourceControlRequestOptionRepositoryPath{
    "NEBSourceControlRequestOptionRepositoryPath"};
/// String: the path of the working copy, the argument of `--work-tree`. Absent: git finds it. Used
/// by the same types as NEBSourceControlRequestOptionRepositoryPath.
inline constexpr NEBConstant NEBSourceControlRequestOptionWorkingCopyPath{
    "NEBSourceControlRequestOptionWorkingCopyPath"};
/// Non-empty string: the name of a branch. In a push and in tracking branch name the local branch,
/// in an update by fast-forward and in track remote branch the branch of the remote, in a log the
/// branch to list, in a clone the branch to check out. In a list it replaces "tree" in the revision
/// argument, and git fails.
inline constexpr NEBConstant NEBSourceControlRequestOptionBranch{
    "NEBSourceControlRequestOptionBranch"};
/// Non-empty string: the name of a remote, or a URL or path instead. Used by update by
/// fast-forward, push, fetch, and, as a name only, by track remote branch.
inline constexpr NEBConstant NEBSourceControlRequestOptionRemoteName{
    "NEBSourceControlRequestOptionRemoteName"};
/// Boolean: delete a branch even if it has commits that are not merged. Used by delete branch.
inline constexpr NEBConstant NEBSourceControlRequestOptionForce{
    "NEBSourceControlRequestOptionForce"};
/// String: the revision at which a new branch starts. Absent: HEAD. Used by create branch.
inline constexpr NEBConstant NEBSourceControlRequestOptionSourceLocation{
    "NEBSourceControlRequestOptionSourceLocation"};
/// String: the commit message. Absent: git uses the message of an unfinished merge, or fails. Used
/// by commit.
inline constexpr NEBConstant NEBSourceControlRequestOptionMessage{
    "NEBSourceControlRequestOptionMessage"};
/// Boolean: commit even if nothing is staged. Used by commit.
inline constexpr NEBConstant NEBSourceControlRequestOptionAllowEmptyCommit{
    "NEBSourceControlRequestOptionAllowEmptyCommit"};
/// Integer: the maximum number of commits in the result. Absent: no maximum. Used by log.
inline constexpr NEBConstant NEBSourceControlRequestOptionLogOutputLimit{
    "NEBSourceControlRequestOptionLogOutputLimit"};
/// Boolean: list the files that each commit changed. Used by log.
inline constexpr NEBConstant NEBSourceControlRequestOptionLogOutputFilesChanged{
    "NEBSourceControlRequestOptionLogOutputFilesChanged"};
/// Boolean: return paths and states instead of a patch. Used by diff.
inline constexpr NEBConstant NEBSourceControlRequestOptionDiffFileNameAndStatusOnly{
    "NEBSourceControlRequestOptionDiffFileNameAndStatusOnly"};
/// Boolean: compare the end with the common ancestor of start and end, so that only changes of the
/// end appear. Used by diff.
inline constexpr NEBConstant NEBSourceControlRequestOptionDiffFromCommonAncestor{
    "NEBSourceControlRequestOptionDiffFromCommonAncestor"};
/// Boolean: pull from NEBSourceControlRequestOptionRemoteName, and fail unless a fast-forward is
/// possible. Otherwise an update merges. Used by update.
inline constexpr NEBConstant NEBSourceControlRequestOptionPullByFastForwarding{
    "NEBSourceControlRequestOptionPullByFastForwarding"};

/// All option keys, in the order above. A host that accepts requests from outside can refuse keys
/// that are not among them.
inline constexpr std::array NEBSourceControlAllRequestOptions{
    NEBSourceControlRequestOptionRepositoryPath,
    NEBSourceControlRequestOptionWorkingCopyPath,
    NEBSourceControlRequestOptionBranch,
    NEBSourceControlRequestOptionRemoteName,
    NEBSourceControlRequestOptionForce,
    NEBSourceControlRequestOptionSourceLocation,
    NEBSourceControlRequestOptionMessage,
    NEBSourceControlRequestOptionAllowEmptyCommit,
    NEBSourceControlRequestOptionLogOutputLimit,
    NEBSourceControlRequestOptionLogOutputFilesChanged,
    NEBSourceControlRequestOptionDiffFileNameAndStatusOnly,
    NEBSourceControlRequestOptionDiffFromCommonAncestor,
    NEBSourceControlRequestOptionPullByFastForwarding,
    NEBSourceControlRequestOptionFetchMissingObjects,
    NEBSourceControlRequestOptionUntrackedFiles,
    NEBSourceControlRequestOptionIgnoredFiles,
    NEBSourceControlRequestOptionStartingRevisions,
    NEBSourceControlRequestOptionExcludedRevisions,
    NEBSourceControlRequestOptionAllReferences,
    NEBSourceControlRequestOptionOrder,
    NEBSourceControlRequestOptionReverse,
    NEBSourceControlRequestOptionFirstParent,
    NEBSourceControlRequestOptionRewriteParents,
    NEBSourceControlRequestOptionFollow,
    NEBSourceControlRequestOptionSearchMessage,
    NEBSourceControlRequestOptionSearchAuthor,
    NEBSourceControlRequestOptionSearchContent,
    NEBSourceControlRequestOptionIgnoreCase,
    NEBSourceControlRequestOptionSince,
    NEBSourceControlRequestOptionUntil,
    NEBSourceControlRequestOptionLineCounts,
    NEBSourceControlRequestOptionStaged,
    NEBSourceControlRequestOptionContextLines,
    NEBSourceControlRequestOptionIgnoreWhiteSpace,
    NEBSourceControlRequestOptionFirstLine,
    NEBSourceControlRequestOptionLastLine,
    NEBSourceControlRequestOptionContent,
    NEBSourceControlRequestOptionDetectMoves,
    NEBSourceControlRequestOptionDetectCopies,
    NEBSourceControlRequestOptionStage,
    NEBSourceControlRequestOptionApplyFilters,
    NEBSourceControlRequestOptionRecursive,
    NEBSourceControlRequestOptionOmitSizes,
    NEBSourceControlRequestOptionSettingNames,
    NEBSourceControlRequestOptionAction,
    NEBSourceControlRequestOptionDryRun,
    NEBSourceControlRequestOptionPatch,
    NEBSourceControlRequestOptionIncludeUntracked,
    NEBSourceControlRequestOptionAmend,
    NEBSourceControlRequestOptionAll,
    NEBSourceControlRequestOptionAuthor,
    NEBSourceControlRequestOptionSignOff,
    NEBSourceControlRequestOptionKeepIndex,
    NEBSourceControlRequestOptionRestoreIndex,
    NEBSourceControlRequestOptionSetUpstream,
    NEBSourceControlRequestOptionForceWithLease,
    NEBSourceControlRequestOptionTags,
    NEBSourceControlRequestOptionStrategy,
    NEBSourceControlRequestOptionResetMode,
    NEBSourceControlRequestOptionMainline,
    NEBSourceControlRequestOptionInitialize,
    NEBSourceControlRequestOptionFollowBranch,
    NEBSourceControlRequestOptionCreateBranch,
    NEBSourceControlRequestOptionValue,
    NEBSourceControlRequestOptionScope,
};

// Keys of the records of a result. The comment states the kind of the value, what it means, and
// which types of request return it. A record has no entry for a value that git did not print. Text
// is UTF-8.

/// Status: a string, the absolute path of the file, after a rename the new one. Diff with file
/// names: the same, except that after a rename or copy it is the part of git's line after the
/// letter. Export files and export: an LOMFilePath, the path that was written.
inline constexpr NEBConstant NEBSourceControlOperationPathKey{"NEBSourceControlOperationPathKey"};
/// Integer, a NEBSourceControlStatus: the state of the file. Returned by status, and by diff with
/// file names.
inline constexpr NEBConstant NEBSourceControlOperationWCStatusKey{
    "NEBSourceControlOperationWCStatusKey"};
/// String: the name of a branch (list branches, current branch, list remote branches, tracking
/// branch name) or, without folders, of an entry of a tree (list). If no branch is checked out,
/// git's description of HEAD in parentheses.
inline constexpr NEBConstant NEBSourceControlOperationNameKey{"NEBSourceControlOperationNameKey"};
/// Boolean: true for a file, false for a folder or a submodule. Returned by list.
inline constexpr NEBConstant NEBSourceControlOperationIsLeafKey{
    "NEBSourceControlOperationIsLeafKey"};
/// String: the id of a commit in hexadecimal, at most 12 digits. Returned by log, blame, commit,
/// list remote branches and merge base. Of an uncommitted line zeros; of the first commit of a
/// history, commit returns "(root-commit" instead, which is what git prints there.
inline constexpr NEBConstant NEBSourceControlOperationRevisionKey{
    "NEBSourceControlOperationRevisionKey"};
/// String: the name of the author. Returned by log (after .mailmap) and blame.
inline constexpr NEBConstant NEBSourceControlOperationAuthorKey{
    "NEBSourceControlOperationAuthorKey"};
/// String: the e-mail address of the author, without brackets, after .mailmap. Returned by log.
inline constexpr NEBConstant NEBSourceControlOperationAuthorEmailKey{
    "NEBSourceControlOperationAuthorEmailKey"};
/// Date, in seconds: when the author made the change. Returned by log and blame.
inline constexpr NEBConstant NEBSourceControlOperationDateKey{"NEBSourceControlOperationDateKey"};
/// String: the whole commit message, without line ends at either end. Returned by log.
inline constexpr NEBConstant NEBSourceControlOperationMessageKey{
    "NEBSourceControlOperationMessageKey"};
/// Dictionary from path (string, relative to the top of the repository; of a rename the old one) to
/// integer, a NEBSourceControlStatus. Returned by log with
/// NEBSourceControlRequestOptionLogOutputFilesChanged, unless the commit changed no file.
inline constexpr NEBConstant NEBSourceControlOperationFilesKey{"NEBSourceControlOperationFilesKey"};
/// String: the number of a line, in decimal, from "1". Returned by blame.
inline constexpr NEBConstant NEBSourceControlOperationLineNumberKey{
    "NEBSourceControlOperationLineNumberKey"};
/// String: unparsed output of git. Returned by revert, checkout and push (standard error), update
/// by fast-forward, and diff (the patch).
inline constexpr NEBConstant NEBSourceControlOperationContentKey{
    "NEBSourceControlOperationContentKey"};
/// String: the name of a remote. Returned by list remotes and tracking branch name.
inline constexpr NEBConstant NEBSourceControlOperationRemoteNameKey{
    "NEBSourceControlOperationRemoteNameKey"};
/// String: the URL or path of a remote. Returned by list remotes (up to its first blank) and info.
inline constexpr NEBConstant NEBSourceControlOperationRemoteOriginKey{
    "NEBSourceControlOperationRemoteOriginKey"};
/// String: the path of the folder in which git ran. Returned by info.
inline constexpr NEBConstant NEBSourceControlOperationRepositoryRootKey{
    "NEBSourceControlOperationRepositoryRootKey"};
/// String: "fetch" or "push", what the URL of the record is for. Returned by list remotes.
inline constexpr NEBConstant NEBSourceControlOperationTypeKey{"NEBSourceControlOperationTypeKey"};
/// Boolean: true for a Subversion repository that git-svn(1) fetches from; otherwise not set.
/// Returned by list remotes.
inline constexpr NEBConstant NEBSourceControlOperationUsesGitSVNKey{
    "NEBSourceControlOperationUsesGitSVNKey"};

// Symbolic revision names, for the start and end of a request instead of the name of a revision.
// HEAD and BASE both stand for the commit HEAD. What the other two mean depends on the type of
// request; see docs/requests.md.

/// The commit that the working copy is based on: HEAD.
inline constexpr NEBConstant NEBSourceControlBASERevisionName{"NEBSourceControlBASERevisionName"};
/// The latest commit of the current branch: HEAD.
inline constexpr NEBConstant NEBSourceControlHEADRevisionName{"NEBSourceControlHEADRevisionName"};
/// The unsaved text of a file in the memory of the host.
inline constexpr NEBConstant NEBSourceControlInMemoryRevisionName{
    "NEBSourceControlInMemoryRevisionName"};
/// The files in the working copy.
inline constexpr NEBConstant NEBSourceControlLocalRevisionName{"NEBSourceControlLocalRevisionName"};

// Errors.

/// The domain of all errors of plug-ins and operations.
inline constexpr NEBConstant NEBSourceControlErrorDomain{"NEBSourceControlErrorDomain"};
/// User info: the description for the user, a string.
inline constexpr NEBConstant NEBLocalizedDescriptionKey{"NEBLocalizedDescriptionKey"};
/// User info: what the user can do about it, a string. Optional.
inline constexpr NEBConstant NEBLocalizedRecoverySuggestionKey{"NEBLocalizedRecoverySuggestionKey"};
/// User info of the classes "index-locked" and "ref-locked": the absolute path of the lock file
/// that another process holds, a string, and its age in seconds, an integer. Absent if the file was
/// gone when the operation had failed.
inline constexpr NEBConstant NEBSourceControlErrorLockPathKey{"NEBSourceControlErrorLockPathKey"};
inline constexpr NEBConstant NEBSourceControlErrorLockAgeKey{"NEBSourceControlErrorLockAgeKey"};
/// User info: the process that holds the lock file: its number, an integer, and its program and
/// command such as "git commit", a string. Absent if no process was found.
inline constexpr NEBConstant NEBSourceControlErrorLockHolderProcessKey{
    "NEBSourceControlErrorLockHolderProcessKey"};
inline constexpr NEBConstant NEBSourceControlErrorLockHolderCommandKey{
    "NEBSourceControlErrorLockHolderCommandKey"};
/// User info: why the authentication failed, one of the values below. Absent for all other errors.
inline constexpr NEBConstant NEBSourceControlAuthenticationErrorTypeKey{
    "NEBSourceControlAuthenticationErrorTypeKey"};
/// Value of the key above: the host should ask the user for the credentials again.
inline constexpr NEBConstant NEBSourceControlAuthenticationCredentialsIncorrect{
    "NEBSourceControlAuthenticationCredentialsIncorrect"};

/// Error codes in NEBSourceControlErrorDomain.
enum NEBSourceControlErrorCode : std::int64_t {
    /// Any failure without a code of its own.
    NEBSourceControlGenericError = -1,
    /// A file or a revision does not exist.
    NEBSourceControlFileMissingAtRevisionError = 4,
    /// The source tree, the repository to authenticate, or a server is not reachable.
    NEBSourceControlNotReachableError = -20,
    /// Authentication failed, or the server's certificate failed to verify.
    NEBSourceControlAuthenticationError = -21,
    /// A push found nothing to send.
    NEBSourceControlRemoteUpToDateError = -25,
    /// The working copy has changes that are not committed.
    NEBSourceControlUncommittedChangesError = -31,
    /// A push was rejected, because the remote branch has other commits.
    NEBSourceControlRemoteAheadError = -32,
    /// A pull found nothing to do.
    NEBSourceControlUpToDateError = -34,
    /// A move found something at its destination.
    NEBSourceControlRenameTargetExistsError = -60,
    /// The folder to move has no tracked files.
    NEBSourceControlSourceDirectoryEmptyError = -70,
    /// The file is not in the index, or not under version control.
    NEBSourceControlNotVersionedError = -71,
    /// The branch to delete has commits that are not merged.
    NEBSourceControlBranchRemovalError = -91,
    /// The current branch has no upstream branch at the remote.
    NEBSourceControlTrackingBranchNotFoundError = -92,
    /// A fast-forward is not possible. The description is git's message.
    NEBSourceControlFastForwardError = -200,
    /// A binary file cannot be merged. The description is git's message.
    NEBSourceControlBinaryMergeError = -300,
    /// The user may not write to the repository.
    NEBSourceControlNoPermissionError = 513,
};

}  // namespace neb

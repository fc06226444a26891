// NEBSourceControlRequestType.h - the types of request, and what a host must know of each.
//
// The table has what hosts and plug-ins share: the number and name of each type, its effect, and
// the values that it requires. A plug-in's dispatch table has what only the plug-in needs: the
// class of the operation, and the text and line number of each report about a missing value. To add
// a type, add its number and row here, its row to the dispatch, and the class.
//
//     const auto& type = NEBSourceControlDescriptionOfRequestType(request.type);
//     if (type.effect == NEBSourceControlRequestEffect::reads) {
//         startAtOnce(request);
//     }
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"

namespace neb {

/// The numbers that a request's `type` may hold. 12, 16 and 23 stand for types that no plug-in of
/// this contract supports. `destination`, `files` and so on are members of NEBSourceControlRequest;
/// docs/requests.md lists all values that a type reads, its commands, results and errors.
enum NEBSourceControlRequestType : std::int32_t {
    /// `git add`: stages the path `destination`, else `files`, else everything.
    NEBSourceControlRequestAdd = 0,
    /// `git branch`: creates the branch `destination`.
    NEBSourceControlRequestCreateBranch = 1,
    /// `git branch -d`: deletes the branch `destination`.
    NEBSourceControlRequestDeleteBranch = 2,
    /// `git commit`: commits the index; with a message and `files`, those files instead.
    NEBSourceControlRequestCommit = 3,
    /// Does nothing and succeeds; a host edits `.gitignore` itself.
    NEBSourceControlRequestIgnore = 4,
    /// `git rm -f -r`: removes `files` from disk and from the index.
    NEBSourceControlRequestRemove = 5,
    /// The same as NEBSourceControlRequestAdd.
    NEBSourceControlRequestAddFiles = 6,
    /// `git checkout -f --`: discards the unstaged changes of `files`.
    NEBSourceControlRequestRevert = 7,
    /// Creates the folder `destination` and its missing parents.
    NEBSourceControlRequestMakeDirectory = 8,
    /// `git merge`: merges `endingRevision`, else `destination`, into the current branch.
    NEBSourceControlRequestMerge = 9,
    /// Copies the first of `files` to the path `destination` and stages the copy.
    NEBSourceControlRequestCopy = 10,
    /// `git mv`: moves the first of `files` to the path or into the folder `destination`.
    NEBSourceControlRequestMove = 11,
    /// Merges, or by option pulls or rebases, remote commits into the current branch.
    NEBSourceControlRequestUpdate = 13,
    /// `git checkout --merge`: switches to the revision `destination`.
    NEBSourceControlRequestCheckout = 14,
    /// `git status`: returns the files that differ from the latest commit.
    NEBSourceControlRequestStatus = 15,
    /// `git ls-tree`: returns the entries of the folder in `files`.
    NEBSourceControlRequestList = 17,
    /// `git log`: returns commits.
    NEBSourceControlRequestLog = 18,
    /// Returns the URL of the remote origin and the folder in which git ran.
    NEBSourceControlRequestInfo = 19,
    /// `git archive`: writes a file or folder of a revision to disk.
    NEBSourceControlRequestExportFiles = 20,
    /// The same as NEBSourceControlRequestExportFiles.
    NEBSourceControlRequestExport = 21,
    /// `git checkout-index -a -f`: writes all files of the index below `destination`.
    NEBSourceControlRequestExportTree = 22,
    /// `git remote -v`: returns the remotes and the Subversion repository.
    NEBSourceControlRequestListRemotes = 24,
    /// `git branch`: returns the branches, local ones or those of a remote repository.
    NEBSourceControlRequestListBranches = 25,
    /// `git branch`: returns the name of the current branch.
    NEBSourceControlRequestCurrentBranch = 26,
    /// `git init`: creates a repository.
    NEBSourceControlRequestCreateRepository = 27,
    /// `git blame`: returns commit, author and date of each line of a file.
    NEBSourceControlRequestBlame = 28,
    /// `git clone`: clones the source tree's location to the path `destination`.
    NEBSourceControlRequestClone = 29,
    /// `git diff`: returns a patch, or the paths and states of changed files.
    NEBSourceControlRequestDiff = 30,
    /// `git ls-remote --heads`: returns the branches of a remote repository.
    NEBSourceControlRequestListRemoteBranches = 31,
    /// The same as NEBSourceControlRequestListRemoteBranches.
    NEBSourceControlRequestListRemoteBranchesSecondForm = 32,
    /// `git push`: pushes a local branch to the branch `destination` of a remote.
    NEBSourceControlRequestPush = 33,
    /// `git remote add`: adds a remote named `destination` for the URL in `files`.
    NEBSourceControlRequestAddRemote = 34,
    /// `git remote rm`: removes the remote `destination`.
    NEBSourceControlRequestRemoveRemote = 35,
    /// Fetches, and creates the branch `destination` with an upstream branch.
    NEBSourceControlRequestTrackRemoteBranch = 36,
    /// `git fetch`: fetches from a remote.
    NEBSourceControlRequestFetch = 37,
    /// `git config`: returns the upstream branch of a branch.
    NEBSourceControlRequestTrackingBranchName = 38,
    /// `git merge-base`: returns the common ancestor of start and end.
    NEBSourceControlRequestMergeBase = 39,

    // The types from 1000 on return full ids and names of any bytes.

    /// `git status`: returns the branch and the state of each changed path.
    NEBSourceControlRequestWorkingCopyState = 1000,
    /// `git log`: returns commits with their parents and, by option, their changed files.
    NEBSourceControlRequestHistory = 1001,
    /// `git cat-file`: returns the content of the only file of `files`.
    NEBSourceControlRequestContent = 1002,
    /// `git blame`: returns the commit of each line of the only file of `files`.
    NEBSourceControlRequestAnnotation = 1003,
    /// `git diff`: returns the changed files with their hunks.
    NEBSourceControlRequestChanges = 1004,
    /// `git add` or `git apply`: stages `files`, a patch, or everything.
    NEBSourceControlRequestStage = 1005,
    /// `git restore` or `git apply`: unstages `files`, a patch, or everything.
    NEBSourceControlRequestUnstage = 1006,
    /// `git restore` or `git apply`: throws away the unstaged changes of `files`, or a patch.
    NEBSourceControlRequestDiscard = 1007,
    /// `git for-each-ref`: returns branches, remote branches and tags, or those below
    /// `destination`.
    NEBSourceControlRequestReferences = 1008,
    /// `git stash`: lists stashes; makes, shows, applies or drops one.
    NEBSourceControlRequestStash = 1009,
    /// `git rev-parse` and `git ls-files`: returns what is under way, and what is in conflict.
    NEBSourceControlRequestUnfinishedOperation = 1010,
    /// `git commit`: commits, and returns the full id.
    NEBSourceControlRequestCreateCommit = 1011,
    /// `git push`: pushes or deletes a branch, and returns what happened to each reference.
    NEBSourceControlRequestPublish = 1012,
    /// `git fetch`, then `git merge` or `git rebase`: integrates a branch, and stops at conflicts.
    NEBSourceControlRequestIntegrate = 1013,
    /// `git cherry-pick`, `git revert` or `git reset`: applies, reverts or goes to
    /// `startingRevision`.
    NEBSourceControlRequestPick = 1014,
    /// `git tag`: creates or deletes the tag `destination`.
    NEBSourceControlRequestTag = 1015,
    /// `git config` and `git ls-files`, or `git submodule`: returns the submodules with their
    /// state, or initializes or updates them.
    NEBSourceControlRequestSubmodules = 1016,
    /// `git worktree`: returns the worktrees of the repository; adds or removes one.
    NEBSourceControlRequestWorktrees = 1017,
    /// `git var` and `git config`: returns the identity of the user, and settings; sets or unsets
    /// one.
    NEBSourceControlRequestSettings = 1018,
    /// `git ls-tree`: returns the entries of a folder in a commit.
    NEBSourceControlRequestTree = 1019,
    /// `git merge`, `git rebase` …: continues, skips or aborts what is under way.
    NEBSourceControlRequestFinish = 1020,
    /// `git branch`: renames a branch, or sets or unsets its upstream branch.
    NEBSourceControlRequestChangeBranch = 1021,
};

/// The types below this number have a row for each number, and each has a command of nebsc.
inline constexpr std::int32_t NEBSourceControlFirstExtendedRequestType = 1000;

/// What an operation does. A host schedules requests by it.
enum class NEBSourceControlRequestEffect : std::uint8_t {
    /// Leaves the repository as it is; may run at any time.
    reads,
    /// Changes the working copy, the index, references or settings; runs alone in its repository.
    changes,
    /// Reads the repository and writes to `destination`; runs alone at that path.
    exports,
};

/// The values of a request that git could take for an option or for another command, because they
/// are arguments without a "--" in front. One bit each; see
/// NEBSourceControlFirstArgumentInjection().
enum NEBSourceControlExposedValue : std::uint32_t {
    /// The location of the source tree.
    NEBSourceControlExposedLocation = 1U << 0,
    /// The request's `destination`, `startingRevision` and `endingRevision`.
    NEBSourceControlExposedDestination = 1U << 1,
    NEBSourceControlExposedStartingRevision = 1U << 2,
    NEBSourceControlExposedEndingRevision = 1U << 3,
    /// The options NEBSourceControlRequestOptionBranch, …RemoteName and …SourceLocation.
    NEBSourceControlExposedBranch = 1U << 4,
    NEBSourceControlExposedRemoteName = 1U << 5,
    NEBSourceControlExposedSourceLocation = 1U << 6,
    /// Each of the request's `files` is an argument.
    NEBSourceControlExposedFiles = 1U << 7,
    /// The last component of each file's path is an argument.
    NEBSourceControlExposedFileNames = 1U << 8,
    /// A shell splits the files at blanks; each part is an argument.
    NEBSourceControlExposedFileParts = 1U << 9,
    /// A shell splits the branch at blanks; the first part is prefixed with "HEAD^{".
    NEBSourceControlExposedBranchParts = 1U << 10,
    /// The limit of a log is prefixed with "-".
    NEBSourceControlExposedLogLimit = 1U << 11,
    /// Branch and destination are the two sides of a refspec, "branch:destination".
    NEBSourceControlExposedRefspec = 1U << 12,

    /// git can misread no value of the request.
    NEBSourceControlExposedNothing = 0,
    /// All bits; for types that are not in the table.
    NEBSourceControlExposedEverything = (1U << 13) - 1,
};

/// A value without which an operation reports a broken precondition.
enum class NEBSourceControlRequirement : std::uint8_t {
    /// The request's `destination`.
    destination,
    /// One or more `files`.
    atLeastOneFile,
    /// One of `files`, and no more.
    exactlyOneFile,
    startingRevision,
    endingRevision,
    /// A source tree with a location.
    sourceTreeLocation,
    /// A source tree, or the option NEBSourceControlRequestOptionRepositoryPath.
    sourceTreeOrRepositoryPath,
    /// The request's `remote`.
    remote,
    /// The options NEBSourceControlRequestOptionRemoteName and NEBSourceControlRequestOptionBranch.
    remoteName,
    branch,
};

/// A row of the table of request types. Immutable; lives as long as the library.
struct NEBSourceControlRequestTypeDescription {
    /// See NEBSourceControlRequestType.
    std::int32_t type;
    /// The plain name, "list remote branches"; "unsupported" for a type without an operation; empty
    /// for a type that is not in the table.
    std::string_view name;
    /// The effect of any request of the type; see NEBSourceControlEffectOfRequest().
    NEBSourceControlRequestEffect effect;
    /// Whether an operation of the type contacts a server that may ask for credentials; see
    /// NEBSourceControlRequestMayAuthenticate().
    bool mayAuthenticate;
    /// Whether the operation works in the folder `destination`, which the host creates before it
    /// runs. Otherwise it works in the source tree.
    bool worksInDestination;
    /// A combination of NEBSourceControlExposedValue.
    std::uint32_t exposedValues;
    /// In the order in which an operation reports them.
    std::span<const NEBSourceControlRequirement> requirements;
};

/// Returns all rows, by ascending number. Thread-safe.
[[nodiscard]] NEB_EXPORT std::span<const NEBSourceControlRequestTypeDescription>
NEBSourceControlAllRequestTypes();

/// Returns the row of a type. For a number that is not in the table, the row assumes the worst: the
/// type changes the repository and all its values are exposed. It does not authenticate, as no
/// operation exists that could. Thread-safe.
[[nodiscard]] NEB_EXPORT const NEBSourceControlRequestTypeDescription&
NEBSourceControlDescriptionOfRequestType(std::int32_t type);

/// Returns what a request does: the effect of its type, or less if the option
/// NEBSourceControlRequestOptionAction names an action that only reads. Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlRequestEffect
NEBSourceControlEffectOfRequest(const NEBSourceControlRequest& request);

/// Returns whether the request contacts a server that may ask for credentials. Thread-safe.
[[nodiscard]] NEB_EXPORT bool NEBSourceControlRequestMayAuthenticate(
    const NEBSourceControlRequest& request);

/// Returns the plain name of a type, "unsupported" for 12, 16 and 23; absent for a number that is
/// not in the table. Thread-safe.
[[nodiscard]] NEB_EXPORT std::optional<std::string_view> NEBSourceControlRequestTypeName(
    std::int32_t type);

/// Returns what people call a requirement: "at least one file". Thread-safe.
[[nodiscard]] NEB_EXPORT std::string_view NEBSourceControlRequirementName(
    NEBSourceControlRequirement requirement);

}  // namespace neb

// NEBSourceControlErrorClassNames.h - the names of the classes of failure.
//
// NEBSourceControlErrorClasses() has a sentence and advice for each. Names are never renamed or
// removed, because hosts and scripts compare them. The comment of a constant says when an error has
// the class.
//
//     if (error.errorClass == NEBSourceControlRemoteAheadErrorClass) {
//         offerToPull();
//     }
#pragma once

#include "NEBFoundation/NEBConstant.h"

namespace neb {

// Servers and connections to them.

/// The server requires a user name and password, and none are stored.
inline constexpr NEBConstant NEBSourceControlCredentialsNeededErrorClass{"credentials-needed"};
/// The server rejected the user name or password.
inline constexpr NEBConstant NEBSourceControlCredentialsRefusedErrorClass{"credentials-refused"};
/// The SSH server accepted none of the offered keys.
inline constexpr NEBConstant NEBSourceControlSSHKeyRefusedErrorClass{"ssh-key-refused"};
/// The host key of the SSH server is unknown or has changed.
inline constexpr NEBConstant NEBSourceControlSSHHostKeyErrorClass{"ssh-host-key"};
/// SSH and the SSH server support no common encryption method.
inline constexpr NEBConstant NEBSourceControlSSHNegotiationFailedErrorClass{
    "ssh-negotiation-failed"};
/// SSH rejects its configuration.
inline constexpr NEBConstant NEBSourceControlSSHConfigurationBrokenErrorClass{
    "ssh-configuration-broken"};
/// The certificate of the server is not trusted, or has expired.
inline constexpr NEBConstant NEBSourceControlCertificateUntrustedErrorClass{
    "certificate-untrusted"};
/// The server requires a client certificate, and none that it accepts was sent.
inline constexpr NEBConstant NEBSourceControlClientCertificateRefusedErrorClass{
    "client-certificate-refused"};
/// No encrypted connection to the server could be established.
inline constexpr NEBConstant NEBSourceControlTLSFailedErrorClass{"tls-failed"};
/// The HTTP server refused the request.
inline constexpr NEBConstant NEBSourceControlHTTPRefusedErrorClass{"http-refused"};
/// The HTTP server failed to process the request.
inline constexpr NEBConstant NEBSourceControlServerFailedErrorClass{"server-failed"};
/// The proxy refused to connect to the server.
inline constexpr NEBConstant NEBSourceControlProxyRefusedErrorClass{"proxy-refused"};
/// The response of the server does not follow the git protocol.
inline constexpr NEBConstant NEBSourceControlProtocolErrorClass{"protocol-error"};
/// The host name of the server or proxy could not be resolved.
inline constexpr NEBConstant NEBSourceControlHostUnknownErrorClass{"host-unknown"};
/// The server could not be reached.
inline constexpr NEBConstant NEBSourceControlHostUnreachableErrorClass{"host-unreachable"};
/// The connection to the server was lost.
inline constexpr NEBConstant NEBSourceControlConnectionCutErrorClass{"connection-cut"};
/// The remote repository could not be read; git gives no reason.
inline constexpr NEBConstant NEBSourceControlRemoteUnreadableErrorClass{"remote-unreadable"};
/// The remote repository does not exist, or the user has no access to it.
inline constexpr NEBConstant NEBSourceControlRepositoryNotFoundErrorClass{"repository-not-found"};
/// The remote repository, or the data that it sent, is damaged or incomplete.
inline constexpr NEBConstant NEBSourceControlRemoteDamagedErrorClass{"remote-damaged"};
/// The remote does not support what was requested.
inline constexpr NEBConstant NEBSourceControlRemoteUnsupportedErrorClass{"remote-unsupported"};
/// A repository is shallow, and the operation requires the whole history.
inline constexpr NEBConstant NEBSourceControlRepositoryShallowErrorClass{"repository-shallow"};
/// The URL is not valid, or the server redirects to another one.
inline constexpr NEBConstant NEBSourceControlURLInvalidErrorClass{"url-invalid"};
/// The remote refused the request; its messages may state the reason.
inline constexpr NEBConstant NEBSourceControlRemoteRefusedErrorClass{"remote-refused"};
/// The URL uses a protocol that git does not support.
inline constexpr NEBConstant NEBSourceControlTransportUnknownErrorClass{"transport-unknown"};
/// The configuration of git (protocol.allow) forbids this transport.
inline constexpr NEBConstant NEBSourceControlTransportForbiddenErrorClass{"transport-forbidden"};
/// A program that git runs, such as ssh, is not installed or cannot be started.
inline constexpr NEBConstant NEBSourceControlProgramMissingErrorClass{"program-missing"};

// Pushes, fetches and remotes.

/// A push was rejected: the remote branch has commits that the local one lacks.
inline constexpr NEBConstant NEBSourceControlRemoteAheadErrorClass{"remote-ahead"};
/// A push with a lease was rejected: the remote branch changed since the last fetch.
inline constexpr NEBConstant NEBSourceControlPushStaleErrorClass{"push-stale"};
/// A hook on the server refused the push.
inline constexpr NEBConstant NEBSourceControlRemoteHookRefusedErrorClass{"remote-hook-refused"};
/// A tag or branch was not updated, because the remote's differs from it.
inline constexpr NEBConstant NEBSourceControlReferenceRejectedErrorClass{"reference-rejected"};
/// Another process changed the branch or tag at the same time.
inline constexpr NEBConstant NEBSourceControlReferenceChangedErrorClass{"reference-changed"};
/// The name conflicts with another branch, as "a/b" does with "a".
inline constexpr NEBConstant NEBSourceControlReferenceInTheWayErrorClass{"reference-in-the-way"};
/// The remote does not have this branch, or it was not fetched.
inline constexpr NEBConstant NEBSourceControlRemoteBranchUnknownErrorClass{"remote-branch-unknown"};
/// There is no remote with this name.
inline constexpr NEBConstant NEBSourceControlRemoteUnknownErrorClass{"remote-unknown"};
/// The remote does not have this URL, or has none.
inline constexpr NEBConstant NEBSourceControlRemoteURLMissingErrorClass{"remote-url-missing"};
/// A remote with this name already exists.
inline constexpr NEBConstant NEBSourceControlRemoteExistsErrorClass{"remote-exists"};
/// This name is not valid for a remote.
inline constexpr NEBConstant NEBSourceControlRemoteNameInvalidErrorClass{"remote-name-invalid"};
/// No remote is configured to push to.
inline constexpr NEBConstant NEBSourceControlNoPushDestinationErrorClass{"no-push-destination"};
/// It is not clear which branch of the remote to push to.
inline constexpr NEBConstant NEBSourceControlPushDestinationUnclearErrorClass{
    "push-destination-unclear"};
/// The branch has no upstream branch.
inline constexpr NEBConstant NEBSourceControlNoUpstreamErrorClass{"no-upstream"};
/// The operation requires a branch, and none is checked out.
inline constexpr NEBConstant NEBSourceControlNoCurrentBranchErrorClass{"no-current-branch"};
/// The repository or the branch is not connected to a Subversion repository.
inline constexpr NEBConstant NEBSourceControlNoSubversionUpstreamErrorClass{
    "no-subversion-upstream"};
/// The branch to push does not exist, or has no commits yet.
inline constexpr NEBConstant NEBSourceControlNothingToPushFromErrorClass{"nothing-to-push-from"};
/// The branch to push to is checked out in the remote repository.
inline constexpr NEBConstant NEBSourceControlBranchCheckedOutThereErrorClass{
    "branch-checked-out-there"};
/// A different tag with this name already exists.
inline constexpr NEBConstant NEBSourceControlTagExistsErrorClass{"tag-exists"};
/// The branches have diverged, so a fast-forward is not possible.
inline constexpr NEBConstant NEBSourceControlDivergedErrorClass{"diverged"};
/// The two histories have no commit in common.
inline constexpr NEBConstant NEBSourceControlUnrelatedHistoriesErrorClass{"unrelated-histories"};
/// Not a failure for the user: there was nothing to do.
inline constexpr NEBConstant NEBSourceControlUpToDateErrorClass{"up-to-date"};

// The state of the working copy.

/// Local changes would be overwritten.
inline constexpr NEBConstant NEBSourceControlLocalChangesErrorClass{"local-changes"};
/// Untracked files would be overwritten or removed.
inline constexpr NEBConstant NEBSourceControlUntrackedInTheWayErrorClass{"untracked-in-the-way"};
/// The operation requires a working copy without uncommitted changes.
inline constexpr NEBConstant NEBSourceControlNeedsCleanTreeErrorClass{"needs-clean-tree"};
/// There are conflicts that could not be resolved automatically.
inline constexpr NEBConstant NEBSourceControlConflictErrorClass{"conflict"};
/// Conflicts of an earlier operation are not resolved.
inline constexpr NEBConstant NEBSourceControlConflictUnresolvedErrorClass{"conflict-unresolved"};
/// The patch cannot be read, or does not fit the files.
inline constexpr NEBConstant NEBSourceControlPatchFailedErrorClass{"patch-failed"};
/// The merge or rebase failed for a reason other than conflicts.
inline constexpr NEBConstant NEBSourceControlMergeFailedErrorClass{"merge-failed"};
/// A merge, cherry-pick or rebase has to be finished or aborted first.
inline constexpr NEBConstant NEBSourceControlMergeUnfinishedErrorClass{"merge-unfinished"};
/// There is no merge, cherry-pick or rebase to continue or abort.
inline constexpr NEBConstant NEBSourceControlNothingInProgressErrorClass{"nothing-in-progress"};
/// A commit would contain no change.
inline constexpr NEBConstant NEBSourceControlNothingToCommitErrorClass{"nothing-to-commit"};
/// The commit has no message; nothing was committed.
inline constexpr NEBConstant NEBSourceControlMessageEmptyErrorClass{"message-empty"};
/// The name or e-mail address of the author is not configured.
inline constexpr NEBConstant NEBSourceControlIdentityUnknownErrorClass{"identity-unknown"};
/// An author, committer or date does not have the format that git requires.
inline constexpr NEBConstant NEBSourceControlIdentityInvalidErrorClass{"identity-invalid"};
/// The commit could not be signed.
inline constexpr NEBConstant NEBSourceControlSigningFailedErrorClass{"signing-failed"};
/// A commit is not signed with a trusted key.
inline constexpr NEBConstant NEBSourceControlSignatureUntrustedErrorClass{"signature-untrusted"};
/// The editor that git started failed.
inline constexpr NEBConstant NEBSourceControlEditorFailedErrorClass{"editor-failed"};
/// A hook of the local repository refused the operation.
inline constexpr NEBConstant NEBSourceControlLocalHookRefusedErrorClass{"local-hook-refused"};

// Revisions, branches and paths.

/// There is no such branch, tag or commit.
inline constexpr NEBConstant NEBSourceControlRevisionUnknownErrorClass{"revision-unknown"};
/// The name stands for more than one object or file.
inline constexpr NEBConstant NEBSourceControlRevisionAmbiguousErrorClass{"revision-ambiguous"};
/// A branch or tag cannot be read, or its commit is missing.
inline constexpr NEBConstant NEBSourceControlReferenceBrokenErrorClass{"reference-broken"};
/// The operation requires a commit, and the branch has none.
inline constexpr NEBConstant NEBSourceControlNoCommitsYetErrorClass{"no-commits-yet"};
/// A branch with this name already exists.
inline constexpr NEBConstant NEBSourceControlBranchExistsErrorClass{"branch-exists"};
/// The branch is checked out, here or in another working copy.
inline constexpr NEBConstant NEBSourceControlBranchInUseErrorClass{"branch-in-use"};
/// The branch to delete has commits that are not merged.
inline constexpr NEBConstant NEBSourceControlBranchNotMergedErrorClass{"branch-not-merged"};
/// The worktree to remove is locked; see git-worktree(1).
inline constexpr NEBConstant NEBSourceControlWorktreeLockedErrorClass{"worktree-locked"};
/// This name is not valid for a branch.
inline constexpr NEBConstant NEBSourceControlBranchNameInvalidErrorClass{"branch-name-invalid"};
/// This name is not valid for a tag.
inline constexpr NEBConstant NEBSourceControlTagNameInvalidErrorClass{"tag-name-invalid"};
/// There is no branch with this name.
inline constexpr NEBConstant NEBSourceControlBranchUnknownErrorClass{"branch-unknown"};
/// There is no such file, or git does not track it.
inline constexpr NEBConstant NEBSourceControlPathUnknownErrorClass{"path-unknown"};
/// The path is outside the working copy.
inline constexpr NEBConstant NEBSourceControlPathOutsideErrorClass{"path-outside"};
/// The path is not valid.
inline constexpr NEBConstant NEBSourceControlPathInvalidErrorClass{"path-invalid"};
/// The file does not have these lines.
inline constexpr NEBConstant NEBSourceControlLineUnknownErrorClass{"line-unknown"};
/// A name is longer than the file system allows.
inline constexpr NEBConstant NEBSourceControlNameTooLongErrorClass{"name-too-long"};
/// A folder exists where a file is required, or a file instead of a folder.
inline constexpr NEBConstant NEBSourceControlFileTypeWrongErrorClass{"file-type-wrong"};
/// An ignore rule excludes the files.
inline constexpr NEBConstant NEBSourceControlPathIgnoredErrorClass{"path-ignored"};
/// The files are outside the sparse checkout.
inline constexpr NEBConstant NEBSourceControlPathSparseErrorClass{"path-sparse"};
/// core.safecrlf forbids an irreversible conversion of line endings.
inline constexpr NEBConstant NEBSourceControlLineEndsRefusedErrorClass{"line-ends-refused"};
/// A file is not in the encoding that its attributes name.
inline constexpr NEBConstant NEBSourceControlEncodingFailedErrorClass{"encoding-failed"};
/// The path is inside a submodule, which is a separate repository.
inline constexpr NEBConstant NEBSourceControlPathInSubmoduleErrorClass{"path-in-submodule"};
/// The folder is a separate git repository without commits.
inline constexpr NEBConstant NEBSourceControlEmbeddedRepositoryErrorClass{"embedded-repository"};
/// A submodule could not be fetched, checked out or pushed.
inline constexpr NEBConstant NEBSourceControlSubmoduleFailedErrorClass{"submodule-failed"};
/// The destination already exists.
inline constexpr NEBConstant NEBSourceControlDestinationExistsErrorClass{"destination-exists"};
/// The parent folder of the destination does not exist.
inline constexpr NEBConstant NEBSourceControlDestinationMissingErrorClass{"destination-missing"};
/// The folder to move has no tracked files.
inline constexpr NEBConstant NEBSourceControlSourceDirectoryEmptyErrorClass{
    "source-directory-empty"};

// The repository and the machine.

/// The folder is not in a git repository.
inline constexpr NEBConstant NEBSourceControlNotARepositoryErrorClass{"not-a-repository"};
/// The folder is in a bare repository or in a ".git" folder.
inline constexpr NEBConstant NEBSourceControlNoWorkTreeErrorClass{"no-work-tree"};
/// The repository is owned by another user (see safe.directory in git-config(1)).
inline constexpr NEBConstant NEBSourceControlOwnerNotTrustedErrorClass{"owner-not-trusted"};
/// The request would change a repository that is only inspected, or run a program that it names;
/// see NEBSourceControlTrust.
inline constexpr NEBConstant NEBSourceControlNotTrustedErrorClass{"not-trusted"};
/// safe.bareRepository forbids the use of this bare repository.
inline constexpr NEBConstant NEBSourceControlBareRepositoryForbiddenErrorClass{
    "bare-repository-forbidden"};
/// The repository has content that git refuses because it can be an attack.
inline constexpr NEBConstant NEBSourceControlUnsafeContentErrorClass{"unsafe-content"};
/// The format of the repository is not supported by this git.
inline constexpr NEBConstant NEBSourceControlRepositoryFormatUnknownErrorClass{
    "repository-format-unknown"};
/// The file "index.lock" exists: another git process runs, or one was killed.
inline constexpr NEBConstant NEBSourceControlIndexLockedErrorClass{"index-locked"};
/// A branch, HEAD or the configuration is locked by a process that runs or was killed.
inline constexpr NEBConstant NEBSourceControlRefLockedErrorClass{"ref-locked"};
/// The index cannot be read.
inline constexpr NEBConstant NEBSourceControlIndexDamagedErrorClass{"index-damaged"};
/// Objects of the repository are missing or damaged.
inline constexpr NEBConstant NEBSourceControlObjectsDamagedErrorClass{"objects-damaged"};
/// The partial clone needs content that its remote did not send.
inline constexpr NEBConstant NEBSourceControlObjectsMissingErrorClass{"objects-missing"};
/// A file of the git directory, such as "shallow", cannot be read.
inline constexpr NEBConstant NEBSourceControlRepositoryDamagedErrorClass{"repository-damaged"};
/// The configuration cannot be read, or has a value that git rejects.
inline constexpr NEBConstant NEBSourceControlConfigurationBrokenErrorClass{"configuration-broken"};
/// A file that the configuration names cannot be read.
inline constexpr NEBConstant NEBSourceControlConfiguredFileMissingErrorClass{
    "configured-file-missing"};
/// The operating system denied access to a file or folder.
inline constexpr NEBConstant NEBSourceControlPermissionDeniedErrorClass{"permission-denied"};
/// The disk is full.
inline constexpr NEBConstant NEBSourceControlDiskFullErrorClass{"disk-full"};
/// There is not enough memory.
inline constexpr NEBConstant NEBSourceControlOutOfMemoryErrorClass{"out-of-memory"};
/// Too many processes or open files, or too long an argument list.
inline constexpr NEBConstant NEBSourceControlSystemLimitErrorClass{"system-limit"};
/// A file could not be read or written.
inline constexpr NEBConstant NEBSourceControlIOErrorClass{"io-error"};
/// A filter, Git LFS or a submodule failed.
inline constexpr NEBConstant NEBSourceControlOtherToolsErrorClass{"other-tools"};
/// The request itself is wrong: no repository and no setting can make it succeed.
inline constexpr NEBConstant NEBSourceControlRequestInvalidErrorClass{"request-invalid"};
/// git reported an internal error.
inline constexpr NEBConstant NEBSourceControlGitBugErrorClass{"git-bug"};
/// git could not be started.
inline constexpr NEBConstant NEBSourceControlNotStartedErrorClass{"not-started"};
/// A signal that the host did not send ended git.
inline constexpr NEBConstant NEBSourceControlKilledErrorClass{"killed"};
/// The host cancelled the operation.
inline constexpr NEBConstant NEBSourceControlCancelledErrorClass{"cancelled"};
/// The operation exceeded its limit `silence` or `total`; see NEBSourceControlLimits.
inline constexpr NEBConstant NEBSourceControlTimedOutErrorClass{"timed-out"};
/// git wrote more than the limit `outputBytes`; see NEBSourceControlLimits.
inline constexpr NEBConstant NEBSourceControlOutputTooLargeErrorClass{"output-too-large"};
/// No class fits with certainty.
inline constexpr NEBConstant NEBSourceControlUnknownErrorClass{"unknown"};

}  // namespace neb

// NEBSourceControlErrorClassNames.h - the names of the classes of failure.
//
// NEBSourceControlErrorClasses() has a sentence and advice for each. Names are never renamed or
// removed, because hosts and scripts compare them.
#pragma once

#include "NEBFoundation/NEBConstant.h"

namespace neb {

// Servers and connections to them.

inline constexpr NEBConstant NEBSourceControlCredentialsNeededErrorClass{"credentials-needed"};
inline constexpr NEBConstant NEBSourceControlCredentialsRefusedErrorClass{"credentials-refused"};
inline constexpr NEBConstant NEBSourceControlSSHKeyRefusedErrorClass{"ssh-key-refused"};
inline constexpr NEBConstant NEBSourceControlSSHHostKeyErrorClass{"ssh-host-key"};
inline constexpr NEBConstant NEBSourceControlSSHNegotiationFailedErrorClass{
    "ssh-negotiation-failed"};
inline constexpr NEBConstant NEBSourceControlSSHConfigurationBrokenErrorClass{
    "ssh-configuration-broken"};
inline constexpr NEBConstant NEBSourceControlCertificateUntrustedErrorClass{
    "certificate-untrusted"};
inline constexpr NEBConstant NEBSourceControlClientCertificateRefusedErrorClass{
    "client-certificate-refused"};
inline constexpr NEBConstant NEBSourceControlTLSFailedErrorClass{"tls-failed"};
inline constexpr NEBConstant NEBSourceControlHTTPRefusedErrorClass{"http-refused"};
inline constexpr NEBConstant NEBSourceControlServerFailedErrorClass{"server-failed"};
inline constexpr NEBConstant NEBSourceControlProxyRefusedErrorClass{"proxy-refused"};
inline constexpr NEBConstant NEBSourceControlProtocolErrorClass{"protocol-error"};
inline constexpr NEBConstant NEBSourceControlHostUnknownErrorClass{"host-unknown"};
inline constexpr NEBConstant NEBSourceControlHostUnreachableErrorClass{"host-unreachable"};
inline constexpr NEBConstant NEBSourceControlConnectionCutErrorClass{"connection-cut"};
inline constexpr NEBConstant NEBSourceControlRemoteUnreadableErrorClass{"remote-unreadable"};
inline constexpr NEBConstant NEBSourceControlRepositoryNotFoundErrorClass{"repository-not-found"};
inline constexpr NEBConstant NEBSourceControlRemoteDamagedErrorClass{"remote-damaged"};
inline constexpr NEBConstant NEBSourceControlRemoteUnsupportedErrorClass{"remote-unsupported"};
inline constexpr NEBConstant NEBSourceControlRepositoryShallowErrorClass{"repository-shallow"};
inline constexpr NEBConstant NEBSourceControlURLInvalidErrorClass{"url-invalid"};
inline constexpr NEBConstant NEBSourceControlRemoteRefusedErrorClass{"remote-refused"};
inline constexpr NEBConstant NEBSourceControlTransportUnknownErrorClass{"transport-unknown"};
inline constexpr NEBConstant NEBSourceControlTransportForbiddenErrorClass{"transport-forbidden"};
inline constexpr NEBConstant NEBSourceControlProgramMissingErrorClass{"program-missing"};

// Pushes, fetches and remotes.

inline constexpr NEBConstant NEBSourceControlRemoteAheadErrorClass{"remote-ahead"};
inline constexpr NEBConstant NEBSourceControlPushStaleErrorClass{"push-stale"};
inline constexpr NEBConstant NEBSourceControlRemoteHookRefusedErrorClass{"remote-hook-refused"};
inline constexpr NEBConstant NEBSourceControlReferenceRejectedErrorClass{"reference-rejected"};
inline constexpr NEBConstant NEBSourceControlReferenceChangedErrorClass{"reference-changed"};
inline constexpr NEBConstant NEBSourceControlReferenceInTheWayErrorClass{"reference-in-the-way"};
inline constexpr NEBConstant NEBSourceControlRemoteBranchUnknownErrorClass{"remote-branch-unknown"};
inline constexpr NEBConstant NEBSourceControlRemoteUnknownErrorClass{"remote-unknown"};
inline constexpr NEBConstant NEBSourceControlRemoteURLMissingErrorClass{"remote-url-missing"};
inline constexpr NEBConstant NEBSourceControlRemoteExistsErrorClass{"remote-exists"};
inline constexpr NEBConstant NEBSourceControlRemoteNameInvalidErrorClass{"remote-name-invalid"};
inline constexpr NEBConstant NEBSourceControlNoPushDestinationErrorClass{"no-push-destination"};
inline constexpr NEBConstant NEBSourceControlPushDestinationUnclearErrorClass{
    "push-destination-unclear"};
inline constexpr NEBConstant NEBSourceControlNoUpstreamErrorClass{"no-upstream"};
inline constexpr NEBConstant NEBSourceControlNoCurrentBranchErrorClass{"no-current-branch"};
inline constexpr NEBConstant NEBSourceControlNoSubversionUpstreamErrorClass{
    "no-subversion-upstream"};
inline constexpr NEBConstant NEBSourceControlNothingToPushFromErrorClass{"nothing-to-push-from"};
inline constexpr NEBConstant NEBSourceControlBranchCheckedOutThereErrorClass{
    "branch-checked-out-there"};
inline constexpr NEBConstant NEBSourceControlTagExistsErrorClass{"tag-exists"};
inline constexpr NEBConstant NEBSourceControlDivergedErrorClass{"diverged"};
inline constexpr NEBConstant NEBSourceControlUnrelatedHistoriesErrorClass{"unrelated-histories"};
/// Not a failure for the user: there was nothing to do.
inline constexpr NEBConstant NEBSourceControlUpToDateErrorClass{"up-to-date"};

// The state of the working copy.

inline constexpr NEBConstant NEBSourceControlLocalChangesErrorClass{"local-changes"};
inline constexpr NEBConstant NEBSourceControlUntrackedInTheWayErrorClass{"untracked-in-the-way"};
inline constexpr NEBConstant NEBSourceControlNeedsCleanTreeErrorClass{"needs-clean-tree"};
inline constexpr NEBConstant NEBSourceControlConflictErrorClass{"conflict"};
inline constexpr NEBConstant NEBSourceControlConflictUnresolvedErrorClass{"conflict-unresolved"};
inline constexpr NEBConstant NEBSourceControlMergeFailedErrorClass{"merge-failed"};
inline constexpr NEBConstant NEBSourceControlMergeUnfinishedErrorClass{"merge-unfinished"};
inline constexpr NEBConstant NEBSourceControlNothingInProgressErrorClass{"nothing-in-progress"};
inline constexpr NEBConstant NEBSourceControlNothingToCommitErrorClass{"nothing-to-commit"};
inline constexpr NEBConstant NEBSourceControlMessageEmptyErrorClass{"message-empty"};
inline constexpr NEBConstant NEBSourceControlIdentityUnknownErrorClass{"identity-unknown"};
inline constexpr NEBConstant NEBSourceControlIdentityInvalidErrorClass{"identity-invalid"};
inline constexpr NEBConstant NEBSourceControlSigningFailedErrorClass{"signing-failed"};
inline constexpr NEBConstant NEBSourceControlSignatureUntrustedErrorClass{"signature-untrusted"};
inline constexpr NEBConstant NEBSourceControlEditorFailedErrorClass{"editor-failed"};
inline constexpr NEBConstant NEBSourceControlLocalHookRefusedErrorClass{"local-hook-refused"};

// Revisions, branches and paths.

inline constexpr NEBConstant NEBSourceControlRevisionUnknownErrorClass{"revision-unknown"};
inline constexpr NEBConstant NEBSourceControlRevisionAmbiguousErrorClass{"revision-ambiguous"};
inline constexpr NEBConstant NEBSourceControlReferenceBrokenErrorClass{"reference-broken"};
inline constexpr NEBConstant NEBSourceControlNoCommitsYetErrorClass{"no-commits-yet"};
inline constexpr NEBConstant NEBSourceControlBranchExistsErrorClass{"branch-exists"};
inline constexpr NEBConstant NEBSourceControlBranchInUseErrorClass{"branch-in-use"};
inline constexpr NEBConstant NEBSourceControlBranchNotMergedErrorClass{"branch-not-merged"};
inline constexpr NEBConstant NEBSourceControlBranchNameInvalidErrorClass{"branch-name-invalid"};
inline constexpr NEBConstant NEBSourceControlBranchUnknownErrorClass{"branch-unknown"};
inline constexpr NEBConstant NEBSourceControlPathUnknownErrorClass{"path-unknown"};
inline constexpr NEBConstant NEBSourceControlPathOutsideErrorClass{"path-outside"};
inline constexpr NEBConstant NEBSourceControlPathInvalidErrorClass{"path-invalid"};
inline constexpr NEBConstant NEBSourceControlNameTooLongErrorClass{"name-too-long"};
inline constexpr NEBConstant NEBSourceControlFileTypeWrongErrorClass{"file-type-wrong"};
inline constexpr NEBConstant NEBSourceControlPathIgnoredErrorClass{"path-ignored"};
inline constexpr NEBConstant NEBSourceControlPathSparseErrorClass{"path-sparse"};
inline constexpr NEBConstant NEBSourceControlLineEndsRefusedErrorClass{"line-ends-refused"};
inline constexpr NEBConstant NEBSourceControlEncodingFailedErrorClass{"encoding-failed"};
inline constexpr NEBConstant NEBSourceControlPathInSubmoduleErrorClass{"path-in-submodule"};
inline constexpr NEBConstant NEBSourceControlEmbeddedRepositoryErrorClass{"embedded-repository"};
inline constexpr NEBConstant NEBSourceControlSubmoduleFailedErrorClass{"submodule-failed"};
inline constexpr NEBConstant NEBSourceControlDestinationExistsErrorClass{"destination-exists"};
inline constexpr NEBConstant NEBSourceControlDestinationMissingErrorClass{"destination-missing"};
inline constexpr NEBConstant NEBSourceControlSourceDirectoryEmptyErrorClass{
    "source-directory-empty"};

// The repository and the machine.

inline constexpr NEBConstant NEBSourceControlNotARepositoryErrorClass{"not-a-repository"};
inline constexpr NEBConstant NEBSourceControlNoWorkTreeErrorClass{"no-work-tree"};
inline constexpr NEBConstant NEBSourceControlOwnerNotTrustedErrorClass{"owner-not-trusted"};
inline constexpr NEBConstant NEBSourceControlBareRepositoryForbiddenErrorClass{
    "bare-repository-forbidden"};
inline constexpr NEBConstant NEBSourceControlUnsafeContentErrorClass{"unsafe-content"};
inline constexpr NEBConstant NEBSourceControlRepositoryFormatUnknownErrorClass{
    "repository-format-unknown"};
inline constexpr NEBConstant NEBSourceControlIndexLockedErrorClass{"index-locked"};
inline constexpr NEBConstant NEBSourceControlRefLockedErrorClass{"ref-locked"};
inline constexpr NEBConstant NEBSourceControlIndexDamagedErrorClass{"index-damaged"};
inline constexpr NEBConstant NEBSourceControlObjectsDamagedErrorClass{"objects-damaged"};
inline constexpr NEBConstant NEBSourceControlObjectsMissingErrorClass{"objects-missing"};
inline constexpr NEBConstant NEBSourceControlRepositoryDamagedErrorClass{"repository-damaged"};
inline constexpr NEBConstant NEBSourceControlConfigurationBrokenErrorClass{"configuration-broken"};
inline constexpr NEBConstant NEBSourceControlConfiguredFileMissingErrorClass{
    "configured-file-missing"};
inline constexpr NEBConstant NEBSourceControlPermissionDeniedErrorClass{"permission-denied"};
inline constexpr NEBConstant NEBSourceControlDiskFullErrorClass{"disk-full"};
inline constexpr NEBConstant NEBSourceControlOutOfMemoryErrorClass{"out-of-memory"};
inline constexpr NEBConstant NEBSourceControlSystemLimitErrorClass{"system-limit"};
inline constexpr NEBConstant NEBSourceControlIOErrorClass{"io-error"};
inline constexpr NEBConstant NEBSourceControlOtherToolsErrorClass{"other-tools"};
/// The request itself is wrong: no repository and no setting can make it succeed.
inline constexpr NEBConstant NEBSourceControlRequestInvalidErrorClass{"request-invalid"};
inline constexpr NEBConstant NEBSourceControlGitBugErrorClass{"git-bug"};
inline constexpr NEBConstant NEBSourceControlNotStartedErrorClass{"not-started"};
inline constexpr NEBConstant NEBSourceControlKilledErrorClass{"killed"};
inline constexpr NEBConstant NEBSourceControlCancelledErrorClass{"cancelled"};
inline constexpr NEBConstant NEBSourceControlTimedOutErrorClass{"timed-out"};
inline constexpr NEBConstant NEBSourceControlOutputTooLargeErrorClass{"output-too-large"};
/// No class fits with certainty.
inline constexpr NEBConstant NEBSourceControlUnknownErrorClass{"unknown"};

}  // namespace neb

// NEBSourceControlKeys.h - the texts that the host and a plug-in share: keys of options, of results
// and of an error's user info, and the revision names that stand for no commit's name.
//
// Each has its own identifier as its text, so a request written down is readable, and no branch can
// be taken for a symbolic revision by chance.
#pragma once

#include <array>
#include <cstdint>

#include "NEBFoundation/NEBConstant.h"

namespace neb {

// Option keys, with the kind of value that belongs to each.

/// path string, may start with "~"
inline constexpr NEBConstant NEBSourceControlRequestOptionRepositoryPath{
    "NEBSourceControlRequestOptionRepositoryPath"};
/// path string
inline constexpr NEBConstant NEBSourceControlRequestOptionWorkingCopyPath{
    "NEBSourceControlRequestOptionWorkingCopyPath"};
/// non-empty string
inline constexpr NEBConstant NEBSourceControlRequestOptionBranch{
    "NEBSourceControlRequestOptionBranch"};
/// non-empty string
inline constexpr NEBConstant NEBSourceControlRequestOptionRemoteName{
    "NEBSourceControlRequestOptionRemoteName"};
/// boolean: delete a branch that is not merged
inline constexpr NEBConstant NEBSourceControlRequestOptionForce{
    "NEBSourceControlRequestOptionForce"};
/// string: the start point of a new branch
inline constexpr NEBConstant NEBSourceControlRequestOptionSourceLocation{
    "NEBSourceControlRequestOptionSourceLocation"};
/// string: the commit message
inline constexpr NEBConstant NEBSourceControlRequestOptionMessage{
    "NEBSourceControlRequestOptionMessage"};
/// boolean
inline constexpr NEBConstant NEBSourceControlRequestOptionAllowEmptyCommit{
    "NEBSourceControlRequestOptionAllowEmptyCommit"};
/// integer: how many commits at most
inline constexpr NEBConstant NEBSourceControlRequestOptionLogOutputLimit{
    "NEBSourceControlRequestOptionLogOutputLimit"};
/// boolean
inline constexpr NEBConstant NEBSourceControlRequestOptionLogOutputFilesChanged{
    "NEBSourceControlRequestOptionLogOutputFilesChanged"};
/// boolean
inline constexpr NEBConstant NEBSourceControlRequestOptionDiffFileNameAndStatusOnly{
    "NEBSourceControlRequestOptionDiffFileNameAndStatusOnly"};
/// boolean
inline constexpr NEBConstant NEBSourceControlRequestOptionDiffFromCommonAncestor{
    "NEBSourceControlRequestOptionDiffFromCommonAncestor"};
/// boolean
inline constexpr NEBConstant NEBSourceControlRequestOptionPullByFastForwarding{
    "NEBSourceControlRequestOptionPullByFastForwarding"};

/// All option keys.
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
};

// Keys of the dictionaries in an operation's result, with the kind of value behind each.

/// path string (status), LOMFilePath (export of a file)
inline constexpr NEBConstant NEBSourceControlOperationPathKey{"NEBSourceControlOperationPathKey"};
/// integer, a status value
inline constexpr NEBConstant NEBSourceControlOperationWCStatusKey{
    "NEBSourceControlOperationWCStatusKey"};
/// string
inline constexpr NEBConstant NEBSourceControlOperationNameKey{"NEBSourceControlOperationNameKey"};
/// boolean
inline constexpr NEBConstant NEBSourceControlOperationIsLeafKey{
    "NEBSourceControlOperationIsLeafKey"};
/// string
inline constexpr NEBConstant NEBSourceControlOperationRevisionKey{
    "NEBSourceControlOperationRevisionKey"};
/// string
inline constexpr NEBConstant NEBSourceControlOperationAuthorKey{
    "NEBSourceControlOperationAuthorKey"};
/// string
inline constexpr NEBConstant NEBSourceControlOperationAuthorEmailKey{
    "NEBSourceControlOperationAuthorEmailKey"};
/// date
inline constexpr NEBConstant NEBSourceControlOperationDateKey{"NEBSourceControlOperationDateKey"};
/// string
inline constexpr NEBConstant NEBSourceControlOperationMessageKey{
    "NEBSourceControlOperationMessageKey"};
/// dictionary from path string to status value
inline constexpr NEBConstant NEBSourceControlOperationFilesKey{"NEBSourceControlOperationFilesKey"};
/// string: the line number as git printed it
inline constexpr NEBConstant NEBSourceControlOperationLineNumberKey{
    "NEBSourceControlOperationLineNumberKey"};
/// string: a tool's raw output
inline constexpr NEBConstant NEBSourceControlOperationContentKey{
    "NEBSourceControlOperationContentKey"};
/// string
inline constexpr NEBConstant NEBSourceControlOperationRemoteNameKey{
    "NEBSourceControlOperationRemoteNameKey"};
/// string, a URL
inline constexpr NEBConstant NEBSourceControlOperationRemoteOriginKey{
    "NEBSourceControlOperationRemoteOriginKey"};
/// path string
inline constexpr NEBConstant NEBSourceControlOperationRepositoryRootKey{
    "NEBSourceControlOperationRepositoryRootKey"};
/// string
inline constexpr NEBConstant NEBSourceControlOperationTypeKey{"NEBSourceControlOperationTypeKey"};
/// boolean
inline constexpr NEBConstant NEBSourceControlOperationUsesGitSVNKey{
    "NEBSourceControlOperationUsesGitSVNKey"};

// Revisions by name, in place of a commit's name.

inline constexpr NEBConstant NEBSourceControlBASERevisionName{"NEBSourceControlBASERevisionName"};
inline constexpr NEBConstant NEBSourceControlHEADRevisionName{"NEBSourceControlHEADRevisionName"};
inline constexpr NEBConstant NEBSourceControlInMemoryRevisionName{
    "NEBSourceControlInMemoryRevisionName"};
inline constexpr NEBConstant NEBSourceControlLocalRevisionName{"NEBSourceControlLocalRevisionName"};

// Errors.

/// The domain of every error that a plug-in or the host's operations make.
inline constexpr NEBConstant NEBSourceControlErrorDomain{"NEBSourceControlErrorDomain"};
/// User info: what the person is told, a string.
inline constexpr NEBConstant NEBLocalizedDescriptionKey{"NEBLocalizedDescriptionKey"};
/// User info: what the person may do about it, a string; not every error has one.
inline constexpr NEBConstant NEBLocalizedRecoverySuggestionKey{"NEBLocalizedRecoverySuggestionKey"};
/// User info: why the authentication failed.
inline constexpr NEBConstant NEBSourceControlAuthenticationErrorTypeKey{
    "NEBSourceControlAuthenticationErrorTypeKey"};
/// Value of the key above: the host should ask for the credentials again.
inline constexpr NEBConstant NEBSourceControlAuthenticationCredentialsIncorrect{
    "NEBSourceControlAuthenticationCredentialsIncorrect"};

/// Error codes in NEBSourceControlErrorDomain.
enum NEBSourceControlErrorCode : std::int64_t {
    /// An operation's own failure, and every failure that has no code of its own.
    NEBSourceControlGenericError = -1,
    NEBSourceControlFileMissingAtRevisionError = 4,
    NEBSourceControlNotReachableError = -20,
    /// Authentication failed, or the server's certificate failed to verify.
    NEBSourceControlAuthenticationError = -21,
    /// A push found nothing to send.
    NEBSourceControlRemoteUpToDateError = -25,
    NEBSourceControlUncommittedChangesError = -31,
    NEBSourceControlRemoteAheadError = -32,
    NEBSourceControlUpToDateError = -34,
    NEBSourceControlRenameTargetExistsError = -60,
    NEBSourceControlSourceDirectoryEmptyError = -70,
    /// The file is not in the index, or not under version control.
    NEBSourceControlNotVersionedError = -71,
    NEBSourceControlBranchRemovalError = -91,
    NEBSourceControlTrackingBranchNotFoundError = -92,
    NEBSourceControlFastForwardError = -200,
    NEBSourceControlBinaryMergeError = -300,
    NEBSourceControlNoPermissionError = 513,
};

}  // namespace neb

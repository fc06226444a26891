// NEBSourceControlKeys.h - keys of options, of results and of the user info of errors; symbolic
// revision names; error codes.
//
// The text of each constant is its identifier. This makes requests readable as JSON, and prevents
// that a branch has the name of a symbolic revision.
#pragma once

#include <array>
#include <cstdint>

#include "NEBFoundation/NEBConstant.h"

namespace neb {

// Option keys. The comment states the kind of the value.

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
/// integer: the maximum number of commits
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

// Keys of the records of a result. The comment states the kind of the value.

/// path string (status), LOMFilePath (export of a file)
inline constexpr NEBConstant NEBSourceControlOperationPathKey{"NEBSourceControlOperationPathKey"};
/// integer, a NEBSourceControlStatus
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
/// dictionary from path to integer, a NEBSourceControlStatus
inline constexpr NEBConstant NEBSourceControlOperationFilesKey{"NEBSourceControlOperationFilesKey"};
/// string: the line number as git printed it
inline constexpr NEBConstant NEBSourceControlOperationLineNumberKey{
    "NEBSourceControlOperationLineNumberKey"};
/// string: unparsed output of git
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

// Symbolic revision names.

inline constexpr NEBConstant NEBSourceControlBASERevisionName{"NEBSourceControlBASERevisionName"};
inline constexpr NEBConstant NEBSourceControlHEADRevisionName{"NEBSourceControlHEADRevisionName"};
inline constexpr NEBConstant NEBSourceControlInMemoryRevisionName{
    "NEBSourceControlInMemoryRevisionName"};
inline constexpr NEBConstant NEBSourceControlLocalRevisionName{"NEBSourceControlLocalRevisionName"};

// Errors.

/// The domain of all errors of plug-ins and operations.
inline constexpr NEBConstant NEBSourceControlErrorDomain{"NEBSourceControlErrorDomain"};
/// User info: the description for the user, a string.
inline constexpr NEBConstant NEBLocalizedDescriptionKey{"NEBLocalizedDescriptionKey"};
/// User info: what the user can do about it, a string. Optional.
inline constexpr NEBConstant NEBLocalizedRecoverySuggestionKey{"NEBLocalizedRecoverySuggestionKey"};
/// User info: why the authentication failed.
inline constexpr NEBConstant NEBSourceControlAuthenticationErrorTypeKey{
    "NEBSourceControlAuthenticationErrorTypeKey"};
/// Value of the key above: the host should ask the user for the credentials again.
inline constexpr NEBConstant NEBSourceControlAuthenticationCredentialsIncorrect{
    "NEBSourceControlAuthenticationCredentialsIncorrect"};

/// Error codes in NEBSourceControlErrorDomain.
enum NEBSourceControlErrorCode : std::int64_t {
    /// Any failure without a code of its own.
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

// NEBSourceControlExtendedKeys.h - keys of the records of the request types from 1000 on. Include
// NEBSourceControlKeys.h, which has all keys.
//
// The comment states the kind of the value, its unit, and which types return it, where it is not
// all. Of a name or path, the string has U+FFFD for bytes that are not UTF-8; the record then also
// has the key with "Bytes". A key without a value is absent. Ids have all digits.
//
//     for (const NEBDictionary& record : *operation->result()) {
//         const std::string_view shown = record.text(NEBSourceControlOperationPathKey);
//         const Data* raw = record.value(NEBSourceControlOperationPathBytesKey).bytes();
//         open(raw != nullptr ? raw->bytes() : shown);    // null: `shown` has all bytes
//     }
//
// Times are two values, so that a host can show the time of day of the author:
//
//     const auto seconds = record.value(NEBSourceControlOperationAuthorTimeKey).integer();
//     const auto minutes = record.value(NEBSourceControlOperationAuthorTimeOffsetKey).integer();
//     show(*seconds + *minutes * 60);
//
// docs/requests.md has an example of each type.
#pragma once

#include "NEBFoundation/NEBConstant.h"

namespace neb {

// Names.

/// Bytes: the name, if it is not UTF-8.
inline constexpr NEBConstant NEBSourceControlOperationNameBytesKey{
    "NEBSourceControlOperationNameBytesKey"};
/// Bytes: the path, if it is not UTF-8.
inline constexpr NEBConstant NEBSourceControlOperationPathBytesKey{
    "NEBSourceControlOperationPathBytesKey"};
/// String: the path before a rename, or the source of a copy. Returned by working copy state,
/// history, annotation and changes.
inline constexpr NEBConstant NEBSourceControlOperationOriginalPathKey{
    "NEBSourceControlOperationOriginalPathKey"};
/// Bytes: that path, if it is not UTF-8.
inline constexpr NEBConstant NEBSourceControlOperationOriginalPathBytesKey{
    "NEBSourceControlOperationOriginalPathBytesKey"};

// Objects and times.

/// String: what the record describes. Working copy state: "head", "changed", "renamed", "conflict",
/// "untracked" or "ignored". Tree: "file", "executable", "symbolic link", "folder" or "submodule".
/// Unfinished operation: "merge", "rebase", "apply", "cherry-pick", "revert", "bisect" or
/// "conflict". Stash, integrate, pick and finish: "head" or "conflict".
inline constexpr NEBConstant NEBSourceControlOperationKindKey{"NEBSourceControlOperationKindKey"};
/// String: the full id of an object, 40 or 64 hexadecimal digits.
inline constexpr NEBConstant NEBSourceControlOperationObjectIDKey{
    "NEBSourceControlOperationObjectIDKey"};
/// String: "commit", "tree", "blob" or "tag". Returned by references.
inline constexpr NEBConstant NEBSourceControlOperationObjectTypeKey{
    "NEBSourceControlOperationObjectTypeKey"};
/// String: the type and permissions of an entry as six octal digits, "100644".
inline constexpr NEBConstant NEBSourceControlOperationModeKey{"NEBSourceControlOperationModeKey"};
/// Integer: the size of a file in bytes. Returned by tree.
inline constexpr NEBConstant NEBSourceControlOperationSizeKey{"NEBSourceControlOperationSizeKey"};
/// String: the first paragraph of a message, on one line.
inline constexpr NEBConstant NEBSourceControlOperationSubjectKey{
    "NEBSourceControlOperationSubjectKey"};
/// String: the message after its subject, without line ends at either end. Returned by history.
inline constexpr NEBConstant NEBSourceControlOperationBodyKey{"NEBSourceControlOperationBodyKey"};
/// Integer: seconds since 1970-01-01 00:00:00 UTC. Returned by references, for the committer or
/// tagger.
inline constexpr NEBConstant NEBSourceControlOperationTimeKey{"NEBSourceControlOperationTimeKey"};
/// Integer: the time zone of that time, in minutes east of UTC.
inline constexpr NEBConstant NEBSourceControlOperationTimeOffsetKey{
    "NEBSourceControlOperationTimeOffsetKey"};

// References.

/// String: the full id of the object that an annotated tag finally names. Returned by references.
inline constexpr NEBConstant NEBSourceControlOperationPeeledIDKey{
    "NEBSourceControlOperationPeeledIDKey"};
/// String: the full name of the reference that a symbolic reference names. Returned by references.
inline constexpr NEBConstant NEBSourceControlOperationSymbolicTargetKey{
    "NEBSourceControlOperationSymbolicTargetKey"};
/// Boolean, only true: the branch is checked out in the working copy of the request (references),
/// or the worktree is that of the request (worktrees).
inline constexpr NEBConstant NEBSourceControlOperationIsCurrentKey{
    "NEBSourceControlOperationIsCurrentKey"};
/// String: the reference that a branch tracks; the full name (references, change branch), or the
/// short name (working copy state).
inline constexpr NEBConstant NEBSourceControlOperationUpstreamKey{
    "NEBSourceControlOperationUpstreamKey"};
/// Bytes: the upstream, if it is not UTF-8.
inline constexpr NEBConstant NEBSourceControlOperationUpstreamBytesKey{
    "NEBSourceControlOperationUpstreamBytesKey"};
/// Boolean, only true: the upstream does not exist. Returned by references.
inline constexpr NEBConstant NEBSourceControlOperationUpstreamIsGoneKey{
    "NEBSourceControlOperationUpstreamIsGoneKey"};
/// Integer: the number of commits of the branch that the upstream lacks.
inline constexpr NEBConstant NEBSourceControlOperationAheadKey{"NEBSourceControlOperationAheadKey"};
/// Integer: the number of commits of the upstream that the branch lacks.
inline constexpr NEBConstant NEBSourceControlOperationBehindKey{
    "NEBSourceControlOperationBehindKey"};
/// String: the top of a working copy: of the one in which a branch is checked out (references), or
/// of a worktree (worktrees). An absolute path.
inline constexpr NEBConstant NEBSourceControlOperationWorktreeKey{
    "NEBSourceControlOperationWorktreeKey"};
/// Bytes: that path, if it is not UTF-8.
inline constexpr NEBConstant NEBSourceControlOperationWorktreeBytesKey{
    "NEBSourceControlOperationWorktreeBytesKey"};

// States of files.

/// String: what happened to a file: "added", "copied", "deleted", "modified", "renamed", "type
/// changed" or "conflict" (history, changes). Submodules: "not initialized", "not cloned",
/// "current", "other commit" or "conflict". Discard, stash and pick: also "untracked". Publish:
/// "new", "updated", "forced", "deleted", "up to date" or "rejected".
inline constexpr NEBConstant NEBSourceControlOperationStateKey{"NEBSourceControlOperationStateKey"};
/// String: how the index differs from HEAD, with the words of NEBSourceControlOperationStateKey.
/// Returned by working copy state.
inline constexpr NEBConstant NEBSourceControlOperationIndexStateKey{
    "NEBSourceControlOperationIndexStateKey"};
/// String: how the file differs from the index, with the same words. Returned by working copy
/// state.
inline constexpr NEBConstant NEBSourceControlOperationWorkingTreeStateKey{
    "NEBSourceControlOperationWorkingTreeStateKey"};
/// Integer: how much of a renamed or copied file is unchanged, in per cent.
inline constexpr NEBConstant NEBSourceControlOperationSimilarityKey{
    "NEBSourceControlOperationSimilarityKey"};
/// String: what both sides of a merge did: "both deleted", "added by us", "deleted by them", "added
/// by them", "deleted by us", "both added" or "both modified".
inline constexpr NEBConstant NEBSourceControlOperationConflictKey{
    "NEBSourceControlOperationConflictKey"};
/// Array of dictionaries: the versions of a file in conflict, each with
/// NEBSourceControlOperationStageKey, NEBSourceControlOperationModeKey and
/// NEBSourceControlOperationObjectIDKey.
inline constexpr NEBConstant NEBSourceControlOperationStagesKey{
    "NEBSourceControlOperationStagesKey"};
/// Integer: 1 for the common ancestor, 2 for our side, 3 for their side.
inline constexpr NEBConstant NEBSourceControlOperationStageKey{"NEBSourceControlOperationStageKey"};
/// String: the mode in HEAD, like NEBSourceControlOperationModeKey.
inline constexpr NEBConstant NEBSourceControlOperationHEADModeKey{
    "NEBSourceControlOperationHEADModeKey"};
/// String: the mode in the index.
inline constexpr NEBConstant NEBSourceControlOperationIndexModeKey{
    "NEBSourceControlOperationIndexModeKey"};
/// String: the mode in the working copy.
inline constexpr NEBConstant NEBSourceControlOperationWorkingTreeModeKey{
    "NEBSourceControlOperationWorkingTreeModeKey"};
/// String: the full id of the object in HEAD.
inline constexpr NEBConstant NEBSourceControlOperationHEADObjectIDKey{
    "NEBSourceControlOperationHEADObjectIDKey"};
/// String: the full id of the object in the index.
inline constexpr NEBConstant NEBSourceControlOperationIndexObjectIDKey{
    "NEBSourceControlOperationIndexObjectIDKey"};
/// Integer: the number of stash entries. Returned by working copy state with git 2.35 or later.
inline constexpr NEBConstant NEBSourceControlOperationStashCountKey{
    "NEBSourceControlOperationStashCountKey"};
/// Boolean, only true: the path is a submodule.
inline constexpr NEBConstant NEBSourceControlOperationIsSubmoduleKey{
    "NEBSourceControlOperationIsSubmoduleKey"};
/// Boolean, only true: another commit is checked out in the submodule than in the index.
inline constexpr NEBConstant NEBSourceControlOperationSubmoduleCommitChangedKey{
    "NEBSourceControlOperationSubmoduleCommitChangedKey"};
/// Boolean, only true: the submodule has changes of tracked files.
inline constexpr NEBConstant NEBSourceControlOperationSubmoduleModifiedKey{
    "NEBSourceControlOperationSubmoduleModifiedKey"};
/// Boolean, only true: the submodule has untracked files.
inline constexpr NEBConstant NEBSourceControlOperationSubmoduleHasUntrackedKey{
    "NEBSourceControlOperationSubmoduleHasUntrackedKey"};

// Commits.

/// Array of strings: the full ids of the parents. Returned by history.
inline constexpr NEBConstant NEBSourceControlOperationParentsKey{
    "NEBSourceControlOperationParentsKey"};
/// Array of strings, or bytes for a name that is not UTF-8: the full names of the references to the
/// commit. Returned by history.
inline constexpr NEBConstant NEBSourceControlOperationReferencesKey{
    "NEBSourceControlOperationReferencesKey"};
/// Boolean, only true: HEAD is this commit. Returned by history.
inline constexpr NEBConstant NEBSourceControlOperationIsHEADKey{
    "NEBSourceControlOperationIsHEADKey"};
/// Boolean, only true: the parents of the commit are missing, as at the end of a shallow history.
/// Returned by history.
inline constexpr NEBConstant NEBSourceControlOperationIsGraftedKey{
    "NEBSourceControlOperationIsGraftedKey"};
/// Integer: when the author wrote the change, in seconds since 1970-01-01 00:00:00 UTC.
inline constexpr NEBConstant NEBSourceControlOperationAuthorTimeKey{
    "NEBSourceControlOperationAuthorTimeKey"};
/// Integer: the time zone of that time, in minutes east of UTC.
inline constexpr NEBConstant NEBSourceControlOperationAuthorTimeOffsetKey{
    "NEBSourceControlOperationAuthorTimeOffsetKey"};
/// String: the name of the committer. Returned by history and annotation.
inline constexpr NEBConstant NEBSourceControlOperationCommitterKey{
    "NEBSourceControlOperationCommitterKey"};
/// String: the e-mail address of the committer.
inline constexpr NEBConstant NEBSourceControlOperationCommitterEmailKey{
    "NEBSourceControlOperationCommitterEmailKey"};
/// Integer: when the commit was made, in seconds since 1970-01-01 00:00:00 UTC.
inline constexpr NEBConstant NEBSourceControlOperationCommitterTimeKey{
    "NEBSourceControlOperationCommitterTimeKey"};
/// Integer: the time zone of that time, in minutes east of UTC.
inline constexpr NEBConstant NEBSourceControlOperationCommitterTimeOffsetKey{
    "NEBSourceControlOperationCommitterTimeOffsetKey"};

// Changed files and lines.

/// Array of dictionaries, one for each file that the commit changed. Returned by history.
inline constexpr NEBConstant NEBSourceControlOperationChangesKey{
    "NEBSourceControlOperationChangesKey"};
/// String: the mode before the change, like NEBSourceControlOperationModeKey.
inline constexpr NEBConstant NEBSourceControlOperationOldModeKey{
    "NEBSourceControlOperationOldModeKey"};
/// String: the mode after the change.
inline constexpr NEBConstant NEBSourceControlOperationNewModeKey{
    "NEBSourceControlOperationNewModeKey"};
/// String: the full id of the file before the change; of HEAD before a stash, integrate, pick or
/// finish; of the published reference at the remote before it.
inline constexpr NEBConstant NEBSourceControlOperationOldObjectIDKey{
    "NEBSourceControlOperationOldObjectIDKey"};
/// String: the full id of the file, or of the published reference, after the change.
inline constexpr NEBConstant NEBSourceControlOperationNewObjectIDKey{
    "NEBSourceControlOperationNewObjectIDKey"};
/// Integer: the number of added lines.
inline constexpr NEBConstant NEBSourceControlOperationAddedLinesKey{
    "NEBSourceControlOperationAddedLinesKey"};
/// Integer: the number of deleted lines.
inline constexpr NEBConstant NEBSourceControlOperationDeletedLinesKey{
    "NEBSourceControlOperationDeletedLinesKey"};
/// Boolean, only true: the file is binary, so that it has no lines.
inline constexpr NEBConstant NEBSourceControlOperationIsBinaryKey{
    "NEBSourceControlOperationIsBinaryKey"};
/// Array of dictionaries, one for each changed part of the file. Returned by changes.
inline constexpr NEBConstant NEBSourceControlOperationHunksKey{"NEBSourceControlOperationHunksKey"};
/// Integer: the first line of a hunk before the change, from 1; 0 in an empty file.
inline constexpr NEBConstant NEBSourceControlOperationOldStartKey{
    "NEBSourceControlOperationOldStartKey"};
/// Integer: the number of lines of a hunk before the change.
inline constexpr NEBConstant NEBSourceControlOperationOldCountKey{
    "NEBSourceControlOperationOldCountKey"};
/// Integer: the first line of a hunk after the change, from 1; 0 in an empty file.
inline constexpr NEBConstant NEBSourceControlOperationNewStartKey{
    "NEBSourceControlOperationNewStartKey"};
/// Integer: the number of lines of a hunk after the change.
inline constexpr NEBConstant NEBSourceControlOperationNewCountKey{
    "NEBSourceControlOperationNewCountKey"};
/// String: the line before a hunk, usually the name of a function.
inline constexpr NEBConstant NEBSourceControlOperationHeadingKey{
    "NEBSourceControlOperationHeadingKey"};
/// Array of strings, or bytes for a line that is not UTF-8, without line ends. Annotation: the
/// lines of the group. Changes: the lines of the hunk, each after " ", "+" or "-"; "\\" begins the
/// note that the line before has no line end.
inline constexpr NEBConstant NEBSourceControlOperationLinesKey{"NEBSourceControlOperationLinesKey"};
/// Integer: the first line of a group, from 1. Returned by annotation.
inline constexpr NEBConstant NEBSourceControlOperationFirstLineKey{
    "NEBSourceControlOperationFirstLineKey"};
/// Integer: the number that this line had in the commit. Returned by annotation.
inline constexpr NEBConstant NEBSourceControlOperationOriginalLineKey{
    "NEBSourceControlOperationOriginalLineKey"};
/// Integer: the number of lines of a group. Returned by annotation.
inline constexpr NEBConstant NEBSourceControlOperationLineCountKey{
    "NEBSourceControlOperationLineCountKey"};
/// String: the full id of the commit in which to continue the annotation of the group.
inline constexpr NEBConstant NEBSourceControlOperationPreviousIDKey{
    "NEBSourceControlOperationPreviousIDKey"};
/// Boolean, only true: the annotation ends at this commit, whether it changed the line or not.
inline constexpr NEBConstant NEBSourceControlOperationIsBoundaryKey{
    "NEBSourceControlOperationIsBoundaryKey"};
/// Boolean, only true: the lines are not committed.
inline constexpr NEBConstant NEBSourceControlOperationIsUncommittedKey{
    "NEBSourceControlOperationIsUncommittedKey"};
/// Bytes: the content of a file, if it is not UTF-8. Returned by content;
/// NEBSourceControlOperationContentKey has any other.
inline constexpr NEBConstant NEBSourceControlOperationContentBytesKey{
    "NEBSourceControlOperationContentBytesKey"};

// Publish.

/// String: the reference or revision that was pushed; absent if a reference was deleted. Change
/// branch: the full name of the branch before a rename.
inline constexpr NEBConstant NEBSourceControlOperationSourceKey{
    "NEBSourceControlOperationSourceKey"};
/// Bytes: that source, if it is not UTF-8.
inline constexpr NEBConstant NEBSourceControlOperationSourceBytesKey{
    "NEBSourceControlOperationSourceBytesKey"};
/// String: why a reference was not pushed, as git or the server words it.
inline constexpr NEBConstant NEBSourceControlOperationReasonKey{
    "NEBSourceControlOperationReasonKey"};
/// Array of strings, or bytes of those that are not UTF-8: the lines that the server says. Used by
/// publish.
inline constexpr NEBConstant NEBSourceControlOperationRemoteLinesKey{
    "NEBSourceControlOperationRemoteLinesKey"};

// Unfinished operations.

/// Integer: the current step of the operation, from 1.
inline constexpr NEBConstant NEBSourceControlOperationStepKey{"NEBSourceControlOperationStepKey"};
/// Integer: the number of steps of the operation.
inline constexpr NEBConstant NEBSourceControlOperationStepCountKey{
    "NEBSourceControlOperationStepCountKey"};
/// String: the full id of the commit onto which a rebase puts commits.
inline constexpr NEBConstant NEBSourceControlOperationOntoKey{"NEBSourceControlOperationOntoKey"};

// Submodules, worktrees and settings.

/// String: the address of a submodule, as written in .gitmodules.
inline constexpr NEBConstant NEBSourceControlOperationURLKey{"NEBSourceControlOperationURLKey"};
/// String: the commit that is checked out in a submodule, as the latest tag describes it:
/// "v1.0-3-g0123456"; without a tag the abbreviated id.
inline constexpr NEBConstant NEBSourceControlOperationDescriptionKey{
    "NEBSourceControlOperationDescriptionKey"};
/// String: the branch of a submodule that an update follows, or the full name of the branch that is
/// checked out in a worktree.
inline constexpr NEBConstant NEBSourceControlOperationBranchKey{
    "NEBSourceControlOperationBranchKey"};
/// Bytes: that branch, if it is not UTF-8.
inline constexpr NEBConstant NEBSourceControlOperationBranchBytesKey{
    "NEBSourceControlOperationBranchBytesKey"};
/// Boolean, only true: the worktree is the main one, with the repository in it.
inline constexpr NEBConstant NEBSourceControlOperationIsMainKey{
    "NEBSourceControlOperationIsMainKey"};
/// Boolean, only true: the repository has no working copy.
inline constexpr NEBConstant NEBSourceControlOperationIsBareKey{
    "NEBSourceControlOperationIsBareKey"};
/// Boolean, only true: no branch is checked out.
inline constexpr NEBConstant NEBSourceControlOperationIsDetachedKey{
    "NEBSourceControlOperationIsDetachedKey"};
/// Boolean, only true: the worktree is protected from being removed.
inline constexpr NEBConstant NEBSourceControlOperationIsLockedKey{
    "NEBSourceControlOperationIsLockedKey"};
/// String: why it is.
inline constexpr NEBConstant NEBSourceControlOperationLockReasonKey{
    "NEBSourceControlOperationLockReasonKey"};
/// Boolean, only true: the folder of the worktree is missing.
inline constexpr NEBConstant NEBSourceControlOperationIsPrunableKey{
    "NEBSourceControlOperationIsPrunableKey"};
/// String: how git describes that.
inline constexpr NEBConstant NEBSourceControlOperationPruneReasonKey{
    "NEBSourceControlOperationPruneReasonKey"};
/// String: the value of a setting; absent for a name without one, which means true.
inline constexpr NEBConstant NEBSourceControlOperationValueKey{"NEBSourceControlOperationValueKey"};
/// Bytes: the value, if it is not UTF-8.
inline constexpr NEBConstant NEBSourceControlOperationValueBytesKey{
    "NEBSourceControlOperationValueBytesKey"};
/// String: where a setting comes from: "system", "global", "local", "worktree", "command", or
/// "identity" for the names and addresses that a new commit would have.
inline constexpr NEBConstant NEBSourceControlOperationScopeKey{"NEBSourceControlOperationScopeKey"};
/// String: the file of the setting, as "file:PATH".
inline constexpr NEBConstant NEBSourceControlOperationOriginKey{
    "NEBSourceControlOperationOriginKey"};
/// Bytes: the origin, if it is not UTF-8.
inline constexpr NEBConstant NEBSourceControlOperationOriginBytesKey{
    "NEBSourceControlOperationOriginBytesKey"};

}  // namespace neb

// NEBSourceControlExtendedKeys.h - keys of the records of the request types from 1000 on. Include
// NEBSourceControlKeys.h, which has all keys.
//
// The comment states the kind of the value and its unit. Of a name or path, the string has U+FFFD
// for bytes that are not UTF-8; the record then also has the key with "Bytes". A key whose value is
// empty or does not exist is absent. Ids have all digits.
#pragma once

#include "NEBFoundation/NEBConstant.h"

namespace neb {

// Names. NEBSourceControlOperationNameKey and NEBSourceControlOperationPathKey have the strings.

/// bytes: the name, if it is not UTF-8
inline constexpr NEBConstant NEBSourceControlOperationNameBytesKey{
    "NEBSourceControlOperationNameBytesKey"};
/// bytes: the path, if it is not UTF-8
inline constexpr NEBConstant NEBSourceControlOperationPathBytesKey{
    "NEBSourceControlOperationPathBytesKey"};

// Objects and times.

/// string: the full id of an object
inline constexpr NEBConstant NEBSourceControlOperationObjectIDKey{
    "NEBSourceControlOperationObjectIDKey"};
/// string: "commit", "tree", "blob" or "tag"
inline constexpr NEBConstant NEBSourceControlOperationObjectTypeKey{
    "NEBSourceControlOperationObjectTypeKey"};
/// string: the first line or paragraph of a message, on one line
inline constexpr NEBConstant NEBSourceControlOperationSubjectKey{
    "NEBSourceControlOperationSubjectKey"};
/// integer: seconds since 1970-01-01 00:00:00 UTC
inline constexpr NEBConstant NEBSourceControlOperationTimeKey{"NEBSourceControlOperationTimeKey"};
/// integer: the time zone of the time, in minutes east of UTC
inline constexpr NEBConstant NEBSourceControlOperationTimeOffsetKey{
    "NEBSourceControlOperationTimeOffsetKey"};

// References.

/// string: the full id of the object that an annotated tag refers to
inline constexpr NEBConstant NEBSourceControlOperationPeeledIDKey{
    "NEBSourceControlOperationPeeledIDKey"};
/// string: the full name of the reference that a symbolic reference refers to
inline constexpr NEBConstant NEBSourceControlOperationSymbolicTargetKey{
    "NEBSourceControlOperationSymbolicTargetKey"};
/// boolean, only true: the branch is checked out in the working copy of the request
inline constexpr NEBConstant NEBSourceControlOperationIsCurrentKey{
    "NEBSourceControlOperationIsCurrentKey"};
/// string: the full name of the reference that a branch tracks
inline constexpr NEBConstant NEBSourceControlOperationUpstreamKey{
    "NEBSourceControlOperationUpstreamKey"};
/// bytes: the upstream, if it is not UTF-8
inline constexpr NEBConstant NEBSourceControlOperationUpstreamBytesKey{
    "NEBSourceControlOperationUpstreamBytesKey"};
/// boolean, only true: the upstream does not exist
inline constexpr NEBConstant NEBSourceControlOperationUpstreamIsGoneKey{
    "NEBSourceControlOperationUpstreamIsGoneKey"};
/// integer: the number of commits that the upstream lacks
inline constexpr NEBConstant NEBSourceControlOperationAheadKey{"NEBSourceControlOperationAheadKey"};
/// integer: the number of commits of the upstream that the branch lacks
inline constexpr NEBConstant NEBSourceControlOperationBehindKey{
    "NEBSourceControlOperationBehindKey"};
/// path string: the top of the working copy in which the branch is checked out
inline constexpr NEBConstant NEBSourceControlOperationWorktreeKey{
    "NEBSourceControlOperationWorktreeKey"};
/// bytes: that path, if it is not UTF-8
inline constexpr NEBConstant NEBSourceControlOperationWorktreeBytesKey{
    "NEBSourceControlOperationWorktreeBytesKey"};

}  // namespace neb

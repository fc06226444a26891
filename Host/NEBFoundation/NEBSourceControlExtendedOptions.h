// NEBSourceControlExtendedOptions.h - keys of the options of the request types from 1000 on.
// Include NEBSourceControlKeys.h, which has all keys.
//
// The comment states the kind of the value and the types that use it. A text can have any bytes.
//
//     auto request = NEBSourceControlRequest::initWithType(NEBSourceControlRequestHistory, tree);
//     request->options = NEBDictionary{
//         {NEBSourceControlRequestOptionStartingRevisions, std::vector<NEBValue>{"main", "v1"}},
//         {NEBSourceControlRequestOptionSearchMessage, "fix"},
//         {NEBSourceControlRequestOptionLogOutputLimit, 100}};
//
// In JSON, the array is ["main", "v1"], and a text that is not UTF-8 is {"base64": "…"}.
#pragma once

#include "NEBFoundation/NEBConstant.h"

namespace neb {

/// Boolean: a request that reads may contact the server for objects that a partial clone lacks.
/// Without it, such a request fails with an error of the class "objects-missing".
inline constexpr NEBConstant NEBSourceControlRequestOptionFetchMissingObjects{
    "NEBSourceControlRequestOptionFetchMissingObjects"};
/// String: "no", "normal" (folders without tracked files are one entry) or "all". Used by working
/// copy state.
inline constexpr NEBConstant NEBSourceControlRequestOptionUntrackedFiles{
    "NEBSourceControlRequestOptionUntrackedFiles"};
/// Boolean: list ignored files, too. Used by working copy state.
inline constexpr NEBConstant NEBSourceControlRequestOptionIgnoredFiles{
    "NEBSourceControlRequestOptionIgnoredFiles"};
/// Array of strings: revisions to start from, beside the starting revision. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionStartingRevisions{
    "NEBSourceControlRequestOptionStartingRevisions"};
/// Array of strings: revisions to leave out with everything that can be reached from them. Used by
/// history.
inline constexpr NEBConstant NEBSourceControlRequestOptionExcludedRevisions{
    "NEBSourceControlRequestOptionExcludedRevisions"};
/// Boolean: start from all references and HEAD. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionAllReferences{
    "NEBSourceControlRequestOptionAllReferences"};
/// String: "date", "author date" or "topology"; in each, no parent comes before its children. Used
/// by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionOrder{
    "NEBSourceControlRequestOptionOrder"};
/// Boolean: oldest commits first. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionReverse{
    "NEBSourceControlRequestOptionReverse"};
/// Boolean: follow only the first parent of merges. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionFirstParent{
    "NEBSourceControlRequestOptionFirstParent"};
/// Boolean: of the files of the request, replace parents that are left out by the nearest ancestors
/// that are not, so that the records connect; includes merges that connect them. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionRewriteParents{
    "NEBSourceControlRequestOptionRewriteParents"};
/// Boolean: follow the only file beyond renames. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionFollow{
    "NEBSourceControlRequestOptionFollow"};
/// String: a text in the message. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionSearchMessage{
    "NEBSourceControlRequestOptionSearchMessage"};
/// String: a text in the name or e-mail address of the author. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionSearchAuthor{
    "NEBSourceControlRequestOptionSearchAuthor"};
/// String: a text whose number of occurrences in a file changed. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionSearchContent{
    "NEBSourceControlRequestOptionSearchContent"};
/// Boolean: ignore the case of letters in searched messages and authors. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionIgnoreCase{
    "NEBSourceControlRequestOptionIgnoreCase"};
/// String: only commits that are not older than this date, as git reads it: "2024-01-31", "2 weeks
/// ago". Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionSince{
    "NEBSourceControlRequestOptionSince"};
/// String: only commits that are not newer than this date. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionUntil{
    "NEBSourceControlRequestOptionUntil"};
/// Boolean: count the changed lines of each file. Used by history.
inline constexpr NEBConstant NEBSourceControlRequestOptionLineCounts{
    "NEBSourceControlRequestOptionLineCounts"};
/// Boolean: compare a commit, by default HEAD, with the index. Used by changes.
inline constexpr NEBConstant NEBSourceControlRequestOptionStaged{
    "NEBSourceControlRequestOptionStaged"};
/// Integer: the number of unchanged lines around a change, 3 by default. Used by changes.
inline constexpr NEBConstant NEBSourceControlRequestOptionContextLines{
    "NEBSourceControlRequestOptionContextLines"};
/// Boolean: ignore differences of white space. Used by annotation and changes.
inline constexpr NEBConstant NEBSourceControlRequestOptionIgnoreWhiteSpace{
    "NEBSourceControlRequestOptionIgnoreWhiteSpace"};
/// Integer: the first line to annotate, from 1. Used by annotation.
inline constexpr NEBConstant NEBSourceControlRequestOptionFirstLine{
    "NEBSourceControlRequestOptionFirstLine"};
/// Integer: the last line to annotate. Used by annotation.
inline constexpr NEBConstant NEBSourceControlRequestOptionLastLine{
    "NEBSourceControlRequestOptionLastLine"};
/// String or bytes: the content of the file in an editor, which is not saved. Used by annotation.
inline constexpr NEBConstant NEBSourceControlRequestOptionContent{
    "NEBSourceControlRequestOptionContent"};
/// Boolean: find lines that moved within a file. Used by annotation.
inline constexpr NEBConstant NEBSourceControlRequestOptionDetectMoves{
    "NEBSourceControlRequestOptionDetectMoves"};
/// Boolean: find lines that came from other files that the same commit changed. Used by annotation.
inline constexpr NEBConstant NEBSourceControlRequestOptionDetectCopies{
    "NEBSourceControlRequestOptionDetectCopies"};
/// Integer: read the file from the index: 0, or in a conflict 1 for the common ancestor, 2 for our
/// side, 3 for their side. Used by content.
inline constexpr NEBConstant NEBSourceControlRequestOptionStage{
    "NEBSourceControlRequestOptionStage"};
/// Boolean: convert the content as for the working copy: line ends, encoding and filter programs.
/// Used by content.
inline constexpr NEBConstant NEBSourceControlRequestOptionApplyFilters{
    "NEBSourceControlRequestOptionApplyFilters"};
/// Boolean: list the entries of all folders below, too (tree); update submodules of submodules, too
/// (submodules).
inline constexpr NEBConstant NEBSourceControlRequestOptionRecursive{
    "NEBSourceControlRequestOptionRecursive"};
/// Boolean: return no sizes, which need the objects of files. Used by tree.
inline constexpr NEBConstant NEBSourceControlRequestOptionOmitSizes{
    "NEBSourceControlRequestOptionOmitSizes"};
/// Array of strings: the names of the settings to return, "user.name"; one name to set or unset.
/// Used by identity and settings.
inline constexpr NEBConstant NEBSourceControlRequestOptionSettingNames{
    "NEBSourceControlRequestOptionSettingNames"};

}  // namespace neb

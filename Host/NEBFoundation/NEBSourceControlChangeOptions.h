// NEBSourceControlChangeOptions.h - keys of the options of the request types from 1000 on that
// change something. Include NEBSourceControlKeys.h, which has all keys.
//
// The comment states the kind of the value and the types that use it. A text can have any bytes; it
// is a string, or bytes if it is not UTF-8. Nothing that git cannot restore is thrown away unless
// NEBSourceControlRequestOptionForce is set:
//
//     auto request = NEBSourceControlRequest::initWithType(NEBSourceControlRequestDiscard, tree);
//     request->files = std::vector<NEBValue>{"a.c"};
//     request->options = NEBDictionary{{NEBSourceControlRequestOptionDryRun, true}};
//     // … the records say what would be lost; without DryRun, the error is "local-changes".
//     request->options = NEBDictionary{{NEBSourceControlRequestOptionForce, true}};
//
// A patch is what git prints as a difference; see git-apply(1). The paths in it start at the top of
// the working copy.
#pragma once

#include "NEBFoundation/NEBConstant.h"

namespace neb {

/// String: what to do. Stash: "list" (the default), "push", "show", "apply", "pop" or "drop".
/// Publish: "push" (the default) or "delete". Pick: "cherry-pick" (the default), "revert" or
/// "reset". Tag: "create" (the default) or "delete". Finish: "continue", "skip" or "abort". Change
/// branch: "begin", "rename", "set-upstream" or "unset-upstream". Submodules: "list" (the default),
/// "init" or "update". Worktrees: "list" (the default), "add", "remove" or "prune". Identity and
/// settings: "list" (the default), "set" or "unset".
inline constexpr NEBConstant NEBSourceControlRequestOptionAction{
    "NEBSourceControlRequestOptionAction"};
/// Boolean: change nothing, and return what would be thrown away. Used by discard, by pick for
/// "reset", and by worktrees for "remove".
inline constexpr NEBConstant NEBSourceControlRequestOptionDryRun{
    "NEBSourceControlRequestOptionDryRun"};
/// Text: a patch to apply instead of whole files. Used by stage, unstage and discard.
inline constexpr NEBConstant NEBSourceControlRequestOptionPatch{
    "NEBSourceControlRequestOptionPatch"};
/// Boolean: untracked files, too. Used by discard, which deletes them, and by stash.
inline constexpr NEBConstant NEBSourceControlRequestOptionIncludeUntracked{
    "NEBSourceControlRequestOptionIncludeUntracked"};

// Commits.

/// Boolean: replace the commit of HEAD. Used by create commit.
inline constexpr NEBConstant NEBSourceControlRequestOptionAmend{
    "NEBSourceControlRequestOptionAmend"};
/// Boolean: commit all changes of tracked files, staged or not (create commit); return all
/// settings, or set or unset all values of one (identity and settings).
inline constexpr NEBConstant NEBSourceControlRequestOptionAll{"NEBSourceControlRequestOptionAll"};
/// Text: the author, as "Name <address>". Used by create commit.
inline constexpr NEBConstant NEBSourceControlRequestOptionAuthor{
    "NEBSourceControlRequestOptionAuthor"};
/// Boolean: add a line "Signed-off-by". Used by create commit.
inline constexpr NEBConstant NEBSourceControlRequestOptionSignOff{
    "NEBSourceControlRequestOptionSignOff"};

// Stashes.

/// Boolean: leave staged changes as they are. Used by stash for "push".
inline constexpr NEBConstant NEBSourceControlRequestOptionKeepIndex{
    "NEBSourceControlRequestOptionKeepIndex"};
/// Boolean: stage again what was staged. Used by stash for "apply" and "pop".
inline constexpr NEBConstant NEBSourceControlRequestOptionRestoreIndex{
    "NEBSourceControlRequestOptionRestoreIndex"};

// Publish, integrate and pick.

/// Boolean: make the published branch the upstream branch. Used by publish.
inline constexpr NEBConstant NEBSourceControlRequestOptionSetUpstream{
    "NEBSourceControlRequestOptionSetUpstream"};
/// Boolean: overwrite the branch of the remote if it is as last fetched. String: if it is at this
/// commit. Used by publish.
inline constexpr NEBConstant NEBSourceControlRequestOptionForceWithLease{
    "NEBSourceControlRequestOptionForceWithLease"};
/// Boolean: all tags, too. Used by publish.
inline constexpr NEBConstant NEBSourceControlRequestOptionTags{"NEBSourceControlRequestOptionTags"};
/// String: "merge" (the default), "rebase" or "fast-forward". Used by integrate.
inline constexpr NEBConstant NEBSourceControlRequestOptionStrategy{
    "NEBSourceControlRequestOptionStrategy"};
/// String: what a reset changes beside HEAD: "soft" (nothing), "mixed" (the index, the default) or
/// "hard" (index and files). Used by pick.
inline constexpr NEBConstant NEBSourceControlRequestOptionResetMode{
    "NEBSourceControlRequestOptionResetMode"};
/// Integer: the parent, from 1, whose difference to a merge is applied. Used by pick.
inline constexpr NEBConstant NEBSourceControlRequestOptionMainline{
    "NEBSourceControlRequestOptionMainline"};

// Submodules, worktrees and settings.

/// Boolean: first initialize submodules that are not. Used by submodules for "update".
inline constexpr NEBConstant NEBSourceControlRequestOptionInitialize{
    "NEBSourceControlRequestOptionInitialize"};
/// Boolean: check out the latest commit of the remote branch of a submodule instead of the one in
/// the index. Used by submodules for "update".
inline constexpr NEBConstant NEBSourceControlRequestOptionFollowBranch{
    "NEBSourceControlRequestOptionFollowBranch"};
/// Boolean: create the branch for the new worktree. Used by worktrees for "add".
inline constexpr NEBConstant NEBSourceControlRequestOptionCreateBranch{
    "NEBSourceControlRequestOptionCreateBranch"};
/// Text: the new value of a setting. Used by identity and settings for "set".
inline constexpr NEBConstant NEBSourceControlRequestOptionValue{
    "NEBSourceControlRequestOptionValue"};
/// String: where a setting is changed: "local" (the repository, the default) or "global" (the
/// user). Used by identity and settings for "set" and "unset".
inline constexpr NEBConstant NEBSourceControlRequestOptionScope{
    "NEBSourceControlRequestOptionScope"};

}  // namespace neb

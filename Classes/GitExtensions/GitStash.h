// GitStash.h - request type 1009 (stash); see git-stash(1).
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "GitExtensions/GitChange.h"

namespace neb {

/// Does what NEBSourceControlRequestOptionAction says. The stash is the starting revision,
/// "stash@{0}" without it: a name, or the full id, which names the same stash even if others were
/// made meanwhile.
///
/// - "list", the default: a record per stash, newest first: NEBSourceControlOperationNameKey
///   ("stash@{0}"), NEBSourceControlOperationObjectIDKey, NEBSourceControlOperationSubjectKey,
///   NEBSourceControlOperationTimeKey, NEBSourceControlOperationTimeOffsetKey.
/// - "push": stashes the changes of the files, or all, with NEBSourceControlRequestOptionMessage,
///   NEBSourceControlRequestOptionIncludeUntracked and NEBSourceControlRequestOptionKeepIndex. One
///   record with the name and id of the stash; none if there was nothing to stash.
/// - "show": a record per file: NEBSourceControlOperationPathKey (from the top) and
///   NEBSourceControlOperationStateKey ("added", "deleted", "modified", "type changed",
///   "untracked").
/// - "apply", "pop": see GitChangeComposite::runStoppable(). With
///   NEBSourceControlRequestOptionRestoreIndex, staged changes are staged again. A stash that
///   causes conflicts is kept.
/// - "drop": one record with the name and id that the stash had.
class GitStashOperation : public GitChangeComposite {
public:
    using GitChangeComposite::GitChangeComposite;

    [[nodiscard]] std::string className() const override { return "GitStashOperation"; }

protected:
    void perform() override;

private:
    /// Returns the name or id of the requested stash.
    [[nodiscard]] std::string requestedName() const;
    /// Returns the record of the requested stash from the list. Absent if the composite does not go
    /// on: there is no such stash.
    [[nodiscard]] std::optional<NEBDictionary> queriedStash();
    /// Returns the name of the requested stash. Absent if the composite does not go on.
    [[nodiscard]] std::optional<std::string> queriedName();
    /// Returns whether git tracks something at each file of the request; otherwise the error is
    /// set.
    [[nodiscard]] bool knowsFiles();
    /// Returns whether a stash without untracked files loses none; otherwise the error is set.
    [[nodiscard]] bool keepsUntrackedFiles();
    /// Finds out why git failed to stash and printed nothing.
    void explainSilence();
    void list();
    void push();
    void show();
    void applyOrPop();
    void drop();
};

/// Lists the stashes, as above.
class GitStashListOperation : public GitReadingOperation {
public:
    explicit GitStashListOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitStashListOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

}  // namespace neb

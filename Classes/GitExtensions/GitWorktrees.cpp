#include "GitExtensions/GitWorktrees.h"

#include <utility>

#include "GitExtensions/GitRecordFields.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

/// Reads the attributes of a worktree, each "NAME" or "NAME VALUE" before a NUL byte; an empty one
/// ends the worktree.
class WorktreeParser : public GitNULRecordParser {
protected:
    void parsePiece(const Data& output, std::string_view attribute,
                    NEBSourceControlResult& records) override {
        if (attribute.empty()) {
            finish(records);
            return;
        }
        Scanner scanner(attribute);
        const std::string_view name = scanner.takeUpTo(' ');
        scanner.skipOne(' ');
        const std::string_view value = scanner.rest();
        if (name == "worktree") {
            gitSetName(_worktree, gitWorktreeKeys, output, value);
        } else if (name == "HEAD") {
            gitSetObjectID(_worktree, NEBSourceControlOperationObjectIDKey, value);
        } else if (name == "branch") {
            gitSetName(_worktree, gitBranchKeys, output, value);
        } else {
            setFlag(output, name, value);
        }
    }

    void finish(NEBSourceControlResult& records) override {
        if (!_worktree.isEmpty()) {
            if (std::exchange(_isFirst, false)) {
                _worktree.set(NEBSourceControlOperationIsMainKey, true);
            }
            records.push_back(std::exchange(_worktree, {}));
        }
    }

private:
    void setFlag(const Data& output, std::string_view name, std::string_view value) {
        if (name == "bare") {
            _worktree.set(NEBSourceControlOperationIsBareKey, true);
        } else if (name == "detached") {
            _worktree.set(NEBSourceControlOperationIsDetachedKey, true);
        } else if (name == "locked") {
            _worktree.set(NEBSourceControlOperationIsLockedKey, true);
            gitSetText(_worktree, NEBSourceControlOperationLockReasonKey, output, value);
        } else if (name == "prunable") {
            _worktree.set(NEBSourceControlOperationIsPrunableKey, true);
            gitSetText(_worktree, NEBSourceControlOperationPruneReasonKey, output, value);
        }
    }

    NEBDictionary _worktree;
    bool _isFirst = true;
};

}  // namespace

GitWorktreesOperation::GitWorktreesOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitReadingOperation(std::move(request)) {
    setArgumentsBehindDefaults({"worktree", "list", "--porcelain", "-z"});
    setRequiredGit("2.36");
}

std::unique_ptr<NEBSourceControlRecordParser> GitWorktreesOperation::makeRecordParser() {
    return std::make_unique<WorktreeParser>();
}

}  // namespace neb

#include "GitExtensions/GitUnfinishedOperation.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

#include "GitExtensions/GitRecordFields.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

// ---- what is under way ------------------------------------------------------------------------

/// An operation, and the files in the folder of the repository that describe it. Empty: none.
struct Row {
    /// Exists while the operation is under way.
    std::string_view file;
    std::string_view kind;
    std::string_view commit, step, stepCount, branch, onto;
};

/// The first of the operations that exclude each other counts: the steps of a rebase are
/// cherry-picks.
constexpr Row rows[] = {
    {"rebase-merge", "rebase", "REBASE_HEAD", "rebase-merge/msgnum", "rebase-merge/end",
     "rebase-merge/head-name", "rebase-merge/onto"},
    {"rebase-apply/rebasing", "rebase", "REBASE_HEAD", "rebase-apply/next", "rebase-apply/last",
     "rebase-apply/head-name", "rebase-apply/onto"},
    {"rebase-apply/applying", "apply", {}, "rebase-apply/next", "rebase-apply/last", {}, {}},
    {"MERGE_HEAD", "merge", "MERGE_HEAD", {}, {}, {}, {}},
    {"CHERRY_PICK_HEAD", "cherry-pick", "CHERRY_PICK_HEAD", {}, {}, {}, {}},
    {"REVERT_HEAD", "revert", "REVERT_HEAD", {}, {}, {}, {}},
};

/// A bisect can be under way beside another operation.
constexpr Row bisect{"BISECT_LOG", "bisect", {}, {}, {}, {}, {}};

/// Reads files in the folder of a repository.
class RepositoryFolder {
public:
    explicit RepositoryFolder(std::string_view path) : _path(path) {}

    [[nodiscard]] bool has(std::string_view file) const {
        const std::string path = pathByAppendingComponent(_path, file);
        return interceptedFact("exists", path, [&path] {
            std::error_code failure;
            return std::filesystem::exists(path, failure);
        });
    }
    /// Returns the first line of a file; empty if it cannot be read.
    [[nodiscard]] std::string firstLine(std::string_view file) const {
        const std::string path = pathByAppendingComponent(_path, file);
        return interceptedText("first line of", path, [&path] {
            std::ifstream stream(path, std::ios::binary);
            std::string line;
            std::getline(stream, line);
            return line;
        });
    }

private:
    std::string _path;
};

NEBDictionary recordOf(const RepositoryFolder& folder, const Row& row) {
    NEBDictionary record;
    record.set(NEBSourceControlOperationKindKey, row.kind);
    const auto lineOf = [&folder](std::string_view file) {
        return file.empty() ? std::string() : folder.firstLine(file);
    };
    const auto setID = [&](NEBConstant key, std::string_view file) {
        gitSetText(record, key, lineOf(file));
    };
    setID(NEBSourceControlOperationObjectIDKey, row.commit);
    gitSetInteger(record, NEBSourceControlOperationStepKey, lineOf(row.step));
    gitSetInteger(record, NEBSourceControlOperationStepCountKey, lineOf(row.stepCount));
    if (const std::string branch = lineOf(row.branch); branch.starts_with("refs/")) {
        gitSetName(record, gitBranchKeys, branch);
    }
    setID(NEBSourceControlOperationOntoKey, row.onto);
    return record;
}

NEBSourceControlResult operationsIn(const RepositoryFolder& folder) {
    NEBSourceControlResult records;
    const auto* row =
        std::ranges::find_if(rows, [&](const Row& other) { return folder.has(other.file); });
    if (row != std::end(rows)) {
        records.push_back(recordOf(folder, *row));
    }
    if (folder.has(bisect.file)) {
        records.push_back(recordOf(folder, bisect));
    }
    return records;
}

// ---- conflicts --------------------------------------------------------------------------------

/// The stages of a path in conflict, a bit each, and what both sides did.
struct Conflict {
    unsigned stages;
    std::string_view name;
};

constexpr unsigned ancestor = 1U << 1;
constexpr unsigned ours = 1U << 2;
constexpr unsigned theirs = 1U << 3;

constexpr Conflict conflicts[] = {
    {ancestor, "both deleted"},
    {ours, "added by us"},
    {theirs, "added by them"},
    {ancestor | ours, "deleted by them"},
    {ancestor | theirs, "deleted by us"},
    {ours | theirs, "both added"},
    {ancestor | ours | theirs, "both modified"},
};

/// Reads "MODE ID STAGE TAB PATH", and groups the stages of a path, which follow each other.
class ConflictParser : public GitNULRecordParser {
protected:
    void parsePiece(const Data& /*output*/, std::string_view entry,
                    NEBSourceControlResult& records) override {
        Scanner scanner(entry);
        const std::string_view mode = scanner.takeUpTo(' ');
        scanner.skipOne(' ');
        const std::string_view id = scanner.takeUpTo(' ');
        scanner.skipOne(' ');
        const std::int32_t stage = scanner.takeInteger().value_or(0);
        scanner.skipOne('\t');
        if (stage < 1 || stage > 3) {
            return;
        }
        if (!_stages.empty() && scanner.rest() != _path) {
            finish(records);
        }
        _path = scanner.rest();
        _stageBits |= 1U << static_cast<unsigned>(stage);
        _stages.emplace_back(gitStage(stage, mode, id));
    }

    void finish(NEBSourceControlResult& records) override {
        if (_stages.empty()) {
            return;
        }
        NEBDictionary& record = records.emplace_back();
        record.set(NEBSourceControlOperationKindKey, "conflict");
        gitSetName(record, gitPathKeys, _path);
        const auto* row = std::ranges::find(conflicts, _stageBits, &Conflict::stages);
        record.set(NEBSourceControlOperationConflictKey, row->name);
        record.set(NEBSourceControlOperationStagesKey, std::exchange(_stages, {}));
        _stageBits = 0;
    }

private:
    std::string _path;
    unsigned _stageBits = 0;
    std::vector<NEBValue> _stages;
};

}  // namespace

GitConflictsOperation::GitConflictsOperation(
    const std::shared_ptr<NEBSourceControlRequest>& request)
    : GitReadingOperation(gitRequestWithoutNames(*request)) {
    setArgumentsBehindDefaults({"ls-files", "--unmerged", "-z", "--", ":/"});
}

std::unique_ptr<NEBSourceControlRecordParser> GitConflictsOperation::makeRecordParser() {
    return std::make_unique<ConflictParser>();
}

void GitUnfinishedOperation::main() {
    setOperationQueue(std::make_shared<OperationQueue>());
    const auto folder = runQuery(request(), {"rev-parse", "--absolute-git-dir"});
    if (folder->error() || error()) {
        setError(error() ? error() : folder->error());
        return;
    }
    NEBSourceControlResult records = operationsIn(RepositoryFolder(folder->line()));
    const auto found = run<GitConflictsOperation>(request());
    if (found->error()) {
        setError(found->error());
        return;
    }
    const NEBSourceControlResult conflicted = found->result().value_or(NEBSourceControlResult());
    records.insert(records.end(), conflicted.begin(), conflicted.end());
    setResult(std::move(records));
}

}  // namespace neb

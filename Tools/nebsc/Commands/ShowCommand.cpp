#include <unistd.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include "CommandFrame/BranchQueries.h"
#include "CommandFrame/CommandTask.h"
#include "CommandFrame/CommitText.h"
#include "CommandFrame/DiffQueries.h"
#include "CommandFrame/LogEntry.h"
#include "CommandFrame/ObjectName.h"
#include "CommandFrame/RecordNames.h"
#include "CommandFrame/RevisionArguments.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PatchText.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

class ShowTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    RepositoryQuestions questions() const override {
        return {.revisions = revisionsToAskFor(arguments()), .asksBranch = true};
    }
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    /// Removes the files that the arguments do not name.
    void keepNamedFiles(NEBDictionary& commit) const;
    [[nodiscard]] std::string takeHeader(bool hasPatch);

    RevisionArguments _named;
    /// Empty once it is printed.
    std::string _header;
    std::shared_ptr<CommitPatchQuery> _patch;
    PatchText _patchText{STDOUT_FILENO, isInColour()};
};

std::optional<CommandOutput> ShowTask::validate() {
    const std::vector<std::string> all = revisionAndFileArguments(arguments());
    if (const auto name = objectNameIn(all.empty() ? "" : all.front());
        name && !isAnythingAt(all.front())) {
        return refusalWithAdvice(inQuotes(all.front()) + " is not a commit.",
                                 "'nebsc cat " + printable(all.front()) + "' prints a file.",
                                 NEBSourceControlRevisionUnknownErrorClass);
    }
    _named = readRevisionArguments(
        git(), arguments(), {.revisions = 1, .files = std::numeric_limits<std::size_t>::max()});
    if (_named.refused) {
        return _named.refused;
    }
    return _named.revisions.empty() ? refusalWithoutCommits(git()) : std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> ShowTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestHistory);
    request->startingRevision = _named.revisions.empty() ? "HEAD" : _named.revisions.front();
    NEBDictionary options;
    options.set(NEBSourceControlRequestOptionLogOutputLimit, 1);
    if (isJSON()) {
        options.set(NEBSourceControlRequestOptionLogOutputFilesChanged, true);
        options.set(NEBSourceControlRequestOptionLineCounts, true);
    }
    request->setOptions(std::move(options));
    return request;
}

/// With --json, the outcome is the record of the commit with its files. Otherwise the patch follows
/// the record.
RequestResult ShowTask::perform() {
    RequestResult commit = performRequest(makeRequest());
    auto& records = commit.outcome->result;
    if (commit.outcome->error || !records || records->empty()) {
        return commit;
    }
    if (isJSON()) {
        keepNamedFiles(records->front());
        return commit;
    }
    const LogEntry entry = entryOfHistoryRecord(records->front());
    _header = blockOf(entry, {.isColoured = isInColour(),
                              .isDecorated = true,
                              .branch = entry.isHEAD ? currentBranch(git()) : std::nullopt});
    auto request = newRequest(NEBSourceControlRequestChanges, _named.files);
    request->startingRevision = entry.id;
    _patch = std::make_shared<CommitPatchQuery>(std::move(request));
    return performStreamed(*_patch);
}

/// A history request with files would skip commits that did not change them.
void ShowTask::keepNamedFiles(NEBDictionary& commit) const {
    const std::vector<NEBValue>* changes =
        commit.value(NEBSourceControlOperationChangesKey).array();
    if (changes == nullptr || _named.files.empty()) {
        return;
    }
    const auto isNamed = [this](std::string_view path) {
        return std::ranges::any_of(_named.files, [&](const std::string& file) {
            const std::string top = pathFromTop(workingCopy(), file);
            return top.empty() || path == top || path.starts_with(top + "/");
        });
    };
    std::vector<NEBValue> kept;
    for (const NEBValue& change : *changes) {
        const NEBDictionary& file = *change.dictionary();
        if (isNamed(bytesOfName(file, pathKeys)) || isNamed(bytesOfName(file, originalPathKeys))) {
            kept.push_back(change);
        }
    }
    commit.set(NEBSourceControlOperationChangesKey, std::move(kept));
}

std::string ShowTask::takeHeader(bool hasPatch) {
    return std::exchange(_header, {}) + (hasPatch ? "\n" : "");
}

std::string ShowTask::textOfResult(const NEBSourceControlResult& /*records*/) {
    std::string lines = _patch ? _patch->takeLines() : "";
    if (lines.empty()) {
        return lines;
    }
    const std::string header = _header.empty() ? "" : takeHeader(true);
    return header + _patchText.textOf(std::move(lines));
}

/// A commit can have no patch: it is empty, or a merge without conflicts.
void ShowTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    if (!_header.empty()) {
        output.standardOutput = takeHeader(false);
    }
}

constexpr Parameter parameters[] = {
    {"REVISION", "The commit; default: HEAD", Takes::revisionOrPath},
    {"FILE", "Show only the changes of these files and folders", Takes::revisionOrPath,
     Occurs::anyNumber},
};

}  // namespace

constinit const Command showCommand{
    .name = "show",
    .group = inspectGroup,
    .summary = "Show a commit with its changes",
    .details =
        "Of a merge, shows what differs from all of its parents, such as resolved\n"
        "conflicts. A single argument is a revision or else a file; put '--' before a\n"
        "file if it could be either. With --json, prints the commit with its files and\n"
        "their counts of lines; a merge is compared with its first parent.\n"
        "\n"
        "Examples:\n"
        "  nebsc show                     the latest commit\n"
        "  nebsc show v1.0 src/main.c     what v1.0 changed in a file\n",
    .parameters = parameters,
    .activity = "Reading",
    .isPaged = true,
    .run = runTask<ShowTask>,
};

}  // namespace neb::nebsc

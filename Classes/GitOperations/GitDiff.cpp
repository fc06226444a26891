#include "GitOperations/GitDiff.h"

#include "GitOperations/GitRevision.h"
#include "GitOperations/GitStatus.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/Text.h"

namespace neb {

GitDiffOperation::GitDiffOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)),
      _diffNameAndStatusOnly(this->request()
                                 ->option(NEBSourceControlRequestOptionDiffFileNameAndStatusOnly)
                                 .boolValue()) {
    const NEBSourceControlRequest& asked = *this->request();
    std::vector<std::string> arguments{"diff", "--no-ext-diff"};
    if (_diffNameAndStatusOnly) {
        arguments.emplace_back("--name-status");
    }
    arguments.push_back(revisionArgument());
    if (asked.destination.isPresent()) {
        arguments.push_back(asked.destination.description());
    }
    if (asked.fileCount() > 0) {
        arguments.emplace_back("--");
        appendFiles(arguments);
    }
    setArgumentsBehindDefaults(arguments);
}

/// An ending revision without a starting one is ignored.
std::string GitDiffOperation::revisionArgument() const {
    const NEBValue start = gitRevisionOfCommit(request()->startingRevision);
    const NEBValue end = gitRevisionOfCommit(request()->endingRevision);
    if (!start.isPresent()) {
        return "HEAD";
    }
    if (!end.isPresent()) {
        return start.description();
    }
    const bool fromCommonAncestor =
        request()->option(NEBSourceControlRequestOptionDiffFromCommonAncestor).boolValue();
    return start.description() + (fromCommonAncestor ? "..." : "..") + end.description();
}

NEBSourceControlResult GitDiffOperation::recordsOf(std::string_view text) const {
    const auto& sourceTree = request()->sourceTree;
    GitStatusLines lines(sourceTree ? sourceTree->location.value_or("") : "");
    NEBSourceControlResult records;
    records.reserve(pieceCount(text, '\n'));
    forEachPiece(text, '\n', [&](std::string_view line) {
        if (auto record = lines.recordOf(line)) {
            records.push_back(std::move(*record));
        }
    });
    return records;
}

void GitDiffOperation::parseData() {
    if (!data() || data()->empty()) {
        return;
    }
    const Data text = NEBSourceControlTextData(*data());
    if (_diffNameAndStatusOnly) {
        setResult(recordsOf(text));
        return;
    }
    NEBDictionary record;
    record.set(NEBSourceControlOperationContentKey, text);
    setResult({{std::move(record)}});
}

}  // namespace neb

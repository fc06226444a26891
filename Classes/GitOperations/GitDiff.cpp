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

std::unique_ptr<NEBSourceControlRecordParser> GitDiffOperation::makeRecordParser() {
    const auto& sourceTree = request()->sourceTree;
    return _diffNameAndStatusOnly ? std::make_unique<GitStatusParser>(
                                        sourceTree ? sourceTree->location.value_or("") : "")
                                  : nullptr;
}

void GitDiffOperation::parseData() {
    if (!hasOutput()) {
        return;
    }
    if (_diffNameAndStatusOnly) {
        GitOperation::parseData();
        return;
    }
    NEBDictionary record;
    record.set(NEBSourceControlOperationContentKey, NEBSourceControlTextData(*data()));
    setResult({{std::move(record)}});
}

}  // namespace neb

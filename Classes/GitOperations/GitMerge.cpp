#include "GitOperations/GitMerge.h"

#include "GitOperations/GitRevision.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlText.h"

namespace neb {

namespace {

constexpr NEBSourceControlAssertionSite mergeBaseSite(int line) {
    return {.function = "-[GitMergeBaseOperation initWithRequest:]",
            .file = "Classes/GitOperations",
            .line = line};
}

/// What stands for the revision: a symbolic name means the latest commit.
void appendRevision(std::vector<std::string>& arguments, const NEBValue& revision) {
    if (gitIsSymbolicRevision(revision)) {
        arguments.emplace_back("HEAD");
    } else if (revision.isPresent()) {
        arguments.push_back(revision.description());
    }
}

}  // namespace

GitMergeOperation::GitMergeOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    std::vector<std::string> arguments{"merge", "-s", "recursive", "-X", "ours"};
    const NEBSourceControlRequest& asked = *this->request();
    if (asked.endingRevision.isPresent()) {
        arguments.push_back(asked.endingRevision.description());
    } else if (asked.destination.isPresent()) {
        arguments.push_back(asked.destination.description());
    }
    if (!error()) {
        setArguments(std::move(arguments));
    }
}

GitMergeBaseOperation::GitMergeBaseOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    NEBSourceControlAssertNonEmptyString(mergeBaseSite(1344), asked.startingRevision,
                                         "startingRevision");
    NEBSourceControlAssertNonEmptyString(mergeBaseSite(1345), asked.endingRevision,
                                         "endingRevision");
    std::vector<std::string> arguments{"merge-base"};
    appendRevision(arguments, asked.startingRevision);
    appendRevision(arguments, asked.endingRevision);
    setArguments(std::move(arguments));
}

void GitMergeBaseOperation::parseData() {
    if (!data() || data()->empty()) {
        return;
    }
    const std::string text = *_nebsc_stringFromData(data());
    const std::size_t lastLineEnd = text.rfind('\n');
    const std::string_view last =
        std::string_view(text).substr(lastLineEnd == std::string::npos ? 0 : lastLineEnd + 1);
    NEBDictionary record;
    record.set(NEBSourceControlOperationRevisionKey, gitAbbreviatedRevision(last));
    setResult({{std::move(record)}});
}

}  // namespace neb

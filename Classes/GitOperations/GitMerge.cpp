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

/// A symbolic revision name stands for HEAD.
NEBValue revisionFor(const NEBValue& revision) {
    return gitIsSymbolicRevision(revision) ? NEBValue("HEAD") : revision;
}

}  // namespace

GitMergeOperation::GitMergeOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    std::vector<std::string> arguments{"merge", "-s", "recursive", "-X", "ours"};
    const NEBSourceControlRequest& asked = *this->request();
    appendIfPresent(arguments,
                    asked.endingRevision.isPresent() ? asked.endingRevision : asked.destination);
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
    appendIfPresent(arguments, revisionFor(asked.startingRevision));
    appendIfPresent(arguments, revisionFor(asked.endingRevision));
    setEmptyOutputIsValid();
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

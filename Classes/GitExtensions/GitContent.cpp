#include "GitExtensions/GitContent.h"

#include "GitExtensions/GitRecordFields.h"
#include "GitOperations/GitRevision.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// Returns "REVISION:PATH", or ":STAGE:PATH" for a file of the index.
std::string objectName(const NEBSourceControlRequest& request, const std::string& path) {
    const NEBValue& stage = request.option(NEBSourceControlRequestOptionStage);
    if (stage.isPresent()) {
        return ":" + stage.description() + ":" + path;
    }
    const NEBValue revision = gitRevisionOfCommit(request.startingRevision);
    return (revision.isPresent() ? revision.description() : "HEAD") + ":" + path;
}

}  // namespace

GitContentOperation::GitContentOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitReadingOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    const bool isConverted = asked.option(NEBSourceControlRequestOptionApplyFilters).boolValue();
    setArgumentsBehindDefaults(
        {"cat-file", isConverted ? "--filters" : "blob", objectName(asked, gitPathFromTop(asked))});
}

void GitContentOperation::parseData() {
    if (!terminationStatus() || !terminationStatus()->isSuccess()) {
        return;
    }
    const Data content = data().value_or(Data());
    NEBDictionary record;
    if (isUTF8(content)) {
        record.set(NEBSourceControlOperationContentKey, content);
    } else {
        record.set(NEBSourceControlOperationContentBytesKey, NEBValue::ofBytes(content));
    }
    setResult(NEBSourceControlResult{std::move(record)});
}

}  // namespace neb

#include "GitExtensions/GitContent.h"

#include "GitExtensions/GitRecordFields.h"
#include "GitOperations/GitRevision.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// Returns the revision to read from, or ":STAGE" for the index.
std::string revisionOf(const NEBSourceControlRequest& request) {
    const NEBValue& stage = request.option(NEBSourceControlRequestOptionStage);
    if (stage.isPresent()) {
        return ":" + stage.description();
    }
    const NEBValue revision = gitRevisionOfCommit(request.startingRevision);
    return revision.isPresent() ? revision.description() : "HEAD";
}

}  // namespace

GitContentOperation::GitContentOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitNamedObjectOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    requireFile();
    requireOneOf(NEBSourceControlRequestOptionStage, {"0", "1", "2", "3"});
    const ObjectName object{revisionOf(asked), gitPathFromTop(asked)};
    setObject(object, "blob");
    const bool isConverted = asked.option(NEBSourceControlRequestOptionApplyFilters).boolValue();
    setArgumentsBehindDefaults({"cat-file", isConverted ? "--filters" : "blob", object.text()});
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

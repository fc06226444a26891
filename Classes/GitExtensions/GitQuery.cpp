#include "GitExtensions/GitQuery.h"

namespace neb {

GitQueryOperation::GitQueryOperation(std::shared_ptr<NEBSourceControlRequest> request,
                                     const std::vector<std::string>& arguments)
    : GitReadingOperation(std::move(request)) {
    setArgumentsBehindDefaults(arguments);
    setEmptyOutputIsValid();
}

std::shared_ptr<GitQueryOperation> GitQueryComposite::runQuery(
    std::shared_ptr<NEBSourceControlRequest> request, const std::vector<std::string>& arguments) {
    return runQuery(std::make_shared<GitQueryOperation>(std::move(request), arguments));
}

std::shared_ptr<GitQueryOperation> GitQueryComposite::runQuery(
    std::shared_ptr<GitQueryOperation> query) {
    runOperation(query);
    if (query->lacksAnswer() && !error()) {
        setError(query->error());
    }
    return query;
}

}  // namespace neb

#include "GitExtensions/GitNamedObject.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb {

namespace {

/// Whether another command can say more about a failure of this class.
bool isVague(const NEBSourceControlError& error) {
    return error.errorClass == NEBSourceControlUnknownErrorClass ||
           error.errorClass == NEBSourceControlRevisionUnknownErrorClass;
}

}  // namespace

void GitNamedObjectOperation::setObject(ObjectName name, std::string_view type) {
    _object = std::move(name);
    _type = type;
}

void GitNamedObjectOperation::main() {
    GitReadingOperation::main();
    if (error() && terminationStatus() && !isCancelled() && isVague(*error())) {
        setOperationQueue(std::make_shared<OperationQueue>());
        explainFailure();
    }
}

void GitNamedObjectOperation::explainFailure() {
    const auto query = runOperation(std::make_shared<GitQueryOperation>(
        request(), std::vector<std::string>{"cat-file", "-t", _object.text()}));
    if (isCancelled()) {
        return;
    }
    const bool isMissing =
        query->error() && query->error()->errorClass == NEBSourceControlObjectsDamagedErrorClass;
    const auto entry = isMissing ? queriedEntry() : nullptr;
    constexpr std::string_view modeOfSubmodule = "160000 ";
    if (entry && entry->lacksAnswer()) {
        setError(entry->error());
    } else if (entry && entry->output().starts_with(modeOfSubmodule)) {
        failForType("is a submodule");
    } else if (query->error() && !isVague(*query->error())) {
        setError(query->error());
    } else if (!query->error() && query->line() != _type) {
        failForType(_type == "blob" ? "is a folder" : "is not a folder");
    }
}

/// git has no object for a submodule, whose commit belongs to another repository.
std::shared_ptr<GitQueryOperation> GitNamedObjectOperation::queriedEntry() {
    std::vector<std::string> arguments{"ls-tree", "--full-tree", _object.revision, "--",
                                       _object.path};
    if (_object.revision.starts_with(':')) {
        arguments = {"ls-files", "--stage", "--", ":(top,literal)" + _object.path};
    }
    return runOperation(
        std::make_shared<GitQueryOperation>(gitRequestWithoutNames(*request()), arguments));
}

void GitNamedObjectOperation::failForType(std::string_view description) {
    auto failure = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError, "\"" + _object.path + "\" " + std::string(description) + ".");
    failure.errorClass = NEBSourceControlFileTypeWrongErrorClass;
    failure.files = {_object.path};
    failure.text = error()->text;
    failure.terminationStatus = error()->terminationStatus;
    setError(std::move(failure));
}

}  // namespace neb

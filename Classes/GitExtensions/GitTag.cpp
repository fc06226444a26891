#include "GitExtensions/GitTag.h"

#include "GitExtensions/GitRecordFields.h"
#include "GitOperations/GitRevision.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

std::vector<std::string> tagIDQuery(const std::string& name) {
    return {"rev-parse", "--verify", "--quiet", "refs/tags/" + name};
}

}  // namespace

void GitTagOperation::perform() {
    const auto name = gitBytesOfValue(request()->destination);
    if (!name) {
        fail(NEBSourceControlRequestInvalidErrorClass, "The request lacks the name of a tag.");
    } else if (action("create") == "create") {
        createTag(std::string(name->bytes()));
    } else if (action("") == "delete") {
        deleteTag(std::string(name->bytes()));
    } else {
        failForOption(NEBSourceControlRequestOptionAction);
    }
}

void GitTagOperation::createTag(const std::string& name) {
    if (!acceptsMessage()) {
        return;
    }
    std::vector<std::string> arguments{"tag"};
    if (hasOption(NEBSourceControlRequestOptionForce)) {
        arguments.emplace_back("--force");
    }
    auto message = gitBytesOfValue(request()->option(NEBSourceControlRequestOptionMessage));
    if (message) {
        arguments.insert(arguments.end(), {"--annotate", "--cleanup=whitespace", "--file=-"});
    }
    arguments.insert(arguments.end(), {"--", name});
    if (const auto revision = gitBytesOfValue(gitRevisionOfCommit(request()->startingRevision))) {
        arguments.emplace_back(revision->bytes());
    }
    const auto id =
        runChange(arguments, std::move(message)) ? queriedLine(tagIDQuery(name)) : std::nullopt;
    if (id) {
        setRecord(name, *id);
    }
}

void GitTagOperation::deleteTag(const std::string& name) {
    const auto id = queriedLine(tagIDQuery(name));
    if (id && runChange({"tag", "--delete", "--", name})) {
        setRecord(name, *id);
    }
}

void GitTagOperation::setRecord(const std::string& name, const std::string& id) {
    NEBDictionary record;
    gitSetName(record, gitNameKeys, "refs/tags/" + name);
    record.set(NEBSourceControlOperationObjectIDKey, id);
    setResult({{std::move(record)}});
}

}  // namespace neb

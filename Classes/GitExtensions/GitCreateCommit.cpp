#include "GitExtensions/GitCreateCommit.h"

#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

struct CommitFlag {
    NEBConstant option;
    const char* argument;
};

constexpr CommitFlag commitFlags[] = {
    {NEBSourceControlRequestOptionAmend, "--amend"},
    {NEBSourceControlRequestOptionAll, "--all"},
    {NEBSourceControlRequestOptionSignOff, "--signoff"},
    {NEBSourceControlRequestOptionAllowEmptyCommit, "--allow-empty"},
};

}  // namespace

GitCommitFromInputOperation::GitCommitFromInputOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitCommitOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    std::vector<std::string> arguments{"commit"};
    for (const CommitFlag& flag : commitFlags) {
        if (asked.option(flag.option).boolValue()) {
            arguments.emplace_back(flag.argument);
        }
    }
    const NEBValue& author = asked.option(NEBSourceControlRequestOptionAuthor);
    if (author.isPresent()) {
        arguments.push_back("--author=" + std::string(*gitBytesOfValue(author)));
    }
    const NEBValue& message = asked.option(NEBSourceControlRequestOptionMessage);
    arguments.emplace_back(message.isPresent() ? "--file=-" : "--no-edit");
    setInput(gitBytesOfValue(message));
    arguments.emplace_back("--");
    appendFiles(arguments);
    setArgumentsBehindDefaults(arguments);
}

void GitCreateCommitOperation::perform() {
    if (!goesOnAfter(*run<GitCommitFromInputOperation>(request()))) {
        return;
    }
    if (auto id = queriedHead()) {
        setResult({{{{NEBSourceControlOperationObjectIDKey, *std::move(id)}}}});
    }
}

}  // namespace neb

#include "GitExtensions/GitCreateCommit.h"

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
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

/// Whether the text has the form "NAME <ADDRESS>". git takes any other text for a pattern, and the
/// author of the first commit that matches it.
bool namesPerson(std::string_view text) {
    return text.find('<') != std::string_view::npos && text.ends_with('>') &&
           text.find('\n') == std::string_view::npos;
}

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
    const NEBValue& author = request()->option(NEBSourceControlRequestOptionAuthor);
    if (author.isPresent() && !namesPerson(author.description())) {
        fail(NEBSourceControlIdentityInvalidErrorClass,
             "The author \"" + author.description() +
                 "\" does not have the form \"NAME <ADDRESS>\".");
        return;
    }
    if (!acceptsMessage() || !goesOnAfter(*run<GitCommitFromInputOperation>(request()))) {
        return;
    }
    if (auto id = queriedHead()) {
        setResult({{{{NEBSourceControlOperationObjectIDKey, *std::move(id)}}}});
    }
}

}  // namespace neb

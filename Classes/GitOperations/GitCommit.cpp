#include "GitOperations/GitCommit.h"

#include <algorithm>
#include <array>

#include "GitOperations/GitHookFailure.h"
#include "GitOperations/GitRevision.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// Returns the text between the first and the second blank; absent without a blank.
std::optional<std::string_view> secondField(std::string_view text) {
    const std::size_t blank = text.find(' ');
    if (blank == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view rest = text.substr(blank + 1);
    return rest.substr(0, rest.find(' '));
}

}  // namespace

GitCommitOperation::GitCommitOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    std::vector<std::string> arguments{"commit"};
    const NEBSourceControlRequest& asked = *this->request();
    if (asked.option(NEBSourceControlRequestOptionAllowEmptyCommit).boolValue()) {
        arguments.emplace_back("--allow-empty");
    }
    const NEBValue& message = asked.option(NEBSourceControlRequestOptionMessage);
    if (message.isPresent()) {
        arguments.insert(arguments.end(), {"-m", message.description(), "--"});
        appendFiles(arguments);
    }
    setArgumentsBehindDefaults(arguments);
}

void GitCommitOperation::parseData() {
    // The output of a commit that failed has no id.
    const bool isMade = !terminationStatus() || terminationStatus()->isSuccess();
    if (!isMade || !data() || data()->empty()) {
        return;
    }
    const std::string text = *_nebsc_stringFromData(data());
    const auto word = secondField(text);
    if (!word) {
        setResult(std::nullopt);
        return;
    }
    NEBDictionary record;
    record.set(NEBSourceControlOperationRevisionKey, gitAbbreviatedRevision(trimmed(*word, "[] ")));
    setResult({{std::move(record)}});
}

/// git exits with status 1 and prints nothing after the output of the hook. With that status, these
/// are the only messages of its own on standard error.
std::optional<NEBSourceControlError> GitCommitOperation::diagnoseFailure(
    std::string_view text) const {
    constexpr std::array<std::string_view, 4> ownMessages{
        "error: pathspec '", "error: Error building trees", "Aborting commit due to ",
        "Please supply the message "};
    const std::string_view last = gitLastLine(text);
    const bool isOwn = std::any_of(ownMessages.begin(), ownMessages.end(),
                                   [last](std::string_view own) { return last.starts_with(own); });
    const bool hasOutput = data() && !data()->empty();
    if (!terminationStatus() || terminationStatus()->exitStatus() != 1 || hasOutput || isOwn) {
        return std::nullopt;
    }
    return gitErrorOfHook("A hook of the repository refused the commit.", text);
}

}  // namespace neb

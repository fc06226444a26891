#include "GitOperations/GitCommit.h"

#include "GitOperations/GitHookFailure.h"
#include "GitOperations/GitRevision.h"
#include "NEBFoundation/NEBSourceControlText.h"

namespace neb {

namespace {

std::string_view trimmed(std::string_view text, std::string_view characters) {
    const std::size_t first = text.find_first_not_of(characters);
    return first == std::string_view::npos
               ? std::string_view{}
               : text.substr(first, text.find_last_not_of(characters) + 1 - first);
}

/// The text between the first blank and the second; nothing without a blank.
std::optional<std::string_view> secondWord(std::string_view text) {
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
    if (!data() || data()->empty()) {
        return;
    }
    const std::string text = *_nebsc_stringFromData(data());
    const auto word = secondWord(text);
    if (!word) {
        setResult(std::nullopt);
        return;
    }
    NEBDictionary record;
    record.set(NEBSourceControlOperationRevisionKey, gitAbbreviatedRevision(trimmed(*word, "[] ")));
    setResult({{std::move(record)}});
}

std::optional<NEBSourceControlError> GitCommitOperation::errorFromUnknownFailure(
    std::optional<NEBSourceControlError> error) {
    return gitErrorOfHook(*this, std::move(error), "A hook of the repository refused the commit.");
}

}  // namespace neb

// The operations that change the working copy or the repository.

#include <utility>

#include "HgOperations.h"

/// Mercurial has no index: what is added, or is missing on disk, belongs to the next commit.
HgAddOperation::HgAddOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)) {
    std::vector<std::string> arguments{"addremove", "--quiet"};
    if (const NEBValue& path = this->request()->destination; path.isPresent()) {
        arguments.insert(arguments.end(), {"--", "relpath:" + path.description()});
    } else {
        appendFiles(arguments);
    }
    setArguments(std::move(arguments));
}

HgRemoveOperation::HgRemoveOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)) {
    std::vector<std::string> arguments{"remove", "--force", "--quiet"};
    appendFiles(arguments);
    setArguments(std::move(arguments));
}

HgCommitOperation::HgCommitOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : HgOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    std::vector<std::string> arguments;
    if (asked.option(NEBSourceControlRequestOptionAllowEmptyCommit).boolValue()) {
        arguments = {"--config", "ui.allowemptycommit=yes"};
    }
    arguments.insert(arguments.end(), {"commit", "--verbose"});
    // Without a message, the editor of the children, `true`, leaves it empty.
    if (const auto message = asked.option(NEBSourceControlRequestOptionMessage).string()) {
        setInput(Data(*message));
        arguments.emplace_back("--logfile=-");
    }
    appendFiles(arguments);
    setArguments(std::move(arguments));
}

/// Reads the last line "committed changeset NUMBER:ID"; hooks print to the same output. Without
/// such a line, there is no record.
void HgCommitOperation::readOutput(const Data& output) {
    constexpr std::string_view beginning = "committed changeset ";
    std::string_view revision;
    for (std::string_view rest = output; !rest.empty();) {
        if (const std::string_view line = takeLine(rest); line.starts_with(beginning)) {
            revision = line.substr(line.rfind(':') + 1);
        }
    }
    if (!revision.empty()) {
        setResult({{{{NEBSourceControlOperationRevisionKey, textOf(revision)}}}});
    }
}

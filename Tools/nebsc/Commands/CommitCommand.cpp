#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/Presentation.h"

namespace neb::nebsc {

namespace {

bool isAbbreviatedRevision(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

/// Each message is a paragraph, as git commit has it.
std::string messageOf(const std::vector<std::string>& paragraphs) {
    std::string message;
    for (const std::string& paragraph : paragraphs) {
        if (!message.empty()) {
            message += message.ends_with('\n') ? "\n" : "\n\n";
        }
        message += paragraph;
    }
    return message;
}

class CommitTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void report(const Outcome& outcome, CommandOutput& output) override;
};

std::shared_ptr<NEBSourceControlRequest> CommitTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestCommit, paths("FILE"));
    request->options.emplace();
    request->options->set(NEBSourceControlRequestOptionMessage,
                          messageOf(arguments().all("--message")));
    if (arguments().has("--allow-empty")) {
        request->options->set(NEBSourceControlRequestOptionAllowEmptyCommit, true);
    }
    return request;
}

/// The record holds another word than the name for a repository's first commit and for one on no
/// branch.
void CommitTask::report(const Outcome& outcome, CommandOutput& output) {
    const bool hasRecord = outcome.result && !outcome.result->empty();
    const auto word =
        hasRecord ? outcome.result->front().value(NEBSourceControlOperationRevisionKey).string()
                  : std::nullopt;
    const auto revision = word && isAbbreviatedRevision(*word) ? std::optional(std::string(*word))
                                                               : git().headCommit();
    if (revision) {
        output.standardOutput = "Committed " + printable(*revision) + ".\n";
    }
}

constexpr Parameter parameters[] = {
    {"-m,--message", "What the commit is about; of several, each is a paragraph", Takes::text,
     Occurs::oneOrMore, "MESSAGE"},
    {"--allow-empty", "Commit even if nothing has changed"},
    {"FILE", "Commit these files as they are, staged or not; unless given, all that is staged",
     Takes::path, Occurs::anyNumber},
};

}  // namespace

constinit const Command commitCommand{
    .name = "commit",
    .group = changeGroup,
    .summary = "Record the staged changes, or those of files",
    .details =
        "Examples:\n"
        "  nebsc commit -m 'Say hello'               record what is staged\n"
        "  nebsc commit -m 'Say hello' src/main.c    record the changes of one file\n",
    .parameters = parameters,
    .activity = "Committing",
    .run = runTask<CommitTask>,
};

}  // namespace neb::nebsc

#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

bool isAbbreviatedRevision(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

/// Joins the messages as paragraphs, as git commit does.
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

/// For the first commit and on a detached HEAD, the record does not hold the commit id.
void CommitTask::report(const Outcome& outcome, CommandOutput& output) {
    const bool hasRecord = outcome.result && !outcome.result->empty();
    const auto recorded =
        hasRecord ? outcome.result->front().value(NEBSourceControlOperationRevisionKey).string()
                  : std::nullopt;
    const auto revision = recorded && isAbbreviatedRevision(*recorded)
                              ? std::optional(std::string(*recorded))
                              : git().headCommit();
    if (revision) {
        output.standardOutput = "Committed " + printable(*revision) + ".\n";
    }
}

constexpr Parameter parameters[] = {
    {"-m,--message", "The commit message; each further one is a new paragraph", Takes::text,
     Occurs::oneOrMore, "MESSAGE", true},
    {"--allow-empty", "Commit even if nothing has changed"},
    {"FILE", "Commit these files as they are on disk, staged or not; default: what is staged",
     Takes::path, Occurs::anyNumber},
};

}  // namespace

constinit const Command commitCommand{
    .name = "commit",
    .group = changeGroup,
    .summary = "Commit the staged changes, or the changes of files",
    .details =
        "Examples:\n"
        "  nebsc commit -m 'Say hello'               commit what is staged\n"
        "  nebsc commit -m 'Say hello' src/main.c    commit the changes of one file\n",
    .parameters = parameters,
    .activity = "Committing",
    .run = runTask<CommitTask>,
};

}  // namespace neb::nebsc

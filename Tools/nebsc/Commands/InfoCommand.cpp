#include <algorithm>

#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "LOMFoundation/LOMPasswordRedaction.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

class InfoTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestInfo);
    }
    SilentFailure silentFailure() const override { return SilentFailure::isEmptyResult; }
    void report(const Outcome& outcome, CommandOutput& output) override;
};

std::string line(std::string_view name, const NEBValue& value) {
    constexpr std::size_t nameColumnWidth = 12;
    return std::string(name) + std::string(nameColumnWidth - name.size(), ' ') +
           printable(textWithoutPasswords(value.description())) + "\n";
}

/// Returns whether the plug-in asked for the URL of a Subversion repository. It does so only if
/// there is no remote "origin".
bool hasReadSubversionURL(const Outcome& outcome) {
    return std::ranges::any_of(outcome.commands, [](const NEBSourceControlCommandRun& run) {
        return std::ranges::find(run.arguments, "svn-remote.svn.url") != run.arguments.end();
    });
}

/// Outside of a repository, the request finds nothing either, or a URL in the user's configuration.
void InfoTask::report(const Outcome& outcome, CommandOutput& output) {
    if (auto refused = refusalOutsideRepository(git())) {
        output = *refused;
        return;
    }
    const NEBDictionary record =
        outcome.result && !outcome.result->empty() ? outcome.result->front() : NEBDictionary();
    const NEBValue& url = record.value(NEBSourceControlOperationRemoteOriginKey);
    if (!url.isPresent()) {
        output.standardOutput = "The repository " +
                                printable(inQuotes(lastPathComponent(workingCopy().location))) +
                                " has no remote 'origin' and no connected Subversion repository.\n";
        return;
    }
    output.standardOutput = line(hasReadSubversionURL(outcome) ? "Subversion" : "origin", url) +
                            line("root", record.value(NEBSourceControlOperationRepositoryRootKey));
}

}  // namespace

constinit const Command infoCommand{
    .name = "info",
    .group = inspectGroup,
    .summary = "Show the URL of the repository and the top of the working copy",
    .details =
        "The URL is that of the remote 'origin', or of the connected Subversion\n"
        "repository.\n"
        "\n"
        "Example:\n"
        "  nebsc info\n",
    .activity = "Reading",
    .run = runTask<InfoTask>,
};

}  // namespace neb::nebsc

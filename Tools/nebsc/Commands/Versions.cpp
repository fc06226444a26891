#include "Commands/Commands.h"
#include "JSON/OutcomeJSON.h"
#include "Session/GitProgram.h"
#include "Session/OperationRun.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

CommandOutput outputWithVersions(const NEBSourceControlPlugIn& plugIn, const Trace& trace,
                                 bool isJSON, std::optional<std::chrono::milliseconds> timeLimit) {
    Interruption interruption(timeLimit);
    const ChildOutcome git = runGit(interruption, trace, {"--version"}, std::nullopt);
    const std::optional<std::string> gitVersion = trimmedOutputOf(git);
    CommandOutput output;
    if (interruption.hasOccurred()) {
        const std::optional<int> signalNumber = interruption.end();
        noteEndOfTime(output, interruption);
        noteInterruption(output, signalNumber);
    } else if (isJSON) {
        output.standardOutput =
            lineOfJSON({{"nebsc", NEBSC_VERSION},
                        {"plugIn", {{"name", plugIn.name()}, {"version", plugIn.version()}}},
                        {"git", gitVersion ? nlohmann::ordered_json(*gitVersion) : nullptr}});
    } else {
        std::string noVersion = "git was not found";
        if (git.status.started()) {
            const std::string stderrText(git.errorOutput);
            noVersion = "git reported no version: " +
                        (stderrText.empty() ? git.status.description()
                                            : stderrText.substr(0, stderrText.find('\n')));
        }
        output.standardOutput = "nebsc " NEBSC_VERSION "\n" +
                                printable(plugIn.name() + " " + plugIn.version()) + "\n" +
                                printable(gitVersion.value_or(noVersion)) + "\n";
    }
    return output;
}

}  // namespace neb::nebsc

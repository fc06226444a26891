#include "Commands.h"
#include "GitProgram.h"
#include "OperationRun.h"
#include "OutcomeJSON.h"
#include "Presentation.h"

namespace neb::nebsc {

Reply replyWithVersions(const NEBSourceControlPlugIn& plugIn, const Trace& trace, bool isJSON) {
    Interruption interruption;
    const ChildOutcome git = runGit(interruption, trace, {"--version"}, std::nullopt);
    const std::optional<std::string> gitVersion = answerOf(git);
    Reply reply;
    if (interruption.signalNumber()) {
        noteInterruption(reply, interruption.end());
    } else if (isJSON) {
        reply.standardOutput =
            lineOfJSON({{"nebsc", NEBSC_VERSION},
                        {"plugIn", {{"name", plugIn.name()}, {"version", plugIn.version()}}},
                        {"git", gitVersion ? nlohmann::ordered_json(*gitVersion) : nullptr}});
    } else {
        const std::string noVersion = git.status.started()
                                          ? "git told no version: " + git.status.description()
                                          : "git was not found";
        reply.standardOutput = "nebsc " NEBSC_VERSION "\n" +
                               printable(plugIn.name() + " " + plugIn.version()) + "\n" +
                               printable(gitVersion.value_or(noVersion)) + "\n";
    }
    return reply;
}

}  // namespace neb::nebsc

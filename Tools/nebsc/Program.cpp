#include "Program.h"

#include <exception>

#include "CommandLine/CommandLine.h"
#include "Commands/Commands.h"
#include "JSON/OutcomeJSON.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Session/PlugInLocation.h"
#include "Session/StartFolder.h"

namespace neb::nebsc {

namespace {

CommandOutput replyTo(const Call& call) {
    if (const auto refused = enterFolders(call.folders)) {
        return *refused;
    }
    const std::string path = call.plugIn.empty() ? defaultPlugInPath() : call.plugIn;
    const PlugInFile plugIn{.path = path, .load = NEBSourceControlPlugIn::load(path)};
    std::unique_ptr<const NEBSourceControlProtocol> controller;
    if (call.command == nullptr || call.command->needsPlugIn) {
        if (!plugIn.load.plugIn) {
            return refusal(plugIn.load.failure, exitNotUnderstood);
        }
        controller = plugIn.load.plugIn->makePrincipalClass();
        if (!controller) {
            return refusal("The plug-in \"" + path + "\" has no principal class to give.",
                           exitNotUnderstood);
        }
    }
    const HostSession session(std::move(controller), call.isTraced);
    if (call.command == nullptr) {
        return replyWithVersions(*plugIn.load.plugIn, session.trace(), call.isJSON);
    }
    return call.command->run({.plugIn = plugIn,
                              .session = session,
                              .command = *call.command,
                              .arguments = call.arguments,
                              .isJSON = call.isJSON,
                              .colours = call.colours});
}

/// The reply of a program that an exception ended, an outcome too where one was asked for.
CommandOutput replyToFailure(const Call* call) {
    CommandOutput output = failureWith(NEBSourceControlErrorOfCurrentException());
    if (call != nullptr && (call->isJSON || call->command == &requestCommand)) {
        Outcome outcome;
        outcome.error = output.error;
        output.standardOutput = textOfOutcome(outcome) + "\n";
        output.standardError.clear();
    }
    return output;
}

}  // namespace

int runProgram(int argc, const char* const* argv) noexcept {
    std::optional<Call> call;
    try {
        auto understood = readCommandLine(argc, argv);
        if (std::holds_alternative<Call>(understood)) {
            call = std::get<Call>(std::move(understood));
            understood = replyTo(*call);
        }
        return deliver(std::get<CommandOutput>(understood));
    } catch (const std::exception&) {
        return deliver(replyToFailure(call ? &*call : nullptr));
    }
}

}  // namespace neb::nebsc

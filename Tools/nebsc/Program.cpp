#include "Program.h"

#include <unistd.h>

#include <exception>

#include "CommandLine.h"
#include "PlugInLocation.h"
#include "Presentation.h"

namespace neb::nebsc {

namespace {

/// Hands a call to the command that it names.
struct Dispatch {
    const Call& call;
    const NEBSourceControlPlugIn& plugIn;
    HostSession session;

    Reply operator()(const RequestCall& request) const { return requestCommand(session, request); }
    Reply operator()(StatusCall status) const {
        status.isJSON = call.isJSON;
        status.isColoured = wantsColour(STDOUT_FILENO);
        return statusCommand(session, status);
    }
    Reply operator()(const Call::Types& /*types*/) const {
        return typesCommand(session, call.isJSON);
    }
    Reply operator()(const Call::Version& /*version*/) const {
        return versionCommand(plugIn, call.isJSON);
    }
};

Reply replyTo(const Call& call) {
    const std::string path = call.plugIn.empty() ? defaultPlugInPath() : call.plugIn;
    const NEBSourceControlPlugInLoad load = NEBSourceControlPlugIn::load(path);
    if (!load.plugIn) {
        return refusal(load.failure, exitNotUnderstood);
    }
    auto controller = load.plugIn->makePrincipalClass();
    if (!controller) {
        return refusal("The plug-in \"" + path + "\" has no principal class to give.",
                       exitNotUnderstood);
    }
    return std::visit(Dispatch{call, *load.plugIn, HostSession(std::move(controller))},
                      call.command);
}

}  // namespace

int runProgram(int argc, const char* const* argv) noexcept {
    try {
        auto understood = readCommandLine(argc, argv);
        if (const Call* call = std::get_if<Call>(&understood)) {
            understood = replyTo(*call);
        }
        return deliver(std::get<Reply>(understood));
    } catch (const std::exception& failure) {
        return deliver(refusal(std::string("The work could not be done: ") + failure.what() + ".",
                               exitFailed));
    }
}

}  // namespace neb::nebsc

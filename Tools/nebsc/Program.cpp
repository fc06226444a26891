#include "Program.h"

#include <exception>

#include "CommandLine.h"
#include "Commands.h"
#include "PlugInLocation.h"

namespace neb::nebsc {

namespace {

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
    if (call.command == nullptr) {
        return replyWithVersions(*load.plugIn, call.isJSON);
    }
    const HostSession session(std::move(controller));
    return call.command->run({session, *call.command, call.arguments, call.isJSON});
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

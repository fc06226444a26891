#include "Help/Usage.h"

#include "CommandLine/UsageError.h"

namespace neb::nebsc {

namespace {

/// Returns "FILE...", in brackets if the argument is optional. An argument that follows a revision
/// is a path, which "--" separates.
std::string usageOf(const Parameter& argument, bool followsRevision) {
    const std::string usage = (followsRevision ? "[--] " : "") + std::string(argument.name) +
                              (argument.isRepeated() ? "..." : "");
    return argument.isRequired() ? usage : "[" + usage + "]";
}

}  // namespace

std::string usageOf(std::span<const Command* const> commands) {
    std::string usage = nameOf(commands) + " [OPTIONS]";
    if (commands.empty()) {
        return usage + " COMMAND [ARGUMENTS]";
    }
    if (!commands.back()->commands.empty()) {
        usage += " [COMMAND]";
    }
    bool followsRevision = false;
    for (const Parameter& parameter : commands.back()->parameters) {
        if (!parameter.isOption()) {
            usage += " " + usageOf(parameter, followsRevision);
            followsRevision = parameter.takes == Takes::revisionOrPath;
        }
    }
    return usage;
}

std::string headingOf(const Parameter& parameter) {
    std::string heading;
    for (const std::string_view spelling : spellingsOf(parameter)) {
        heading.append(heading.empty() ? "" : ", ").append(spelling);
    }
    if (parameter.isOption() && !parameter.isFlag()) {
        heading.append(" ").append(parameter.valueName);
    }
    return heading;
}

std::string_view programDescription() {
    return "Runs source-control requests through the plug-in NEBGit, as a development\n"
           "environment does, and prints their results.";
}

}  // namespace neb::nebsc

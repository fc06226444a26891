#include <algorithm>

#include "CommandLine/CommonOptions.h"
#include "Commands/Commands.h"
#include "Completion/CompletionPoint.h"
#include "Completion/ValueCompletion.h"
#include "Session/StartFolder.h"

namespace neb::nebsc {

namespace {

std::vector<Candidate> commandsAt(const CompletionPoint& point) {
    std::vector<Candidate> candidates;
    const auto add = [&](std::string_view name, std::string_view summary) {
        if (name.starts_with(point.text)) {
            candidates.push_back({std::string(name), std::string(summary)});
        }
    };
    for (const Command* command : point.before.nextCommands()) {
        if (command->group != hiddenGroup) {
            add(command->name, command->summary);
        }
    }
    if (!isForHelp(point)) {
        add("help", "Show the help of a command, with examples");
    }
    return candidates;
}

/// Leaves out an option that is given already and cannot be repeated.
std::vector<Candidate> optionsAt(const CompletionPoint& point) {
    const ParsedCommandLine& parsed = point.before.parsed();
    std::vector<Candidate> candidates;
    for (const Parameter* option : optionsOf(parsed.command())) {
        if (!option->isRepeated() && parsed.arguments.has(longName(*option))) {
            continue;
        }
        for (const std::string_view spelling : spellingsOf(*option)) {
            if (spelling.starts_with(point.text)) {
                candidates.push_back({std::string(spelling), std::string(option->help)});
            }
        }
    }
    return candidates;
}

Completion completionAt(const CompletionPoint& point, const HostSession& session) {
    switch (point.kind) {
        case CompletionPoint::Kind::nothing:
            break;
        case CompletionPoint::Kind::command:
            return {.candidates = commandsAt(point)};
        case CompletionPoint::Kind::option:
            return {.candidates = optionsAt(point)};
        case CompletionPoint::Kind::value:
            return enterFolders(point.before.parsed().arguments.all(folderOption))
                       ? Completion()
                       : completeValue(point, session);
    }
    return {};
}

/// Returns whether a shell can insert the text: one line without control characters and without the
/// replacement character, which stands for bytes that are not UTF-8.
bool isPlain(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    return text.find(replacement) == std::string_view::npos &&
           std::all_of(text.begin(), text.end(), [](char character) {
               const auto byte = static_cast<unsigned char>(character);
               return byte >= 0x20 && byte != 0x7F;
           });
}

std::string linesOf(const Completion& completion) {
    static constexpr const char* pathsLines[] = {"none\n", "files\n", "folders\n"};
    std::string lines = pathsLines[static_cast<std::size_t>(completion.paths)];
    for (const auto& [text, description] : completion.candidates) {
        if (isPlain(text)) {
            const bool isShown = !description.empty() && isPlain(description);
            lines.append(text).append(isShown ? "\t" : "").append(isShown ? description : "");
            lines += '\n';
        }
    }
    return lines;
}

CommandOutput run(const CommandCall& call) {
    const CompletionPoint point = completionPointOf(call.arguments.all("ARGUMENT"));
    return {.standardOutput = linesOf(completionAt(point, call.session)),
            .standardError = {},
            .exitStatus = exitDone};
}

constexpr Parameter parameters[] = {
    {"ARGUMENT", "The arguments after nebsc; the last one is being typed and may be empty",
     Takes::text, Occurs::anyNumber, "", true},
};

}  // namespace

constinit const Command completeCommand{
    .name = "complete",
    .group = hiddenGroup,
    .summary = "Print the completions of the argument being typed",
    .details =
        "For the completion scripts of shells. The first line names the paths that the\n"
        "shell adds itself: none, files or folders (for --option=PATH those after the\n"
        "'='; none after -C, where they are among the candidates). Each further line is a\n"
        "candidate, optionally followed by a TAB and a description. Anything that fails\n"
        "leaves candidates out. Takes at most one second.\n"
        "\n"
        "Example:\n"
        "  nebsc complete -- checkout ma    the branches and tags that start with 'ma'\n",
    .parameters = parameters,
    .run = run,
};

}  // namespace neb::nebsc

#include "Help/HelpText.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "CommandLine/CommonOptions.h"
#include "Commands/Commands.h"
#include "Help/Usage.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view generalDetails = R"(Examples:
  nebsc status                    show what has changed in the working copy
  nebsc status --json             the same as JSON
  nebsc -C ../other status        run in another directory
  nebsc clone URL --trace         show which programs are run
  nebsc types                     list the types of request
  echo '{"type": 15, "sourceTree": {"location": "/path"}}' | nebsc request

Run 'nebsc help COMMAND' for the help of a command.

Exit status: 0 success, 1 failure, 2 invalid usage, 130 after Ctrl-C.
)";

struct Entry {
    std::string heading;
    std::string_view text;
};

/// Returns the lines of a text that is wrapped at 80 columns, each after the first indented.
std::string wrapped(std::string_view text, std::size_t indent) {
    constexpr std::size_t width = 80;
    std::string lines;
    std::size_t column = indent;
    forEachField(text, ' ', [&](std::string_view word) {
        if (column != indent && column + 1 + word.size() > width) {
            lines.append("\n").append(indent, ' ');
            column = indent;
        } else if (column != indent) {
            lines += ' ';
            ++column;
        }
        lines += word;
        column += word.size();
    });
    return lines;
}

/// Returns a heading and the entries below it, or an empty text without entries.
std::string section(std::string_view heading, const std::vector<Entry>& entries) {
    constexpr std::size_t largestIndent = 30;
    std::size_t indent = 0;
    for (const Entry& entry : entries) {
        indent = std::clamp(entry.heading.size() + 4, indent, largestIndent);
    }
    std::string text = entries.empty() ? "" : "\n" + std::string(heading) + ":\n";
    for (const Entry& entry : entries) {
        const std::string start = "  " + entry.heading;
        text += start +
                (start.size() + 2 <= indent ? std::string(indent - start.size(), ' ')
                                            : "\n" + std::string(indent, ' ')) +
                wrapped(entry.text, indent) + "\n";
    }
    return text;
}

std::vector<Entry> entriesOf(const std::vector<const Parameter*>& parameters) {
    std::vector<Entry> entries;
    entries.reserve(parameters.size());
    for (const Parameter* parameter : parameters) {
        entries.push_back({headingOf(*parameter), parameter->help});
    }
    return entries;
}

/// Returns a section per group of commands, in the order of the table.
std::string sectionsOf(std::span<const Command* const> commands) {
    std::vector<std::pair<std::string_view, std::vector<Entry>>> groups;
    for (const Command* command : commands) {
        if (command->group != hiddenGroup) {
            if (groups.empty() || groups.back().first != command->group) {
                groups.push_back({command->group, {}});
            }
            groups.back().second.push_back({std::string(command->name), command->summary});
        }
    }
    std::string text;
    for (const auto& [group, entries] : groups) {
        text += section(group, entries);
    }
    return text;
}

std::string generalHelp() {
    return "Usage: " + usageOf({}) + "\n\n" + std::string(programDescription()) + "\n" +
           sectionsOf(allCommands()) + section("Options", entriesOf(optionsOf(nullptr))) + "\n" +
           std::string(generalDetails);
}

}  // namespace

std::string helpText(std::span<const Command* const> commands) {
    if (commands.empty()) {
        return generalHelp();
    }
    const Command& command = *commands.back();
    std::vector<const Parameter*> arguments;
    for (const Parameter& parameter : command.parameters) {
        if (!parameter.isOption()) {
            arguments.push_back(&parameter);
        }
    }
    return "Usage: " + usageOf(commands) + "\n\n" + wrapped(std::string(command.summary) + ".", 0) +
           "\n" + section("Arguments", entriesOf(arguments)) + sectionsOf(command.commands) +
           section("Options", entriesOf(optionsOf(&command))) + "\n" + std::string(command.details);
}

}  // namespace neb::nebsc

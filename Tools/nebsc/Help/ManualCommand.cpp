#include <algorithm>
#include <array>

#include "CommandLine/CommandLine.h"
#include "Commands/Commands.h"
#include "Completion/CompletionPoint.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

struct Entry {
    std::string_view name;
    std::string_view text;
};

constexpr std::array<Entry, 4> exitStatuses{{
    {"0", "Done."},
    {"1", "The operation failed; what went wrong is on standard error."},
    {"2", "The call cannot be understood, and nothing was done."},
    {"128+N",
     "Signal N ended the work, in good order: 130 after Ctrl-C. Nothing of it is left behind."},
}};

/// All that nebsc, its library and its plug-in read, and what git reads of it is git's.
constexpr std::array<Entry, 10> variables{{
    {"PATH", "Where git is looked for, first folder first."},
    {"HOME", "What a \"~\" at the beginning of a path stands for."},
    {"TMPDIR", "Where \"nebsc export\" writes without DEST; unless set, /tmp."},
    {"NO_COLOR", "Set to anything but the empty text: no colours, unless --color=always."},
    {"TERM", "For \"dumb\" there are neither colours, unless --color=always, nor a pager."},
    {"GIT_PAGER", "The program that shows on a terminal what is longer than the screen."},
    {"PAGER", "The same where neither GIT_PAGER nor git's setting core.pager is set."},
    {"LESS, LV",
     "Handed to the pager; unless set, less is told to show colours and to end with short texts."},
    {"GIT_ASKPASS, GIT_SSH, GIT_SSH_COMMAND, SSH_ASKPASS, SSH_AUTH_SOCK",
     "git's and ssh's own; \"nebsc doctor\" looks whether what they name is there."},
    {"GIT_*, SSH_*",
     "Reach git as they are, but for those that tie a process to one repository, write traces or "
     "change what is read."},
}};

constexpr std::array<Entry, 2> files{{
    {NEBSC_INSTALLED_PLUGIN,
     "The plug-in, as seen from nebsc's own folder; --plugin names another."},
    {"~/.gitconfig, .git/config", "git's own settings, which hold here too."},
}};

// ---- roff -------------------------------------------------------------------------------------

/// Text for a line of its own or a part of one.
std::string escaped(std::string_view text) {
    std::string line;
    for (const char character : text) {
        switch (character) {
            case '\\':
                line += "\\e";
                break;
            case '-':
                line += "\\-";
                break;
            case '\'':
                line += "\\(aq";
                break;
            case '`':
                line += "\\(ga";
                break;
            case '^':
                line += "\\(ha";
                break;
            case '~':
                line += "\\(ti";
                break;
            default:
                line += character;
        }
    }
    return line;
}

/// At the beginning of a line a dot would be a request.
std::string lineOf(std::string_view text) {
    std::string line = escaped(text);
    if (line.starts_with('.')) {
        line.insert(0, "\\&");
    }
    return line + "\n";
}

/// The argument of a request.
std::string quoted(std::string_view text) {
    std::string argument = escaped(text);
    for (std::size_t place = 0; (place = argument.find('"', place)) != std::string::npos;) {
        argument.replace(place, 1, "\\(dq");
        place += 4;
    }
    return "\"" + argument + "\"";
}

std::string section(std::string_view name) {
    return ".SH " + quoted(name) + "\n";
}

template <std::size_t Count>
std::string listOf(const std::array<Entry, Count>& entries) {
    std::string text;
    for (const auto& [name, meaning] : entries) {
        text += ".TP\n.B " + quoted(name) + "\n" + lineOf(meaning);
    }
    return text;
}

/// What stands before prose.
enum class Before { heading, paragraph };

/// Paragraphs, and examples: lines that begin with blanks stand as they are.
std::string proseOf(std::string_view lines, Before before) {
    std::string text;
    bool isExample = false;
    bool isParagraphOver = before == Before::paragraph;
    forEachPiece(lines, '\n', [&](std::string_view line) {
        const bool wasExample = isExample;
        isExample = line.starts_with(' ');
        if (isExample && !wasExample) {
            text += ".RS 2\n.nf\n";
        } else if (!isExample && wasExample) {
            text += ".fi\n.RE\n";
        }
        if (line.empty()) {
            isParagraphOver = true;
        } else if (isExample) {
            text += lineOf(line.substr(std::min<std::size_t>(line.find_first_not_of(' '), 2)));
        } else {
            text += (isParagraphOver ? ".PP\n" : "") + lineOf(line);
            isParagraphOver = false;
        }
    });
    return text;
}

// ---- commands ---------------------------------------------------------------------------------

/// "--branch BRANCH", "FILE..."; in brackets where it may be left out.
std::string usageOf(const Parameter& parameter) {
    std::string usage(spellingsOf(parameter).back());
    if (parameter.isOption() && parameter.takes != Takes::nothing) {
        usage.append(" ").append(parameter.valueName);
    }
    usage += parameter.isRepeated() ? "..." : "";
    return parameter.isRequired() ? usage : "[" + usage + "]";
}

/// "-m, --message MESSAGE"
std::string headingOf(const Parameter& parameter) {
    std::string heading;
    for (const std::string_view spelling : spellingsOf(parameter)) {
        heading.append(heading.empty() ? "" : ", ").append(spelling);
    }
    if (!parameter.valueName.empty()) {
        heading.append(" ").append(parameter.valueName);
    }
    return heading;
}

std::string entriesOf(const std::vector<const Parameter*>& parameters) {
    std::string text;
    for (const Parameter* parameter : parameters) {
        text += ".TP\n.B " + quoted(headingOf(*parameter)) + "\n" +
                lineOf(std::string(parameter->help) + ".");
    }
    return text;
}

std::string entryOf(const Command& command, const std::string& names) {
    std::string usage = names + std::string(command.name);
    std::vector<const Parameter*> parameters;
    for (const Parameter& parameter : command.parameters) {
        usage += " " + usageOf(parameter);
        parameters.push_back(&parameter);
    }
    std::string text = ".SS " + quoted(usage) + "\n" + lineOf(std::string(command.summary) + ".") +
                       entriesOf(parameters) + proseOf(command.details, Before::paragraph);
    for (const Command* inner : command.commands) {
        text += entryOf(*inner, names + std::string(command.name) + " ");
    }
    return text;
}

std::string commandsText() {
    std::string text = section("COMMANDS");
    for (const Command* command : allCommands()) {
        text += entryOf(*command, "nebsc ");
    }
    return text;
}

std::string page() {
    return R"(.\" nebsc.1 - made by "nebsc manual" from what nebsc itself understands.
.TH NEBSC 1 "" "nebsc )" NEBSC_VERSION R"(" "User commands"
)" + section("NAME") +
           "nebsc \\- drive the source\\-control plug\\-in NEBGit\n" + section("SYNOPSIS") +
           ".B nebsc\n[OPTION]... COMMAND [WORD]...\n" + section("DESCRIPTION") +
           proseOf(programDescription(), Before::heading) +
           ".PP\n"
           "The commands are about the working copy around the current folder. They run the git\n"
           "that is installed, under the user's own settings. An error is one sentence, then what\n"
           "may be done about it, then, indented, git's own words where they say more.\n" +
           section("OPTIONS") + "All but \\-C may stand before the command or behind it.\n" +
           entriesOf(optionsOf(nullptr)) + commandsText() + section("EXIT STATUS") +
           listOf(exitStatuses) + section("ENVIRONMENT") + listOf(variables) + section("FILES") +
           listOf(files) + section("SEE ALSO") +
           ".BR git (1),\n.BR git\\-svn (1),\n.BR gitrevisions (7)\n";
}

CommandOutput run(const CommandCall& /*call*/) {
    return {.standardOutput = page(), .standardError = {}, .exitStatus = exitDone};
}

}  // namespace

constinit const Command manualCommand{
    .name = "manual",
    .group = shellGroup,
    .summary = "Print the manual page",
    .details =
        "In the language of man, as \"man nebsc\" shows it where nebsc is installed.\n\n"
        "Example:\n"
        "  nebsc manual | man -l -    read it\n",
    .run = run,
};

}  // namespace neb::nebsc

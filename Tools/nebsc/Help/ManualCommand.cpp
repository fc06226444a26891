#include <algorithm>
#include <array>

#include "CommandLine/CommonOptions.h"
#include "Commands/Commands.h"
#include "Help/Usage.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

struct Entry {
    std::string_view name;
    std::string_view text;
};

constexpr std::array<Entry, 4> exitStatuses{{
    {"0", "Success."},
    {"1", "The operation failed; standard error has the reason."},
    {"2", "Invalid usage; nothing was done."},
    {"128+N", "Signal N ended the work: 130 after Ctrl-C. No process or lock file is left behind."},
}};

/// The variables that nebsc, its library and its plug-in read. Those that only git reads are git's.
constexpr std::array<Entry, 13> variables{{
    {"PATH", "The directories that are searched for git."},
    {"HOME", "The directory that '~' at the start of a path stands for."},
    {"TMPDIR", "The directory for 'nebsc export' without DEST; /tmp by default."},
    {"XDG_RUNTIME_DIR",
     "The directory for the socket through which git asks for passwords; else TMPDIR, else /tmp."},
    {"GIT_TERMINAL_PROMPT",
     "If 0, nothing is asked at the terminal when a server needs a password."},
    {"XDG_STATE_HOME",
     "The directory for the command line that failed last, for 'nebsc report'; by default "
     "~/.local/state."},
    {"NO_COLOR", "If not empty, disables colours, except with --color=always."},
    {"TERM", "If 'dumb', disables colours, except with --color=always, and the pager."},
    {"GIT_PAGER",
     "The pager for output that is longer than the screen or takes longer than 100 ms."},
    {"PAGER", "The pager if neither GIT_PAGER nor git's setting core.pager is set."},
    {"LESS, LV",
     "Options of the pager; by default, less shows colours and exits if the text fits the screen."},
    {"GIT_ASKPASS, GIT_SSH, GIT_SSH_COMMAND, SSH_ASKPASS, SSH_AUTH_SOCK",
     "Variables of git and ssh; 'nebsc doctor' checks that what they name exists."},
    {"GIT_*, SSH_*",
     "Passed to git, except those that select a repository, write traces or change output that is "
     "parsed."},
}};

constexpr std::array<Entry, 3> files{{
    {NEBSC_INSTALLED_PLUGIN,
     "The plug-in, relative to the directory of nebsc; --plugin selects another."},
    {"~/.gitconfig, .git/config", "The settings of git, which apply to nebsc as well."},
    {NEBSC_INSTALLED_DOCUMENTS,
     "README.md, the folder docs with guides for hosts and plug-ins, and examples; relative to the "
     "directory of nebsc."},
}};

// ---- roff -------------------------------------------------------------------------------------

/// Returns the text with roff's special characters escaped.
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

/// Returns a line of text. A leading dot would be a request.
std::string lineOf(std::string_view text) {
    std::string line = escaped(text);
    if (line.starts_with('.')) {
        line.insert(0, "\\&");
    }
    return line + "\n";
}

/// Returns the argument of a request.
std::string quoted(std::string_view text) {
    std::string argument = escaped(text);
    for (std::size_t offset = 0; (offset = argument.find('"', offset)) != std::string::npos;) {
        argument.replace(offset, 1, "\\(dq");
        offset += 4;
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

/// What precedes the text.
enum class Before { heading, paragraph };

/// Returns paragraphs, and examples: lines that start with blanks are not filled.
std::string proseOf(std::string_view lines, Before before) {
    std::string text;
    bool isExample = false;
    bool isParagraphOver = before == Before::paragraph;
    forEachField(lines, '\n', [&](std::string_view line) {
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

std::string entriesOf(const std::vector<const Parameter*>& parameters) {
    std::string text;
    for (const Parameter* parameter : parameters) {
        text += ".TP\n.B " + quoted(headingOf(*parameter)) + "\n" +
                lineOf(std::string(parameter->help) + ".");
    }
    return text;
}

/// Returns the innermost of the commands, then its subcommands.
std::string entryOf(std::vector<const Command*> commands) {
    const Command& command = *commands.back();
    std::vector<const Parameter*> parameters;
    for (const Parameter& parameter : command.parameters) {
        parameters.push_back(&parameter);
    }
    std::string text = ".SS " + quoted(usageOf(commands)) + "\n" +
                       lineOf(std::string(command.summary) + ".") + entriesOf(parameters) +
                       proseOf(command.details, Before::paragraph);
    for (const Command* inner : command.commands) {
        commands.push_back(inner);
        text += entryOf(commands);
        commands.pop_back();
    }
    return text;
}

std::string commandsText() {
    std::string text = section("COMMANDS");
    for (const Command* command : allCommands()) {
        text += entryOf({command});
    }
    return text;
}

std::string page() {
    return R"(.\" nebsc.1 - generated by 'nebsc manual'.
.TH NEBSC 1 "" "nebsc )" NEBSC_VERSION R"(" "User commands"
)" + section("NAME") +
           "nebsc \\- run source\\-control requests\n" + section("SYNOPSIS") +
           ".B nebsc\n[OPTIONS] COMMAND [ARGUMENTS]\n" + section("DESCRIPTION") +
           proseOf(programDescription(), Before::heading) +
           ".PP\n"
           "A command works on the repository of the current directory. It runs the installed\n"
           "git with the user's settings. An error message has the reason, then advice, then,\n"
           "indented, the messages of git that say more.\n" +
           section("OPTIONS") +
           "Every option but \\-C is accepted before and after the command.\n" +
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
        "The page is in roff, the format of man. An installed nebsc has it as 'man\n"
        "nebsc'.\n"
        "\n"
        "Example:\n"
        "  nebsc manual | man -l -    read the manual page\n",
    .needsPlugIn = false,
    .run = run,
};

}  // namespace neb::nebsc

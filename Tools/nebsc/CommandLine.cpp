#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace neb::nebsc {

namespace {

constexpr const char* description =
    "Drives the source-control plug-in NEBGit: hands it requests, as a development\n"
    "environment does, and shows what comes of them.";

constexpr const char* footer = R"(Examples:
  nebsc status                       what has changed in the working copy around here
  nebsc status --json                the same for a program to read
  nebsc types                        which types of request there are, and what each needs
  echo '{"type": 15, "sourceTree": {"location": "/path"}}' | nebsc request

Each command has help of its own, with an example: nebsc status --help

Exit status: 0 done, 1 the operation failed, 2 the call cannot be understood.
)";

/// What the help of a single command says of the options of all.
constexpr const char* commonOptions =
    "--json and --plugin FILE may stand here too; see nebsc --help.\n";

// CLI11 takes a word in brackets for a list where more than one word may stand, though a file may
// be called "[a]"; and it forgets "--" behind the first of many words. So a word that is no option,
// whatever it looks like, is given a beginning of its own, and loses it when it is read.
constexpr char shield = '\x1f';

std::string unshielded(const std::string& word) {
    return word.starts_with(shield) ? word.substr(1) : word;
}

/// The words of the call from the last to the first, as CLI11 wants them.
std::vector<std::string> shieldedWords(int argc, const char* const* argv) {
    std::vector<std::string> words;
    bool areOptionsOver = false;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (areOptionsOver || word.starts_with('[') || word.starts_with(shield)) {
            words.push_back(shield + word);
        } else if (word == "--") {
            areOptionsOver = true;
        } else {
            words.push_back(word);
        }
    }
    std::reverse(words.begin(), words.end());
    return words;
}

std::optional<std::size_t> countWordsBehindDashes(int argc, const char* const* argv) {
    const std::span words(argv, static_cast<std::size_t>(argc));
    const auto dashes = std::find(words.begin(), words.end(), std::string_view("--"));
    return dashes == words.end()
               ? std::nullopt
               : std::optional(static_cast<std::size_t>(words.end() - dashes) - 1);
}

/// The reader of one command line, made from the rows of all commands.
class Reader {
public:
    Reader();

    void parse(int argc, const char* const* argv) {
        _wordsBehindDashes = countWordsBehindDashes(argc, argv);
        _app.parse(shieldedWords(argc, argv));
    }

    [[nodiscard]] Call call() const;
    /// The words that name the command of the call, each with a blank behind it; none without one.
    [[nodiscard]] std::string commandName() const;
    [[nodiscard]] bool asksForVersions() const { return _isVersion; }
    [[nodiscard]] std::string help() const { return _app.help(); }

private:
    static void addCommand(CLI::App& parent, const Command& command);

    CLI::App _app{description, "nebsc"};
    std::string _plugIn;
    bool _isJSON = false;
    bool _isVersion = false;
    std::optional<std::size_t> _wordsBehindDashes;
};

/// "--message" for "-m,--message".
std::string longName(const Parameter& parameter) {
    const std::size_t comma = parameter.name.find(',');
    return std::string(comma == std::string_view::npos ? parameter.name
                                                       : parameter.name.substr(comma + 1));
}

void addParameter(CLI::App& app, const Parameter& parameter) {
    const std::string name(parameter.name);
    const std::string help(parameter.help);
    if (parameter.takes == Takes::nothing) {
        app.add_flag(name)->description(help)->disable_flag_override();
        return;
    }
    CLI::Option* option = app.add_option(name)->description(help);
    option->type_name(std::string(parameter.valueName));
    if (parameter.occurs == Occurs::anyNumber || parameter.occurs == Occurs::oneOrMore) {
        option->expected(CLI::detail::expected_max_vector_size);
    }
    option->required(parameter.occurs == Occurs::once || parameter.occurs == Occurs::oneOrMore);
}

Reader::Reader() {
    _app.fallthrough();  // before the commands, which take it over: options may follow them
    _app.require_subcommand(0, 1);
    _app.footer(footer);
    _app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    _app.add_option("--plugin", _plugIn,
                    "The plug-in's file; unless given, NEBGit.so in lib beside nebsc's own folder")
        ->type_name("FILE");
    _app.add_flag("--json", _isJSON, "One line of JSON instead of text for a person")
        ->disable_flag_override();
    _app.add_flag("--version", _isVersion, "Show the versions of nebsc, the plug-in and git")
        ->disable_flag_override();
    for (const Command* command : allCommands()) {
        addCommand(_app, *command);
    }
}

/// The values of a parameter that stands in the call.
std::vector<std::string> valuesOf(const CLI::Option& option, const Parameter& parameter) {
    if (parameter.takes == Takes::nothing) {
        return std::vector<std::string>(1);
    }
    std::vector<std::string> values = option.results();
    std::transform(values.begin(), values.end(), values.begin(), unshielded);
    return values;
}

void Reader::addCommand(CLI::App& parent, const Command& command) {
    CLI::App* app = parent.add_subcommand(std::string(command.name), std::string(command.summary));
    app->group(std::string(command.group));
    app->footer(std::string(command.details) + "\n" + commonOptions);
    for (const Parameter& parameter : command.parameters) {
        addParameter(*app, parameter);
    }
    app->require_subcommand(0, 1);
    for (const Command* inner : command.commands) {
        addCommand(*app, *inner);
    }
}

/// The command that the call names behind the app's own name; absent when it names none.
const CLI::App* namedCommand(const CLI::App& app) {
    const auto commands = app.get_subcommands();
    return commands.empty() ? nullptr : commands.front();
}

std::string Reader::commandName() const {
    std::string words;
    for (const CLI::App* app = namedCommand(_app); app != nullptr; app = namedCommand(*app)) {
        words += app->get_name() + " ";
    }
    return words;
}

const Command& rowOf(const CLI::App& app, std::span<const Command* const> rows) {
    return **std::find_if(rows.begin(), rows.end(),
                          [&app](const Command* row) { return row->name == app.get_name(); });
}

Call Reader::call() const {
    Call call{
        .command = nullptr, .arguments = {}, .plugIn = unshielded(_plugIn), .isJSON = _isJSON};
    const CLI::App* app = namedCommand(_app);
    if (app == nullptr || _isVersion) {
        return call;
    }
    call.command = &rowOf(*app, allCommands());
    while (const CLI::App* inner = namedCommand(*app)) {
        call.command = &rowOf(*inner, call.command->commands);
        app = inner;
    }
    call.arguments.setWordsBehindDashes(_wordsBehindDashes);
    for (const Parameter& parameter : call.command->parameters) {
        const CLI::Option* option = app->get_option(longName(parameter));
        if (option->count() > 0) {
            call.arguments.set(longName(parameter), valuesOf(*option, parameter));
        }
    }
    return call;
}

Reply helpReply(std::string text) {
    return {.standardOutput = std::move(text), .standardError = {}, .exitStatus = exitDone};
}

/// `command` is as commandName() gives it.
Reply refusedCall(std::string reason, const std::string& command) {
    std::erase(reason, shield);
    if (!reason.empty() && reason.back() == '.') {
        reason.pop_back();
    }
    return refusal(reason + " (see nebsc " + command + "--help).", exitNotUnderstood);
}

}  // namespace

std::variant<Call, Reply> readCommandLine(int argc, const char* const* argv) {
    Reader reader;
    try {
        reader.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return helpReply(reader.help());
    } catch (const CLI::ParseError& error) {
        return refusedCall(error.what(), reader.commandName());
    }
    if (reader.commandName().empty() && !reader.asksForVersions()) {
        return argc < 2 ? helpReply(reader.help()) : refusedCall("A command is missing", "");
    }
    return reader.call();
}

}  // namespace neb::nebsc

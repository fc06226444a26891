#include "CommandLine/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>

#include "CommandLine/ArgumentList.h"
#include "CommandLine/SpellingSuggestions.h"
#include "CommandLine/UsageError.h"
#include "Commands/Commands.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view description =
    "Drives the source-control plug-in NEBGit: hands it requests, as a development\n"
    "environment does, and shows what comes of them.";

constexpr const char* footer = R"(Examples:
  nebsc status                       what has changed in the working copy around here
  nebsc status --json                the same for a program to read
  nebsc types                        which types of request there are, and what each needs
  nebsc clone URL --trace            which programs it runs, each as it starts and as it ends
  nebsc -C ../other status           as if started in another folder
  echo '{"type": 15, "sourceTree": {"location": "/path"}}' | nebsc request

Each command has help of its own, with an example: nebsc status --help, or
nebsc help status

Exit status: 0 done, 1 the operation failed, 2 the call cannot be understood,
130 after Ctrl-C.
)";

/// What the help of a single command says of the options of all.
constexpr const char* commonOptions =
    "--json, --color WHEN, --trace and --plugin FILE may stand here too; see nebsc --help.\n";

struct ColoursWord {
    std::string_view word;
    Colours colours;
};

constexpr std::array<ColoursWord, 3> coloursWords{{
    {"auto", Colours::automatic},
    {"always", Colours::always},
    {"never", Colours::never},
}};

/// The reader of one command line, made from the rows of all commands.
class Reader {
public:
    Reader();

    void parse(int argc, const char* const* argv) {
        const ArgumentList call = readArgumentList(argc, argv);
        _firstWord = call.words.empty() ? "" : call.words.front();
        _countBehindDashes = call.countBehindDashes;
        _folders = call.folders;
        // From the last to the first, as CLI11 wants them.
        _app.parse(std::vector<std::string>(call.words.rbegin(), call.words.rend()));
    }

    [[nodiscard]] Call call() const;
    /// The words that name the command of the call, each with a blank behind it; none without one.
    [[nodiscard]] std::string commandName() const;
    /// Absent where the call names none.
    [[nodiscard]] const Command* command() const;
    /// Whether a word stands where only the name of a command could, and is none.
    [[nodiscard]] bool namesNoCommand() const;
    /// Whether an option stands in the call that there is not.
    [[nodiscard]] bool hasUnknownOption() const;
    /// On the word in place of a command, else on the first option that there is not, else on the
    /// first word that has no place in the call.
    [[nodiscard]] UsageError usageErrorInText() const;
    /// On what the command needs and the call does not have.
    [[nodiscard]] UsageError missingWords() const;
    /// On a value that is none of those that there are; nothing where all are.
    [[nodiscard]] std::optional<UsageError> usageErrorInValues() const;
    /// On an option behind the command that stands in front of it alone; nothing without one.
    [[nodiscard]] std::optional<UsageError> usageErrorInOrder() const;
    [[nodiscard]] bool asksForVersions() const { return has("--version"); }
    [[nodiscard]] std::string help() const { return _app.help(); }

private:
    [[nodiscard]] bool has(const char* option) const { return _app.count(option) > 0; }
    /// Of an option of all commands; empty where it does not stand in the call.
    [[nodiscard]] std::string value(const char* option) const {
        return has(option) ? unshielded(_app.get_option(option)->as<std::string>()) : "";
    }
    static void addCommand(CLI::App& parent, const Command& command);

    CLI::App _app{std::string(description), "nebsc"};
    std::string _firstWord;
    std::optional<std::size_t> _countBehindDashes;
    std::vector<std::string> _folders;
};

void addParameter(CLI::App& app, const Parameter& parameter) {
    const std::string name(parameter.name);
    const std::string help(parameter.help);
    if (parameter.takes == Takes::nothing) {
        app.add_flag(name)->description(help)->disable_flag_override();
        return;
    }
    CLI::Option* option = app.add_option(name)->description(help);
    option->type_name(std::string(parameter.valueName));
    if (parameter.isRepeated()) {
        option->expected(CLI::detail::expected_max_vector_size);
        // Each time, an option takes one value alone.
        option->allow_extra_args(!parameter.isOption());
    }
    option->required(parameter.isRequired());
}

Reader::Reader() {
    _app.fallthrough();  // before the commands, which take it over: options may follow them
    _app.require_subcommand(0, 1);
    _app.footer(footer);
    _app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    for (const Parameter& option : commonParameters()) {
        addParameter(_app, option);
    }
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

const Command* Reader::command() const {
    const Command* command = nullptr;
    for (const CLI::App* app = namedCommand(_app); app != nullptr; app = namedCommand(*app)) {
        command = &rowOf(*app, command == nullptr ? allCommands() : command->commands);
    }
    return command;
}

Call Reader::call() const {
    const std::string when = value("--color");
    const auto* colours =
        std::find_if(coloursWords.begin(), coloursWords.end(),
                     [&when](const ColoursWord& row) { return row.word == when; });
    Call call{.command = nullptr,
              .arguments = {},
              .folders = _folders,
              .plugIn = value("--plugin"),
              .isJSON = has("--json"),
              .isTraced = has("--trace"),
              .colours = colours == coloursWords.end() ? Colours::automatic : colours->colours};
    const CLI::App* app = namedCommand(_app);
    if (app == nullptr || asksForVersions()) {
        return call;
    }
    call.command = command();
    while (const CLI::App* inner = namedCommand(*app)) {
        app = inner;
    }
    call.arguments.setWordsBehindDashes(_countBehindDashes);
    for (const Parameter& parameter : call.command->parameters) {
        const CLI::Option* option = app->get_option(longName(parameter));
        if (option->count() > 0) {
            call.arguments.set(longName(parameter), valuesOf(*option, parameter));
        }
    }
    return call;
}

// ---- mistakes ---------------------------------------------------------------------------------

/// A word of the call, shielded where it stands behind "--".
bool isOption(const std::string& word) {
    return word.starts_with('-') && word != "-" && word != "--";
}

/// Behind the name of such a command, or in front of all, no other word may stand.
bool hasCommandsAlone(const Command* command) {
    return command == nullptr || (!command->commands.empty() && command->parameters.empty());
}

bool Reader::namesNoCommand() const {
    return hasCommandsAlone(command()) && !_app.remaining(true).empty();
}

bool Reader::hasUnknownOption() const {
    const std::vector<std::string> words = _app.remaining(true);
    return std::any_of(words.begin(), words.end(), isOption);
}

UsageError Reader::usageErrorInText() const {
    const std::vector<std::string> words = _app.remaining(true);
    const Command* command = this->command();
    const auto isNoDashes = [](const std::string& word) { return word != "--"; };
    auto wrong = std::find_if(words.begin(), words.end(), isNoDashes);
    // Behind a word that should have been a command, an option is no mistake yet.
    if (const auto option = std::find_if(words.begin(), words.end(), isOption);
        command != nullptr && option != words.end()) {
        wrong = option;
    }
    const std::string word = wrong == words.end() ? "" : unshielded(*wrong);
    if (word.starts_with('-') && !isShielded(*wrong)) {
        return unknownOption(word.substr(0, word.find('=')), commandName(), command);
    }
    const auto isNameOf = [&word](const Command* other) { return other->name == word; };
    if (command != nullptr && *wrong == _firstWord &&
        std::none_of(allCommands().begin(), allCommands().end(), isNameOf)) {
        return unknownCommand("", word, allCommands());
    }
    if (command == nullptr && isShielded(*wrong)) {
        return {"A command was expected in front of \"--\", not " + inQuotes(word) + " behind it"};
    }
    if (hasCommandsAlone(command)) {
        return unknownCommand(commandName(), word,
                              command == nullptr ? allCommands() : command->commands);
    }
    return unexpectedArgument(word, commandName(), *command);
}

UsageError Reader::missingWords() const {
    const Command& command = *this->command();
    const CLI::App* app = namedCommand(_app);
    while (const CLI::App* inner = namedCommand(*app)) {
        app = inner;
    }
    for (const Parameter& parameter : command.parameters) {
        if (parameter.isRequired() && app->get_option(longName(parameter))->count() == 0) {
            return missingParameter(parameter, commandName(), command);
        }
    }
    return {"A word is missing"};
}

std::optional<UsageError> Reader::usageErrorInValues() const {
    std::vector<std::string> words;
    words.reserve(coloursWords.size());
    for (const ColoursWord& row : coloursWords) {
        words.emplace_back(row.word);
    }
    const std::string word = value("--color");
    if (!has("--color") || std::find(words.begin(), words.end(), word) != words.end()) {
        return std::nullopt;
    }
    return UsageError{
        "The option \"--color\" takes auto, always or never, and not " + inQuotes(word),
        questionForSimilar(word, words)};
}

/// Those in front of the command have been read by now.
std::optional<UsageError> Reader::usageErrorInOrder() const {
    const std::string option(folderOption);
    if (!has(option.c_str())) {
        return std::nullopt;
    }
    const std::string name = commandName();
    return UsageError{"The option " + inQuotes(option) + " stands in front of the command: nebsc " +
                      option + " DIR " + name.substr(0, name.size() - 1)};
}

CommandOutput helpOutput(std::string text) {
    return {.standardOutput = std::move(text), .standardError = {}, .exitStatus = exitDone};
}

constexpr Parameter commonRows[] = {
    {folderOption,
     "Run as if started in DIR; of several, each is relative to the one before it; in front of the "
     "command alone",
     Takes::folder, Occurs::anyNumber, "DIR"},
    {"--plugin",
     "The plug-in's file; unless given, NEBGit.so in lib/nebgit or lib beside nebsc's own folder",
     Takes::path, Occurs::optionally, "FILE"},
    {"--json", "One line of JSON instead of text for a person"},
    {"--color", "When to colour text for a person; auto: on a terminal", Takes::text,
     Occurs::optionally, "auto|always|never"},
    {"--trace", "Tell on standard error of each program that is run, as it starts and ends"},
    {"--version", "Show the versions of nebsc, the plug-in and git"},
};

}  // namespace

std::span<const Parameter> commonParameters() {
    return commonRows;
}

std::string_view programDescription() {
    return description;
}

std::variant<Call, CommandOutput> readCommandLine(int argc, const char* const* argv) {
    Reader reader;
    try {
        reader.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        if (reader.namesNoCommand()) {
            return refusedCall(reader.usageErrorInText(), reader.commandName());
        }
        return helpOutput(reader.help());
    } catch (const CLI::ExtrasError&) {
        return refusedCall(reader.usageErrorInText(), reader.commandName());
    } catch (const CLI::RequiredError&) {
        return refusedCall(
            reader.hasUnknownOption() ? reader.usageErrorInText() : reader.missingWords(),
            reader.commandName());
    } catch (const CLI::ParseError& error) {
        return refusedCall(usageErrorInOption(error.what()), reader.commandName());
    }
    if (const auto mistake = reader.usageErrorInOrder()) {
        return refusedCall(*mistake, reader.commandName());
    }
    if (const auto mistake = reader.usageErrorInValues()) {
        return refusedCall(*mistake, reader.commandName());
    }
    if (reader.commandName().empty() && !reader.asksForVersions()) {
        return argc < 2 ? helpOutput(reader.help()) : refusedCall({"A command is missing"}, "");
    }
    return reader.call();
}

}  // namespace neb::nebsc

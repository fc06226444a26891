// Command.h - what a command of nebsc is: a name, the words that it takes, and what it does.
//
// A command is a constant in a source file of its family. The table of all commands
// (Commands/Commands.h) drives parsing, help, manual page and completion.
//
//     namespace {
//     constexpr Parameter parameters[] = {{"FILE", "The files", Takes::path, Occurs::oneOrMore}};
//     CommandOutput run(const CommandCall& call) { return AddTask(call).run(); }
//     }  // namespace
//     constinit const Command addCommand{.name = "add", …, .parameters = parameters, .run = run};
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Session/HostSession.h"
#include "Session/PlugInFile.h"
#include "Terminal/CommandOutput.h"
#include "Terminal/Presentation.h"

namespace neb::nebsc {

/// What follows the name of a parameter; shells complete it accordingly.
enum class Takes {
    /// It is a flag.
    nothing,
    /// Words that nobody can guess; where the value's name lists some ("auto|always|never"), those.
    text,
    /// The path of a file or folder, absolute or as seen from the current folder.
    path,
    /// The same of a folder.
    folder,
    /// A path that the command itself looks up: a text like all that follow.
    pathAsWritten,
    // From here on, names of what git knows.
    /// A branch of this repository.
    branch,
    /// A branch, a tag, or another commit.
    revision,
    /// A revision or two of them as A..B or A...B; a path where it is no revision.
    revisionOrPath,
    /// The name of a remote.
    remote,
    /// REMOTE/BRANCH, a branch of a remote as it was when last fetched.
    remoteBranch,
    /// A branch of the remote that the word before names.
    branchOfRemote,
    /// LOCAL:THERE, a branch of this repository and one of the remote that the word before names.
    branchPair,
    /// Where a repository is: a URL, HOST:PATH or a path.
    location,
};

enum class Occurs { optionally, once, anyNumber, oneOrMore };

/// A word, or a number of words, that a command takes.
struct Parameter {
    /// "FILE" for a word that is told by its place; "--force" or "-m,--message" for an option.
    std::string_view name;
    std::string_view help;
    Takes takes = Takes::nothing;
    Occurs occurs = Occurs::optionally;
    /// What the help calls an option's value.
    std::string_view valueName = {};

    [[nodiscard]] bool isOption() const { return name.starts_with('-'); }
    /// Whether the values are paths that are looked up before the command runs.
    [[nodiscard]] bool takesPaths() const { return takes == Takes::path || takes == Takes::folder; }
    /// Whether the values name something that git knows, for which an empty word stands never.
    [[nodiscard]] bool takesNames() const { return takes >= Takes::branch; }
    [[nodiscard]] bool isRequired() const {
        return occurs == Occurs::once || occurs == Occurs::oneOrMore;
    }
    [[nodiscard]] bool isRepeated() const {
        return occurs == Occurs::anyNumber || occurs == Occurs::oneOrMore;
    }
};

/// "--message" for "-m,--message".
[[nodiscard]] std::string longName(const Parameter& parameter);

/// The words of a call, by the names of the parameters.
class Arguments {
public:
    /// A flag that stands in the call has one empty value.
    void set(std::string_view name, std::vector<std::string> values) {
        _values.insert_or_assign(std::string(name), std::move(values));
    }

    [[nodiscard]] bool has(std::string_view name) const { return !all(name).empty(); }
    /// The only value; nothing when the parameter does not stand in the call.
    [[nodiscard]] std::optional<std::string> value(std::string_view name) const;
    /// All values in order, none when the parameter does not stand in the call. Good as long as the
    /// object is left alone.
    [[nodiscard]] const std::vector<std::string>& all(std::string_view name) const;

    /// How many of the words that are told by their place stood behind "--"; absent without a "--".
    [[nodiscard]] std::optional<std::size_t> wordsBehindDashes() const {
        return _wordsBehindDashes;
    }
    void setWordsBehindDashes(std::optional<std::size_t> count) { _wordsBehindDashes = count; }

private:
    std::map<std::string, std::vector<std::string>, std::less<>> _values;
    std::optional<std::size_t> _wordsBehindDashes;
};

struct Command;

/// A command that is to be carried out. All of it outlives the command.
struct CommandCall {
    const PlugInFile& plugIn;
    /// Can perform requests only if the command needs the plug-in.
    const HostSession& session;
    const Command& command;
    const Arguments& arguments;
    /// The outcome in JSON instead of text for a person.
    bool isJSON = false;
    Colours colours = Colours::automatic;
};

struct Command {
    std::string_view name;
    /// The heading under which the help lists it; empty for one that only programs call, which the
    /// general help leaves out.
    std::string_view group;
    /// One line of the help.
    std::string_view summary;
    /// What its own help says beyond the parameters, with at least one example. Lines, the last one
    /// with its line end.
    std::string_view details;
    std::span<const Parameter> parameters = {};
    /// What is shown while it takes long: "Cloning".
    std::string_view activity = {};
    /// The commands whose names may stand behind this one's; a call that names none of them means
    /// the command itself.
    std::span<const Command* const> commands = {};
    /// Whether what it shows a person may be long: a terminal then shows it through a pager.
    bool isPaged = false;
    /// Whether the command is refused if the plug-in cannot be loaded.
    bool needsPlugIn = true;
    /// Answers all that there is to say and prints nothing. A signal ends the work; the reply then
    /// says so, and its exit status is that of the signal. On the main thread, one at a time.
    CommandOutput (*run)(const CommandCall& call) = nullptr;
};

}  // namespace neb::nebsc

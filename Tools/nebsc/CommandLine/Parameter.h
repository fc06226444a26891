// Parameter.h - an option or argument of a command.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

/// The kind of value that a parameter takes. Shells complete it accordingly.
enum class Takes {
    /// No value: the parameter is a flag.
    nothing,
    /// Any text. If the value's name lists choices ("auto|always|never"), only those are valid.
    text,
    /// The path of a file or directory, absolute or relative to the current directory.
    path,
    /// The path of a directory.
    folder,
    /// The path of a directory, or REVISION:PATH for one of a commit.
    folderOrObject,
    /// REVISION:PATH, a file of a commit.
    objectName,
    /// A path that the command resolves itself.
    pathAsWritten,
    /// A branch of this repository.
    branch,
    /// A branch, a tag or any other commit.
    revision,
    /// A revision or a range (A..B, A...B), or a path if no such revision exists.
    revisionOrPath,
    /// A tag of this repository.
    tag,
    /// The number of a stash.
    stash,
    /// The name of a remote.
    remote,
    /// REMOTE/BRANCH, a remote-tracking branch.
    remoteBranch,
    /// A branch of the remote that the previous argument names.
    branchOfRemote,
    /// LOCAL:DEST, a branch of this repository and one of the remote that the previous argument
    /// names.
    branchPair,
    /// The location of a repository: a URL, HOST:PATH or a path.
    location,
};

/// How often a parameter may be given.
enum class Occurs { optionally, once, anyNumber, oneOrMore };

struct Parameter {
    /// "FILE" for an argument, "--force" or "-m,--message" for an option.
    std::string_view name;
    /// The line in the help, without a full stop.
    std::string_view help;
    Takes takes = Takes::nothing;
    Occurs occurs = Occurs::optionally;
    /// The name of an option's value in the help, or the choices: "auto|always|never".
    std::string_view valueName = {};
    /// Whether a value may be empty. Names, paths and numbers may not.
    bool mayBeEmpty = false;

    [[nodiscard]] bool isOption() const { return name.starts_with('-'); }
    [[nodiscard]] bool isFlag() const { return takes == Takes::nothing; }
    /// Whether the values are paths that are resolved before the command runs.
    [[nodiscard]] bool takesPaths() const {
        return takes == Takes::path || takes == Takes::folder || takes == Takes::folderOrObject;
    }
    [[nodiscard]] bool isRequired() const {
        return occurs == Occurs::once || occurs == Occurs::oneOrMore;
    }
    [[nodiscard]] bool isRepeated() const {
        return occurs == Occurs::anyNumber || occurs == Occurs::oneOrMore;
    }
};

/// Returns the spellings of an option, the long one last: "-m" and "--message". An argument has
/// one, its name.
[[nodiscard]] std::vector<std::string_view> spellingsOf(const Parameter& parameter);

/// Returns "--message" for "-m,--message", and the name of an argument.
[[nodiscard]] std::string longName(const Parameter& parameter);

/// Returns the values that the value's name lists; empty if any value is valid.
[[nodiscard]] std::vector<std::string> choicesOf(const Parameter& parameter);

}  // namespace neb::nebsc

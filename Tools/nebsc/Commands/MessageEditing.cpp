#include "Commands/MessageEditing.h"

#include <algorithm>

#include "CommandFrame/FailureText.h"
#include "Commands/TextEditing.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view blanks = " \t\r\n\v\f";

/// Begins, after the comment prefix and a blank, the line that ends a message; see scissors in
/// git-commit(1), --cleanup.
constexpr std::string_view scissors = "------------------------ >8 ------------------------";

/// What becomes of comments; see --cleanup in git-commit(1).
enum class Comments { removed, cutOff, kept };

Comments commentsOf(std::string_view cleanup) {
    if (cleanup == "scissors") {
        return Comments::cutOff;
    }
    return cleanup == "default" || cleanup == "strip" ? Comments::removed : Comments::kept;
}

bool isBlank(std::string_view text) {
    return trimmed(text, blanks).empty();
}

/// One run of editCommitMessage().
class MessageEditing {
public:
    MessageEditing(const GitQueries& git, const CommitToDescribe& commit)
        : _git(git), _commit(commit) {}

    [[nodiscard]] EditedMessage run();

private:
    /// Finds what will be committed. Returns why nothing can be.
    [[nodiscard]] std::optional<CommandOutput> describe();
    /// Returns the text that the user starts from.
    [[nodiscard]] std::string initialText();
    void findComments(const std::string& text);
    /// Returns the comments to add to the text that the user starts from.
    [[nodiscard]] std::string comments(std::string_view text) const;
    [[nodiscard]] std::string commented(std::string_view text) const;
    [[nodiscard]] std::string withoutComments(std::string_view text) const;
    [[nodiscard]] bool isScissors(std::string_view line) const;
    /// Writes the file, starts the editor and reads the file again.
    [[nodiscard]] EditedMessage edited(const std::string& text);

    const GitQueries& _git;
    const CommitToDescribe& _commit;
    /// The output of git-status(1).
    std::string _status;
    /// Whether the initial text asks to be filled in.
    bool _isTemplate = false;
    Comments _comments = Comments::removed;
    std::string _commentPrefix;
};

std::optional<CommandOutput> MessageEditing::describe() {
    std::vector<std::string> arguments{"-c", "color.status=false", "commit", "--dry-run", "--long"};
    arguments.insert(arguments.end(), _commit.arguments.begin(), _commit.arguments.end());
    const ChildOutcome outcome = _git.run(std::move(arguments));
    _status = outcome.output;
    const bool isNothing = outcome.status.exitStatus() == 1;
    if (outcome.status.isSuccess()) {
        return std::nullopt;
    }
    if (!isNothing) {
        return failureOfQuery(_git, outcome);
    }
    CommandOutput refused;
    addConflicts(refused, _git, "These files are in conflict; resolve and stage them first:");
    if (refused.exitStatus != exitDone) {
        return refused;
    }
    if (_commit.mayBeEmpty || _commit.isAmending) {
        return std::nullopt;
    }
    return refusalWithAdvice("There is nothing to commit: no changes are staged.",
                             "'nebsc stage' stages changes.",
                             NEBSourceControlNothingToCommitErrorClass);
}

std::string MessageEditing::initialText() {
    if (_commit.isAmending) {
        return std::string(_git.run({"log", "-1", "--format=%B", "HEAD", "--"}).output);
    }
    for (const char* name : {"MERGE_MSG", "SQUASH_MSG"}) {
        if (std::string text = contentOfFile(pathOfGitFile(_git, name)); !text.empty()) {
            return text;
        }
    }
    const auto path = _git.outputOf({"config", "--type=path", "--get", "commit.template"});
    _isTemplate = path.has_value();
    return path ? contentOfFile(path->starts_with('/')
                                    ? *path
                                    : pathByAppendingComponent(_git.workingCopy().location, *path))
                : "";
}

/// See core.commentChar and commit.cleanup in git-config(1).
void MessageEditing::findComments(const std::string& text) {
    _comments =
        commentsOf(_git.outputOf({"config", "--get", "commit.cleanup"}).value_or("default"));
    if (_comments == Comments::kept) {
        return;
    }
    for (const char* setting : {"core.commentChar", "core.commentString"}) {
        _commentPrefix = _git.outputOf({"config", "--get", setting}).value_or(_commentPrefix);
    }
    if (_commentPrefix == "auto") {
        constexpr std::string_view characters = "#;@!$%^&|:";
        const std::string lines = "\n" + text;
        const auto unused = std::ranges::find_if(characters, [&lines](char character) {
            return lines.find({'\n', character}) == std::string::npos;
        });
        _commentPrefix = unused == characters.end() ? "#" : std::string(1, *unused);
    }
    _commentPrefix = _commentPrefix.empty() ? "#" : _commentPrefix;
}

bool MessageEditing::isScissors(std::string_view line) const {
    return _comments == Comments::cutOff &&
           line.starts_with(_commentPrefix + " " + std::string(scissors));
}

std::string MessageEditing::commented(std::string_view text) const {
    std::string comments;
    forEachLine(text, [&](std::string_view line) {
        comments += _commentPrefix;
        comments.append(line.empty() || line.starts_with('\t') ? "" : " ").append(line);
        comments += '\n';
    });
    return comments;
}

/// The message of a merge has the line that ends it already, before the list of its conflicts.
std::string MessageEditing::comments(std::string_view text) const {
    constexpr std::string_view emptyMessage = "An empty message commits nothing.\n\n";
    if (_comments == Comments::kept) {
        return {};
    }
    if (_comments == Comments::removed) {
        return "\n" +
               commented("Write the message of the commit. Lines that begin with '" +
                         _commentPrefix + "' are\nremoved. " + std::string(emptyMessage) + _status);
    }
    bool isCut = false;
    forEachLine(text, [&](std::string_view line) { isCut = isCut || isScissors(line); });
    const std::string cut = "\n" + commented(std::string(scissors) +
                                             "\nDo not change or remove the line above. "
                                             "Everything below it is ignored.\n");
    return (isCut ? "" : cut) + commented(std::string(emptyMessage) + _status);
}

std::string MessageEditing::withoutComments(std::string_view text) const {
    std::string message;
    bool isCut = false;
    forEachLine(text, [&](std::string_view line) {
        isCut = isCut || isScissors(line);
        const bool isRemoved = _comments == Comments::removed && line.starts_with(_commentPrefix);
        if (!isCut && !isRemoved) {
            message.append(line).append(1, '\n');
        }
    });
    return message;
}

EditedMessage MessageEditing::edited(const std::string& text) {
    const EditedText edited = editText(_git, "COMMIT_EDITMSG", text);
    if (edited.errorClass == NEBSourceControlIOErrorClass) {
        return {.refused = refusal(edited.failure + ".", exitFailed, edited.errorClass)};
    }
    if (!edited.failure.empty()) {
        return {.refused = refusalWithAdvice(
                    edited.failure + "; nothing was committed.",
                    "The option '--message' takes the message from the command line.",
                    edited.errorClass)};
    }
    return {.text = withoutComments(edited.text), .file = edited.file};
}

EditedMessage MessageEditing::run() {
    if (auto refused = describe()) {
        return {.refused = std::move(refused)};
    }
    std::string text = initialText();
    findComments(text);
    const std::string before = withoutComments(text);
    text += text.empty() || text.ends_with('\n') ? "" : "\n";
    text += comments(text);
    EditedMessage message = edited(text);
    if (!message.refused && isBlank(message.text)) {
        message.refused = refusal("The message is empty; nothing was committed.", exitFailed,
                                  NEBSourceControlMessageEmptyErrorClass);
    } else if (!message.refused && _isTemplate &&
               trimmed(message.text, blanks) == trimmed(before, blanks)) {
        message.refused = refusal("The message is still the template; nothing was committed.",
                                  exitFailed, NEBSourceControlMessageEmptyErrorClass);
    }
    return message;
}

}  // namespace

EditedMessage editCommitMessage(const GitQueries& git, const CommitToDescribe& commit) {
    return MessageEditing(git, commit).run();
}

}  // namespace neb::nebsc

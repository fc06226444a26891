#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "Commands/MessageEditing.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Session/Editor.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

bool isAbbreviatedRevision(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

/// Joins the messages as paragraphs, as git commit does.
std::string messageOf(const std::vector<std::string>& paragraphs) {
    std::string message;
    for (const std::string& paragraph : paragraphs) {
        if (!message.empty()) {
            message += message.ends_with('\n') ? "\n" : "\n\n";
        }
        message += paragraph;
    }
    return message;
}

class CommitTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void finish(Outcome& outcome) override;
    void report(const Outcome& outcome, CommandOutput& output) override;
    std::string adviceFor(const NEBSourceControlError& error) const override;

private:
    [[nodiscard]] bool isAmending() const { return arguments().has("--amend"); }
    /// Returns whether the user writes the message in an editor.
    [[nodiscard]] bool isEdited() const;
    [[nodiscard]] CommitToDescribe commitToDescribe() const;

    /// Returns the id of the commit that was made; absent without a commit.
    [[nodiscard]] std::optional<std::string> revisionIn(const Outcome& outcome) const;

    /// The commit of HEAD before; absent before the first commit.
    std::optional<std::string> _commitBefore;
    /// The commit that was made; absent without one.
    std::optional<std::string> _commit;
    /// Absent for that of the amended commit.
    std::optional<std::string> _message;
    /// Empty if the user has edited none.
    std::string _messageFile;
};

/// A flag, and the option of the request for it. Only the newer type knows them.
struct CommitFlag {
    std::string_view flag;
    NEBConstant option;
};

constexpr CommitFlag newerFlags[] = {
    {"--amend", NEBSourceControlRequestOptionAmend},
    {"--all", NEBSourceControlRequestOptionAll},
    {"--signoff", NEBSourceControlRequestOptionSignOff},
};

/// The longest message in bytes that git can take as an argument: Linux limits one to 128 KiB with
/// its NUL byte, see execve(2). The newer type passes the message on standard input.
constexpr std::size_t longestArgument = 128 * 1024 - 1;

bool CommitTask::isEdited() const {
    return mayRunGit() && !arguments().has("--message") && !arguments().has("--no-edit") &&
           !isJSON() && canEdit();
}

CommitToDescribe CommitTask::commitToDescribe() const {
    CommitToDescribe commit{.isAmending = isAmending(),
                            .mayBeEmpty = arguments().has("--allow-empty")};
    for (const std::string_view flag : {"--amend", "--all"}) {
        if (arguments().has(flag)) {
            commit.arguments.emplace_back(flag);
        }
    }
    commit.arguments.emplace_back("--");
    const std::vector<std::string>& files = paths("FILE");
    commit.arguments.insert(commit.arguments.end(), files.begin(), files.end());
    return commit;
}

std::optional<CommandOutput> CommitTask::validate() {
    if (arguments().has("--all") && !paths("FILE").empty()) {
        throw invalidArguments("expected either FILE or --all");
    }
    if (arguments().has("--message")) {
        _message = messageOf(arguments().all("--message"));
    } else if (isEdited()) {
        if (auto refused = refusalOutsideRepository(git())) {
            return refused;
        }
        endProgress();
        EditedMessage edited = editCommitMessage(git(), commitToDescribe());
        _message = std::move(edited.text);
        _messageFile = std::move(edited.file);
        return edited.refused;
    } else if (!isAmending()) {
        throw invalidArguments("expected --message, or --amend, which can keep the message");
    }
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> CommitTask::makeRequest() {
    _commitBefore = mayRunGit() ? git().headCommit() : std::nullopt;
    auto request = newRequest(NEBSourceControlRequestCommit, paths("FILE"));
    request->options.emplace();
    for (const CommitFlag& row : newerFlags) {
        if (arguments().has(row.flag)) {
            request->type = NEBSourceControlRequestCreateCommit;
            request->options->set(row.option, true);
        }
    }
    if (const auto author = arguments().value("--author")) {
        request->type = NEBSourceControlRequestCreateCommit;
        request->options->set(NEBSourceControlRequestOptionAuthor, *author);
    }
    if (_message) {
        if (_message->size() > longestArgument) {
            request->type = NEBSourceControlRequestCreateCommit;
        }
        request->options->set(NEBSourceControlRequestOptionMessage, *_message);
    }
    if (arguments().has("--allow-empty")) {
        request->options->set(NEBSourceControlRequestOptionAllowEmptyCommit, true);
    }
    return request;
}

std::string CommitTask::adviceFor(const NEBSourceControlError& /*error*/) const {
    return _messageFile.empty()
               ? ""
               : "The message is kept in " + inQuotes(_messageFile) + " until the next commit.";
}

/// Returns 12 characters of the commit id if HEAD is the recorded commit: git abbreviates the id in
/// the record to fewer. For the first commit and on a detached HEAD, the record does not hold the
/// id.
std::optional<std::string> CommitTask::revisionIn(const Outcome& outcome) const {
    const bool hasRecord = outcome.result && !outcome.result->empty();
    const auto recorded =
        hasRecord ? outcome.result->front().value(NEBSourceControlOperationRevisionKey).string()
                  : std::nullopt;
    if (!recorded || !isAbbreviatedRevision(*recorded)) {
        return git().headCommit();
    }
    const auto head = mayRunGit() ? git().headCommit() : std::nullopt;
    return head && head->starts_with(*recorded) ? head : std::optional(std::string(*recorded));
}

/// A commit that is amended within a second may keep its id.
void CommitTask::finish(Outcome& outcome) {
    _commit = revisionIn(outcome);
    if (!mayRunGit() || isAmending()) {
        return;
    }
    const bool isUnchanged =
        _commit ? _commitBefore && _commitBefore->starts_with(*_commit) : !_commitBefore;
    if (isUnchanged) {
        outcome.result.reset();
        outcome.error = NEBSourceControlError::withDescription(
            NEBSourceControlGenericError,
            "git reported success, but HEAD names the same commit as before.",
            "'git reflog' shows whether a hook has moved it. If not, check with \"git --version\" "
            "that "
            "git is the program you expect.");
        outcome.error->errorClass = NEBSourceControlUnknownErrorClass;
    }
}

void CommitTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    if (_commit) {
        output.standardOutput =
            (isAmending() ? "Amended; now at " : "Committed ") + printable(*_commit) + ".\n";
    }
}

constexpr Parameter parameters[] = {
    {"-m,--message", "The commit message; each further one is a new paragraph", Takes::text,
     Occurs::anyNumber, "MESSAGE", true},
    {"--amend", "Replace the latest commit; without --message, edit or keep its message"},
    {"--no-edit", "Keep the message of the latest commit, and start no editor"},
    {"-a,--all", "Commit the changes of all tracked files, staged or not"},
    {"-s,--signoff", "Add a line 'Signed-off-by'"},
    {"--author", "The author, if that is another person", Takes::text, Occurs::optionally,
     "'NAME <ADDRESS>'"},
    {"--allow-empty", "Commit even if nothing has changed"},
    {"FILE", "Commit these files as they are on disk, staged or not; default: what is staged",
     Takes::path, Occurs::anyNumber},
};

}  // namespace

constinit const Command commitCommand{
    .name = "commit",
    .group = changeGroup,
    .summary = "Commit the staged changes, or the changes of files",
    .details =
        "Without --message, an editor is started on a terminal: GIT_EDITOR, core.editor,\n"
        "VISUAL or EDITOR, as for git. Its comments list what will be committed; an empty\n"
        "message commits nothing. Elsewhere, --message is required, except with --amend.\n"
        "\n"
        "Examples:\n"
        "  nebsc commit -m 'Say hello'               commit what is staged\n"
        "  nebsc commit -m 'Say hello' src/main.c    commit the changes of one file\n"
        "  nebsc commit -a -m 'Say hello'            commit all changes of tracked files\n"
        "  nebsc commit --amend --no-edit            add to the latest commit\n",
    .parameters = parameters,
    .activity = "Committing",
    .run = runTask<CommitTask>,
};

}  // namespace neb::nebsc

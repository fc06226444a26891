// CommandTask.h - the frame of a command that makes one request, so that each command is short.
//
//     class AddTask : public CommandTask {
//         using CommandTask::CommandTask;
//         std::shared_ptr<NEBSourceControlRequest> request() override {
//             return requestAbout(NEBSourceControlRequestAddFiles, paths("FILE"));
//         }
//     };
//
// run() finds the working copy around the current folder, lets the command look before anything is
// done, carries its request out, and says what came of it: with --json the outcome, also where
// there is no more to it than why no request was made; for a person what the command makes of the
// result, and in either case an error, a git that failed without a
// word, broken preconditions and a signal.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CommandFrame/WorkingCopyLocation.h"
#include "CommandLine/Command.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/ChildProcess.h"
#include "Session/Interruption.h"
#include "Terminal/ProgressIndicator.h"

namespace neb::nebsc {

/// One run of a command, on one thread.
class CommandTask {
public:
    /// Takes over the signals for as long as it lives.
    explicit CommandTask(const CommandCall& call) : _call(call) {}
    CommandTask(const CommandTask&) = delete;
    CommandTask& operator=(const CommandTask&) = delete;
    virtual ~CommandTask() = default;

    [[nodiscard]] CommandOutput run();

protected:
    /// What it means when a git fails and says nothing.
    enum class Silence {
        failure,
        /// With exit status 1 it is an answer: there is nothing of the kind.
        answer,
        /// The commands' ends are no part of the outcome.
        irrelevant,
    };

    // ---- what a command says of itself, in the order in which it is asked

    /// The place that the request is about: the working copy around the current folder, unless the
    /// command knows better.
    [[nodiscard]] virtual WorkingCopyLocation findPlace();
    /// A look before anything is done; a reply ends the command.
    [[nodiscard]] virtual std::optional<CommandOutput> validate() { return std::nullopt; }
    [[nodiscard]] virtual std::shared_ptr<NEBSourceControlRequest> request() = 0;
    /// Carries out the request; a command that needs to know more than the request's records hold
    /// runs an operation of its own instead.
    [[nodiscard]] virtual RequestResult carryOut() { return perform(request()); }
    [[nodiscard]] virtual Silence silence() const { return Silence::failure; }
    /// Whether an error is an answer all the same, of which report() tells.
    [[nodiscard]] virtual bool isAnswer(const NEBSourceControlError& /*error*/) const {
        return false;
    }
    /// What the command says in place of an error that it understands better; empty for all others.
    /// Unless a command knows better, that a path is not there, or is not tracked.
    [[nodiscard]] virtual std::string sentenceFor(const NEBSourceControlError& error) const;
    /// What the command has to say behind an error: a line with its end, or nothing.
    [[nodiscard]] virtual std::string adviceAfter(const NEBSourceControlError& /*error*/) const {
        return {};
    }
    /// What belongs to the work and git does not do, behind a success; what it changes is told as
    /// the request's own outcome, its failure too.
    virtual void finish(Outcome& /*outcome*/) {}
    /// Whether an error leaves work behind, so that finish() is called all the same.
    [[nodiscard]] virtual bool isCompletedAfter(const NEBSourceControlError& /*error*/) {
        return false;
    }
    /// The records for a person, lines with their ends. An error may stand beside them.
    [[nodiscard]] virtual std::string textOfResult(const NEBSourceControlResult& result);
    /// What is left to do and to say after a success.
    virtual void report(const Outcome& outcome, CommandOutput& output);
    /// Adds what is left to say after a failure, behind adviceAfter().
    virtual void concludeFailure(const Outcome& /*outcome*/, CommandOutput& /*output*/) {}

    // ---- what a command may use, from validate() on

    [[nodiscard]] const Arguments& arguments() const { return _call.arguments; }
    [[nodiscard]] bool isJSON() const { return _call.isJSON; }
    /// Whether what goes to standard output is coloured.
    [[nodiscard]] bool isInColour() const;
    /// The parameter's absolute paths, in order; of one that takes a path and stands in the call.
    [[nodiscard]] const std::vector<std::string>& paths(std::string_view parameter) const;
    [[nodiscard]] const WorkingCopyLocation& place() const { return _place; }
    /// Good in findPlace() too, as are the arguments and the paths.
    [[nodiscard]] const std::string& currentFolder() const { return _place.currentFolder; }
    [[nodiscard]] Interruption& interruption() { return _interruption; }
    [[nodiscard]] const Trace& trace() const { return _call.session.trace(); }

    /// A request about the place.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> requestOfType(std::int32_t type) const;
    /// The same with these files.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> requestAbout(
        std::int32_t type, const std::vector<std::string>& files) const;
    /// Carries out a request; see HostSession about the replacement.
    [[nodiscard]] RequestResult perform(
        const std::shared_ptr<NEBSourceControlRequest>& request,
        const std::shared_ptr<NEBSourceControlOperation>& replacement = nullptr);
    /// Runs an operation of the command's own.
    [[nodiscard]] RequestResult perform(NEBSourceControlOperation& operation);
    /// Carries out, in validate(), a request without which the command's own makes no sense. A
    /// reply tells that it failed, with --json its outcome.
    [[nodiscard]] std::optional<CommandOutput> prepareBy(
        const std::shared_ptr<NEBSourceControlRequest>& request);

    /// A question of the command's own to git, in the place. Names are never patterns.
    [[nodiscard]] ChildOutcome ask(std::vector<std::string> arguments);
    /// Its answer without the line end; nothing when git failed or was silent.
    [[nodiscard]] std::optional<std::string> answer(std::vector<std::string> arguments);
    /// The question for the commit that a revision stands for; git fails with exit status 1 and
    /// silently when there is none.
    [[nodiscard]] ChildOutcome askForCommit(const std::string& revision);
    /// Whether HEAD names no commit yet. One whose commit is lost is another matter.
    [[nodiscard]] bool isWithoutCommits();
    /// The error that names the reference of the revision, where it is broken; see
    /// brokenReferenceIn(). Asked where git knows no such revision.
    [[nodiscard]] std::optional<NEBSourceControlError> brokenReference(const std::string& revision);
    /// The reply for a revision that git does not know: its reference is broken, or there is none.
    [[nodiscard]] CommandOutput refusalOfUnknownRevision(const std::string& revision);
    /// The latest commit, 12 characters; nothing when there is none.
    [[nodiscard]] std::optional<std::string> latestCommit();

    /// Says how an outcome failed, and answers whether it did.
    bool noteFailure(CommandOutput& output, const Outcome& outcome, Silence silence) const;
    /// Says which files at or below the paths (all, without paths) are in conflict, behind the
    /// sentence; the command has failed then.
    void noteConflicts(CommandOutput& output, std::string_view sentence,
                       const std::vector<std::string>& paths);
    /// That a question failed, in git's words.
    [[nodiscard]] CommandOutput failureOf(const ChildOutcome& question) const;
    /// The reply where there is no working copy, in git's words; nothing where there is one.
    [[nodiscard]] std::optional<CommandOutput> refusalWithoutWorkingCopy();
    /// A path from the top, or an absolute one, as the person sees it, printable.
    [[nodiscard]] std::string shown(const std::string& path) const;
    /// A refusal with the sentence, and the files on lines of their own, as the person sees them.
    [[nodiscard]] CommandOutput refusalAbout(std::string_view sentence,
                                             const std::vector<std::string>& files,
                                             std::string_view errorClass) const;

private:
    [[nodiscard]] CommandOutput work();
    [[nodiscard]] std::optional<CommandOutput> refusalOfEmptyNames() const;
    [[nodiscard]] std::optional<CommandOutput> readPaths();
    [[nodiscard]] CommandOutput replyInMemoryTo(Outcome& outcome);
    [[nodiscard]] CommandOutput replyTo(Outcome& outcome);
    /// Names the current branch in an error that comes from its being broken.
    void explainBrokenHEAD(Outcome& outcome);
    /// Adds what belongs to a reply about an outcome in any case. A failure that is the command's
    /// alone becomes the outcome's, so that a program is told of it.
    void addNotes(CommandOutput& output, Outcome& outcome) const;
    [[nodiscard]] std::optional<std::string> pagerFor(std::string_view text);

    const CommandCall& _call;
    Interruption _interruption;
    /// From the first question on until there is something to say.
    std::optional<ProgressIndicator> _sign;
    WorkingCopyLocation _place;
    std::map<std::string, std::vector<std::string>, std::less<>> _paths;
};

/// Runs a command; the function of its row in the command table: `.run = runTask<AddTask>`.
template <class Task>
[[nodiscard]] CommandOutput runTask(const CommandCall& call) {
    return Task(call).run();
}

}  // namespace neb::nebsc

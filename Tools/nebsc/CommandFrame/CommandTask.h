// CommandTask.h - the frame of a command that makes one request: the steps that all of them share.
//
//     class AddTask : public CommandTask {
//         using CommandTask::CommandTask;
//         std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
//             return newRequest(NEBSourceControlRequestAddFiles, paths("FILE"));
//         }
//     };
//     constinit const Command addCommand{.name = "add", …, .run = runTask<AddTask>};
//
// A command runs in these steps, each a virtual function:
//
//     locate      finds the working copy that the command works in
//     validate    refuses what cannot work, before anything changes
//     makeRequest
//     perform     carries the request out; performStreamed() prints its records as they arrive
//     finish      does what git does not do, after a success
//     report      prints what was done
//
// With --json, the frame prints the outcome instead, also if no request was made. In either case it
// reports errors, broken preconditions and signals.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CommandFrame/FailureText.h"
#include "CommandFrame/GitQueries.h"
#include "CommandFrame/Requests.h"
#include "CommandLine/Command.h"
#include "CommandLine/UsageError.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Session/Interruption.h"
#include "Session/Paths.h"
#include "Terminal/ProgressIndicator.h"
#include "Terminal/StreamedOutput.h"

namespace neb::nebsc {

/// One run of a command. Not thread-safe.
class CommandTask {
public:
    /// Handles the signals as long as the object lives.
    explicit CommandTask(const CommandCall& call);
    CommandTask(const CommandTask&) = delete;
    CommandTask& operator=(const CommandTask&) = delete;
    virtual ~CommandTask() = default;

    [[nodiscard]] CommandOutput run();

protected:
    /// What it means that git fails and prints nothing.
    enum class SilentFailure {
        isError,
        /// With exit status 1, nothing was found.
        isEmptyResult,
        isIgnored,
    };

    // ---- the steps, in order

    /// Returns the working copy around the current folder unless a command overrides it; see
    /// locateAround().
    [[nodiscard]] virtual WorkingCopyLocation locate() {
        return locateAround(currentFolder(), questions());
    }
    /// Returns what locate() finds out besides the location, so that validate() need not ask.
    [[nodiscard]] virtual RepositoryQuestions questions() const { return {}; }
    /// Returns whether perform() may run at the same time as locate(), where the working copy
    /// probably is, or without locate() where it certainly is. Only if it changes nothing, prints
    /// with performStreamed() at most, reports what git says of a broken repository, and does not
    /// depend on validate(). It runs again if the working copy is elsewhere.
    [[nodiscard]] virtual bool canRunBesideLocate() const { return false; }
    /// Returns the output of a command that ends here; absent if it goes on. Throws a UsageError if
    /// the arguments are invalid.
    [[nodiscard]] virtual std::optional<CommandOutput> validate() { return std::nullopt; }
    [[nodiscard]] virtual std::shared_ptr<NEBSourceControlRequest> makeRequest() = 0;
    /// Carries out makeRequest() unless a command overrides it, to run an operation of its own.
    [[nodiscard]] virtual RequestResult perform() { return performRequest(makeRequest()); }
    /// Does what belongs to the command and git does not do. May change the outcome.
    virtual void finish(Outcome& /*outcome*/) {}
    /// Returns the records as text for a person; lines with their ends. An error may accompany
    /// them. Called once for each batch of records that performStreamed() gets.
    [[nodiscard]] virtual std::string textOfResult(const NEBSourceControlResult& result);
    /// Does and reports what is left to do after a success.
    virtual void report(const Outcome& outcome, CommandOutput& output);

    // ---- how a command treats failures

    [[nodiscard]] virtual SilentFailure silentFailure() const { return SilentFailure::isError; }
    /// Returns whether report() handles the error.
    [[nodiscard]] virtual bool isHandled(const NEBSourceControlError& /*error*/) const {
        return false;
    }
    /// Returns whether finish() runs in spite of the error.
    [[nodiscard]] virtual bool finishesAfter(const NEBSourceControlError& /*error*/) {
        return false;
    }
    /// Returns a better message than the error's own; empty to keep that.
    [[nodiscard]] virtual std::string textFor(const NEBSourceControlError& error) const;
    /// Returns advice for the error, one line without its end; may be empty.
    [[nodiscard]] virtual std::string adviceFor(const NEBSourceControlError& /*error*/) const {
        return {};
    }
    /// Adds what is left to report after a failure, after adviceFor().
    virtual void reportFailure(const Outcome& /*outcome*/, CommandOutput& /*output*/) {}

    // ---- the invocation; available in every step

    [[nodiscard]] const Arguments& arguments() const { return _call.arguments; }
    /// Returns the parameter's only value; empty if it is not given.
    [[nodiscard]] std::string argument(std::string_view parameter) const {
        return _call.arguments.value(parameter).value_or("");
    }
    /// Returns the error of a parameter's value. `expected` is what the command accepts, such as "a
    /// number of commits".
    [[nodiscard]] UsageError invalidValue(std::string_view parameter, std::string expected) const;
    /// Returns the absolute paths of a parameter that takes paths, in order.
    [[nodiscard]] const std::vector<std::string>& paths(std::string_view parameter) const;
    [[nodiscard]] const std::string& currentFolder() const { return workingCopy().currentFolder; }
    [[nodiscard]] bool isJSON() const { return _call.isJSON; }
    /// Returns whether standard output is coloured.
    [[nodiscard]] bool isInColour() const { return _isInColour; }

    /// Returns whether git may be run for what no request returns; see HostSession.
    [[nodiscard]] bool mayRunGit() const { return _call.session.mayRunGit(); }
    /// Returns the working copy that a folder lies in, with the answers to the questions. If git
    /// may not be run, asks the plug-in with a request for information (19), and no questions.
    [[nodiscard]] WorkingCopyLocation locateAround(const std::string& folder,
                                                   const RepositoryQuestions& asked = {});

    // ---- git; available from validate() on, except workingCopy().currentFolder

    [[nodiscard]] const GitQueries& git() const { return _git; }
    [[nodiscard]] const WorkingCopyLocation& workingCopy() const { return _git.workingCopy(); }
    /// Returns a path as the user sees it, printable; see shownPath().
    [[nodiscard]] std::string shown(const std::string& path) const {
        return shownPath(workingCopy(), path);
    }

    // ---- requests

    /// Returns a request about the working copy.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newRequest(std::int32_t type) const {
        return nebsc::newRequest(workingCopy(), type);
    }
    /// The same, with these files.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newRequest(
        std::int32_t type, const std::vector<std::string>& files) const;
    /// Carries out a request; see HostSession about the replacement.
    [[nodiscard]] RequestResult performRequest(
        const std::shared_ptr<NEBSourceControlRequest>& request,
        const std::shared_ptr<NEBSourceControlOperation>& replacement = nullptr);
    /// Carries out the command's request, and prints textOfResult() as the records arrive, unless
    /// the command prints JSON. The result of the outcome is empty then. See HostSession about the
    /// replacement.
    [[nodiscard]] RequestResult performStreamed(
        const std::shared_ptr<NEBSourceControlRequest>& request,
        const std::shared_ptr<NEBSourceControlOperation>& replacement = nullptr);
    /// The same with an operation of the command's own.
    [[nodiscard]] RequestResult performStreamed(NEBSourceControlOperation& operation);
    /// Runs an operation of the command's own.
    [[nodiscard]] RequestResult performOperation(NEBSourceControlOperation& operation);
    /// Carries out, in validate(), a request that the command's own depends on. Returns the output
    /// of its failure; absent if it succeeds.
    [[nodiscard]] std::optional<CommandOutput> performFirst(
        const std::shared_ptr<NEBSourceControlRequest>& request);
    /// Erases the progress indicator, and shows no other. Call it before the command itself writes
    /// to the terminal.
    void endProgress() { _progress->end(); }
    /// Adds the failure of an outcome, and returns whether there is one.
    bool addFailureOf(const Outcome& outcome, SilentFailure silentFailure,
                      CommandOutput& output) const;

private:
    [[nodiscard]] CommandOutput runSteps();
    /// Finds the working copy. Returns the result of perform() if that could run at the same time.
    [[nodiscard]] std::optional<RequestResult> locateAndPerform();
    /// Returns an ordinary working copy; absent in any doubt, or if git must be asked something.
    [[nodiscard]] std::optional<WorkingCopyLocation> locateWithoutGit() const;
    [[nodiscard]] std::optional<CommandOutput> readPaths();
    [[nodiscard]] CommandOutput outputFor(Outcome& outcome);
    [[nodiscard]] CommandOutput outputInMemoryFor(Outcome& outcome);
    /// Names the current branch in an error that comes from its being broken.
    void explainBrokenHEAD(Outcome& outcome) const;
    /// Adds the command's advice about an error to the output, and to the error, for --json, what
    /// the output says about it.
    void adviseAbout(NEBSourceControlError& error, CommandOutput& output) const;
    /// Adds what belongs to the output of every outcome. A failure of the command alone becomes the
    /// outcome's error, so that --json reports it.
    void addNotes(CommandOutput& output, Outcome& outcome) const;
    /// Returns the values of all arguments.
    [[nodiscard]] std::vector<std::string> names() const;
    [[nodiscard]] std::optional<std::string> pagerFor(std::string_view text) const;
    [[nodiscard]] std::optional<std::string> chosenPager() const;
    /// Opens the streamed output. Returns a function that runs an operation and prints its records.
    [[nodiscard]] HostSession::Runner printingRunner();
    /// Returns the text of records that performStreamed() gets; absent if the working copy turns
    /// out to be elsewhere.
    [[nodiscard]] std::optional<std::string> textOfArrived(const NEBSourceControlResult& records);

    const CommandCall& _call;
    const bool _isInColour;
    Interruption _interruption{_call.timeLimit};
    /// Present until there is something to print.
    std::optional<ProgressIndicator> _progress;
    /// Present if records are printed as they arrive.
    std::optional<StreamedOutput> _streamedOutput;
    GitQueries _git{_interruption, _call.session.trace(), _call.session.trust(),
                    _call.session.mayRunGit()};
    /// Waits for locate() and returns whether the working copy is where perform() runs; empty
    /// unless perform() runs at the same time.
    std::function<bool()> _confirmsLocation;
    std::map<std::string, std::vector<std::string>, std::less<>> _paths;
};

/// Runs a command; the function of its row in the command table.
template <class Task>
[[nodiscard]] CommandOutput runTask(const CommandCall& call) {
    return Task(call).run();
}

}  // namespace neb::nebsc

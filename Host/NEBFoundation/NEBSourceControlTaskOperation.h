// NEBSourceControlTaskOperation.h - the base class of operations that run a child process.
//
//     class VersionOperation : public NEBSourceControlTaskOperation {
//     public:
//         explicit VersionOperation(std::shared_ptr<NEBSourceControlRequest> request)
//             : NEBSourceControlTaskOperation(std::move(request)) { setArguments({"--version"}); }
//         std::string launchPath() override { return "/usr/bin/git"; }
//         void parseData() override { setResult({{…}}); }     // from data()
//     };
#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlInspection.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRecordParser.h"
#include "Platform/ChildProcess.h"
#include "Platform/Data.h"
#include "Platform/Export.h"

namespace neb {

/// Runs one child process and turns its output into a result or an error. Override launchPath() and
/// parseData().
class NEB_EXPORT NEBSourceControlTaskOperation : public NEBSourceControlOperation {
public:
    using NEBSourceControlOperation::NEBSourceControlOperation;

    [[nodiscard]] std::string className() const override { return "NEBSourceControlTaskOperation"; }

    /// The absolute path of the program.
    [[nodiscard]] virtual std::string launchPath() = 0;
    /// Without the name of the program.
    [[nodiscard]] const std::vector<std::string>& arguments() const { return _arguments; }
    void setArguments(std::vector<std::string> arguments) { _arguments = std::move(arguments); }
    /// The working directory of the child. A leading "~" is expanded at the launch. Absent: the
    /// working directory of the host.
    [[nodiscard]] const std::optional<std::string>& currentDirectoryPath() const {
        return _currentDirectoryPath;
    }
    void setCurrentDirectoryPath(std::optional<std::string> path) {
        _currentDirectoryPath = std::move(path);
    }

    /// Makes git write its output in full buffers, for long outputs. See
    /// NEBSourceControlChildTraits for the restrictions.
    void setWritesWholeBuffers(bool writesWholeBuffers) {
        _writesWholeBuffers = writesWholeBuffers;
    }

    /// Declares a list whose records may come slowly: with a record sink, the child does not write
    /// whole buffers but each record at once.
    void setFlushesForSink(bool flushesForSink) { _flushesForSink = flushesForSink; }
    /// Whether the child writes each record at once.
    [[nodiscard]] bool flushesForSink() const { return _flushesForSink && hasRecordSink(); }

    /// Declares that the child may run hooks of the repository, which must see the settings of the
    /// user; see NEBSourceControlChildTraits.
    void setMayRunHooks(bool mayRunHooks) { _mayRunHooks = mayRunHooks; }

    /// Makes the files of an archive readable by their owner only.
    void setArchivesForOwner(bool archivesForOwner) { _archivesForOwner = archivesForOwner; }

    /// Sets the bytes of the child's standard input. Absent: /dev/null.
    void setInput(std::optional<Data> input) { _input = std::move(input); }
    [[nodiscard]] const std::optional<Data>& input() const { return _input; }

    /// Whether git may fetch objects that a partial clone lacks; true by default. Otherwise it
    /// fails with an error of the class "objects-missing".
    void setMayFetchObjects(bool mayFetchObjects) { _mayFetchObjects = mayFetchObjects; }

    /// The standard output of the child; with a record sink, what was not parsed while it ran.
    /// Absent until it has ended.
    [[nodiscard]] const std::optional<Data>& data() const { return _data; }
    void setData(std::optional<Data> data) { _data = std::move(data); }
    /// The standard error of the child; of more than 1 MiB an excerpt. If parseData() clears it,
    /// its text does not become an error unless the child failed.
    [[nodiscard]] const std::optional<Data>& errorData() const { return _errorData; }
    void setErrorData(std::optional<Data> errorData) { _errorData = std::move(errorData); }

    /// Returns a new parser of the output of a list, so that it is parsed while the child runs, and
    /// delivered to a record sink. Null, as in the base implementation, when there is no list. The
    /// parser may refer to the operation, which must outlive it.
    [[nodiscard]] virtual std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() {
        return nullptr;
    }
    /// Turns data() into the result. Called when the child has ended. The base implementation makes
    /// the result from the records of the parser; without one, it does nothing.
    virtual void parseData();
    /// Whether the child wrote anything to standard output, even if it was parsed and forgotten.
    [[nodiscard]] bool hasOutput() const { return _hasRemovedOutput || (_data && !_data->empty()); }
    /// Returns the operation whose child reads the output of this one; null when none does.
    /// Called more than once; must return the same object each time.
    [[nodiscard]] virtual std::shared_ptr<NEBSourceControlTaskOperation> pipeToOperation() {
        return nullptr;
    }
    /// Turns the standard error of the child into an error; absent when the text is not one. The
    /// base implementation uses errorOfText(); main() adds the details.
    /// When the child exited with status 0, the text is a notice and not an error.
    [[nodiscard]] virtual std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message);

    /// Improves an unspecific error. Called when the child failed with an exit status and its
    /// output has no known class (`error` is of the class "unknown") or it printed nothing (`error`
    /// is absent). The base implementation returns `error`.
    [[nodiscard]] virtual std::optional<NEBSourceControlError> errorFromUnknownFailure(
        std::optional<NEBSourceControlError> error) {
        return error;
    }

    /// Before the first child for a request whose source tree has the trust
    /// NEBSourceControlTrust::inspect, lists the settings of the repository, and switches off what
    /// they name; see NEBSourceControlInspection.h.
    ///
    /// Runs launchPath() with arguments() in currentDirectoryPath(), collects data() and
    /// errorData(), calls parseData(), and passes the remaining error text to
    /// errorFromErrorMessage(). A git that fails because of a lock file of another process, before
    /// it has changed anything, is started again until limits().lockWait is over. Then:
    /// - A child that failed (exit status other than 0) and wrote anything always yields an error:
    /// if
    ///   none was set yet, it is made from the whole standard error, or from standard output if
    ///   only that has the reason. A child that failed and printed nothing yields no error, unless
    ///   errorFromUnknownFailure() returns one.
    /// - A child that could not be started, or that a signal ended, yields an error that says so.
    /// - A cancelled operation finishes with NEBSourceControlCancelledError().
    /// With a pipeToOperation(), both children run at once. The result or error that parseData() of
    /// the second one sets becomes that of this operation; only if it sets neither, the error texts
    /// are used, first those of this operation.
    void main() override;
    /// Ends the child and the processes that it started. Thread-safe.
    void cancel() override;

    [[nodiscard]] std::optional<NEBSourceControlCommand> command() override;
    /// How the child ended. Absent until then.
    [[nodiscard]] const std::optional<TerminationStatus>& terminationStatus() const {
        return _terminationStatus;
    }

protected:
    /// Whether the child is git, or runs git. Then it gets the environment that git requires, and
    /// its output is searched for hints, messages of the server, files and locks. True in the base
    /// implementation; other programs derive from NEBSourceControlProgramOperation.
    [[nodiscard]] virtual bool runsGit() const { return true; }
    /// Environment variables that the program requires, each "NAME=value". None in the base
    /// implementation.
    [[nodiscard]] virtual std::vector<std::string> ownVariables() const { return {}; }
    /// Returns the error for an output of the child, of the class "unknown" if the text is not
    /// known. The base implementation uses NEBSourceControlErrorWithoutDetails().
    [[nodiscard]] virtual NEBSourceControlError errorOfText(const std::string& text) const;

private:
    /// The output of a child, whatever parseData() does to data() and errorData().
    struct ChildText {
        std::string errorText;
        std::string outputText;  // empty unless the child failed
        bool isPresent;          // whether the child wrote anything
    };

    [[nodiscard]] ChildLaunch makeLaunch();
    [[nodiscard]] std::vector<std::string> makeEnvironment() const;
    /// Keeps the programs of the repository from running in the children. Returns false with an
    /// error if that is not possible.
    [[nodiscard]] bool switchOffPrograms(const std::vector<NEBSourceControlTaskOperation*>& stages);
    /// Lists the settings of the repository. Returns false with an error if git fails.
    [[nodiscard]] bool inspectSettings(const NEBSourceControlInspectedCommand& command);
    /// Runs the children, writes them to the command log, and passes on their output.
    [[nodiscard]] std::vector<ChildOutcome> runLaunches(
        const std::vector<ChildLaunch>& launches,
        const std::function<std::size_t(const ArrivedOutput&)>& outputGrew);
    /// Runs the children; see NEBSourceControlLockWait.h for locks of other processes.
    [[nodiscard]] std::vector<ChildOutcome> run(
        const std::vector<NEBSourceControlTaskOperation*>& stages);
    [[nodiscard]] std::vector<ChildOutcome> runOnce(
        const std::vector<NEBSourceControlTaskOperation*>& stages,
        const std::vector<ChildLaunch>& launches);
    /// Sets the error of the first stage that exceeded a limit or else was not started. Returns
    /// whether there is one.
    [[nodiscard]] bool setErrorOfUnfinished(
        const std::vector<NEBSourceControlTaskOperation*>& stages,
        const std::vector<ChildOutcome>& outcomes);
    /// Parses output while the child runs. Returns how much of it is no longer needed.
    [[nodiscard]] std::size_t parseArrivedOutput(const ArrivedOutput& output);
    [[nodiscard]] std::size_t deliverArrivedRecords(const ArrivedOutput& output);
    ChildText takeOutput(ChildOutcome& outcome);
    void finish(const ChildText& childText);
    void finishPipeline(const ChildText& childText, NEBSourceControlTaskOperation& second,
                        const ChildText& secondText);
    [[nodiscard]] std::optional<NEBSourceControlError> translatedErrorData();
    [[nodiscard]] std::optional<NEBSourceControlError> errorOfFailure(
        const ChildText& childText, std::optional<NEBSourceControlError> found);
    [[nodiscard]] NEBSourceControlError errorOfAbnormalEnd();
    /// Returns the class of errorOfText().
    [[nodiscard]] std::string classOfText(const std::string& text) const;
    void completeError(NEBSourceControlError& error, const ChildText& childText,
                       const std::optional<TerminationStatus>& status) const;

    std::vector<std::string> _arguments;
    std::optional<std::string> _currentDirectoryPath;
    bool _writesWholeBuffers = false;
    bool _flushesForSink = false;
    bool _mayRunHooks = false;
    bool _archivesForOwner = false;
    bool _mayFetchObjects = true;
    std::vector<NEBSourceControlSetting> _settings;  // of a repository that is inspected
    std::optional<Data> _input;
    std::optional<Data> _data;
    std::optional<Data> _errorData;
    std::optional<TerminationStatus> _terminationStatus;
    ChildProcess _process;

    std::unique_ptr<NEBSourceControlRecordParser> _parser;  // during the run
    std::size_t _parsedSize = 0;
    NEBSourceControlResult _parsedRecords;
    bool _hasRemovedOutput = false;
    std::exception_ptr _sinkFailure;
};

}  // namespace neb

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

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlOperation.h"
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

    /// Declares that the child may run hooks of the repository, which must see the settings of the
    /// user; see NEBSourceControlChildTraits.
    void setMayRunHooks(bool mayRunHooks) { _mayRunHooks = mayRunHooks; }

    /// Makes the files of an archive readable by their owner only.
    void setArchivesForOwner(bool archivesForOwner) { _archivesForOwner = archivesForOwner; }

    /// The standard output of the child. Absent until it has ended.
    [[nodiscard]] const std::optional<Data>& data() const { return _data; }
    void setData(std::optional<Data> data) { _data = std::move(data); }
    /// The standard error of the child. If parseData() clears it, its text does not become an error
    /// unless the child failed.
    [[nodiscard]] const std::optional<Data>& errorData() const { return _errorData; }
    void setErrorData(std::optional<Data> errorData) { _errorData = std::move(errorData); }

    /// Parses output while the child runs. Called on the thread of main() each time output has
    /// arrived, with all standard output so far, the Data that data() will return. Its bytes are
    /// valid during the call only, as they move when it grows; values made from parts of it stay
    /// valid. The child may still fail, so do not publish results before parseData(). The base
    /// implementation does nothing.
    virtual void parseArrivedData(const Data& arrived) { static_cast<void>(arrived); }
    /// Turns data() into the result. Called when the child has ended. The base implementation does
    /// nothing.
    virtual void parseData() {}
    /// Returns the operation whose child reads the output of this one; null when none does.
    /// Called more than once; must return the same object each time.
    [[nodiscard]] virtual std::shared_ptr<NEBSourceControlTaskOperation> pipeToOperation() {
        return nullptr;
    }
    /// Turns the standard error of the child into an error; absent when the text is not one. The
    /// base implementation uses NEBSourceControlErrorWithoutDetails(); main() adds the details.
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

    /// Runs launchPath() with arguments() in currentDirectoryPath(), collects data() and
    /// errorData(), calls parseData(), and passes the remaining error text to
    /// errorFromErrorMessage(). Then:
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

private:
    /// The output of a child, whatever parseData() does to data() and errorData().
    struct ChildText {
        std::string errorText;
        std::string outputText;  // empty unless the child failed
        bool isPresent;          // whether the child wrote anything
    };

    [[nodiscard]] ChildLaunch makeLaunch();
    [[nodiscard]] std::vector<ChildOutcome> run(
        const std::vector<NEBSourceControlTaskOperation*>& stages);
    ChildText takeOutput(ChildOutcome& outcome);
    void finish(const ChildText& childText);
    void finishPipeline(const ChildText& childText, NEBSourceControlTaskOperation& second,
                        const ChildText& secondText);
    [[nodiscard]] std::optional<NEBSourceControlError> translatedErrorData();
    [[nodiscard]] std::optional<NEBSourceControlError> errorOfFailure(
        const ChildText& childText, std::optional<NEBSourceControlError> found);
    [[nodiscard]] NEBSourceControlError errorOfAbnormalEnd();
    static void completeError(NEBSourceControlError& error, const ChildText& childText,
                              const std::optional<TerminationStatus>& status);

    std::vector<std::string> _arguments;
    std::optional<std::string> _currentDirectoryPath;
    bool _writesWholeBuffers = false;
    bool _mayRunHooks = false;
    bool _archivesForOwner = false;
    std::optional<Data> _data;
    std::optional<Data> _errorData;
    std::optional<TerminationStatus> _terminationStatus;
    ChildProcess _process;
};

}  // namespace neb

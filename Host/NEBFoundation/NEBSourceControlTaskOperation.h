// NEBSourceControlTaskOperation.h - the base of every operation that runs one child process.
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

class NEB_EXPORT NEBSourceControlTaskOperation : public NEBSourceControlOperation {
public:
    using NEBSourceControlOperation::NEBSourceControlOperation;

    [[nodiscard]] std::string className() const override { return "NEBSourceControlTaskOperation"; }

    /// The executable's absolute path.
    [[nodiscard]] virtual std::string launchPath() = 0;
    /// Without the executable itself.
    [[nodiscard]] const std::vector<std::string>& arguments() const { return _arguments; }
    void setArguments(std::vector<std::string> arguments) { _arguments = std::move(arguments); }
    /// The child's working directory, a leading "~" being expanded at the launch; absent means the
    /// host's own.
    [[nodiscard]] const std::optional<std::string>& currentDirectoryPath() const {
        return _currentDirectoryPath;
    }
    void setCurrentDirectoryPath(std::optional<std::string> path) {
        _currentDirectoryPath = std::move(path);
    }

    /// Lets git write whole buffers instead of record by record, for a long output; see
    /// NEBSourceControlChildTraits for where that must not be.
    void setWritesWholeBuffers(bool writesWholeBuffers) {
        _writesWholeBuffers = writesWholeBuffers;
    }

    /// For a git that changes something, and may run hooks of the repository, which are to see the
    /// user's settings; see NEBSourceControlChildTraits.
    void setMayRunHooks(bool mayRunHooks) { _mayRunHooks = mayRunHooks; }

    /// Lets a git that makes an archive let nobody but the owner read what comes out of it.
    void setArchivesForOwner(bool archivesForOwner) { _archivesForOwner = archivesForOwner; }

    /// All that the child wrote to standard output; absent until a child has run.
    [[nodiscard]] const std::optional<Data>& data() const { return _data; }
    void setData(std::optional<Data> data) { _data = std::move(data); }
    /// All that it wrote to standard error. A parseData() that clears it keeps its text from
    /// becoming an error, unless the child failed.
    [[nodiscard]] const std::optional<Data>& errorData() const { return _errorData; }
    void setErrorData(std::optional<Data> errorData) { _errorData = std::move(errorData); }

    /// Called on the thread of main() while the child runs, each time when more has come, with all
    /// that it has written to standard output so far: the Data that data() will be. Its bytes are
    /// good for the call only, as they move when it grows; a value that is a piece of it stays
    /// good. A long output can be read ahead here, where that costs no time. Whether the child will
    /// fail nobody knows yet, so nothing of it may show before parseData(). The base does nothing.
    virtual void parseArrivedData(const Data& arrived) { static_cast<void>(arrived); }
    /// Turns data() into the result. Called once the child has ended; the base does nothing.
    virtual void parseData() {}
    /// A second operation whose child reads what this one's writes; nothing as a rule. Asked more
    /// than once: it must answer the same object.
    [[nodiscard]] virtual std::shared_ptr<NEBSourceControlTaskOperation> pipeToOperation() {
        return nullptr;
    }
    /// Turns the child's standard-error text into an error, or into nothing where it tells of none.
    /// The base's version is the host's own translation: see NEBSourceControlErrorWithoutDetails().
    /// main() fills in the details. The text of a child that ended with status 0 is a notice, no
    /// error.
    [[nodiscard]] virtual std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message);

    /// Asked when the child has failed with an exit status, and what it said shows no class of
    /// failure (`error` is of the class "unknown") or it said nothing at all (`error` is absent).
    /// An operation that knows what such an end means answers a better error; the base's version
    /// answers the one that it is given.
    [[nodiscard]] virtual std::optional<NEBSourceControlError> errorFromUnknownFailure(
        std::optional<NEBSourceControlError> error) {
        return error;
    }

    /// In this order: launches launchPath() with arguments() in currentDirectoryPath(); collects
    /// data() and errorData(); calls parseData(); hands an error text that is left to
    /// errorFromErrorMessage() and keeps the error that comes back. Then:
    /// - A child that failed (exit status other than 0) and wrote anything does not end without an
    ///   error: if there is none yet, one is made from all that it wrote to standard error, or
    ///   from standard output where only that tells what happened. One that failed without a word
    ///   leaves no error, unless errorFromUnknownFailure() makes one.
    /// - A child that could not be started, or that a signal ended, is an error that says so.
    /// - A cancelled operation ends with NEBSourceControlCancelledError().
    /// With a pipeToOperation() both children run at once; the result or the error that the second
    /// one's parseData() leaves is this operation's, and only where it leaves neither are the texts
    /// looked at, this operation's own first.
    void main() override;
    void cancel() override;

    [[nodiscard]] std::optional<NEBSourceControlCommand> command() override;
    /// How the child ended; absent until it has.
    [[nodiscard]] const std::optional<TerminationStatus>& terminationStatus() const {
        return _terminationStatus;
    }

private:
    /// What one child wrote, as it was, whatever parseData() does to data() and errorData().
    struct Words {
        std::string errorText;
        std::string outputText;  // of a child that failed; else empty
        bool areAny;             // whether it wrote a single byte
    };

    [[nodiscard]] ChildLaunch makeLaunch();
    [[nodiscard]] std::vector<ChildOutcome> run(
        const std::vector<NEBSourceControlTaskOperation*>& stages);
    Words take(ChildOutcome& outcome);
    void concludeTexts(const Words& words);
    void concludePipeline(const Words& words, NEBSourceControlTaskOperation& second,
                          const Words& secondWords);
    [[nodiscard]] std::optional<NEBSourceControlError> translationOfErrorData();
    [[nodiscard]] std::optional<NEBSourceControlError> errorOfFailure(
        const Words& words, std::optional<NEBSourceControlError> told);
    [[nodiscard]] NEBSourceControlError errorOfAbnormalEnd();
    static void completeError(NEBSourceControlError& error, const Words& words,
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

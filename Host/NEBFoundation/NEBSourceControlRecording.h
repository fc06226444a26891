// NEBSourceControlRecording.h - records the child processes of an operation and what it asks about
// files, and replays them without processes and files.
//
//     std::vector<NEBSourceControlRecordedRun> runs;
//     std::vector<NEBSourceControlRecordedAnswer> answers;
//     const auto recorder = std::make_shared<NEBSourceControlRecorder>(
//         [&](NEBSourceControlRecordedRun run) { runs.push_back(std::move(run)); },
//         [&](NEBSourceControlRecordedAnswer answer) { answers.push_back(std::move(answer)); });
//     {
//         const Interceptor::Scope scope(recorder);
//         controller->operationForRequest(request)->start();
//     }
//     const auto player = std::make_shared<NEBSourceControlPlayer>(runs, answers);
//     const Interceptor::Scope scope(player);
//     controller->operationForRequest(request)->start();   // starts no git
//     player->differences();                               // what a recording does not have
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/ChildLimits.h"
#include "Platform/Data.h"
#include "Platform/Export.h"
#include "Platform/Interceptor.h"
#include "Platform/Mutex.h"
#include "Platform/TerminationStatus.h"

namespace neb {

/// A child process that ran. A value; the bytes are shared with the operation.
struct NEBSourceControlRecordedChild {
    /// The path of the program, "/usr/bin/git".
    std::string launchPath;
    /// The arguments, without the name of the program. They may contain passwords of URLs.
    std::vector<std::string> arguments;
    /// The folder in which the program ran. Absent: the working directory of the host.
    std::optional<std::string> currentDirectoryPath;
    /// The variables that differ from those of the host, each "NAME=value". They may contain
    /// secrets.
    std::vector<std::string> setVariables;
    /// The names of the variables of the host that the child did not get.
    std::vector<std::string> removedVariables;
    /// The bytes of standard input. Absent: /dev/null.
    std::optional<Data> input;
    /// The bytes of standard output, of the last child of a pipeline only.
    Data output;
    /// The bytes of standard error.
    Data errorOutput;
    /// How the child ended.
    TerminationStatus status;
    /// The time from the launch of the child to its end.
    std::chrono::nanoseconds duration{0};
    /// Whether another process still had a stream of the child open shortly after its end.
    bool outputWasHeldOpen = false;
    /// The limit because of which the child was ended. Absent: it was not.
    std::optional<ChildLimit> exceededLimit;
};

/// A run of one child, or of a pipeline. A value.
struct NEBSourceControlRecordedRun {
    /// At least one. The output of each is the input of the next.
    std::vector<NEBSourceControlRecordedChild> children;
    /// When the run began, from the creation of the recorder on.
    std::chrono::nanoseconds start{0};
    /// Whether the operation was cancelled before the children had ended.
    bool wasCancelled = false;
};

/// An answer about files; see Interceptor::answer(). A value.
struct NEBSourceControlRecordedAnswer {
    /// All three are texts or, for paths, bytes. An empty answer is one, too.
    std::string question, subject, answer;
};

/// Passes on what happened, as soon as it is complete. Starts processes and asks as if it were not
/// there. Thread-safe.
class NEB_EXPORT NEBSourceControlRecorder : public Interceptor {
public:
    /// Takes a run when its children have ended.
    using RunObserver = std::function<void(NEBSourceControlRecordedRun)>;
    /// Takes an answer.
    using AnswerObserver = std::function<void(NEBSourceControlRecordedAnswer)>;

    /// Both functions are called by one thread at a time, on the thread of the operation. They must
    /// not throw.
    NEBSourceControlRecorder(RunObserver ran, AnswerObserver answered)
        : _ran(std::move(ran)), _answered(std::move(answered)) {}

    /// Runs the children, and records them. Keeps the output that the operation removes while they
    /// run.
    [[nodiscard]] std::vector<ChildOutcome> runChildren(const ChildProcess& process,
                                                        const std::vector<ChildLaunch>& launches,
                                                        const ChildObservers& observers,
                                                        const Run& run) override;
    /// Asks, and records the answer.
    [[nodiscard]] std::string answer(std::string_view question, std::string_view subject,
                                     const std::function<std::string()>& ask) override;
    /// False.
    [[nodiscard]] bool replacesProcesses() const override { return false; }

private:
    // The observers and the beginning of the recording.
    const RunObserver _ran;
    const AnswerObserver _answered;
    const std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
    /// Held while an observer is called.
    Mutex _mutex;
};

/// A difference between a recording and the operation that replays it. A value.
struct NEBSourceControlReplayDifference {
    /// What differs.
    enum class Kind {
        /// The operation started a child that the recording does not have.
        missingRun,
        /// The recording has a child that the operation did not start.
        unusedRun,
        /// The operation wrote something else to the standard input of a child.
        otherInput,
        /// The operation asked something about files that the recording does not have.
        missingAnswer
    };
    Kind kind;
    /// The command line, or the question and its subject, on one line, without passwords of URLs.
    std::string subject{};
    /// The recorded and the new input of `otherInput`; empty otherwise.
    Data recorded{}, replayed{};
};

/// Answers from a recording. Never starts a process, and never reads or changes a file. A run is
/// found by its programs (without their folders), arguments and working directories; of several
/// equal ones the first that was not used. Thread-safe.
class NEB_EXPORT NEBSourceControlPlayer : public Interceptor {
public:
    /// Returns the form of a text in which runs and answers are compared.
    using Normalizer = std::function<std::string(std::string_view)>;

    /// Takes what a recorder has passed on. `normalized` may be empty: texts are compared without
    /// the passwords of URLs. Otherwise it must be thread-safe.
    NEBSourceControlPlayer(std::vector<NEBSourceControlRecordedRun> runs,
                           std::vector<NEBSourceControlRecordedAnswer> answers,
                           Normalizer normalized = {});

    /// Sets a function that is called when an operation starts again what was cancelled in the
    /// recording. It may cancel the operation. Empty: none.
    void setCancelled(std::function<void()> cancelled) { _cancelled = std::move(cancelled); }

    /// Returns the recorded outcomes, and passes the output on in parts, as a process does. A run
    /// that the recording lacks was not started.
    [[nodiscard]] std::vector<ChildOutcome> runChildren(const ChildProcess& process,
                                                        const std::vector<ChildLaunch>& launches,
                                                        const ChildObservers& observers,
                                                        const Run& run) override;
    /// Returns the recorded answer; an empty one if the recording lacks it.
    [[nodiscard]] std::string answer(std::string_view question, std::string_view subject,
                                     const std::function<std::string()>& ask) override;
    /// True.
    [[nodiscard]] bool replacesProcesses() const override { return true; }

    /// Returns what differed so far, and the runs that were not used, in this order.
    [[nodiscard]] std::vector<NEBSourceControlReplayDifference> differences() const;
    /// Returns the runs that were used, in order, as the operation asked for them: with its
    /// arguments, folders, variables and input, and the recorded outcomes.
    [[nodiscard]] std::vector<NEBSourceControlRecordedRun> usedRuns() const;
    /// Returns the answers that were used, in order, with the subjects of the operation.
    [[nodiscard]] std::vector<NEBSourceControlRecordedAnswer> usedAnswers() const;

private:
    /// A list of equal runs or answers, by index, of which the first ones were used.
    struct Entries {
        /// Ascending.
        std::vector<std::size_t> indices;
        std::size_t usedCount = 0;
    };
    using Index = std::map<std::string, Entries, std::less<>>;

    /// Returns the text by which a child or a run is found.
    [[nodiscard]] std::string keyOf(const std::string& program,
                                    const std::vector<std::string>& arguments,
                                    const std::optional<std::string>& folder) const;
    [[nodiscard]] std::string keyOf(const NEBSourceControlRecordedRun& run) const;
    /// Returns the index of the first entry that was not used, and marks it as used.
    [[nodiscard]] static std::optional<std::size_t> next(Index& index, std::string_view key);
    /// Returns the index of the recorded run; absent, with a difference, if the recording lacks it.
    [[nodiscard]] std::optional<std::size_t> use(NEBSourceControlRecordedRun asked);

    const std::vector<NEBSourceControlRecordedRun> _runs;
    const std::vector<NEBSourceControlRecordedAnswer> _answers;
    const Normalizer _normalized;
    std::function<void()> _cancelled;
    mutable Mutex _mutex;
    Index _runIndex NEB_GUARDED_BY(_mutex);
    Index _answerIndex NEB_GUARDED_BY(_mutex);
    std::vector<NEBSourceControlRecordedRun> _usedRuns NEB_GUARDED_BY(_mutex);
    std::vector<NEBSourceControlRecordedAnswer> _usedAnswers NEB_GUARDED_BY(_mutex);
    std::vector<NEBSourceControlReplayDifference> _differences NEB_GUARDED_BY(_mutex);
};

}  // namespace neb

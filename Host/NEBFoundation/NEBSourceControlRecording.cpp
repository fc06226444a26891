#include "NEBFoundation/NEBSourceControlRecording.h"

#include <algorithm>
#include <utility>

#include "LOMFoundation/LOMPasswordRedaction.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// Adds a part to a key, so that different parts never make equal keys.
void addPart(std::string& key, const std::string& part) {
    key.append(std::to_string(part.size())).append(1, ':').append(part);
}

std::string keyOfAnswer(std::string_view question, const std::string& subject) {
    std::string key(question);
    addPart(key, subject);
    return key;
}

/// The size of the parts in which output is passed on; that of a pipe.
constexpr std::size_t partSize = 1U << 16U;

std::string nameOf(std::string_view variable) {
    return std::string(variable.substr(0, variable.find('=')));
}

/// Sets the variables that differ from those of the host.
void describeEnvironment(const ChildLaunch& launch, NEBSourceControlRecordedChild& child) {
    const std::vector<std::string> inherited = NEBSourceControlInheritedEnvironment();
    for (const std::string& variable : launch.environment) {
        if (std::ranges::find(inherited, variable) == inherited.end()) {
            child.setVariables.push_back(variable);
        }
    }
    for (const std::string& variable : inherited) {
        const std::string start = nameOf(variable) + "=";
        if (std::ranges::none_of(launch.environment, [&start](const std::string& other) {
                return other.starts_with(start);
            })) {
            child.removedVariables.push_back(nameOf(variable));
        }
    }
}

/// Returns a run with what is known before it.
NEBSourceControlRecordedRun runOf(const std::vector<ChildLaunch>& launches) {
    NEBSourceControlRecordedRun run;
    for (const ChildLaunch& launch : launches) {
        NEBSourceControlRecordedChild child{.launchPath = launch.launchPath,
                                            .arguments = launch.arguments,
                                            .currentDirectoryPath = launch.currentDirectoryPath,
                                            .setVariables = {},
                                            .removedVariables = {},
                                            .input = launch.input,
                                            .output = {},
                                            .errorOutput = {},
                                            .status = TerminationStatus::notStarted(""),
                                            .exceededLimit = std::nullopt};
        describeEnvironment(launch, child);
        run.children.push_back(std::move(child));
    }
    return run;
}

/// Sets what is known after the run. The last child has written `removed` before its output.
void setOutcomes(NEBSourceControlRecordedRun& run, const std::vector<ChildOutcome>& outcomes,
                 const std::string& removed) {
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        NEBSourceControlRecordedChild& child = run.children[i];
        child.output = outcomes[i].output;
        child.errorOutput = outcomes[i].errorOutput;
        child.status = outcomes[i].status;
        child.duration = outcomes[i].duration;
        child.outputWasHeldOpen = outcomes[i].outputWasHeldOpen;
        child.exceededLimit = outcomes[i].exceededLimit;
    }
    if (!removed.empty()) {
        Data& output = run.children.back().output;
        output = Data(removed + std::string(output.bytes()));
    }
}

/// Returns the command lines on one line, for a message.
std::string textOf(const NEBSourceControlRecordedRun& run) {
    std::string text;
    for (const NEBSourceControlRecordedChild& child : run.children) {
        text += (text.empty() ? "" : " | ") + lastPathComponent(child.launchPath);
        for (const std::string& argument : child.arguments) {
            text += " " + textWithoutPasswords(argument);
        }
    }
    return text;
}

/// Passes the output on in parts, as a process does. Returns what is left of it.
Data passOn(const Data& output, const ChildProcess& process, const ChildObservers& observers) {
    if (!observers.outputGrew || output.empty()) {
        return output;
    }
    GrowingData buffer;
    std::string_view rest = output.bytes();
    while (!rest.empty() && !process.isCancelled()) {
        const std::string_view part = rest.substr(0, partSize);
        std::ranges::copy(part, buffer.roomFor(part.size()));
        buffer.add(part.size());
        rest.remove_prefix(part.size());
        buffer.removeFirst(
            observers.outputGrew({.data = buffer.data(), .isDrained = rest.empty()}));
    }
    return buffer.take();
}

std::vector<ChildOutcome> notStarted(const NEBSourceControlRecordedRun& run) {
    std::vector<ChildOutcome> outcomes;
    for (const NEBSourceControlRecordedChild& child : run.children) {
        outcomes.push_back({.status = TerminationStatus::notStarted(
                                "the program \"" + child.launchPath +
                                "\" was not started, because the recording does not have this run"),
                            .output = {},
                            .errorOutput = {}});
    }
    return outcomes;
}

}  // namespace

// ---- recording --------------------------------------------------------------------------------

std::vector<ChildOutcome> NEBSourceControlRecorder::runChildren(
    const ChildProcess& process, const std::vector<ChildLaunch>& launches,
    const ChildObservers& observers, const Run& run) {
    NEBSourceControlRecordedRun record = runOf(launches);
    record.start = std::chrono::steady_clock::now() - _start;
    std::string removed;
    ChildObservers observing = observers;
    if (observers.outputGrew) {
        observing.outputGrew = [&](const ArrivedOutput& output) {
            const std::size_t unneeded = observers.outputGrew(output);
            removed += output.data.bytes().substr(0, unneeded);
            return unneeded;
        };
    }
    std::vector<ChildOutcome> outcomes = run(observing);
    setOutcomes(record, outcomes, removed);
    record.wasCancelled = process.isCancelled();
    const MutexLock lock(_mutex);
    _ran(std::move(record));
    return outcomes;
}

std::string NEBSourceControlRecorder::answer(std::string_view question, std::string_view subject,
                                             const std::function<std::string()>& ask) {
    std::string answer = [&ask] {
        const Scope scope(nullptr);  // a replay does not ask what this asks
        return ask();
    }();
    const MutexLock lock(_mutex);
    _answered(
        {.question = std::string(question), .subject = std::string(subject), .answer = answer});
    return answer;
}

// ---- replay -----------------------------------------------------------------------------------

NEBSourceControlPlayer::NEBSourceControlPlayer(std::vector<NEBSourceControlRecordedRun> runs,
                                               std::vector<NEBSourceControlRecordedAnswer> answers,
                                               Normalizer normalized)
    : _runs(std::move(runs)),
      _answers(std::move(answers)),
      _normalized(normalized ? std::move(normalized) : Normalizer(textWithoutPasswords)) {
    const MutexLock lock(_mutex);
    for (std::size_t i = 0; i < _runs.size(); ++i) {
        _runIndex[keyOf(_runs[i])].indices.push_back(i);
    }
    for (std::size_t i = 0; i < _answers.size(); ++i) {
        _answerIndex[keyOfAnswer(_answers[i].question, _normalized(_answers[i].subject))]
            .indices.push_back(i);
    }
}

std::string NEBSourceControlPlayer::keyOf(const std::string& program,
                                          const std::vector<std::string>& arguments,
                                          const std::optional<std::string>& folder) const {
    std::string key;
    addPart(key, lastPathComponent(program));
    addPart(key, _normalized(folder.value_or("")));
    for (const std::string& argument : arguments) {
        addPart(key, _normalized(argument));
    }
    return key;
}

std::string NEBSourceControlPlayer::keyOf(const NEBSourceControlRecordedRun& run) const {
    std::string key;
    for (const NEBSourceControlRecordedChild& child : run.children) {
        addPart(key, keyOf(child.launchPath, child.arguments, child.currentDirectoryPath));
    }
    return key;
}

std::optional<std::size_t> NEBSourceControlPlayer::next(Index& index, std::string_view key) {
    const auto entry = index.find(key);
    if (entry == index.end() || entry->second.usedCount == entry->second.indices.size()) {
        return std::nullopt;
    }
    return entry->second.indices[entry->second.usedCount++];
}

std::optional<std::size_t> NEBSourceControlPlayer::use(NEBSourceControlRecordedRun asked) {
    using Kind = NEBSourceControlReplayDifference::Kind;
    const std::string key = keyOf(asked);
    const MutexLock lock(_mutex);
    const auto found = next(_runIndex, key);
    if (!found) {
        _differences.push_back({.kind = Kind::missingRun, .subject = textOf(asked)});
        return std::nullopt;
    }
    const NEBSourceControlRecordedRun& recorded = _runs[*found];
    const Data before = recorded.children.front().input.value_or(Data());
    const Data now = asked.children.front().input.value_or(Data());
    if (_normalized(before.bytes()) != _normalized(now.bytes())) {
        _differences.push_back({.kind = Kind::otherInput,
                                .subject = textOf(asked),
                                .recorded = before,
                                .replayed = now});
    }
    for (std::size_t i = 0; i < asked.children.size(); ++i) {
        NEBSourceControlRecordedChild& child = asked.children[i];
        const NEBSourceControlRecordedChild& source = recorded.children[i];
        child.launchPath = source.launchPath;
        child.setVariables = source.setVariables;
        child.removedVariables = source.removedVariables;
        child.output = source.output;
        child.errorOutput = source.errorOutput;
        child.status = source.status;
        child.duration = source.duration;
        child.outputWasHeldOpen = source.outputWasHeldOpen;
        child.exceededLimit = source.exceededLimit;
    }
    asked.start = recorded.start;
    asked.wasCancelled = recorded.wasCancelled;
    _usedRuns.push_back(std::move(asked));
    return found;
}

std::vector<ChildOutcome> NEBSourceControlPlayer::runChildren(
    const ChildProcess& process, const std::vector<ChildLaunch>& launches,
    const ChildObservers& observers, const Run& /*run*/) {
    const NEBSourceControlRecordedRun asked = runOf(launches);
    const auto found = use(asked);
    if (!found) {
        return notStarted(asked);
    }
    const NEBSourceControlRecordedRun& recorded = _runs[*found];
    std::vector<ChildOutcome> outcomes;
    for (std::size_t i = 0; i < recorded.children.size(); ++i) {
        const NEBSourceControlRecordedChild& child = recorded.children[i];
        if (child.status.started() && observers.started) {
            observers.started(i);
        }
        outcomes.push_back({.status = child.status,
                            .output = child.output,
                            .errorOutput = child.errorOutput,
                            .outputWasHeldOpen = child.outputWasHeldOpen,
                            .exceededLimit = child.exceededLimit,
                            .duration = child.duration});
    }
    outcomes.back().output = passOn(outcomes.back().output, process, observers);
    if (recorded.wasCancelled && _cancelled) {
        _cancelled();
    }
    return outcomes;
}

std::string NEBSourceControlPlayer::answer(std::string_view question, std::string_view subject,
                                           const std::function<std::string()>& /*ask*/) {
    const std::string key = keyOfAnswer(question, _normalized(subject));
    const MutexLock lock(_mutex);
    const auto found = next(_answerIndex, key);
    if (!found) {
        _differences.push_back({.kind = NEBSourceControlReplayDifference::Kind::missingAnswer,
                                .subject = std::string(question) + " " + std::string(subject)});
        return {};
    }
    _usedAnswers.push_back({.question = std::string(question),
                            .subject = std::string(subject),
                            .answer = _answers[*found].answer});
    return _answers[*found].answer;
}

std::vector<NEBSourceControlReplayDifference> NEBSourceControlPlayer::differences() const {
    const MutexLock lock(_mutex);
    std::vector<NEBSourceControlReplayDifference> differences = _differences;
    std::vector<bool> isUsed(_runs.size(), false);
    for (const auto& [key, entries] : _runIndex) {
        for (std::size_t i = 0; i < entries.usedCount; ++i) {
            isUsed[entries.indices[i]] = true;
        }
    }
    for (std::size_t i = 0; i < _runs.size(); ++i) {
        if (!isUsed[i]) {
            differences.push_back({.kind = NEBSourceControlReplayDifference::Kind::unusedRun,
                                   .subject = textOf(_runs[i])});
        }
    }
    return differences;
}

std::vector<NEBSourceControlRecordedRun> NEBSourceControlPlayer::usedRuns() const {
    const MutexLock lock(_mutex);
    return _usedRuns;
}

std::vector<NEBSourceControlRecordedAnswer> NEBSourceControlPlayer::usedAnswers() const {
    const MutexLock lock(_mutex);
    return _usedAnswers;
}

}  // namespace neb

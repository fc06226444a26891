#include "NEBFoundation/NEBSourceControlTaskOperation.h"

#include <signal.h>

#include <algorithm>
#include <utility>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlLockWait.h"
#include "NEBFoundation/NEBSourceControlOrphanedLockFiles.h"
#include "NEBFoundation/NEBSourceControlOutputExcerpt.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// An output of at least this size is parsed while the child runs, even without a record sink.
constexpr std::size_t incrementalSize = 1U << 18;
constexpr std::size_t unlimited = std::string_view::npos;

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::string textOf(const Data& data) {
    return *_nebsc_stringFromData(data);
}

}  // namespace

// ---- the launch -------------------------------------------------------------------------------

std::optional<NEBSourceControlCommand> NEBSourceControlTaskOperation::command() {
    NEBSourceControlCommand command{.launchPath = launchPath(),
                                    .arguments = _arguments,
                                    .currentDirectoryPath = _currentDirectoryPath,
                                    .pipeTo = nullptr};
    if (const auto second = pipeToOperation()) {
        if (auto secondCommand = second->command()) {
            command.pipeTo = std::make_shared<const NEBSourceControlCommand>(*secondCommand);
        }
    }
    return command;
}

std::vector<std::string> NEBSourceControlTaskOperation::makeEnvironment() const {
    std::vector<std::string> environment = NEBSourceControlInheritedEnvironment();
    if (runsGit()) {
        environment = NEBSourceControlChildEnvironment(
            environment, {.hasPatternCharacters = request()->hasPatternCharacters(),
                          .isBackgroundWork = isBackgroundWork(),
                          .writesWholeBuffers = _writesWholeBuffers && !flushesForSink(),
                          .mayRunHooks = _mayRunHooks,
                          .archivesForOwner = _archivesForOwner,
                          .mayFetchObjects = _mayFetchObjects,
                          .lockWait = limits().lockWait,
                          .settings = _settings});
    } else {
        // The same language for every program, so that its messages are recognised.
        NEBSourceControlSetVariables(environment, {"LC_ALL=C.UTF-8", "LANGUAGE="});
    }
    NEBSourceControlSetVariables(environment, ownVariables());
    NEBSourceControlSetVariables(environment, childVariables());
    return environment;
}

ChildLaunch NEBSourceControlTaskOperation::makeLaunch() {
    ChildLaunch launch{
        .launchPath = launchPath(),
        .arguments = _arguments,
        .currentDirectoryPath = std::nullopt,
        .environment = makeEnvironment(),
        .input = _input,
    };
    if (_currentDirectoryPath) {
        launch.currentDirectoryPath = pathByExpandingTilde(*_currentDirectoryPath);
    }
    return launch;
}

void NEBSourceControlTaskOperation::cancel() {
    NEBSourceControlOperation::cancel();
    _process.cancel();
}

// ---- the run ----------------------------------------------------------------------------------

void NEBSourceControlTaskOperation::main() {
    if (remainingLimits().total == std::chrono::milliseconds(0)) {
        setError(NEBSourceControlTimedOutError(*limits().total));
        return;
    }
    const auto second = pipeToOperation();
    std::vector<NEBSourceControlTaskOperation*> stages{this};
    if (second) {
        stages.push_back(second.get());
    }
    if (inspection() && !switchOffPrograms(stages)) {
        return;
    }
    std::vector<ChildOutcome> outcomes = run(stages);
    if (_sinkFailure) {
        std::rethrow_exception(std::exchange(_sinkFailure, nullptr));
    }
    if (isCancelled()) {
        setError(NEBSourceControlCancelledError());
        return;
    }
    if (setErrorOfUnfinished(stages, outcomes)) {
        return;
    }
    const ChildText childText = takeOutput(outcomes[0]);
    if (second) {
        finishPipeline(childText, *second, second->takeOutput(outcomes[1]));
    } else {
        parseData();
        finish(childText);
    }
}

bool NEBSourceControlTaskOperation::setErrorOfUnfinished(
    const std::vector<NEBSourceControlTaskOperation*>& stages,
    const std::vector<ChildOutcome>& outcomes) {
    for (std::size_t i = 0; i < stages.size(); ++i) {
        if (const auto limit = outcomes[i].exceededLimit) {
            setError(NEBSourceControlExceededLimitError(*limit, limits(), stages[i]->launchPath()));
            return true;
        }
    }
    for (const ChildOutcome& outcome : outcomes) {
        if (!outcome.status.started()) {
            _terminationStatus = outcome.status;
            setError(errorOfAbnormalEnd());
            return true;
        }
    }
    return false;
}

std::vector<ChildOutcome> NEBSourceControlTaskOperation::run(
    const std::vector<NEBSourceControlTaskOperation*>& stages) {
    std::vector<ChildLaunch> launches;
    launches.reserve(stages.size());
    for (NEBSourceControlTaskOperation* stage : stages) {
        launches.push_back(stage->makeLaunch());
    }
    const NEBSourceControlLimits limits = remainingLimits();
    NEBSourceControlLockWait wait(
        launches, std::min(limits.lockWait, limits.total.value_or(limits.lockWait)));
    auto pause = wait.pauseBeforeStart();
    while (pause && _process.waitUnlessCancelled(*pause)) {
        pause = wait.pauseBeforeStart();
    }
    std::vector<ChildOutcome> outcomes = runOnce(stages, launches);
    pause = wait.pauseAfter(outcomes);
    while (pause && !stages.back()->_hasRemovedOutput && _process.waitUnlessCancelled(*pause)) {
        outcomes = runOnce(stages, launches);
        pause = wait.pauseAfter(outcomes);
    }
    return outcomes;
}

std::vector<ChildOutcome> NEBSourceControlTaskOperation::runOnce(
    const std::vector<NEBSourceControlTaskOperation*>& stages,
    const std::vector<ChildLaunch>& launches) {
    stages.back()->_parser = stages.back()->makeRecordParser();
    stages.back()->_parsedSize = 0;
    stages.back()->_parsedRecords.clear();
    return runLaunches(launches, [&](const ArrivedOutput& output) {
        return stages.back()->parseArrivedOutput(output);
    });
}

std::vector<ChildOutcome> NEBSourceControlTaskOperation::runLaunches(
    const std::vector<ChildLaunch>& launches,
    const std::function<std::size_t(const ArrivedOutput&)>& outputGrew) {
    std::vector<std::size_t> logged;
    const auto started = [&](std::size_t stage) {
        if (commandLog()) {
            logged.push_back(
                commandLog()->started({.launchPath = launches[stage].launchPath,
                                       .arguments = launches[stage].arguments,
                                       .currentDirectoryPath = launches[stage].currentDirectoryPath,
                                       .pipeTo = nullptr}));
        }
    };
    std::size_t known = 0;  // of the bytes that have arrived
    const auto grew = [&](const ArrivedOutput& output) {
        if (commandLog()) {
            commandLog()->received(output.data.size() - known);
        }
        const std::size_t unneeded = outputGrew(output);
        known = output.data.size() - unneeded;
        return unneeded;
    };
    std::vector<ChildOutcome> outcomes = NEBSourceControlRunChildren(
        _process, launches, {.started = started, .outputGrew = grew}, remainingLimits().ofChild());
    for (std::size_t i = 0; i < logged.size(); ++i) {
        commandLog()->ended(logged[i], outcomes[i].status, outcomes[i].duration);
    }
    for (ChildOutcome& outcome : outcomes) {
        if (outcome.errorOutput.size() > NEBSourceControlLongestMessages) {
            outcome.errorOutput = Data(NEBSourceControlOutputExcerpt(outcome.errorOutput.bytes()));
        }
    }
    return outcomes;
}

// ---- the records ------------------------------------------------------------------------------

std::size_t NEBSourceControlTaskOperation::parseArrivedOutput(const ArrivedOutput& output) {
    if (!_parser) {
        return 0;
    }
    if (hasRecordSink()) {
        return deliverArrivedRecords(output);
    }
    if (output.data.size() - _parsedSize >= incrementalSize) {
        _parsedSize = _parser->parse(output.data, _parsedSize, unlimited, _parsedRecords);
    }
    return 0;
}

/// An exception of the sink must not interrupt the run, which ends the child in an orderly way.
std::size_t NEBSourceControlTaskOperation::deliverArrivedRecords(const ArrivedOutput& output) {
    std::size_t position = 0;
    bool isLimitReached = true;
    while (isLimitReached && !_sinkFailure && !isCancelled()) {
        NEBSourceControlResult records;
        records.reserve(recordBatchSize);
        position = _parser->parse(output.data, position, recordBatchSize, records);
        isLimitReached = records.size() == recordBatchSize;
        if (output.isDrained && !isLimitReached) {
            position = _parser->parseWrittenPiece(output.data, position, records);
        }
        try {
            deliverRecords(std::move(records));
        } catch (...) {
            _sinkFailure = std::current_exception();
            _process.cancel();
        }
    }
    _hasRemovedOutput |= position > 0;
    return position;
}

/// What a failed child wrote last may be half a record: a sink does not get it.
void NEBSourceControlTaskOperation::parseData() {
    auto parser = _parser ? std::move(_parser) : makeRecordParser();
    if (!parser) {
        return;
    }
    NEBSourceControlResult records = std::exchange(_parsedRecords, {});
    const Data output = _data.value_or(Data());
    if (hasRecordSink() && _terminationStatus && !_terminationStatus->isSuccess()) {
        parser->parse(output, _parsedSize, unlimited, records);
    } else {
        parser->parseToEnd(output, _parsedSize, records);
    }
    setResult(std::move(records));
}

// ---- the end ----------------------------------------------------------------------------------

NEBSourceControlTaskOperation::ChildText NEBSourceControlTaskOperation::takeOutput(
    ChildOutcome& outcome) {
    ChildText childText{
        .errorText = textOf(outcome.errorOutput),
        .outputText = {},
        .isPresent = !outcome.errorOutput.empty() || !outcome.output.empty() || _hasRemovedOutput};
    if (!outcome.status.isSuccess()) {
        childText.outputText = textOf(Data(NEBSourceControlOutputExcerpt(outcome.output.bytes())));
    }
    _terminationStatus = outcome.status;
    setOutputWasHeldOpen(outcome.outputWasHeldOpen);
    _data = std::move(outcome.output);
    _errorData = std::move(outcome.errorOutput);
    return childText;
}

/// Sets the error, if there is one, from the output and the end of the child. It is set once, when
/// it is complete, as it may have long texts.
void NEBSourceControlTaskOperation::finish(const ChildText& childText) {
    std::optional<NEBSourceControlError> found = error();
    if (auto translated = translatedErrorData()) {
        found = std::move(translated);
    }
    if (!_terminationStatus->exitStatus()) {
        found = errorOfAbnormalEnd();
    } else if (!_terminationStatus->isSuccess()) {
        found = errorOfFailure(childText, std::move(found));
    }
    if (found) {
        completeError(*found, childText, _terminationStatus);
    }
    setError(std::move(found));
}

void NEBSourceControlTaskOperation::finishPipeline(const ChildText& childText,
                                                   NEBSourceControlTaskOperation& second,
                                                   const ChildText& secondText) {
    setOutputWasHeldOpen(outputWasHeldOpen() || second.outputWasHeldOpen());
    second.parseData();
    if (!second.result() && !second.error()) {
        // A first child that SIGPIPE ended is not the cause: the second one stopped reading.
        const bool wasCutOff = _terminationStatus->signalNumber() == SIGPIPE;
        if (!wasCutOff) {
            finish(childText);
        }
        if (!error()) {
            second.finish(secondText);
        }
        if (wasCutOff && !second.error()) {
            finish(childText);
        }
    }
    // The output of a child that a signal ended may be incomplete.
    for (NEBSourceControlTaskOperation* half : {this, &second}) {
        const auto signal = half->_terminationStatus->signalNumber();
        const bool wasCutOff = half == this && signal == SIGPIPE;
        if (!half->_terminationStatus->exitStatus() && !wasCutOff && !error() && !second.error()) {
            half->setError(half->errorOfAbnormalEnd());
        }
    }
    if (second.error()) {
        const bool hasFirstFailed =
            !_terminationStatus->isSuccess() && _terminationStatus->signalNumber() != SIGPIPE;
        NEBSourceControlError found = *second.error();
        if (hasFirstFailed && _terminationStatus->signalNumber()) {
            found.errorClass = NEBSourceControlKilledErrorClass;
        }
        completeError(found, isBlank(childText.errorText) ? secondText : childText,
                      hasFirstFailed ? _terminationStatus : second._terminationStatus);
        second.setError(found);
        setError(second.error());
    }
    setResult(second.result());
}

}  // namespace neb

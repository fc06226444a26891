#include "NEBFoundation/NEBSourceControlTaskOperation.h"

#include <signal.h>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorDetails.h"
#include "NEBFoundation/NEBSourceControlOrphanedLockFiles.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// Whether git would read the name as a pattern, or as more than a name: as "magic" when ":" leads,
/// also once a folder in front of it has been cut off.
bool isPattern(const NEBValue& value) {
    const std::string name = value.isPresent() ? value.description() : std::string();
    return name.find_first_of("*?[\\") != std::string::npos || name.starts_with(':') ||
           name.find("/:") != std::string::npos;
}

bool hasPatternCharacters(const NEBSourceControlRequest& request) {
    if (isPattern(request.destination)) {
        return true;
    }
    for (std::size_t i = 0; i < request.fileCount(); ++i) {
        if (isPattern((*request.files)[i])) {
            return true;
        }
    }
    return false;
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::string textOf(const Data& data) {
    return *_nebsc_stringFromData(data);
}

NEBSourceControlError errorOfClass(std::string_view errorClass, const std::string& description) {
    auto error = NEBSourceControlError::withDescription(NEBSourceControlGenericError, description);
    error.errorClass = errorClass;
    return error;
}

}  // namespace

// ---- what is to run ---------------------------------------------------------------------------

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

ChildLaunch NEBSourceControlTaskOperation::makeLaunch() {
    ChildLaunch launch{
        .launchPath = launchPath(),
        .arguments = _arguments,
        .currentDirectoryPath = std::nullopt,
        .environment = NEBSourceControlChildEnvironment(
            NEBSourceControlInheritedEnvironment(),
            {.hasPatternCharacters = hasPatternCharacters(*request()),
             .isBackgroundWork = isBackgroundWork(),
             .writesWholeBuffers = _writesWholeBuffers,
             .mayRunHooks = _mayRunHooks,
             .archivesForOwner = _archivesForOwner}),
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
    const auto second = pipeToOperation();
    std::vector<NEBSourceControlTaskOperation*> stages{this};
    if (second) {
        stages.push_back(second.get());
    }
    std::vector<ChildOutcome> outcomes = run(stages);
    if (isCancelled()) {
        setError(NEBSourceControlCancelledError());
        return;
    }
    for (std::size_t i = 0; i < stages.size(); ++i) {
        if (!outcomes[i].status.started()) {
            _terminationStatus = outcomes[i].status;
            setError(errorOfAbnormalEnd());
            return;
        }
    }
    const Words words = take(outcomes[0]);
    if (second) {
        concludePipeline(words, *second, second->take(outcomes[1]));
    } else {
        parseData();
        concludeTexts(words);
    }
}

std::vector<ChildOutcome> NEBSourceControlTaskOperation::run(
    const std::vector<NEBSourceControlTaskOperation*>& stages) {
    std::vector<ChildLaunch> launches;
    launches.reserve(stages.size());
    for (NEBSourceControlTaskOperation* stage : stages) {
        launches.push_back(stage->makeLaunch());
    }
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
    std::size_t received = 0;
    const auto outputGrew = [&](const Data& arrived) {
        if (commandLog()) {
            commandLog()->received(arrived.size() - received);
            received = arrived.size();
        }
        stages.back()->parseArrivedData(arrived);
    };
    std::vector<ChildOutcome> outcomes = NEBSourceControlRunChildren(
        _process, launches, {.started = started, .outputGrew = outputGrew});
    for (std::size_t i = 0; i < logged.size(); ++i) {
        commandLog()->ended(logged[i], outcomes[i].status, outcomes[i].duration);
    }
    return outcomes;
}

NEBSourceControlTaskOperation::Words NEBSourceControlTaskOperation::take(ChildOutcome& outcome) {
    Words words{.errorText = textOf(outcome.errorOutput),
                .outputText = {},
                .areAny = !outcome.errorOutput.empty() || !outcome.output.empty()};
    if (!outcome.status.isSuccess()) {
        words.outputText = textOf(outcome.output);
    }
    _terminationStatus = outcome.status;
    setOutputWasHeldOpen(outcome.outputWasHeldOpen);
    _data = std::move(outcome.output);
    _errorData = std::move(outcome.errorOutput);
    return words;
}

/// Makes an error of what the child wrote or how it ended, where there is one to make. It is set
/// once, when it is complete: what a server wrote may be long.
void NEBSourceControlTaskOperation::concludeTexts(const Words& words) {
    std::optional<NEBSourceControlError> told = error();
    if (auto translated = translationOfErrorData()) {
        told = std::move(translated);
    }
    if (!_terminationStatus->exitStatus()) {
        told = errorOfAbnormalEnd();
    } else if (!_terminationStatus->isSuccess()) {
        told = errorOfFailure(words, std::move(told));
    }
    if (told) {
        completeError(*told, words, _terminationStatus);
    }
    setError(std::move(told));
}

void NEBSourceControlTaskOperation::concludePipeline(const Words& words,
                                                     NEBSourceControlTaskOperation& second,
                                                     const Words& secondWords) {
    setOutputWasHeldOpen(outputWasHeldOpen() || second.outputWasHeldOpen());
    second.parseData();
    if (!second.result() && !second.error()) {
        // One that was cut off because nobody read on is not the cause.
        const bool wasCutOff = _terminationStatus->signalNumber() == SIGPIPE;
        if (!wasCutOff) {
            concludeTexts(words);
        }
        if (!error()) {
            second.concludeTexts(secondWords);
        }
        if (wasCutOff && !second.error()) {
            concludeTexts(words);
        }
    }
    // A half that died may have left what only looks like a result.
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
        NEBSourceControlError told = *second.error();
        completeError(told, isBlank(words.errorText) ? secondWords : words,
                      hasFirstFailed ? _terminationStatus : second._terminationStatus);
        second.setError(told);
        setError(second.error());
    }
    setResult(second.result());
}

// ---- errors -----------------------------------------------------------------------------------

std::optional<NEBSourceControlError> NEBSourceControlTaskOperation::translationOfErrorData() {
    return _errorData && !_errorData->empty()
               ? errorFromErrorMessage(_nebsc_stringFromData(_errorData))
               : std::nullopt;
}

std::optional<NEBSourceControlError> NEBSourceControlTaskOperation::errorFromErrorMessage(
    const std::optional<std::string>& message) {
    const bool isNotice = _terminationStatus && _terminationStatus->isSuccess();
    if (!message || isNotice || isBlank(*message)) {
        return std::nullopt;
    }
    return NEBSourceControlErrorWithoutDetails(*message, *request());
}

/// All that the child wrote is looked at, whatever parseData() left of it: a push that was rejected
/// is an error beside its content. Where standard error tells nothing that is known (a hook's
/// words, a warning about line ends), standard output may: git tells a conflict, or that there is
/// nothing to commit, there alone, and ends with 1. With other ends, what stands there is content.
std::optional<NEBSourceControlError> NEBSourceControlTaskOperation::errorOfFailure(
    const Words& words, std::optional<NEBSourceControlError> told) {
    if (!told && !isBlank(words.errorText)) {
        told = errorFromErrorMessage(words.errorText);
        if (!told) {
            told = NEBSourceControlErrorWithoutDetails(words.errorText, *request());
        }
    }
    const bool isUnknown = told && told->errorClass == NEBSourceControlUnknownErrorClass;
    const bool outputTells =
        _terminationStatus->exitStatus() == 1 &&
        NEBSourceControlErrorClassOfText(words.outputText) != NEBSourceControlUnknownErrorClass;
    if ((!told && !isBlank(words.outputText)) || (isUnknown && outputTells)) {
        told = NEBSourceControlErrorWithoutDetails(words.outputText, *request());
        if (!isBlank(words.errorText)) {
            told->text = words.errorText + "\n" + words.outputText;
        }
    }
    if (!told && words.areAny) {
        told = errorOfClass(NEBSourceControlUnknownErrorClass,
                            "The operation was not completed: \"" + launchPath() +
                                "\" ended with " + _terminationStatus->description() + ".");
    }
    return !told || told->errorClass == NEBSourceControlUnknownErrorClass
               ? errorFromUnknownFailure(std::move(told))
               : told;
}

NEBSourceControlError NEBSourceControlTaskOperation::errorOfAbnormalEnd() {
    const std::string how = _terminationStatus->description();
    if (!_terminationStatus->started()) {
        return errorOfClass(NEBSourceControlNotStartedErrorClass,
                            "The operation could not be performed because " + how + ".");
    }
    auto error = _terminationStatus->signalNumber()
                     ? errorOfClass(NEBSourceControlKilledErrorClass,
                                    "The operation was not completed because \"" + launchPath() +
                                        "\" was ended by " + how + ".")
                     : errorOfClass(NEBSourceControlUnknownErrorClass,
                                    "Whether the operation was completed is not known: \"" +
                                        launchPath() + "\" ended, but " + how + ".");
    error.terminationStatus = _terminationStatus;
    return error;
}

/// Completes the error by what the words and the end of the child tell that it is about.
void NEBSourceControlTaskOperation::completeError(NEBSourceControlError& error, const Words& words,
                                                  const std::optional<TerminationStatus>& status) {
    const std::string& text = isBlank(words.errorText) ? words.outputText : words.errorText;
    if (!error.errorClass) {
        error.errorClass = NEBSourceControlErrorClassOfText(words.errorText);
        if (error.errorClass == NEBSourceControlUnknownErrorClass && status &&
            status->exitStatus() == 1) {
            error.errorClass = NEBSourceControlErrorClassOfText(words.outputText);
        }
    }
    if (!error.text && !isBlank(text)) {
        error.text = text;
    }
    if (!error.terminationStatus) {
        error.terminationStatus = status;
    }
    error.hints = NEBSourceControlHintsInText(words.errorText);
    error.remoteLines = NEBSourceControlRemoteLinesInText(words.errorText);
    error.files =
        NEBSourceControlFilesInText(words.errorText + "\n" + words.outputText, *error.errorClass);
}

}  // namespace neb

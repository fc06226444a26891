#include "CommandFrame/CommandTask.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <future>
#include <new>
#include <utility>

#include "CommandFrame/BrokenReference.h"
#include "CommandFrame/OrdinaryWorkingCopy.h"
#include "CommandFrame/Requests.h"
#include "JSON/OutcomeJSON.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Platform/Interceptor.h"
#include "Session/OperationRun.h"
#include "Terminal/Colour.h"
#include "Terminal/Pager.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Returns the exit status of the last process of an outcome without an error; 0 if none ran.
int lastExitStatus(const Outcome& outcome) {
    return outcome.commands.empty() ? 0 : outcome.commands.back().terminationStatus.value_or(0);
}

/// Corrects the sentences of an error that a host other than nebsc would get.
RequestResult withTextsOfNebsc(RequestResult result) {
    if (result.outcome && result.outcome->error) {
        describeAccessDeniedHere(*result.outcome->error);
        removeUnansweredQuestions(*result.outcome->error);
    }
    return result;
}

}  // namespace

CommandTask::CommandTask(const CommandCall& call)
    : _call(call), _isInColour(!call.isJSON && wantsColour(call.colours, STDOUT_FILENO)) {}

// ---- the steps --------------------------------------------------------------------------------

CommandOutput CommandTask::run() {
    // The progress indicator would overwrite the lines of a trace.
    _progress.emplace(_call.command.activity, !_call.session.trace().isOn());
    CommandOutput output = runSteps();
    _progress.reset();
    noteEndOfTime(output, _interruption);
    if (isJSON() && output.error && output.standardOutput.empty()) {
        Outcome withoutRequest;
        addNotes(output, withoutRequest);
    }
    // No child runs any more: from here on a signal may end nebsc at once.
    const std::optional<int> signalNumber = _interruption.end();
    if (signalNumber && !isJSON()) {
        output.standardOutput.clear();
    }
    noteInterruption(output, signalNumber);
    if (_streamedOutput) {
        // What report() adds follows the records, in the same pager.
        if (const std::string rest = std::exchange(output.standardOutput, {}); !rest.empty()) {
            static_cast<void>(_streamedOutput->write(rest));
        }
        output.pager.reset();
        _streamedOutput->finish(output);
    }
    return output;
}

CommandOutput CommandTask::runSteps() {
    if (auto refused = readPaths()) {
        return *refused;
    }
    std::optional<RequestResult> early = locateAndPerform();
    if (auto refused = validate()) {
        return *refused;
    }
    RequestResult result = early ? std::move(*early) : perform();
    rejectRefusedValue(result);
    Outcome& outcome = *result.outcome;
    if (_streamedOutput && takeEndOfOutput(*_streamedOutput, outcome)) {
        return {};
    }
    if (outcome.error ? finishesAfter(*outcome.error) : lastExitStatus(outcome) == 0) {
        finish(outcome);
    }
    CommandOutput output = outputInMemoryFor(outcome);
    output.pager = pagerFor(output.standardOutput);
    return output;
}

/// What canRunBesideLocate() reports itself that there is no repository, so it needs no discovery.
/// With --trace, git processes run one after the other, so that the lines are in order.
std::optional<RequestResult> CommandTask::locateAndPerform() {
    const bool canRunBeside = mayRunGit() && canRunBesideLocate();
    if (auto found = canRunBeside ? locateWithoutGit() : std::nullopt) {
        _git.setWorkingCopy(std::move(*found));
        return std::nullopt;
    }
    const auto probable = canRunBeside && !_call.session.trace().isOn()
                              ? probableWorkingCopy(currentFolder())
                              : std::nullopt;
    if (!probable) {
        _git.setWorkingCopy(locate());
        return std::nullopt;
    }
    _git.setWorkingCopy(*probable);
    // Without a thread, locate() runs when its result is needed.
    std::future<WorkingCopyLocation> location = std::async(
        std::launch::async | std::launch::deferred, [this, interceptor = Interceptor::ofThread()] {
            const Interceptor::Scope scope(interceptor);
            return locate();
        });
    _confirmsLocation = [&] {
        if (location.valid()) {
            _git.setWorkingCopy(location.get());
        }
        return workingCopy().isAtSamePlaceAs(*probable);
    };
    RequestResult result = perform();
    const bool isThere = std::exchange(_confirmsLocation, nullptr)();
    return isThere ? std::optional(std::move(result)) : std::nullopt;
}

std::optional<CommandOutput> CommandTask::readPaths() {
    const PathSearch folder = findCurrentFolder();
    if (!folder.path) {
        return refusal(folder.failure, exitFailed, NEBSourceControlPathUnknownErrorClass);
    }
    _git.setWorkingCopy({.currentFolder = *folder.path});
    for (const Parameter& parameter : _call.command.parameters) {
        if (!parameter.takesPaths()) {
            continue;
        }
        for (const std::string& value : arguments().all(longName(parameter))) {
            const PathSearch search = findAbsolutePath(*folder.path, value);
            if (!search.path) {
                return refusal(search.failure, exitFailed, NEBSourceControlPathInvalidErrorClass);
            }
            _paths[std::string(parameter.name)].push_back(*search.path);
        }
    }
    return std::nullopt;
}

WorkingCopyLocation CommandTask::locateAround(const std::string& folder,
                                              const RepositoryQuestions& asked) {
    if (mayRunGit()) {
        return findWorkingCopy(_interruption, _call.session.trace(), currentFolder(), folder, asked,
                               _git.trust());
    }
    const RequestResult info =
        performRequest(nebsc::newRequest({.location = folder}, NEBSourceControlRequestInfo));
    return workingCopyInResult(info.outcome->result, currentFolder(), folder);
}

std::optional<WorkingCopyLocation> CommandTask::locateWithoutGit() const {
    const RepositoryQuestions asked = questions();
    return asked.revisions.empty() && !asked.asksUpstream ? ordinaryWorkingCopy(currentFolder())
                                                          : std::nullopt;
}

std::string CommandTask::textOfResult(const NEBSourceControlResult& /*result*/) {
    return {};
}

void CommandTask::report(const Outcome& /*outcome*/, CommandOutput& /*output*/) {}

std::string CommandTask::textFor(const NEBSourceControlError& error) const {
    return textForMissingFile(workingCopy(), error);
}

// ---- output -----------------------------------------------------------------------------------

/// If memory runs out for the output, that replaces the outcome's result as its error.
CommandOutput CommandTask::outputInMemoryFor(Outcome& outcome) {
    try {
        return outputFor(outcome);
    } catch (const std::bad_alloc&) {
        outcome.error = NEBSourceControlErrorOfCurrentException();
    }
    outcome.result.reset();
    return outputFor(outcome);
}

CommandOutput CommandTask::outputFor(Outcome& outcome) {
    CommandOutput output;
    if (outcome.result) {
        output.standardOutput = textOfResult(*outcome.result);
    }
    explainBrokenHEAD(outcome);
    if ((outcome.error && isHandled(*outcome.error)) ||
        !addFailureOf(outcome, silentFailure(), output)) {
        report(outcome, output);
        if (outcome.error && output.error) {  // the command words the error itself
            outcome.error->userInfo.addEntriesFrom(output.error->userInfo);
        }
    } else if (outcome.error) {
        adviseAbout(*outcome.error, output);
        reportFailure(outcome, output);
    }
    addNotes(output, outcome);
    return output;
}

void CommandTask::adviseAbout(NEBSourceControlError& error, CommandOutput& output) const {
    const std::string text = textFor(error);
    std::string advice = adviceFor(error);
    output.standardError += advice.empty() ? "" : advice + "\n";
    if (const auto suggestion = error.localizedRecoverySuggestion();
        suggestion && !advice.empty() && text.empty()) {
        advice.insert(0, *suggestion + "\n");
    }
    if (!text.empty()) {
        error.userInfo.set(NEBLocalizedDescriptionKey, text);
    }
    if (!advice.empty()) {
        error.userInfo.set(NEBLocalizedRecoverySuggestionKey, advice);
    }
}

/// If a branch is broken, git may report that HEAD or its commit is unknown, or that there is no
/// commit yet. An error that is handled is no failure.
void CommandTask::explainBrokenHEAD(Outcome& outcome) const {
    if (!mayRunGit() || !outcome.error || isHandled(*outcome.error) ||
        (outcome.error->errorClass != NEBSourceControlReferenceBrokenErrorClass &&
         outcome.error->errorClass != NEBSourceControlNoCommitsYetErrorClass &&
         outcome.error->errorClass != NEBSourceControlRevisionUnknownErrorClass &&
         outcome.error->text.value_or("").find("HEAD") == std::string::npos)) {
        return;
    }
    if (auto broken = brokenReference(_git, "HEAD")) {
        outcome.error->errorClass = broken->errorClass;
        outcome.error->userInfo.addEntriesFrom(broken->userInfo);
    }
}

bool CommandTask::addFailureOf(const Outcome& outcome, SilentFailure silentFailure,
                               CommandOutput& output) const {
    if (outcome.error) {
        CommandOutput failure = failureAbout(names(), *outcome.error);
        if (const std::string text = textFor(*outcome.error); !text.empty()) {
            failure.standardError = diagnostic(text);
        }
        addFailure(output, failure);
        return true;
    }
    const int status = lastExitStatus(outcome);
    if (status == 0 || silentFailure == SilentFailure::isIgnored ||
        (status == 1 && silentFailure == SilentFailure::isEmptyResult)) {
        return false;
    }
    addFailure(output, refusal(silentFailureText(status), exitFailed));
    return true;
}

void CommandTask::addNotes(CommandOutput& output, Outcome& outcome) const {
    if (!outcome.error) {
        outcome.error = output.error;
    }
    if (outcome.error) {
        outcome.error->hidePasswords();
    }
    if (isJSON()) {
        output.standardOutput = textOfOutcome(outcome) + "\n";
    }
    noteReports(output, outcome);
    noteOmittedRevisions(output, outcome);
    noteLeftFolder(output, outcome);
    noteHeldOutput(output, outcome);
    noteSwitchedOff(output, outcome);
}

std::vector<std::string> CommandTask::names() const {
    std::vector<std::string> names;
    for (const Parameter& parameter : _call.command.parameters) {
        const std::vector<std::string>& values = arguments().all(longName(parameter));
        names.insert(names.end(), values.begin(), values.end());
    }
    return names;
}

std::optional<std::string> CommandTask::pagerFor(std::string_view text) const {
    if (!_call.command.isPaged || isJSON() || !needsPager(STDOUT_FILENO, text)) {
        return std::nullopt;
    }
    return chosenPager();
}

std::optional<std::string> CommandTask::chosenPager() const {
    // The variable overrides the setting.
    if (std::getenv("GIT_PAGER") != nullptr) {
        return pagerOfUser(std::nullopt);
    }
    std::vector<std::string> query{"config", "--get", "core.pager"};
    if (_call.session.isInspecting()) {
        query.insert(query.begin() + 1, "--global");
    }
    return pagerOfUser(_git.outputOf(std::move(query)));
}

// ---- the invocation and its requests ----------------------------------------------------------

const std::vector<std::string>& CommandTask::paths(std::string_view parameter) const {
    static const std::vector<std::string> none;
    const auto entry = _paths.find(parameter);
    return entry == _paths.end() ? none : entry->second;
}

UsageError CommandTask::invalidValue(std::string_view parameter, std::string expected) const {
    const auto& rows = _call.command.parameters;
    const auto row = std::find_if(rows.begin(), rows.end(), [parameter](const Parameter& other) {
        return longName(other) == parameter;
    });
    return {.kind = UsageError::Kind::invalidValue,
            .argument = argument(parameter),
            .parameter = &*row,
            .detail = std::move(expected)};
}

std::shared_ptr<NEBSourceControlRequest> CommandTask::newRequest(
    std::int32_t type, const std::vector<std::string>& files) const {
    auto request = newRequest(type);
    request->files.emplace(files.begin(), files.end());
    return request;
}

RequestResult CommandTask::performRequest(
    const std::shared_ptr<NEBSourceControlRequest>& request,
    const std::shared_ptr<NEBSourceControlOperation>& replacement) {
    allowFetches(*request);
    RequestResult result = withTextsOfNebsc(_call.session.perform(
        request, interruptibleRunner(_interruption, *_progress), replacement));
    if (NEBSourceControlEffectOfRequest(*request) != NEBSourceControlRequestEffect::reads) {
        _git.forgetRevisions();
    }
    return result;
}

RequestResult CommandTask::performStreamed(
    const std::shared_ptr<NEBSourceControlRequest>& request,
    const std::shared_ptr<NEBSourceControlOperation>& replacement) {
    if (isJSON()) {
        return performRequest(request, replacement);
    }
    allowFetches(*request);
    return withTextsOfNebsc(_call.session.perform(request, printingRunner(), replacement));
}

RequestResult CommandTask::performStreamed(NEBSourceControlOperation& operation) {
    if (isJSON()) {
        return performOperation(operation);
    }
    return withTextsOfNebsc(
        {_call.session.performOperation(operation, printingRunner()), std::nullopt});
}

HostSession::Runner CommandTask::printingRunner() {
    _streamedOutput.emplace(_call.command.isPaged ? [this] { return chosenPager(); }
                                                  : StreamedOutput::PagerChoice());
    return streamingRunner(
        interruptibleRunner(_interruption, *_progress), _interruption, *_streamedOutput,
        [this](const NEBSourceControlResult& records) { return textOfArrived(records); });
}

std::optional<std::string> CommandTask::textOfArrived(const NEBSourceControlResult& records) {
    if (_confirmsLocation && !_confirmsLocation()) {
        return std::nullopt;
    }
    std::string text = textOfResult(records);
    _progress->end();
    return text;
}

RequestResult CommandTask::performOperation(NEBSourceControlOperation& operation) {
    return withTextsOfNebsc(
        {_call.session.performOperation(operation, interruptibleRunner(_interruption, *_progress)),
         std::nullopt});
}

std::optional<CommandOutput> CommandTask::performFirst(
    const std::shared_ptr<NEBSourceControlRequest>& request) {
    RequestResult result = performRequest(request);
    rejectRefusedValue(result);
    CommandOutput output;
    if (!addFailureOf(*result.outcome, SilentFailure::isError, output)) {
        return std::nullopt;
    }
    addNotes(output, *result.outcome);
    return output;
}

}  // namespace neb::nebsc

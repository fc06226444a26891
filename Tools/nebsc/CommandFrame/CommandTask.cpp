#include "CommandFrame/CommandTask.h"

#include <unistd.h>

#include <algorithm>
#include <new>

#include "CommandFrame/BrokenReference.h"
#include "JSON/OutcomeJSON.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Session/OperationRun.h"
#include "Terminal/Pager.h"
#include "Terminal/Presentation.h"

namespace neb::nebsc {

namespace {

std::string sentenceOfSilence(int exitStatus) {
    return "git told nothing and ended with exit status " + std::to_string(exitStatus) + ".";
}

std::string_view classOfSilence(const TerminationStatus& status) {
    return !status.started()       ? NEBSourceControlNotStartedErrorClass.text()
           : status.signalNumber() ? NEBSourceControlKilledErrorClass.text()
                                   : NEBSourceControlUnknownErrorClass.text();
}

/// How the last git ended, of an outcome without an error; 0 when none ran.
int silentExitStatus(const Outcome& outcome) {
    return outcome.commands.empty() ? 0 : outcome.commands.back().terminationStatus.value_or(0);
}

/// The reply where a request was refused for the sake of a value.
std::optional<CommandOutput> refusalOf(const RequestResult& requestResult) {
    if (const auto& value = requestResult.refusedValue) {
        const bool isOption = value->value.starts_with('-');
        return refusal(inQuotes(value->value) + (isOption ? " begins with \"-\"; it" : "") +
                           " is refused, as git would " + std::string(value->danger) + ".",
                       exitNotUnderstood);
    }
    return std::nullopt;
}

}  // namespace

// ---- the frame --------------------------------------------------------------------------------

CommandOutput CommandTask::run() {
    // Lines of a trace and the sign would write over each other.
    _sign.emplace(_call.command.activity, !trace().isOn());
    CommandOutput output = work();
    _sign.reset();
    if (isJSON() && output.error && output.standardOutput.empty()) {
        Outcome withoutRequest;
        addNotes(output, withoutRequest);
    }
    // No child is left by now: from here on a signal may end nebsc at once.
    const std::optional<int> signalNumber = _interruption.end();
    if (signalNumber && !_call.isJSON) {
        output.standardOutput.clear();
    }
    noteInterruption(output, signalNumber);
    return output;
}

std::optional<CommandOutput> CommandTask::refusalOfEmptyNames() const {
    for (const Parameter& parameter : _call.command.parameters) {
        const std::vector<std::string>& words = arguments().all(parameter.name);
        if (parameter.takesNames() && parameter.takes != Takes::revisionOrPath &&
            std::find(words.begin(), words.end(), "") != words.end()) {
            return refusal(std::string(parameter.name) + " is empty.", exitNotUnderstood);
        }
    }
    return std::nullopt;
}

CommandOutput CommandTask::work() {
    if (auto refused = refusalOfEmptyNames()) {
        return *refused;
    }
    if (auto refused = readPaths()) {
        return *refused;
    }
    _place = findPlace();
    if (auto refused = validate()) {
        return *refused;
    }
    RequestResult requestResult = carryOut();
    if (auto refused = refusalOf(requestResult)) {
        return *refused;
    }
    Outcome& outcome = *requestResult.outcome;
    if (outcome.error ? isCompletedAfter(*outcome.error) : silentExitStatus(outcome) == 0) {
        finish(outcome);
    }
    CommandOutput output = replyInMemoryTo(outcome);
    output.pager = pagerFor(output.standardOutput);
    return output;
}

std::optional<std::string> CommandTask::pagerFor(std::string_view text) {
    if (!_call.command.isPaged || isJSON() || !needsPager(STDOUT_FILENO, text)) {
        return std::nullopt;
    }
    return pagerOfUser(answer({"config", "--get", "core.pager"}));
}

std::optional<CommandOutput> CommandTask::readPaths() {
    const PathSearch folder = findCurrentFolder();
    if (!folder.path) {
        return refusal(folder.failure, exitFailed, NEBSourceControlPathUnknownErrorClass.text());
    }
    _place.currentFolder = *folder.path;
    for (const Parameter& parameter : _call.command.parameters) {
        if (!parameter.takesPaths()) {
            continue;
        }
        for (const std::string& word : arguments().all(parameter.name)) {
            if (word.empty()) {
                return refusal("The path is empty; the path of a file or folder was expected.",
                               exitNotUnderstood);
            }
            const PathSearch search = findAbsolutePath(*folder.path, word);
            if (!search.path) {
                return refusal(search.failure, exitFailed, NEBSourceControlPathInvalidErrorClass);
            }
            _paths[std::string(parameter.name)].push_back(*search.path);
        }
    }
    return std::nullopt;
}

/// Where memory runs out for the reply, that is the outcome's failure, in place of its result.
CommandOutput CommandTask::replyInMemoryTo(Outcome& outcome) {
    try {
        return replyTo(outcome);
    } catch (const std::bad_alloc&) {
        outcome.error = NEBSourceControlErrorOfCurrentException();
    }
    outcome.result.reset();
    return replyTo(outcome);
}

CommandOutput CommandTask::replyTo(Outcome& outcome) {
    CommandOutput output;
    if (outcome.result) {
        output.standardOutput = textOfResult(*outcome.result);
    }
    explainBrokenHEAD(outcome);
    if ((outcome.error && isAnswer(*outcome.error)) || !noteFailure(output, outcome, silence())) {
        report(outcome, output);
    } else if (outcome.error) {
        output.standardError += adviceAfter(*outcome.error);
        concludeFailure(outcome, output);
    }
    addNotes(output, outcome);
    return output;
}

/// git says of a broken branch, too, that it does not know "HEAD" or the commit in it, or that
/// there is no commit yet.
void CommandTask::explainBrokenHEAD(Outcome& outcome) {
    if (!outcome.error || (outcome.error->errorClass != NEBSourceControlReferenceBrokenErrorClass &&
                           outcome.error->errorClass != NEBSourceControlNoCommitsYetErrorClass &&
                           outcome.error->errorClass != NEBSourceControlRevisionUnknownErrorClass &&
                           outcome.error->text.value_or("").find("HEAD") == std::string::npos)) {
        return;
    }
    if (auto broken = brokenReference("HEAD")) {
        outcome.error->errorClass = broken->errorClass;
        outcome.error->userInfo.addEntriesFrom(broken->userInfo);
    }
}

void CommandTask::addNotes(CommandOutput& output, Outcome& outcome) const {
    if (!outcome.error) {
        outcome.error = output.error;
    }
    if (_call.isJSON) {
        output.standardOutput = textOfOutcome(outcome) + "\n";
    }
    noteReports(output, outcome);
    noteOmittedRevisions(output, outcome);
    noteLeftFolder(output, outcome);
    noteHeldOutput(output, outcome);
}

WorkingCopyLocation CommandTask::findPlace() {
    return findWorkingCopy(_interruption, trace(), currentFolder(), currentFolder());
}

std::string CommandTask::textOfResult(const NEBSourceControlResult& /*result*/) {
    return {};
}

void CommandTask::report(const Outcome& /*outcome*/, CommandOutput& /*output*/) {}

bool CommandTask::isInColour() const {
    return !isJSON() && wantsColour(_call.colours, STDOUT_FILENO);
}

// ---- requests ---------------------------------------------------------------------------------

const std::vector<std::string>& CommandTask::paths(std::string_view parameter) const {
    static const std::vector<std::string> none;
    const auto entry = _paths.find(parameter);
    return entry == _paths.end() ? none : entry->second;
}

std::shared_ptr<NEBSourceControlRequest> CommandTask::requestOfType(std::int32_t type) const {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = _place.location;
    tree->name = lastPathComponent(_place.location);
    return NEBSourceControlRequest::initWithType(type, std::move(tree), std::nullopt, std::nullopt);
}

std::shared_ptr<NEBSourceControlRequest> CommandTask::requestAbout(
    std::int32_t type, const std::vector<std::string>& files) const {
    auto request = requestOfType(type);
    request->files.emplace(files.begin(), files.end());
    return request;
}

RequestResult CommandTask::perform(const std::shared_ptr<NEBSourceControlRequest>& request,
                                   const std::shared_ptr<NEBSourceControlOperation>& replacement) {
    return _call.session.perform(request, interruptibleRunner(_interruption, *_sign), replacement);
}

RequestResult CommandTask::perform(NEBSourceControlOperation& operation) {
    return {_call.session.carryOut(operation, interruptibleRunner(_interruption, *_sign)),
            std::nullopt};
}

std::optional<CommandOutput> CommandTask::prepareBy(
    const std::shared_ptr<NEBSourceControlRequest>& request) {
    RequestResult requestResult = perform(request);
    if (auto refused = refusalOf(requestResult)) {
        return refused;
    }
    CommandOutput output;
    if (!noteFailure(output, *requestResult.outcome, Silence::failure)) {
        return std::nullopt;
    }
    addNotes(output, *requestResult.outcome);
    return output;
}

// ---- questions of the command's own -----------------------------------------------------------

ChildOutcome CommandTask::ask(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "--literal-pathspecs");
    return runGit(_interruption, trace(), std::move(arguments), _place.location);
}

std::optional<std::string> CommandTask::answer(std::vector<std::string> arguments) {
    return answerOf(ask(std::move(arguments)));
}

ChildOutcome CommandTask::askForCommit(const std::string& revision) {
    return ask({"rev-parse", "--verify", "--quiet", "--end-of-options", revision + "^{commit}"});
}

bool CommandTask::isWithoutCommits() {
    return ask({"rev-parse", "--verify", "--quiet", "HEAD"}).status.exitStatus() == 1;
}

std::optional<NEBSourceControlError> CommandTask::brokenReference(const std::string& revision) {
    return brokenReferenceIn(revision, _place.location, [this](std::vector<std::string> arguments) {
        return ask(std::move(arguments));
    });
}

CommandOutput CommandTask::refusalOfUnknownRevision(const std::string& revision) {
    if (const auto broken = brokenReference(revision)) {
        return failureWith(*broken);
    }
    return refusal("There is no revision " + inQuotes(revision) + ".", exitFailed,
                   NEBSourceControlRevisionUnknownErrorClass.text());
}

std::optional<std::string> CommandTask::latestCommit() {
    return answer({"rev-parse", "--verify", "--quiet", "--short=12", "HEAD"});
}

// ---- what to say ------------------------------------------------------------------------------

std::string CommandTask::sentenceFor(const NEBSourceControlError& error) const {
    constexpr std::string_view noMatch = "did not match any file";
    if (error.files.size() != 1 || error.text.value_or("").find(noMatch) == std::string::npos) {
        return {};
    }
    const std::string& file = error.files.front();
    const std::string path =
        file.starts_with('/') ? file : pathByAppendingComponent(_place.location, file);
    const std::string name = inQuotes(pathAsSeenFrom(_place, path));
    return isAnythingAt(path) ? "git does not track " + name + "."
                              : "There is no file or folder " + name + ".";
}

bool CommandTask::noteFailure(CommandOutput& output, const Outcome& outcome,
                              Silence silence) const {
    if (outcome.error) {
        CommandOutput failure = failureWith(*outcome.error);
        if (const std::string sentence = sentenceFor(*outcome.error); !sentence.empty()) {
            failure.standardError = complaint(sentence);
        }
        addFailure(output, failure);
        return true;
    }
    const int status = silentExitStatus(outcome);
    if (status == 0 || silence == Silence::irrelevant ||
        (status == 1 && silence == Silence::answer)) {
        return false;
    }
    addFailure(output, refusal(sentenceOfSilence(status), exitFailed));
    return true;
}

void CommandTask::noteConflicts(CommandOutput& output, std::string_view sentence,
                                const std::vector<std::string>& paths) {
    std::vector<std::string> question{"diff", "--name-only", "--diff-filter=U", "-z", "--"};
    question.insert(question.end(), paths.begin(), paths.end());
    const ChildOutcome outcome = ask(std::move(question));
    if (!outcome.status.isSuccess()) {
        addFailure(output, failureOf(outcome));
    } else if (!outcome.output.empty()) {
        addFailure(output, refusalAbout(sentence, textsBetweenNULs(outcome.output),
                                        NEBSourceControlConflictErrorClass));
    }
}

CommandOutput CommandTask::failureOf(const ChildOutcome& question) const {
    const std::string words(question.errorOutput);
    if (words.find_first_not_of(" \t\r\n") == std::string::npos) {
        return refusal(question.status.exitStatus()
                           ? sentenceOfSilence(*question.status.exitStatus())
                           : "git did not answer: " + question.status.description() + ".",
                       exitFailed, classOfSilence(question.status));
    }
    const auto request = requestOfType(NEBSourceControlRequestStatus);
    return failureWith(NEBSourceControlErrorFromText(words, *request));
}

std::optional<CommandOutput> CommandTask::refusalWithoutWorkingCopy() {
    if (_place.isWorkingCopy) {
        return std::nullopt;
    }
    return failureOf(ask({"rev-parse", "--show-toplevel"}));
}

std::string CommandTask::shown(const std::string& path) const {
    return printable(pathAsSeenFrom(
        _place, path.starts_with('/') ? path : pathByAppendingComponent(_place.location, path)));
}

CommandOutput CommandTask::refusalAbout(std::string_view sentence,
                                        const std::vector<std::string>& files,
                                        std::string_view errorClass) const {
    CommandOutput refused = refusal(sentence, exitFailed, errorClass);
    for (const std::string& file : files) {
        refused.standardError += "    " + shown(file) + "\n";
    }
    refused.error->files = files;
    return refused;
}

}  // namespace neb::nebsc

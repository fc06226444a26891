#include <algorithm>
#include <array>

#include "Commands.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "OperationRun.h"
#include "OutcomeJSON.h"
#include "Platform/PathString.h"
#include "Presentation.h"
#include "StatusPlace.h"

namespace neb::nebsc {

namespace {

struct StatusWord {
    std::int64_t status;
    std::string_view word;
    Colour colour;
};

constexpr std::array<StatusWord, 6> statusWords{{
    {1, "added", Colour::green},
    {2, "deleted", Colour::red},
    {4, "modified", Colour::yellow},
    {16, "conflict", Colour::boldRed},
    {256, "untracked", Colour::red},
    {4096, "renamed", Colour::cyan},
}};
/// For a state that has no word of its own.
constexpr StatusWord changed{0, "changed", Colour::none};
/// The longest word, and two blanks.
constexpr std::size_t wordColumnWidth = 11;

StatusWord wordOfStatus(std::int64_t status) {
    const auto* row =
        std::find_if(statusWords.begin(), statusWords.end(),
                     [status](const StatusWord& word) { return word.status == status; });
    return row == statusWords.end() ? changed : *row;
}

std::string lineOfRecord(const NEBDictionary& record, const StatusPlace& place, bool isColoured) {
    const StatusWord word =
        wordOfStatus(record.value(NEBSourceControlOperationWCStatusKey).integer().value_or(0));
    const std::string* path = record.value(NEBSourceControlOperationPathKey).string();
    const std::string shown =
        printable(path == nullptr ? std::string() : pathAsSeenFrom(place, *path));
    const std::string blanks(wordColumnWidth - word.word.size(), ' ');
    const std::string start =
        isColoured ? coloured(word.word, word.colour) : std::string(word.word);
    return start + blanks + shown + "\n";
}

std::shared_ptr<NEBSourceControlRequest> statusRequest(const StatusPlace& place) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = place.location;
    tree->name = lastPathComponent(place.location);
    auto request = NEBSourceControlRequest::initWithType(NEBSourceControlRequestStatus, tree,
                                                         std::nullopt, std::nullopt);
    if (place.destination) {
        request->destination = *place.destination;
    }
    return request;
}

/// The records for a person, or a sentence that says that there are none.
std::string textOfRecords(const NEBSourceControlResult& records, const StatusPlace& place,
                          const StatusCall& call) {
    if (!records.empty()) {
        std::string lines;
        for (const NEBDictionary& record : records) {
            lines += lineOfRecord(record, place, call.isColoured);
        }
        return lines;
    }
    if (place.destination) {
        return "Nothing to report: " + printable("\"" + call.path.value_or("") + "\"") +
               " has no changes.\n";
    }
    return "Nothing to report: the working copy " +
           printable("\"" + lastPathComponent(place.location) + "\"") + " has no changes.\n";
}

/// How git failed when it did so without a word, which makes no error; nothing when it did not.
std::optional<std::string> silentFailure(const Outcome& outcome) {
    if (outcome.error || outcome.commands.empty() ||
        outcome.commands.back().terminationStatus.value_or(0) == 0) {
        return std::nullopt;
    }
    return "git told nothing and ended with exit status " +
           std::to_string(*outcome.commands.back().terminationStatus) + ".";
}

Reply replyOf(const Outcome& outcome, const StatusPlace& place, const StatusCall& call) {
    if (const auto failure = silentFailure(outcome); failure && !call.isJSON) {
        return refusal(*failure, exitFailed);
    }
    Reply reply;
    const bool hasRecords = outcome.result && !outcome.result->empty();
    const bool isMissing = !outcome.error && !hasRecords && !place.pathExists;
    if (call.isJSON) {
        reply.standardOutput = lineOfJSON(jsonOfOutcome(outcome));
    } else if (hasRecords || (!outcome.error && !isMissing)) {
        reply.standardOutput =
            textOfRecords(outcome.result.value_or(NEBSourceControlResult()), place, call);
    }
    if (outcome.error) {
        reply.standardError = errorLines(*outcome.error);
    } else if (isMissing) {
        reply.standardError = complaint("There is no file or folder \"" + call.path.value_or("") +
                                        "\", neither on disk nor in the working copy \"" +
                                        lastPathComponent(place.location) + "\".");
    }
    reply.exitStatus = outcome.error || isMissing ? exitFailed : exitDone;
    return reply;
}

}  // namespace

Reply statusCommand(const HostSession& session, const StatusCall& call) {
    if (call.path && call.path->empty()) {
        return refusal("The path is empty; the path of a file or folder was expected.",
                       exitNotUnderstood);
    }
    Interruption interruption;
    const StatusPlaceSearch search = findStatusPlace(interruption, call.path);
    if (!search.place) {
        return refusal(search.failure, exitFailed);
    }
    // A status request has no value that git could take for an option, so there is an outcome.
    const Outcome outcome =
        *session.perform(statusRequest(*search.place), interruptibleRunner(interruption)).outcome;
    const std::optional<int> signalNumber = interruption.end();
    if (!outcome.operation && !outcome.error) {
        return refusal("The plug-in has no operation for the status.", exitFailed);
    }
    Reply reply = replyOf(outcome, *search.place, call);
    if (signalNumber && !call.isJSON) {
        reply.standardOutput.clear();
    }
    noteHeldOutput(reply, outcome);
    noteInterruption(reply, signalNumber);
    return reply;
}

}  // namespace neb::nebsc

#include <cstdlib>

#include "Commands/Commands.h"
#include "Commands/OwnOperations.h"
#include "Commands/RecordingCommands.h"
#include "JSON/OutcomeJSON.h"
#include "Recording/RecordingReader.h"
#include "Recording/Replay.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

std::string counted(std::size_t count, std::string_view singular) {
    return std::to_string(count) + " " + std::string(singular) + (count == 1 ? "" : "s");
}

std::string textOf(const ReplayedRequest& replayed) {
    std::string text = "Request " + std::to_string(replayed.number) + ", " + replayed.name + ": ";
    if (!replayed.notReplayed.empty()) {
        return text + "not replayed: " + printable(replayed.notReplayed) + "\n";
    }
    text += (replayed.differences.empty() ? "same" : "different") + std::string(" (") +
            std::to_string(replayed.childCount) +
            (replayed.childCount == 1 ? " process, " : " processes, ") +
            counted(replayed.recordCount, "record") + ")\n";
    for (const std::string& line : replayed.differences) {
        text += "  " + printable(line) + "\n";
    }
    return text;
}

JSON jsonOf(const ReplayedRequest& replayed) {
    return {{"request", replayed.number},
            {"name", replayed.name},
            {"isSame", replayed.notReplayed.empty() && replayed.differences.empty()},
            {"notReplayed", replayed.notReplayed.empty() ? JSON() : JSON(replayed.notReplayed)},
            {"processes", replayed.childCount},
            {"records", replayed.recordCount},
            {"differences", replayed.differences}};
}

CommandOutput outputOf(const std::vector<ReplayedRequest>& all, bool isJSON) {
    CommandOutput output;
    JSON json = JSON::array();
    std::size_t differing = 0;
    for (const ReplayedRequest& replayed : all) {
        differing += replayed.differences.empty() ? 0 : 1;
        if (isJSON) {
            json.push_back(jsonOf(replayed));
        } else {
            output.standardOutput += textOf(replayed);
        }
    }
    if (isJSON) {
        output.standardOutput = lineOfJSON({{"requests", std::move(json)}});
    } else {
        output.standardOutput += counted(all.size(), "request") + ", " +
                                 (differing == 0 ? "none" : std::to_string(differing)) +
                                 " different\n";
    }
    output.exitStatus = differing == 0 ? exitDone : exitFailed;
    return output;
}

CommandOutput run(const CommandCall& call) {
    const std::string path = call.arguments.value("FILE").value_or("");
    const RecordingReading recording = readRecording(path);
    if (!recording.failure.empty()) {
        return refusal("recording " + inQuotes(path) + " " + recording.failure, exitUsageError);
    }
    useHomeOf(recording);
    std::vector<ReplayedRequest> all;
    for (const RecordedRequest& request : recording.requests) {
        all.push_back(replay(call.session, request, ownOperation));
    }
    return outputOf(all, call.isJSON);
}

constexpr Parameter parameters[] = {
    {"FILE", "The recording", Takes::pathAsWritten, Occurs::once},
};

}  // namespace

void useHomeOf(const RecordingReading& recording) {
    if (const std::string& home = recording.header.home; !home.empty()) {
        ::setenv("HOME", home.c_str(), 1);
    }
}

constinit const Command replayCommand{
    .name = "replay",
    .group = requestsGroup,
    .summary = "Carry out the requests of a recording without git",
    .details =
        "Compares each outcome with the recorded one. Runs no program, and neither reads\n"
        "nor changes the repository, which need not exist. Lines that begin with '-' show\n"
        "what was recorded, lines with '+' what is different now. The exit status is 1 if\n"
        "anything differs. docs/recordings.md describes recordings.\n"
        "\n"
        "Example:\n"
        "  nebsc replay log.recording    written by 'nebsc --record log.recording log'\n",
    .parameters = parameters,
    .run = run,
};

}  // namespace neb::nebsc

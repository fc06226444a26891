#include "Recording/Anonymization.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "JSON/OutcomeJSON.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Recording/NameMapping.h"
#include "Recording/RecordingReader.h"
#include "Recording/RequestText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;
using Lines = std::vector<JSON>;
using Words = std::unordered_set<std::string>;

/// A recording that cannot be made anonymous.
struct NotAnonymous : std::runtime_error {
    using std::runtime_error::runtime_error;
};

bool isKind(const JSON& line, std::string_view kind) {
    const auto member = line.find("kind");
    return member != line.end() && *member == kind;
}

bool isBytes(const JSON& json) {
    return json.is_string() || (json.is_object() && json.size() == 1 && json.contains("base64"));
}

/// Whether words are hidden in the bytes: text in UTF-16, or compressed data, which has control
/// characters that neither texts nor the output of git with "-z" have.
bool isBinary(std::string_view bytes) {
    constexpr std::size_t fewestWideBytes = 16, share = 50;
    constexpr unsigned char tab = 9, carriageReturn = 13, escape = 27;
    std::size_t wideBytes = 0, controls = 0;
    unsigned char last = 0;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        controls += byte != 0 && byte < escape && (byte < tab || byte > carriageReturn) ? 1 : 0;
        wideBytes = (byte == 0) != (last == 0) ? wideBytes + 1 : 0;
        if (wideBytes == fewestWideBytes) {
            return true;
        }
        last = byte;
    }
    return controls * share > bytes.size() && !isUTF8(bytes);
}

/// Members whose texts are constants of nebsc, git or the environment.
bool isConstant(std::string_view name) {
    constexpr std::array<std::string_view, 8> names = {"kind",  "operation", "question", "removed",
                                                       "nebsc", "plugIn",    "git",      "class"};
    return std::ranges::find(names, name) != names.end();
}

/// Changes each text that is no constant. Names of variables are constants.
void changeTexts(JSON& json, const std::function<std::string(const std::string&)>& change,
                 bool isVariable = false) {
    if (isBytes(json)) {
        const std::string text = bytesOfJSON(json);
        const std::size_t value = isVariable ? text.find('=') + 1 : 0;
        json = jsonOfBytes(text.substr(0, value) + change(text.substr(value)));
        return;
    }
    for (auto& [name, member] : json.items()) {
        if (member.is_structured() || member.is_string()) {
            if (!json.is_object() || !isConstant(name)) {
                changeTexts(member, change, isVariable || (json.is_object() && name == "set"));
            }
        }
    }
}

void forEachText(const JSON& json, const std::function<void(const std::string&)>& take) {
    JSON copy = json;
    changeTexts(copy, [&take](const std::string& text) {
        take(text);
        return text;
    });
}

/// The lengths of the texts, and everything that is no text: what stays. Records are sorted,
/// because the order can depend on names.
JSON shapeOf(const JSON& json) {
    if (isBytes(json)) {
        return {{"size", bytesOfJSON(json).size()}};
    }
    if (json.is_array()) {
        std::vector<std::string> shapes;
        for (const JSON& element : json) {
            shapes.push_back(shapeOf(element).dump());
        }
        std::ranges::sort(shapes);
        return shapes;
    }
    JSON shape = json;
    if (json.is_object()) {
        for (auto& [name, member] : shape.items()) {
            member = shapeOf(member);
        }
    }
    return shape;
}

/// Returns the outcome without the folder of git and times.
JSON withoutCommands(JSON outcome) {
    outcome.erase("command");
    outcome.erase("commands");
    return outcome;
}

/// What must be the same in the outcome of the anonymous recording.
JSON shapeOfOutcome(JSON outcome, const JSON& delivered) {
    JSON fixed{{"class", nullptr}, {"code", nullptr}, {"name", outcome["name"]}};
    if (outcome["error"].is_object()) {
        fixed["class"] = outcome["error"]["class"];
        fixed["code"] = outcome["error"]["code"];
    }
    return {{"fixed", std::move(fixed)},
            {"outcome", shapeOf(withoutCommands(std::move(outcome)))},
            {"delivered", shapeOf(delivered)}};
}

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// The names of the user, of the last folder of the home folder and of the machine.
std::string personalText() {
    std::string text = lastPathComponent(variable("HOME"));
    for (const char* name : {"USER", "LOGNAME", "EMAIL"}) {
        text += " " + variable(name);
    }
    text += " ";
    constexpr std::size_t longestName = 256;
    std::array<char, longestName> host{};
    return ::gethostname(host.data(), host.size() - 1) == 0 ? text + host.data() : text;
}

class Anonymization {
public:
    /// Throws NotAnonymous.
    Anonymization(Lines recorded, const HostSession& session, const OwnOperationMaker& makeOwn)
        : _recorded(std::move(recorded)), _session(session), _makeOwn(makeOwn) {
        _mapping.collect(variable("HOME"));
        _mapping.collectPersonal(personalText());
        for (JSON& line : _recorded) {
            expandHomeIn(line);
            collectPeople(line);
            forEachText(line, [this](const std::string& text) {
                if (isBinary(text)) {
                    throw NotAnonymous("it has the content of a binary file, or text in UTF-16");
                }
                _mapping.collect(text);
            });
        }
    }

    /// Throws NotAnonymous.
    Lines lines() {
        checkRecorded();
        constexpr int mostRounds = 100;
        for (int i = 0; i < mostRounds; ++i) {
            Lines lines = mappedLines();
            const Words constants = replayInto(lines);
            if (constants.empty()) {
                check(lines);
                return lines;
            }
            keep(constants);
        }
        throw NotAnonymous("its command lines depend on names in too many ways");
    }

private:
    /// Replaces "~" in the location of a request, because the home folder has another name in the
    /// anonymous recording than in the environment.
    static void expandHomeIn(JSON& line) {
        if (!isKind(line, "request")) {
            return;
        }
        const auto location = JSON::json_pointer("/json/sourceTree/location");
        if (!line.contains(location) || !isBytes(line[location])) {
            return;
        }
        const std::string path = bytesOfJSON(line[location]);
        if (path == "~" || path.starts_with("~/")) {
            line[location] = jsonOfBytes(variable("HOME") + path.substr(1));
        }
    }

    /// Collects the names and addresses of authors and committers.
    void collectPeople(const JSON& json) {
        for (const auto& [name, member] : json.items()) {
            const bool isPerson = json.is_object() && (name.find("Author") != std::string::npos ||
                                                       name.find("Committer") != std::string::npos);
            if (isPerson && isBytes(member)) {
                _mapping.collectPersonal(bytesOfJSON(member));
            } else if (member.is_structured()) {
                collectPeople(member);
            }
        }
    }

    [[nodiscard]] Lines mappedLines() {
        Lines lines = _recorded;
        for (JSON& line : lines) {
            const JSON name = isKind(line, "outcome") ? line["outcome"]["name"] : JSON();
            changeTexts(line, [this](const std::string& text) { return _mapping.replaced(text); });
            if (isKind(line, "outcome")) {
                line["outcome"]["name"] = name;
            }
        }
        return lines;
    }

    [[nodiscard]] static RecordingReading readingOf(const Lines& lines) {
        std::string text;
        for (const JSON& line : lines) {
            text += lineOfJSON(line);
        }
        std::istringstream stream(text);
        RecordingReading reading = readRecording(stream);
        if (!reading.failure.empty()) {
            throw NotAnonymous("it " + reading.failure);
        }
        return reading;
    }

    /// Replays the lines, and writes the new outcomes into them. What the operations asked for, and
    /// what their outcomes say, comes from replaced words or from the program: returns the words of
    /// the program, which must stay.
    [[nodiscard]] Words replayInto(Lines& lines) {
        const RecordingReading reading = readingOf(lines);
        Words constants;
        for (const RecordedRequest& request : reading.requests) {
            const ReplayedRequest replayed = replay(_session, request, _makeOwn);
            if (!replayed.notReplayed.empty()) {
                continue;
            }
            for (const std::string& difference : replayed.differences) {
                if (difference.starts_with("+ run:") || difference.starts_with("+ input of") ||
                    difference.starts_with("+ question:")) {
                    constants.merge(_mapping.originalsIn(difference));
                }
            }
            for (const JSON& json : {withoutCommands(replayed.outcome), replayed.delivered}) {
                forEachText(json, [&](const std::string& text) {
                    constants.merge(_mapping.originalsIn(text));
                });
            }
            setOutcome(lines, replayed);
        }
        return constants;
    }

    static void setOutcome(Lines& lines, const ReplayedRequest& replayed) {
        std::size_t begin = 0;
        for (JSON& line : lines) {
            if (line.value("request", 0) != replayed.number) {
                continue;
            }
            if (isKind(line, "outcome")) {
                JSON outcome = replayed.outcome;
                for (const char* name : {"command", "commands"}) {  // with the recorded git
                    outcome[name] = line["outcome"][name];
                }
                line["outcome"] = std::move(outcome);
            } else if (isKind(line, "records")) {
                for (JSON& record : line["records"]) {
                    if (begin < replayed.delivered.size()) {
                        record = replayed.delivered[begin++];
                    }
                }
            }
        }
    }

    void keep(const Words& constants) {
        for (const std::string& word : constants) {
            if (_mapping.isPersonal(word)) {
                throw NotAnonymous(
                    "its command lines or outcomes depend on the name of a person, "
                    "of the home folder or of the machine");
            }
        }
        _mapping.keep(constants);
    }

    /// Throws NotAnonymous if a recorded outcome is not that of a replay, which would replace it.
    void checkRecorded() const {
        for (const RecordedRequest& request : readingOf(_recorded).requests) {
            const ReplayedRequest replayed = replay(_session, request, _makeOwn);
            if (!replayed.differences.empty()) {
                throw NotAnonymous("the replay of request " + std::to_string(request.number) +
                                   " differs: " + replayed.differences.front());
            }
        }
    }

    /// Throws NotAnonymous if the lines have a word that was to be replaced, or if an outcome has
    /// changed in more than words.
    void check(const Lines& lines) const {
        for (const JSON& line : lines) {
            forEachText(line, [this](const std::string& text) {
                if (!_mapping.originalsIn(text).empty()) {
                    throw NotAnonymous("a name would stay in it");
                }
            });
        }
        const RecordingReading before = readingOf(_recorded);
        const RecordingReading after = readingOf(lines);
        for (std::size_t i = 0; i < after.requests.size(); ++i) {
            const RecordedRequest& old = before.requests[i];
            const RecordedRequest& request = after.requests[i];
            const ReplayedRequest replayed = replay(_session, request, _makeOwn);
            const bool isSame = replayed.differences.empty() &&
                                (!replayed.notReplayed.empty() ||
                                 shapeOfOutcome(old.outcome, old.delivered) ==
                                     shapeOfOutcome(request.outcome, request.delivered));
            if (!isSame) {
                throw NotAnonymous(
                    "the replay of request " + std::to_string(request.number) + " would differ: " +
                    (replayed.differences.empty() ? "the outcome" : replayed.differences.front()));
            }
        }
    }

    Lines _recorded;
    const HostSession& _session;
    const OwnOperationMaker& _makeOwn;
    NameMapping _mapping;
};

}  // namespace

std::string makeAnonymous(Lines& lines, const HostSession& session,
                          const OwnOperationMaker& makeOwn) {
    try {
        lines = Anonymization(lines, session, makeOwn).lines();
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace neb::nebsc

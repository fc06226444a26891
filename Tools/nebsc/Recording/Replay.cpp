#include "Recording/Replay.h"

#include <algorithm>
#include <map>
#include <utility>

#include "JSON/OutcomeJSON.h"
#include "JSON/RequestJSON.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"
#include "Recording/RequestText.h"
#include "Recording/SecretRedaction.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

/// The most lines of a difference that are shown on either side.
constexpr std::size_t mostLines = 20;

std::string textOf(const JSON& json) {
    return json.dump(-1, ' ', false, JSON::error_handler_t::replace);
}

/// The members of an outcome that are compared one by one; the command lines are compared when the
/// children are looked up, and contain the folder of git.
JSON comparedMembers(JSON outcome) {
    outcome.erase("command");
    outcome.erase("commands");
    outcome.erase("result");
    return outcome;
}

JSON resultOf(const JSON& outcome, const JSON& delivered) {
    return delivered.empty() ? outcome.value("result", JSON()) : delivered;
}

void addLines(std::vector<std::string>& lines, std::string_view sign, const JSON& records,
              std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < std::min(end, begin + mostLines); ++i) {
        lines.push_back(std::string(sign) + textOf(records[i]));
    }
    if (end > begin + mostLines) {
        lines.push_back(std::string(sign) + "… " + std::to_string(end - begin - mostLines) +
                        " more records");
    }
}

/// Compares lists record by record: what is between the equal records at both ends differs.
void compareResults(const JSON& recorded, const JSON& replayed, std::vector<std::string>& lines) {
    if (!recorded.is_array() || !replayed.is_array()) {
        if (recorded != replayed) {
            lines.push_back("- result: " + (recorded.is_array() ? "a list" : textOf(recorded)));
            lines.push_back("+ result: " + (replayed.is_array() ? "a list" : textOf(replayed)));
        }
        return;
    }
    const std::size_t common = std::min(recorded.size(), replayed.size());
    std::size_t begin = 0;
    while (begin < common && recorded[begin] == replayed[begin]) {
        ++begin;
    }
    std::size_t end = 0;
    while (end < common - begin &&
           recorded[recorded.size() - 1 - end] == replayed[replayed.size() - 1 - end]) {
        ++end;
    }
    addLines(lines, "- ", recorded, begin, recorded.size() - end);
    addLines(lines, "+ ", replayed, begin, replayed.size() - end);
}

void compareMembers(const JSON& recorded, const JSON& replayed, std::vector<std::string>& lines) {
    const auto valueOf = [](const JSON& json, const std::string& name) {
        return json.contains(name) ? textOf(json[name]) : "absent";
    };
    std::vector<std::string> names;
    for (const JSON& json : {recorded, replayed}) {
        for (const auto& [name, value] : json.items()) {
            if (std::ranges::find(names, name) == names.end()) {
                names.push_back(name);
            }
        }
    }
    for (const std::string& name : names) {
        const std::string before = valueOf(recorded, name);
        const std::string now = valueOf(replayed, name);
        if (before != now) {
            lines.push_back(std::string("- ").append(name).append(": ").append(before));
            lines.push_back(std::string("+ ").append(name).append(": ").append(now));
        }
    }
}

void addDifference(const NEBSourceControlReplayDifference& difference,
                   std::vector<std::string>& lines) {
    using Kind = NEBSourceControlReplayDifference::Kind;
    switch (difference.kind) {
        case Kind::missingRun:
            lines.push_back("+ run: " + difference.subject);
            break;
        case Kind::unusedRun:
            lines.push_back("- run: " + difference.subject);
            break;
        case Kind::missingAnswer:
            lines.push_back("+ question: " + difference.subject);
            break;
        case Kind::otherInput:
            lines.push_back("- input of " + difference.subject + ": " +
                            textOf(jsonOfBytes(difference.recorded)));
            lines.push_back("+ input of " + difference.subject + ": " +
                            textOf(jsonOfBytes(difference.replayed)));
            break;
    }
}

/// Returns the form in which texts are compared: without secrets and, in the line for the shell
/// with which the plug-in lists a folder, without the folder of git.
std::string comparedText(std::string_view text) {
    const std::size_t listing = text.find(" ls-tree -z HEAD^{");
    if (listing != std::string_view::npos && (text.front() == '/' || text.front() == '\'')) {
        return "git" + withoutSecretBytes(text.substr(listing));
    }
    return withoutSecretBytes(text);
}

void replaceText(JSON& json, const std::string& old, const std::string& text) {
    if (json.is_string()) {
        auto& string = json.get_ref<std::string&>();
        for (std::size_t at = string.find(old); at != std::string::npos;
             at = string.find(old, at + text.size())) {
            string.replace(at, old.size(), text);
        }
    } else if (json.is_structured()) {
        for (auto& [name, member] : json.items()) {
            replaceText(member, old, text);
        }
    }
}

/// Replaces the paths of the programs of this machine, which an error names in quotes, by the
/// recorded ones.
void restorePrograms(JSON& outcome, const std::vector<NEBSourceControlRecordedRun>& recorded) {
    std::map<std::string, std::string> paths;  // by name
    for (const NEBSourceControlRecordedRun& run : recorded) {
        for (const NEBSourceControlRecordedChild& child : run.children) {
            paths.emplace(lastPathComponent(child.launchPath), child.launchPath);
        }
    }
    for (const JSON& command : outcome["commands"]) {
        const std::string path = bytesOfJSON(command["launchPath"]);
        const auto found = paths.find(lastPathComponent(path));
        if (found != paths.end() && found->second != path) {
            replaceText(outcome["error"], "\"" + path + "\"", "\"" + found->second + "\"");
        }
    }
}

/// Gives an operation of nebsc's own its recorded command line, which depended on the options of
/// the command.
void prepareOwn(NEBSourceControlTaskOperation& operation, const RecordedOperation& recorded) {
    operation.setArguments(recorded.arguments);
    if (recorded.folder) {
        operation.setCurrentDirectoryPath(*recorded.folder);
    }
}

/// Performs the request with the player, and returns the outcome as JSON.
class Performance {
public:
    Performance(const HostSession& session, const RecordedRequest& recorded)
        : _session(session), _recorded(recorded) {}

    /// Returns why it is not possible; empty if it was.
    std::string perform(const OwnOperationMaker& makeOwn) {
        const Interceptor::Scope scope(_player);
        // An operation may change its request.
        const auto request = std::make_shared<NEBSourceControlRequest>(*_recorded.request);
        std::shared_ptr<NEBSourceControlTaskOperation> own;
        if (_recorded.own) {
            own = makeOwn(_recorded.own->className, request);
            if (!own) {
                return "it ran " + _recorded.own->className +
                       ", which is not an operation of such a request";
            }
            prepareOwn(*own, *_recorded.own);
        }
        const HostSession::Runner run = [this](NEBSourceControlOperation& operation) {
            start(operation);
        };
        if (own && !_recorded.own->isChecked) {
            _outcome = _session.performOperation(*own, run);
            return {};
        }
        RequestResult result = _session.perform(request, run, own);
        if (result.refusedValue) {
            return sentenceOfRefusedValue(*result.refusedValue);
        }
        _outcome = std::move(*result.outcome);
        return {};
    }

    [[nodiscard]] JSON outcome() const {
        JSON json = JSON::parse(textOfOutcome(_outcome), nullptr, false);
        removeSecretsFrom(json);
        restorePrograms(json, _recorded.runs);
        return json;
    }
    [[nodiscard]] const JSON& delivered() const { return _delivered; }

    [[nodiscard]] const NEBSourceControlPlayer& player() const { return *_player; }

private:
    void start(NEBSourceControlOperation& operation) {
        _recorded.settings.applyTo(operation);
        if (_recorded.outcome.contains("recordCount")) {
            operation.setRecordSink([this](const NEBSourceControlResult& records) {
                JSON batch = JSON::parse(textOfRecords(records), nullptr, false);
                removeSecretsFrom(batch);
                _delivered.insert(_delivered.end(), batch.begin(), batch.end());
            });
        }
        operation.start();
    }

    const HostSession& _session;
    const RecordedRequest& _recorded;
    const std::shared_ptr<NEBSourceControlPlayer> _player =
        std::make_shared<NEBSourceControlPlayer>(_recorded.runs, _recorded.answers, comparedText);
    Outcome _outcome;
    JSON _delivered = JSON::array();
};

}  // namespace

ReplayedRequest replay(const HostSession& session, const RecordedRequest& recorded,
                       const OwnOperationMaker& makeOwn) {
    ReplayedRequest result{.number = recorded.number, .childCount = 0};
    for (const NEBSourceControlRecordedRun& run : recorded.runs) {
        result.childCount += run.children.size();
    }
    const auto type = recorded.request->type;
    result.name = NEBSourceControlRequestTypeName(type).value_or(std::to_string(type));
    if (recorded.outcome.is_null() || recorded.wasCancelled()) {
        result.notReplayed = recorded.outcome.is_null() ? "it was refused" : "it was cancelled";
        return result;
    }
    Performance performance(session, recorded);
    result.notReplayed = performance.perform(makeOwn);
    if (result.notReplayed.empty()) {
        for (const auto& difference : performance.player().differences()) {
            addDifference(difference, result.differences);
        }
        result.outcome = performance.outcome();
        result.delivered = performance.delivered();
        uniteBatches(result.outcome, result.delivered);
        const JSON records = resultOf(result.outcome, result.delivered);
        result.recordCount = records.is_array() ? records.size() : 0;
        compareResults(resultOf(recorded.outcome, recorded.delivered), records, result.differences);
        compareMembers(comparedMembers(recorded.outcome), comparedMembers(result.outcome),
                       result.differences);
    }
    return result;
}

}  // namespace neb::nebsc

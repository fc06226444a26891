#include "GitExtensions/GitSettings.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "GitExtensions/GitRecordFields.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/Text.h"

namespace neb {

namespace {

// ---- settings ---------------------------------------------------------------------------------

/// Absent for all settings.
std::optional<std::vector<std::string>> requestedNames(const NEBSourceControlRequest& request) {
    if (request.option(NEBSourceControlRequestOptionAll).boolValue()) {
        return std::nullopt;
    }
    const NEBValue& option = request.option(NEBSourceControlRequestOptionSettingNames);
    if (!option.isPresent()) {
        return std::vector<std::string>{"user.name", "user.email"};
    }
    std::vector<std::string> names;
    const std::vector<NEBValue> one{option};
    for (const NEBValue& name : option.array() != nullptr ? *option.array() : one) {
        names.push_back(gitCanonicalSettingName(name.description()));
    }
    return names;
}

/// Whether an operation sets the setting for its own git.
bool isPinned(std::string_view scope, std::string_view name) {
    return scope == "command" &&
           std::ranges::any_of(NEBSourceControlPinnedSettings(), [name](const auto& setting) {
               return equalIgnoringASCIICase(setting.key, name);
           });
}

/// Reads three pieces per setting: the scope, the origin, and the name, a line end and the value; a
/// name without a line end has no value.
class SettingParser : public GitNULRecordParser {
public:
    explicit SettingParser(std::optional<std::vector<std::string>> names)
        : _names(std::move(names)) {}

protected:
    void parsePiece(const Data& output, std::string_view piece,
                    NEBSourceControlResult& records) override {
        switch (_position) {
            case 0:
                _scope = piece;
                break;
            case 1:
                _origin = piece;
                break;
            default:
                addSetting(output, piece, records);
                break;
        }
        _position = (_position + 1) % 3;
    }

private:
    void addSetting(const Data& output, std::string_view setting,
                    NEBSourceControlResult& records) const {
        const std::size_t end = setting.find('\n');
        const std::string_view name = setting.substr(0, end);
        const bool isRequested = !_names || std::ranges::find(*_names, name) != _names->end();
        if (!isRequested || isPinned(_scope, name)) {
            return;
        }
        NEBDictionary& record = records.emplace_back();
        record.set(NEBSourceControlOperationKindKey, "setting");
        gitSetName(record, gitNameKeys, output, name);
        if (end != std::string_view::npos) {
            record.set(NEBSourceControlOperationValueKey, "");
            gitSetName(record, gitValueKeys, output, setting.substr(end + 1));
        }
        gitSetText(record, NEBSourceControlOperationScopeKey, _scope);
        gitSetName(record, gitOriginKeys, _origin);
    }

    std::optional<std::vector<std::string>> _names;
    int _position = 0;  // of the next piece
    std::string _scope, _origin;
};

// ---- identity ---------------------------------------------------------------------------------

constexpr std::pair<const char*, std::string_view> identities[] = {
    {"GIT_AUTHOR_IDENT", "author"},
    {"GIT_COMMITTER_IDENT", "committer"},
};

/// Reads "NAME <ADDRESS> TIME ZONE". Neither name nor address has "<" or ">".
NEBDictionary identityOf(std::string_view kind, const Data& line) {
    const std::string_view text = line;
    const std::size_t start = std::min(text.find('<'), text.size());
    const std::string_view address = text.substr(std::min(start + 1, text.size()));
    NEBDictionary record;
    record.set(NEBSourceControlOperationKindKey, kind);
    gitSetText(record, NEBSourceControlOperationAuthorKey, line, trimmed(text.substr(0, start)));
    gitSetText(record, NEBSourceControlOperationAuthorEmailKey, line,
               address.substr(0, address.find('>')));
    return record;
}

}  // namespace

std::string gitCanonicalSettingName(const std::string& name) {
    const std::size_t first = std::min(name.find('.'), name.size());
    const std::size_t last = name.rfind('.');
    if (last == std::string::npos || last == first) {
        return lowercaseASCII(name);
    }
    return lowercaseASCII(name.substr(0, first)) + name.substr(first, last - first) +
           lowercaseASCII(name.substr(last));
}

GitSettingListOperation::GitSettingListOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitReadingOperation(std::move(request)) {
    setArgumentsBehindDefaults({"config", "--null", "--show-scope", "--show-origin", "--list"});
}

std::unique_ptr<NEBSourceControlRecordParser> GitSettingListOperation::makeRecordParser() {
    return std::make_unique<SettingParser>(requestedNames(*request()));
}

/// A git that knows no identity fails, which is no error of this operation.
void GitSettingsOperation::main() {
    setOperationQueue(std::make_shared<OperationQueue>());
    NEBSourceControlResult records;
    for (const auto& [variable, kind] : identities) {
        const auto query = runQuery(request(), {"var", variable});
        if (!query->error() && !query->line().empty()) {
            records.push_back(identityOf(kind, Data(query->line())));
        }
    }
    if (error()) {
        return;
    }
    const auto list = run<GitSettingListOperation>(request());
    if (list->error()) {
        setError(list->error());
        return;
    }
    const NEBSourceControlResult settings = list->result().value_or(NEBSourceControlResult());
    records.insert(records.end(), settings.begin(), settings.end());
    setResult(std::move(records));
}

}  // namespace neb

#include "GitExtensions/GitChangeSettings.h"

#include <algorithm>

#include "GitExtensions/GitRecordFields.h"
#include "GitExtensions/GitSettings.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"

namespace neb {

namespace {

constexpr std::string_view digits = "0123456789";
constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

bool isWord(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) {
        return c == '-' || letters.find(c) != std::string_view::npos ||
               digits.find(c) != std::string_view::npos;
    });
}

/// Whether the text is "SECTION.VARIABLE" or "SECTION.SUBSECTION.VARIABLE"; see "Syntax" in
/// git-config(1).
bool isSettingName(std::string_view text) {
    const std::size_t first = text.find('.');
    const std::size_t last = text.rfind('.');
    if (first == std::string_view::npos) {
        return false;
    }
    const std::string_view variable = text.substr(last + 1);
    return isWord(text.substr(0, first)) && isWord(variable) &&
           letters.find(variable.front()) != std::string_view::npos &&
           text.find_first_of(std::string_view("\n\0", 2)) == std::string_view::npos;
}

/// Returns the names of the option.
std::vector<std::string> namesIn(const NEBValue& option) {
    const std::vector<NEBValue> one{option};
    std::vector<std::string> names;
    for (const NEBValue& name : option.array() != nullptr ? *option.array() : one) {
        if (const auto bytes = gitBytesOfValue(name)) {
            names.emplace_back(bytes->bytes());
        }
    }
    return names;
}

}  // namespace

void GitChangeSettingsOperation::perform() {
    const std::string wanted = action("");
    const NEBValue& scopeOption = request()->option(NEBSourceControlRequestOptionScope);
    const std::string scope = scopeOption.isPresent() ? scopeOption.description() : "local";
    const std::vector<std::string> names =
        namesIn(request()->option(NEBSourceControlRequestOptionSettingNames));
    const std::string name = names.empty() ? "" : names.front();
    if (wanted != "set" && wanted != "unset") {
        failForOption(NEBSourceControlRequestOptionAction);
    } else if (scope != "local" && scope != "global") {
        failForOption(NEBSourceControlRequestOptionScope);
    } else if (names.empty()) {
        failForOption(NEBSourceControlRequestOptionSettingNames);
    } else if (names.size() > 1) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "The request names " + std::to_string(names.size()) +
                 " settings; only one can be changed at a time.");
    } else if (!isSettingName(name)) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "\"" + textReplacingInvalidBytes(name) +
                 "\" is not the name of one setting, such as \"user.name\".");
    } else if (wanted == "set") {
        set(gitCanonicalSettingName(name), scope);
    } else {
        unset(gitCanonicalSettingName(name), scope);
    }
}

std::optional<std::vector<std::string>> GitChangeSettingsOperation::queriedValues(
    const std::string& name, const std::string& scope) {
    const auto query =
        runQuery(request(), {"config", "--null", "--" + scope, "--get-all", "--", name});
    if (!goesOnAfter(*query)) {
        return std::nullopt;
    }
    std::vector<std::string> values = gitNULSeparatedPieces(query->output());
    if (values.size() > 1 && !hasOption(NEBSourceControlRequestOptionAll)) {
        setRecords(name, scope, values);
        fail(NEBSourceControlRequestInvalidErrorClass,
             "The setting \"" + name + "\" has " + std::to_string(values.size()) +
                 " values. The request does not allow to change all of them.");
        return std::nullopt;
    }
    return values;
}

void GitChangeSettingsOperation::set(const std::string& name, const std::string& scope) {
    const auto value = gitBytesOfValue(request()->option(NEBSourceControlRequestOptionValue));
    if (!value) {
        failForOption(NEBSourceControlRequestOptionValue);
        return;
    }
    const std::string text(value->bytes());
    if (queriedValues(name, scope) &&
        runChange({"config", "--" + scope, "--replace-all", "--", name, text})) {
        setRecords(name, scope, {text});
    }
}

void GitChangeSettingsOperation::unset(const std::string& name, const std::string& scope) {
    const auto values = queriedValues(name, scope);
    if (!values) {
        return;
    }
    if (values->empty()) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "The setting \"" + name + "\" is not set " +
                 (scope == "local" ? "in this repository." : "for this user."));
    } else if (runChange({"config", "--" + scope, "--unset-all", "--", name})) {
        setRecords(name, scope, {values->back()});
    }
}

void GitChangeSettingsOperation::setRecords(const std::string& name, const std::string& scope,
                                            const std::vector<std::string>& values) {
    NEBSourceControlResult records;
    for (const std::string& value : values) {
        NEBDictionary& record =
            records.emplace_back(NEBDictionary{{NEBSourceControlOperationKindKey, "setting"},
                                               {NEBSourceControlOperationScopeKey, scope},
                                               {NEBSourceControlOperationValueKey, ""}});
        gitSetName(record, gitNameKeys, name);
        gitSetName(record, gitValueKeys, value);
    }
    setResult(std::move(records));
}

}  // namespace neb

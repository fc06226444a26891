#include "Doctor/UserSettings.h"

#include <algorithm>
#include <optional>

#include "Platform/Text.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

namespace {

std::optional<bool> booleanOf(std::string_view text) {
    const std::string value = lowercaseASCII(text);
    for (const std::string_view yes : {"true", "yes", "on", "1"}) {
        if (value == yes) {
            return true;
        }
    }
    for (const std::string_view no : {"false", "no", "off", "0"}) {
        if (value == no) {
            return false;
        }
    }
    return std::nullopt;
}

}  // namespace

UserSettings::UserSettings(std::string_view list) {
    const std::vector<std::string> texts = splitAtNUL(list);
    for (std::size_t i = 0; i + 1 < texts.size(); i += 2) {
        const std::string& entry = texts[i + 1];
        const std::size_t lineEnd = entry.find('\n');
        if (texts[i] != "command") {
            _settings.push_back(
                {texts[i], entry.substr(0, lineEnd),
                 lineEnd == std::string::npos ? "true" : entry.substr(lineEnd + 1)});
        }
    }
}

const Setting* UserSettings::last(std::string_view key) const {
    const std::string listed = lowercaseASCII(key);
    const auto setting =
        std::find_if(_settings.rbegin(), _settings.rend(),
                     [&listed](const Setting& candidate) { return candidate.key == listed; });
    return setting == _settings.rend() ? nullptr : &*setting;
}

std::string UserSettings::lastValue(std::string_view key) const {
    const Setting* setting = last(key);
    return setting == nullptr ? "" : setting->value;
}

bool UserSettings::isTrue(std::string_view key) const {
    return isSameSetting(lastValue(key), "true");
}

std::vector<std::string> UserSettings::allValues(std::string_view key) const {
    const std::string listed = lowercaseASCII(key);
    std::vector<std::string> values;
    for (const Setting& setting : _settings) {
        if (setting.key == listed) {
            values.push_back(setting.value);
        }
    }
    return values;
}

bool UserSettings::hasCloneFilter(std::string_view text) const {
    return std::any_of(_settings.begin(), _settings.end(), [text](const Setting& setting) {
        return setting.key.starts_with("remote.") && setting.key.ends_with(".partialclonefilter") &&
               setting.value.find(text) != std::string::npos;
    });
}

std::string UserSettings::lastScope(std::string_view key) const {
    const Setting* setting = last(key);
    return setting == nullptr ? "" : setting->scope;
}

std::vector<Setting> UserSettings::credentialHelpers() const {
    std::vector<Setting> helpers;
    for (const Setting& setting : _settings) {
        if (!setting.key.starts_with("credential.") || !setting.key.ends_with(".helper")) {
            continue;
        }
        if (setting.value.empty()) {
            helpers.clear();
        } else {
            helpers.push_back(setting);
        }
    }
    return helpers;
}

bool isSameSetting(std::string_view left, std::string_view right) {
    return left == right || (booleanOf(left) && booleanOf(left) == booleanOf(right));
}

}  // namespace neb::nebsc

// UserSettings.h - the git settings of the user, from all configuration files that apply in a
// folder.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

struct Setting {
    /// "system", "global", "local" or "worktree".
    std::string scope;
    /// As git lists it: section and name in lower case.
    std::string key;
    std::string value;
};

class UserSettings {
public:
    UserSettings() = default;
    /// Parses the output of "git config --list --show-scope -z". Skips the scope "command": those
    /// are the settings that nebsc passes to git itself.
    explicit UserSettings(std::string_view list);

    /// Returns the effective value; empty if it is not set. The key is not case-sensitive.
    [[nodiscard]] std::string lastValue(std::string_view key) const;
    /// Returns whether the effective value is "true" or an equal boolean.
    [[nodiscard]] bool isTrue(std::string_view key) const;
    /// Returns all values, in git's order.
    [[nodiscard]] std::vector<std::string> allValues(std::string_view key) const;
    /// Returns the scope of lastValue() ("local", "global" …); empty if it is not set.
    [[nodiscard]] std::string lastScope(std::string_view key) const;
    /// Returns whether a remote of a partial clone has a filter that contains the text: "tree:".
    [[nodiscard]] bool hasCloneFilter(std::string_view text) const;
    /// Returns the helpers in git's order. An empty setting clears those before it.
    [[nodiscard]] std::vector<Setting> credentialHelpers() const;

private:
    [[nodiscard]] const Setting* last(std::string_view key) const;

    std::vector<Setting> _settings;
};

/// Returns whether git treats two values alike: equal texts, or equal booleans such as "yes" and
/// "true".
[[nodiscard]] bool isSameSetting(std::string_view left, std::string_view right);

}  // namespace neb::nebsc

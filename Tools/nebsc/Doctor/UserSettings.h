// UserSettings.h - the user's own settings of git, from all files that count in a folder.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

/// One setting, and where it stands: "system", "global", "local", "worktree".
struct Setting {
    std::string scope;
    /// As git lists it: the section and the name in small letters.
    std::string key;
    std::string value;
};

class UserSettings {
public:
    UserSettings() = default;
    /// From what "git config --list --show-scope -z" prints. The entries that we add to a call
    /// ourselves are of the scope "command", and left out.
    explicit UserSettings(std::string_view list);

    /// The value that counts, in whatever letters the key is written; empty where there is none.
    [[nodiscard]] std::string lastValue(std::string_view key) const;
    /// Returns the scope of that value ("local", "global" …), or an empty text.
    [[nodiscard]] std::string lastScope(std::string_view key) const;
    /// In order. An empty helper takes back those before it.
    [[nodiscard]] std::vector<Setting> credentialHelpers() const;

private:
    [[nodiscard]] const Setting* last(std::string_view key) const;

    std::vector<Setting> _settings;
};

/// Whether two values are one for git: the same text, or the same truth in other words.
[[nodiscard]] bool isSameSetting(std::string_view left, std::string_view right);

}  // namespace neb::nebsc

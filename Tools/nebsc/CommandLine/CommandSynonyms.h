// CommandSynonyms.h - names that git and other systems give to commands of nebsc.
#pragma once

#include <span>
#include <string_view>

namespace neb::nebsc {

struct CommandSynonym {
    /// A command of git, an abbreviation or another common name: "restore", "ci", "rename".
    std::string_view synonym;
    /// The command of nebsc that does the same: "update".
    std::string_view name;
};

/// Returns all rows. A git command without a counterpart has none.
[[nodiscard]] std::span<const CommandSynonym> commandSynonyms();

/// Returns the nebsc command that does the same, or an empty text.
[[nodiscard]] std::string_view commandForSynonym(std::string_view synonym);

}  // namespace neb::nebsc

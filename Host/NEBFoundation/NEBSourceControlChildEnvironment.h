// NEBSourceControlChildEnvironment.h - the environment that child processes of operations get.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"

namespace neb {

/// What differs from child to child.
struct NEBSourceControlChildTraits {
    /// A name of the request holds a character that git would read as a pattern.
    bool hasPatternCharacters = false;
    /// Nobody waits for the work.
    bool isBackgroundWork = false;
    /// git writes whole buffers, not record by record, which is much quicker for a long output. Not
    /// for a git that talks with another, or starts a program that may: the answers would never
    /// leave their buffers.
    bool writesWholeBuffers = false;
    /// Hooks may run, whose own gits inherit what this one is told: it is told no more than it
    /// needs.
    bool mayRunHooks = false;
    /// What git puts into an archive is for its owner alone.
    bool archivesForOwner = false;
};

/// The host's own environment `inherited` (each element `NAME=value`) with what must not bleed into
/// git removed and what git must be told added; the tables in the source give the reason for each
/// variable. From any thread.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlChildEnvironment(
    const std::vector<std::string>& inherited, const NEBSourceControlChildTraits& traits);

/// A setting that git is told for a child that runs no hooks, whatever the user has configured.
struct NEBSourceControlPinnedSetting {
    std::string_view key, value;
};

/// All of them. From any thread.
[[nodiscard]] NEB_EXPORT std::vector<NEBSourceControlPinnedSetting>
NEBSourceControlPinnedSettings();

/// A variable that a child does not get.
struct NEBSourceControlIgnoredVariable {
    std::string name, value;
    /// Why, as a verb phrase: "ties a process to one repository".
    std::string_view reason;
};

/// Those of the environment `inherited` that NEBSourceControlChildEnvironment() removes, in its
/// order. From any thread.
[[nodiscard]] NEB_EXPORT std::vector<NEBSourceControlIgnoredVariable>
NEBSourceControlIgnoredVariables(const std::vector<std::string>& inherited);

/// The host's own environment. Not while another thread changes it.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlInheritedEnvironment();

}  // namespace neb

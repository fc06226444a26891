// NEBSourceControlChildEnvironment.h - the environment of the child processes of operations.
#pragma once

#include <chrono>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"

namespace neb {

/// A setting of git: the full name, such as "filter.lfs.clean", and the value.
struct NEBSourceControlSetting {
    std::string key, value;
};

/// The properties of a child process that decide about its environment.
struct NEBSourceControlChildTraits {
    /// A name of the request has a character that git would read as a pattern.
    bool hasPatternCharacters = false;
    /// No user waits for the result; git takes no optional locks.
    bool isBackgroundWork = false;
    /// git writes its output in full buffers instead of record by record, which is much faster for
    /// long outputs. Not for commands that communicate with another process, directly or through a
    /// program that they start: their messages would stay in the buffers.
    bool writesWholeBuffers = false;
    /// Hooks may run. The git processes that they start inherit the environment, so that no
    /// settings are pinned in it.
    bool mayRunHooks = false;
    /// The files of an archive are readable by their owner only.
    bool archivesForOwner = false;
    /// git may fetch objects that a partial clone lacks when it needs them.
    bool mayFetchObjects = true;
    /// How long git waits for a locked reference. 0: as the settings of the user say, else 100 ms,
    /// and 1 s for the file of packed references.
    std::chrono::milliseconds lockWait{0};
    /// Settings that override all others, in this order.
    std::span<const NEBSourceControlSetting> settings = {};
};

/// Returns the environment for a child: `inherited` (each element `NAME=value`) without the
/// variables that must not influence git, and with those that git requires. The tables in the
/// source state the reason for each variable. Thread-safe.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlChildEnvironment(
    const std::vector<std::string>& inherited, const NEBSourceControlChildTraits& traits);

/// Sets variables in the environment, each "NAME=value", in place of those with the same name.
NEB_EXPORT void NEBSourceControlSetVariables(std::vector<std::string>& environment,
                                             const std::vector<std::string>& variables);

/// A setting that overrides the configuration of the user, for children that run no hooks.
struct NEBSourceControlPinnedSetting {
    std::string_view key, value;
};

/// Returns all pinned settings. Thread-safe.
[[nodiscard]] NEB_EXPORT std::vector<NEBSourceControlPinnedSetting>
NEBSourceControlPinnedSettings();

/// A variable that children do not inherit.
struct NEBSourceControlIgnoredVariable {
    std::string name, value;
    /// The reason as a verb phrase: "ties a process to one repository".
    std::string_view reason;
};

/// Returns the variables of `inherited` that NEBSourceControlChildEnvironment() removes, in the
/// order of `inherited`. Thread-safe.
[[nodiscard]] NEB_EXPORT std::vector<NEBSourceControlIgnoredVariable>
NEBSourceControlIgnoredVariables(const std::vector<std::string>& inherited);

/// Returns the environment of this process. No other thread may change it meanwhile.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlInheritedEnvironment();

}  // namespace neb

// NEBSourceControlRepositoryPrograms.h - the programs that the settings of a repository name, and
// the settings that switch them off.
//
//     const auto programs = NEBSourceControlProgramsInSettings(listing);
//     traits.settings = programs.pinned;
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/Export.h"

namespace neb {

/// What the settings of a repository name. All names are as git prints them: section and last part
/// in lower case.
struct NEBSourceControlRepositoryPrograms {
    /// The settings that keep the programs from running, in the order in which git must read them:
    /// each has the value of the user or, without one, a value that names no program.
    std::vector<NEBSourceControlSetting> pinned;
    /// The settings of the repository that name programs, in its order, each once.
    std::vector<std::string> switchedOff;
    /// The settings of the repository that decide how a server is contacted, and that no other
    /// setting can replace.
    std::vector<std::string> transport;
    /// The path of the configuration file of the repository as git prints it: relative to the
    /// folder in which git ran, or to the top of the working copy. Empty if the file sets nothing.
    std::string file;
};

/// Reads the output of `git config --null --show-scope --show-origin --list`, git-config(1): for
/// each setting its scope, its origin, and its name, a line end and its value, each before a NUL
/// byte. A name without a line end has no value. What git reads from any file but those
/// of the system and the user counts as part of the repository. Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlRepositoryPrograms
NEBSourceControlProgramsInSettings(std::string_view listing);

}  // namespace neb

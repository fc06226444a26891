// HostileConfiguration.h - settings and variables that change all output of git.
#pragma once

#include <optional>
#include <string>

#include "Classes/Configuration/Variables.h"
#include "Support/TemporaryFolder.h"

namespace neb::test {

/// Sets the configuration for this process, and the git processes that it starts, while the object
/// exists. Its programs append their command line to a list and then hang for a while. Settings
/// that express an intention of the user are not included; see HonouredSettingsTest.cpp.
class HostileConfiguration {
public:
    HostileConfiguration();

    /// Returns the command lines of the configured programs that were started; empty if none was.
    [[nodiscard]] std::string startedPrograms() const { return _folder.read("started"); }

private:
    [[nodiscard]] VariableList variables() const;

    TemporaryFolder _folder;
    std::optional<Variables> _variables;
};

}  // namespace neb::test

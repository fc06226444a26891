// HostileConfiguration.h - settings and variables with which a user has changed all that git
// prints.
#pragma once

#include <optional>
#include <string>

#include "Classes/Configuration/Variables.h"
#include "Support/TemporaryFolder.h"

namespace neb::test {

/// In force for this process, and so for the gits that it starts, for as long as the object lives.
/// What it names as a program writes its call into a list, and then hangs for a while. Settings by
/// which a user says what git is to do are not in it; see HonouredSettingsTest.cpp.
class HostileConfiguration {
public:
    HostileConfiguration();

    /// The calls of programs that it names; empty when none was started.
    [[nodiscard]] std::string startedPrograms() const { return _folder.read("started"); }

private:
    [[nodiscard]] VariableList variables() const;

    TemporaryFolder _folder;
    std::optional<Variables> _variables;
};

}  // namespace neb::test

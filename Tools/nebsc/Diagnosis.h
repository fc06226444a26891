// Diagnosis.h - whether everything is in order for work with git here, and what to do where it is
// not.
#pragma once

#include <string>
#include <vector>

#include "Interruption.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "Trace.h"

namespace neb::nebsc {

enum class Health {
    ok,
    /// Good to know; nothing is wrong.
    note,
    problem,
};

struct Finding {
    Health health;
    /// What it is about: "git", "lock".
    std::string subject;
    /// One clause, as it is, not printable.
    std::string text;
    /// What to do; empty where there is nothing to do.
    std::string advice = {};
};

struct PlugInFile {
    const std::string& path;
    const NEBSourceControlPlugInLoad& load;
};

/// Looks at git, the plug-in, the working copy around the folder and the user's settings. Changes
/// nothing, runs no program but git, and of that nothing for which a repository's configuration
/// could choose another program; each git is given a few seconds. No passwords are in what is
/// found. A signal ends it.
[[nodiscard]] std::vector<Finding> diagnose(Interruption& interruption, const Trace& trace,
                                            const PlugInFile& plugIn, const std::string& folder);

}  // namespace neb::nebsc

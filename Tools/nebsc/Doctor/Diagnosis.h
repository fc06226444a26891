// Diagnosis.h - whether everything is in order for work with git here, and what to do where it is
// not.
#pragma once

#include <string>
#include <vector>

#include "Session/Interruption.h"
#include "Session/PlugInFile.h"
#include "Session/Trace.h"

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

struct DiagnosisSubject {
    const PlugInFile& plugIn;
    /// Absolute.
    const std::string& folder;
    /// Whether git fsck reads every object, which may take long.
    bool isFull = false;
};

/// Checks git, the plug-in, the repository around the folder and the user's settings. Changes
/// nothing, runs no program but git, and no git command for which a repository's configuration
/// could choose another program; nothing is fetched. Each git process has a few seconds, and after
/// two that do not end in time no other is started; only git fsck has no limit. No passwords are in
/// the findings. A signal ends it.
[[nodiscard]] std::vector<Finding> diagnose(Interruption& interruption, const Trace& trace,
                                            const DiagnosisSubject& subject);

}  // namespace neb::nebsc

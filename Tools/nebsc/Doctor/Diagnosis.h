// Diagnosis.h - checks of git, the repository and the settings, with advice for each problem.
#pragma once

#include <string>
#include <vector>

#include "Doctor/Finding.h"
#include "Session/Interruption.h"
#include "Session/PlugInFile.h"
#include "Session/Trace.h"

namespace neb::nebsc {

struct DiagnosisSubject {
    const PlugInFile& plugIn;
    /// Absolute.
    const std::string& folder;
    /// Whether to run git fsck, which reads every object and may be slow.
    bool isFull = false;
};

/// Checks git, the plug-in, the repository that contains the folder, and the user's settings.
/// Changes and fetches nothing. Runs only git, and no git command for which the repository's
/// configuration can name another program. Each git process has a time limit of a few seconds,
/// except git fsck; after two timeouts the remaining checks are skipped. The findings contain no
/// passwords. A signal ends the diagnosis.
[[nodiscard]] std::vector<Finding> diagnose(Interruption& interruption, const Trace& trace,
                                            const DiagnosisSubject& subject);

}  // namespace neb::nebsc

#include "Doctor/Diagnosis.h"

#include <span>

#include "Doctor/Checks.h"
#include "Terminal/ErrorText.h"

namespace neb::nebsc {

namespace {

using Check = void (*)(Examination&);

/// In the order of the output.
constexpr Check checksOfRepository[] = {
    checkLocks,   checkIndex,     checkReferences,     checkHEADCommit,
    checkObjects, checkWorktrees, checkUnfinishedWork, checkHooks,
};
constexpr Check checksOfUser[] = {
    checkSettings, checkIdentity, checkEnvironment, checkCredentials, checkSubversion,
};
/// Checks of the repository that need the settings of the user.
constexpr Check checksAfterSettings[] = {checkSpeed};

void runChecks(std::span<const Check> checks, Examination& examination) {
    for (const Check check : checks) {
        if (!examination.shouldStop()) {
            check(examination);
        }
    }
}

}  // namespace

void checkPlugIn(Examination& examination, const PlugInFile& plugIn) {
    if (!plugIn.load.plugIn) {
        examination.add(Health::problem, "plug-in", withSingleQuotes(plugIn.load.failure),
                        "Build or reinstall NEBGit, or give its path with --plugin.");
        return;
    }
    examination.add(Health::ok, "plug-in",
                    plugIn.path + ", " + plugIn.load.plugIn->name() + " " +
                        plugIn.load.plugIn->version() + ", contract version " +
                        std::to_string(NEBSourceControlContractVersion));
}

std::vector<Finding> diagnose(Interruption& interruption, const Trace& trace,
                              const DiagnosisSubject& subject) {
    Examination examination(interruption, trace, subject.folder);
    checkGit(examination);
    checkPlugIn(examination, subject.plugIn);
    if (!examination.hasGit) {
        return examination.takeFindings();
    }
    checkRepository(examination);
    if (examination.repository) {
        runChecks(checksOfRepository, examination);
        if (subject.isFull && !examination.shouldStop()) {
            checkIntegrity(examination);
        }
    }
    runChecks(checksOfUser, examination);
    runChecks(checksAfterSettings, examination);
    if (examination.shouldStop()) {
        examination.add(Health::problem, "git", "is too slow; the remaining checks were skipped",
                        "Check the disk or network drive that the repository is on.");
    }
    return examination.takeFindings();
}

}  // namespace neb::nebsc

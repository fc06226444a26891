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

/// Runs a check. Drops what it finds if it was interrupted, as git has not answered then.
void runCheck(Check check, Examination& examination) {
    const std::size_t count = examination.findingCount();
    check(examination);
    if (examination.isInterrupted()) {
        examination.keepFindings(count);
    }
}

void runChecks(std::span<const Check> checks, Examination& examination) {
    for (const Check check : checks) {
        if (!examination.shouldStop()) {
            runCheck(check, examination);
        }
    }
}

/// Runs the checks that need git.
void runChecksWithGit(Examination& examination, bool isFull) {
    runCheck(checkRepository, examination);
    if (examination.repository) {
        runChecks(checksOfRepository, examination);
        if (isFull && !examination.shouldStop()) {
            runCheck(checkIntegrity, examination);
        }
    }
    runChecks(checksOfUser, examination);
    runChecks(checksAfterSettings, examination);
}

void addSkippedChecks(Examination& examination) {
    if (examination.isInterrupted()) {
        examination.add(Health::problem, "checks",
                        "were interrupted; the remaining ones were skipped");
    } else if (examination.shouldStop()) {
        examination.add(Health::problem, "git", "is too slow; the remaining checks were skipped",
                        "Check the disk or network drive that the repository is on.");
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
    runCheck(checkGit, examination);
    checkPlugIn(examination, subject.plugIn);
    runCheck(checkSystem, examination);
    if (examination.hasGit) {
        runChecksWithGit(examination, subject.isFull);
    }
    addSkippedChecks(examination);
    return examination.takeFindings();
}

}  // namespace neb::nebsc

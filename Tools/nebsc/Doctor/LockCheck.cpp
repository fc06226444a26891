#include <chrono>

#include "Doctor/Checks.h"
#include "Doctor/LockFiles.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

/// A younger lock may belong to a git command that is between two of its programs.
constexpr auto ageOfFreshLock = std::chrono::seconds(10);

std::string namesOf(const std::vector<NEBSourceControlLockHolder>& holders) {
    std::string names;
    for (const NEBSourceControlLockHolder& holder : holders) {
        names.append(names.empty() ? "" : ", ").append(holder.command);
        names.append(" (").append(std::to_string(holder.process)).append(")");
    }
    return names;
}

}  // namespace

void checkLocks(Examination& examination) {
    const auto& [gitFolder, commonFolder, workingCopy] = *examination.repository;
    std::vector<std::string> folders{gitFolder};
    if (commonFolder != gitFolder) {
        folders.push_back(commonFolder);
    }
    const std::vector<NEBSourceControlLockFile> locks = findLockFiles(folders, workingCopy);
    if (locks.empty()) {
        examination.add(Health::ok, "locks", "no lock files found");
    }
    for (const NEBSourceControlLockFile& lock : locks) {
        const std::string what = lock.path + ", " + NEBSourceControlTextOfAge(lock.age) + " old";
        if (!lock.holders.empty()) {
            examination.add(Health::note, "lock", what + "; held by " + namesOf(lock.holders),
                            "Wait until it has ended.");
        } else if (lock.age < ageOfFreshLock) {
            examination.add(Health::note, "lock", what + "; its process may still be running",
                            "Run nebsc doctor again in a moment.");
        } else {
            examination.add(Health::problem, "lock",
                            what + "; no process holds it: it was left behind",
                            "Remove it with: rm " + shellQuoted(lock.path));
        }
    }
}

}  // namespace neb::nebsc

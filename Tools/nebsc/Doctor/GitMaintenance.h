// GitMaintenance.h - what git's own maintenance does for a repository, see git-maintenance(1).
#pragma once

#include <string>
#include <string_view>

#include "Doctor/Examination.h"

namespace neb::nebsc {

class GitMaintenance {
public:
    /// Both must outlive the object.
    GitMaintenance(const UserSettings& settings, const RepositoryLayout& repository);

    // Each of these returns a sentence that says what git does and when; empty if git does nothing.

    [[nodiscard]] std::string packsLooseObjects(long count) const;
    [[nodiscard]] std::string combinesPacks(long count) const;
    [[nodiscard]] std::string updatesCommitGraph() const;

private:
    [[nodiscard]] bool isScheduled(std::string_view task) const;
    /// Whether the task runs after commits, merges and fetches.
    [[nodiscard]] bool isAutomatic(std::string_view task) const;
    [[nodiscard]] bool isRegistered() const;

    const UserSettings& _settings;
    const RepositoryLayout& _repository;
    /// Whether "git maintenance run --auto" does anything.
    bool _runsAutomatically = false;
};

}  // namespace neb::nebsc

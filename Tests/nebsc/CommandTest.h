// CommandTest.h - a fixture for the commands of a working copy.
#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {

class CommandTest : public testing::Test {
protected:
    /// Runs nebsc in a folder of the working copy, by default at the top.
    [[nodiscard]] NebscOutcome nebsc(const std::vector<std::string>& arguments,
                                     std::string_view folder = "") const {
        return runNebsc(arguments, {.folder = repository.path(folder)});
    }
    /// Runs nebsc at the top with a stand-in for git.
    [[nodiscard]] NebscOutcome nebsc(const std::vector<std::string>& arguments,
                                     const StandInGit& git) const {
        return runNebsc(arguments, {.folder = repository.path(), .variables = {git.path()}});
    }
    /// The output of git status --porcelain.
    [[nodiscard]] std::string state() const {
        return repository.git(
            {"-c", "core.quotePath=false", "status", "--porcelain", "--untracked-files=all"});
    }
    [[nodiscard]] bool isThere(std::string_view name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(repository.path(name)));
    }
    [[nodiscard]] std::string content(std::string_view name) const {
        return repository.git({"cat-file", "blob", ":" + std::string(name)});
    }

    TestRepository repository;
};

/// Expects success, this standard output and an empty standard error.
inline void expectDone(const NebscOutcome& outcome, const std::string& output = "") {
    EXPECT_EQ(outcome.output, output);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

/// Expects the exit status, an empty standard output and a standard error that matches.
template <typename Matcher>
void expectFailed(const NebscOutcome& outcome, const Matcher& errors, int exitStatus = 1) {
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, errors);
    EXPECT_EQ(outcome.exitStatus, exitStatus);
}

}  // namespace neb::test

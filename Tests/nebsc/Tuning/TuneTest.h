// TuneTest.h - a test fixture that runs `nebsc tune`.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "nebsc/CommandTest.h"

namespace neb::test {

class TuneTest : public CommandTest {
protected:
    TuneTest() {
        repository.commitFile("a.c", "1\n");
        repository.commitFile("b.c", "2\n");
        intercept("");
    }

    /// Lets git run the cases of a shell's `case` for its arguments before the real git. The test
    /// of the file system, which takes seconds, always succeeds unless a case replaces it, and git
    /// has no file system monitor (git for Linux has one since 2.55).
    void intercept(const std::string& cases) const {
        _programs.writeProgram("git", "#!/bin/sh\ncase \"$*\" in\n" + cases +
                                          "\n*--test-untracked-cache*) exit 0;;\n"
                                          "*--build-options*) exec /usr/bin/git version;;\nesac\n"
                                          "exec /usr/bin/git \"$@\"\n");
    }
    [[nodiscard]] NebscSurroundings surroundings(const std::string& folder) const {
        return {.folder = folder, .variables = {{"PATH", _programs.path() + ":/usr/bin:/bin"}}};
    }
    /// Runs `nebsc tune` in a folder; steps that gain little are offered as well.
    [[nodiscard]] NebscOutcome tuneIn(const std::string& folder,
                                      std::vector<std::string> options) const {
        options.insert(options.begin(), {"tune", "--all"});
        return runNebsc(options, surroundings(folder));
    }
    [[nodiscard]] NebscOutcome tune(const std::vector<std::string>& options) const {
        return tuneIn(repository.path(), options);
    }
    /// Returns the state of each step in the JSON of a run, by its cause.
    [[nodiscard]] static std::map<std::string, std::string> statesIn(const NebscOutcome& outcome) {
        std::map<std::string, std::string> states;
        const auto json = outcome.json();
        for (const auto& step : json["steps"]) {
            states[step["cause"]] = step["state"];
        }
        return states;
    }
    /// Returns the message of a step in the JSON of a run; empty without one.
    [[nodiscard]] static std::string messageIn(const NebscOutcome& outcome,
                                               const std::string& cause) {
        const auto json = outcome.json();
        for (const auto& step : json["steps"]) {
            if (step["cause"] == cause && step["message"].is_string()) {
                return step["message"];
            }
        }
        return "";
    }
    /// Returns the settings of the repository.
    [[nodiscard]] std::string settings() const {
        return repository.git({"config", "--local", "--list"});
    }

    TemporaryFolder _programs;
};

}  // namespace neb::test

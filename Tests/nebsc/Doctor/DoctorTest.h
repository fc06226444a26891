// DoctorTest.h - a test fixture that runs `nebsc doctor`.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "nebsc/CommandTest.h"

namespace neb::test {

class DoctorTest : public CommandTest {
protected:
    using Variables = std::vector<std::pair<std::string, std::optional<std::string>>>;

    /// Runs `nebsc doctor` in the folder and returns the findings with the subject.
    [[nodiscard]] static nlohmann::ordered_json findingsIn(
        const std::string& folder, const std::string& subject, const Variables& variables = {},
        const std::vector<std::string>& options = {}) {
        auto chosen = nlohmann::ordered_json::array();
        std::vector<std::string> arguments{"doctor", "--json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto json = runNebsc(arguments, {.folder = folder, .variables = variables}).json();
        for (const auto& finding : json["findings"]) {
            if (finding["subject"] == subject) {
                chosen.push_back(finding);
            }
        }
        return chosen;
    }
    /// Does the same at the top of the working copy.
    [[nodiscard]] nlohmann::ordered_json findings(const std::string& subject,
                                                  const Variables& variables = {}) const {
        return findingsIn(repository.path(), subject, variables);
    }
};

/// Matches a list of one finding by its health, and by matchers for its text and advice.
MATCHER_P3(IsOneFinding, health, text, advice, std::string("is one finding: ") + health) {
    if (arg.size() != 1 || arg[0]["health"] != health) {
        *result_listener << "it is " << arg.dump(2);
        return false;
    }
    const std::string found = arg[0]["advice"].is_null() ? "" : arg[0]["advice"];
    return testing::ExplainMatchResult(text, arg[0]["text"].template get<std::string>(),
                                       result_listener) &&
           testing::ExplainMatchResult(advice, found, result_listener);
}

}  // namespace neb::test

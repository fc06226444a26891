// HunkTest.h - a fixture for commands that ask about each hunk.
#pragma once

#include <algorithm>

#include "nebsc/CommandTest.h"

namespace neb::test {

/// A file of 40 lines; the lines with these numbers have another text.
inline std::string numberedLines(const std::vector<int>& changed,
                                 std::string_view text = "changed\n") {
    std::string lines;
    for (int line = 1; line <= 40; ++line) {
        const bool isChanged = std::find(changed.begin(), changed.end(), line) != changed.end();
        lines += isChanged ? std::string(text) : "line " + std::to_string(line) + "\n";
    }
    return lines;
}

class HunkTest : public CommandTest {
protected:
    /// Runs the command with these answers on standard input.
    [[nodiscard]] NebscOutcome answering(const std::vector<std::string>& arguments,
                                         const std::string& answers) const {
        return runNebsc(arguments, {.folder = repository.path(), .input = answers});
    }
    void stage(const std::string& answers) const {
        EXPECT_EQ(answering({"stage", "-p"}, answers).errors, "");
    }
    void unstage(const std::string& answers) const {
        EXPECT_EQ(answering({"unstage", "-p"}, answers).errors, "");
    }
    /// Commits a file, and changes these lines of it.
    void change(const std::string& name, const std::vector<int>& lines) const {
        repository.commitFile(name, numberedLines({}));
        repository.write(name, numberedLines(lines));
    }
};

}  // namespace neb::test

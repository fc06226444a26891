// SharingTest.h - a fixture for the commands that exchange commits: two people and a bare
// repository.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "nebsc/CommandTest.h"

namespace neb::test {

class SharingTest : public testing::Test {
protected:
    /// Both have the file "a" on the branch main, which tracks origin's.
    void SetUp() override {
        ann = std::make_unique<TestRepository>();
        ann->git({"init", "--quiet", "--bare", bare()});
        ann->commitFile("a", "1\n2\n3\n");
        ann->git({"remote", "add", "origin", bare()});
        ann->git({"push", "--quiet", "--set-upstream", "origin", "main"});
        ben = std::make_unique<TestRepository>(bare());
    }

    [[nodiscard]] std::string bare() const { return folder.path("shared.git"); }
    [[nodiscard]] static NebscOutcome nebsc(const TestRepository& who,
                                            const std::vector<std::string>& words,
                                            std::string_view inFolder = "") {
        return runNebsc(words, {.folder = who.path(inFolder)});
    }
    [[nodiscard]] static NebscOutcome nebsc(const TestRepository& who,
                                            const std::vector<std::string>& words,
                                            const StandInGit& git) {
        return runNebsc(words, {.folder = who.path(), .variables = {git.path()}});
    }
    /// 12 characters.
    [[nodiscard]] static std::string revision(const TestRepository& who,
                                              const std::string& name = "HEAD") {
        return who.git({"rev-parse", name}).substr(0, 12);
    }
    /// The same in the bare repository.
    [[nodiscard]] std::string shared(const std::string& branch = "main") const {
        return ann->git({"--git-dir=" + bare(), "rev-parse", branch}).substr(0, 12);
    }
    void share(const TestRepository& who, const std::string& branch = "main") const {
        who.git({"push", "--quiet", "origin", "HEAD:refs/heads/" + branch});
    }

    TemporaryFolder folder;
    std::unique_ptr<TestRepository> ann, ben;
};

}  // namespace neb::test

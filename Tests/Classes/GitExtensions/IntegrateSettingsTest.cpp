// What an integration does in spite of the settings of the user, and in a new repository.

#include <filesystem>

#include "Classes/GitExtensions/StoppableTest.h"

namespace neb::test {
namespace {

class IntegrateAlways : public Stoppable {};

/// The settings that could change what an integration does.
constexpr std::pair<const char*, const char*> integrationSettings[] = {
    {"merge.ff", "false"},
    {"merge.autoStash", "true"},
    {"pull.rebase", "true"},
    {"pull.ff", "only"},
    {"rebase.autoStash", "true"},
    {"rebase.autoSquash", "true"},
    {"rebase.backend", "apply"},
    {"rebase.updateRefs", "true"},
    {"rebase.forkPoint", "true"},
    {"rebase.rebaseMerges", "true"},
    {"branch.main.mergeOptions", "--squash --no-commit --no-ff"},
};

TEST_F(IntegrateAlways, IsNotChangedBySettings) {
    for (const auto& [name, value] : integrationSettings) {
        repository.git({"config", name, value});
    }
    makeConflictingBranch();
    makeEasyBranch();
    const std::string main = head();
    expectMoved(*integrated("merge", "easy"), main);
    EXPECT_EQ(git({"log", "-1", "--format=%P"}), main + " " + git({"rev-parse", "easy"}));
    EXPECT_EQ(status(), "");
    repository.git({"reset", "-q", "--hard", "easy~1"});
    expectMoved(*integrated("merge", "easy"), git({"rev-parse", "easy~1"}));
    EXPECT_EQ(head(), git({"rev-parse", "easy"})) << "a fast-forward";
    repository.git({"reset", "-q", "--hard", main});
    repository.git({"commit", "-q", "--allow-empty", "-m", "fixup! main"});
    repository.git({"branch", "other", "HEAD~1"});
    const std::string before = head();
    expectMoved(*integrated("rebase", "easy"), before);
    EXPECT_EQ(git({"log", "--format=%s", "easy..HEAD"}), "fixup! main\na commit");
    EXPECT_EQ(git({"rev-parse", "other"}), main) << "no other branch moves";
}

TEST_F(IntegrateAlways, StashesNoLocalChanges) {
    repository.git({"config", "rebase.autoStash", "true"});
    repository.git({"config", "merge.autoStash", "true"});
    makeConflictingBranch();
    makeEasyBranch();
    repository.write("a.c", "mine\n");
    repository.write("b.c", "untracked\n");
    const std::string before = head();
    for (const char* strategy : {"merge", "rebase"}) {
        EXPECT_NE(integrated(strategy, "easy")->error(), std::nullopt) << strategy;
        EXPECT_EQ(head(), before);
        EXPECT_EQ(status(), std::string(" M a.c\0?? b.c\0", 14));
        EXPECT_EQ(git({"stash", "list"}), "");
    }
}

/// The upstream branch of a new repository is fetched first.
TEST_F(IntegrateAlways, FillsABranchWithoutCommits) {
    const TestRepository source;
    source.commitFile("a.c", "1\n");
    for (const char* strategy : {"merge", "rebase", "fast-forward"}) {
        const TestRepository empty;
        empty.git({"remote", "add", "origin", source.path()});
        empty.git({"config", "branch.main.remote", "origin"});
        empty.git({"config", "branch.main.merge", "refs/heads/main"});
        empty.write("a.c", "mine\n");
        const auto request = requestFor(NEBSourceControlRequestIntegrate, empty.path());
        request->repositoryToAuthenticate = request->sourceTree;
        request->options = NEBDictionary{{NEBSourceControlRequestOptionStrategy, strategy}};
        EXPECT_THAT(performed(request)->error(),
                    HasErrorClass(NEBSourceControlUntrackedInTheWayErrorClass));
        std::filesystem::remove(empty.path("a.c"));
        EXPECT_EQ(performed(request)->error(), std::nullopt) << strategy;
        EXPECT_EQ(empty.git({"rev-parse", "HEAD"}), source.git({"rev-parse", "HEAD"}));
        EXPECT_EQ(empty.git({"status", "--porcelain"}), "");
    }
    const TestRepository lonely;
    EXPECT_EQ(errorClassOf(requestFor(NEBSourceControlRequestIntegrate, lonely.path())),
              NEBSourceControlNoUpstreamErrorClass);
}

}  // namespace
}  // namespace neb::test

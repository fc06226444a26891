// What an integration does in spite of the settings of the user, and in a new repository.

#include <algorithm>
#include <filesystem>

#include "Classes/GitExtensions/StoppableTest.h"

namespace neb::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

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

/// Settings with which git takes one side of a conflict, and reports success.
constexpr std::pair<const char*, const char*> settingsOfSides[] = {
    {"branch.main.mergeOptions", "-X theirs"},
    {"branch.main.mergeOptions", "-s ours"},
    {"pull.twohead", "ours"},
    {"pull.twohead", "ort ours"},
};

TEST_F(IntegrateAlways, TakesNoSideOfAConflict) {
    makeConflictingBranch();
    const std::string before = head();
    for (const auto& [name, value] : settingsOfSides) {
        SCOPED_TRACE(std::string(name) + " " + value);
        repository.git({"config", name, value});
        for (const char* strategy : {"merge", "rebase"}) {
            expectConflict(*integrated(strategy, "side"));
            EXPECT_EQ(finished("abort")->error(), std::nullopt);
        }
        expectConflict(*picked("cherry-pick", "side"));
        EXPECT_EQ(finished("abort")->error(), std::nullopt);
        expectConflict(*picked("revert", "side"));
        EXPECT_EQ(finished("abort")->error(), std::nullopt);
        EXPECT_THAT(integrated("fast-forward", "side")->error(),
                    HasErrorClass(NEBSourceControlDivergedErrorClass));
        repository.git({"config", "--unset", name});
    }
    EXPECT_EQ(head(), before);
}

/// The name of a branch can have characters with a meaning on the command line of git.
TEST_F(IntegrateAlways, TakesNoSideOnABranchWithAnyName) {
    makeConflictingBranch();
    for (const std::string name : {"a=b", "A.b.c", "it's \"x\"", "b\xe4r"}) {
        std::string branch = name;
        std::ranges::replace(branch, ' ', '_');
        repository.git({"checkout", "-q", "-b", branch, "main"});
        repository.git({"config", "branch." + branch + ".mergeOptions", "-X theirs"});
        expectConflict(*integrated("merge", "side"));
        EXPECT_EQ(finished("abort")->error(), std::nullopt) << branch;
    }
}

/// The settings of a strategy that takes no side stay.
TEST_F(IntegrateAlways, KeepsTheStrategyOfTheUserThatTakesNoSide) {
    makeConflictingBranch();
    makeEasyBranch();
    repository.git({"config", "pull.twohead", "ort"});
    const auto merged = integrated("merge", "easy");
    EXPECT_EQ(merged->error(), std::nullopt);
    EXPECT_THAT(commandLinesOf(*merged), Not(Contains(HasSubstr("--strategy"))));
}

/// The text of a commit, which the destination may name, has characters of patterns.
TEST_F(IntegrateAlways, FindsTheConflictsOfACommitNamedByItsText) {
    makeConflictingBranch();
    repository.git({"commit", "-q", "--allow-empty", "-m", "main"});
    repository.git({"checkout", "-q", "side"});
    repository.git({"commit", "-q", "--allow-empty", "-m", "of [side]"});
    repository.git({"checkout", "-q", "main"});
    expectConflict(*integrated("merge", ":/^of .side."));
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

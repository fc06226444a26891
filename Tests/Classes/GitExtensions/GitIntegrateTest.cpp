#include "GitExtensions/GitIntegrate.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "Classes/GitExtensions/StoppableTest.h"

namespace neb::test {
namespace {

using testing::ElementsAre;

class Integrate : public Stoppable {};
class Finish : public Stoppable {};
class Pick : public Stoppable {};

// ---- integrate --------------------------------------------------------------------------------

TEST_F(Integrate, MergesRebasesAndFastForwards) {
    makeConflictingBranch();
    makeEasyBranch();
    const std::string main = head();
    expectMoved(*integrated("merge", "easy"), main);
    EXPECT_EQ(git({"log", "-1", "--format=%P %s"}),
              main + " " + git({"rev-parse", "easy"}) + " Merge branch 'easy'");
    const std::string merged = head();
    expectMoved(*integrated("merge", "easy"), merged);
    EXPECT_EQ(head(), merged);
    repository.git({"reset", "-q", "--hard", main});
    expectMoved(*integrated("rebase", "easy"), main);
    EXPECT_EQ(git({"rev-parse", "HEAD~1"}), git({"rev-parse", "easy"}));
    EXPECT_THAT(integrated("fast-forward", "side")->error(),
                HasErrorClass(NEBSourceControlDivergedErrorClass));
    repository.git({"reset", "-q", "--hard", "easy~1"});
    expectMoved(*integrated("fast-forward", "easy"), git({"rev-parse", "easy~1"}));
    EXPECT_EQ(head(), git({"rev-parse", "easy"}));
}

TEST_F(Integrate, StopsAtConflicts) {
    makeConflictingBranch();
    const std::string main = head();
    for (const char* strategy : {"merge", "rebase"}) {
        expectConflict(*integrated(strategy, "side"));
        EXPECT_EQ(status(), std::string("UU a.c\0", 7));
        EXPECT_THAT(integrated(strategy, "side")->error(),
                    HasErrorClass(strategy == std::string("merge")
                                      ? NEBSourceControlConflictUnresolvedErrorClass
                                      : NEBSourceControlMergeUnfinishedErrorClass));
        expectMoved(
            *finished("abort"),
            git({"rev-parse", strategy == std::string("merge") ? main : std::string("side")}));
        EXPECT_EQ(head(), main);
    }
}

TEST_F(Integrate, FetchesTheUpstreamBranchOrTheNamedOne) {
    repository.commitFile("a.c", "1");
    const TestRepository clone(repository.path());
    const auto integratedThere = [&](NEBDictionary options) {
        auto request = requestFor(NEBSourceControlRequestIntegrate, clone.path());
        request->options = std::move(options);
        return performed(request);
    };
    repository.commitFile("a.c", "2");
    EXPECT_EQ(integratedThere({})->error(), std::nullopt);
    EXPECT_EQ(std::string(trimmed(clone.git({"rev-parse", "HEAD"}))), head());
    repository.git({"checkout", "-q", "-b", "b\xe4r"});
    repository.commitFile("a.c", "3");
    EXPECT_EQ(integratedThere({{NEBSourceControlRequestOptionRemoteName, "origin"},
                               {NEBSourceControlRequestOptionBranch, "b\xe4r"}})
                  ->error(),
              std::nullopt);
    EXPECT_EQ(std::string(trimmed(clone.git({"rev-parse", "HEAD"}))), head());
    for (const char* refspec : {"main:other", "+main", "*", ""}) {
        EXPECT_THAT(integratedThere({{NEBSourceControlRequestOptionRemoteName, "origin"},
                                     {NEBSourceControlRequestOptionBranch, refspec}})
                        ->error(),
                    HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    }
    EXPECT_THAT(integratedThere({{NEBSourceControlRequestOptionRemoteName, "origin"},
                                 {NEBSourceControlRequestOptionBranch, "nosuch"}})
                    ->error(),
                HasErrorClass(NEBSourceControlRemoteBranchUnknownErrorClass));
}

TEST_F(Integrate, NamesAnUpstreamBranchThatIsGone) {
    repository.commitFile("a.c", "1");
    repository.git({"branch", "topic"});
    const TestRepository clone(repository.path());
    clone.git({"checkout", "-q", "topic"});
    repository.git({"branch", "-q", "-D", "topic"});
    clone.git({"fetch", "-q", "--prune"});
    const auto gone = performed(requestFor(NEBSourceControlRequestIntegrate, clone.path()));
    EXPECT_THAT(gone->error(), HasErrorClass(NEBSourceControlRemoteBranchUnknownErrorClass));
    EXPECT_EQ(gone->error()->localizedDescription(),
              "The upstream branch \"origin/topic\" does not exist any more, or is not one of the "
              "branches that are fetched.");
}

TEST_F(Integrate, NamesTheRebaseThatLeavesNoBranch) {
    makeConflictingBranch();
    EXPECT_NE(repository.gitStatus({"rebase", "-q", "side"}), 0);
    const auto refused = integrated("merge", {});
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlMergeUnfinishedErrorClass));
    EXPECT_EQ(refused->error()->localizedDescription(),
              "The operation requires a branch, and none is checked out: an operation of the kind "
              "\"rebase\" is not finished.");
}

TEST_F(Integrate, SaysWhyNot) {
    repository.commitFile("a.c", "1");
    EXPECT_THAT(integrated("merge", {})->error(),
                HasErrorClass(NEBSourceControlNoUpstreamErrorClass));
    EXPECT_THAT(integrated("octopus", "main")->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    for (const char* strategy : {"merge", "rebase", "fast-forward"}) {
        for (const char* revision : {"nosuch", "--abort"}) {
            EXPECT_THAT(integrated(strategy, revision)->error(),
                        HasErrorClass(NEBSourceControlRevisionUnknownErrorClass))
                << strategy << revision;
        }
    }
    EXPECT_THAT(
        performed(NEBSourceControlRequestIntegrate, {{NEBSourceControlRequestOptionBranch, "main"}})
            ->error(),
        HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    repository.git({"checkout", "-q", "--detach"});
    EXPECT_THAT(integrated("merge", {})->error(),
                HasErrorClass(NEBSourceControlNoCurrentBranchErrorClass));
}

TEST_F(Integrate, LeavesLocalChangesAlone) {
    makeConflictingBranch();
    repository.write("a.c", "own\n");
    EXPECT_THAT(integrated("merge", "side")->error(),
                HasErrorClass(NEBSourceControlLocalChangesErrorClass));
    EXPECT_NE(integrated("rebase", "side")->error(), std::nullopt);
    EXPECT_EQ(git({"diff", "--name-only"}), "a.c");
}

// ---- finish -----------------------------------------------------------------------------------

TEST_F(Finish, ContinuesWhatIsResolved) {
    makeConflictingBranch();
    const std::string main = head();
    const auto stopped = [&](const std::string& command) {
        repository.git({"reset", "-q", "--hard", main});
        EXPECT_NE(repository.gitStatus({command, "side"}), 0);
    };
    for (const std::string command : {"merge", "rebase", "cherry-pick"}) {
        stopped(command);
        EXPECT_THAT(finished("continue")->error(),
                    HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass))
            << command;
        resolve();
        const std::string before = head();
        expectMoved(*finished("continue"), before);
        EXPECT_NE(head(), before) << command;
        EXPECT_EQ(status(), "");
        EXPECT_THAT(finished("continue")->error(),
                    HasErrorClass(NEBSourceControlNothingInProgressErrorClass));
    }
}

TEST_F(Finish, SkipsAndAborts) {
    makeConflictingBranch();
    const std::string main = head();
    EXPECT_NE(repository.gitStatus({"rebase", "side"}), 0);
    EXPECT_EQ(finished("skip")->error(), std::nullopt);
    EXPECT_EQ(head(), git({"rev-parse", "side"}));
    repository.git({"reset", "-q", "--hard", main});
    EXPECT_NE(repository.gitStatus({"merge", "side"}), 0);
    EXPECT_THAT(finished("skip")->error(), HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    expectMoved(*finished("abort"), main);
    EXPECT_EQ(status(), "");
    for (const std::string command : {"cherry-pick", "revert"}) {
        EXPECT_NE(repository.gitStatus({command, "side"}), 0);
        EXPECT_EQ(finished("abort")->error(), std::nullopt) << command;
        EXPECT_EQ(head(), main);
    }
    EXPECT_THAT(finished("abort")->error(),
                HasErrorClass(NEBSourceControlNothingInProgressErrorClass));
    EXPECT_THAT(finished("quit")->error(), HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
}

// ---- pick -------------------------------------------------------------------------------------

TEST_F(Pick, AppliesAndReverts) {
    makeConflictingBranch();
    makeEasyBranch();
    const std::string main = head();
    expectMoved(*picked("cherry-pick", "easy"), main);
    EXPECT_EQ(git({"log", "-1", "--format=%s"}), "Easy");
    const std::string applied = head();
    expectMoved(*picked("revert", "HEAD"), applied);
    EXPECT_EQ(git({"rev-parse", "HEAD^{tree}"}), git({"rev-parse", main + "^{tree}"}));
    expectConflict(*picked("cherry-pick", "side"));
    EXPECT_EQ(finished("abort")->error(), std::nullopt);
    expectConflict(*picked("revert", "side"));
    EXPECT_EQ(finished("abort")->error(), std::nullopt);
    repository.git({"merge", "-q", "--no-edit", "easy"});
    EXPECT_NE(picked("revert", "HEAD")->error(), std::nullopt);
    EXPECT_EQ(picked("revert", "HEAD", {{NEBSourceControlRequestOptionMainline, 1}})->error(),
              std::nullopt);
}

TEST_F(Pick, ResetsAsFarAsTheModeSays) {
    repository.commitFile("a.c", "1");
    const std::string first = head();
    repository.commitFile("a.c", "2");
    const std::string second = head();
    const std::pair<const char*, std::string> modes[] = {
        {"soft", std::string("M  a.c\0", 7)},
        {"mixed", std::string(" M a.c\0", 7)},
        {"hard", ""},
    };
    for (const auto& [mode, expected] : modes) {
        expectMoved(*picked("reset", first, {{NEBSourceControlRequestOptionResetMode, mode}}),
                    second);
        EXPECT_EQ(status(), expected);
        repository.git({"reset", "-q", "--hard", second});
    }
}

TEST_F(Pick, RefusesAHardResetThatLosesWork) {
    repository.commitFile("a.c", "1");
    repository.commitFile("a.c", "2");
    repository.write("a.c", "3");
    NEBDictionary hard{{NEBSourceControlRequestOptionResetMode, "hard"}};
    const auto refused = picked("reset", "HEAD~1", hard);
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalChangesErrorClass));
    EXPECT_THAT(refused->error()->files, ElementsAre("a.c"));
    NEBDictionary dryRun = hard;
    dryRun.set(NEBSourceControlRequestOptionDryRun, true);
    EXPECT_EQ(picked("reset", "HEAD~1", dryRun)->result(),
              NEBSourceControlResult({{{NEBSourceControlOperationPathKey, "a.c"},
                                       {NEBSourceControlOperationStateKey, "modified"}}}));
    EXPECT_EQ(git({"diff", "--name-only"}), "a.c");
    hard.set(NEBSourceControlRequestOptionForce, true);
    EXPECT_EQ(picked("reset", "HEAD~1", hard)->error(), std::nullopt);
    EXPECT_EQ(status(), "");
}

/// git itself overwrites them and prints nothing.
TEST_F(Pick, RefusesAHardResetThatOverwritesUntrackedFiles) {
    repository.commitFile("a.c", "1");
    repository.commitFile("b.c", "1");
    repository.git({"rm", "-q", "b.c"});
    repository.git({"commit", "-q", "-m", "m"});
    repository.write("b.c", "own");
    NEBDictionary hard{{NEBSourceControlRequestOptionResetMode, "hard"}};
    EXPECT_THAT(picked("reset", "HEAD~1", hard)->error(),
                HasErrorClass(NEBSourceControlUntrackedInTheWayErrorClass));
    EXPECT_EQ(status(), std::string("?? b.c\0", 7));
    NEBDictionary dryRun = hard;
    dryRun.set(NEBSourceControlRequestOptionDryRun, true);
    EXPECT_EQ(picked("reset", "HEAD~1", dryRun)->result(),
              NEBSourceControlResult({{{NEBSourceControlOperationPathKey, "b.c"},
                                       {NEBSourceControlOperationStateKey, "untracked"}}}));
    EXPECT_EQ(picked("reset", "HEAD", dryRun)->result(), NEBSourceControlResult());
    hard.set(NEBSourceControlRequestOptionForce, true);
    EXPECT_EQ(picked("reset", "HEAD~1", hard)->error(), std::nullopt);
    EXPECT_EQ(status(), "");
}

TEST_F(Pick, RefusesAHardResetThatReplacesUntrackedFiles) {
    repository.commitFile("a.c", "1");
    repository.commitFile("dir/b.c", "1");
    std::filesystem::remove_all(repository.path("dir"));
    const NEBDictionary hard{{NEBSourceControlRequestOptionResetMode, "hard"}};
    const auto expectRefused = [&](const char* obstacle) {
        const auto refused = picked("reset", "HEAD", hard);
        EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalChangesErrorClass));
        EXPECT_THAT(refused->error()->files, ElementsAre(obstacle));
    };
    repository.write("dir", "own");
    expectRefused("dir");
    std::filesystem::remove(repository.path("dir"));
    std::filesystem::create_symlink("/", repository.path("dir"));
    expectRefused("dir");
    std::filesystem::remove(repository.path("dir"));
    std::filesystem::remove(repository.path("a.c"));
    std::filesystem::create_directory(repository.path("a.c"));
    std::filesystem::create_directory(repository.path("a.c/sub"));
    repository.write("a.c/sub/own", "own");
    expectRefused("a.c");
    std::filesystem::remove_all(repository.path("a.c"));
    EXPECT_EQ(picked("reset", "HEAD", hard)->error(), std::nullopt);
    EXPECT_EQ(status(), "");
}

/// git lists only the conflicts below its working directory.
TEST_F(Pick, SeesConflictsOutsideOfTheLocation) {
    makeConflictingBranch();
    repository.commitFile("sub/b.c", "1");
    auto merge = requestFor(NEBSourceControlRequestIntegrate, repository.path("sub"));
    merge->destination = "side";
    const auto stopped = performed(merge);
    EXPECT_THAT(stopped->error(), HasErrorClass(NEBSourceControlConflictErrorClass));
    EXPECT_THAT(pathsOf(*stopped), ElementsAre("", "../a.c"));
    EXPECT_THAT(stopped->error()->files, ElementsAre("../a.c"));
    auto reset = requestFor(NEBSourceControlRequestPick, repository.path("sub"));
    reset->startingRevision = "HEAD";
    reset->options = NEBDictionary{{NEBSourceControlRequestOptionAction, "reset"}};
    const auto unstage = requestFor(NEBSourceControlRequestUnstage, repository.path("sub"));
    for (const auto& request : {reset, unstage}) {
        EXPECT_THAT(performed(request)->error(),
                    HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
        EXPECT_EQ(status(), std::string("UU a.c\0", 7));
    }
}

TEST_F(Pick, SaysWhyNot) {
    EXPECT_THAT(picked("cherry-pick", "HEAD")->error(),
                HasErrorClass(NEBSourceControlNoCommitsYetErrorClass));
    makeConflictingBranch();
    for (const char* action : {"cherry-pick", "revert", "reset"}) {
        for (const char* revision : {"nosuch", "--abort", "main side"}) {
            EXPECT_THAT(picked(action, revision)->error(),
                        HasErrorClass(NEBSourceControlRevisionUnknownErrorClass))
                << action << revision;
        }
    }
    EXPECT_THAT(picked("squash", "HEAD")->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_THAT(
        picked("cherry-pick", "side", {{NEBSourceControlRequestOptionDryRun, true}})->error(),
        HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_NE(repository.gitStatus({"merge", "-q", "side"}), 0);
    EXPECT_THAT(picked("reset", "HEAD")->error(),
                HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
    EXPECT_THAT(picked("cherry-pick", "side")->error(),
                HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
    EXPECT_EQ(status(), std::string("UU a.c\0", 7));
}

}  // namespace
}  // namespace neb::test

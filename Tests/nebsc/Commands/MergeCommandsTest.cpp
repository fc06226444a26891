// `nebsc merge` and `nebsc merge-base`, run as a program.

#include <filesystem>

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using JSON = nlohmann::ordered_json;

class MergeCommands : public CommandTest {
protected:
    /// Lets "topic" and "main" diverge in a.c.
    void SetUp() override {
        repository.commitFile("a.c", "first\n");
        base = revision("HEAD");
        repository.git({"checkout", "--quiet", "-b", "topic"});
        repository.commitFile("a.c", "topic\n");
        repository.commitFile("topic.c", "topic\n");
        repository.git({"checkout", "--quiet", "main"});
        repository.commitFile("a.c", "main\n");
        before = revision("HEAD");
    }
    /// Returns the first 12 characters of a commit id.
    [[nodiscard]] std::string revision(const char* name) const {
        return repository.git({"rev-parse", name}).substr(0, 12);
    }

    /// Changes the file in both branches.
    void changeOnBoth(const std::string& name, const std::string& start, const std::string& ours,
                      const std::string& theirs) const {
        repository.git({"checkout", "--quiet", "topic"});
        repository.commitFile(name, start + theirs);
        repository.git({"checkout", "--quiet", "main"});
        repository.commitFile(name, start + ours);
    }
    /// Returns the message for the files, each given as an indented line with its end.
    [[nodiscard]] std::string settled(const std::string& files) const {
        return "nebsc: both sides changed the same lines or binary files; the current branch's "
               "were kept and the other branch's dropped in:\n" +
               files + "'git diff " + before + "..." + revision("topic") +
               "' shows all changes of the side whose lines were dropped.\n";
    }
    [[nodiscard]] std::string notKnown(const std::string& reason) const {
        return "nebsc: where both sides changed the same lines, the current branch's were kept and "
               "the other branch's dropped; the files are not known: " +
               reason + "\n'git diff " + before + "..." + revision("topic") +
               "' shows all changes of the side whose lines were dropped.\n";
    }
    /// Runs nebsc with a git that runs the script for the command, and the real git for all others.
    [[nodiscard]] NebscOutcome mergeWhere(const std::string& command, const std::string& script,
                                          const std::vector<std::string>& arguments = {
                                              "merge", "topic"}) const {
        const StandInGit git(repository.path(), "case \" $* \" in *\" " + command + " \"*) " +
                                                    script +
                                                    ";; esac\nPATH=${PATH#*:} exec git \"$@\"");
        return runNebsc(arguments, {.folder = repository.path(), .variables = {git.path()}});
    }
    void expectMerged(const NebscOutcome& outcome, const std::string& errors) const {
        EXPECT_EQ(outcome.output, "Merged 'topic'; now at " + revision("HEAD") + ".\n");
        EXPECT_EQ(outcome.errors, errors);
        EXPECT_EQ(outcome.exitStatus, 0);
    }

    std::string base;
    /// Returns the commit of main.
    std::string before;
};

TEST_F(MergeCommands, MergeKeepsTheLinesOfTheCurrentBranch) {
    expectMerged(nebsc({"merge", "topic"}), settled("    a.c\n"));
    EXPECT_EQ(content("a.c"), "main\n");
    EXPECT_EQ(content("topic.c"), "topic\n");
    EXPECT_EQ(repository.git({"rev-parse", "HEAD^2"}), repository.git({"rev-parse", "topic"}));
    EXPECT_EQ(state(), "");
}

TEST_F(MergeCommands, MergeListsEveryFileWithASettledConflict) {
    changeOnBoth("bin", std::string("\0", 1), "main", "topic");
    changeOnBoth("src/both.c", "", "main\n", "topic\n");
    changeOnBoth("src/na\tme\n\xE4", "", "main\n", "topic\n");
    before = revision("HEAD");
    const NebscOutcome outcome = nebsc({"merge", "topic"}, "src");
    expectMerged(outcome, settled("    ../a.c\n    ../bin\n    both.c\n    na\\tme\\n\\xe4\n"));
    EXPECT_EQ(repository.git({"show", "HEAD:src/both.c"}), "main\n");
    EXPECT_EQ(state(), "");
}

TEST_F(MergeCommands, MergeListsVeryManyFiles) {
    constexpr int count = 2000;
    for (const char* branch : {"topic", "main"}) {
        repository.git({"checkout", "--quiet", branch});
        for (int i = 0; i < count; ++i) {
            repository.write("many/" + std::to_string(i), branch);
        }
        repository.git({"add", "--all"});
        repository.git({"commit", "--quiet", "-m", "many"});
    }
    const NebscOutcome outcome = nebsc({"merge", "topic", "--json"});
    EXPECT_EQ(outcome.json()["settledConflicts"].size(), count + 1U);
    for (int i = 0; i < count; ++i) {
        EXPECT_THAT(outcome.errors, HasSubstr("\n    many/" + std::to_string(i) + "\n"));
    }
}

TEST_F(MergeCommands, MergeWithoutASettledConflictListsNothing) {
    repository.git({"reset", "--quiet", "--hard", base});
    repository.commitFile("main.c", "main\n");
    expectMerged(nebsc({"merge", "topic"}), "");
    EXPECT_EQ(repository.git({"rev-parse", "HEAD^2"}), repository.git({"rev-parse", "topic"}));
}

TEST_F(MergeCommands, JSONListsFilesWhoseNamesAreNotUTF8) {
    repository.git({"checkout", "--quiet", "topic"});
    repository.commitFile("lat\xE4.c", "topic\n");
    repository.git({"checkout", "--quiet", "main"});
    repository.commitFile("lat\xE4.c", "main\n");
    EXPECT_EQ(nebsc({"merge", "topic", "--json"}).json()["settledConflicts"],
              JSON({"a.c", R"("lat\344.c")"}));
}

TEST_F(MergeCommands, JSONListsSettledConflicts) {
    const NebscOutcome merged = nebsc({"merge", "topic", "--json"});
    EXPECT_EQ(merged.json()["settledConflicts"], JSON({"a.c"}));
    EXPECT_EQ(merged.json()["error"], nullptr);
    EXPECT_EQ(merged.exitStatus, 0);
    repository.git({"checkout", "--quiet", "-B", "main", base});
    EXPECT_EQ(nebsc({"merge", "topic", "--json"}).json()["settledConflicts"], JSON::array());
    EXPECT_FALSE(nebsc({"merge", "topic", "--json"}).json().contains("settledConflicts"));
}

/// After a criss-cross merge, there are two best common ancestors.
TEST_F(MergeCommands, FindsConflictsAcrossSeveralMergeBases) {
    repository.git({"branch", "side"});
    repository.git({"merge", "--quiet", "-X", "ours", "-m", "cross", "topic"});
    repository.git({"checkout", "--quiet", "topic"});
    repository.git({"merge", "--quiet", "-X", "ours", "-m", "cross", "side"});
    repository.git({"checkout", "--quiet", "main"});
    changeOnBoth("b.c", "", "main\n", "topic\n");
    before = revision("HEAD");
    expectMerged(nebsc({"merge", "topic"}), settled("    a.c\n    b.c\n"));
}

/// The search runs neither merge drivers nor filters, and does not report what a driver resolved.
TEST_F(MergeCommands, TheSearchForConflictsRunsNoProgramOfTheUser) {
    for (const char* name : {"driven", "filtered", "union"}) {
        changeOnBoth(name, "", "main\n", "topic\n");
    }
    const std::string log = repository.path(".git/log");
    repository.write(".git/info/attributes",
                     "driven merge=pr\xe4g\nfiltered filter=pr\xe4g\nunion merge=union\n");
    repository.git({"config", "merge.renormalize", "true"});
    repository.git({"config", "merge.pr\xe4g.driver", "echo driver >>'" + log + "'; cp %B %A"});
    repository.git({"config", "filter.pr\xe4g.clean", "echo filter >>'" + log + "'; cat"});
    before = revision("HEAD");
    expectMerged(mergeWhere("merge-tree", ": >'" + log + "'"), settled("    a.c\n    filtered\n"));
    EXPECT_EQ(std::filesystem::file_size(log), 0U) << "a program ran after the merge";
    EXPECT_EQ(repository.git({"show", "HEAD:driven"}), "topic\n");
    EXPECT_EQ(repository.git({"show", "HEAD:union"}), "main\ntopic\n");
}

TEST_F(MergeCommands, AnOlderGitCannotFindTheConflicts) {
    expectMerged(mergeWhere("version", "echo git version 2.37.9; exit"),
                 notKnown("this requires git 2.38 or newer"));
    repository.git({"reset", "--quiet", "--hard", before});
    EXPECT_EQ(mergeWhere("version", "echo git version 2.37.9; exit", {"merge", "topic", "--json"})
                  .json()["settledConflicts"],
              nullptr);
    repository.git({"reset", "--quiet", "--hard", base});
    expectMerged(mergeWhere("version", "echo git version 2.37.9; exit"), "");
}

TEST_F(MergeCommands, AFailedSearchForConflictsDoesNotFailTheMerge) {
    expectMerged(mergeWhere("merge-tree", "echo 'fatal: no memory' >&2; exit 128"),
                 notKnown("no memory"));
    repository.git({"reset", "--quiet", "--hard", before});
    expectMerged(mergeWhere("merge-tree", "exit 1"), notKnown("git printed nothing"));
    repository.git({"reset", "--quiet", "--hard", before});
    repository.git({"config", "merge.a=b.driver", "true"});
    expectMerged(nebsc({"merge", "topic"}),
                 notKnown("the name of a merge driver or filter contains '='"));
    EXPECT_EQ(nebsc({"merge", "main"}).exitStatus, 0);
}

TEST_F(MergeCommands, MergeFastForwards) {
    repository.git({"reset", "--quiet", "--hard", base});
    expectDone(nebsc({"merge", "topic"}), "Merged 'topic'; now at " + revision("topic") + ".\n");
}

TEST_F(MergeCommands, MergeReportsThatItIsUpToDate) {
    for (const char* name : {"HEAD", "main~1", "main"}) {
        expectDone(nebsc({"merge", name}),
                   "Already up to date: '" + std::string(name) + "' is merged.\n");
    }
    const NebscOutcome json = nebsc({"merge", "--json", "main"});
    EXPECT_TRUE(json.json()["result"].is_null());
    EXPECT_EQ(json.json()["command"]["arguments"],
              JSON({"merge", "-s", "recursive", "-X", "ours", "main"}));
    EXPECT_EQ(json.errors, "");
    EXPECT_EQ(json.exitStatus, 0);
}

TEST_F(MergeCommands, ReportsAMergeThatIsNotCommitted) {
    repository.git({"config", "branch.main.mergeOptions", "--no-commit"});
    const NebscOutcome outcome = nebsc({"merge", "topic"});
    EXPECT_EQ(outcome.output, "Merged 'topic'; it is not committed yet.\n");
    EXPECT_EQ(outcome.errors, settled("    a.c\n"));
    EXPECT_EQ(state(), "A  topic.c\n");
}

TEST_F(MergeCommands, AConflictWithoutSidesIsAFailure) {
    repository.git({"rm", "--quiet", "a.c"});
    repository.git({"commit", "--quiet", "-m", "without a.c"});
    expectFailed(nebsc({"merge", "topic"}),
                 testing::AllOf(testing::StartsWith("nebsc: "), HasSubstr("a.c")));
    EXPECT_EQ(nebsc({"merge", "topic", "--json"}).exitStatus, 1);
}

/// The user resolves the one remaining conflict and must hear of the others now.
TEST_F(MergeCommands, ListsSettledConflictsBesideAnUnsettledOne) {
    changeOnBoth("src/both.c", "", "main\n", "topic\n");
    repository.git({"rm", "--quiet", "a.c"});
    repository.git({"commit", "--quiet", "-m", "without a.c"});
    before = revision("HEAD");
    EXPECT_EQ(nebsc({"merge", "topic", "--json"}).json()["settledConflicts"], JSON({"src/both.c"}));
    repository.git({"merge", "--abort"});
    expectFailed(nebsc({"merge", "topic"}, "src"), EndsWith(settled("    both.c\n")));
    EXPECT_EQ(content("src/both.c"), "main\n");
    EXPECT_EQ(state(), "DU a.c\nA  topic.c\n");
    EXPECT_THAT(nebsc({"merge", "topic"}).errors, Not(HasSubstr("left out in")));
}

TEST_F(MergeCommands, ListsSettledConflictsIfAHookRefusesTheMerge) {
    const std::string hook = ".git/hooks/pre-merge-commit";
    repository.write(hook, "#!/bin/sh\necho no >&2\nexit 1\n");
    std::filesystem::permissions(repository.path(hook), std::filesystem::perms::owner_all);
    expectFailed(nebsc({"merge", "topic"}), EndsWith(settled("    a.c\n")));
    EXPECT_EQ(state(), "A  topic.c\n");
    EXPECT_THAT(nebsc({"merge", "topic"}).errors, Not(HasSubstr("left out in")));
}

TEST_F(MergeCommands, LocalChangesAreNotOverwritten) {
    repository.write("topic.c", "mine\n");
    expectFailed(nebsc({"merge", "topic"}), HasSubstr("topic.c"));
    EXPECT_EQ(state(), "?? topic.c\n");
}

TEST_F(MergeCommands, MergeReportsFailures) {
    expectFailed(nebsc({"merge", "nosuch"}), HasSubstr("nosuch"));
    expectFailed(nebsc({"merge", "--", "--abort"}), HasSubstr("'--abort' begins with '-'"), 2);
    expectFailed(nebsc({"merge"}), HasSubstr("REVISION"), 2);
    const TemporaryFolder folder;
    expectFailed(runNebsc({"merge", "topic"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: the folder is not in a git repository"));
}

TEST_F(MergeCommands, ASilentGitFailureIsAnError) {
    const StandInGit git(repository.path(), "exit 1");
    expectFailed(nebsc({"merge", "topic"}, git),
                 "nebsc: git exited with status 1 and printed nothing\n");
}

// ---- merge-base -------------------------------------------------------------------------------

TEST_F(MergeCommands, MergeBaseShowsTheCommonAncestor) {
    repository.write("src/b.c", "");
    expectDone(nebsc({"merge-base", "main", "topic"}, "src"), base + "\n");
    const NebscOutcome json = nebsc({"--json", "merge-base", "main", "topic"});
    EXPECT_EQ(json.json()["result"][0]["NEBSourceControlOperationRevisionKey"], base);
    EXPECT_EQ(json.errors, "");
    EXPECT_EQ(json.exitStatus, 0);
}

TEST_F(MergeCommands, MergeBaseReportsUnrelatedHistories) {
    repository.git({"checkout", "--quiet", "--orphan", "other"});
    repository.git({"commit", "--quiet", "-m", "another start"});
    expectFailed(nebsc({"merge-base", "main", "other"}),
                 "nebsc: 'main' and 'other' have no common ancestor\n");
    const NebscOutcome json = nebsc({"--json", "merge-base", "main", "other"});
    EXPECT_TRUE(json.json()["result"].is_null());
    EXPECT_EQ(json.exitStatus, 1);
}

TEST_F(MergeCommands, MergeReportsAnUnknownRevision) {
    expectFailed(nebsc({"merge", "nosuch"}), "nebsc: unknown branch or revision 'nosuch'\n");
    expectFailed(nebsc({"merge", ""}), HasSubstr("argument 'REVISION' must not be empty"), 2);
}

TEST_F(MergeCommands, MergeBaseReportsAnUnknownRevision) {
    expectFailed(nebsc({"merge-base", "main", "nosuch"}), "nebsc: unknown revision 'nosuch'\n");
    expectFailed(nebsc({"merge-base", "HEAD~7", "main"}), HasSubstr("'HEAD~7'"));
    const NebscOutcome json = nebsc({"merge-base", "--json", "main", "nosuch"});
    EXPECT_EQ(json.json()["error"]["class"], "revision-unknown");
    EXPECT_EQ(json.exitStatus, 1);
    expectFailed(nebsc({"merge-base", "main", "--", "--all"}), HasSubstr("'--all' begins"), 2);
    const TemporaryFolder folder;
    expectFailed(runNebsc({"merge-base", "a", "b"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: the folder is not in a git repository\n"));
    expectFailed(nebsc({"merge-base", "main"}), HasSubstr("missing argument "), 2);
    const StandInGit git(repository.path(), "exit 3");
    expectFailed(nebsc({"merge-base", "main", "topic"}, git),
                 "nebsc: git exited with status 3 and printed nothing\n");
}

}  // namespace
}  // namespace neb::test

#include "GitExtensions/GitUnfinishedOperation.h"

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

using testing::IsEmpty;

TEST(ConflictParser, GroupsTheStagesOfAPath) {
    const std::string id(40, 'a');
    const auto entry = [&id](const std::string& rest) {
        return "100644 " + id + " " + rest + '\0';
    };
    const auto records = recordsOf<GitConflictsOperation>(
        requestFor(NEBSourceControlRequestUnfinishedOperation, "/w"),
        entry("1\ta\nb") + entry("2\ta\nb") + entry("3\ta\nb") + entry("2\tc\xe4") + entry("9\tx") +
            "cut");
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].text(NEBSourceControlOperationConflictKey), "both modified");
    EXPECT_EQ(records[0].text(NEBSourceControlOperationPathKey), "a\nb");
    EXPECT_EQ(records[0].value(NEBSourceControlOperationStagesKey).array()->size(), 3U);
    EXPECT_EQ(records[1].text(NEBSourceControlOperationConflictKey), "added by us");
    EXPECT_EQ(nameIn(records[1]), "c\xe4");
}

class Unfinished : public ExtensionTest {
protected:
    [[nodiscard]] NEBSourceControlResult records() const {
        return recordsOf(request(NEBSourceControlRequestUnfinishedOperation));
    }
    void commitTwoSides() const {
        repository.commitFile("f", "base\n");
        repository.git({"checkout", "-q", "-b", "topic"});
        repository.commitFile("g", "1\n", "One");
        repository.commitFile("f", "topic\n", "Two");
        repository.git({"checkout", "-q", "main"});
        repository.commitFile("f", "main\n", "Main");
    }
};

TEST_F(Unfinished, IsNothingInAnOrdinaryRepository) {
    EXPECT_THAT(records(), IsEmpty());
    repository.commitFile("a", "1");
    EXPECT_THAT(records(), IsEmpty());
}

TEST_F(Unfinished, IsAMergeWithItsConflicts) {
    stopInConflict(repository);
    const auto all = records();
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(all[0], (NEBDictionary{{NEBSourceControlOperationKindKey, "merge"},
                                     {NEBSourceControlOperationObjectIDKey,
                                      lineOf(repository, {"rev-parse", "MERGE_HEAD"})}}));
    const auto conflicts = byPath(all);
    EXPECT_EQ(conflicts.at("c").text(NEBSourceControlOperationConflictKey), "both modified");
    EXPECT_EQ(conflicts.at("d").text(NEBSourceControlOperationConflictKey), "deleted by them");
    EXPECT_EQ(conflicts.at("e").text(NEBSourceControlOperationConflictKey), "deleted by us");
}

TEST_F(Unfinished, IsARebaseWithItsStep) {
    for (const char* backend : {"--merge", "--apply"}) {
        const TestRepository other;
        commitTwoSides();
        EXPECT_NE(repository.gitStatus({"rebase", "-q", backend, "main", "topic"}), 0);
        const auto all = records();
        ASSERT_EQ(all.size(), 2U) << backend;
        EXPECT_EQ(all[0].text(NEBSourceControlOperationKindKey), "rebase");
        EXPECT_EQ(all[0].value(NEBSourceControlOperationStepKey), NEBValue(2));
        EXPECT_EQ(all[0].value(NEBSourceControlOperationStepCountKey), NEBValue(2));
        EXPECT_EQ(all[0].text(NEBSourceControlOperationBranchKey), "refs/heads/topic");
        EXPECT_EQ(all[0].text(NEBSourceControlOperationOntoKey),
                  lineOf(repository, {"rev-parse", "main"}));
        EXPECT_EQ(all[0].text(NEBSourceControlOperationObjectIDKey),
                  lineOf(repository, {"rev-parse", "topic"}));
        EXPECT_EQ(all[1].text(NEBSourceControlOperationPathKey), "f");
        repository.git({"rebase", "--abort"});
        repository.git({"checkout", "-q", "main"});
        repository.git({"branch", "-q", "-D", "topic"});
    }
}

TEST_F(Unfinished, IsACherryPickARevertOrABisect) {
    commitTwoSides();
    EXPECT_NE(repository.gitStatus({"cherry-pick", "topic"}), 0);
    EXPECT_EQ(records().at(0).text(NEBSourceControlOperationKindKey), "cherry-pick");
    EXPECT_EQ(records().at(0).text(NEBSourceControlOperationObjectIDKey),
              lineOf(repository, {"rev-parse", "topic"}));
    repository.git({"cherry-pick", "--abort"});
    repository.commitFile("f", "again\n");
    EXPECT_NE(repository.gitStatus({"revert", "--no-edit", "HEAD~1"}), 0);
    EXPECT_EQ(records().at(0).text(NEBSourceControlOperationKindKey), "revert");
    repository.git({"revert", "--abort"});
    repository.git({"bisect", "start"});
    ASSERT_EQ(records().size(), 1U);
    EXPECT_EQ(records().at(0).text(NEBSourceControlOperationKindKey), "bisect");
}

TEST_F(Unfinished, BelongsToItsWorktree) {
    repository.commitFile("a", "1");
    const TemporaryFolder folder;
    repository.git({"worktree", "add", "-q", "-b", "side", folder.path("w\nx")});
    stopInConflict(repository);
    EXPECT_THAT(
        recordsOf(requestFor(NEBSourceControlRequestUnfinishedOperation, folder.path("w\nx"))),
        IsEmpty());
    EXPECT_EQ(records().size(), 4U);
    EXPECT_EQ(errorClassOf(requestFor(NEBSourceControlRequestUnfinishedOperation, folder.path())),
              "not-a-repository");
}

}  // namespace
}  // namespace neb::test

#include "GitExtensions/GitWorkingCopyState.h"

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

using testing::ElementsAre;

std::shared_ptr<NEBSourceControlRequest> workingCopyStateRequest() {
    return requestFor(NEBSourceControlRequestWorkingCopyState, "/w");
}

/// Joins pieces, each with a NUL byte.
std::string pieces(const std::vector<std::string>& all) {
    std::string bytes;
    for (const std::string& piece : all) {
        bytes += piece + '\0';
    }
    return bytes;
}

TEST(WorkingCopyStateCommand, HasTheOptionsOfTheRequest) {
    auto request = workingCopyStateRequest();
    EXPECT_THAT(GitWorkingCopyStateOperation(request).arguments(),
                ElementsAre("status", "--porcelain=v2", "-z", "--branch", "--show-stash", "--"));
    request->files = valuesOf({"-a"});
    request->options = NEBDictionary{{NEBSourceControlRequestOptionUntrackedFiles, "all"},
                                     {NEBSourceControlRequestOptionIgnoredFiles, true}};
    EXPECT_THAT(GitWorkingCopyStateOperation(request).arguments(),
                ElementsAre("status", "--porcelain=v2", "-z", "--branch", "--show-stash",
                            "--untracked-files=all", "--ignored", "--", "-a"));
}

TEST(WorkingCopyStateParser, ReadsHeadersAndEntries) {
    const auto records = recordsOf<GitWorkingCopyStateOperation>(
        workingCopyStateRequest(),
        pieces({"# branch.oid " + a40, "# branch.head main", "# branch.upstream o/main",
                "# branch.ab +2 -1", "# stash 3",
                "1 AM N... 000000 100644 100755 " + z40 + " " + a40 + " n w",
                "2 R. N... 100644 100644 100644 " + a40 + " " + a40 + " R87 new", "\nold\xe4",
                "1 .M SC.U 160000 160000 160000 " + a40 + " " + a40 + " sub", "? ud/", "! ig"}));
    ASSERT_EQ(records.size(), 6U);
    EXPECT_EQ(records[0], (NEBDictionary{{NEBSourceControlOperationKindKey, "head"},
                                         {NEBSourceControlOperationObjectIDKey, a40},
                                         {NEBSourceControlOperationNameKey, "main"},
                                         {NEBSourceControlOperationUpstreamKey, "o/main"},
                                         {NEBSourceControlOperationAheadKey, 2},
                                         {NEBSourceControlOperationBehindKey, 1},
                                         {NEBSourceControlOperationStashCountKey, 3}}));
    EXPECT_EQ(records[1], (NEBDictionary{{NEBSourceControlOperationKindKey, "changed"},
                                         {NEBSourceControlOperationIndexStateKey, "added"},
                                         {NEBSourceControlOperationWorkingTreeStateKey, "modified"},
                                         {NEBSourceControlOperationIndexModeKey, "100644"},
                                         {NEBSourceControlOperationWorkingTreeModeKey, "100755"},
                                         {NEBSourceControlOperationIndexObjectIDKey, a40},
                                         {NEBSourceControlOperationPathKey, "n w"}}));
    EXPECT_EQ(records[2].value(NEBSourceControlOperationSimilarityKey), NEBValue(87));
    EXPECT_EQ(nameIn(records[2], NEBSourceControlOperationOriginalPathKey,
                     NEBSourceControlOperationOriginalPathBytesKey),
              "\nold\xe4");
    EXPECT_TRUE(records[3].contains(NEBSourceControlOperationIsSubmoduleKey));
    EXPECT_TRUE(records[3].contains(NEBSourceControlOperationSubmoduleCommitChangedKey));
    EXPECT_FALSE(records[3].contains(NEBSourceControlOperationSubmoduleModifiedKey));
    EXPECT_TRUE(records[3].contains(NEBSourceControlOperationSubmoduleHasUntrackedKey));
    EXPECT_EQ(records[4], (NEBDictionary{{NEBSourceControlOperationKindKey, "untracked"},
                                         {NEBSourceControlOperationPathKey, "ud/"}}));
    EXPECT_EQ(records[5].text(NEBSourceControlOperationKindKey), "ignored");
}

TEST(WorkingCopyStateParser, ReadsTheStagesOfAConflict) {
    const auto records = recordsOf<GitWorkingCopyStateOperation>(
        workingCopyStateRequest(),
        pieces({"u DU N... 100644 000000 100755 100644 " + a40 + " " + z40 + " " + b40 + " c"}));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].text(NEBSourceControlOperationConflictKey), "deleted by us");
    EXPECT_EQ(records[0].value(NEBSourceControlOperationStagesKey),
              NEBValue(std::vector<NEBValue>{
                  NEBDictionary{{NEBSourceControlOperationStageKey, 1},
                                {NEBSourceControlOperationModeKey, "100644"},
                                {NEBSourceControlOperationObjectIDKey, a40}},
                  NEBDictionary{{NEBSourceControlOperationStageKey, 3},
                                {NEBSourceControlOperationModeKey, "100755"},
                                {NEBSourceControlOperationObjectIDKey, b40}}}));
}

/// Modes and ids of a damaged output.
TEST(WorkingCopyStateParser, ReturnsOnlyText) {
    const auto records = recordsOf<GitWorkingCopyStateOperation>(
        workingCopyStateRequest(),
        pieces({"1 M. N... 1\xff 100644 100644 \xff" + a40 + " " + a40 + " f"}));
    EXPECT_EQ(records.at(0).text(NEBSourceControlOperationHEADModeKey), "1\uFFFD");
    EXPECT_EQ(records.at(0).text(NEBSourceControlOperationHEADObjectIDKey), "\uFFFD" + a40);
}

/// Incomplete entries and those of a later git.
TEST(WorkingCopyStateParser, NeverReadsBeyondAPiece) {
    EXPECT_EQ(recordsOf<GitWorkingCopyStateOperation>(
                  workingCopyStateRequest(),
                  pieces({"", "1", "1 ", "2 R", "x", "u ", "# ", "z new kind"}) + "? cut")
                  .size(),
              2U);
}

class WorkingCopyState : public ExtensionTest {};

/// A second reader: each path in the two differences of plumbing, and the untracked files.
TEST_F(WorkingCopyState, IsThatOfPlumbing) {
    commitHostileNames(repository);
    repository.git({"mv", "b\xe4r", "moved\n\xff"});
    repository.write("quo\"te", "staged\n");
    repository.git({"add", "quo\"te"});
    repository.write("quo\"te", "again\n");
    repository.write("-dash", "changed\n");
    repository.git({"rm", "-q", "t\tab"});
    repository.write(
        "untr\xe4"
        "cked\n",
        "1");
    const auto records = byPath(recordsOf(request(NEBSourceControlRequestWorkingCopyState)));
    std::map<std::string, std::string> staged;
    auto fields = nulFields(
        repository.git({"diff-index", "--cached", "--name-status", "-z", "--no-renames", "HEAD"}));
    for (std::size_t i = 0; i + 1 < fields.size(); i += 2) {
        staged[fields[i + 1]] = fields[i];
    }
    std::map<std::string, std::string> unstaged;
    fields = nulFields(repository.git({"diff-files", "--name-status", "-z"}));
    for (std::size_t i = 0; i + 1 < fields.size(); i += 2) {
        unstaged[fields[i + 1]] = fields[i];
    }
    EXPECT_EQ(staged.size(), 4U);
    EXPECT_EQ(unstaged.size(), 2U);
    for (const auto& [path, letter] : unstaged) {
        ASSERT_TRUE(records.contains(path)) << path;
        EXPECT_EQ(records.at(path).text(NEBSourceControlOperationWorkingTreeStateKey), "modified");
    }
    EXPECT_EQ(records.at("quo\"te").text(NEBSourceControlOperationIndexStateKey), "modified");
    EXPECT_EQ(records.at("quo\"te").text(NEBSourceControlOperationIndexObjectIDKey),
              lineOf(repository, {"rev-parse", ":quo\"te"}));
    EXPECT_FALSE(records.at("-dash").contains(NEBSourceControlOperationIndexStateKey));
    EXPECT_EQ(records.at("moved\n\xff").text(NEBSourceControlOperationKindKey), "renamed");
    EXPECT_EQ(nameIn(records.at("moved\n\xff"), NEBSourceControlOperationOriginalPathKey,
                     NEBSourceControlOperationOriginalPathBytesKey),
              "b\xe4r");
    EXPECT_EQ(records
                  .at("untr\xe4"
                      "cked\n")
                  .text(NEBSourceControlOperationKindKey),
              "untracked");
}

TEST_F(WorkingCopyState, BeginsWithHEAD) {
    auto head = recordsOf(request(NEBSourceControlRequestWorkingCopyState)).at(0);
    EXPECT_EQ(head, (NEBDictionary{{NEBSourceControlOperationKindKey, "head"},
                                   {NEBSourceControlOperationNameKey, "main"}}))
        << "before the first commit";
    repository.commitFile("a", "1");
    repository.git({"checkout", "-q", "--detach"});
    head = recordsOf(request(NEBSourceControlRequestWorkingCopyState)).at(0);
    EXPECT_EQ(head, (NEBDictionary{{NEBSourceControlOperationKindKey, "head"},
                                   {NEBSourceControlOperationObjectIDKey,
                                    lineOf(repository, {"rev-parse", "HEAD"})}}));
}

TEST_F(WorkingCopyState, OfABrokenBranchIsAnError) {
    repository.commitFile("a", "1");
    repository.write(".git/refs/heads/main", "junk\n");
    const auto operation = perform(request(NEBSourceControlRequestWorkingCopyState));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlReferenceBrokenErrorClass));
    EXPECT_EQ(operation->result(), std::nullopt);
}

/// git writes the same for a branch that it cannot read.
TEST_F(WorkingCopyState, KnowsAnUnknownBranch) {
    EXPECT_EQ(
        perform(request(NEBSourceControlRequestWorkingCopyState))->commandLog()->runs().size(), 1U);
    repository.git({"symbolic-ref", "HEAD", "refs/heads/(unknown)"});
    const auto operation = perform(request(NEBSourceControlRequestWorkingCopyState));
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result()->front().text(NEBSourceControlOperationNameKey), "(unknown)");
}

TEST_F(WorkingCopyState, NamesTheKindOfEachConflict) {
    stopInConflict(repository);
    const auto records = byPath(recordsOf(request(NEBSourceControlRequestWorkingCopyState)));
    EXPECT_EQ(records.at("c").text(NEBSourceControlOperationConflictKey), "both modified");
    EXPECT_EQ(records.at("d").text(NEBSourceControlOperationConflictKey), "deleted by them");
    EXPECT_EQ(records.at("e").text(NEBSourceControlOperationConflictKey), "deleted by us");
    const NEBValue stage = records.at("c").value(NEBSourceControlOperationStagesKey).array()->at(2);
    EXPECT_EQ(stage.dictionary()->text(NEBSourceControlOperationObjectIDKey),
              lineOf(repository, {"rev-parse", ":3:c"}));
}

TEST_F(WorkingCopyState, KnowsItsOptions) {
    repository.write("a", "1");
    for (const auto& [value, count] :
         std::map<std::string, std::size_t>{{"no", 1}, {"normal", 2}, {"all", 2}}) {
        const auto asked = request(NEBSourceControlRequestWorkingCopyState);
        asked->options = NEBDictionary{{NEBSourceControlRequestOptionUntrackedFiles, value}};
        EXPECT_EQ(recordsOf(asked).size(), count) << value;
    }
    const auto asked = request(NEBSourceControlRequestWorkingCopyState);
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionUntrackedFiles, "x"}};
    EXPECT_EQ(errorClassOf(asked), "request-invalid");
}

TEST_F(WorkingCopyState, OfABareRepositoryIsAnError) {
    const TemporaryFolder folder;
    repository.git({"init", "-q", "--bare", folder.path("bare.git")});
    EXPECT_EQ(
        errorClassOf(requestFor(NEBSourceControlRequestWorkingCopyState, folder.path("bare.git"))),
        "no-work-tree");
}

TEST_F(WorkingCopyState, ListsIgnoredAndSelectedFiles) {
    repository.commitFile(".gitignore", "*.o\n");
    repository.write("x.o", "1");
    repository.write("[y", "1");
    auto asked = fileRequest(NEBSourceControlRequestWorkingCopyState, "x.o",
                             {{NEBSourceControlRequestOptionIgnoredFiles, true}});
    EXPECT_EQ(byPath(recordsOf(asked)).at("x.o").text(NEBSourceControlOperationKindKey), "ignored");
    asked = fileRequest(NEBSourceControlRequestWorkingCopyState, "[y");
    EXPECT_TRUE(byPath(recordsOf(asked)).contains("[y"));
}

}  // namespace
}  // namespace neb::test

#include "GitExtensions/GitStage.h"

#include <gmock/gmock.h>

#include "Classes/GitExtensions/ChangeRequests.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Stage : public ChangeTest {
protected:
    /// Two changes, far enough apart to be two hunks.
    void writeTwoChanges() const {
        repository.commitFile("a.c", "1\n2\n3\n4\n5\n6\n7\n8\n9\n");
        repository.write("a.c", "one\n2\n3\n4\n5\n6\n7\n8\nnine\n");
    }
    /// Returns the first hunk of the difference of "a.c" as a patch.
    [[nodiscard]] std::string firstHunk() const {
        const std::string difference = repository.git({"diff", "--", "a.c"});
        return difference.substr(0, difference.find("\n@@", difference.find("\n@@") + 1) + 1);
    }
};

TEST_F(Stage, StagesAndUnstagesHostileNames) {
    repository.commitFile("kept", "1");
    for (const std::string& name : hostileNames) {
        repository.write(name, "1");
        repository.write("star", "not named");
        EXPECT_EQ(performed(NEBSourceControlRequestStage, {}, {name})->error(), std::nullopt);
        EXPECT_EQ(repository.git({"diff", "--cached", "--name-only", "-z"}),
                  name + std::string(1, '\0'));
        EXPECT_EQ(performed(NEBSourceControlRequestUnstage, {}, {name})->error(), std::nullopt);
        EXPECT_EQ(repository.git({"diff", "--cached", "--name-only"}), "");
    }
}

TEST_F(Stage, StagesDeletionsAndEverything) {
    repository.commitFile("a.c", "1");
    repository.commitFile("sub/b.c", "1");
    repository.git({"rm", "-q", "--cached", "a.c"});
    repository.git({"reset", "-q"});
    std::remove(repository.path("a.c").c_str());
    EXPECT_EQ(performed(NEBSourceControlRequestStage, {}, {"a.c"})->error(), std::nullopt);
    EXPECT_EQ(git({"diff", "--cached", "--name-status", "--no-renames"}), "D\ta.c");
    repository.write("new.c", "1");
    auto request = requestFor(NEBSourceControlRequestStage, repository.path("sub"));
    EXPECT_EQ(performed(request)->error(), std::nullopt);
    EXPECT_EQ(git({"diff", "--cached", "--name-status", "--no-renames"}), "D\ta.c\nA\tnew.c");
    request->type = NEBSourceControlRequestUnstage;
    EXPECT_EQ(performed(request)->error(), std::nullopt);
    EXPECT_EQ(git({"diff", "--cached", "--name-status", "--no-renames"}), "");
}

TEST_F(Stage, StagesAnIgnoredFileOnlyByForce) {
    repository.write(".gitignore", "*.o\n");
    repository.write("a.o", "1");
    EXPECT_THAT(performed(NEBSourceControlRequestStage, {}, {"a.o"})->error(),
                HasErrorClass(NEBSourceControlPathIgnoredErrorClass));
    EXPECT_EQ(performed(NEBSourceControlRequestStage, {{NEBSourceControlRequestOptionForce, true}},
                        {"a.o"})
                  ->error(),
              std::nullopt);
    EXPECT_EQ(git({"ls-files"}), "a.o");
}

TEST_F(Stage, RefusesUnknownPaths) {
    repository.commitFile("a.c", "1");
    for (const auto type : {NEBSourceControlRequestStage, NEBSourceControlRequestUnstage}) {
        EXPECT_THAT(performed(type, {}, {"nosuch"})->error(),
                    HasErrorClass(NEBSourceControlPathUnknownErrorClass));
    }
}

TEST_F(Stage, StagesAndUnstagesAHunk) {
    writeTwoChanges();
    const NEBDictionary options{{NEBSourceControlRequestOptionPatch, firstHunk()}};
    EXPECT_EQ(performed(NEBSourceControlRequestStage, options)->error(), std::nullopt);
    EXPECT_EQ(repository.git({"show", ":a.c"}), "one\n2\n3\n4\n5\n6\n7\n8\n9\n");
    EXPECT_EQ(performed(NEBSourceControlRequestUnstage, options)->error(), std::nullopt);
    EXPECT_EQ(repository.git({"show", ":a.c"}), "1\n2\n3\n4\n5\n6\n7\n8\n9\n");
    EXPECT_THAT(git({"diff"}), HasSubstr("+nine"));
}

/// The patch of a file whose content and name are not UTF-8.
TEST_F(Stage, TakesAPatchOfAnyBytes) {
    repository.commitFile("b\xe4r", "\xff\n");
    repository.write("b\xe4r", "\xfe\n");
    const std::string patch = repository.git({"diff"});
    const auto operation =
        performed(NEBSourceControlRequestStage,
                  {{NEBSourceControlRequestOptionPatch, NEBValue::ofBytes(patch)}});
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(repository.git({"show", ":b\xe4r"}), "\xfe\n");
}

TEST_F(Stage, ChangesNothingIfAPatchDoesNotFit) {
    writeTwoChanges();
    std::string patch = firstHunk();
    patch += "@@ -6,4 +6,4 @@\n 6\n 7\n other\n-9\n+nine\n";
    for (const std::string& bad : {patch, std::string("no patch"), std::string()}) {
        const auto operation =
            performed(NEBSourceControlRequestStage, {{NEBSourceControlRequestOptionPatch, bad}});
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPatchFailedErrorClass));
        EXPECT_EQ(git({"diff", "--cached"}), "");
        EXPECT_EQ(commandLinesOf(*operation).size(), 1U);
    }
}

/// git itself skips them and prints nothing.
TEST_F(Stage, RefusesAPatchForFilesOutsideOfTheLocation) {
    writeTwoChanges();
    repository.commitFile("sub/b.c", "1");
    auto request = requestFor(NEBSourceControlRequestStage, repository.path("sub"));
    request->options = NEBDictionary{{NEBSourceControlRequestOptionPatch, firstHunk()}};
    EXPECT_THAT(performed(request)->error(), HasErrorClass(NEBSourceControlPatchFailedErrorClass));
    EXPECT_EQ(git({"diff", "--cached"}), "");
}

TEST_F(Stage, UnstagesBeforeTheFirstCommit) {
    repository.write("a.c", "1");
    repository.write("b.c", "1");
    repository.git({"add", "."});
    repository.write("a.c", "2");
    EXPECT_EQ(performed(NEBSourceControlRequestUnstage, {}, {"a.c"})->error(), std::nullopt);
    EXPECT_EQ(git({"ls-files"}), "b.c");
    EXPECT_THAT(performed(NEBSourceControlRequestUnstage, {}, {"nosuch"})->error(),
                HasErrorClass(NEBSourceControlPathUnknownErrorClass));
    EXPECT_EQ(performed(NEBSourceControlRequestUnstage)->error(), std::nullopt);
    EXPECT_EQ(performed(NEBSourceControlRequestUnstage)->error(), std::nullopt);
    EXPECT_EQ(status(), std::string("?? a.c\0?? b.c\0", 14));
}

TEST_F(Stage, KeepsTheVersionsOfAConflict) {
    makeConflictingBranch();
    EXPECT_NE(repository.gitStatus({"merge", "-q", "side"}), 0);
    for (const std::vector<std::string>& files : {std::vector<std::string>{"a.c"}, {}}) {
        EXPECT_THAT(performed(NEBSourceControlRequestUnstage, {}, files)->error(),
                    HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
        EXPECT_THAT(status(), StartsWith("UU a.c"));
    }
    EXPECT_EQ(performed(NEBSourceControlRequestUnstage,
                        {{NEBSourceControlRequestOptionForce, true}}, {"a.c"})
                  ->error(),
              std::nullopt);
    EXPECT_THAT(status(), StartsWith(" M a.c"));
    EXPECT_EQ(repository.gitStatus({"rev-parse", "-q", "--verify", "MERGE_HEAD"}), 0);
}

TEST_F(Stage, NeedsAWorkingCopy) {
    repository.git({"init", "-q", "--bare", "bare.git"});
    for (const auto type : {NEBSourceControlRequestStage, NEBSourceControlRequestUnstage,
                            NEBSourceControlRequestDiscard, NEBSourceControlRequestCreateCommit}) {
        EXPECT_THAT(performed(requestFor(type, repository.path("bare.git")))->error(),
                    HasErrorClass(NEBSourceControlNoWorkTreeErrorClass))
            << type;
    }
}

}  // namespace
}  // namespace neb::test

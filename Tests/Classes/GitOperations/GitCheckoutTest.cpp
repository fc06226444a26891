#include "GitOperations/GitCheckout.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::HasErrorClass;
using test::IsSourceControlError;
using test::perform;
using test::requestFor;
using test::TestRepository;
using test::valuesOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Optional;
using testing::StartsWith;

std::shared_ptr<NEBSourceControlRequest> checkout(NEBValue destination,
                                                  const std::string& location = "/w") {
    auto made = requestFor(NEBSourceControlRequestCheckout, location);
    made->destination = std::move(destination);
    return made;
}

std::shared_ptr<NEBSourceControlRequest> revert(const std::vector<std::string>& files,
                                                const std::string& location = "/w") {
    auto made = requestFor(NEBSourceControlRequestRevert, location);
    made->files = valuesOf(files);
    return made;
}

std::string contentOf(const NEBSourceControlOperation& operation) {
    if (!operation.result() || operation.result()->size() != 1) {
        return "(no record)";
    }
    return operation.result()->front().value(NEBSourceControlOperationContentKey).description();
}

// ---- the command lines ------------------------------------------------------------------------

TEST(CheckoutArguments, OfABranchMergeLocalChanges) {
    auto asked = checkout("topic");
    asked->files = valuesOf({"/w/a"});
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r/.git"}};
    EXPECT_THAT(GitCheckoutOperation(asked).arguments(),
                ElementsAre("checkout", "topic", "--merge"))
        << "neither files nor default arguments";
    EXPECT_THAT(GitCheckoutOperation(checkout({})).arguments(), ElementsAre("checkout", "--merge"));
}

TEST(CheckoutArguments, OfARevertNameTheFiles) {
    auto asked = revert({"/w/a", "-b"});
    asked->destination = "topic";
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r/.git"}};
    EXPECT_THAT(GitCheckoutOperation(asked).arguments(),
                ElementsAre("checkout", "-f", "--", "/w/a", "-b"));
}

// ---- what git prints --------------------------------------------------------------------------

TEST(CheckoutOutput, IsTheStandardErrorOfGit) {
    GitCheckoutOperation operation(checkout("topic"));
    operation.parseData();
    EXPECT_EQ(operation.result(), std::nullopt) << "no output object";
    operation.setData("M\ta.txt\n");
    operation.setErrorData("Switched to branch 'topic'\n");
    operation.parseData();
    EXPECT_EQ(contentOf(operation), "Switched to branch 'topic'");
}

TEST(CheckoutOutput, IsARecordWithoutOutput) {
    GitCheckoutOperation operation(revert({"/w/a"}));
    operation.setData("");
    operation.setErrorData("");
    operation.parseData();
    EXPECT_EQ(contentOf(operation), "");
    operation.setErrorData(std::nullopt);
    operation.parseData();
    ASSERT_EQ(operation.result()->size(), 1U);
    EXPECT_TRUE(operation.result()->front().isEmpty());
}

// ---- real repositories ------------------------------------------------------------------------

class CheckoutInRepository : public test::HygienicTest {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        repository.commitFile("a", "1\n2\n3\n4\n5\n");
        repository.git({"checkout", "-q", "-b", "topic"});
        repository.commitFile("a", "1\n2\n3\n4\ntopic\n");
        repository.git({"checkout", "-q", "main"});
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> checkOut(
        const std::string& destination) const {
        return perform(checkout(destination, repository.path()));
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> revertFile(
        const std::string& name) const {
        return perform(revert({repository.path(name)}, repository.path()));
    }
    [[nodiscard]] std::string branch() const {
        return repository.git({"rev-parse", "--abbrev-ref", "HEAD"});
    }
    [[nodiscard]] std::string status() const { return repository.git({"status", "--porcelain"}); }
    [[nodiscard]] std::string show(const std::string& name) const {
        return repository.git({"hash-object", name});
    }
    void hook(const std::string& script) const {
        repository.write(".git/hooks/post-checkout", "#!/bin/sh\n" + script + "\n");
        fs::permissions(repository.path(".git/hooks/post-checkout"), fs::perms(0755));
    }

    TestRepository repository;
};

TEST_F(CheckoutInRepository, SwitchesAndItsNoticeIsNotAnError) {
    const auto operation = checkOut("topic");
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(contentOf(*operation), "Switched to branch 'topic'");
    EXPECT_EQ(branch(), "topic\n");
    EXPECT_EQ(contentOf(*checkOut("topic")), "Already on 'topic'");
}

TEST_F(CheckoutInRepository, OfARevisionDetachesHEAD) {
    const auto operation = checkOut("topic~1");
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(contentOf(*operation), StartsWith("Note: switching to 'topic~1'."));
    EXPECT_EQ(branch(), "HEAD\n");
}

TEST_F(CheckoutInRepository, KeepsLocalChanges) {
    repository.write("a", "local\n2\n3\n4\n5\n");
    EXPECT_EQ(checkOut("topic")->error(), std::nullopt);
    EXPECT_EQ(status(), " M a\n");
    repository.write("expected", "local\n2\n3\n4\ntopic\n");
    EXPECT_EQ(show("a"), show("expected"));
}

/// git exits with status 0, so there is no error; the status reports the conflict.
TEST_F(CheckoutInRepository, LeavesAConflictToTheStatus) {
    repository.write("a", "1\n2\n3\n4\nlocal\n");
    EXPECT_EQ(checkOut("topic")->error(), std::nullopt);
    EXPECT_EQ(status(), "UU a\n");
}

TEST_F(CheckoutInRepository, ReportsAnUnknownTarget) {
    const auto operation = checkOut("nosuch");
    EXPECT_THAT(operation->error(),
                IsSourceControlError(4, "There is no branch or revision \"nosuch\"."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_THAT(*operation->error()->text, HasSubstr("pathspec 'nosuch' did not match"));
    EXPECT_EQ(branch(), "main\n");
}

TEST_F(CheckoutInRepository, RefusesToOverwriteAFile) {
    repository.git({"checkout", "-q", "topic"});
    repository.commitFile("new", "new");
    repository.git({"checkout", "-q", "main"});
    repository.write("new", "mine");
    EXPECT_THAT(checkOut("topic")->error(),
                HasErrorClass(NEBSourceControlUntrackedInTheWayErrorClass));
    EXPECT_EQ(branch(), "main\n");
    EXPECT_EQ(status(), "?? new\n");
}

TEST_F(CheckoutInRepository, ReportsAHookThatFailsAfterwards) {
    hook("echo 'no mail today' >&2; exit 1");
    auto operation = checkOut("topic");
    EXPECT_THAT(operation->error(),
                IsSourceControlError(
                    -1, "The checkout was made, but a hook of the repository failed after it."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass));
    EXPECT_THAT(*operation->error()->text, HasSubstr("no mail today"));
    EXPECT_EQ(branch(), "topic\n");
    hook("echo \"error: pathspec 'x' did not match any file(s) known to git\" >&2; exit 1");
    EXPECT_THAT(checkOut("main")->error(),
                HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass))
        << "its words choose nothing";
    hook("echo 'fatal: not under version control' >&2; exit 1");
    operation = checkOut("topic");
    EXPECT_THAT(operation->error(), IsSourceControlError(-71, HasSubstr("version control")));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass));
    hook("echo 'error: unable to create file x: Permission denied' >&2");
    EXPECT_EQ(checkOut("main")->error(), std::nullopt) << "it is not git that says so";
    hook("echo 'warning: Permission denied' >&2");
    EXPECT_EQ(checkOut("topic")->error(), std::nullopt) << "a hook that talks and agrees";
    hook("exit 3");
    repository.write("a", "x");
    EXPECT_THAT(revertFile("a")->error(),
                IsSourceControlError(-1, "git exited with status 3 and printed nothing."));
    EXPECT_EQ(status(), "");
}

/// git exits with status 0 and does not change the file.
TEST_F(CheckoutInRepository, ReportsARevertOfAConflictingFile) {
    repository.commitFile("a", "main\n");
    EXPECT_NE(repository.gitStatus({"merge", "-q", "topic"}), 0);
    const auto operation = revertFile("a");
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
    EXPECT_THAT(operation->error(), IsSourceControlError(-1, HasSubstr("were left unchanged")));
    EXPECT_EQ(status(), "UU a\n");
}

TEST_F(CheckoutInRepository, ReportsAFileThatCannotBeWritten) {
    test::StandIn<GitCheckoutOperation> operation(
        [this] {
            repository.write("git",
                             "#!/bin/sh\necho 'error: unable to create file d/z: Read-only file "
                             "system' >&2\necho \"Switched to branch 'topic'\" >&2\n");
            fs::permissions(repository.path("git"), fs::perms(0755));
            return repository.path("git");
        }(),
        checkout("topic", repository.path()));
    operation.start();
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlPermissionDeniedErrorClass));
    EXPECT_EQ(operation.error()->code, 513);
    EXPECT_THAT(operation.error()->text, Optional(HasSubstr("Read-only file system")));
    EXPECT_THAT(contentOf(operation), HasSubstr("Switched to branch 'topic'"));
}

TEST_F(CheckoutInRepository, RevertDiscardsUnstagedChanges) {
    repository.write("a", "changed");
    repository.commitFile("b", "b");
    repository.write("b", "staged");
    repository.git({"add", "b"});
    repository.write("b", "staged and changed");
    EXPECT_EQ(status(), " M a\nMM b\n");
    const auto operation = revertFile("a");
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(contentOf(*operation), "");
    EXPECT_EQ(revertFile("b")->error(), std::nullopt);
    EXPECT_EQ(status(), "M  b\n") << "what is staged stays";
    fs::remove(repository.path("a"));
    EXPECT_EQ(revertFile("a")->error(), std::nullopt);
    EXPECT_TRUE(fs::exists(repository.path("a")));
}

TEST_F(CheckoutInRepository, RevertTreatsANameLiterally) {
    repository.commitFile("st[U]r.txt", "1");
    repository.commitFile("stUr.txt", "1");
    repository.write("st[U]r.txt", "2");
    repository.write("stUr.txt", "2");
    EXPECT_EQ(revertFile("st[U]r.txt")->error(), std::nullopt);
    EXPECT_EQ(status(), " M stUr.txt\n") << "an innocent file's edit is gone";
}

TEST_F(CheckoutInRepository, ReportsARevertOfAnUntrackedFile) {
    repository.write("untracked", "u");
    const auto operation = revertFile("untracked");
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathUnknownErrorClass));
    EXPECT_EQ(operation->error()->code, -71);
    EXPECT_THAT(operation->error()->files, ElementsAre(repository.path("untracked")));
    EXPECT_TRUE(fs::exists(repository.path("untracked")));
}

}  // namespace
}  // namespace neb

#include "GitExtensions/GitCreateCommit.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Classes/GitExtensions/ChangeRequests.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

NEBDictionary withMessage(const std::string& message) {
    return {{NEBSourceControlRequestOptionMessage, message}};
}

class CreateCommit : public ChangeTest {
protected:
    void expectHead(const NEBSourceControlOperation& operation) const {
        EXPECT_EQ(operation.error(), std::nullopt);
        EXPECT_THAT(textsOf(operation, NEBSourceControlOperationObjectIDKey), ElementsAre(head()));
    }
};

TEST_F(CreateCommit, ReturnsTheFullIdAndKeepsTheMessage) {
    repository.write("a.c", "1");
    repository.git({"add", "a.c"});
    expectHead(*performed(NEBSourceControlRequestCreateCommit, withMessage("-m\n\n# no comment")));
    EXPECT_EQ(git({"log", "--format=%B"}), "-m\n\n# no comment");
    repository.git({"checkout", "-q", "--detach"});
    repository.write("a.c", "2");
    NEBDictionary options = withMessage("Second");
    options.set(NEBSourceControlRequestOptionAll, true);
    options.set(NEBSourceControlRequestOptionSignOff, true);
    options.set(NEBSourceControlRequestOptionAuthor, "Ben <ben@example.org>");
    expectHead(*performed(NEBSourceControlRequestCreateCommit, options));
    EXPECT_EQ(git({"log", "-1", "--format=%an %ae"}), "Ben ben@example.org");
    EXPECT_THAT(git({"log", "-1", "--format=%B"}), HasSubstr("Second\n\nSigned-off-by: "));
}

TEST_F(CreateCommit, SucceedsWhateverAHookPrints) {
    repository.write("a.c", "1");
    repository.git({"add", "a.c"});
    repository.write(".git/hooks/post-commit",
                     "#!/bin/sh\necho 'error: could not lock config file x: File exists' >&2\n");
    ::chmod(repository.path(".git/hooks/post-commit").c_str(), 0700);
    expectHead(*performed(NEBSourceControlRequestCreateCommit, withMessage("m")));
}

/// git itself takes the author of the first commit that matches.
TEST_F(CreateCommit, TakesNoAuthorOfAnotherCommit) {
    repository.commitFile("a.c", "1");
    const std::string before = head();
    for (const std::string& author :
         {git({"log", "-1", "--format=%an"}), std::string("."), std::string()}) {
        NEBDictionary options = withMessage("m");
        options.set(NEBSourceControlRequestOptionAllowEmptyCommit, true);
        options.set(NEBSourceControlRequestOptionAuthor, author);
        EXPECT_THAT(performed(NEBSourceControlRequestCreateCommit, options)->error(),
                    HasErrorClass(NEBSourceControlIdentityInvalidErrorClass));
        EXPECT_EQ(head(), before);
    }
}

TEST_F(CreateCommit, CommitsOnlyTheNamedFiles) {
    repository.commitFile("other", "1");
    for (const std::string& name : hostileNames) {
        repository.write(name, "1");
        repository.git({"add", "."});
        repository.git({"commit", "-q", "-m", "m"});
        repository.write(name, "2");
        repository.write("other", "2 " + name);
        repository.git({"add", "."});
        expectHead(*performed(NEBSourceControlRequestCreateCommit, withMessage("m"), {name}));
        EXPECT_EQ(repository.git({"diff", "--name-only", "-z", "HEAD~1", "HEAD"}),
                  name + std::string(1, '\0'));
    }
}

TEST_F(CreateCommit, AmendsAndConcludesAMergeWithTheirMessages) {
    makeConflictingBranch();
    const std::string before = git({"log", "-1", "--format=%B %T"});
    repository.write("b.c", "1");
    repository.git({"add", "b.c"});
    expectHead(*performed(NEBSourceControlRequestCreateCommit,
                          {{NEBSourceControlRequestOptionAmend, true}}));
    EXPECT_EQ(git({"rev-list", "--count", "HEAD"}), "2");
    EXPECT_NE(git({"log", "-1", "--format=%B %T"}), before);
    EXPECT_NE(repository.gitStatus({"merge", "-q", "side"}), 0);
    EXPECT_THAT(performed(NEBSourceControlRequestCreateCommit, withMessage("m"))->error(),
                HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
    repository.git({"add", "a.c"});
    expectHead(*performed(NEBSourceControlRequestCreateCommit));
    EXPECT_THAT(git({"log", "-1", "--format=%s %P"}), HasSubstr("Merge branch 'side' "));
}

TEST_F(CreateCommit, TakesNoMessageWithANULByte) {
    repository.commitFile("a.c", "1");
    const std::string before = head();
    const NEBValue message = NEBValue::ofBytes(Data(std::string("a\0b", 3)));
    const NEBDictionary options{{NEBSourceControlRequestOptionMessage, message},
                                {NEBSourceControlRequestOptionAllowEmptyCommit, true}};
    EXPECT_THAT(performed(NEBSourceControlRequestCreateCommit, options)->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_EQ(head(), before);
    const auto tag =
        requestOf(NEBSourceControlRequestTag, {{NEBSourceControlRequestOptionMessage, message}});
    tag->destination = "v1";
    EXPECT_THAT(performed(tag)->error(), HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_EQ(git({"tag"}), "");
    repository.write("a.c", "2");
    EXPECT_THAT(
        performed(NEBSourceControlRequestStash, {{NEBSourceControlRequestOptionMessage, message},
                                                 {NEBSourceControlRequestOptionAction, "push"}})
            ->error(),
        HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_EQ(git({"stash", "list"}), "");
}

TEST_F(CreateCommit, DoesNotAmendTheLastChangeAway) {
    repository.commitFile("a.c", "1");
    repository.commitFile("a.c", "2");
    repository.write("a.c", "1");
    const auto refused = performed(
        NEBSourceControlRequestCreateCommit,
        {{NEBSourceControlRequestOptionAmend, true}, {NEBSourceControlRequestOptionAll, true}});
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlNothingToCommitErrorClass));
    EXPECT_EQ(refused->error()->localizedDescription(),
              "The amended commit would have no changes.");
}

TEST_F(CreateCommit, SaysWhyNot) {
    EXPECT_THAT(
        performed(NEBSourceControlRequestCreateCommit, {{NEBSourceControlRequestOptionAmend, true}})
            ->error(),
        HasErrorClass(NEBSourceControlNoCommitsYetErrorClass));
    EXPECT_THAT(performed(NEBSourceControlRequestCreateCommit, withMessage("m"))->error(),
                HasErrorClass(NEBSourceControlNothingToCommitErrorClass));
    repository.write("a.c", "1");
    repository.git({"add", "a.c"});
    EXPECT_THAT(performed(NEBSourceControlRequestCreateCommit)->error(),
                HasErrorClass(NEBSourceControlMessageEmptyErrorClass));
    NEBDictionary options = withMessage("m");
    options.set(NEBSourceControlRequestOptionAuthor, "Ann");
    EXPECT_THAT(performed(NEBSourceControlRequestCreateCommit, options)->error(),
                HasErrorClass(NEBSourceControlIdentityInvalidErrorClass));
    repository.write(".git/hooks/pre-commit", "#!/bin/sh\necho no >&2\nexit 1\n");
    EXPECT_EQ(::chmod(repository.path(".git/hooks/pre-commit").c_str(), 0755), 0);
    EXPECT_THAT(performed(NEBSourceControlRequestCreateCommit, withMessage("m"))->error(),
                HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass));
    EXPECT_NE(repository.gitStatus({"rev-parse", "--verify", "-q", "HEAD"}), 0);
}

}  // namespace
}  // namespace neb::test

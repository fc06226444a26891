#include "GitExtensions/GitTag.h"

#include <gmock/gmock.h>

#include "Classes/GitExtensions/ChangeRequests.h"

namespace neb::test {
namespace {

class Tag : public ChangeTest {
protected:
    [[nodiscard]] Operation performedOn(const std::string& name, NEBDictionary options = {}) const {
        const auto request = requestOf(NEBSourceControlRequestTag, std::move(options));
        request->destination = name;
        return performed(request);
    }
    /// Expects the record of the tag.
    void expectRecord(const NEBSourceControlOperation& operation, const std::string& name,
                      const std::string& id) const {
        EXPECT_EQ(operation.error(), std::nullopt);
        EXPECT_THAT(textsOf(operation, NEBSourceControlOperationNameKey),
                    testing::ElementsAre("refs/tags/" + textReplacingInvalidBytes(name)));
        EXPECT_THAT(textsOf(operation, NEBSourceControlOperationObjectIDKey),
                    testing::ElementsAre(id));
    }
};

const NEBDictionary tagDeletion{{NEBSourceControlRequestOptionAction, "delete"}};

TEST_F(Tag, IsCreatedAndDeleted) {
    repository.commitFile("a.c", "1");
    for (const std::string name : {"v1", "it's", "b\xe4r", "a/b", "\"q\""}) {
        expectRecord(*performedOn(name), name, head());
        EXPECT_EQ(git({"rev-parse", "refs/tags/" + name}), head());
        expectRecord(*performedOn(name, tagDeletion), name, head());
        EXPECT_NE(repository.gitStatus({"rev-parse", "-q", "--verify", "refs/tags/" + name}), 0);
    }
}

TEST_F(Tag, IsAnnotatedIfItHasAMessage) {
    repository.commitFile("a.c", "1");
    repository.commitFile("a.c", "2");
    const auto request = requestOf(NEBSourceControlRequestTag,
                                   {{NEBSourceControlRequestOptionMessage, "One\n\n# two"}});
    request->destination = "v1";
    request->startingRevision = "HEAD~1";
    const auto created = performed(request);
    expectRecord(*created, "v1", git({"rev-parse", "refs/tags/v1"}));
    EXPECT_EQ(git({"rev-parse", "v1^{}"}), git({"rev-parse", "HEAD~1"}));
    EXPECT_EQ(git({"for-each-ref", "--format=%(objecttype) %(contents)", "refs/tags/v1"}),
              "tag One\n\n# two");
}

TEST_F(Tag, IsReplacedOnlyByForce) {
    repository.commitFile("a.c", "1");
    repository.git({"tag", "v1"});
    const std::string before = head();
    repository.commitFile("a.c", "2");
    EXPECT_THAT(performedOn("v1")->error(), HasErrorClass(NEBSourceControlTagExistsErrorClass));
    EXPECT_EQ(git({"rev-parse", "v1"}), before);
    expectRecord(*performedOn("v1", {{NEBSourceControlRequestOptionForce, true}}), "v1", head());
}

TEST_F(Tag, SaysWhyNot) {
    EXPECT_THAT(performedOn("v1")->error(), HasErrorClass(NEBSourceControlNoCommitsYetErrorClass));
    repository.commitFile("a.c", "1");
    for (const char* name : {"-d", "a b", "x..y", ""}) {
        EXPECT_THAT(performedOn(name)->error(),
                    HasErrorClass(NEBSourceControlTagNameInvalidErrorClass))
            << name;
    }
    EXPECT_THAT(performedOn("nosuch", tagDeletion)->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_THAT(performedOn("v1", {{NEBSourceControlRequestOptionAction, "list"}})->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    const auto request = requestOf(NEBSourceControlRequestTag);
    request->destination = "v1";
    request->startingRevision = "--delete";
    EXPECT_THAT(performed(request)->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    EXPECT_EQ(git({"tag"}), "");
}

}  // namespace
}  // namespace neb::test

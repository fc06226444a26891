#include "GitExtensions/GitChangeSubmodules.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "Classes/GitExtensions/ChangeRequests.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// A clone of a repository with the submodules "lib/one" and "lib/zw ei", neither initialized.
class ChangeSubmodules : public ChangeTest {
protected:
    void SetUp() override {
        ChangeTest::SetUp();
        inner.commitFile("a", "1\n");
        repository.git({"clone", "-q", inner.path(), folder.path("zwei")});
        repository.git({"submodule", "--quiet", "add", inner.path(), "lib/one"});
        repository.git({"submodule", "--quiet", "add", folder.path("zwei"), "lib/zw ei"});
        repository.git({"commit", "-q", "-m", "Submodules"});
        repository.git({"clone", "-q", repository.path(), clone()});
    }
    [[nodiscard]] std::string clone() const { return folder.path("clone"); }
    [[nodiscard]] Operation changed(const char* action, const std::vector<std::string>& files = {},
                                    NEBDictionary options = {}) const {
        const auto request = requestFor(NEBSourceControlRequestSubmodules, clone());
        request->options = std::move(options);
        request->options->set(NEBSourceControlRequestOptionAction, action);
        request->repositoryToAuthenticate = request->sourceTree;
        if (!files.empty()) {
            request->files = valuesOf(files);
        }
        return performed(request);
    }
    [[nodiscard]] static std::vector<std::string> statesOf(const Operation& operation) {
        return textsOf(*operation, NEBSourceControlOperationStateKey);
    }
    /// Returns the commit that is checked out in a submodule of the clone.
    [[nodiscard]] std::string idIn(const std::string& path) const {
        return git({"-C", clone() + "/" + path, "rev-parse", "HEAD"});
    }

    TestRepository inner;
    TemporaryFolder folder;
};

const NEBDictionary withInit{{NEBSourceControlRequestOptionInitialize, true}};

TEST_F(ChangeSubmodules, AreInitializedAndUpdated) {
    EXPECT_THAT(statesOf(changed("update")), ElementsAre("not initialized", "not initialized"));
    const auto initialized = changed("init", {"lib/zw ei"});
    EXPECT_EQ(initialized->error(), std::nullopt);
    EXPECT_THAT(pathsOf(*initialized), ElementsAre("lib/zw ei"));
    EXPECT_THAT(statesOf(initialized), ElementsAre("not cloned"));
    const auto updated = changed("update");
    EXPECT_EQ(updated->error(), std::nullopt);
    EXPECT_THAT(statesOf(updated), ElementsAre("not initialized", "current"));
    EXPECT_THAT(statesOf(changed("update", {"lib"}, withInit)), ElementsAre("current", "current"));
    EXPECT_EQ(idIn("lib/one"), git({"-C", inner.path(), "rev-parse", "HEAD"}));
}

TEST_F(ChangeSubmodules, AcceptAbsolutePaths) {
    EXPECT_THAT(statesOf(changed("update", {clone() + "/lib/one"}, withInit)),
                ElementsAre("current"));
}

TEST_F(ChangeSubmodules, FollowTheBranchOfTheRemote) {
    EXPECT_EQ(changed("update", {}, withInit)->error(), std::nullopt);
    inner.commitFile("a", "2\n");
    EXPECT_THAT(statesOf(changed("update", {"lib/one"})), ElementsAre("current"));
    const auto followed =
        changed("update", {"lib/one"}, {{NEBSourceControlRequestOptionFollowBranch, true}});
    EXPECT_THAT(statesOf(followed), ElementsAre("other commit"));
    EXPECT_EQ(idIn("lib/one"), git({"-C", inner.path(), "rev-parse", "HEAD"}));
}

TEST_F(ChangeSubmodules, AreUpdatedRecursively) {
    const TestRepository innermost;
    innermost.commitFile("z", "1\n");
    inner.git({"submodule", "--quiet", "add", innermost.path(), "deep"});
    inner.git({"commit", "-q", "-m", "Deep"});
    repository.git({"-C", "lib/one", "pull", "-q"});
    repository.git({"commit", "-q", "-a", "-m", "Update"});
    repository.git({"-C", clone(), "pull", "-q"});
    NEBDictionary options = withInit;
    options.set(NEBSourceControlRequestOptionRecursive, true);
    EXPECT_EQ(changed("update", {"lib/one"}, options)->error(), std::nullopt);
    EXPECT_TRUE(std::filesystem::exists(clone() + "/lib/one/deep/z"));
}

TEST_F(ChangeSubmodules, KeepLocalChangesUnlessForced) {
    EXPECT_EQ(changed("update", {}, withInit)->error(), std::nullopt);
    inner.commitFile("a", "2\n");
    repository.git({"-C", "lib/one", "pull", "-q"});
    repository.git({"commit", "-q", "-a", "-m", "Update"});
    repository.git({"-C", clone(), "pull", "-q", "--no-recurse-submodules"});
    folder.write("clone/lib/one/a", "mine\n");
    EXPECT_NE(changed("update", {"lib/one"})->error(), std::nullopt);
    EXPECT_EQ(folder.read("clone/lib/one/a"), "mine\n");
    EXPECT_EQ(changed("update", {"lib/one"}, {{NEBSourceControlRequestOptionForce, true}})->error(),
              std::nullopt);
    EXPECT_EQ(folder.read("clone/lib/one/a"), "2\n");
}

TEST_F(ChangeSubmodules, SayWhyNot) {
    const auto unknown = changed("init", {"lib/nosuch"});
    EXPECT_THAT(unknown->error(), HasErrorClass(NEBSourceControlPathUnknownErrorClass));
    EXPECT_THAT(unknown->error()->localizedDescription().value_or(""), HasSubstr("lib/nosuch"));
    const auto left = changed("update", {"lib/one"});
    EXPECT_THAT(left->error(), HasErrorClass(NEBSourceControlSubmoduleFailedErrorClass));
    EXPECT_THAT(left->error()->localizedDescription().value_or(""),
                HasSubstr("\"lib/one\" was not updated: it is not initialized."));
    std::filesystem::remove_all(folder.path("zwei"));
    EXPECT_NE(changed("update", {"lib/zw ei"}, withInit)->error(), std::nullopt);
    EXPECT_THAT(changed("add")->error(), HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
}

}  // namespace
}  // namespace neb::test

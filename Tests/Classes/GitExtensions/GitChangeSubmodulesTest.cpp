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

TEST_F(ChangeSubmodules, CanHaveAnyName) {
    const std::vector<std::string> names{"lib[1]", "st*r", "b\xe4r"};
    for (const std::string& name : names) {
        repository.git({"submodule", "--quiet", "add", inner.path(), "./" + name});
    }
    repository.git({"commit", "-q", "-m", "Names"});
    repository.git({"-C", clone(), "pull", "-q", "--no-recurse-submodules"});
    for (const std::string& name : names) {
        const auto updated = changed("update", {name}, withInit);
        EXPECT_EQ(updated->error(), std::nullopt) << name;
        EXPECT_THAT(statesOf(updated), ElementsAre("current")) << name;
    }
}

TEST_F(ChangeSubmodules, AreInConflictWithAnyName) {
    repository.git({"submodule", "--quiet", "add", inner.path(), "lib[1]"});
    repository.git({"commit", "-q", "-m", "Names"});
    repository.git({"-C", clone(), "pull", "-q", "--no-recurse-submodules"});
    EXPECT_EQ(changed("update", {"lib[1]"}, withInit)->error(), std::nullopt);
    std::string stages;
    for (const char* stage : {"1", "2", "3"}) {
        stages += "160000 " + idIn("lib[1]") + " " + stage + "\tlib[1]\n";
    }
    repository.git({"-C", clone(), "update-index", "--force-remove", "lib[1]"});
    repository.gitWithInput({"-C", clone(), "update-index", "--index-info"}, stages);
    EXPECT_THAT(changed("update", {"lib[1]"})->error(),
                HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
}

/// The setting update=none is that of the repository, or else that in .gitmodules.
TEST_F(ChangeSubmodules, ThatAreNeverUpdatedAreAnError) {
    EXPECT_EQ(changed("update", {}, withInit)->error(), std::nullopt);
    inner.commitFile("a", "2\n");
    repository.git({"-C", "lib/one", "pull", "-q"});
    repository.git({"commit", "-q", "-a", "-m", "Update"});
    repository.git({"-C", clone(), "pull", "-q", "--no-recurse-submodules"});
    const std::string setting = "submodule.lib/one.update";
    repository.git({"config", "--file", clone() + "/.gitmodules", setting, "none"});
    for (const char* value : {"", "none"}) {
        if (*value != '\0') {
            repository.git({"-C", clone(), "config", setting, value});
        }
        const auto left = changed("update", {"lib/one"});
        EXPECT_THAT(left->error(), HasErrorClass(NEBSourceControlSubmoduleFailedErrorClass));
        EXPECT_THAT(left->error()->localizedDescription().value_or(""),
                    HasSubstr("\"lib/one\" was not updated: its setting \"update\" is \"none\"."));
        EXPECT_EQ(changed("update")->error(), std::nullopt) << "only those that are named";
    }
    const NEBDictionary toBranch{{NEBSourceControlRequestOptionFollowBranch, true}};
    EXPECT_THAT(changed("update", {"lib/one"}, toBranch)->error(),
                HasErrorClass(NEBSourceControlSubmoduleFailedErrorClass));
    for (const char* value : {"checkout", "merge"}) {
        repository.git({"-C", clone(), "config", setting, value});
        EXPECT_EQ(changed("update", {"lib/one"})->error(), std::nullopt) << value;
        EXPECT_THAT(statesOf(changed("update", {"lib/one"})), ElementsAre("current"));
    }
    repository.git({"-C", clone() + "/lib/one", "commit", "-q", "--allow-empty", "-m", "Mine"});
    const auto merged = changed("update", {"lib/one"});
    EXPECT_EQ(merged->error(), std::nullopt) << "the own commit stays";
    EXPECT_THAT(statesOf(merged), ElementsAre("other commit"));
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

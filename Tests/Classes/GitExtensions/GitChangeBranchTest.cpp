#include "GitExtensions/GitChangeBranch.h"

#include <gmock/gmock.h>

#include "Classes/GitExtensions/ChangeRequests.h"

namespace neb::test {
namespace {

class ChangeBranch : public ChangeTest {
protected:
    /// `name` is the new name or the upstream branch; `branch` is empty for the current one.
    [[nodiscard]] Operation changed(const char* action, const std::string& name,
                                    const std::string& branch = "", bool isForced = false) const {
        const auto request = requestOf(NEBSourceControlRequestChangeBranch,
                                       {{NEBSourceControlRequestOptionAction, action}});
        if (!name.empty()) {
            request->destination = NEBValue(Data(name));
        }
        if (!branch.empty()) {
            request->options->set(NEBSourceControlRequestOptionBranch, NEBValue(Data(branch)));
        }
        if (isForced) {
            request->options->set(NEBSourceControlRequestOptionForce, true);
        }
        return performed(request);
    }
    [[nodiscard]] Operation renamed(const std::string& name, const std::string& branch = "",
                                    bool isForced = false) const {
        return changed("rename", name, branch, isForced);
    }
    [[nodiscard]] std::string idOf(const std::string& branch) const {
        return git({"rev-parse", "--verify", "--quiet", "refs/heads/" + branch});
    }
    /// Returns the record, and expects that the operation succeeded.
    [[nodiscard]] static NEBDictionary recordIn(const Operation& operation) {
        EXPECT_EQ(operation->error(), std::nullopt);
        return operation->result() && operation->result()->size() == 1U
                   ? operation->result()->front()
                   : NEBDictionary();
    }
    void makeRemote() const {
        repository.git({"init", "-q", "--bare", folder.path("origin")});
        repository.git({"remote", "add", "origin", folder.path("origin")});
        repository.git({"push", "-q", "origin", "main"});
    }

    TemporaryFolder folder;
};

TEST_F(ChangeBranch, RenamesWithAnyName) {
    repository.commitFile("a.c", "1");
    std::string branch = "main";
    for (const std::string name : {"it's", "b\xe4r", "a/b", "\"q\"", "rename", "ü"}) {
        const NEBDictionary record = recordIn(renamed(name, branch));
        EXPECT_EQ(
            nameIn(record, NEBSourceControlOperationNameKey, NEBSourceControlOperationNameBytesKey),
            "refs/heads/" + name);
        EXPECT_EQ(nameIn(record, NEBSourceControlOperationSourceKey,
                         NEBSourceControlOperationSourceBytesKey),
                  "refs/heads/" + branch);
        EXPECT_EQ(record.text(NEBSourceControlOperationObjectIDKey), head());
        EXPECT_EQ(git({"symbolic-ref", "HEAD"}), "refs/heads/" + name);
        branch = name;
    }
}

TEST_F(ChangeBranch, RenamesTheCurrentOneAndKeepsItsUpstream) {
    repository.commitFile("a.c", "1");
    makeRemote();
    repository.git({"branch", "-q", "--set-upstream-to=origin/main"});
    const NEBDictionary record = recordIn(renamed("trunk"));
    EXPECT_EQ(record.text(NEBSourceControlOperationUpstreamKey), "refs/remotes/origin/main");
    EXPECT_EQ(git({"rev-parse", "--symbolic-full-name", "trunk@{upstream}"}),
              "refs/remotes/origin/main");
}

TEST_F(ChangeBranch, RenamesOneWithoutCommits) {
    const NEBDictionary record = recordIn(renamed("trunk"));
    EXPECT_EQ(record.text(NEBSourceControlOperationSourceKey), "refs/heads/main");
    EXPECT_FALSE(record.contains(NEBSourceControlOperationObjectIDKey));
    EXPECT_EQ(git({"symbolic-ref", "HEAD"}), "refs/heads/trunk");
    EXPECT_EQ(recordIn(renamed("root", "trunk")).text(NEBSourceControlOperationNameKey),
              "refs/heads/root");
}

TEST_F(ChangeBranch, RenamesTheOneThatWasCheckedOutBefore) {
    repository.commitFile("a.c", "1");
    repository.git({"checkout", "-q", "-b", "side"});
    EXPECT_EQ(recordIn(renamed("trunk", "@{-1}")).text(NEBSourceControlOperationSourceKey),
              "refs/heads/main");
    EXPECT_EQ(idOf("trunk"), head());
}

TEST_F(ChangeBranch, BeginsBesideOneWithoutCommits) {
    repository.write("a.c", "1");
    repository.git({"add", "a.c"});
    repository.git({"config", "branch.main.remote", "origin"});
    EXPECT_EQ(recordIn(changed("begin", "new")),
              (NEBDictionary{{NEBSourceControlOperationNameKey, "refs/heads/new"}}));
    EXPECT_EQ(git({"symbolic-ref", "HEAD"}), "refs/heads/new");
    EXPECT_EQ(git({"ls-files"}), "a.c");
    EXPECT_EQ(git({"config", "branch.main.remote"}), "origin") << "main was not renamed";
    repository.git({"commit", "-q", "-m", "First"});
    EXPECT_THAT(changed("begin", "third")->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_EQ(git({"symbolic-ref", "HEAD"}), "refs/heads/new");
    repository.git({"checkout", "-q", "--orphan", "fresh"});
    EXPECT_THAT(changed("begin", "new")->error(),
                HasErrorClass(NEBSourceControlBranchExistsErrorClass));
}

/// It would begin with the commits of the current one.
TEST_F(ChangeBranch, BeginsBesideTheCurrentOneOnly) {
    repository.commitFile("a.c", "1");
    EXPECT_THAT(changed("begin", "new", "none")->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_EQ(git({"branch", "--list", "new"}), "");
}

TEST_F(ChangeBranch, IsReplacedOnlyByForce) {
    repository.commitFile("a.c", "1");
    repository.git({"branch", "other"});
    const std::string before = head();
    repository.commitFile("a.c", "2");
    EXPECT_THAT(renamed("other")->error(), HasErrorClass(NEBSourceControlBranchExistsErrorClass));
    EXPECT_EQ(idOf("other"), before);
    EXPECT_EQ(recordIn(renamed("other", "", true)).text(NEBSourceControlOperationObjectIDKey),
              head());
    EXPECT_EQ(git({"branch"}), "* other");
}

TEST_F(ChangeBranch, IsNotReplacedInUse) {
    repository.commitFile("a.c", "1");
    repository.git({"worktree", "add", "-q", "-b", "there", folder.path("there")});
    EXPECT_THAT(renamed("there", "", true)->error(),
                HasErrorClass(NEBSourceControlBranchInUseErrorClass));
    EXPECT_EQ(git({"symbolic-ref", "HEAD"}), "refs/heads/main");
    EXPECT_EQ(recordIn(renamed("elsewhere", "there")).text(NEBSourceControlOperationNameKey),
              "refs/heads/elsewhere");
    EXPECT_EQ(git({"-C", folder.path("there"), "symbolic-ref", "HEAD"}), "refs/heads/elsewhere");
}

TEST_F(ChangeBranch, SetsAndUnsetsTheUpstream) {
    repository.commitFile("a.c", "1");
    makeRemote();
    repository.git({"branch", "side"});
    EXPECT_EQ(
        recordIn(changed("set-upstream", "origin/main")).text(NEBSourceControlOperationUpstreamKey),
        "refs/remotes/origin/main");
    EXPECT_EQ(recordIn(changed("set-upstream", "main", "side"))
                  .text(NEBSourceControlOperationUpstreamKey),
              "refs/heads/main");
    EXPECT_EQ(git({"rev-parse", "--symbolic-full-name", "side@{upstream}"}), "refs/heads/main");
    const NEBDictionary record = recordIn(changed("unset-upstream", "", "side"));
    EXPECT_EQ(record.text(NEBSourceControlOperationNameKey), "refs/heads/side");
    EXPECT_FALSE(record.contains(NEBSourceControlOperationUpstreamKey));
    EXPECT_NE(repository.gitStatus({"config", "branch.side.merge"}), 0);
    EXPECT_EQ(git({"config", "branch.main.merge"}), "refs/heads/main");
}

/// git only warns, and keeps the former upstream branch.
TEST_F(ChangeBranch, IsNeverItsOwnUpstream) {
    repository.commitFile("a.c", "1");
    makeRemote();
    for (const char* name : {"main", "heads/main", "refs/heads/main", "HEAD", "@"}) {
        EXPECT_THAT(changed("set-upstream", name)->error(),
                    HasErrorClass(NEBSourceControlRequestInvalidErrorClass))
            << name;
    }
    EXPECT_NE(repository.gitStatus({"config", "branch.main.merge"}), 0);
    repository.git({"branch", "-q", "--set-upstream-to=origin/main"});
    for (const char* name : {"main", "refs/heads/main", "HEAD"}) {
        EXPECT_THAT(changed("set-upstream", name, "main")->error(),
                    HasErrorClass(NEBSourceControlRequestInvalidErrorClass))
            << name;
    }
    EXPECT_EQ(git({"rev-parse", "--symbolic-full-name", "main@{upstream}"}),
              "refs/remotes/origin/main");
}

/// A request that cannot work, and why.
struct ChangeBranchRefusal {
    const char* action;
    std::string name, branch;
    std::string_view errorClass;
};

TEST_F(ChangeBranch, SaysWhyNot) {
    EXPECT_THAT(changed("set-upstream", "origin/main")->error(),
                HasErrorClass(NEBSourceControlNoCommitsYetErrorClass));
    repository.commitFile("a.c", "1");
    const ChangeBranchRefusal refusals[] = {
        {"rename", "x", "nosuch", NEBSourceControlBranchUnknownErrorClass},
        {"rename", "-d", "", NEBSourceControlBranchNameInvalidErrorClass},
        {"rename", "a b", "", NEBSourceControlBranchNameInvalidErrorClass},
        {"rename", "HEAD", "", NEBSourceControlBranchNameInvalidErrorClass},
        {"rename", "x", "--all", NEBSourceControlBranchNameInvalidErrorClass},
        {"rename", "", "", NEBSourceControlRequestInvalidErrorClass},
        {"set-upstream", "nosuch/x", "", NEBSourceControlRemoteBranchUnknownErrorClass},
        {"set-upstream", "main", "", NEBSourceControlRequestInvalidErrorClass},
        {"set-upstream", "main", "nosuch", NEBSourceControlBranchUnknownErrorClass},
        {"unset-upstream", "", "", NEBSourceControlNoUpstreamErrorClass},
        {"move", "x", "", NEBSourceControlRequestInvalidErrorClass},
        {"", "x", "", NEBSourceControlRequestInvalidErrorClass},
    };
    for (const auto& [action, name, branch, errorClass] : refusals) {
        EXPECT_THAT(changed(action, name, branch)->error(), HasErrorClass(errorClass))
            << action << ' ' << name << ' ' << branch;
    }
    repository.git({"checkout", "-q", "--detach"});
    EXPECT_THAT(renamed("x")->error(), HasErrorClass(NEBSourceControlNoCurrentBranchErrorClass));
    EXPECT_EQ(git({"for-each-ref", "--format=%(refname)"}), "refs/heads/main");
}

}  // namespace
}  // namespace neb::test

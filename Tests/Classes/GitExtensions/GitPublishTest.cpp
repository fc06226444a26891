#include "GitExtensions/GitPublish.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "Classes/GitExtensions/ChangeRequests.h"
#include "Support/RecordParts.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const NEBDictionary pushToOrigin{{NEBSourceControlRequestOptionRemoteName, "origin"},
                                 {NEBSourceControlRequestOptionBranch, "main"}};

NEBDictionary withOption(NEBDictionary options, NEBConstant key, NEBValue value) {
    options.set(key, std::move(value));
    return options;
}

/// The push, without a request for its arguments.
class GitPublishTestParser : public GitPushPorcelainOperation {
public:
    explicit GitPublishTestParser(std::shared_ptr<NEBSourceControlRequest> request)
        : GitPushPorcelainOperation(std::move(request), {"push"}) {}
};

class Publish : public ChangeTest {
protected:
    void SetUp() override {
        ChangeTest::SetUp();
        repository.commitFile("a.c", "1");
        repository.git({"init", "-q", "--bare", folder.path("there.git")});
        repository.git({"remote", "add", "origin", folder.path("there.git")});
    }
    [[nodiscard]] Operation published(NEBDictionary options,
                                      const NEBValue& destination = {}) const {
        const auto request = requestOf(NEBSourceControlRequestPublish, std::move(options));
        request->destination = destination;
        return performed(request);
    }
    [[nodiscard]] std::string there(const std::string& name) const {
        return git({"-C", folder.path("there.git"), "rev-parse", "--verify", name});
    }
    /// Writes the hook that runs before a push.
    void writeHook(const std::string& script) const {
        repository.write(".git/hooks/pre-push", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(repository.path(".git/hooks/pre-push"),
                                     std::filesystem::perms::owner_all);
    }
    /// Pushes a commit from elsewhere.
    void pushFromElsewhere() const {
        const TestRepository other(folder.path("there.git"));
        other.git({"checkout", "-q", "main"});
        other.commitFile("b.c", "1");
        other.git({"push", "-q", "origin", "main"});
    }

    TemporaryFolder folder;
};

TEST_F(Publish, WhatTheHookPrintsIsNoResult) {
    const std::string line = R"(printf '!\tsrc:dst\tweird\n')";
    writeHook(line);
    const Operation done = published(pushToOrigin);
    EXPECT_EQ(done->error(), std::nullopt);
    ASSERT_EQ(done->result()->size(), 1U);
    EXPECT_EQ(done->result()->front().value(NEBSourceControlOperationNameKey), "refs/heads/main");
    writeHook(line + "; yes | head -c 4000000; echo stop; exit 1");
    repository.commitFile("a.c", "2");
    const Operation refused = published(pushToOrigin);
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass));
    EXPECT_LE(refused->error()->text->size(), 2U << 20U);
    EXPECT_THAT(*refused->error()->text, HasSubstr("\ny\nstop\nerror: failed to push"));
}

TEST_F(Publish, ParserLeavesOutIncompleteIds) {
    for (const char* summary : {"..", "...", "a..", "..b", "a", ""}) {
        const auto records = recordsOf<GitPublishTestParser>(
            requestFor(NEBSourceControlRequestPublish, "/w"),
            std::string("To /there\n \tmain:refs/heads/main\t") + summary + "\nDone\n");
        EXPECT_EQ(records,
                  NEBSourceControlResult({{{NEBSourceControlOperationNameKey, "refs/heads/main"},
                                           {NEBSourceControlOperationSourceKey, "main"},
                                           {NEBSourceControlOperationStateKey, "updated"}}}));
    }
}

TEST_F(Publish, ParserReadsEveryLine) {
    const std::string old(40, 'a');
    const std::string next(40, 'b');
    const auto records = recordsOf<GitPublishTestParser>(
        requestFor(NEBSourceControlRequestPublish, "/w"),
        "To x\n*\tHEAD:refs/heads/n\xe4w\t[new branch]\n \tmain:refs/heads/main\t" + old + ".." +
            next + "\n+\tx:refs/heads/x\t" + old + "..." + next + " (forced update)\n" +
            "-\t:refs/heads/gone\t[deleted]\n=\ta:refs/heads/a\t[up to date]\n" +
            "!\tb:refs/heads/b\t[remote rejected] (a (b))\n!\tc:refs/heads/c\t[remote failure]\n" +
            "?\tb:c\tx\n \tb\tx\nDone\n");
    EXPECT_EQ(records.size(), 7U);
    std::vector<std::string> states;
    for (const NEBDictionary& record : records) {
        states.emplace_back(record.text(NEBSourceControlOperationStateKey));
    }
    EXPECT_THAT(states, ElementsAre("new", "updated", "forced", "deleted", "up to date", "rejected",
                                    "rejected"));
    EXPECT_EQ(records[0].value(NEBSourceControlOperationNameBytesKey),
              NEBValue::ofBytes("refs/heads/n\xe4w"));
    EXPECT_EQ(records[1], (NEBDictionary{{NEBSourceControlOperationNameKey, "refs/heads/main"},
                                         {NEBSourceControlOperationSourceKey, "main"},
                                         {NEBSourceControlOperationStateKey, "updated"},
                                         {NEBSourceControlOperationOldObjectIDKey, old},
                                         {NEBSourceControlOperationNewObjectIDKey, next}}));
    EXPECT_EQ(records[2].text(NEBSourceControlOperationNewObjectIDKey), next);
    EXPECT_FALSE(records[3].contains(NEBSourceControlOperationSourceKey));
    EXPECT_EQ(records[5].text(NEBSourceControlOperationReasonKey), "a (b)");
    EXPECT_EQ(records[6].text(NEBSourceControlOperationReasonKey), "[remote failure]");
}

TEST_F(Publish, CreatesAndUpdatesABranchWithItsUpstream) {
    const auto made =
        published(withOption(pushToOrigin, NEBSourceControlRequestOptionSetUpstream, true));
    EXPECT_EQ(made->error(), std::nullopt);
    EXPECT_THAT(textsOf(*made, NEBSourceControlOperationStateKey), ElementsAre("new"));
    EXPECT_EQ(git({"rev-parse", "--symbolic-full-name", "@{upstream}"}),
              "refs/remotes/origin/main");
    const std::string before = head();
    repository.commitFile("a.c", "2");
    const auto updated = published({});
    EXPECT_EQ(updated->error(), std::nullopt);
    EXPECT_EQ(there("main"), head());
    ASSERT_EQ(updated->result()->size(), 1U);
    const NEBDictionary& record = updated->result()->front();
    EXPECT_EQ(record.text(NEBSourceControlOperationNameKey), "refs/heads/main");
    EXPECT_EQ(record.text(NEBSourceControlOperationOldObjectIDKey), before);
    EXPECT_EQ(record.text(NEBSourceControlOperationNewObjectIDKey), head());
    EXPECT_THAT(textsOf(*published({}), NEBSourceControlOperationStateKey),
                ElementsAre("up to date"));
}

/// git exits with status 0 although it has not written the setting.
TEST_F(Publish, ReportsAnUpstreamThatWasNotSet) {
    repository.write(".git/config.lock", "");
    const auto push =
        published(withOption(pushToOrigin, NEBSourceControlRequestOptionSetUpstream, true));
    EXPECT_THAT(push->error(), HasErrorClass(NEBSourceControlRefLockedErrorClass));
    EXPECT_EQ(push->result()->size(), 1U);
    EXPECT_EQ(there("main"), git({"rev-parse", "main"}));
}

TEST_F(Publish, PushesUnderAnotherNameAndDeletes) {
    for (const std::string name : {"refs/heads/it's", "refs/heads/b\xe4r", "refs/tags/v1"}) {
        EXPECT_EQ(published(pushToOrigin, name)->error(), std::nullopt);
        EXPECT_EQ(there(name), head());
        const NEBDictionary deletion{{NEBSourceControlRequestOptionRemoteName, "origin"},
                                     {NEBSourceControlRequestOptionAction, "delete"}};
        const auto deleted = published(deletion, name);
        EXPECT_EQ(deleted->error(), std::nullopt);
        EXPECT_THAT(textsOf(*deleted, NEBSourceControlOperationStateKey), ElementsAre("deleted"));
    }
    EXPECT_THAT(published({{NEBSourceControlRequestOptionRemoteName, "origin"},
                           {NEBSourceControlRequestOptionAction, "delete"}},
                          "nosuch")
                    ->error(),
                HasErrorClass(NEBSourceControlRemoteBranchUnknownErrorClass));
}

TEST_F(Publish, PushesTagsAndTriesOut) {
    repository.git({"tag", "v1"});
    NEBDictionary options = withOption(pushToOrigin, NEBSourceControlRequestOptionTags, true);
    const auto tried = published(withOption(options, NEBSourceControlRequestOptionDryRun, true));
    EXPECT_THAT(textsOf(*tried, NEBSourceControlOperationNameKey),
                ElementsAre("refs/heads/main", "refs/tags/v1"));
    EXPECT_EQ(git({"ls-remote", "origin"}), "");
    EXPECT_EQ(published(options)->error(), std::nullopt);
    EXPECT_EQ(there("refs/tags/v1"), head());
}

TEST_F(Publish, OverwritesOnlyWithAValidLease) {
    EXPECT_EQ(published(pushToOrigin)->error(), std::nullopt);
    const std::string before = head();
    repository.git({"commit", "-q", "--amend", "-m", "other"});
    const auto refused = published(pushToOrigin);
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlRemoteAheadErrorClass));
    EXPECT_THAT(textsOf(*refused, NEBSourceControlOperationReasonKey),
                ElementsAre("non-fast-forward"));
    constexpr NEBConstant lease = NEBSourceControlRequestOptionForceWithLease;
    EXPECT_THAT(published(withOption(pushToOrigin, lease, head()))->error(),
                HasErrorClass(NEBSourceControlPushStaleErrorClass));
    EXPECT_EQ(there("main"), before);
    const auto forced = published(withOption(pushToOrigin, lease, before));
    EXPECT_EQ(forced->error(), std::nullopt);
    EXPECT_THAT(textsOf(*forced, NEBSourceControlOperationStateKey), ElementsAre("forced"));
    EXPECT_THAT(published(withOption(pushToOrigin, lease, "nosuch"))->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    pushFromElsewhere();
    const auto stale = published(withOption(pushToOrigin, lease, true));
    EXPECT_THAT(stale->error(), HasErrorClass(NEBSourceControlPushStaleErrorClass));
    EXPECT_NE(there("main"), head());
}

TEST_F(Publish, ReportsRefusals) {
    EXPECT_EQ(published(pushToOrigin)->error(), std::nullopt);
    pushFromElsewhere();
    repository.commitFile("a.c", "2");
    EXPECT_THAT(published(pushToOrigin)->error(),
                HasErrorClass(NEBSourceControlRemoteAheadErrorClass));
    const auto addHook = [](const std::string& path) {
        std::ofstream(path) << "#!/bin/sh\nexit 1\n";
        EXPECT_EQ(::chmod(path.c_str(), 0755), 0);
    };
    addHook(folder.path("there.git/hooks/pre-receive"));
    const auto refused = published(pushToOrigin, "refs/heads/new");
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlRemoteHookRefusedErrorClass));
    EXPECT_THAT(textsOf(*refused, NEBSourceControlOperationStateKey), ElementsAre("rejected"));
    addHook(repository.path(".git/hooks/pre-push"));
    EXPECT_THAT(published(pushToOrigin, "refs/heads/new")->error(),
                HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass));
}

TEST_F(Publish, SaysWhyNot) {
    EXPECT_THAT(published({})->error(), HasErrorClass(NEBSourceControlNoUpstreamErrorClass));
    EXPECT_THAT(published({{NEBSourceControlRequestOptionRemoteName, "nosuch"},
                           {NEBSourceControlRequestOptionBranch, "main"}})
                    ->error(),
                HasErrorClass(NEBSourceControlRepositoryNotFoundErrorClass));
    EXPECT_THAT(
        published(withOption(pushToOrigin, NEBSourceControlRequestOptionBranch, "nosuch"))->error(),
        HasErrorClass(NEBSourceControlNothingToPushFromErrorClass));
    for (const char* name : {":main", "+main", "main:main", "refs/heads/*", ""}) {
        EXPECT_THAT(
            published(withOption(pushToOrigin, NEBSourceControlRequestOptionBranch, name))->error(),
            HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
        EXPECT_THAT(published(pushToOrigin, name)->error(),
                    HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    }
    const NEBDictionary incomplete[] = {
        {{NEBSourceControlRequestOptionBranch, "main"}},
        {{NEBSourceControlRequestOptionAction, "delete"}},
        {{NEBSourceControlRequestOptionAction, "mirror"}},
        {{NEBSourceControlRequestOptionForceWithLease, head()}},
    };
    for (const NEBDictionary& options : incomplete) {
        EXPECT_THAT(published(options)->error(),
                    HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    }
}

}  // namespace
}  // namespace neb::test

// Settings of the user that change the effect of requests, and must do so.

#include <gmock/gmock.h>

#include <stdexcept>

#include "Classes/Configuration/RequestMatrix.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/RequestRun.h"

namespace neb {
namespace {

using test::perform;
using test::preparedRequest;
using test::RequestCase;
using test::requestMatrix;
using test::World;
using testing::HasSubstr;
using testing::Not;

class HonouredSettings : public test::HygienicTest {
protected:
    /// Runs a case of the matrix in the world, with the settings in its repository.
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> run(
        const std::string& name, const std::string& settings) const {
        for (const RequestCase& requestCase : requestMatrix()) {
            if (requestCase.name == name) {
                const auto request = preparedRequest(world, requestCase);
                world.run(settings);
                return perform(request);
            }
        }
        throw std::invalid_argument(name);
    }
    [[nodiscard]] static std::string contentOf(const NEBSourceControlOperation& operation) {
        return operation.result()->front().value(NEBSourceControlOperationContentKey).description();
    }

    World world;
};

TEST_F(HonouredSettings, WhatAMergeDoes) {
    EXPECT_THAT(run("Merge", "git config merge.ff only")->error(), Not(testing::Eq(std::nullopt)));
    EXPECT_EQ(run("Merge", "git config merge.ff true; git config merge.log true")->error(),
              std::nullopt);
    EXPECT_THAT(world.run("git log -1 --format=%B"), HasSubstr("* topic:\n  Topic"));
}

TEST_F(HonouredSettings, WhatAPullAndAFetchBring) {
    world.run("git update-ref refs/remotes/origin/gone main");
    EXPECT_EQ(run("Fetch", "git config fetch.prune true")->error(), std::nullopt);
    EXPECT_THAT(world.run("git branch -r"), Not(HasSubstr("origin/gone")));
    EXPECT_EQ(run("Pull", "git config pull.rebase true")->error(), std::nullopt);
    EXPECT_EQ(world.run("git log -1 --format=%s"), "More news\n");
}

TEST_F(HonouredSettings, WhatAPushSends) {
    EXPECT_EQ(run("PushOfNewBranch", "git config push.followTags true")->error(), std::nullopt);
    EXPECT_THAT(world.run("git ls-remote --tags origin"), HasSubstr("refs/tags/v1"));
}

TEST_F(HonouredSettings, HowAMessageIsCleanedUp) {
    EXPECT_EQ(run("Commit", "git config commit.cleanup strip")->error(), std::nullopt);
    EXPECT_EQ(world.run("git log -1 --format=%B"), "Änderung\n\n");
}

TEST_F(HonouredSettings, ThatACommitIsSigned) {
    EXPECT_THAT(
        run("Commit", "git config commit.gpgSign true; git config gpg.program false")->error(),
        Not(testing::Eq(std::nullopt)));
}

TEST_F(HonouredSettings, WhereHooksAre) {
    const std::string settings =
        "mkdir ../hooks; printf '#!/bin/sh\\n>../ran\\n' >../hooks/pre-commit; "
        "chmod +x ../hooks/pre-commit; git config core.hooksPath ../hooks";
    EXPECT_EQ(run("Commit", settings)->error(), std::nullopt);
    EXPECT_EQ(world.run("cat ../ran"), "");
}

TEST_F(HonouredSettings, WhatIsComparedInAFilesPlace) {
    EXPECT_THAT(contentOf(*run("Diff", "git config diff.conv.textconv 'tr a-z A-Z <'")),
                HasSubstr("+X\n"));
}

TEST_F(HonouredSettings, WhichRevisionsABlamePassesOver) {
    const auto operation = run("BlameAtRevision",
                               "git rev-parse :/Move >../passed-over; "
                               "git config blame.ignoreRevsFile ../passed-over");
    EXPECT_EQ(operation->error(), std::nullopt);
    const auto unreadable = run("BlameAtRevision", "git config blame.ignoreRevsFile ../nosuch");
    EXPECT_THAT(unreadable->error()->text.value_or(""), HasSubstr("../nosuch"));
}

TEST_F(HonouredSettings, WhereARemoteIs) {
    const auto operation =
        run("ListRemotes", "git config \"url.ssh://there/.insteadOf\" \"$(dirname \"$PWD\")/\"");
    EXPECT_EQ(
        *operation->result()->front().value(NEBSourceControlOperationRemoteOriginKey).string(),
        "ssh://there/remote.git");
}

TEST_F(HonouredSettings, WhichFilesAreIgnored) {
    const auto operation = run(
        "Status", "printf 'untracked.c\\n' >../ignored; git config core.excludesFile ../ignored");
    for (const NEBDictionary& record : *operation->result()) {
        EXPECT_THAT(*record.value(NEBSourceControlOperationPathKey).string(),
                    Not(HasSubstr("untracked.c")));
    }
}

}  // namespace
}  // namespace neb

// Reading a repository that the user does not trust: no program that it names runs.

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

#include "Classes/Configuration/RequestMatrix.h"
#include "Classes/Configuration/Variables.h"
#include "Classes/Inspection/Traps.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/HTTPServer.h"
#include "Support/HygienicTest.h"
#include "Support/InstalledGit.h"
#include "Support/RequestRun.h"

namespace neb::test {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;

/// Whether the case changes the repository. The cases of these types do less than the type.
bool isRefused(const RequestCase& requestCase) {
    const std::set<std::string> readingCases{"Submodules", "Worktrees", "Settings", "StashList",
                                             "StashShow"};
    return NEBSourceControlDescriptionOfRequestType(requestCase.type).effect ==
               NEBSourceControlRequestEffect::changes &&
           !readingCases.contains(requestCase.name);
}

void fillFile(NEBSourceControlRequest& request, NEBConstant option, const NEBValue& value) {
    request.files = {NEBValue("a.c")};
    request.startingRevision = "HEAD";
    request.options = NEBDictionary{{option, value}};
}

/// Makes the branch "signed", whose commit has a signature of this kind, with a file that shows
/// whether the signature is good.
std::string signedCommit(const std::string& kind) {
    return R"(
git config gpg.ssh.allowedSignersFile a.c
echo 'signed.c export-subst' >.gitattributes
echo '$Format:%G?$' >signed.c
git add .gitattributes signed.c
git update-ref refs/heads/signed $(printf 'tree %s
author a <a@example.org> 1 +0000
committer a <a@example.org> 1 +0000
gpgsig -----BEGIN KIND-----
 x
 -----END KIND-----

Signed
' $(git write-tree) | sed 's/KIND/)" +
           kind + R"(/' | git hash-object -t commit -w --stdin)
)";
}

void exportSigned(const World& world, NEBSourceControlRequest& request) {
    request.files = {NEBValue(world.repository("signed.c"))};
    request.startingRevision = "signed";
    request.destination = world.path("tmp/signed.c");
}

/// Requests with the options and content that make git run programs.
std::vector<RequestCase> casesWithDrivers() {
    return {
        {"ContentWithFilters", NEBSourceControlRequestContent, "",
         [](const World& /*world*/, NEBSourceControlRequest& request) {
             fillFile(request, NEBSourceControlRequestOptionApplyFilters, true);
         }},
        {"HistoryWithSearch", NEBSourceControlRequestHistory, "",
         [](const World& /*world*/, NEBSourceControlRequest& request) {
             fillFile(request, NEBSourceControlRequestOptionSearchContent, "TWO");
         }},
        {"ExportOfOpenPGPSignature", NEBSourceControlRequestExport, signedCommit("PGP SIGNATURE"),
         exportSigned},
        {"ExportOfX509Signature", NEBSourceControlRequestExport, signedCommit("SIGNED MESSAGE"),
         exportSigned},
        {"ExportOfSSHSignature", NEBSourceControlRequestExport, signedCommit("SSH SIGNATURE"),
         exportSigned},
    };
}

std::vector<RequestCase> casesWhere(bool areRefused) {
    std::vector<RequestCase> cases = areRefused ? std::vector<RequestCase>() : casesWithDrivers();
    for (const RequestCase& requestCase : requestMatrix()) {
        if (isRefused(requestCase) == areRefused) {
            cases.push_back(requestCase);
        }
    }
    return cases;
}

/// Returns the prepared request. Makes git read the content of each file again.
std::shared_ptr<NEBSourceControlRequest> requestWithSubmodule(const World& world,
                                                              const RequestCase& requestCase) {
    auto request = preparedRequest(world, requestCase);
    addSubmodule(world);
    world.run("git ls-files -z | xargs -0 touch -c -d '2001-01-01 00:00'");
    return request;
}

/// Returns the name of the program of the trap.
std::string programOf(const Trap& trap) {
    std::string name = trap.setting;
    std::ranges::replace(name, '/', '_');
    return name;
}

class EachTrap : public HygienicTest, public testing::WithParamInterface<Trap> {};

/// Otherwise the tests below would prove nothing.
TEST_P(EachTrap, RunsWithGit) {
    const World world;
    addSubmodule(world);
    // No file is as new as the index, so that git reads only those that the trigger changes.
    world.run(
        "git commit -q -m Sub; git ls-files -z | xargs -0 touch -c -d '2001-01-01 00:00'; git "
        "update-index --refresh");
    setTraps(world);
    world.run("{ " + GetParam().trigger + "; } >/dev/null 2>&1 </dev/null || true");
    EXPECT_THAT(takeFiredTraps(world), Contains(programOf(GetParam())));
}

std::vector<Trap> trapsWithTrigger() {
    std::vector<Trap> traps = allTraps();
    std::erase_if(traps, [](const Trap& trap) { return trap.trigger.empty(); });
    return traps;
}

std::string nameOfTest(std::string name) {
    std::erase_if(name, [](unsigned char letter) { return std::isalnum(letter) == 0; });
    return name;
}

INSTANTIATE_TEST_SUITE_P(Inspection, EachTrap, testing::ValuesIn(trapsWithTrigger()),
                         [](const auto& tested) { return nameOfTest(tested.param.setting); });

class InspectedReading : public HygienicTest, public testing::WithParamInterface<RequestCase> {};

TEST_P(InspectedReading, RunsNoProgramAndReturnsTheSame) {
    const World clean;
    const Outcome expected = outcomeOf(clean, requestWithSubmodule(clean, GetParam()));

    const World world;
    const auto request = requestWithSubmodule(world, GetParam());
    setTraps(world);
    request->sourceTree->trust = NEBSourceControlTrust::inspect;
    EXPECT_EQ(outcomeOf(world, request), expected);
    EXPECT_THAT(takeFiredTraps(world), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(EachType, InspectedReading, testing::ValuesIn(casesWhere(false)),
                         [](const auto& tested) { return tested.param.name; });

class Inspection : public HygienicTest {
protected:
    static std::shared_ptr<NEBSourceControlRequest> inspecting(const World& world,
                                                               std::int32_t type) {
        auto request = requestFor(type, world.repository());
        request->sourceTree->trust = NEBSourceControlTrust::inspect;
        return request;
    }
};

/// Carries out requests for which git contacts a server or runs a filter of the user, and returns
/// the programs that ran. The repository has a server as remote, which asks for a password.
std::set<std::string> firedWithSettingsOfUser(NEBSourceControlTrust trust) {
    const HTTPServer server;
    const Variables users(VariableList{{"http_proxy", server.host()},
                                       {"GIT_CONFIG_COUNT", "1"},
                                       {"GIT_CONFIG_KEY_0", "filter.evil.clean"},
                                       {"GIT_CONFIG_VALUE_0", std::string(filterOfUser)}});
    const World world;
    addSubmodule(world);
    setTraps(world);
    for (const std::string url : {"http://demo.invalid/shared.git", "ssh://localhost:1/x"}) {
        world.run("git config remote.origin.url " + url);
        const auto request =
            requestFor(NEBSourceControlRequestListRemoteBranches, world.repository());
        request->sourceTree->trust = trust;
        EXPECT_NE(perform(request)->error(), std::nullopt) << url;
    }
    world.run("touch -d '2001-01-01 00:00' a.c");
    const auto request = requestFor(NEBSourceControlRequestStatus, world.repository());
    request->sourceTree->trust = trust;
    const auto operation = perform(request);
    if (trust == NEBSourceControlTrust::inspect) {
        EXPECT_EQ(operation->error(), std::nullopt);
    }
    return takeFiredTraps(world);
}

/// The same requests as above, but trusted, run each program that a request can run.
TEST_F(Inspection, IsWhatKeepsTheProgramsFromRunning) {
    std::set<std::string> fired = firedWithSettingsOfUser(NEBSourceControlTrust::trusted);
    for (const RequestCase& requestCase : casesWhere(false)) {
        const World world;
        const auto request = requestWithSubmodule(world, requestCase);
        setTraps(world);
        outcomeOf(world, request);
        fired.merge(takeFiredTraps(world));
    }
    std::set<std::string> expected{"submodule"};
    for (const Trap& trap : allTraps()) {
        if (trap.unreachable.empty() ||
            (trap.unreachable == unreachableBeforeGit240 && isGitSince(40))) {
            expected.insert(programOf(trap));
        }
    }
    EXPECT_EQ(fired, expected);
}

TEST_F(Inspection, KeepsWhatServersAndFiltersNeedFromRunning) {
    EXPECT_THAT(firedWithSettingsOfUser(NEBSourceControlTrust::inspect), IsEmpty());
}

TEST_F(Inspection, RefusesWhatChangesTheRepository) {
    for (const RequestCase& requestCase : casesWhere(true)) {
        const World world;
        const auto request = preparedRequest(world, requestCase);
        const auto before = world.content();
        request->sourceTree->trust = NEBSourceControlTrust::inspect;
        const auto operation = perform(request);
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlNotTrustedErrorClass))
            << requestCase.name;
        EXPECT_THAT(operation->commandLog()->runs(), IsEmpty());
        EXPECT_EQ(world.content(), before);
    }
}

TEST_F(Inspection, NamesWhatItSwitchesOff) {
    const World world;
    addSubmodule(world);
    setTraps(world);
    const auto operation = perform(inspecting(world, NEBSourceControlRequestStatus));
    ASSERT_TRUE(operation->switchedOff().has_value());
    std::vector<std::string> names;
    for (const Trap& trap : allTraps()) {
        const std::size_t first = trap.setting.find('.');
        const std::size_t last = trap.setting.rfind('.');
        std::string name = trap.setting;
        std::transform(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(first),
                       name.begin(), [](unsigned char letter) { return std::tolower(letter); });
        std::transform(name.begin() + static_cast<std::ptrdiff_t>(last), name.end(),
                       name.begin() + static_cast<std::ptrdiff_t>(last),
                       [](unsigned char letter) { return std::tolower(letter); });
        names.push_back(name);
    }
    names.emplace_back("submodules");
    EXPECT_THAT(*operation->switchedOff(), testing::UnorderedElementsAreArray(names));
}

TEST_F(Inspection, SwitchesOffTheHooksOfTheRepository) {
    const World world;
    world.run("printf '#!/bin/sh\\nexec \"%s\"\\n' '" + makeTrap(world, "hook") +
              "' >.git/hooks/post-index-change; chmod +x .git/hooks/post-index-change; "
              "ln -s post-index-change .git/hooks/pre-commit; touch -d '2001-01-01 00:00' a.c");
    const auto request = inspecting(world, NEBSourceControlRequestStatus);
    const auto operation = perform(request);
    EXPECT_THAT(*operation->switchedOff(),
                testing::ElementsAre("hooks/post-index-change", "hooks/pre-commit", "submodules"));
    EXPECT_THAT(takeFiredTraps(world), IsEmpty());

    world.run("touch -d '2002-02-02 00:00' a.c");
    request->sourceTree->trust = NEBSourceControlTrust::trusted;
    EXPECT_FALSE(perform(request)->switchedOff().has_value());
    EXPECT_THAT(takeFiredTraps(world), Contains("hook"));
}

TEST_F(Inspection, FindsTheHooksFromASubfolderAndAWorktree) {
    const World world;
    world.run("ln -s '" + makeTrap(world, "hook") +
              "' .git/hooks/post-index-change; git worktree add -q ../second topic");
    for (const std::string folder : {"repository/dir", "second"}) {
        const auto request = inspecting(world, NEBSourceControlRequestLog);
        request->sourceTree->location = world.path(folder);
        EXPECT_THAT(*perform(request)->switchedOff(),
                    testing::ElementsAre("hooks/post-index-change"))
            << folder;
    }
}

TEST_F(Inspection, ListsNothingInAnOrdinaryRepository) {
    const World world;
    const auto operation = perform(inspecting(world, NEBSourceControlRequestLog));
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(*operation->switchedOff(), IsEmpty());
    EXPECT_EQ(operation->commandLog()->runs().size(), 2U);
}

TEST_F(Inspection, RunsTheProgramsOfTheUser) {
    const World world;
    const std::string program = makeTrap(world, "filter.users.clean");
    const Variables users(VariableList{{"GIT_CONFIG_COUNT", "1"},
                                       {"GIT_CONFIG_KEY_0", "filter.users.clean"},
                                       {"GIT_CONFIG_VALUE_0", program}});
    world.run("echo '* filter=users' >.git/info/attributes; git config filter.users.clean '" +
              makeTrap(world, "filter.evil.clean") + "'; touch -d '2001-01-01 00:00' a.c");
    const auto operation = perform(inspecting(world, NEBSourceControlRequestStatus));
    EXPECT_THAT(takeFiredTraps(world), testing::ElementsAre("filter.users.clean"));
    EXPECT_THAT(*operation->switchedOff(), Contains("filter.users.clean"));
}

TEST_F(Inspection, DeliversRecordsToASink) {
    const World world;
    addSubmodule(world);
    setTraps(world);
    NEBSourceControlResult records;
    const auto operation =
        performWithSink(inspecting(world, NEBSourceControlRequestHistory), records);
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(records.size(), operation->deliveredRecordCount());
    EXPECT_THAT(records, Not(IsEmpty()));
}

TEST_F(Inspection, ShowsTheSettingsAsTheyAre) {
    const World world;
    world.run("git config filter.evil.clean evil");
    const auto request = inspecting(world, NEBSourceControlRequestSettings);
    request->options = NEBDictionary{{NEBSourceControlRequestOptionAll, true}};
    const Outcome inspected = outcomeOf(world, request);
    request->sourceTree->trust = NEBSourceControlTrust::trusted;
    EXPECT_EQ(inspected, outcomeOf(world, request));
}

/// A status ignores the option for the repository, a diff uses it.
TEST_F(Inspection, ReadsTheSettingsOfBothRepositories) {
    const World trapped;
    const World other;
    addSubmodule(trapped);
    setTraps(trapped);
    for (const bool isTrapThere : {false, true}) {
        const World& here = isTrapThere ? other : trapped;
        const World& there = isTrapThere ? trapped : other;
        trapped.run("git ls-files -z | xargs -0 touch -c -d '2001-01-01 00:00'");
        takeFiredTraps(trapped);
        for (const auto type : {NEBSourceControlRequestStatus, NEBSourceControlRequestDiff}) {
            const auto request = inspecting(here, type);
            request->options = NEBDictionary{
                {NEBSourceControlRequestOptionRepositoryPath, there.repository(".git")},
                {NEBSourceControlRequestOptionWorkingCopyPath, there.repository()}};
            const auto operation = perform(request);
            EXPECT_EQ(operation->error(), std::nullopt);
            EXPECT_THAT(takeFiredTraps(trapped), IsEmpty()) << type << isTrapThere;
        }
    }
}

TEST_F(Inspection, FailsIfTheSettingsCannotBeRead) {
    const World world;
    world.run("echo '[broken' >>.git/config");
    const auto operation = perform(inspecting(world, NEBSourceControlRequestStatus));
    EXPECT_THAT(operation->error(), HasErrorClass("configuration-broken"));
    EXPECT_EQ(operation->commandLog()->runs().size(), 1U);
}

}  // namespace
}  // namespace neb::test

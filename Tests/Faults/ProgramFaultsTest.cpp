// Failures of git itself: missing, not executable, killed, or in a folder that changes meanwhile.

#include <gmock/gmock.h>

#include <filesystem>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using JSON = nlohmann::ordered_json;

class ProgramFaults : public HygienicTest {
protected:
    /// Runs nebsc with an empty /usr/bin, and so without git; `script` runs before and may create
    /// programs there. Returns nothing if file systems cannot be mounted.
    static std::optional<NebscOutcome> withoutPrograms(const std::string& script,
                                                       const std::vector<std::string>& words,
                                                       NebscSurroundings surroundings = {}) {
        std::vector<std::string> arguments{
            "-rm", "/bin/sh",
            "-c",  "mount -t tmpfs none /usr/bin || exit 99; " + script + "\nexec \"$@\"",
            "sh",  std::string(NEB_BUILD_FOLDER) + "/bin/nebsc"};
        arguments.insert(arguments.end(), words.begin(), words.end());
        surroundings.variables.emplace_back("PATH", "/usr/bin:/bin:/usr/sbin:/sbin");
        NebscOutcome outcome = runProgram("/usr/bin/unshare", arguments, surroundings);
        const bool isMounted = outcome.exitStatus != 99 && outcome.errors.find("unshare") != 0;
        return isMounted ? std::optional(std::move(outcome)) : std::nullopt;
    }
    static std::string requestAbout(int type, const std::string& location) {
        return JSON{{"type", type},
                    {"sourceTree", {{"location", location}}},
                    {"options", {{"NEBSourceControlRequestOptionBranch", "main"}}}}
            .dump();
    }
};

TEST_F(ProgramFaults, AMissingGitIsNamed) {
    const TestRepository repository;
    for (const std::int32_t type :
         {NEBSourceControlRequestStatus, NEBSourceControlRequestLog,
          NEBSourceControlRequestCurrentBranch, NEBSourceControlRequestListRemotes,
          NEBSourceControlRequestInfo, NEBSourceControlRequestTrackingBranchName,
          NEBSourceControlRequestList}) {
        const auto outcome =
            withoutPrograms("", {"request"}, {.input = requestAbout(type, repository.path())});
        if (!outcome) {
            GTEST_SKIP() << "no file system can be mounted here";
        }
        EXPECT_EQ(outcome->exitStatus, 1) << type;
        const JSON json = outcome->json();
        EXPECT_EQ(json["error"]["class"], "not-started") << type;
        // A listing is run by the shell, which is missing, too.
        EXPECT_THAT(
            json["error"]["localizedDescription"].get<std::string>(),
            AllOf(HasSubstr(type == NEBSourceControlRequestList ? "/bin/sh\"" : "/usr/bin/git\""),
                  HasSubstr("No such file or directory")))
            << type;
        EXPECT_TRUE(json["commands"].empty()) << type;
    }
}

TEST_F(ProgramFaults, AMissingGitIsToldByCommands) {
    const TestRepository repository;
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"status"}, {"log"}, {"commit", "-m", "m"}, {"update"}}) {
        const auto outcome = withoutPrograms("", words, {.folder = repository.path()});
        if (!outcome) {
            GTEST_SKIP() << "no file system can be mounted here";
        }
        EXPECT_EQ(outcome->exitStatus, 1) << words[0];
        EXPECT_THAT(outcome->errors, HasSubstr("git")) << words[0];
        EXPECT_EQ(outcome->output, "") << words[0];
    }
}

TEST_F(ProgramFaults, AGitThatIsNotExecutableIsNotRun) {
    const TestRepository repository;
    const auto outcome =
        withoutPrograms("echo 'echo no program' >/usr/bin/git", {"request"},
                        {.input = requestAbout(NEBSourceControlRequestStatus, repository.path())});
    if (!outcome) {
        GTEST_SKIP() << "no file system can be mounted here";
    }
    EXPECT_EQ(outcome->json()["error"]["class"], "not-started");
    EXPECT_THAT(outcome->json()["error"]["localizedDescription"].get<std::string>(),
                HasSubstr("Permission denied"));
}

TEST_F(ProgramFaults, AGitThatIsNotExecutableIsPassedOver) {
    const TestRepository repository;
    const TemporaryFolder folder;
    folder.write("git", "#!/bin/sh\ntouch '" + folder.path("ran") + "'\n");
    const NebscOutcome outcome =
        runRequest(requestAbout(NEBSourceControlRequestStatus, repository.path()),
                   {.variables = {{"PATH", folder.path() + ":/usr/bin:/bin"}}});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_FALSE(fs::exists(folder.path("ran")));
}

TEST_F(ProgramFaults, AGitOfAnotherMachineIsNamed) {
    const TestRepository repository;
    const TemporaryFolder folder;
    folder.writeProgram("git",
                        "\x7f"
                        "ELF, but not of here");
    const JSON outcome = runRequest(requestAbout(NEBSourceControlRequestStatus, repository.path()),
                                    {.variables = {{"PATH", folder.path()}}})
                             .json();
    EXPECT_EQ(outcome["error"]["class"], "not-started");
    EXPECT_THAT(outcome["error"]["localizedDescription"].get<std::string>(),
                HasSubstr("Exec format error"));
}

TEST_F(ProgramFaults, AGitThatIsKilledMidwayIsAnErrorWhateverCameBefore) {
    const TestRepository repository;
    repository.commitFile("a", "1\n", "First");
    const StandInGit git(repository.path(), "PATH=/usr/bin:/bin git \"$@\"\nkill -9 $$");
    for (const std::int32_t type : {NEBSourceControlRequestStatus, NEBSourceControlRequestLog,
                                    NEBSourceControlRequestCurrentBranch}) {
        const JSON request{{"type", type}, {"sourceTree", {{"location", repository.path()}}}};
        const NebscOutcome outcome = runRequest(request.dump(), {.variables = {git.path()}});
        EXPECT_EQ(outcome.exitStatus, 1);
        EXPECT_EQ(outcome.json()["error"]["class"], "killed") << type;
        EXPECT_EQ(outcome.json()["error"]["terminationStatus"], "SIGKILL");
        EXPECT_EQ(outcome.json()["commands"][0]["terminationStatus"], nullptr);
    }
}

TEST_F(ProgramFaults, AFolderThatIsReplacedIsTheOneThatGitWasStartedIn) {
    const TestRepository repository;
    repository.commitFile("a", "1\n", "The old one");
    // Once git runs, its folder is moved and replaced with a file.
    const StandInGit git(repository.path(), "mv '" + repository.path() + "' '" + repository.path() +
                                                ".old'\ntouch '" + repository.path() +
                                                "'\nPATH=/usr/bin:/bin exec git \"$@\"");
    const JSON request{{"type", NEBSourceControlRequestLog},
                       {"sourceTree", {{"location", repository.path()}}}};
    const JSON first = runRequest(request.dump(), {.variables = {git.path()}}).json();
    EXPECT_EQ(first["error"], nullptr);
    EXPECT_EQ(first["result"].size(), 1U);
    // The next request finds the file.
    const JSON second = runRequest(request.dump()).json();
    EXPECT_EQ(second["error"]["class"], "not-started");
    EXPECT_THAT(second["error"]["localizedDescription"].get<std::string>(),
                AllOf(HasSubstr(repository.path()), HasSubstr("Not a directory")));
}

// ---- the repository changes while git works -----------------------------------------------------

/// Runs a commit whose hook changes the repository.
class RepositoryFaults : public HygienicTest {
protected:
    std::shared_ptr<NEBSourceControlOperation> commitWithHook(const std::string& hook) const {
        repository.commitFile("a", "1\n", "First");
        repository.write("a", "2\n");
        repository.git({"add", "a"});
        repository.write(".git/hooks/pre-commit", "#!/bin/sh\n" + hook + "\n");
        fs::permissions(repository.path(".git/hooks/pre-commit"), fs::perms::owner_all);
        auto request = requestFor(NEBSourceControlRequestCommit, repository.path());
        request->options =
            NEBDictionary{{NEBSourceControlRequestOptionMessage, std::string("Second")}};
        return perform(request);
    }
    static std::string wordsOf(const NEBSourceControlOperation& operation) {
        return operation.error() ? operation.error()->text.value_or("(no words)") : "(no error)";
    }

    TestRepository repository;
};

TEST_F(RepositoryFaults, ARepositoryThatIsDeletedMidwayIsAnError) {
    const auto commit = commitWithHook("rm -rf .git");
    EXPECT_TRUE(commit->error().has_value());
    EXPECT_FALSE(commit->result().has_value()) << "a revision that was not created";
    EXPECT_THAT(perform(requestFor(NEBSourceControlRequestLog, repository.path()))->error(),
                HasErrorClass(NEBSourceControlNotARepositoryErrorClass));
}

TEST_F(RepositoryFaults, AWorkingCopyThatIsDeletedMidwayIsAnError) {
    const auto commit = commitWithHook("rm -rf \"$PWD\"");
    EXPECT_TRUE(commit->error().has_value());
    EXPECT_FALSE(commit->result().has_value());
}

TEST_F(RepositoryFaults, ObjectsThatAreLostMidwayAreAnError) {
    const auto commit = commitWithHook("rm -rf .git/objects/*");
    EXPECT_THAT(commit->error(), HasErrorClass(NEBSourceControlObjectsDamagedErrorClass))
        << wordsOf(*commit);
    EXPECT_FALSE(commit->result().has_value());
}

TEST_F(RepositoryFaults, AnIndexThatIsOverwrittenMidwayIsAnError) {
    const auto commit = commitWithHook("echo garbage >.git/index");
    EXPECT_THAT(commit->error(), HasErrorClass(NEBSourceControlIndexDamagedErrorClass))
        << wordsOf(*commit);
    EXPECT_FALSE(commit->result().has_value());
}

TEST_F(RepositoryFaults, ALockThatComesMidwayIsAnErrorAndStays) {
    const auto commit = commitWithHook("echo >.git/HEAD.lock");
    EXPECT_THAT(commit->error(), HasErrorClass(NEBSourceControlRefLockedErrorClass))
        << wordsOf(*commit);
    EXPECT_TRUE(fs::exists(repository.path(".git/HEAD.lock")))
        << "it belongs to another git process";
    fs::remove(repository.path(".git/HEAD.lock"));
    EXPECT_EQ(repository.git({"log", "--format=%s"}), "First\n");
}

TEST_F(RepositoryFaults, AnIndexLockedByAnotherGitIsAnErrorAndStays) {
    repository.commitFile("a", "1\n");
    repository.write("a", "2\n");
    repository.write(".git/index.lock", "another git's");
    auto request = requestFor(NEBSourceControlRequestAdd, repository.path());
    request->files = valuesOf({repository.path("a")});
    EXPECT_THAT(perform(request)->error(), HasErrorClass(NEBSourceControlIndexLockedErrorClass));
    EXPECT_TRUE(fs::exists(repository.path(".git/index.lock")));
    fs::remove(repository.path(".git/index.lock"));
    EXPECT_EQ(perform(request)->error(), std::nullopt)
        << "a lock file of the failed request remains";
}

}  // namespace
}  // namespace neb::test

// Requests in a repository that another process locks.

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

#include "GitController.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::HasErrorClass;
using test::valuesOf;

class LockedRepository : public test::HygienicTest {
protected:
    LockedRepository() {
        repository.commitFile("a", "1\n");
        repository.commitFile("b", "1\n");
        repository.git({"branch", "topic"});
        repository.write("a", "2\n");
    }

    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> request(
        std::int32_t type, const std::vector<std::string>& files = {},
        const NEBValue& destination = {}, const NEBDictionary& options = {}) const {
        auto made = test::requestFor(type, repository.path());
        if (!files.empty()) {
            made->files = valuesOf(files);
        }
        made->destination = destination;
        made->options = options;
        return made;
    }

    [[nodiscard]] static std::shared_ptr<NEBSourceControlOperation> operationFor(
        const std::shared_ptr<NEBSourceControlRequest>& request,
        std::chrono::milliseconds lockWait) {
        auto operation = GitController().operationForRequest(request);
        operation->setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
        operation->setLimits({.lockWait = lockWait});
        return operation;
    }

    /// Runs the request while the file is locked. Removes the lock when the git that failed because
    /// of it runs once more.
    void expectSuccessBehind(const std::string& lock,
                             const std::shared_ptr<NEBSourceControlRequest>& request) const {
        repository.write(lock, "");
        const auto operation = operationFor(request, std::chrono::hours(1));
        std::atomic<bool> hasEnded = false;
        std::thread releaser([&] {
            while (!hasRepeatedRun(*operation) && !hasEnded) {
                std::this_thread::yield();
            }
            fs::remove(repository.path(lock));
        });
        operation->start();
        hasEnded = true;
        releaser.join();
        EXPECT_EQ(operation->error(), std::nullopt) << request->type << " " << lock;
    }

    static bool hasRepeatedRun(const NEBSourceControlOperation& operation) {
        const auto lines = test::commandLinesOf(operation);
        return lines.size() >= 2 && lines.back() == lines[lines.size() - 2];
    }

    const test::TestRepository repository;
};

TEST_F(LockedRepository, WaitsForTheIndex) {
    const std::string lock = ".git/index.lock";
    expectSuccessBehind(lock, request(NEBSourceControlRequestAddFiles, {repository.path("a")}));
    expectSuccessBehind(lock, request(NEBSourceControlRequestUnstage, {"a"}));
    expectSuccessBehind(lock, request(NEBSourceControlRequestStage, {"a"}));
    expectSuccessBehind(lock, request(NEBSourceControlRequestCreateCommit, {}, {},
                                      {{NEBSourceControlRequestOptionMessage, "Change a"}}));
    expectSuccessBehind(
        lock, request(NEBSourceControlRequestMove, {repository.path("b")}, repository.path("c")));
    expectSuccessBehind(lock, request(NEBSourceControlRequestRemove, {repository.path("c")}));
    repository.write("a", "3\n");
    expectSuccessBehind(lock, request(NEBSourceControlRequestRevert, {repository.path("a")}));
    repository.git({"reset", "--quiet", "--hard"});
    expectSuccessBehind(lock, request(NEBSourceControlRequestCheckout, {}, "topic"));
}

TEST_F(LockedRepository, WaitsForTheConfiguration) {
    const std::string lock = ".git/config.lock";
    expectSuccessBehind(lock, request(NEBSourceControlRequestAddRemote, {"/nosuch"}, "origin"));
    EXPECT_EQ(repository.git({"remote", "get-url", "origin"}), "/nosuch\n");
}

/// git itself waits for references.
TEST_F(LockedRepository, WaitsForReferences) {
    repository.write(".git/refs/heads/new.lock", "");
    const auto operation = operationFor(request(NEBSourceControlRequestCreateBranch, {}, "new"),
                                        std::chrono::hours(1));
    std::thread releaser([&] {
        while (operation->commandLog()->runs().empty()) {
            std::this_thread::yield();
        }
        fs::remove(repository.path(".git/refs/heads/new.lock"));
    });
    operation->start();
    releaser.join();
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->commandLog()->runs().size(), 1U);
}

TEST_F(LockedRepository, ReportsTheLockThatStays) {
    for (const auto& [lock, changing] :
         {std::pair(".git/index.lock", request(NEBSourceControlRequestStage, {"a"})),
          std::pair(".git/config.lock",
                    request(NEBSourceControlRequestAddRemote, {"/nosuch"}, "origin")),
          std::pair(".git/refs/heads/new.lock",
                    request(NEBSourceControlRequestCreateBranch, {}, "new"))}) {
        repository.write(lock, "");
        const auto operation = operationFor(changing, std::chrono::milliseconds(10));
        operation->start();
        ASSERT_TRUE(operation->error()) << lock;
        EXPECT_EQ(operation->error()->userInfo.text(NEBSourceControlErrorLockPathKey),
                  repository.path(lock));
        fs::remove(repository.path(lock));
    }
}

/// The hook runs when git has released the index. Then git cannot lock HEAD.
TEST_F(LockedRepository, RunsNoHookTwice) {
    const std::string hook = repository.path(".git/hooks/pre-commit");
    for (const char* ending :
         {"touch .git/HEAD.lock",
          "echo \"fatal: Unable to create '/x/index.lock': File exists.\" >&2; exit 128"}) {
        repository.write(".git/hooks/pre-commit",
                         "#!/bin/sh\necho run >>.git/hook-runs\n" + std::string(ending) + "\n");
        fs::permissions(hook, fs::perms::owner_all);
        const auto commit = operationFor(request(NEBSourceControlRequestCreateCommit, {}, {},
                                                 {{NEBSourceControlRequestOptionMessage, "x"},
                                                  {NEBSourceControlRequestOptionAll, true}}),
                                         std::chrono::milliseconds(60));
        commit->start();
        EXPECT_TRUE(commit->error().has_value());
        fs::remove(repository.path(".git/HEAD.lock"));
    }
    EXPECT_EQ(fs::file_size(repository.path(".git/hook-runs")), std::string("run\nrun\n").size());
}

}  // namespace
}  // namespace neb

// Many threads send requests for linked worktrees to one scheduler, while other programs take locks
// of the same repositories. scripts/stress runs the whole test.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <deque>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <random>
#include <thread>

#include "GitController.h"
#include "NEBFoundation/NEBSourceControlScheduler.h"
#include "Support/HygienicTest.h"
#include "Support/NumberInEnvironment.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb::test {
namespace {

using std::chrono::milliseconds;

/// A repository with linked worktrees, each on a branch of its own.
class WorktreeFamily {
public:
    explicit WorktreeFamily(std::size_t worktrees) {
        main.git({"config", "gc.auto", "0"});
        main.git({"config", "maintenance.auto", "false"});
        main.commitFile("a", "0\n");
        for (std::size_t i = 0; i < worktrees; ++i) {
            const std::string name = "w" + std::to_string(i);
            main.git({"worktree", "add", "--quiet", "-b", name, folder.path(name)});
            paths.push_back(folder.path(name));
            locks.push_back(main.path(".git/worktrees/" + name + "/index.lock"));
            locks.push_back(main.path(".git/worktrees/" + name + "/HEAD.lock"));
            locks.push_back(main.path(".git/refs/heads/" + name + ".lock"));
        }
        locks.push_back(main.path(".git/packed-refs.lock"));
        locks.push_back(main.path(".git/config.lock"));
    }

    TestRepository main;
    TemporaryFolder folder;
    std::vector<std::string> paths;
    /// The lock files that another program takes.
    std::vector<std::string> locks;
};

class SchedulerStress : public HygienicTest {
protected:
    /// Takes locks of the repository at random, for as long as a git command does, until `isOver`.
    static void takeLocks(const WorktreeFamily& family, unsigned seed,
                          const std::atomic<bool>& isOver) {
        std::mt19937 random(seed);
        while (!isOver) {
            const std::string& lock = family.locks[random() % family.locks.size()];
            const int file = ::open(lock.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
            std::this_thread::sleep_for(milliseconds(random() % 50));
            if (file >= 0) {
                ::unlink(lock.c_str());
                ::close(file);
            }
            std::this_thread::sleep_for(milliseconds(random() % 50));
        }
    }

    /// Runs git in the worktrees, as a user does in a terminal. It may fail: it does not wait.
    static void runGit(const WorktreeFamily& family, unsigned seed,
                       const std::atomic<bool>& isOver) {
        std::mt19937 random(seed);
        while (!isOver) {
            const std::string& path = family.paths[random() % family.paths.size()];
            family.main.gitStatus({"-C", path, "add", "--all"});
            family.main.gitStatus({"-C", path, "status"});
            family.main.gitStatus({"branch", "--quiet", "--force", "foreign", "main"});
        }
    }

    [[nodiscard]] static std::shared_ptr<NEBSourceControlRequest> requestIn(
        const std::string& path, unsigned long chance, const std::string& name) {
        const std::int32_t types[] = {
            NEBSourceControlRequestStage,
            NEBSourceControlRequestUnstage,
            NEBSourceControlRequestCreateCommit,
            NEBSourceControlRequestCreateBranch,
            NEBSourceControlRequestTag,
            NEBSourceControlRequestSettings,
            NEBSourceControlRequestRevert,
            NEBSourceControlRequestHistory,
            NEBSourceControlRequestWorkingCopyState,
        };
        auto request = requestFor(types[chance % std::size(types)], path);
        request->options.emplace();
        switch (request->type) {
            case NEBSourceControlRequestCreateCommit:
                request->options =
                    NEBDictionary{{NEBSourceControlRequestOptionMessage, name},
                                  {NEBSourceControlRequestOptionAllowEmptyCommit, true}};
                break;
            case NEBSourceControlRequestCreateBranch:
                request->destination = "b" + name;
                break;
            case NEBSourceControlRequestTag:
                request->destination = "t" + name;
                break;
            case NEBSourceControlRequestSettings:
                request->options =
                    NEBDictionary{{NEBSourceControlRequestOptionAction, "set"},
                                  {NEBSourceControlRequestOptionSettingNames, "stress.value"},
                                  {NEBSourceControlRequestOptionValue, name}};
                break;
            case NEBSourceControlRequestRevert:
                request->files = valuesOf({"a"});
                break;
            default:
                break;
        }
        return request;
    }

    /// Sends requests one after the other, and waits for each.
    void sendRequests(unsigned client, unsigned long count) {
        std::mt19937 random(client);
        for (unsigned long i = 0; i < count; ++i) {
            const WorktreeFamily& family = families[random() % families.size()];
            const auto request = requestIn(family.paths[random() % family.paths.size()], random(),
                                           std::to_string(client) + "-" + std::to_string(i));
            const auto operation = GitController().operationForRequest(request);
            operation->setBackgroundWork(random() % 8 == 0);
            std::promise<void> finished;
            const auto start = std::chrono::steady_clock::now();
            scheduler.addOperation(operation, [&finished] { finished.set_value(); });
            finished.get_future().wait();
            note(*operation, std::chrono::duration_cast<milliseconds>(
                                 std::chrono::steady_clock::now() - start));
        }
    }

    void note(const NEBSourceControlOperation& operation, milliseconds time) {
        const std::lock_guard lock(mutex);
        milliseconds& longest =
            operation.isBackgroundWork() ? longestInBackground : longestInForeground;
        longest = std::max(longest, time);
        if (operation.error()) {
            ++failures[std::to_string(operation.request()->type) + ": " +
                       operation.error()->errorClass.value_or("") + ": " +
                       operation.error()->text.value_or("")];
        }
    }

    std::deque<WorktreeFamily> families;
    NEBSourceControlScheduler scheduler{8};
    std::mutex mutex;
    milliseconds longestInForeground{0};
    milliseconds longestInBackground{0};
    std::map<std::string, int> failures;
};

TEST_F(SchedulerStress, NoRequestFailsOrWaitsForeverBecauseOfLocks) {
    const unsigned long perThread = numberInEnvironment("NEB_STRESS_REQUESTS", 4);
    const bool isWhole = perThread >= 20;
    const unsigned threadCount = isWhole ? 64 : 16;
    for (std::size_t i = 0; i < (isWhole ? 10U : 2U); ++i) {
        families.emplace_back(3);
    }
    std::atomic<bool> isOver = false;
    std::vector<std::thread> others;
    for (const WorktreeFamily& family : families) {
        const auto seed = static_cast<unsigned>(others.size());
        others.emplace_back([&family, seed, &isOver] { takeLocks(family, seed, isOver); });
    }
    others.emplace_back([this, &isOver] { runGit(families.front(), 1, isOver); });
    std::vector<std::thread> clients;
    for (unsigned client = 0; client < threadCount; ++client) {
        clients.emplace_back([this, client, perThread] { sendRequests(client, perThread); });
    }
    for (std::thread& client : clients) {
        client.join();
    }
    isOver = true;
    for (std::thread& other : others) {
        other.join();
    }
    std::printf(
        "%lu requests, %u threads, %zu repositories with 3 worktrees: "
        "longest time %lld ms, in the background %lld ms\n",
        perThread * threadCount, threadCount, families.size(),
        static_cast<long long>(longestInForeground.count()),
        static_cast<long long>(longestInBackground.count()));
    EXPECT_THAT(failures, testing::IsEmpty());
    for (const WorktreeFamily& family : families) {
        EXPECT_EQ(family.main.gitStatus({"fsck", "--strict"}), 0);
    }
}

}  // namespace
}  // namespace neb::test

// Requests that wait for each other, and requests that run in parallel.

#include "NEBFoundation/NEBSourceControlScheduler.h"

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/Matchers.h"
#include "Support/TestRepository.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// ---- places -------------------------------------------------------------------------------------

TEST(WrittenPlaces, AreIndexAndReferencesForRequestsThatWrite) {
    const TestRepository repository;
    repository.write("src/deep/a.c", "1");
    const std::string index = repository.path(".git/index");
    const std::string references = repository.path(".git/refs");
    const std::set<std::int32_t> indexOnly{
        NEBSourceControlRequestAdd,    NEBSourceControlRequestIgnore,
        NEBSourceControlRequestRemove, NEBSourceControlRequestAddFiles,
        NEBSourceControlRequestRevert, NEBSourceControlRequestMakeDirectory,
        NEBSourceControlRequestCopy,   NEBSourceControlRequestMove,
        NEBSourceControlRequestStage,  NEBSourceControlRequestUnstage,
        NEBSourceControlRequestDiscard};
    for (const auto& type : NEBSourceControlAllRequestTypes()) {
        const auto request = requestFor(type.type, repository.path("src/deep"));
        if (type.worksInDestination) {
            request->destination = repository.path("new/clone");
        }
        const auto places = NEBSourceControlWrittenPlaces(*request);
        if (NEBSourceControlEffectOfRequest(*request) != NEBSourceControlRequestEffect::changes) {
            EXPECT_THAT(places, IsEmpty()) << type.name;
        } else if (indexOnly.contains(type.type)) {
            EXPECT_THAT(places, ElementsAre(index)) << type.name;
        } else {
            EXPECT_THAT(places, ElementsAre(index, references)) << type.name;
        }
    }
    EXPECT_THAT(NEBSourceControlWrittenPlaces(*requestFor(1'000'000, repository.path("src/deep"))),
                ElementsAre(index, references))
        << "a type that is not listed";
}

TEST(WrittenPlaces, ComeFromTheLocationOrTheRepositoryPath) {
    const TestRepository repository;
    const auto request = requestFor(NEBSourceControlRequestAdd, "file://" + repository.path());
    EXPECT_THAT(NEBSourceControlWrittenPlaces(*request),
                ElementsAre(repository.path(".git/index")));
    request->sourceTree.reset();
    EXPECT_THAT(NEBSourceControlWrittenPlaces(*request), ElementsAre(""));
    request->options =
        NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, repository.path(".git")}};
    EXPECT_THAT(NEBSourceControlWrittenPlaces(*request),
                ElementsAre(repository.path(".git/index")));
    const TemporaryFolder folder;
    EXPECT_THAT(NEBSourceControlWrittenPlaces(
                    *requestFor(NEBSourceControlRequestCreateRepository, folder.path("new"))),
                ElementsAre(folder.path("new")));
}

TEST(WrittenPlaces, OfLinkedWorktreesShareTheReferences) {
    const TestRepository repository;
    repository.commitFile("a", "a\n");
    const TemporaryFolder folder;
    repository.git({"worktree", "add", "--quiet", folder.path("w"), "HEAD"});
    EXPECT_THAT(
        NEBSourceControlWrittenPlaces(*requestFor(NEBSourceControlRequestCommit, folder.path("w"))),
        ElementsAre(repository.path(".git/worktrees/w/index"), repository.path(".git/refs")));
}

/// Some commands of the outer repository work in the submodule.
TEST(WrittenPlaces, OfSubmodulesShareThoseOfTheOuterRepository) {
    const TestRepository source;
    source.commitFile("a", "a\n");
    const TestRepository repository;
    repository.git({"-c", "protocol.file.allow=always", "submodule", "--quiet", "add",
                    source.path(), "libraries/sub"});
    EXPECT_THAT(NEBSourceControlWrittenPlaces(
                    *requestFor(NEBSourceControlRequestAdd, repository.path("libraries/sub"))),
                ElementsAre(repository.path(".git/modules/libraries/sub/index"),
                            repository.path(".git/refs")));
}

TEST(WrittenPlaces, OfAnExportAreItsDestination) {
    const TestRepository repository;
    for (const std::int32_t type :
         {NEBSourceControlRequestExportFiles, NEBSourceControlRequestExport,
          NEBSourceControlRequestExportTree}) {
        const auto request = requestFor(type, repository.path());
        request->destination = repository.path("new/../a.c");
        EXPECT_THAT(NEBSourceControlWrittenPlaces(*request), ElementsAre(repository.path("a.c")))
            << type;
    }
}

// ---- the order ----------------------------------------------------------------------------------

TEST(Scheduler, RunsWorkForOneLocationInOrderAndTheRestInParallel) {
    NEBSourceControlScheduler scheduler(4);
    std::mutex mutex;
    std::string done;
    const auto note = [&](char letter) {
        const std::lock_guard lock(mutex);
        done += letter;
    };
    std::promise<void> goOn;
    const auto mayGoOn = goOn.get_future().share();
    std::promise<void> bothDone;
    std::atomic<int> others = 2;
    const auto other = [&](char letter) {
        note(letter);
        if (--others == 0) {
            bothDone.set_value();
        }
    };
    scheduler.add({.places = {"/w"}}, [&] {
        mayGoOn.wait();
        note('1');
    });
    scheduler.add({.places = {"/w"}}, [&] { note('2'); });
    scheduler.add({.places = {"/w"}}, [&] { note('3'); });
    scheduler.add({.places = {"/v"}}, [&] { other('v'); });
    scheduler.add({}, [&] { other('r'); });
    bothDone.get_future().wait();
    goOn.set_value();
    scheduler.waitUntilAllWorkIsDone();
    EXPECT_THAT(done, testing::AnyOf("vr123", "rv123"));
    scheduler.add({.places = {"/w"}}, [&] { note('4'); });
    scheduler.waitUntilAllWorkIsDone();
    EXPECT_TRUE(done.ends_with('4'));
}

TEST(Scheduler, WaitsForItsWorkWhenDestroyed) {
    std::string done;
    {
        NEBSourceControlScheduler scheduler(2);
        scheduler.add({.places = {"/w"}}, [&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            done += '1';
        });
        scheduler.add({.places = {"/w"}}, [&] { done += '2'; });
    }
    EXPECT_EQ(done, "12");
}

/// Notes the work for the location "/w" in the order in which it runs. The first work waits until
/// all other work is added.
class OrderOfWork {
public:
    OrderOfWork() {
        _scheduler.add({.places = {"/w"}}, [this] { _allIsAdded.get_future().wait(); });
    }
    void add(char letter, bool isBackground) {
        _scheduler.add({.places = {"/w"}, .isBackground = isBackground},
                       [this, letter] { _done += letter; });
    }
    std::string result() {
        _allIsAdded.set_value();
        _scheduler.waitUntilAllWorkIsDone();
        return _done;
    }

private:
    std::promise<void> _allIsAdded;
    std::string _done;
    NEBSourceControlScheduler _scheduler{2};
};

TEST(Scheduler, RunsForegroundWorkBeforeBackgroundWorkThatWaits) {
    OrderOfWork order;
    order.add('x', true);
    order.add('1', false);
    order.add('y', true);
    order.add('2', false);
    EXPECT_EQ(order.result(), "12xy");
}

TEST(Scheduler, NeverStarvesBackgroundWork) {
    OrderOfWork order;
    order.add('x', true);
    for (int i = 0; i <= NEBSourceControlScheduler::mostOvertakings; ++i) {
        order.add('.', false);
    }
    order.add('y', true);
    EXPECT_EQ(order.result(), std::string(NEBSourceControlScheduler::mostOvertakings, '.') + "x.y");
}

TEST(Scheduler, LeavesThreadsForForegroundWork) {
    NEBSourceControlScheduler scheduler(1);
    std::promise<void> foregroundIsDone;
    const auto end = foregroundIsDone.get_future().share();
    for (std::size_t i = 0; i < 2 * NEBSourceControlScheduler::backgroundThreads; ++i) {
        scheduler.add({.isBackground = true}, [end] { end.wait(); });
    }
    scheduler.add({}, [&foregroundIsDone] { foregroundIsDone.set_value(); });
    scheduler.waitUntilAllWorkIsDone();
}

/// Work that needs two places waits for both, and delays later work with either.
TEST(Scheduler, RunsWorkWithTwoPlacesBetweenItsNeighbours) {
    NEBSourceControlScheduler scheduler(8);
    std::promise<void> goOn;
    const auto mayGoOn = goOn.get_future().share();
    std::mutex mutex;
    std::string done;
    const auto note = [&](char letter) {
        return [&, letter] {
            const std::lock_guard lock(mutex);
            done += letter;
        };
    };
    scheduler.add({.places = {"a"}}, [&] { mayGoOn.wait(); });
    scheduler.add({.places = {"b", "a", "a"}}, note('1'));
    scheduler.add({.places = {"b"}}, note('2'));
    std::promise<void> other;
    scheduler.add({.places = {"c"}}, [&other] { other.set_value(); });
    other.get_future().wait();
    goOn.set_value();
    scheduler.waitUntilAllWorkIsDone();
    EXPECT_EQ(done, "12");
}

TEST(Scheduler, RemovesCancelledWorkThatWaits) {
    NEBSourceControlScheduler scheduler(1);
    std::promise<void> begun;
    std::promise<void> goOn;
    const auto owned = std::make_shared<int>(0);
    const auto never = [owned] { FAIL() << "it was cancelled"; };
    const auto first = scheduler.add({.places = {"a"}}, [&] {
        begun.set_value();
        goOn.get_future().wait();
    });
    begun.get_future().wait();
    const auto waiting = scheduler.add({.places = {"a"}}, never);
    const auto ready = scheduler.add({.places = {"b"}}, never);
    bool hasRun = false;
    scheduler.add({.places = {"b"}}, [&hasRun] { hasRun = true; });
    EXPECT_FALSE(scheduler.cancel(first)) << "it runs";
    EXPECT_TRUE(scheduler.cancel(waiting));
    EXPECT_FALSE(scheduler.cancel(waiting)) << "it is gone";
    EXPECT_TRUE(scheduler.cancel(ready)) << "it waits for a thread";
    EXPECT_FALSE(scheduler.cancel(12345));
    EXPECT_EQ(owned.use_count(), 2) << "the functions are destroyed";
    goOn.set_value();
    scheduler.waitUntilAllWorkIsDone();
    EXPECT_TRUE(hasRun);
}

TEST(Scheduler, RunsOperationsOfRequests) {
    const TestRepository repository;
    repository.commitFile("a", "a\n");
    NEBSourceControlScheduler scheduler;
    std::vector<std::shared_ptr<NEBSourceControlOperation>> finished;
    for (int i = 0; i < 3; ++i) {
        const auto operation = std::make_shared<NEBSourceControlOperation>(
            requestFor(NEBSourceControlRequestCommit, repository.path()));
        scheduler.addOperation(operation,
                               [&finished, operation] { finished.push_back(operation); });
    }
    scheduler.addOperation(std::make_shared<NEBSourceControlOperation>(
                               requestFor(NEBSourceControlRequestLog, repository.path())),
                           nullptr);
    scheduler.waitUntilAllWorkIsDone();
    ASSERT_EQ(finished.size(), 3U);
    EXPECT_TRUE(finished.front()->isFinished());
}

/// Many threads add work with places from a small set: none runs at the same time as other work
/// with the same place, and all work runs.
TEST(Scheduler, KeepsPlacesApartUnderLoad) {
    constexpr std::size_t placeCount = 5;
    constexpr std::size_t threadCount = 8;
    constexpr std::size_t workPerThread = 200;
    NEBSourceControlScheduler scheduler(8);
    std::array<std::atomic<int>, placeCount> users{};
    std::atomic<int> violations = 0;
    std::atomic<std::size_t> runs = 0;
    const auto use = [&](std::size_t place) { violations += users[place]++ == 0 ? 0 : 1; };
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (std::size_t i = 0; i < workPerThread; ++i) {
                const std::size_t one = (thread + i) % placeCount;
                const std::size_t other = (one + 1 + i % 3) % placeCount;
                scheduler.add({.places = {std::to_string(one), std::to_string(other)},
                               .isBackground = i % 7 == 0},
                              [&, one, other] {
                                  use(one);
                                  use(other);
                                  ++runs;
                                  --users[one];
                                  --users[other];
                              });
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    scheduler.waitUntilAllWorkIsDone();
    EXPECT_EQ(runs, threadCount * workPerThread);
    EXPECT_EQ(violations, 0);
}

}  // namespace
}  // namespace neb::test

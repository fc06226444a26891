// Requests that wait for each other, and requests that run in parallel.

#include "Server/RepositoryScheduler.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <mutex>
#include <thread>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/Matchers.h"
#include "Support/TestRepository.h"

namespace neb::test {
namespace {

using nebsc::RepositoryScheduler;
using nebsc::writtenLocationOf;

TEST(WrittenLocation, IsTheTopOfTheWorkingCopyForRequestsThatWrite) {
    const TestRepository repository;
    repository.write("src/deep/a.c", "1");
    for (const auto& type : NEBSourceControlAllRequestTypes()) {
        const auto request = requestFor(type.type, repository.path("src/deep"));
        if (type.worksInDestination) {
            request->destination = repository.path("new/clone");
        }
        const auto effect = NEBSourceControlEffectOfRequest(*request);
        EXPECT_EQ(writtenLocationOf(*request), effect == NEBSourceControlRequestEffect::changes
                                                   ? std::optional(repository.path())
                                                   : std::nullopt)
            << type.name;
    }
    const auto unlisted = requestFor(1'000'000, repository.path("src/deep"));
    EXPECT_EQ(writtenLocationOf(*unlisted), repository.path());
}

TEST(WrittenLocation, ComesFromTheLocationOrTheRepositoryPath) {
    const TestRepository repository;
    const auto request = requestFor(NEBSourceControlRequestAdd, "file://" + repository.path());
    EXPECT_EQ(writtenLocationOf(*request), repository.path());
    request->sourceTree.reset();
    EXPECT_EQ(writtenLocationOf(*request), "");
    request->options =
        NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, repository.path(".git")}};
    EXPECT_EQ(writtenLocationOf(*request), repository.path());
    const TemporaryFolder folder;
    EXPECT_EQ(
        writtenLocationOf(*requestFor(NEBSourceControlRequestCreateRepository, folder.path("new"))),
        folder.path("new"));
}

TEST(WrittenLocation, OfAnExportIsItsDestination) {
    const TestRepository repository;
    for (const std::int32_t type :
         {NEBSourceControlRequestExportFiles, NEBSourceControlRequestExport,
          NEBSourceControlRequestExportTree}) {
        const auto request = requestFor(type, repository.path());
        request->destination = repository.path("new/../a.c");
        EXPECT_EQ(writtenLocationOf(*request), repository.path("a.c")) << type;
    }
}

TEST(RepositoryScheduler, RunsWorkForOneLocationInOrderAndTheRestInParallel) {
    OperationQueue queue(4);
    RepositoryScheduler scheduler(queue);
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
    scheduler.add({.location = "/w"}, [&] {
        mayGoOn.wait();
        note('1');
    });
    scheduler.add({.location = "/w"}, [&] { note('2'); });
    scheduler.add({.location = "/w"}, [&] { note('3'); });
    scheduler.add({.location = "/v"}, [&] { other('v'); });
    scheduler.add({}, [&] { other('r'); });
    bothDone.get_future().wait();
    goOn.set_value();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_THAT(done, testing::AnyOf("vr123", "rv123"));
    scheduler.add({.location = "/w"}, [&] { note('4'); });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(done.ends_with('4'));
}

TEST(RepositoryScheduler, WaitsForItsWorkWhenDestroyed) {
    OperationQueue queue(2);
    std::string done;
    {
        RepositoryScheduler scheduler(queue);
        scheduler.add({.location = "/w"}, [&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            done += '1';
        });
        scheduler.add({.location = "/w"}, [&] { done += '2'; });
    }
    EXPECT_EQ(done, "12");
}

/// Notes the work for the location "/w" in the order in which it runs. The first work waits until
/// all other work is added.
class OrderOfWork {
public:
    OrderOfWork() {
        _scheduler.add({.location = "/w"}, [this] { _allIsAdded.get_future().wait(); });
    }
    void add(char letter, bool isBackground) {
        _scheduler.add({.location = "/w", .isBackground = isBackground},
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
    OperationQueue _queue{2};
    RepositoryScheduler _scheduler{_queue};
};

TEST(RepositoryScheduler, RunsForegroundWorkBeforeBackgroundWorkThatWaits) {
    OrderOfWork order;
    order.add('x', true);
    order.add('1', false);
    order.add('y', true);
    order.add('2', false);
    EXPECT_EQ(order.result(), "12xy");
}

TEST(RepositoryScheduler, NeverStarvesBackgroundWork) {
    OrderOfWork order;
    order.add('x', true);
    for (int i = 0; i <= RepositoryScheduler::mostOvertakings; ++i) {
        order.add('.', false);
    }
    order.add('y', true);
    EXPECT_EQ(order.result(), std::string(RepositoryScheduler::mostOvertakings, '.') + "x.y");
}

TEST(RepositoryScheduler, LeavesThreadsForForegroundWork) {
    OperationQueue queue(1);
    RepositoryScheduler scheduler(queue);
    std::promise<void> foregroundIsDone;
    const auto end = foregroundIsDone.get_future().share();
    for (std::size_t i = 0; i < 2 * RepositoryScheduler::backgroundThreads; ++i) {
        scheduler.add({.isBackground = true}, [end] { end.wait(); });
    }
    scheduler.add({}, [&foregroundIsDone] { foregroundIsDone.set_value(); });
    scheduler.waitUntilAllWorkIsDone();
}

}  // namespace
}  // namespace neb::test

// Which requests wait for each other.

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
using nebsc::writtenPlaceOf;

TEST(WrittenPlace, IsTheTopOfTheWorkingCopyForWhatWrites) {
    const TestRepository repository;
    repository.write("src/deep/a.c", "1");
    for (const auto& type : NEBSourceControlAllRequestTypes()) {
        const auto request = requestFor(type.type, repository.path("src/deep"));
        if (type.worksInDestination) {
            request->destination = repository.path("new/clone");
        }
        EXPECT_EQ(writtenPlaceOf(*request), type.effect == NEBSourceControlRequestEffect::changes
                                                ? std::optional(repository.path())
                                                : std::nullopt)
            << type.name;
    }
    const auto unlisted = requestFor(1'000'000, repository.path("src/deep"));
    EXPECT_EQ(writtenPlaceOf(*unlisted), repository.path());
}

TEST(WrittenPlace, IsToldByLocationOrRepository) {
    const TestRepository repository;
    const auto request = requestFor(NEBSourceControlRequestAdd, "file://" + repository.path());
    EXPECT_EQ(writtenPlaceOf(*request), repository.path());
    request->sourceTree.reset();
    EXPECT_EQ(writtenPlaceOf(*request), "");
    request->options =
        NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, repository.path(".git")}};
    EXPECT_EQ(writtenPlaceOf(*request), repository.path());
    const TemporaryFolder folder;
    EXPECT_EQ(
        writtenPlaceOf(*requestFor(NEBSourceControlRequestCreateRepository, folder.path("new"))),
        folder.path("new"));
}

TEST(WrittenPlace, OfAnExportIsItsDestination) {
    const TestRepository repository;
    for (const std::int32_t type :
         {NEBSourceControlRequestExportFiles, NEBSourceControlRequestExport,
          NEBSourceControlRequestExportTree}) {
        const auto request = requestFor(type, repository.path());
        request->destination = repository.path("new/../a.c");
        EXPECT_EQ(writtenPlaceOf(*request), repository.path("a.c")) << type;
    }
}

TEST(RepositoryScheduler, LetsWorkOfOnePlaceRunInItsOrderAndTheRestBeside) {
    OperationQueue queue(4);
    RepositoryScheduler order(queue);
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
    order.add("/w", [&] {
        mayGoOn.wait();
        note('1');
    });
    order.add("/w", [&] { note('2'); });
    order.add("/w", [&] { note('3'); });
    order.add("/v", [&] { other('v'); });
    order.add(std::nullopt, [&] { other('r'); });
    bothDone.get_future().wait();
    goOn.set_value();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_THAT(done, testing::AnyOf("vr123", "rv123"));
    order.add("/w", [&] { note('4'); });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(done.ends_with('4'));
}

TEST(RepositoryScheduler, IsGoneOnlyWhenItsWorkIsDone) {
    OperationQueue queue(2);
    std::string done;
    {
        RepositoryScheduler order(queue);
        order.add("/w", [&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            done += '1';
        });
        order.add("/w", [&] { done += '2'; });
    }
    EXPECT_EQ(done, "12");
}

}  // namespace
}  // namespace neb::test

#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Support/HygienicTest.h"
#include "Support/ListOperation.h"
#include "Support/Matchers.h"
#include "Support/Sanitizers.h"
#include "Support/SettledText.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::ListOperation;
using test::namesOf;
using test::requestFor;
using test::settledText;
using test::TemporaryFolder;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Le;

class RecordSink : public test::HygienicTest {};

TEST_F(RecordSink, GetsRecordsWhileTheChildRuns) {
    const TemporaryFolder folder;
    ListOperation operation("echo one; echo two; while ! [ -e " + folder.path("seen") +
                            " ]; do sleep 0.01; done; echo three; printf four");
    std::vector<std::string> names;
    operation.setRecordSink([&](const NEBSourceControlResult& records) {
        for (const std::string& name : namesOf(records)) {
            names.push_back(name);
        }
        if (names.size() == 2) {
            folder.write("seen", "");
        }
    });
    operation.start();
    EXPECT_EQ(operation.error(), std::nullopt);
    EXPECT_THAT(names, ElementsAre("one", "two", "three", "four"));
    EXPECT_EQ(operation.deliveredRecordCount(), 4U);
    EXPECT_THAT(operation.result().value(), IsEmpty());
}

TEST_F(RecordSink, GetsBatchesOfAtMost512Records) {
    ListOperation operation("seq 100000");
    std::vector<std::size_t> sizes;
    std::vector<std::string> names;
    operation.setRecordSink([&](const NEBSourceControlResult& records) {
        sizes.push_back(records.size());
        for (const std::string& name : namesOf(records)) {
            names.push_back(name);
        }
    });
    operation.start();
    EXPECT_THAT(sizes, Each(Le(512U)));
    ASSERT_EQ(names.size(), 100000U);
    for (std::size_t i = 0; i < names.size(); ++i) {
        ASSERT_EQ(names[i], std::to_string(i + 1));
    }
}

/// A result that is not parsed in pieces.
class WholeOperation : public NEBSourceControlOperation {
public:
    using NEBSourceControlOperation::NEBSourceControlOperation;
    void main() override {
        setResult(NEBSourceControlResult(1300));
        setError(failure);
    }
    std::optional<NEBSourceControlError> failure;
};

TEST_F(RecordSink, GetsAnyOtherResultAtTheEnd) {
    for (const bool fails : {false, true}) {
        WholeOperation operation(requestFor(NEBSourceControlRequestInfo, std::nullopt));
        if (fails) {
            operation.failure = NEBSourceControlError::withDescription(-7, "failed");
        }
        std::vector<std::size_t> sizes;
        operation.setRecordSink(
            [&](const NEBSourceControlResult& records) { sizes.push_back(records.size()); });
        operation.start();
        EXPECT_THAT(sizes, ElementsAre(512U, 512U, 276U));
        EXPECT_THAT(operation.result().value(), IsEmpty());
        EXPECT_EQ(operation.error().has_value(), fails);
    }
}

TEST_F(RecordSink, IsFollowedByTheErrorOfAChildThatFailedLater) {
    ListOperation operation("echo one; echo two; printf hal; echo broken >&2; exit 3");
    std::vector<std::string> names;
    operation.setRecordSink([&](const NEBSourceControlResult& records) {
        for (const std::string& name : namesOf(records)) {
            names.push_back(name);
        }
    });
    operation.start();
    EXPECT_THAT(names, ElementsAre("one", "two")) << "half a record is not delivered";
    EXPECT_EQ(operation.error()->text, "broken");
}

TEST_F(RecordSink, KeepsTheMemorySmall) {
    if (test::hasSanitizer) {
        GTEST_SKIP() << "the sanitizer keeps the memory that was freed";
    }
    const auto residentKiB = [] {
        std::ifstream status("/proc/self/status");
        std::size_t size = 0;
        for (std::string word; status >> word;) {
            if (word == "VmRSS:") {
                status >> size;
            }
        }
        return size;
    };
    ListOperation operation("yes 0123456789012345678901234567890123456789 | head -c 41000000");
    std::size_t largest = 0;
    std::size_t calls = 0;
    const std::size_t before = residentKiB();
    operation.setRecordSink([&](const NEBSourceControlResult&) {
        if (++calls % 64 == 0) {
            largest = std::max(largest, residentKiB());
        }
    });
    operation.start();
    EXPECT_EQ(operation.deliveredRecordCount(), 1000000U);
    EXPECT_LT(largest, before + 16384);
}

TEST_F(RecordSink, MayKeepTheRecords) {
    ListOperation operation("seq 300000");
    NEBSourceControlResult kept;
    operation.setRecordSink([&](const NEBSourceControlResult& records) {
        kept.insert(kept.end(), records.begin(), records.end());
    });
    operation.start();
    ASSERT_EQ(kept.size(), 300000U);
    const std::vector<std::string> names = namesOf(kept);
    for (std::size_t i = 0; i < names.size(); ++i) {
        ASSERT_EQ(names[i], std::to_string(i + 1));
    }
}

TEST_F(RecordSink, GetsNoMoreOfAWholeResultAfterACancellation) {
    WholeOperation operation(requestFor(NEBSourceControlRequestInfo, std::nullopt));
    std::vector<std::size_t> sizes;
    operation.setRecordSink([&](const NEBSourceControlResult& records) {
        sizes.push_back(records.size());
        operation.cancel();
    });
    operation.start();
    EXPECT_THAT(sizes, ElementsAre(512U));
    EXPECT_EQ(operation.deliveredRecordCount(), 512U);
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
}

// ---- sinks that end the operation -------------------------------------------------------------

TEST_F(RecordSink, ThatThrowsEndsTheOperation) {
    const TemporaryFolder folder;
    ListOperation operation("trap 'touch " + folder.path("ended") +
                            "; exit' TERM; echo one; while :; do sleep 0.01; done");
    int calls = 0;
    operation.setRecordSink([&](const NEBSourceControlResult&) {
        ++calls;
        throw std::runtime_error("the disk is full");
    });
    operation.start();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(operation.deliveredRecordCount(), 0U);
    EXPECT_THAT(operation.error()->localizedDescription().value(), HasSubstr("the disk is full"));
    EXPECT_TRUE(std::filesystem::exists(folder.path("ended"))) << "in an orderly way";
}

TEST_F(RecordSink, ThatThrowsAtTheEndGivesAnError) {
    ListOperation operation("printf one");
    operation.setRecordSink(
        [](const NEBSourceControlResult&) { throw std::runtime_error("the disk is full"); });
    operation.start();
    EXPECT_THAT(operation.error()->localizedDescription().value(), HasSubstr("the disk is full"));
}

TEST_F(RecordSink, MayCancelTheOperation) {
    ListOperation operation("echo one; exec sleep 1000");
    int calls = 0;
    operation.setRecordSink([&](const NEBSourceControlResult&) {
        ++calls;
        operation.cancel();
    });
    operation.start();
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
}

/// A sink that blocks until it is released.
class BlockingSink {
public:
    void operator()(const NEBSourceControlResult& records) {
        std::unique_lock lock(_mutex);
        _child = std::stoi(namesOf(records).front());
        _changed.notify_all();
        _changed.wait(lock, [this] { return _isReleased; });
    }
    pid_t waitForChild() {
        std::unique_lock lock(_mutex);
        _changed.wait(lock, [this] { return _child != 0; });
        return _child;
    }
    void release() {
        const std::lock_guard lock(_mutex);
        _isReleased = true;
        _changed.notify_all();
    }

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    pid_t _child = 0;
    bool _isReleased = false;
};

TEST_F(RecordSink, ThatBlocksDoesNotKeepACancelledChildAlive) {
    ListOperation operation("echo $$; exec sleep 1000");
    BlockingSink sink;
    operation.setRecordSink([&sink](const NEBSourceControlResult& records) { sink(records); });
    std::thread runner([&operation] { operation.start(); });
    const pid_t child = sink.waitForChild();
    operation.cancel();
    while (test::isLiveProcess(child)) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(operation.isFinished()) << "the sink still blocks";
    sink.release();
    runner.join();
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
}

TEST_F(RecordSink, ThatBlocksHoldsTheChildBack) {
    const TemporaryFolder folder;
    ListOperation operation(
        "echo $$; i=0; while [ $i -lt 400 ]; do head -c 10000 /dev/zero; "
        "echo; i=$((i+1)); echo $i > " +
        folder.path("count") + "; done");
    BlockingSink sink;
    std::atomic<bool> isFirst = true;
    operation.setRecordSink([&](const NEBSourceControlResult& records) {
        if (isFirst.exchange(false)) {
            sink(records);
        }
    });
    std::thread runner([&operation] { operation.start(); });
    const pid_t child = sink.waitForChild();
    // The child ends in a write to a full pipe: it is asleep and the count stays.
    const std::string count = settledText([&folder] { return folder.read("count"); });
    EXPECT_TRUE(test::isLiveProcess(child));
    EXPECT_LT(std::stoi(count), 400);
    sink.release();
    runner.join();
    EXPECT_EQ(operation.error(), std::nullopt);
    EXPECT_EQ(operation.deliveredRecordCount(), 401U);
}

}  // namespace
}  // namespace neb

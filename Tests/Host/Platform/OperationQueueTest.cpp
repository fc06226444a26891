#include "Platform/OperationQueue.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>

#include "Platform/StandardLibrary.h"
#include "Support/HygienicTest.h"

namespace neb {
namespace {

class OperationQueueTest : public test::HygienicTest {};

/// Waits until the given number of threads have arrived, which shows that they run concurrently.
class Meeting {
public:
    void arrive() {
        const std::lock_guard lock(_mutex);
        ++_arrived;
        _changed.notify_all();
    }
    void waitFor(int count) {
        std::unique_lock lock(_mutex);
        _changed.wait(lock, [this, count] { return _arrived >= count; });
    }

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    int _arrived = 0;
};

class CountingOperation : public Operation {
public:
    void main() override { ++runs; }
    std::atomic<int> runs = 0;
};

TEST_F(OperationQueueTest, RunsEachOperationAndBlockOnce) {
    OperationQueue queue;
    auto operation = std::make_shared<CountingOperation>();
    std::atomic<int> blocks = 0;
    queue.addOperation(operation);
    for (int i = 0; i < 100; ++i) {
        queue.addBlock([&blocks] { ++blocks; });
    }
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(operation->runs, 1);
    EXPECT_TRUE(operation->isFinished());
    EXPECT_EQ(operation.use_count(), 1) << "the queue keeps no reference";
    EXPECT_EQ(blocks, 100);
}

TEST_F(OperationQueueTest, RunsWorkConcurrentlyUpToItsWidth) {
    OperationQueue queue(3);
    Meeting meeting;
    for (int i = 0; i < 3; ++i) {
        queue.addBlock([&meeting] {
            meeting.arrive();
            meeting.waitFor(3);
        });
    }
    queue.waitUntilAllOperationsAreFinished();
}

TEST_F(OperationQueueTest, NeverExceedsItsWidth) {
    OperationQueue queue(2);
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    for (int i = 0; i < 50; ++i) {
        queue.addBlock([&] {
            const int now = ++running;
            int known = most;
            while (now > known && !most.compare_exchange_weak(known, now)) {
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            --running;
        });
    }
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_LE(most, 2);
    EXPECT_GE(most, 1);
}

TEST_F(OperationQueueTest, AWidthOfZeroMeansOne) {
    OperationQueue queue(0);
    bool ran = false;
    queue.addBlock([&ran] { ran = true; });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(ran);
}

TEST_F(OperationQueueTest, WorkMayWaitForAnotherQueue) {
    OperationQueue outer(1);
    std::atomic<int> inner = 0;
    for (int i = 0; i < 5; ++i) {
        outer.addBlock([&inner] {
            OperationQueue own(1);
            own.addBlock([&inner] { ++inner; });
            own.waitUntilAllOperationsAreFinished();
        });
    }
    outer.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(inner, 5);
}

TEST_F(OperationQueueTest, TheDestructorFinishesTheWork) {
    std::atomic<int> done = 0;
    {
        OperationQueue queue(1);
        for (int i = 0; i < 20; ++i) {
            queue.addBlock([&done] { ++done; });
        }
    }
    EXPECT_EQ(done, 20);
}

/// The thread sanitizer reports a destructor that reads the list of threads while work changes it.
TEST_F(OperationQueueTest, TheDestructorFinishesWorkThatWorkAdds) {
    constexpr int rounds = 50;
    constexpr std::size_t width = 4;
    std::atomic<int> done = 0;
    for (int round = 0; round < rounds; ++round) {
        OperationQueue queue(width);
        queue.addBlock([&queue, &done] {
            for (std::size_t i = 0; i < width; ++i) {
                queue.addBlock([&done] { ++done; });
            }
            ++done;
        });
    }
    EXPECT_EQ(done, rounds * static_cast<int>(width + 1));
}

TEST_F(OperationQueueTest, AnExceptionDoesNotEndAThread) {
    OperationQueue queue(1);
    bool ran = false;
    queue.addBlock([] { throw 42; });
    queue.addBlock([&ran] { ran = true; });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(ran);
}

TEST_F(OperationQueueTest, WorkThatEndsItsThreadIsFollowedByOtherWork) {
    if (standardLibrary.starts_with("libc++")) {
        GTEST_SKIP() << "see Platform/ThreadEnd.h";
    }
    OperationQueue queue(1);
    std::atomic<int> ran = 0;
    queue.addBlock([] { ::pthread_exit(nullptr); });
    queue.addBlock([&ran] { ++ran; });
    queue.waitUntilAllOperationsAreFinished();
    queue.addBlock([&ran] { ++ran; });
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_EQ(ran, 2);
}

TEST_F(OperationQueueTest, CancelsWaitingAndRunningOperations) {
    class WaitingOperation : public Operation {
    public:
        explicit WaitingOperation(Meeting& meeting) : _meeting(meeting) {}
        void main() override {
            _meeting.arrive();
            while (!isCancelled()) {
                std::this_thread::yield();
            }
        }

    private:
        Meeting& _meeting;
    };
    OperationQueue queue(1);
    Meeting meeting;
    auto first = std::make_shared<WaitingOperation>(meeting);
    auto second = std::make_shared<WaitingOperation>(meeting);
    queue.addOperation(first);
    queue.addOperation(second);
    meeting.waitFor(1);
    queue.cancelAllOperations();
    queue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(first->isCancelled() && first->isFinished());
    EXPECT_TRUE(second->isCancelled() && second->isFinished());
}

TEST_F(OperationQueueTest, TheCallerDoesTheWorkIfNoThreadCanBeCreated) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        // The limit of threads does not apply to root.
        const rlimit none{0, 0};
        if (::setuid(65534) != 0 && ::getuid() == 0) {
            ::_exit(2);
        }
        ::setrlimit(RLIMIT_NPROC, &none);
        bool ran = false;
        {
            OperationQueue queue;
            queue.addBlock([&ran] { ran = true; });
            queue.waitUntilAllOperationsAreFinished();
        }
        ::_exit(ran ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST_F(OperationQueueTest, IgnoresAbsentWork) {
    OperationQueue queue;
    queue.addOperation(nullptr);
    queue.addBlock({});
    queue.waitUntilAllOperationsAreFinished();
}

}  // namespace
}  // namespace neb

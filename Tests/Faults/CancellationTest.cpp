// Cancels operations of every type at random moments: no process, descriptor or temporary file is
// left.
//
//   NEB_CANCELLATIONS=1000 NEB_SEED=1 build/tsan/bin/fault_tests --gtest_filter='Cancellation*'

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <thread>

#include "Classes/Configuration/RequestMatrix.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/HygienicTest.h"
#include "Support/NumberInEnvironment.h"
#include "Support/RequestRun.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using std::chrono::nanoseconds;
using std::chrono::steady_clock;
using testing::IsEmpty;

/// The repositories that a request needs, with a separate folder for temporary files.
class Scenario {
public:
    explicit Scenario(const RequestCase& requestCase)
        : _requestCase(requestCase), _formerFolder(fs::temp_directory_path()) {
        static_cast<void>(preparedRequest(_world, requestCase));
        fs::copy(_world.path(), _asPrepared.path("world"), copying);
        ::setenv("TMPDIR", _world.path("tmp").c_str(), 1);
    }
    Scenario(const Scenario&) = delete;
    Scenario& operator=(const Scenario&) = delete;
    ~Scenario() { ::setenv("TMPDIR", _formerFolder.c_str(), 1); }

    /// Restores the prepared state and returns the request.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> restored() const {
        for (const auto& entry : fs::directory_iterator(_world.path())) {
            fs::remove_all(entry.path());
        }
        fs::copy(_asPrepared.path("world"), _world.path(), copying);
        auto request = requestFor(_requestCase.type, _world.repository());
        _requestCase.fill(_world, *request);
        return request;
    }

    /// Returns lock files, unfinished copies and temporary files. The destination of the request is
    /// not one of them: a killed git leaves a tree that is partly exported, too.
    [[nodiscard]] std::vector<std::string> remainingFiles(
        const NEBSourceControlRequest& request) const {
        const std::string destination = request.type == NEBSourceControlRequestExportTree
                                            ? request.destination.description()
                                            : "";
        std::vector<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(_world.path())) {
            const std::string name = entry.path().filename().string();
            const bool isTemporary =
                entry.path().parent_path() == _world.path("tmp") && entry.path() != destination;
            if (name.ends_with(".lock") || name.starts_with(".draft-") || isTemporary) {
                names.push_back(entry.path().string());
            }
        }
        return names;
    }

private:
    static constexpr auto copying = fs::copy_options::recursive | fs::copy_options::copy_symlinks;

    const RequestCase& _requestCase;
    const std::string _formerFolder;
    const World _world;
    const TemporaryFolder _asPrepared;
};

/// The number of cancellations; NEB_CANCELLATIONS sets another one, for a longer search for races.
constexpr unsigned long byDefault = 200;
constexpr unsigned long parts = 10;

/// The cancellations are split into parts, which run in different processes.
class Cancellation : public HygienicTest, public testing::WithParamInterface<unsigned long> {
protected:
    /// Works in memory: on a disk, restoring the repositories may take a second each time.
    void SetUp() override {
        HygienicTest::SetUp();
        if (fs::is_directory(inMemory)) {
            _formerFolder = fs::temp_directory_path();
            ::setenv("TMPDIR", inMemory, 1);
        }
    }
    void TearDown() override {
        if (!_formerFolder.empty()) {
            ::setenv("TMPDIR", _formerFolder.c_str(), 1);
        }
        HygienicTest::TearDown();
    }

    /// Runs the operation of the request and cancels it from another thread after the given time.
    static std::shared_ptr<NEBSourceControlOperation> runAndCancel(
        const std::shared_ptr<NEBSourceControlRequest>& request, nanoseconds after) {
        const auto operation = GitController().operationForRequest(request);
        operation->setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
        std::atomic<bool> begun = false;
        std::thread canceller([&] {
            while (!begun) {
                std::this_thread::yield();
            }
            std::this_thread::sleep_for(after);
            operation->cancel();
        });
        begun = true;
        operation->start();
        canceller.join();
        return operation;
    }

private:
    static constexpr const char* inMemory = "/dev/shm";

    std::string _formerFolder;
};

TEST_P(Cancellation, AtAnyMomentLeavesNothing) {
    const unsigned long count = numberInEnvironment("NEB_CANCELLATIONS", byDefault) / parts;
    const unsigned long seed = numberInEnvironment("NEB_SEED", std::random_device()());
    std::printf("%lu cancellations, NEB_SEED=%lu\n", count, seed);
    std::mt19937_64 random(seed + GetParam());
    const std::vector<RequestCase>& matrix = requestMatrix();
    unsigned long cancelled = 0;
    std::size_t next = random() % matrix.size();
    for (unsigned long done = 0; done < count; next = (next + 1) % matrix.size()) {
        const Scenario scenario(matrix[next]);
        // Measures the request without a cancellation; the first run is slower.
        static_cast<void>(perform(scenario.restored()));
        const auto begin = steady_clock::now();
        static_cast<void>(perform(scenario.restored()));
        const nanoseconds span = steady_clock::now() - begin;
        const std::set<std::string> descriptors = openDescriptors();
        for (int i = 0; i < 20 && done < count; ++i, ++done) {
            const auto request = scenario.restored();
            const nanoseconds after(
                static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(span.count() + 1)));
            SCOPED_TRACE(matrix[next].name + " after " + std::to_string(after.count()) + " ns");
            const auto operation = runAndCancel(request, after);
            if (operation->isCancelled() && operation->error() &&
                operation->error()->errorClass == NEBSourceControlCancelledErrorClass) {
                ++cancelled;
            }
            ASSERT_TRUE(operation->isFinished());
            ASSERT_EQ(openDescriptors(), descriptors);
            ASSERT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
            if (operation
                    ->error()) {  // without an error, a temporary file is the result of an export
                ASSERT_THAT(scenario.remainingFiles(*request), IsEmpty());
            }
        }
    }
    std::printf("%lu of them were cancelled before their end\n", cancelled);
    // On a busy machine, all of a few cancellations may come too late.
    EXPECT_TRUE(cancelled > 0 || count < 100);
}

INSTANTIATE_TEST_SUITE_P(Part, Cancellation, testing::Range(0UL, parts));

}  // namespace
}  // namespace neb::test

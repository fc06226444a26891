// Runs many reading and writing requests from many threads on many working copies: the process has
// the same descriptors, threads and memory afterwards. scripts/load runs 10,000 requests.

#include <gmock/gmock.h>
#include <malloc.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <random>
#include <thread>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/HygienicTest.h"
#include "Support/NumberInEnvironment.h"
#include "Support/RequestRun.h"
#include "Support/Sanitizers.h"
#include "Support/TestRepository.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;

struct Figures {
    std::size_t descriptors = 0;
    std::size_t threads = 0;
    std::size_t children = 0;
    std::size_t residentKiB = 0;
};

std::size_t entriesIn(const char* folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

std::size_t childrenOfThisProcess() {
    std::size_t count = 0;
    for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
        std::ifstream children(thread.path() / "children");
        for (std::string pid; children >> pid;) {
            ++count;
        }
    }
    return count;
}

Figures figuresNow() {
#ifdef __GLIBC__
    ::malloc_trim(0);  // returns free memory to the system, so that only used memory counts
#endif
    Figures figures{.descriptors = entriesIn("/proc/self/fd"),
                    .threads = entriesIn("/proc/self/task"),
                    .children = childrenOfThisProcess()};
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == "VmRSS:") {
            status >> figures.residentKiB;
        }
    }
    return figures;
}

void print(const char* when, const Figures& figures) {
    std::printf("%-22s %3zu descriptors, %2zu threads, %zu children, %zu KiB resident\n", when,
                figures.descriptors, figures.threads, figures.children, figures.residentKiB);
}

class Load : public testing::Test {
protected:
    void makeWorkingCopies(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const TestRepository& copy = copies.emplace_back();
            copy.commitFile("a.c", "one\ntwo\n", "First");
            copy.write("d/b.c", "b\n");
            copy.git({"add", "."});
            copy.git({"commit", "--quiet", "-m", "Second"});
            copy.git({"branch", "topic"});
        }
    }

    /// Runs `count` requests, each on one of the working copies.
    void run(unsigned long count, unsigned threadCount) {
        std::atomic<unsigned long> next = 0;
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < threadCount; ++i) {
            threads.emplace_back([this, &next, count, i] {
                std::mt19937 random(i);
                for (unsigned long number = next++; number < count; number = next++) {
                    performOne(random(), number);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    void performOne(unsigned long chance, unsigned long number) {
        const TestRepository& copy = copies[chance % copies.size()];
        const std::int32_t types[] = {
            NEBSourceControlRequestStatus,       NEBSourceControlRequestLog,
            NEBSourceControlRequestBlame,        NEBSourceControlRequestDiff,
            NEBSourceControlRequestList,         NEBSourceControlRequestInfo,
            NEBSourceControlRequestListBranches, NEBSourceControlRequestListRemotes,
            NEBSourceControlRequestExport,       NEBSourceControlRequestAddFiles,
            NEBSourceControlRequestCommit,       NEBSourceControlRequestCreateBranch,
            NEBSourceControlRequestCheckout,     NEBSourceControlRequestMakeDirectory,
        };
        auto request = requestFor(types[number % std::size(types)], copy.path());
        const std::string name = "n" + std::to_string(number);
        request->files = valuesOf({copy.path("a.c")});
        switch (request->type) {
            case NEBSourceControlRequestInfo:
                request->files.reset();
                break;
            case NEBSourceControlRequestList:
                request->files = valuesOf({"d"});
                break;
            case NEBSourceControlRequestDiff:
            case NEBSourceControlRequestExport:
                request->startingRevision = "HEAD";
                break;
            case NEBSourceControlRequestAddFiles:
                copy.write(name, name);
                request->files = valuesOf({copy.path(name)});
                break;
            case NEBSourceControlRequestCommit:
                request->files.reset();
                request->options =
                    NEBDictionary{{NEBSourceControlRequestOptionMessage, name},
                                  {NEBSourceControlRequestOptionAllowEmptyCommit, true}};
                break;
            case NEBSourceControlRequestCreateBranch:
                request->destination = name;
                break;
            case NEBSourceControlRequestCheckout:
                request->destination = number % 2 == 0 ? "topic" : "main";
                break;
            case NEBSourceControlRequestMakeDirectory:
                request->destination = copy.path("dir-" + name);
                break;
            default:
                break;
        }
        count(*perform(request));
    }

    void count(const NEBSourceControlOperation& operation) {
        const auto path = operation.result() && !operation.result()->empty()
                              ? operation.result()->front().value(NEBSourceControlOperationPathKey)
                              : NEBValue();
        if (const LOMFilePath* exported = path.filePath()) {
            fs::remove(exported->pathString());
        }
        const std::lock_guard lock(mutex);
        ++outcomes[operation.error() ? operation.error()->errorClass.value_or("(none)") : "done"];
    }

    std::deque<TestRepository> copies;
    std::mutex mutex;
    std::map<std::string, unsigned long> outcomes;  // by class; guarded by mutex
};

TEST_F(Load, LeavesTheProcessAsItWas) {
    const unsigned long requests =
        numberInEnvironment("NEB_LOAD_REQUESTS", hasSanitizer ? 200 : 500);
    const bool isWhole = requests >= 5000;
    const unsigned threads = isWhole ? 64 : 16;
    makeWorkingCopies(isWhole ? 50 : 10);
    const TemporaryFolder temporary;
    ::setenv("TMPDIR", temporary.path().c_str(), 1);

    std::thread([] {}).join();  // the thread sanitizer starts a thread together with the first
    const Figures before = figuresNow();
    run(requests / 2, threads);
    const Figures halfway = figuresNow();
    run(requests - requests / 2, threads);
    const Figures after = figuresNow();
    ::unsetenv("TMPDIR");

    std::printf("%lu requests, %u threads, %zu working copies\n", requests, threads, copies.size());
    print("before", before);
    print("after the first half", halfway);
    print("after the second", after);
    for (const auto& [outcome, count] : outcomes) {
        std::printf("%6lu %s\n", count, outcome.c_str());
    }
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_EQ(after.children, 0U);
    EXPECT_TRUE(fs::is_empty(temporary.path())) << "a temporary file was left";
    if (!hasSanitizer) {
        constexpr std::size_t someKiB = 8192;
        EXPECT_LT(after.residentKiB, halfway.residentKiB + someKiB) << "memory grows with the work";
    }
    // Two requests that write to one working copy may conflict; nothing else may fail. Two commits
    // share .git/COMMIT_EDITMSG: git may find there what the other has just emptied.
    for (const auto& [outcome, count] : outcomes) {
        EXPECT_TRUE(outcome == "done" || outcome == NEBSourceControlIndexLockedErrorClass ||
                    outcome == NEBSourceControlRefLockedErrorClass ||
                    outcome == NEBSourceControlReferenceChangedErrorClass ||
                    outcome == NEBSourceControlMessageEmptyErrorClass ||
                    outcome == NEBSourceControlBranchExistsErrorClass)
            << outcome;
    }
    for (const TestRepository& copy : copies) {
        EXPECT_EQ(copy.gitStatus({"fsck", "--strict"}), 0);
        EXPECT_EQ(copy.gitStatus({"status"}), 0);
    }
}

}  // namespace
}  // namespace neb::test

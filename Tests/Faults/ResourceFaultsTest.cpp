// The system refuses processes, descriptors or memory, or a child prints very much.

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/ChildLaunches.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/Sanitizers.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

class ResourceFaults : public HygienicTest {};

/// Lowers a limit of this process for the lifetime of the object.
class Limit {
public:
    Limit(__rlimit_resource resource, rlim_t most) : _resource(resource) {
        ::getrlimit(resource, &_former);
        const rlimit limit{.rlim_cur = most, .rlim_max = _former.rlim_max};
        EXPECT_EQ(::setrlimit(resource, &limit), 0);
    }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;
    ~Limit() { ::setrlimit(_resource, &_former); }

private:
    __rlimit_resource _resource;
    rlimit _former{};
};

/// Returns a figure of /proc/self/status in KiB, 0 if it is missing.
std::size_t memoryFigure(const std::string& name) {
    std::ifstream status("/proc/self/status");
    std::string word;
    std::size_t figure = 0;
    while (status >> word) {
        if (word == name + ":") {
            status >> figure;
        }
    }
    return figure;
}

TEST_F(ResourceFaults, WithoutAProcessTheErrorSaysSo) {
    const TestRepository repository;
    const AsOrdinaryUser user;  // root has no limits
    const Limit limit(RLIMIT_NPROC, 0);
    const auto status = perform(requestFor(NEBSourceControlRequestStatus, repository.path()));
    EXPECT_THAT(status->error(), HasErrorClass(NEBSourceControlNotStartedErrorClass));
    EXPECT_THAT(status->error()->localizedDescription().value_or(""),
                HasSubstr("could not be started: Resource temporarily unavailable"));
}

TEST_F(ResourceFaults, WithoutAThreadAndAProcessACompositeFailsAndDoesNotHang) {
    const TestRepository repository;
    const AsOrdinaryUser user;
    const Limit limit(RLIMIT_NPROC, 0);
    auto request = requestFor(NEBSourceControlRequestInfo, repository.path());
    const auto info = perform(request);
    EXPECT_THAT(info->error(), HasErrorClass(NEBSourceControlNotStartedErrorClass));
}

TEST_F(ResourceFaults, WithoutDescriptorsEachNumberIsAnOutcomeOrAnError) {
    const TestRepository repository;
    repository.commitFile("a", "1\n");
    const JSON request{{"type", NEBSourceControlRequestListRemotes},
                       {"sourceTree", {{"location", repository.path()}}}};
    const TemporaryFolder folder;
    const std::string input = folder.write("request", request.dump());
    bool hasFailed = false;
    bool hasSucceeded = false;
    for (int descriptors = 4; descriptors <= 24; ++descriptors) {
        const NebscOutcome outcome =
            runProgram("/usr/bin/prlimit",
                       {"--nofile=" + std::to_string(descriptors),
                        std::string(NEB_BUILD_FOLDER) + "/bin/nebsc", "request", input},
                       {});
        ASSERT_THAT(outcome.exitStatus, AnyOf(0, 1, 127)) << descriptors << outcome.errors;
        hasSucceeded |= outcome.exitStatus == 0;
        hasFailed |= outcome.exitStatus != 0;
        if (outcome.exitStatus != 0) {
            EXPECT_NE(outcome.output + outcome.errors, "") << "a failure without a message";
        }
    }
    EXPECT_TRUE(hasSucceeded);
    EXPECT_TRUE(hasFailed);
}

TEST_F(ResourceFaults, WithoutMemoryEachAmountIsAnOutcomeOrAnError) {
    if (hasSanitizer) {
        GTEST_SKIP() << "a sanitizer takes more address space than there is";
    }
    const TestRepository repository;
    const StandInGit git(repository.path(), "head -c 20000000 /dev/zero | tr '\\0' x");
    const JSON request{{"type", NEBSourceControlRequestDiff},
                       {"sourceTree", {{"location", repository.path()}}}};
    const TemporaryFolder folder;
    const std::string input = folder.write("request", request.dump());
    bool hasFailedForMemory = false;
    bool hasSucceeded = false;
    for (const int megabytes : {12, 20, 40, 60, 80, 100, 1600}) {
        const NebscOutcome outcome = runProgram(
            "/usr/bin/prlimit",
            {"--as=" + std::to_string(std::size_t{1000000} * static_cast<std::size_t>(megabytes)),
             std::string(NEB_BUILD_FOLDER) + "/bin/nebsc", "request", input},
            {.variables = {git.path()}});
        // 2: there was too little memory to load the plug-in; 127: to load nebsc.
        ASSERT_THAT(outcome.exitStatus, AnyOf(0, 1, 2, 127)) << megabytes << outcome.errors;
        hasSucceeded |= outcome.exitStatus == 0;
        if (outcome.exitStatus != 0) {
            EXPECT_NE(outcome.output + outcome.errors, "") << "a failure without a message";
            EXPECT_EQ((outcome.output + outcome.errors).find("bad_alloc"), std::string::npos);
        }
        if (outcome.exitStatus == 1) {
            ASSERT_NE(outcome.output, "") << megabytes << outcome.errors;
            hasFailedForMemory |= outcome.json()["error"]["class"] == "out-of-memory";
        }
    }
    EXPECT_TRUE(hasFailedForMemory);
    EXPECT_TRUE(hasSucceeded);
}

TEST_F(ResourceFaults, WithoutMemoryForEachOfManyRecordsThereIsAnOutcome) {
    if (hasSanitizer) {
        GTEST_SKIP() << "a sanitizer takes more address space than there is";
    }
    const TestRepository repository;
    const StandInGit git(
        repository.path(),
        "yes '%0123456789ab@Ann@ann.example@1500000000@A message^' | head -n 20000 | "
        "tr -d '\\n' | tr '%@^' '\\000\\n\\001'");
    const JSON request{{"type", NEBSourceControlRequestLog},
                       {"sourceTree", {{"location", repository.path()}}}};
    const TemporaryFolder folder;
    const std::string input = folder.write("request", request.dump());
    bool hasFailedForMemory = false;
    for (const int megabytes : {20, 28, 34, 42}) {
        const NebscOutcome outcome = runProgram(
            "/usr/bin/prlimit",
            {"--as=" + std::to_string(std::size_t{1000000} * static_cast<std::size_t>(megabytes)),
             std::string(NEB_BUILD_FOLDER) + "/bin/nebsc", "request", input},
            {.variables = {git.path()}});
        ASSERT_THAT(outcome.exitStatus, AnyOf(0, 1)) << megabytes << outcome.errors;
        ASSERT_NE(outcome.output, "") << megabytes << outcome.errors;
        hasFailedForMemory |= outcome.exitStatus == 1;
        if (outcome.exitStatus == 1) {
            EXPECT_EQ(outcome.json()["error"]["class"], "out-of-memory");
        }
    }
    EXPECT_TRUE(hasFailedForMemory);
}

TEST_F(ResourceFaults, MuchOnBothStreamsTakesMemoryForTheOutputAlone) {
    constexpr std::size_t million = 1000000;
    constexpr std::size_t output = (hasSanitizer ? 50 : 500) * million;
    constexpr std::size_t errors = (hasSanitizer ? 20 : 200) * million;
    std::ofstream("/proc/self/clear_refs") << 5;  // resets the peak
    const std::size_t before = memoryFigure("VmRSS");
    const ChildOutcome outcome =
        runOne(shell("head -c " + std::to_string(errors) + " /dev/zero >&2 & head -c " +
                     std::to_string(output) + " /dev/zero; wait"));
    EXPECT_EQ(outcome.output.size(), output);
    EXPECT_EQ(outcome.errorOutput.size(), 1U << 23U) << "the beginning and the end";
    if (!hasSanitizer) {
        const std::size_t most = output / 1024 + 65536;
        EXPECT_LT(memoryFigure("VmHWM") - before, most);
    }
}

}  // namespace
}  // namespace neb::test

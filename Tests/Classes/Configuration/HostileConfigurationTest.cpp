// Each type of request has the same results and effects with any output configuration of git.

#include "Classes/Configuration/HostileConfiguration.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <set>

#include "Classes/Configuration/RequestMatrix.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"

namespace neb {
namespace {

using test::HostileConfiguration;
using test::Outcome;
using test::outcomeOf;
using test::preparedRequest;
using test::RequestCase;
using test::requestMatrix;
using test::World;

/// The number of compared requests in this run, and of those that differed.
struct Comparison {
    int compared = 0;
    int differing = 0;
};

Comparison& comparison() {
    static Comparison soFar;
    return soFar;
}

std::string differences(const std::map<std::string, std::string>& found,
                        const std::map<std::string, std::string>& expected) {
    std::string differing;
    for (const auto& [path, content] : found) {
        const auto place = expected.find(path);
        if (place == expected.end() || place->second != content) {
            const std::string before = place == expected.end() ? "nothing" : place->second;
            differing.append(path).append(": ").append(content).append("\n  instead of: ");
            differing.append(before).append("\n");
        }
    }
    for (const auto& [path, content] : expected) {
        differing += found.contains(path) ? "" : path + " is missing\n";
    }
    return differing;
}

class UnderHostileConfiguration : public test::HygienicTest,
                                  public testing::WithParamInterface<RequestCase> {
protected:
    static void TearDownTestSuite() {
        std::printf("Hostile configuration: %d requests compared, %d differing\n",
                    comparison().compared, comparison().differing);
    }
};

TEST_P(UnderHostileConfiguration, AnswersAndDoesTheSame) {
    const World plain;
    const Outcome expected = outcomeOf(plain, preparedRequest(plain, GetParam()));

    const World world;
    const auto request = preparedRequest(world, GetParam());
    Outcome outcome;
    std::string started;
    {
        const HostileConfiguration hostile;
        outcome = outcomeOf(world, request);
        started = hostile.startedPrograms();
    }
    plain.run(GetParam().settlement);
    world.run(GetParam().settlement);
    if (GetParam().reportsStatus) {
        outcome.text = expected.text;
    }
    EXPECT_EQ(outcome, expected);
    EXPECT_EQ(started, "") << "a program was started";
    EXPECT_EQ(differences(world.content(), plain.content()), "");
    ++comparison().compared;
    comparison().differing += HasFailure() ? 1 : 0;
}

INSTANTIATE_TEST_SUITE_P(EachType, UnderHostileConfiguration, testing::ValuesIn(requestMatrix()),
                         [](const auto& tested) { return tested.param.name; });

TEST(RequestMatrix, HasEveryTypeThatHasAnOperation) {
    std::set<std::int32_t> types;
    for (const RequestCase& requestCase : requestMatrix()) {
        types.insert(requestCase.type);
    }
    std::set<std::int32_t> expected;
    for (const auto& type : NEBSourceControlAllRequestTypes()) {
        if (type.name != "unsupported") {
            expected.insert(type.type);
        }
    }
    EXPECT_EQ(types, expected);
}

}  // namespace
}  // namespace neb

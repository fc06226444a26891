// Each type of request works in a repository with SHA-256 object ids.

#include <gmock/gmock.h>

#include <regex>

#include "Classes/Configuration/RequestMatrix.h"
#include "Classes/Configuration/Variables.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"

namespace neb {
namespace {

using test::Outcome;
using test::outcomeOf;
using test::perform;
using test::preparedRequest;
using test::RequestCase;
using test::requestFor;
using test::requestMatrix;
using test::Variables;
using test::World;

/// Returns the outcome with "<name>" for each object id.
Outcome withoutNames(Outcome outcome) {
    const std::regex name("\\b[0-9a-f]{7,64}\\b");
    outcome.error = std::regex_replace(outcome.error, name, "<name>");
    outcome.text = std::regex_replace(outcome.text, name, "<name>");
    for (std::string& record : outcome.records) {
        record = std::regex_replace(record, name, "<name>");
    }
    return outcome;
}

class InSHA256Repository : public test::HygienicTest,
                           public testing::WithParamInterface<RequestCase> {};

TEST_P(InSHA256Repository, AnswersAsInAnyOther) {
    const World usual;
    const Outcome expected = outcomeOf(usual, preparedRequest(usual, GetParam()));
    const World world("sha256");
    const Outcome outcome = outcomeOf(world, preparedRequest(world, GetParam()));
    EXPECT_EQ(withoutNames(outcome), withoutNames(expected));
    EXPECT_EQ(world.run("git rev-parse main").size(), 65U);
}

INSTANTIATE_TEST_SUITE_P(EachType, InSHA256Repository, testing::ValuesIn(requestMatrix()),
                         [](const auto& tested) { return tested.param.name; });

class ObjectFormat : public test::HygienicTest {};

TEST_F(ObjectFormat, RevisionsAreCutToTwelveDigitsOfTheLongNames) {
    const World world("sha256");
    const auto operation = perform(requestFor(NEBSourceControlRequestLog, world.repository()));
    EXPECT_EQ(*operation->result()->front().value(NEBSourceControlOperationRevisionKey).string(),
              world.run("git rev-parse main").substr(0, 12));
}

TEST_F(ObjectFormat, OfANewRepositoryIsWhatTheUserWants) {
    const World world;
    world.run("mkdir ../made");
    const Variables wish(test::VariableList{{"GIT_DEFAULT_HASH", "sha256"}});
    EXPECT_EQ(
        perform(requestFor(NEBSourceControlRequestCreateRepository, world.path("made")))->error(),
        std::nullopt);
    EXPECT_EQ(world.run("git -C ../made rev-parse --show-object-format"), "sha256\n");
}

}  // namespace
}  // namespace neb

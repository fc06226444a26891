// Each type of request has the same outcome when a recording of it is replayed, without git and
// without the repository.

#include <gmock/gmock.h>

#include <filesystem>

#include "Classes/Configuration/RequestMatrix.h"
#include "NEBFoundation/NEBSourceControlRecording.h"
#include "Support/HygienicTest.h"

namespace neb {
namespace {

using test::outcomeOf;
using test::outcomeWithSink;
using test::preparedRequest;
using test::RequestCase;
using test::requestMatrix;
using test::World;
using testing::IsEmpty;

/// A recording in memory.
struct Tape {
    std::vector<NEBSourceControlRecordedRun> runs;
    std::vector<NEBSourceControlRecordedAnswer> answers;
    std::shared_ptr<NEBSourceControlRecorder> recorder = std::make_shared<NEBSourceControlRecorder>(
        [this](NEBSourceControlRecordedRun run) { runs.push_back(std::move(run)); },
        [this](NEBSourceControlRecordedAnswer answer) { answers.push_back(std::move(answer)); });

    [[nodiscard]] std::shared_ptr<NEBSourceControlPlayer> player() const {
        return std::make_shared<NEBSourceControlPlayer>(runs, answers);
    }
};

std::vector<std::string> subjectsOf(const NEBSourceControlPlayer& player) {
    std::vector<std::string> subjects;
    for (const NEBSourceControlReplayDifference& difference : player.differences()) {
        subjects.push_back(std::to_string(static_cast<int>(difference.kind)) + ": " +
                           difference.subject);
    }
    return subjects;
}

void removeRepositories(const World& world) {
    for (const auto& entry : std::filesystem::directory_iterator(world.path())) {
        std::filesystem::remove_all(entry.path());
    }
}

class Replay : public test::HygienicTest, public testing::WithParamInterface<RequestCase> {};

TEST_P(Replay, HasTheRecordedOutcomeWithoutTheRepository) {
    const World world;
    const auto request = preparedRequest(world, GetParam());
    const auto again = std::make_shared<NEBSourceControlRequest>(*request);
    const auto streamed = std::make_shared<NEBSourceControlRequest>(*request);
    const Tape tape;
    const auto recorded = [&] {
        const Interceptor::Scope scope(tape.recorder);
        return outcomeOf(world, request);
    }();
    removeRepositories(world);
    const auto player = tape.player();
    {
        const Interceptor::Scope scope(player);
        EXPECT_EQ(outcomeOf(world, again), recorded);
    }
    EXPECT_THAT(subjectsOf(*player), IsEmpty());
    const auto other = tape.player();
    const Interceptor::Scope scope(other);
    EXPECT_EQ(outcomeWithSink(world, streamed).error, recorded.error);
    EXPECT_FALSE(std::filesystem::exists(world.repository())) << "a replay must change nothing";
}

INSTANTIATE_TEST_SUITE_P(EachType, Replay, testing::ValuesIn(requestMatrix()),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
}  // namespace neb

// The table of request types, compared with what the operations do.

#include <gmock/gmock.h>

#include <filesystem>
#include <set>

#include "Classes/Configuration/RequestMatrix.h"
#include "GitController.h"
#include "NEBFoundation/NEBSourceControlArgumentInjection.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/RequestRun.h"

namespace neb::test {
namespace {

using Requirement = NEBSourceControlRequirement;
using Row = NEBSourceControlRequestTypeDescription;

/// Returns the requirement that a reported condition stands for.
std::optional<Requirement> requirementOf(const std::string& condition) {
    const std::string option = "[request.options objectForKey:NEBSourceControlRequestOption";
    const std::pair<std::string, Requirement> conditions[] = {
        {"request.destination", Requirement::destination},
        {"(request.destination) != nil", Requirement::destination},
        {"(self.request.destination) != nil", Requirement::destination},
        {"[request.files count] > 0", Requirement::atLeastOneFile},
        {"[relativePathString length] != 0", Requirement::atLeastOneFile},
        {"[request.files count] == 1", Requirement::exactlyOneFile},
        {"request.startingRevision", Requirement::startingRevision},
        {"(startingRevision) != nil", Requirement::startingRevision},
        {"(endingRevision) != nil", Requirement::endingRevision},
        {"request.sourceTree.location", Requirement::sourceTreeLocation},
        {"request.sourceTree || " + option + "RepositoryPath]",
         Requirement::sourceTreeOrRepositoryPath},
        {"((request.remote)) != nil", Requirement::remote},
        {"(" + option + "RemoteName]) != nil", Requirement::remoteName},
        {option + "Branch]", Requirement::branch},
        {"(" + option + "Branch]) != nil", Requirement::branch},
    };
    for (const auto& [text, requirement] : conditions) {
        if (text == condition) {
            return requirement;
        }
    }
    return std::nullopt;
}

TEST(RequestTypeTable, ListsWhatAnOperationReportsMissing) {
    const GitController controller;
    for (const Row& row : NEBSourceControlAllRequestTypes()) {
        const ReportCollector collector;
        const auto operation = controller.operationForRequest(
            NEBSourceControlRequest::initWithType(row.type, nullptr));
        EXPECT_EQ(operation != nullptr, row.name != "unsupported") << row.type;
        std::vector<Requirement> reported;
        for (const LOMAssertionReport& report : collector.reports()) {
            const auto requirement = requirementOf(report.condition);
            ASSERT_TRUE(requirement.has_value()) << row.name << ": " << report.condition;
            if (std::ranges::find(reported, *requirement) == reported.end()) {
                reported.push_back(*requirement);
            }
        }
        EXPECT_THAT(row.requirements, testing::ElementsAreArray(reported)) << row.name;
    }
}

TEST(RequestTypeTable, NamesTheTypesThatAuthenticate) {
    const GitController controller;
    for (const Row& row : NEBSourceControlAllRequestTypes()) {
        const auto request = requestFor(row.type, std::nullopt);
        request->options =
            NEBDictionary{{NEBSourceControlRequestOptionAction, "the one that does most"}};
        EXPECT_EQ(controller.authenticationRequiredForRequest(*request), row.mayAuthenticate)
            << row.name;
    }
}

/// Actions that only read, or contact no server, in types that otherwise do more.
TEST(RequestTypeTable, KnowsTheActionsThatDoLess) {
    using enum NEBSourceControlRequestEffect;
    const struct {
        std::int32_t type;
        const char* action;
        NEBSourceControlRequestEffect effect;
        bool authenticates;
    } actions[] = {
        {NEBSourceControlRequestStash, nullptr, reads, false},
        {NEBSourceControlRequestStash, "show", reads, false},
        {NEBSourceControlRequestStash, "push", changes, false},
        {NEBSourceControlRequestSubmodules, nullptr, reads, false},
        {NEBSourceControlRequestSubmodules, "list", reads, false},
        {NEBSourceControlRequestSubmodules, "init", changes, false},
        {NEBSourceControlRequestSubmodules, "update", changes, true},
        {NEBSourceControlRequestSubmodules, "nosuch", changes, true},
        {NEBSourceControlRequestWorktrees, nullptr, reads, false},
        {NEBSourceControlRequestWorktrees, "add", changes, false},
        {NEBSourceControlRequestSettings, nullptr, reads, false},
        {NEBSourceControlRequestSettings, "set", changes, false},
        {NEBSourceControlRequestTag, "list", changes, false},
        {NEBSourceControlRequestFetch, "list", changes, true},
    };
    for (const auto& [type, action, effect, authenticates] : actions) {
        const auto request = requestFor(type, "/w");
        request->options.emplace();
        if (action != nullptr) {
            request->options->set(NEBSourceControlRequestOptionAction, action);
        }
        EXPECT_EQ(NEBSourceControlEffectOfRequest(*request), effect) << type;
        EXPECT_EQ(NEBSourceControlRequestMayAuthenticate(*request), authenticates) << type;
    }
}

class RequestTypeTableEffects : public HygienicTest {
protected:
    /// The paths that the prepared request changed.
    static std::set<std::string> changedPaths(
        const World& world, const std::shared_ptr<NEBSourceControlRequest>& request) {
        auto before = world.content();
        outcomeOf(world, request);
        std::set<std::string> changed;
        for (const auto& [path, content] : world.content()) {
            const auto node = before.extract(path);
            if (node.empty() || node.mapped() != content) {
                changed.insert(path);
            }
        }
        for (const auto& [path, content] : before) {
            changed.insert(path);
        }
        return changed;
    }
};

TEST_F(RequestTypeTableEffects, AreThoseOfTheOperations) {
    for (const Row& row : NEBSourceControlAllRequestTypes()) {
        // An ignore changes nothing in this plug-in.
        if (row.name == "unsupported" || row.type == NEBSourceControlRequestIgnore) {
            continue;
        }
        // The first case of each type succeeds.
        const auto requestCase = std::ranges::find(requestMatrix(), row.type, &RequestCase::type);
        const World world;
        const auto request = preparedRequest(world, *requestCase);
        const auto effect = NEBSourceControlEffectOfRequest(*request);
        const std::set<std::string> changed = changedPaths(world, request);
        EXPECT_EQ(changed.empty(), effect == NEBSourceControlRequestEffect::reads) << row.name;
        const bool areTemporary = std::ranges::all_of(
            changed, [](const std::string& path) { return path.starts_with("tmp/"); });
        EXPECT_EQ(areTemporary, effect != NEBSourceControlRequestEffect::changes) << row.name;
    }
}

/// A value of a request, and how a test sets it.
struct Field {
    std::uint32_t bits;
    void (*set)(NEBSourceControlRequest&, const NEBValue&);
};

const Field fields[] = {
    {NEBSourceControlExposedLocation,
     [](NEBSourceControlRequest& request, const NEBValue& value) {
         request.sourceTree->location = std::string(*value.string());
     }},
    {NEBSourceControlExposedDestination | NEBSourceControlExposedRefspec,
     [](NEBSourceControlRequest& request, const NEBValue& value) { request.destination = value; }},
    {NEBSourceControlExposedStartingRevision,
     [](NEBSourceControlRequest& request, const NEBValue& value) {
         request.startingRevision = value;
     }},
    {NEBSourceControlExposedEndingRevision,
     [](NEBSourceControlRequest& request, const NEBValue& value) {
         request.endingRevision = value;
     }},
    {NEBSourceControlExposedFiles | NEBSourceControlExposedFileParts,
     [](NEBSourceControlRequest& request, const NEBValue& value) { request.files = {value}; }},
    {NEBSourceControlExposedBranch | NEBSourceControlExposedRefspec,
     [](NEBSourceControlRequest& request, const NEBValue& value) {
         request.options->set(NEBSourceControlRequestOptionBranch, value);
     }},
    {NEBSourceControlExposedRemoteName,
     [](NEBSourceControlRequest& request, const NEBValue& value) {
         request.options->set(NEBSourceControlRequestOptionRemoteName, value);
     }},
    {NEBSourceControlExposedSourceLocation,
     [](NEBSourceControlRequest& request, const NEBValue& value) {
         request.options->set(NEBSourceControlRequestOptionSourceLocation, value);
     }},
    {NEBSourceControlExposedNothing,
     [](NEBSourceControlRequest& request, const NEBValue& value) {
         request.options->set(NEBSourceControlRequestOptionMessage, value);
     }},
};

/// Whether git could take an argument for an option that begins with the marker. The argument after
/// "-m" is its value.
bool isExposed(const NEBSourceControlCommand& command, const std::string& marker) {
    std::string previous;
    for (const std::string& argument : command.arguments) {
        if (argument == "--") {
            return false;
        }
        if (argument.starts_with(marker) && previous != "-m") {
            return true;
        }
        previous = argument;
    }
    return false;
}

/// All values present and harmless, except the one of the field.
std::shared_ptr<NEBSourceControlRequest> requestWithMarker(const World& world, std::int32_t type,
                                                           const Field& marked,
                                                           const std::string& marker) {
    auto request = requestFor(type, world.repository());
    request->remote = std::make_shared<NEBSourceControlRemote>();
    request->options.emplace();
    for (const Field& field : fields) {
        if (field.bits != NEBSourceControlExposedLocation) {
            field.set(*request, "main");
        }
    }
    marked.set(*request, marker);
    return request;
}

TEST_F(RequestTypeTableEffects, ExposeNoOtherValuesToGit) {
    const World world;
    const std::string marker = "-marker";
    for (const Row& row : NEBSourceControlAllRequestTypes()) {
        for (const Field& field : fields) {
            const auto request = requestWithMarker(world, row.type, field, marker);
            const auto operation = GitController().operationForRequest(request);
            const auto command = operation ? operation->command() : std::nullopt;
            if (command && isExposed(*command, marker)) {
                EXPECT_NE(row.exposedValues & field.bits, 0U) << row.name << " " << field.bits;
                EXPECT_TRUE(NEBSourceControlFirstArgumentInjection(*request)) << row.name;
            }
        }
    }
}

}  // namespace
}  // namespace neb::test

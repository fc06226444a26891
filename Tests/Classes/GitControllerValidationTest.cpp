// Whether a request needs credentials, and whether it may run.

#include "GitController.h"

#include <gmock/gmock.h>

#include <tuple>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

using test::IsSourceControlError;
using test::requestFor;

const GitController validatingController;

TEST(Authentication, MayBeNeededByFiveTypes) {
    for (std::int32_t type = -1; type <= 40; ++type) {
        const bool expected =
            type == NEBSourceControlRequestUpdate || type == NEBSourceControlRequestClone ||
            type == NEBSourceControlRequestPush || type == NEBSourceControlRequestFetch ||
            type == NEBSourceControlRequestListBranches;
        EXPECT_EQ(validatingController.authenticationRequiredForRequest(*requestFor(type, "/w")),
                  expected)
            << type;
    }
}

std::shared_ptr<NEBSourceControlRequest> requestWithReachability(std::int32_t type, bool tree,
                                                                 bool repository) {
    auto request = requestFor(type, "/w");
    request->sourceTree->reachable = tree;
    request->repositoryToAuthenticate = std::make_shared<NEBSourceControlRepository>();
    request->repositoryToAuthenticate->reachable = repository;
    return request;
}

TEST(Validation, AcceptsTypesWithoutAuthenticationOnUnreachableTrees) {
    for (std::int32_t type = -1; type <= 40; ++type) {
        const auto request = requestWithReachability(type, false, false);
        const bool authenticates = validatingController.authenticationRequiredForRequest(*request);
        std::optional<NEBSourceControlError> error;
        EXPECT_EQ(validatingController.validateRequest(*request, &error), !authenticates) << type;
        EXPECT_EQ(error.has_value(), authenticates) << type;
    }
}

TEST(Validation, AcceptsBothFormsOfListingRemoteBranches) {
    for (const std::int32_t type : {NEBSourceControlRequestListRemoteBranches,
                                    NEBSourceControlRequestListRemoteBranchesSecondForm}) {
        EXPECT_TRUE(validatingController.validateRequest(
            *requestWithReachability(type, false, false), nullptr));
    }
}

TEST(Validation, RequiresBothTreesReachableForAuthentication) {
    for (const std::int32_t type :
         {NEBSourceControlRequestUpdate, NEBSourceControlRequestListBranches,
          NEBSourceControlRequestClone, NEBSourceControlRequestPush,
          NEBSourceControlRequestFetch}) {
        EXPECT_TRUE(validatingController.validateRequest(*requestWithReachability(type, true, true),
                                                         nullptr));
        for (const auto& [tree, repository] : {std::pair{true, false}, {false, true}}) {
            std::optional<NEBSourceControlError> error;
            EXPECT_FALSE(validatingController.validateRequest(
                *requestWithReachability(type, tree, repository), &error));
            EXPECT_THAT(error,
                        IsSourceControlError(-20,
                                             "The operation could not be performed because the "
                                             "repository \"demo\" could not be reached."));
            EXPECT_EQ(error->userInfo.size(), 1U) << "the description alone";
            EXPECT_FALSE(validatingController.validateRequest(
                *requestWithReachability(type, tree, repository), nullptr))
                << "refused with or without an error pointer";
        }
    }
}

TEST(Validation, TreatsAnAbsentTreeAsUnreachable) {
    auto request = requestWithReachability(NEBSourceControlRequestUpdate, true, true);
    request->repositoryToAuthenticate = nullptr;
    EXPECT_FALSE(validatingController.validateRequest(*request, nullptr));
    request = requestWithReachability(NEBSourceControlRequestUpdate, true, true);
    request->sourceTree = nullptr;
    std::optional<NEBSourceControlError> error;
    EXPECT_FALSE(validatingController.validateRequest(*request, &error));
    EXPECT_THAT(error, IsSourceControlError(-20,
                                            "The operation could not be performed because the "
                                            "repository \"(null)\" could not be reached."));
}

}  // namespace
}  // namespace neb

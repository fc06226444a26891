// Values of requests that git would take for options.

#include "NEBFoundation/NEBSourceControlArgumentInjection.h"

#include "NEBFoundation/NEBSourceControlRequest.h"

#include <gmock/gmock.h>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

using test::requestFor;

constexpr unsigned D = 1, S = 2, E = 4, B = 8, R = 16, L = 32, F = 64, W = 128, N = 256;

/// A request in which the places of the mask hold the value (a file that is only named so: N).
std::shared_ptr<NEBSourceControlRequest> requestWithOptions(std::int32_t type, unsigned places,
                                                            const NEBValue& held = "-x") {
    const auto value = [places, &held](unsigned place) {
        return (places & place) != 0 ? held : NEBValue("x-");
    };
    auto request = requestFor(type, (places & W) != 0 ? "-x" : "/w");
    request->destination = value(D);
    request->startingRevision = value(S);
    request->endingRevision = value(E);
    request->files = {NEBValue("/w/a"), (places & N) != 0 ? "/w/" + held.description() : value(F)};
    request->options = NEBDictionary{
        {NEBSourceControlRequestOptionBranch, value(B)},
        {NEBSourceControlRequestOptionRemoteName, value(R)},
        {NEBSourceControlRequestOptionSourceLocation, value(L)},
        {NEBSourceControlRequestOptionMessage, "-m"},
    };
    return request;
}

TEST(ArgumentInjections, AreFoundWhereGitWouldReadAnOption) {
    const std::pair<std::int32_t, unsigned> exposed[] = {
        {NEBSourceControlRequestAdd, 0},
        {NEBSourceControlRequestCreateBranch, D | L},
        {NEBSourceControlRequestDeleteBranch, D},
        {NEBSourceControlRequestCommit, 0},
        {NEBSourceControlRequestIgnore, 0},
        {NEBSourceControlRequestRemove, 0},
        {NEBSourceControlRequestAddFiles, 0},
        {NEBSourceControlRequestRevert, 0},
        {NEBSourceControlRequestMakeDirectory, 0},
        {NEBSourceControlRequestMerge, D | E},
        {NEBSourceControlRequestCopy, 0},
        {NEBSourceControlRequestMove, D | F},
        {12, 0},
        {NEBSourceControlRequestUpdate, D | E | R | B},
        {NEBSourceControlRequestCheckout, D},
        {NEBSourceControlRequestStatus, 0},
        {16, 0},
        {NEBSourceControlRequestList, F},
        {NEBSourceControlRequestLog, S | E | B},
        {NEBSourceControlRequestInfo, 0},
        {NEBSourceControlRequestExportFiles, S | F | N},
        {NEBSourceControlRequestExport, S | F | N},
        {NEBSourceControlRequestExportTree, 0},
        {23, 0},
        {NEBSourceControlRequestListRemotes, 0},
        {NEBSourceControlRequestListBranches, F},
        {NEBSourceControlRequestCurrentBranch, 0},
        {NEBSourceControlRequestCreateRepository, 0},
        {NEBSourceControlRequestBlame, S | E},
        {NEBSourceControlRequestClone, W | D | B},
        {NEBSourceControlRequestDiff, S | E | D},
        {NEBSourceControlRequestListRemoteBranches, F},
        {NEBSourceControlRequestListRemoteBranchesSecondForm, F},
        {NEBSourceControlRequestPush, R | B},
        {NEBSourceControlRequestAddRemote, D | F},
        {NEBSourceControlRequestRemoveRemote, D},
        {NEBSourceControlRequestTrackRemoteBranch, D | R | B},
        {NEBSourceControlRequestFetch, R},
        {NEBSourceControlRequestTrackingBranchName, 0},
        {NEBSourceControlRequestMergeBase, S | E},
    };
    for (const auto& [type, places] : exposed) {
        for (const unsigned place : {D, S, E, B, R, L, F, W, N}) {
            const auto found =
                NEBSourceControlFirstArgumentInjection(*requestWithOptions(type, place));
            EXPECT_EQ(found.has_value(), (places & place) != 0) << type << " place " << place;
        }
    }
}

TEST(ArgumentInjections, AreFoundAnywhereInARequestOfAnUnlistedType) {
    for (const unsigned place : {D, S, E, B, R, L, F, W, N}) {
        EXPECT_TRUE(NEBSourceControlFirstArgumentInjection(*requestWithOptions(1'000'000, place)))
            << place;
    }
    EXPECT_FALSE(NEBSourceControlFirstArgumentInjection(*requestWithOptions(1'000'000, 0)));
}

TEST(ArgumentInjections, AreNamed) {
    const auto nameOf = [](std::int32_t type, unsigned place) {
        return NEBSourceControlFirstArgumentInjection(*requestWithOptions(type, place))->field;
    };
    EXPECT_EQ(nameOf(NEBSourceControlRequestClone, W), "sourceTree.location");
    EXPECT_EQ(nameOf(NEBSourceControlRequestCheckout, D), "destination");
    EXPECT_EQ(nameOf(NEBSourceControlRequestMergeBase, S), "startingRevision");
    EXPECT_EQ(nameOf(NEBSourceControlRequestMergeBase, E), "endingRevision");
    EXPECT_EQ(nameOf(NEBSourceControlRequestMove, F), "files[1]");
    EXPECT_EQ(nameOf(NEBSourceControlRequestExportFiles, N), "files[1]");
    EXPECT_EQ(nameOf(NEBSourceControlRequestLog, B), "options.NEBSourceControlRequestOptionBranch");
    EXPECT_EQ(nameOf(NEBSourceControlRequestFetch, R),
              "options.NEBSourceControlRequestOptionRemoteName");
    EXPECT_EQ(nameOf(NEBSourceControlRequestCreateBranch, L),
              "options.NEBSourceControlRequestOptionSourceLocation");
    EXPECT_EQ(NEBSourceControlFirstArgumentInjection(
                  *requestWithOptions(NEBSourceControlRequestCheckout, D))
                  ->value,
              "-x");
    EXPECT_EQ(NEBSourceControlFirstArgumentInjection(
                  *requestWithOptions(NEBSourceControlRequestExportFiles, N))
                  ->value,
              "-x")
        << "what git would read, the name behind the folder";
}

TEST(ArgumentInjections, TheLimitOfALogMustBeANumber) {
    auto request = requestFor(NEBSourceControlRequestLog, "/w");
    const auto isRefused = [&request](NEBValue limit) {
        request->options =
            NEBDictionary{{NEBSourceControlRequestOptionLogOutputLimit, std::move(limit)}};
        return NEBSourceControlFirstArgumentInjection(*request).has_value();
    };
    for (const NEBValue& limit : {NEBValue(25), NEBValue(0), NEBValue("25")}) {
        EXPECT_FALSE(isRefused(limit)) << limit.description();
    }
    for (const NEBValue& limit :
         {NEBValue(-1), NEBValue("-output=/tmp/x"), NEBValue("p"), NEBValue(""), NEBValue(true)}) {
        EXPECT_TRUE(isRefused(limit)) << limit.description();
    }
    EXPECT_EQ(NEBSourceControlFirstArgumentInjection(*request)->field,
              "options.NEBSourceControlRequestOptionLogOutputLimit");
    request->type = NEBSourceControlRequestHistory;
    for (const NEBValue& limit : {NEBValue(-5), NEBValue("x"), NEBValue("1.5"), NEBValue("")}) {
        EXPECT_TRUE(isRefused(limit)) << limit.description();
    }
    EXPECT_FALSE(isRefused(5));
    request->type = NEBSourceControlRequestStatus;
    EXPECT_FALSE(isRefused("-output=/tmp/x")) << "it is a log's alone";
}

/// An object of a host, which describes itself as it likes.
class Describing : public NEBObject {
public:
    [[nodiscard]] std::string descriptionForAssertionMessage() const override { return "--object"; }
};

TEST(ArgumentInjections, AreFoundInTheTextThatReachesGit) {
    const std::pair<NEBValue, const char*> kinds[] = {
        {-4, "-4"},
        {LOMFilePath::filePathForPathString("--path"), "--path"},
        {NEBDate(std::chrono::seconds(-62200000000)), "-0002-12-17T14:13:20Z"},
        {NEBValue(std::make_shared<const Describing>()), "--object"},
    };
    const std::pair<std::int32_t, unsigned> exposed[] = {
        {NEBSourceControlRequestCreateBranch, D}, {NEBSourceControlRequestCreateBranch, L},
        {NEBSourceControlRequestMerge, E},        {NEBSourceControlRequestMove, F},
        {NEBSourceControlRequestUpdate, R},       {NEBSourceControlRequestList, F},
        {NEBSourceControlRequestLog, B},          {NEBSourceControlRequestExportFiles, S},
        {NEBSourceControlRequestExportFiles, N},  {NEBSourceControlRequestExport, F},
        {NEBSourceControlRequestListBranches, F}, {NEBSourceControlRequestClone, B},
        {NEBSourceControlRequestDiff, E},         {NEBSourceControlRequestPush, R},
        {NEBSourceControlRequestAddRemote, D},    {NEBSourceControlRequestMergeBase, E},
    };
    for (const auto& [value, text] : kinds) {
        for (const auto& [type, place] : exposed) {
            const auto found =
                NEBSourceControlFirstArgumentInjection(*requestWithOptions(type, place, value));
            ASSERT_TRUE(found.has_value()) << type << " place " << place << " " << text;
            EXPECT_EQ(found->value, text) << type << " place " << place;
        }
    }
    for (const NEBValue& value :
         {NEBValue(4), NEBValue(true), NEBValue(NEBDictionary{{"-k", 1}})}) {
        EXPECT_FALSE(NEBSourceControlFirstArgumentInjection(
            *requestWithOptions(NEBSourceControlRequestPush, R | B, value)))
            << value.description();
    }
}

TEST(ArgumentInjections, AreFoundInTheArgumentsOfAListing) {
    const auto refusedIn = [](const NEBValue& file, const NEBValue& branch = {}) {
        auto request = requestFor(NEBSourceControlRequestList, "/w");
        request->files = {file};
        request->options = NEBDictionary{{NEBSourceControlRequestOptionBranch, branch}};
        const auto found = NEBSourceControlFirstArgumentInjection(*request);
        return found ? found->field + " " + found->value : "";
    };
    EXPECT_EQ(refusedIn("src --abbrev=4 x"), "files[0] --abbrev=4");
    EXPECT_EQ(refusedIn("src\t-r"), "files[0] -r");
    EXPECT_EQ(refusedIn(" -r"), "files[0] -r");
    EXPECT_EQ(refusedIn("a-b c- src/-x a\n-d"), "") << "a line end is quoted";
    const std::string branch = "options.NEBSourceControlRequestOptionBranch ";
    EXPECT_EQ(refusedIn("src", "tree} -r"), branch + "-r");
    EXPECT_EQ(refusedIn("src", "-r"), "") << "it stands behind \"HEAD^{\"";
}

TEST(ArgumentInjections, AreFoundOnBothSidesOfAPush) {
    for (const unsigned side : {B, D}) {
        for (const char* name : {"", "+x", "a*"}) {
            const NEBValue path(LOMFilePath::filePathForPathString(name));
            EXPECT_TRUE(NEBSourceControlFirstArgumentInjection(
                *requestWithOptions(NEBSourceControlRequestPush, side, path)))
                << name;
        }
    }
}

TEST(ArgumentInjections, AreFoundInAnArrayOfRevisions) {
    const auto refused = [](const NEBValue& revisions) {
        auto request = requestFor(NEBSourceControlRequestHistory, "/w");
        request->options =
            NEBDictionary{{NEBSourceControlRequestOptionStartingRevisions, revisions}};
        const auto found = NEBSourceControlFirstArgumentInjection(*request);
        return found ? found->field + " " + found->value : "";
    };
    const std::string field = "options.NEBSourceControlRequestOptionStartingRevisions";
    EXPECT_EQ(refused(std::vector<NEBValue>{"main", "--output=x"}), field + "[1] --output=x");
    EXPECT_EQ(refused("-x"), field + " -x");
    EXPECT_EQ(refused(std::vector<NEBValue>{"main", NEBValue(), "a-b"}), "");
}

TEST(ArgumentInjections, AnEmptyRequestHasNone) {
    NEBSourceControlRequest request;
    for (request.type = -1; request.type <= 40; ++request.type) {
        EXPECT_FALSE(NEBSourceControlFirstArgumentInjection(request).has_value());
    }
    request.type = NEBSourceControlRequestCheckout;
    request.destination = "";
    EXPECT_FALSE(NEBSourceControlFirstArgumentInjection(request).has_value());
}

}  // namespace
}  // namespace neb

// Requests, their types, source trees, and what the host checks before it hands one over.

#include "NEBFoundation/NEBSourceControlRequest.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <set>

#include "NEBFoundation/NEBSourceControlArgumentInjection.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlManager.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlTemporaryFile.h"
#include "Support/Matchers.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using test::requestFor;
using testing::MatchesRegex;

TEST(Request, IsMadeWithItsFieldsAndNoOthers) {
    auto tree = std::make_shared<NEBSourceControlRepository>();
    const auto request = NEBSourceControlRequest::initWithType(
        NEBSourceControlRequestInfo, tree, std::vector<NEBValue>{"/a"},
        NEBDictionary{{NEBSourceControlRequestOptionBranch, "topic"}});
    EXPECT_EQ(request->type, NEBSourceControlRequestInfo);
    EXPECT_EQ(request->sourceTree, tree);
    EXPECT_EQ(request->fileCount(), 1U);
    EXPECT_EQ(*request->option(NEBSourceControlRequestOptionBranch).string(), "topic");
    EXPECT_FALSE(request->option(NEBSourceControlRequestOptionForce).isPresent());
    EXPECT_FALSE(request->destination.isPresent());
    EXPECT_FALSE(request->startingRevision.isPresent());
    EXPECT_FALSE(request->endingRevision.isPresent());
    EXPECT_EQ(request->remote, nullptr);
    EXPECT_EQ(request->repositoryToAuthenticate, nullptr);
}

TEST(Request, TakesOtherOptions) {
    const auto request = requestFor(NEBSourceControlRequestExportFiles, "/w");
    EXPECT_FALSE(request->option("x").isPresent());
    request->setOptions(NEBDictionary{{"x", 1}});
    EXPECT_EQ(request->option("x").integer(), 1);
    request->setOptions(std::nullopt);
    EXPECT_FALSE(request->options.has_value());
}

TEST(Request, CallsAMissingSourceTreeNull) {
    auto request = requestFor(NEBSourceControlRequestStatus, "/w");
    EXPECT_EQ(request->sourceTreeName(), "demo");
    request->sourceTree = nullptr;
    EXPECT_EQ(request->sourceTreeName(), "(null)");
    EXPECT_EQ(request->descriptionForAssertionMessage(), "<NEBSourceControlRequest of type 15>");
}

TEST(SourceTree, DescribesItself) {
    NEBSourceControlWorkingTree tree;
    tree.name = "demo";
    EXPECT_EQ(tree.descriptionForAssertionMessage(),
              "<NEBSourceControlWorkingTree \"demo\": (null)>");
    NEBSourceControlRepository repository;
    repository.location = "/r.git";
    EXPECT_EQ(repository.descriptionForAssertionMessage(),
              "<NEBSourceControlRepository \"\": /r.git>");
    EXPECT_TRUE(repository.reachable && repository.isValid);
    EXPECT_FALSE(repository.isRemoteDistributedRepository);
    NEBSourceControlRemote remote;
    EXPECT_EQ(remote.descriptionForAssertionMessage(), "<NEBSourceControlRemote>");
    remote.representsGitSVNBridge = true;
    EXPECT_EQ(remote.descriptionForAssertionMessage(),
              "<NEBSourceControlRemote: Subversion bridge>");
}

TEST(RequestType, HasAPlainName) {
    const char* names[] = {"add",
                           "create branch",
                           "delete branch",
                           "commit",
                           "ignore",
                           "remove",
                           "add files",
                           "revert",
                           "make directory",
                           "merge",
                           "copy",
                           "move",
                           "unsupported",
                           "update",
                           "checkout",
                           "status",
                           "unsupported",
                           "list",
                           "log",
                           "info",
                           "export files",
                           "export",
                           "export tree",
                           "unsupported",
                           "list remotes",
                           "list branches",
                           "current branch",
                           "create repository",
                           "blame",
                           "clone",
                           "diff",
                           "list remote branches",
                           "list remote branches (second form)",
                           "push",
                           "add remote",
                           "remove remote",
                           "track remote branch",
                           "fetch",
                           "tracking branch name",
                           "merge base"};
    for (std::int32_t type = 0; type < 40; ++type) {
        EXPECT_EQ(NEBSourceControlRequestTypeName(type), names[type]) << type;
    }
    EXPECT_EQ(NEBSourceControlRequestTypeName(-1), std::nullopt);
    EXPECT_EQ(NEBSourceControlRequestTypeName(40), std::nullopt);
}

TEST(RequestType, ThatIsNotListedIsTreatedAsTheMostDangerousOne) {
    for (const std::int32_t type : {-1, 40, 1000, 2147483647}) {
        const auto& description = NEBSourceControlDescriptionOfRequestType(type);
        EXPECT_EQ(description.name, "");
        EXPECT_EQ(description.effect, NEBSourceControlRequestEffect::changes);
        for (const auto& listed : NEBSourceControlAllRequestTypes()) {
            EXPECT_EQ(listed.exposedValues & ~description.exposedValues, 0U) << listed.name;
        }
    }
}

TEST(RequestType, IsListedOnceAndFound) {
    std::set<std::string_view> names;
    for (const auto& row : NEBSourceControlAllRequestTypes()) {
        EXPECT_EQ(&NEBSourceControlDescriptionOfRequestType(row.type), &row);
        EXPECT_TRUE(names.insert(row.name).second || row.name == "unsupported") << row.name;
        for (const NEBSourceControlRequirement requirement : row.requirements) {
            EXPECT_NE(NEBSourceControlRequirementName(requirement), "") << row.name;
        }
    }
    EXPECT_EQ(NEBSourceControlAllRequestTypes().size(), 40U);
}

// ---- shapes of assertion reports --------------------------------------------------------------

TEST(Assertions, TellAbsentWrongKindAndEmptyApart) {
    const NEBSourceControlAssertionSite site{.function = "-[A b]", .file = "Classes/A", .line = 3};
    const test::ReportCollector collector;
    NEBSourceControlAssertNonEmptyString(site, NEBValue(), "x.y");
    NEBSourceControlAssertNonEmptyString(site, NEBValue(5), "x.y");
    NEBSourceControlAssertNonEmptyString(site, NEBValue(""), "x.y");
    NEBSourceControlAssertNonEmptyString(site, NEBValue("fine"), "x.y");
    NEBSourceControlAssertNotNil(site, false, "(x)");
    NEBSourceControlAssertNotNil(site, true, "(x)");
    NEBSourceControlAssert(site, false, "x > 0");
    NEBSourceControlAssert(site, true, "x > 0");

    const std::pair<const char*, const char*> expected[] = {
        {"x.y should be a non-empty string, but it is nil", "(x.y) != nil"},
        {"x.y should be a non-empty string, but it is 5",
         "CFGetTypeID(x.y) == CFStringGetTypeID()"},
        {"x.y should be a non-empty string, but it's an empty string",
         "![@\"\" isEqualToString:(x.y)]"},
        {"(x) should not be nil.", "((x)) != nil"},
        {"Assertion failed: x > 0", "x > 0"},
    };
    ASSERT_EQ(collector.reports().size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(collector.reports()[i].message, expected[i].first);
        EXPECT_EQ(collector.reports()[i].condition, expected[i].second);
        EXPECT_EQ(collector.reports()[i].function, "-[A b]");
        EXPECT_EQ(collector.reports()[i].file, "Classes/A");
        EXPECT_EQ(collector.reports()[i].line, 3);
    }
}

// ---- values that git would take for options ---------------------------------------------------

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

TEST(ArgumentInjections, AreFoundWhereGitWouldReadThem) {
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

TEST(ArgumentInjections, TheLimitOfALogIsACountAsAMinusIsPutBeforeIt) {
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
    request->type = NEBSourceControlRequestStatus;
    EXPECT_FALSE(isRefused("-output=/tmp/x")) << "it is a log's alone";
}

/// An object of a host, which describes itself as it likes.
class Describing : public NEBObject {
public:
    [[nodiscard]] std::string descriptionForAssertionMessage() const override { return "--object"; }
};

TEST(ArgumentInjections, AreFoundByTheTextThatReachesGitWhateverTheirKind) {
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

TEST(ArgumentInjections, AreFoundAmongTheWordsOfAListing) {
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

TEST(ArgumentInjections, BothSidesOfAPushAreLookedAtWhateverTheirKind) {
    for (const unsigned side : {B, D}) {
        for (const char* name : {"", "+x", "a*"}) {
            const NEBValue path(LOMFilePath::filePathForPathString(name));
            EXPECT_TRUE(NEBSourceControlFirstArgumentInjection(
                *requestWithOptions(NEBSourceControlRequestPush, side, path)))
                << name;
        }
    }
}

TEST(ArgumentInjections, AnEmptyRequestHoldsNone) {
    NEBSourceControlRequest request;
    for (request.type = -1; request.type <= 40; ++request.type) {
        EXPECT_FALSE(NEBSourceControlFirstArgumentInjection(request).has_value());
    }
    request.type = NEBSourceControlRequestCheckout;
    request.destination = "";
    EXPECT_FALSE(NEBSourceControlFirstArgumentInjection(request).has_value());
}

// ---- temporary files, the log aspect ----------------------------------------------------------

TEST(TemporaryFile, IsNamedAfterTheFileWithAHeadOfItsOwn) {
    const test::TemporaryFolder folder;
    ::setenv("TMPDIR", folder.path().c_str(), 1);
    std::set<std::string> names;
    for (int i = 0; i < 100; ++i) {
        const LOMFilePath path =
            NEBSourceControl_filePathForTmpFileBasedOnFileName("/w/src/main.c");
        EXPECT_THAT(path.pathString(), MatchesRegex(folder.path() + "/[0-9A-F]{16}-main\\.c"));
        EXPECT_FALSE(path.existsInFileSystem());
        names.insert(path.pathString());
    }
    ::setenv("TMPDIR", "relative", 1);
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName("a").pathString(),
                MatchesRegex("/tmp/.*-a"));
    ::setenv("TMPDIR", folder.path("missing").c_str(), 1);
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName("a").pathString(),
                MatchesRegex("/tmp/.*-a"));
    ::unsetenv("TMPDIR");
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName("a").pathString(),
                MatchesRegex("/tmp/.*-a"));
    EXPECT_EQ(names.size(), 100U);
}

/// Whoever gives a file the name of the target puts the head in front of it, and finds the head by
/// looking for the file's name.
TEST(TemporaryFile, HasNoHeadInWhichTheNameMightOccur) {
    ::unsetenv("TMPDIR");
    for (const std::string name : {"A", "0", "-", "--", "-A", "BEEF-"}) {
        EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName("/w/" + name).pathString(),
                    MatchesRegex("/tmp/[0-9A-F]{16}/" + name));
    }
    for (const std::string name : {"a", "A.c", "-x", "--x", "G"}) {
        const std::string path =
            NEBSourceControl_filePathForTmpFileBasedOnFileName("/w/" + name).pathString();
        EXPECT_EQ(path.find(name, 5), path.size() - name.size()) << path;
    }
}

TEST(TemporaryFile, OfALongNameIsThePlainNameInAFolderOfItsOwn) {
    ::unsetenv("TMPDIR");
    const std::string longest(255, 'n');
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName("/w/" + longest).pathString(),
                MatchesRegex("/tmp/[0-9A-F]{16}/" + longest));
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName(longest.substr(17)).pathString(),
                MatchesRegex("/tmp/[0-9A-F]{16}-" + longest.substr(17)));
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName(longest.substr(16)).pathString(),
                MatchesRegex("/tmp/[0-9A-F]{16}/" + longest.substr(16)));
}

TEST(Manager, HasOneLogAspectForAllSourceControl) {
    EXPECT_EQ(&NEBSourceControlManager::sourceControlLogAspect(),
              &NEBSourceControlManager::sourceControlLogAspect());
    EXPECT_EQ(NEBSourceControlManager::sourceControlLogAspect().logLevel, 0);
}

}  // namespace
}  // namespace neb

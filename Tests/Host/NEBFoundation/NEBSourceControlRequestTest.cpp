// Requests, their types, source trees, assertion reports and the log aspect.

#include "NEBFoundation/NEBSourceControlRequest.h"

#include <gmock/gmock.h>

#include <set>

#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlManager.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

using test::requestFor;

TEST(Request, IsCreatedWithItsFieldsOnly) {
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

TEST(Request, DescribesAMissingSourceTreeAsNull) {
    auto request = requestFor(NEBSourceControlRequestStatus, "/w");
    EXPECT_EQ(request->sourceTreeName(), "demo");
    request->sourceTree = nullptr;
    EXPECT_EQ(request->sourceTreeName(), "(null)");
    EXPECT_EQ(request->descriptionForAssertionMessage(), "<NEBSourceControlRequest of type 15>");
}

TEST(Request, KnowsNamesThatGitWouldReadAsPatterns) {
    auto request = requestFor(NEBSourceControlRequestStatus, "/w");
    EXPECT_FALSE(request->hasPatternCharacters());
    for (const char* name : {"/w/a*", "/w/?", "/w/[a]", "/w/a\\b", ":(top)a", "/w/:a"}) {
        request->files = std::vector<NEBValue>{"/w/plain", name};
        EXPECT_TRUE(request->hasPatternCharacters()) << name;
        request->files = std::vector<NEBValue>{"/w/plain", "/w/a:b"};
        EXPECT_FALSE(request->hasPatternCharacters());
        request->destination = name;
        EXPECT_TRUE(request->hasPatternCharacters()) << name;
        request->destination = NEBValue();
    }
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
    for (const std::int32_t type : {-1, 40, 999, 1999, 2147483647}) {
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
    EXPECT_EQ(std::ranges::count_if(NEBSourceControlAllRequestTypes(),
                                    [](const auto& row) {
                                        return row.type < NEBSourceControlFirstExtendedRequestType;
                                    }),
              40);
}

// ---- shapes of assertion reports --------------------------------------------------------------

TEST(Assertions, DistinguishAbsentWrongTypeAndEmpty) {
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

TEST(Manager, HasOneLogAspectForSourceControl) {
    EXPECT_EQ(&NEBSourceControlManager::sourceControlLogAspect(),
              &NEBSourceControlManager::sourceControlLogAspect());
    EXPECT_EQ(NEBSourceControlManager::sourceControlLogAspect().logLevel, 0);
}

}  // namespace
}  // namespace neb

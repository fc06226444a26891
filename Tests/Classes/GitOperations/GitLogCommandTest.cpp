// The command line of a log.

#include "GitOperations/GitLog.h"

#include <gmock/gmock.h>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/Matchers.h"
#include "Support/RequestRun.h"

namespace neb {
namespace {

using test::requestFor;
using testing::ElementsAre;
using testing::IsEmpty;

using Arguments = std::vector<std::string>;

const std::string pretty = "--pretty=format:%x00%h%n%aN%n%aE%n%at%n%B\x01";

/// Returns the arguments between the abbreviation and the format.
Arguments logArguments(const std::shared_ptr<NEBSourceControlRequest>& request) {
    Arguments arguments = GitLogOperation(request).arguments();
    EXPECT_EQ(arguments.at(0), "log");
    EXPECT_EQ(arguments.at(1), "--abbrev=12");
    EXPECT_EQ(arguments.back(), pretty);
    arguments.pop_back();
    arguments.erase(arguments.begin(), arguments.begin() + 2);
    return arguments;
}

TEST(LogFormat, HasTheFieldsOnePerLineAfterANUL) {
    EXPECT_EQ(GitLogOperation::_prettyFormatWithArray({"h", "aN", "aE", "at", "B"}),
              "--pretty=format:%x00%h%n%aN%n%aE%n%at%n%B");
    EXPECT_EQ(GitLogOperation::_prettyFormatWithArray({"h"}), "--pretty=format:%x00%h");
    EXPECT_EQ(GitLogOperation::_prettyFormatWithArray({}), "--pretty=format:%x00%");
    EXPECT_EQ(pretty.size(), 42U);
}

TEST(LogCommand, OfAnEmptyRequestNamesNoRevision) {
    EXPECT_THAT(GitLogOperation(requestFor(NEBSourceControlRequestLog, "/w")).arguments(),
                ElementsAre("log", "--abbrev=12", pretty));
    EXPECT_EQ(GitLogOperation(requestFor(NEBSourceControlRequestLog, "/w")).currentDirectoryPath(),
              "/w");
}

TEST(LogCommand, OfAFullRequestHasAllParts) {
    auto request = requestFor(NEBSourceControlRequestLog, "/w");
    request->startingRevision = "abc123";
    request->endingRevision = "def456";
    request->files = {NEBValue("src/a.c"), NEBValue("src/b.c")};
    request->options = NEBDictionary{{NEBSourceControlRequestOptionLogOutputLimit, 50},
                                     {NEBSourceControlRequestOptionLogOutputFilesChanged, true},
                                     {NEBSourceControlRequestOptionBranch, "topic"},
                                     {NEBSourceControlRequestOptionRepositoryPath, "/r"},
                                     {NEBSourceControlRequestOptionWorkingCopyPath, "/w"}};
    EXPECT_THAT(GitLogOperation(request).arguments(),
                ElementsAre("--git-dir=/r", "--work-tree=/w", "log", "--abbrev=12", "-50",
                            "abc123...def456", "--name-status", pretty, "--", "src/a.c"))
        << "only the first file counts, and a range ignores the branch";
}

struct RevisionsOfLog {
    const char* name;
    NEBValue start, end, branch;
    Arguments arguments;
};

class LogRevisions : public testing::TestWithParam<RevisionsOfLog> {};

TEST_P(LogRevisions, BecomeThisArgument) {
    auto request = requestFor(NEBSourceControlRequestLog, "/w");
    request->startingRevision = GetParam().start;
    request->endingRevision = GetParam().end;
    request->options = NEBDictionary{{NEBSourceControlRequestOptionBranch, GetParam().branch}};
    EXPECT_EQ(logArguments(request), GetParam().arguments);
}

const NEBValue headOfLog(NEBSourceControlHEADRevisionName);
const NEBValue baseOfLog(NEBSourceControlBASERevisionName);

INSTANTIATE_TEST_SUITE_P(
    Rows, LogRevisions,
    testing::Values(
        RevisionsOfLog{"Nothing", {}, {}, {}, {}}, RevisionsOfLog{"Start", "a1", {}, {}, {"a1"}},
        RevisionsOfLog{"StartAndNoEnd", "a1", "0", {}, {"a1"}},
        RevisionsOfLog{"StartAndTheNumberZero", "a1", 0, {}, {"a1"}},
        RevisionsOfLog{"StartAndEnd", "a1", "b2", {}, {"a1...b2"}},
        RevisionsOfLog{"HEADByName", headOfLog, {}, {}, {"HEAD"}},
        RevisionsOfLog{"BASEByName", baseOfLog, {}, {}, {"HEAD"}},
        RevisionsOfLog{"BASEByNameAndNoEnd", baseOfLog, "0", {}, {"HEAD"}},
        RevisionsOfLog{"HEADByNameAndEnd", headOfLog, "b2", {}, {"HEAD...b2"}},
        RevisionsOfLog{"OnlyTheStartGoesByName",
                       "a1",
                       headOfLog,
                       {},
                       {"a1...NEBSourceControlHEADRevisionName"}},
        RevisionsOfLog{"OtherNamesAreNoHEAD",
                       NEBSourceControlLocalRevisionName,
                       {},
                       {},
                       {"NEBSourceControlLocalRevisionName"}},
        RevisionsOfLog{"EndAlone", {}, "tagtwo", {}, {"HEAD...tagtwo"}},
        RevisionsOfLog{"EndAloneIsNone", {}, "0", {}, {}},
        RevisionsOfLog{"Branch", {}, {}, "topic", {"topic"}},
        RevisionsOfLog{"BranchAndNoEnd", {}, "0", "topic", {"topic"}},
        RevisionsOfLog{"BranchIsIgnoredInARangeFromHEAD", {}, "tagtwo", "topic", {"HEAD...tagtwo"}},
        RevisionsOfLog{"BranchIsIgnoredBesideAStart", "a1", {}, "topic", {"a1"}},
        RevisionsOfLog{"BranchIsIgnoredBesideAStartWithoutEnd", "a1", "0", "topic", {"a1"}},
        RevisionsOfLog{"EmptyStartIsThere", "", {}, "topic", {""}},
        RevisionsOfLog{"EmptyEndIsThere", "a1", "", {}, {"a1..."}}),
    [](const auto& parameter) { return parameter.param.name; });

TEST(LogCommand, HasTheLimitInDecimal) {
    auto request = requestFor(NEBSourceControlRequestLog, "/w");
    const auto argumentsFor = [&request](NEBValue limit) {
        request->options =
            NEBDictionary{{NEBSourceControlRequestOptionLogOutputLimit, std::move(limit)}};
        return logArguments(request);
    };
    EXPECT_THAT(argumentsFor(25), ElementsAre("-25"));
    EXPECT_THAT(argumentsFor(0), ElementsAre("-0"));
    EXPECT_THAT(argumentsFor(-1), ElementsAre("--1"));
    EXPECT_THAT(argumentsFor(std::int64_t{9007199254740993}), ElementsAre("-9007199254740993"));
    EXPECT_THAT(argumentsFor({}), IsEmpty());
}

TEST(LogCommand, ListsFilesIfTheOptionIsTrue) {
    auto request = requestFor(NEBSourceControlRequestLog, "/w");
    for (const auto& [value, arguments] :
         std::vector<std::pair<NEBValue, Arguments>>{{true, {"--name-status"}},
                                                     {1, {"--name-status"}},
                                                     {"YES", {"--name-status"}},
                                                     {false, {}},
                                                     {0, {}}}) {
        request->options =
            NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, value}};
        EXPECT_EQ(logArguments(request), arguments) << value.description();
    }
}

TEST(LogCommand, HasTheFirstFileAfterTwoDashes) {
    auto request = requestFor(NEBSourceControlRequestLog, "/w");
    request->files = std::vector<NEBValue>{};
    EXPECT_THAT(logArguments(request), IsEmpty());
    request->files = {NEBValue("/w/a.c"), NEBValue("/w/b.c")};
    EXPECT_THAT(GitLogOperation(request).arguments(),
                ElementsAre("log", "--abbrev=12", pretty, "--", "/w/a.c"));
}

}  // namespace
}  // namespace neb

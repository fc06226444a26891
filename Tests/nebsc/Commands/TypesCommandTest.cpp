// `nebsc types`, run as a program.

#include <gmock/gmock.h>

#include <sstream>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using JSON = nlohmann::ordered_json;

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> all;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        all.push_back(line);
    }
    return all;
}

struct NeedsRow {
    std::int32_t type;
    const char* name;
    bool authentication;
    std::vector<std::string> needs;
};

/// All types that need something or may authenticate; the others need nothing.
const std::vector<NeedsRow> neededRows{
    {NEBSourceControlRequestCreateBranch, "create branch", false, {"destination"}},
    {NEBSourceControlRequestDeleteBranch, "delete branch", false, {"destination"}},
    {NEBSourceControlRequestRemove, "remove", false, {"at least one file"}},
    {NEBSourceControlRequestAddFiles, "add files", false, {"at least one file"}},
    {NEBSourceControlRequestRevert, "revert", false, {"at least one file"}},
    {NEBSourceControlRequestMakeDirectory, "make directory", false, {"destination"}},
    {NEBSourceControlRequestMerge, "merge", false, {"destination"}},
    {NEBSourceControlRequestCopy, "copy", false, {"at least one file", "destination"}},
    {NEBSourceControlRequestMove, "move", false, {"at least one file", "destination"}},
    {NEBSourceControlRequestUpdate, "update", true, {}},
    {NEBSourceControlRequestCheckout, "checkout", false, {"destination"}},
    {NEBSourceControlRequestList, "list", false, {"at least one file"}},
    {NEBSourceControlRequestExportFiles,
     "export files",
     false,
     {"at least one file", "starting revision"}},
    {NEBSourceControlRequestExport, "export", false, {"starting revision", "at least one file"}},
    {NEBSourceControlRequestExportTree, "export tree", false, {"destination", "starting revision"}},
    {NEBSourceControlRequestListBranches, "list branches", true, {}},
    {NEBSourceControlRequestCreateRepository,
     "create repository",
     false,
     {"source tree or repository path option"}},
    {NEBSourceControlRequestBlame, "blame", false, {"exactly one file"}},
    {NEBSourceControlRequestClone, "clone", true, {"destination", "source tree location"}},
    {NEBSourceControlRequestPush,
     "push",
     true,
     {"remote", "destination", "remote name option", "branch option"}},
    {NEBSourceControlRequestAddRemote, "add remote", false, {"destination", "exactly one file"}},
    {NEBSourceControlRequestRemoveRemote, "remove remote", false, {"destination"}},
    {NEBSourceControlRequestTrackRemoteBranch,
     "track remote branch",
     false,
     {"destination", "remote name option", "branch option"}},
    {NEBSourceControlRequestFetch, "fetch", true, {"remote", "remote name option"}},
    {NEBSourceControlRequestTrackingBranchName, "tracking branch name", false, {"branch option"}},
    {NEBSourceControlRequestMergeBase,
     "merge base",
     false,
     {"starting revision", "ending revision"}},
    {NEBSourceControlRequestContent, "content", false, {"exactly one file"}},
    {NEBSourceControlRequestAnnotation, "annotation", false, {"exactly one file"}},
    {NEBSourceControlRequestPublish, "publish", true, {}},
    {NEBSourceControlRequestIntegrate, "integrate", true, {}},
    {NEBSourceControlRequestPick, "pick", false, {"starting revision"}},
    {NEBSourceControlRequestTag, "tag", false, {"destination"}},
    {NEBSourceControlRequestSubmodules, "submodules", true, {}},
};

TEST(TypesCommand, JSONHasARowForEveryType) {
    const NebscOutcome outcome = runNebsc({"types", "--json"});
    const JSON rows = outcome.json();
    ASSERT_EQ(rows.size(), NEBSourceControlAllRequestTypes().size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const JSON& row = rows[i];
        const std::int32_t type = NEBSourceControlAllRequestTypes()[i].type;
        EXPECT_EQ(row["type"], type);
        EXPECT_EQ(type, i < 40 ? static_cast<std::int32_t>(i) : 960 + static_cast<std::int32_t>(i))
            << "no number is left out";
        const auto needed =
            std::find_if(neededRows.begin(), neededRows.end(),
                         [type](const NeedsRow& candidate) { return candidate.type == type; });
        const bool isNeeded = needed != neededRows.end();
        EXPECT_EQ(row["needs"].get<std::vector<std::string>>(),
                  isNeeded ? needed->needs : std::vector<std::string>())
            << type;
        EXPECT_EQ(row["authentication"], isNeeded && needed->authentication) << type;
        if (isNeeded) {
            EXPECT_EQ(row["name"], needed->name);
        }
    }
    EXPECT_EQ(rows[15].dump(), R"({"type":15,"name":"status","operation":"GitStatusOperation",)"
                               R"("authentication":false,"needs":[]})");
    EXPECT_EQ(rows[12].dump(), R"({"type":12,"name":"unsupported","operation":null,)"
                               R"("authentication":false,"needs":[]})");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST(TypesCommand, AlignsTheTable) {
    const NebscOutcome outcome = runNebsc({"types"});
    const std::vector<std::string> rows = lines(outcome.output);
    ASSERT_EQ(rows.size(), NEBSourceControlAllRequestTypes().size() + 1);
    const std::string& header = rows[0];
    EXPECT_THAT(header, testing::StartsWith("type  name "));
    const std::size_t operation = header.find("operation");
    const std::size_t authentication = header.find("authentication");
    const std::size_t needs = header.find("needs");
    for (const std::string& row : rows) {
        for (const std::size_t column : {operation, authentication}) {
            EXPECT_EQ(row.substr(column - 2, 2), "  ") << row;
            EXPECT_NE(row[column], ' ') << row;
        }
        EXPECT_NE(row.back(), ' ') << row;
    }
    EXPECT_EQ(rows[16].substr(0, 12), "  15  status");
    EXPECT_EQ(rows[16].substr(operation, 20), "GitStatusOperation  ");
    EXPECT_EQ(rows[13].substr(operation, 6), "none  ");
    EXPECT_EQ(rows[14].substr(authentication), "may need it");
    EXPECT_EQ(rows[16].substr(authentication), "no");
    EXPECT_EQ(rows[37].substr(needs), "destination, remote name option, branch option");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

}  // namespace
}  // namespace neb::test

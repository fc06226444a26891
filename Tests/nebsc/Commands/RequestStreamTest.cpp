// The lines of `nebsc request --stream`.

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using JSON = nlohmann::ordered_json;

class RequestStream : public CommandTest {
protected:
    [[nodiscard]] NebscOutcome request(const JSON& request, bool isStreamed) const {
        std::vector<std::string> arguments{"request"};
        if (isStreamed) {
            arguments.emplace_back("--stream");
        }
        return runNebsc(arguments, {.folder = repository.path(), .input = request.dump()});
    }
    [[nodiscard]] JSON requestOfType(int type) const {
        return {{"type", type}, {"sourceTree", {{"location", repository.path()}}}};
    }
    static std::vector<JSON> linesOf(const std::string& output) {
        std::vector<JSON> all;
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            all.push_back(JSON::parse(line));
        }
        return all;
    }
};

TEST_F(RequestStream, HasTheRecordsOfTheOutcome) {
    repository.commitFile("a", "1\n2\n", "First");
    repository.commitFile("b", "1\n2\n", "Second");
    repository.write("a", "1\n3\n");
    JSON blame = requestOfType(NEBSourceControlRequestBlame);
    blame["files"] = {repository.path("b")};
    for (const JSON& asked :
         {requestOfType(NEBSourceControlRequestLog), requestOfType(NEBSourceControlRequestStatus),
          blame, requestOfType(NEBSourceControlRequestInfo),
          requestOfType(NEBSourceControlRequestDiff)}) {
        const JSON plain = request(asked, false).json();
        const NebscOutcome streamed = request(asked, true);
        const std::vector<JSON> lines = linesOf(streamed.output);
        ASSERT_FALSE(lines.empty());
        JSON records = JSON::array();
        for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
            ASSERT_EQ(lines[i].size(), 1U);
            records.push_back(lines[i]["record"]);
        }
        EXPECT_EQ(records, plain["result"]) << asked;
        const JSON& outcome = lines.back()["outcome"];
        EXPECT_EQ(outcome["recordCount"], records.size());
        EXPECT_EQ(outcome["result"], JSON::array());
        EXPECT_EQ(outcome["command"], plain["command"]);
        EXPECT_TRUE(outcome["error"].is_null());
        EXPECT_EQ(streamed.errors, "");
        EXPECT_EQ(streamed.exitStatus, 0);
    }
}

TEST_F(RequestStream, HasOnlyAnOutcomeWithoutAResult) {
    repository.write("new", "");
    JSON add = requestOfType(NEBSourceControlRequestAddFiles);
    add["files"] = {repository.path("new")};
    const std::vector<JSON> lines = linesOf(request(add, true).output);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0]["outcome"]["result"].is_null());
    EXPECT_EQ(lines[0]["outcome"]["recordCount"], 0);
    EXPECT_EQ(state(), "A  new\n");
}

TEST_F(RequestStream, EndsWithTheOutcomeOfARefusedRequest) {
    const NebscOutcome outcome = request(requestOfType(16), true);
    const std::vector<JSON> lines = linesOf(outcome.output);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0]["outcome"]["error"]["class"], "request-invalid");
    EXPECT_EQ(outcome.exitStatus, 1);
}

}  // namespace
}  // namespace neb::test

// Records that a client of `nebsc serve` gets in pages.

#include <filesystem>

#include "nebsc/Server/PagingServerTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using JSON = ServerClient::JSON;

class Cursor : public PagingServerTest {
protected:
    /// Opens a cursor with one record, waits until git is held back, and returns its process.
    pid_t openPaused() {
        JSON page = open(log(), 1)["result"];
        EXPECT_EQ(page["records"].size(), 1U) << page;
        cursor = page["cursor"];
        const pid_t git = process(++_count);
        waitUntilPaused(git);
        EXPECT_TRUE(isLiveProcess(git));
        return git;
    }
    JSON close() { return call("sourceControl/close", {{"cursor", cursor}}); }
    /// Gets pages until the last one. Returns their records and the outcome.
    std::pair<JSON, JSON> rest() {
        JSON records = JSON::array();
        while (true) {
            const JSON page =
                call("sourceControl/next", {{"cursor", cursor}, {"pageSize", 1000}})["result"];
            records.insert(records.end(), page["records"].begin(), page["records"].end());
            if (!page["cursor"].is_string()) {
                return {records, page["outcome"]};
            }
        }
    }
    void expectUnknown(JSON response) const {
        EXPECT_EQ(response["error"]["code"], -32602) << response;
        EXPECT_EQ(response["error"]["message"],
                  "The cursor '" + cursor.get<std::string>() + "' is unknown or closed.");
    }

    JSON cursor;

private:
    long _count = 0;
};

TEST_F(Cursor, ReturnsTheRecordsOfTheOutcomeInPages) {
    JSON whole = call("sourceControl/perform", shortLog())["result"];
    const JSON first = open(shortLog(), 50)["result"];
    JSON records = first["records"];
    EXPECT_EQ(records.size(), 50U);
    EXPECT_FALSE(first.contains("outcome"));
    cursor = first["cursor"];
    const JSON second = next(cursor)["result"]["records"];
    EXPECT_EQ(second.size(), 50U) << "the size of the page before";
    records.insert(records.end(), second.begin(), second.end());
    auto [others, outcome] = rest();
    records.insert(records.end(), others.begin(), others.end());
    EXPECT_EQ(records, whole["result"]);
    EXPECT_EQ(outcome["recordCount"], shortCount);
    outcome.erase("recordCount");
    whole["result"] = JSON::array();
    for (JSON* each : {&whole, &outcome}) {
        (*each)["commands"][0]["milliseconds"] = 0;
    }
    EXPECT_EQ(outcome, whole);
    expectUnknown(next(cursor));
}

TEST_F(Cursor, IsNotNeededForAShortResult) {
    const JSON page =
        open(requestAbout(NEBSourceControlRequestCurrentBranch, repository.path()), 10)["result"];
    EXPECT_EQ(page["records"].size(), 1U);
    EXPECT_EQ(page["cursor"], nullptr);
    EXPECT_EQ(page["outcome"]["error"], nullptr);
}

TEST_F(Cursor, ReportsTheFailureOfGit) {
    JSON request = log();
    request["startingRevision"] = "no-such-revision";
    JSON page = open(request, 10)["result"];
    EXPECT_EQ(page["records"], JSON::array());
    EXPECT_EQ(page["cursor"], nullptr);
    EXPECT_THAT(page["outcome"]["error"]["text"].get<std::string>(), HasSubstr("no-such-revision"));
}

TEST_F(Cursor, ReturnsPagesInTheOrderOfTheRequests) {
    const JSON whole = call("sourceControl/perform", shortLog())["result"]["result"];
    cursor = open(shortLog(), 400)["result"]["cursor"];
    for (int i = 1; i <= 4; ++i) {
        client.send(i, "sourceControl/next", {{"cursor", cursor}});
    }
    for (std::size_t i = 1; i <= 2; ++i) {
        JSON page = client.receive();
        EXPECT_EQ(page["id"], i);
        EXPECT_EQ(page["result"]["records"][0], whole[400 * i]);
    }
    // The third page may be the last one of the list, or empty.
    for (int i = 3; i <= 4; ++i) {
        const JSON last = client.answerTo(i);
        EXPECT_TRUE(last.contains("error") ? last["error"]["code"] == -32602
                                           : last["result"]["records"].empty())
            << last;
    }
    expectUnknown(next(cursor));
}

TEST_F(Cursor, RefusesInvalidParameters) {
    const auto refusalOf = [this](std::string_view method, const JSON& params) {
        JSON response = call(method, params);
        EXPECT_EQ(response["error"]["code"], -32602) << response;
        return response["error"]["message"].get<std::string>();
    };
    const std::string both =
        "'sourceControl/open' takes the members 'request' and 'pageSize'; both are required.";
    EXPECT_EQ(refusalOf("sourceControl/open", {{"pageSize", 1}}), both);
    EXPECT_EQ(refusalOf("sourceControl/open", nullptr), both);
    EXPECT_THAT(refusalOf("sourceControl/open", JSON::array({1})),
                HasSubstr("is an array; expected an object."));
    EXPECT_EQ(refusalOf("sourceControl/open", {{"request", log()}}), both);
    EXPECT_THAT(refusalOf("sourceControl/open", {{"request", log()}, {"pageSize", 0}}),
                HasSubstr("'pageSize' is 0; expected an integer from 1 to 10000."));
    EXPECT_THAT(refusalOf("sourceControl/open", {{"request", log()}, {"pageSize", "5"}}),
                HasSubstr("'pageSize' is a string"));
    EXPECT_THAT(refusalOf("sourceControl/open", {{"request", {{"kind", 1}}}, {"pageSize", 1}}),
                HasSubstr("'kind' is unknown"));
    EXPECT_THAT(refusalOf("sourceControl/open", {{"size", 1}}), HasSubstr("'size' is unknown"));
    JSON option = log();
    option["startingRevision"] = "--output=x";
    EXPECT_THAT(refusalOf("sourceControl/open", {{"request", option}, {"pageSize", 1}}),
                HasSubstr("--output=x"));
    const JSON commit = requestAbout(NEBSourceControlRequestCommit, repository.path());
    EXPECT_THAT(refusalOf("sourceControl/open", {{"request", commit}, {"pageSize", 1}}),
                HasSubstr("(commit) has no pages"));
    EXPECT_THAT(refusalOf("sourceControl/next", {{"pageSize", 1}}), HasSubstr("'cursor'"));
    EXPECT_THAT(refusalOf("sourceControl/next", {{"cursor", 1}}), HasSubstr("is an integer"));
    EXPECT_THAT(refusalOf("sourceControl/close", JSON::object()), HasSubstr("'cursor'"));
    EXPECT_EQ(refusalOf("sourceControl/next", {{"cursor", "x"}}),
              "The cursor 'x' is unknown or closed.");
}

TEST_F(Cursor, RefusesToRecord) {
    const std::string file = folder.path("recording");
    for (const JSON& record : {JSON(file), JSON{{"file", file}, {"anonymous", true}}}) {
        const JSON response =
            call("sourceControl/open", {{"request", log()}, {"pageSize", 1}, {"record", record}});
        EXPECT_EQ(response["error"]["code"], -32602) << response;
        EXPECT_EQ(response["error"]["message"],
                  "The request's member 'record' is for 'sourceControl/perform'; requests with a "
                  "cursor are not recorded.");
    }
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_FALSE(std::filesystem::exists(folder.path("started"))) << "no git was started";
}

// ---- the end of a cursor ----------------------------------------------------------------------

TEST_F(Cursor, EndsItsProcessWhenItIsClosed) {
    const pid_t git = openPaused();
    EXPECT_EQ(close()["result"], nullptr);
    EXPECT_FALSE(isLiveProcess(git));
    expectUnknown(next(cursor));
    expectUnknown(close());
}

TEST_F(Cursor, IsClosedWhenARunningRequestIsCancelled) {
    const SlowGit slow;
    ServerClient other({slow.path()});
    other.initialize();
    const JSON params{{"request", requestAbout(NEBSourceControlRequestStatus, slow.location())},
                      {"pageSize", 1}};
    other.send("page", "sourceControl/open", params);
    const pid_t git = slow.process();
    other.send({}, "$/cancelRequest", {{"id", "page"}});
    const JSON error = other.answerTo("page")["error"];
    EXPECT_EQ(error["code"], -32800);
    EXPECT_EQ(error["data"]["error"]["class"], "cancelled");
    EXPECT_FALSE(isLiveProcess(git));
}

TEST_F(Cursor, EndsAllRequestsThatWaitForItWhenItIsClosed) {
    const TemporaryFolder git;
    git.writeProgram("git",
                     "#!/bin/sh\n[ \"$1\" != --version ] || exit 0\nprintf "
                     "'\\000a1\\nAnn\\na@x\\n1\\none\\n\\001\\n\\000'\n"
                     "exec sleep 1000\n");
    ServerClient other({{"PATH", git.path() + ":/bin"}});
    other.send(0, "initialize", JSON::object());
    other.send(1, "sourceControl/open", {{"request", log()}, {"pageSize", 1}});
    cursor = other.answerTo(1)["result"]["cursor"];
    for (int i = 2; i <= 4; ++i) {
        other.send(i, "sourceControl/next", {{"cursor", cursor}});
    }
    other.send(4, "sourceControl/close", {{"cursor", cursor}});
    EXPECT_EQ(other.answerTo(4)["error"]["code"], -32600) << "the id is in use: nothing is closed";
    other.send(5, "sourceControl/close", {{"cursor", cursor}});
    for (int i = 2; i <= 4; ++i) {
        EXPECT_EQ(other.answerTo(i)["error"]["code"], -32800);
    }
    EXPECT_EQ(other.answerTo(5)["result"], nullptr);
}

TEST_F(Cursor, EndsItsProcessesWhenTheClientIsGone) {
    const std::vector<pid_t> processes{openPaused(), openPaused(), openPaused()};
    client.close();
    EXPECT_EQ(client.exitStatus(), 1);
    for (const pid_t git : processes) {
        EXPECT_FALSE(isLiveProcess(git));
    }
}

TEST_F(Cursor, EndsItsProcessesAfterShutdown) {
    const std::vector<pid_t> processes{openPaused(), openPaused()};
    EXPECT_EQ(call("shutdown", nullptr)["result"], nullptr);
    client.send({}, "exit");
    EXPECT_EQ(client.exitStatus(), 0);
    for (const pid_t git : processes) {
        EXPECT_FALSE(isLiveProcess(git));
    }
}

TEST_F(Cursor, CanBeOpenSixtyFourTimes) {
    std::vector<JSON> cursors;
    for (int i = 0; i < 64; ++i) {
        client.send(i, "sourceControl/open", {{"request", log()}, {"pageSize", 1}});
    }
    client.send("more", "sourceControl/open", {{"request", log()}, {"pageSize", 1}});
    const JSON error = client.answerTo("more")["error"];
    EXPECT_EQ(error["code"], -32600);
    EXPECT_THAT(error["message"].get<std::string>(), HasSubstr("64 cursors are open"));
    for (const JSON& response : client.others()) {
        cursors.push_back(response["result"]["cursor"]);
    }
    while (cursors.size() < 64) {
        cursors.push_back(client.receive()["result"]["cursor"]);
    }
    id = 1000;
    for (const JSON& each : cursors) {
        EXPECT_EQ(next(each)["result"]["records"].size(), 1U);
    }
    const JSON branch = requestAbout(NEBSourceControlRequestCurrentBranch, repository.path());
    EXPECT_EQ(call("sourceControl/perform", branch)["result"]["error"], nullptr);
    cursor = cursors[5];
    EXPECT_EQ(close()["result"], nullptr);
    EXPECT_EQ(open(log(), 1)["result"]["records"].size(), 1U);
}

// ---- a repository that changes ----------------------------------------------------------------

TEST_F(Cursor, BlocksNoWriter) {
    std::string entries;
    for (int i = 0; i < 6000; ++i) {  // more than fits into the pipe, and no file exists
        entries += "100644 blob e69de29bb2d1d6434b8b29ae775ad8c2e48c5391\t" +
                   std::to_string(100000 + i) + std::string(240, 'n') + "\n";
    }
    repository.gitWithInput({"hash-object", "-w", "--stdin"}, "");
    repository.gitWithInput({"update-index", "--add", "--index-info"}, entries);
    repository.git({"commit", "-m", "many"});
    repository.commitFile("touched", "1");
    std::filesystem::last_write_time(repository.path("touched"), {});  // the index is refreshed
    JSON diff = requestAbout(NEBSourceControlRequestDiff, repository.path());
    diff["options"] = {{"NEBSourceControlRequestOptionDiffFileNameAndStatusOnly", true}};
    int count = 0;
    for (const JSON& request :
         {requestAbout(NEBSourceControlRequestStatus, repository.path()), log(), diff}) {
        JSON page = open(request, 1)["result"];
        ASSERT_TRUE(page["cursor"].is_string()) << page;
        EXPECT_FALSE(std::filesystem::exists(repository.path(".git/index.lock"))) << request;
        const std::string file = "file" + std::to_string(++count);
        repository.write(file, "1");
        repository.git({"add", file});
        JSON commit = requestAbout(NEBSourceControlRequestCommit, repository.path());
        commit["files"] = {repository.path(file)};
        commit["options"] = {{"NEBSourceControlRequestOptionMessage", file}};
        EXPECT_EQ(call("sourceControl/perform", commit)["result"]["error"], nullptr) << request;
        cursor = page["cursor"];
        EXPECT_EQ(rest().second["error"], nullptr);
    }
}

TEST_F(Cursor, SurvivesGarbageCollectionAndARewrittenBranch) {
    openPaused();
    repository.git({"update-ref", "refs/heads/main", "HEAD~2900"});
    repository.git({"reflog", "expire", "--expire=now", "--all"});
    repository.git({"gc", "--quiet", "--prune=now"});
    const auto [records, outcome] = rest();
    // git may miss a commit that was removed; it then says so.
    if (outcome["error"] == nullptr) {
        EXPECT_EQ(records.size(), static_cast<std::size_t>(commits - 1));
    } else {
        EXPECT_NE(outcome["error"]["text"], nullptr);
    }
}

TEST_F(Cursor, SurvivesADeletedRepository) {
    openPaused();
    std::filesystem::remove_all(repository.path());
    const auto [records, outcome] = rest();
    if (outcome["error"] == nullptr) {
        EXPECT_EQ(records.size(), static_cast<std::size_t>(commits - 1));
    } else {
        EXPECT_NE(outcome["error"]["text"], nullptr);
    }
}

}  // namespace
}  // namespace neb::test

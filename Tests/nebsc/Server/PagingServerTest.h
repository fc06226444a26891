// PagingServerTest.h - a server and a repository whose log does not fit into a pipe, for tests of
// results that arrive in parts.
#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/SettledText.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"
#include "nebsc/Server/ServerClient.h"
#include "nebsc/Server/SlowGit.h"

namespace neb::test {

/// Makes that many commits with messages of that many bytes on the branch "main".
inline void makeHistory(const TestRepository& repository, int commits, std::size_t messageSize) {
    const std::string message(messageSize, 'm');
    std::string stream;
    for (int i = 1; i <= commits; ++i) {
        stream += "commit refs/heads/main\ncommitter A U Thor <author@example.com> " +
                  std::to_string(1700000000 + i) + " +0000\ndata " + std::to_string(messageSize) +
                  "\n" + message + "\n";
    }
    repository.gitWithInput({"fast-import", "--quiet"}, stream);
}

/// Returns the number of bytes that the process has written; empty for none.
inline std::string writtenBytesOf(pid_t process) {
    std::ifstream io("/proc/" + std::to_string(process) + "/io");
    for (std::string name, value; io >> name >> value;) {
        if (name == "wchar:") {
            return value == "0" ? "" : value;
        }
    }
    return {};
}

/// Waits until the process, which writes to a full pipe, writes no more. Returns how many bytes it
/// has written.
inline long waitUntilPaused(pid_t process) {
    return std::stol(settledText([process] { return writtenBytesOf(process); }));
}

/// A server whose git appends its process id to a file when it begins a log.
class PagingServerTest : public testing::Test {
protected:
    static constexpr int commits = 3000;
    static constexpr std::size_t messageSize = 2000;
    static constexpr int shortCount = 1200;
    using JSON = ServerClient::JSON;

    PagingServerTest() {
        makeHistory(repository, commits, messageSize);
        client.initialize();
    }

    [[nodiscard]] JSON log() const {
        return requestAbout(NEBSourceControlRequestLog, repository.path());
    }
    /// Returns a request for the last 1,200 commits, more than two batches of records.
    [[nodiscard]] JSON shortLog() const {
        JSON request = log();
        request["options"] = {{"NEBSourceControlRequestOptionLogOutputLimit", shortCount}};
        return request;
    }
    /// Waits until that many logs have been started, and returns the process of the last one.
    [[nodiscard]] pid_t process(long count = 1) const {
        std::string lines;
        do {
            lines = awaitedLine(folder, "started");
        } while (std::count(lines.begin(), lines.end(), '\n') < count);
        lines.pop_back();
        return std::stoi(lines.substr(lines.rfind('\n') + 1));
    }
    JSON call(std::string_view method, JSON params) {
        client.send(++id, method, std::move(params));
        return client.answerTo(id);
    }
    JSON open(JSON request, int pageSize) {
        return call("sourceControl/open",
                    {{"request", std::move(request)}, {"pageSize", pageSize}});
    }
    JSON next(const JSON& cursor) { return call("sourceControl/next", {{"cursor", cursor}}); }

    const TestRepository repository;
    const TemporaryFolder folder;
    const StandInGit loggingGit{repository.path(), "[ \"$1\" = log ] && echo $$ >> '" +
                                                       folder.path("started") +
                                                       "'\nexec /usr/bin/git \"$@\""};
    ServerClient client{{loggingGit.path()}};
    int id = 0;
};

}  // namespace neb::test

// WatchTest.h - a server that watches repositories.
#pragma once

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "Support/TestRepository.h"
#include "nebsc/Server/ServerClient.h"

namespace neb::test {

class WatchTest : public testing::Test {
protected:
    using JSON = ServerClient::JSON;
    using Changes = std::set<std::string>;

    WatchTest() {
        repository.commitFile("a", "1\n");
        client.initialize();
    }

    JSON call(std::string_view method, JSON params) {
        client.send(++id, method, std::move(params));
        return client.answerTo(id);
    }
    /// Watches the repository, and returns the name of the watch.
    std::string watch(const std::string& location, bool workingTree = false) {
        const JSON answer = call("sourceControl/watch", {{"sourceTree", {{"location", location}}},
                                                         {"workingTree", workingTree}});
        EXPECT_TRUE(answer.contains("result")) << answer;
        return answer["result"]["watch"];
    }
    JSON unwatch(const std::string& name) {
        return call("sourceControl/unwatch", {{"watch", name}});
    }
    /// Returns the changes of all notifications up to the one with which all of these are reported.
    Changes changesUpTo(const Changes& wanted) {
        Changes reported;
        while (!std::includes(reported.begin(), reported.end(), wanted.begin(), wanted.end())) {
            const JSON message = client.receive();
            if (message.is_null() || message["method"] != "sourceControl/didChange") {
                ADD_FAILURE() << message;
                break;
            }
            const auto names = message["params"]["changes"].get<std::vector<std::string>>();
            reported.insert(names.begin(), names.end());
        }
        return reported;
    }
    /// Returns the changes that are reported up to a later one: of the configuration.
    Changes reportedChanges(const TestRepository& where) {
        where.git({"config", "demo.value", std::to_string(++id)});
        Changes changes = changesUpTo({"configuration"});
        changes.erase("configuration");
        return changes;
    }

    const TestRepository repository;
    ServerClient client;
    int id = 0;
};

}  // namespace neb::test

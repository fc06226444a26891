// Runs of `nebsc browse` and what they answer over HTTP.
#include <gmock/gmock.h>
#include <httplib.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <nlohmann/json.hpp>
#include <thread>

#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using JSON = nlohmann::ordered_json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// The stream of one page's events.
class Events {
public:
    Events(const std::string& origin, const httplib::Headers& headers)
        : _client(origin), _thread([this, headers] {
              _client.set_read_timeout(60);
              _client.Get("/events", headers, [this](const char* bytes, std::size_t size) {
                  const std::lock_guard lock(_mutex);
                  _text.append(bytes, size);
                  _changed.notify_all();
                  return !_isClosed;
              });
              const std::lock_guard lock(_mutex);
              _hasEnded = true;
              _changed.notify_all();
          }) {}
    Events(const Events&) = delete;
    Events& operator=(const Events&) = delete;
    ~Events() {
        {
            const std::lock_guard lock(_mutex);
            _isClosed = true;
        }
        _client.stop();
        _thread.join();
    }

    /// Waits for an event whose data is accepted, at most for a minute.
    JSON await(const std::function<bool(const JSON&)>& accepts) {
        JSON found;
        std::unique_lock lock(_mutex);
        const bool isFound = _changed.wait_for(lock, std::chrono::minutes(1), [&] {
            found = firstOf(accepts);
            return !found.is_null() || _hasEnded;
        });
        EXPECT_TRUE(isFound);
        return found;
    }
    /// Waits for the end of the stream.
    void awaitEnd() {
        std::unique_lock lock(_mutex);
        EXPECT_TRUE(_changed.wait_for(lock, std::chrono::minutes(1), [&] { return _hasEnded; }));
    }

private:
    [[nodiscard]] JSON firstOf(const std::function<bool(const JSON&)>& accepts) const {
        constexpr std::string_view mark = "data: ";
        for (std::size_t i = _text.find(mark); i != std::string::npos; i = _text.find(mark, i)) {
            i += mark.size();
            const std::size_t end = _text.find("\n\n", i);
            const JSON data = end == std::string::npos
                                  ? JSON()
                                  : JSON::parse(_text.substr(i, end - i), nullptr, false);
            if (data.is_object() && accepts(data)) {
                return data;
            }
        }
        return {};
    }

    std::mutex _mutex;
    std::condition_variable _changed;
    std::string _text;
    bool _isClosed = false;
    bool _hasEnded = false;
    httplib::Client _client;
    std::thread _thread;
};

/// A repository, and a browser's view of `nebsc browse` in it.
class Gateway : public testing::Test {
protected:
    void SetUp() override {
        repository.commitFile("a.txt", "text\n");
        start({"browse", "--no-open"});
    }
    void start(const std::vector<std::string>& arguments) {
        nebsc.emplace(arguments, NebscSurroundings{.folder = repository.path(),
                                                   .variables = {{"DISPLAY", std::nullopt}},
                                                   .output = NebscOutput::pipe});
        url = nebsc->awaitLine();
        origin = url.substr(0, url.find("/?"));
        const auto response = httplib::Client(origin).Get(url.substr(origin.size()));
        ASSERT_TRUE(response);
        ASSERT_EQ(response->status, 200);
        const std::string cookie = response->get_header_value("Set-Cookie");
        headers = {{"Cookie", cookie.substr(0, cookie.find(';'))}};
    }
    [[nodiscard]] httplib::Result get(const std::string& path) const {
        return httplib::Client(origin).Get(path, headers);
    }
    [[nodiscard]] httplib::Result post(const std::string& session, const JSON& message) const {
        return httplib::Client(origin).Post("/messages?session=" + session, headers, message.dump(),
                                            "application/json");
    }
    static std::string sessionOf(Events& events) {
        return events.await([](const JSON& data) { return data.contains("session"); })["session"];
    }
    /// Performs a request and returns the outcome.
    JSON perform(Events& events, int id, const JSON& request) const {
        const auto response = post(sessionOf(events), {{"jsonrpc", "2.0"},
                                                       {"id", id},
                                                       {"method", "sourceControl/perform"},
                                                       {"params", request}});
        EXPECT_EQ(response->status, 204) << response->body;
        return events.await([id](const JSON& data) { return data.value("id", JSON()) == id; })
            .value("result", JSON());
    }

    TestRepository repository;
    std::optional<Nebsc> nebsc;
    std::string url, origin;
    httplib::Headers headers;
};

TEST_F(Gateway, PrintsAURLOfTheLoopbackInterface) {
    EXPECT_THAT(url, testing::MatchesRegex("http://127\\.0\\.0\\.1:[0-9]+/\\?token=[0-9a-f]+"));
}

TEST_F(Gateway, TellsATerminalHowToEndIt) {
    const auto hint = [this](const std::vector<std::string>& arguments) {
        Nebsc other(arguments, {.folder = repository.path(),
                                .variables = {{"DISPLAY", std::nullopt}},
                                .output = NebscOutput::pipe,
                                .hasTerminalForErrors = true});
        return other.awaitErrors("\n");
    };
    EXPECT_THAT(hint({"browse", "--no-open"}), HasSubstr("press Ctrl-C to end, or close"));
    EXPECT_THAT(hint({"browse", "--no-open", "--stay"}), StartsWith("press Ctrl-C to end\r\n"));
    nebsc->send(SIGINT);
    EXPECT_THAT(nebsc->outcome().errors, Not(HasSubstr("press")));
}

TEST_F(Gateway, ServesThePage) {
    const auto page = get("/");
    ASSERT_TRUE(page);
    EXPECT_EQ(page->status, 200);
    EXPECT_THAT(page->body, StartsWith("<!doctype html>"));
    EXPECT_THAT(page->get_header_value("Content-Security-Policy"),
                StartsWith("default-src 'none'"));
    EXPECT_EQ(page->get_header_value("X-Content-Type-Options"), "nosniff");
    EXPECT_EQ(get("/none.js")->status, 404);
    EXPECT_EQ(get("/../README.md")->status, 404);
    EXPECT_EQ(get("/%2e%2e/README.md")->status, 404);
}

TEST_F(Gateway, DescribesTheRepository) {
    const JSON described = JSON::parse(get("/repository")->body);
    EXPECT_EQ(described["location"], repository.path());
    EXPECT_EQ(described["isBare"], false);
    EXPECT_EQ(described["trust"], "inspect");
    EXPECT_EQ(described["version"], NEB_PROJECT_VERSION);
}

TEST_F(Gateway, SaysThatARepositoryIsBare) {
    repository.git({"config", "core.bare", "true"});
    start({"browse", "--no-open", repository.path(".git")});
    EXPECT_EQ(JSON::parse(get("/repository")->body)["isBare"], true);
}

TEST_F(Gateway, RefusesRequestsWithoutItsCookie) {
    httplib::Client stranger(origin);
    for (const char* path : {"/", "/repository", "/events", "/main.js"}) {
        EXPECT_EQ(stranger.Get(path)->status, 403) << path;
    }
    EXPECT_EQ(stranger.Get("/?token=0")->status, 403);
    EXPECT_EQ(stranger.Post("/messages?session=1", "{}", "application/json")->status, 403);
}

TEST_F(Gateway, RefusesPagesOfOtherSites) {
    httplib::Headers foreign = headers;
    foreign.emplace("Origin", "http://example.org");
    EXPECT_EQ(httplib::Client(origin).Get("/repository", foreign)->status, 403);
    EXPECT_EQ(httplib::Client(origin).Get(url.substr(origin.size()), foreign)->status, 403);
    httplib::Headers renamed = headers;
    renamed.emplace("Host", "example.org");
    EXPECT_EQ(httplib::Client(origin).Get("/repository", renamed)->status, 403);
}

TEST_F(Gateway, AnswersARequestOfAPage) {
    Events events(origin, headers);
    const JSON outcome = perform(events, 1, {{"type", 1001}});
    ASSERT_EQ(outcome["result"].size(), 1U) << outcome;
    EXPECT_EQ(outcome["error"], nullptr);
}

TEST_F(Gateway, RefusesAMessageThatMayNotBeSent) {
    Events events(origin, headers);
    const auto response = post(sessionOf(events), {{"jsonrpc", "2.0"},
                                                   {"id", 1},
                                                   {"method", "sourceControl/perform"},
                                                   {"params", {{"type", 1011}}}});
    EXPECT_EQ(response->status, 403);
    EXPECT_THAT(response->body, HasSubstr("requests that read"));
    EXPECT_EQ(post("no session", JSON::object())->status, 404);
}

TEST_F(Gateway, RefusesAMessageThatIsTooLong) {
    Events events(origin, headers);
    const auto response =
        httplib::Client(origin).Post("/messages?session=" + sessionOf(events), headers,
                                     std::string(2U << 20U, 'x'), "application/json");
    EXPECT_TRUE(!response || response->status == 413);
    EXPECT_EQ(get("/repository")->status, 200);
}

TEST_F(Gateway, ServesTwoPagesAtOnce) {
    Events first(origin, headers);
    Events second(origin, headers);
    EXPECT_NE(sessionOf(first), sessionOf(second));
    EXPECT_EQ(perform(first, 1, {{"type", 1001}})["result"].size(), 1U);
    EXPECT_EQ(perform(second, 1, {{"type", 1001}})["result"].size(), 1U);
}

TEST_F(Gateway, ReportsChangesOfTheRepository) {
    Events events(origin, headers);
    const std::string session = sessionOf(events);
    EXPECT_EQ(post(session, {{"jsonrpc", "2.0"},
                             {"id", 1},
                             {"method", "sourceControl/watch"},
                             {"params", {{"workingTree", true}}}})
                  ->status,
              204);
    static_cast<void>(events.await([](const JSON& data) { return data.value("id", 0) == 1; }));
    repository.commitFile("b.txt", "text\n");
    const JSON change = events.await(
        [](const JSON& data) { return data.value("method", "") == "sourceControl/didChange"; });
    EXPECT_EQ(change["params"]["location"], repository.path());
}

/// A repository that was sent to the user may name hostile filters.
TEST_F(Gateway, RunsNoProgramOfTheRepositoryUnlessItIsTrusted) {
    repository.write(".gitattributes", "a.txt filter=traced\n");
    repository.git({"config", "filter.traced.clean", "touch " + repository.path("ran") + "; cat"});
    repository.write("a.txt", "TEXT\n");
    {
        Events events(origin, headers);
        EXPECT_EQ(perform(events, 1, {{"type", 1000}})["error"], nullptr);
    }
    EXPECT_FALSE(std::filesystem::exists(repository.path("ran")));
    nebsc.reset();
    start({"browse", "--no-open", "--trust"});
    EXPECT_EQ(JSON::parse(get("/repository")->body)["trust"], "trusted");
    Events events(origin, headers);
    static_cast<void>(perform(events, 1, {{"type", 1000}}));
    EXPECT_TRUE(std::filesystem::exists(repository.path("ran")));
}

/// xdg-open gets a file, so that the browser sees another site lead to the URL.
TEST_F(Gateway, OpensThePageFromAFile) {
    EXPECT_EQ(httplib::Client(origin)
                  .Get(url.substr(origin.size()), {{"Sec-Fetch-Site", "cross-site"}})
                  ->status,
              200);
}

TEST_F(Gateway, EndsThoughAClientIsSlow) {
    httplib::Client slow(origin);
    std::atomic<bool> hasEnded = false;
    std::thread sender([&] {
        slow.Post(
            "/messages", headers, 1000,
            [&](std::size_t, std::size_t, httplib::DataSink& sink) {
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
                return !hasEnded && sink.write(" ", 1);
            },
            "application/json");
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    nebsc->send(SIGINT);
    EXPECT_EQ(nebsc->outcome().exitStatus, 130);
    hasEnded = true;
    sender.join();
}

TEST_F(Gateway, EndsAfterASignalAndClosesItsPages) {
    Events events(origin, headers);
    static_cast<void>(sessionOf(events));
    nebsc->send(SIGINT);
    events.awaitEnd();
    EXPECT_EQ(nebsc->outcome().exitStatus, 130);
}

}  // namespace
}  // namespace neb::test

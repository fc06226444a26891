#include "HTTPGateway.h"

#include <arpa/inet.h>
#include <httplib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <nlohmann/json.hpp>
#include <thread>

#include "BoundedServer.h"
#include "Browse/PageAccess.h"
#include "Browse/PageRequests.h"
#include "BrowserStart.h"
#include "OpenPages.h"
#include "Platform/FileDescriptor.h"
#include "Platform/PathString.h"
#include "Platform/SignalFreeThread.h"
#include "Terminal/ErrorText.h"
#include "UntrackedFile.h"
#include "WebFiles.h"

namespace neb::nebsc {

namespace {

using namespace std::chrono_literals;

constexpr auto timeWithoutPage = 60s;
constexpr auto longestWait = 500ms;
constexpr std::size_t longestMessage = std::size_t{1} << 20;
/// For a person who waits for the prompt.
constexpr std::string_view stayingHint = "press Ctrl-C to end\n";
constexpr std::string_view endingHint =
    "press Ctrl-C to end, or close the page: it ends a minute later\n";
/// For requests beside those of the open pages, which occupy a thread each.
constexpr std::size_t otherThreads = 8;
/// More than the threads need.
constexpr int mostDescriptors = 1024;

constexpr int statusForbidden = 403;
constexpr int statusNotFound = 404;
constexpr int statusTooMany = 503;
constexpr int statusNoContent = 204;

/// The page loads nothing from elsewhere, runs no code but its files, and is in no frame.
const httplib::Headers pageHeaders{
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; "
     "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
};

std::string_view typeOfFile(std::string_view path) {
    struct Row {
        std::string_view end, type;
    };
    constexpr Row rows[] = {{".html", "text/html; charset=utf-8"},
                            {".css", "text/css; charset=utf-8"},
                            {".js", "text/javascript; charset=utf-8"},
                            {".svg", "image/svg+xml"}};
    const auto* const row = std::find_if(std::begin(rows), std::end(rows), [path](const Row& one) {
        return path.ends_with(one.end);
    });
    return row == std::end(rows) ? "application/octet-stream" : row->type;
}

PageRequestHeaders headersOf(const httplib::Request& request) {
    return {.host = request.get_header_value("Host"),
            .origin = request.get_header_value("Origin"),
            .site = request.get_header_value("Sec-Fetch-Site"),
            .cookies = request.get_header_value("Cookie")};
}

void refuse(httplib::Response& response, int status, const std::string& sentence) {
    response.status = status;
    response.set_content(nlohmann::json{{"error", sentence}}.dump(), "application/json");
}

/// One run of the gateway.
class Run {
public:
    explicit Run(const BrowseGateway::Site& site) : _site(site), _requests(site.location) {}

    CommandOutput serve();

private:
    void addHandlers();
    void open(const httplib::Request& request, httplib::Response& response) const;
    static void sendFile(const std::string& path, httplib::Response& response);
    void describeRepository(httplib::Response& response) const;
    void openEvents(httplib::Response& response);
    bool sendEvents(PageSession& session, httplib::DataSink& sink) const;
    void acceptMessage(const httplib::Request& request, httplib::Response& response) const;
    void sendUntracked(const httplib::Request& request, httplib::Response& response) const;
    void stopInTime();

    const BrowseGateway::Site& _site;
    PageRequests _requests;
    int _port = -1;
    std::optional<PageAccess> _access;
    OpenPages _pages;
    std::atomic<bool> _isStopping = false;
    std::atomic<bool> _hasStopped = false;
    BoundedServer _http{OpenPages::mostPages + otherThreads, longestMessage};
};

CommandOutput Run::serve() {
    _port = _http.bind_to_any_port("127.0.0.1");
    if (_port < 0) {
        return refusal("no free port on 127.0.0.1", exitFailed);
    }
    _access.emplace(_port);
    addHandlers();
    static_cast<void>(writeAll(STDOUT_FILENO, _access->url() + "\n"));
    if (::isatty(STDERR_FILENO) == 1) {
        static_cast<void>(writeAll(STDERR_FILENO, _site.stays ? stayingHint : endingHint));
    }
    std::optional<BrowserStart> browser;
    if (_site.opensBrowser) {
        browser.emplace(_access->url());
    }
    const Interruption::Work work(_site.interruption, [this] { _isStopping = true; });
    std::thread timer = startSignalFreeThread([this] { stopInTime(); });
    if (!timer.joinable()) {
        return refusal("the system has no thread left", exitFailed);
    }
    _http.listen_after_bind();
    _hasStopped = true;
    timer.join();
    return {};
}

/// Ends the connections of the server, so that none of its threads waits for a slow client.
void endConnections(int port) {
    for (int descriptor = STDERR_FILENO + 1; descriptor < mostDescriptors; ++descriptor) {
        sockaddr_in address{};
        socklen_t length = sizeof address;
        if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) == 0 &&
            address.sin_family == AF_INET && ntohs(address.sin_port) == port) {
            ::shutdown(descriptor, SHUT_RDWR);
        }
    }
}

/// Stops the server after a signal, or when no page has been open for a while.
void Run::stopInTime() {
    while (!_hasStopped) {
        std::this_thread::sleep_for(longestWait / 5);
        const auto lastClosed = _pages.lastClosed();
        if (!_site.stays && lastClosed && OpenPages::Clock::now() - *lastClosed > timeWithoutPage) {
            _isStopping = true;
        }
        if (_isStopping) {
            _http.stop();
            endConnections(_port);
        }
    }
}

void Run::addHandlers() {
    _http.set_default_headers(pageHeaders);
    _http.set_pre_routing_handler(
        [this](const httplib::Request& request, httplib::Response& response) {
            const bool opens = request.path == "/" && request.has_param("token");
            const std::string refused = opens ? _access->refusalToOpen(headersOf(request))
                                              : _access->refusal(headersOf(request));
            if (refused.empty()) {
                return httplib::Server::HandlerResponse::Unhandled;
            }
            refuse(response, statusForbidden, refused);
            return httplib::Server::HandlerResponse::Handled;
        });
    _http.Get("/", [this](const auto& request, auto& response) { open(request, response); });
    _http.Get("/repository", [this](const auto&, auto& response) { describeRepository(response); });
    _http.Get("/untracked",
              [this](const auto& request, auto& response) { sendUntracked(request, response); });
    _http.Get("/events", [this](const auto&, auto& response) { openEvents(response); });
    _http.Post("/messages",
               [this](const auto& request, auto& response) { acceptMessage(request, response); });
    _http.Get("/.*", [](const auto& request, auto& response) { sendFile(request.path, response); });
}

/// With the token, the page sets the cookie and leads to the page without the token. Not by a
/// redirection: the browser would not send the cookie after one that began on another site.
void Run::open(const httplib::Request& request, httplib::Response& response) const {
    if (!request.has_param("token")) {
        sendFile("/index.html", response);
    } else if (_access->isToken(request.get_param_value("token"))) {
        response.set_header("Set-Cookie", _access->newCookie());
        response.set_content(
            "<!doctype html><html lang=\"en\"><meta charset=\"utf-8\">"
            "<title>nebsc browse</title>"
            "<meta http-equiv=\"refresh\" content=\"0;url=/\">"
            "<a href=\"/\">Open the repository</a></html>\n",
            "text/html; charset=utf-8");
    } else {
        refuse(response, statusForbidden, "The token is not that of this server.");
    }
}

void Run::sendFile(const std::string& path, httplib::Response& response) {
    const auto files = webFiles();
    const auto file = std::find_if(files.begin(), files.end(),
                                   [&path](const WebFile& one) { return one.path == path; });
    if (file == files.end()) {
        refuse(response, statusNotFound, "There is no such page.");
        return;
    }
    response.set_content(file->bytes.data(), file->bytes.size(), std::string(typeOfFile(path)));
}

void Run::describeRepository(httplib::Response& response) const {
    const nlohmann::ordered_json repository{
        {"name", lastPathComponent(_site.location)},
        {"location", _site.location},
        {"isBare", _site.isBare},
        {"trust", _site.session.isInspecting() ? "inspect" : "trusted"},
        {"version", NEBSC_VERSION}};
    response.set_content(
        repository.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace),
        "application/json");
}

/// git has no request for the content of a file that it does not track.
void Run::sendUntracked(const httplib::Request& request, httplib::Response& response) const {
    const std::string path = request.get_param_value("path");
    const UntrackedFile file = readUntrackedFile(_site.location, path);
    if (file.refusal.empty()) {
        response.set_content(file.bytes, "application/octet-stream");
    } else {
        refuse(response, statusNotFound, file.refusal);
    }
}

/// The page's session lives as long as the connection.
void Run::openEvents(httplib::Response& response) {
    auto session = std::make_shared<PageSession>(_site.session, _site.interruption);
    const std::string id = _pages.add(session);
    if (id.empty()) {
        refuse(response, statusTooMany, "Too many pages are open; close one and reload this one.");
        return;
    }
    response.set_chunked_content_provider(
        "text/event-stream",
        [this, id, session](std::size_t offset, httplib::DataSink& sink) {
            if (offset == 0) {
                const std::string first = "event: session\ndata: {\"session\":\"" + id + "\"}\n\n";
                return sink.write(first.data(), first.size());
            }
            return sendEvents(*session, sink);
        },
        [this, id](bool /*isComplete*/) { _pages.remove(id); });
}

/// Sends the messages of the server, or a comment, which fails if the page is gone.
bool Run::sendEvents(PageSession& session, httplib::DataSink& sink) const {
    const bool isLast = session.hasEnded();
    std::string events;
    for (const std::string& message : session.receive(longestWait)) {
        events.append("data: ").append(message).append("\n\n");
    }
    if (events.empty() && (isLast || _isStopping)) {
        sink.done();
        return true;
    }
    if (events.empty()) {
        events = ": \n\n";
    }
    return sink.write(events.data(), events.size());
}

void Run::acceptMessage(const httplib::Request& request, httplib::Response& response) const {
    const auto session = _pages.find(request.get_param_value("session"));
    if (!session) {
        refuse(response, statusNotFound, "The session has ended; open '/events' again.");
        return;
    }
    const PageMessage message = _requests.checked(request.body);
    if (!message.refusal.empty()) {
        refuse(response, statusForbidden, message.refusal);
        return;
    }
    session->send(message.text);
    response.status = statusNoContent;
}

}  // namespace

CommandOutput HTTPGateway::serve(const Site& site) const {
    return Run(site).serve();
}

}  // namespace neb::nebsc

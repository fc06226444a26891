// PageRequests.h - what a page may ask: requests that read the repository that it shows.
//
//     const PageRequests requests("/w/demo");
//     const PageMessage message = requests.checked(R"({"jsonrpc":"2.0","id":1, …})");
//     if (message.refusal.empty()) { session.send(message.text); }
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <utility>

namespace neb::nebsc {

/// A message for the server, or the reason why the page may not send it.
struct PageMessage {
    /// Empty if it is refused.
    std::string text{};
    /// One sentence; empty if it is not refused.
    std::string refusal{};
};

/// Checks the JSON-RPC messages of a page, and completes them with the location of the repository.
/// Immutable; thread-safe.
class PageRequests {
public:
    /// `location` is the absolute path of the repository.
    explicit PageRequests(std::string location) : _location(std::move(location)) {}

    /// Accepts the methods of docs/browse.md only. A request must be of a type from 1000 on that
    /// reads and asks no server, and its absolute paths must lie in the repository. Its source tree
    /// is replaced.
    [[nodiscard]] PageMessage checked(std::string_view text) const;

private:
    /// Completes the request in the params of a message. Returns a sentence if it is refused.
    [[nodiscard]] std::string completeRequest(nlohmann::ordered_json& params) const;
    [[nodiscard]] std::string completeOpen(nlohmann::ordered_json& params) const;
    [[nodiscard]] std::string completeWatch(nlohmann::ordered_json& params) const;
    [[nodiscard]] std::string accept(nlohmann::ordered_json& params) const;

    struct Method;
    static const Method methods[];

    std::string _location;
};

}  // namespace neb::nebsc

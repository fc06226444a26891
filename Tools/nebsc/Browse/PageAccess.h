// PageAccess.h - decides which requests the HTTP server of `nebsc browse` accepts.
//
// Every process of the machine, and every page that the browser shows, can connect to a port on the
// loopback interface. The URL that nebsc prints has a random token. It opens a page that has a
// random cookie from then on, which the browser sends to 127.0.0.1 only, but to all its ports.
#pragma once

#include <string>
#include <string_view>

namespace neb::nebsc {

/// The headers of an HTTP request that decide; empty if it has none.
struct PageRequestHeaders {
    std::string host{};
    std::string origin{};
    /// Sec-Fetch-Site (Fetch Metadata Request Headers): "same-origin", "none" if the user typed
    /// the address, "cross-site" …
    std::string site{};
    std::string cookies{};
};

/// The secrets of one server. Immutable; thread-safe.
class PageAccess {
public:
    /// Makes new secrets. Throws std::system_error if the system has no random numbers.
    explicit PageAccess(int port);

    /// "http://127.0.0.1:PORT"
    [[nodiscard]] std::string origin() const { return "http://" + _host; }
    /// The URL that opens the page.
    [[nodiscard]] std::string url() const { return origin() + "/?token=" + _token; }
    [[nodiscard]] bool isToken(std::string_view text) const;
    /// The value of the header Set-Cookie.
    [[nodiscard]] std::string newCookie() const;

    /// Returns why a request with the token is refused, as a sentence; empty if it is addressed to
    /// this server, and no script of another site sent it. It may come from a page of another site,
    /// such as a file that leads to the URL.
    [[nodiscard]] std::string refusalToOpen(const PageRequestHeaders& headers) const;
    /// Returns why any other request is refused; empty if it is addressed to this server, by the
    /// user or by one of its own pages, and has the cookie.
    [[nodiscard]] std::string refusal(const PageRequestHeaders& headers) const;

private:
    std::string _host;
    /// The cookies of a host are sent to all its ports; the name tells them apart.
    std::string _cookieName;
    std::string _token, _cookieValue;
};

}  // namespace neb::nebsc

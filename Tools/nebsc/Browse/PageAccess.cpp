#include "Browse/PageAccess.h"

#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

constexpr std::size_t secretBytes = 24;
constexpr std::string_view foreignPage = "Pages of other sites cannot use this server.";

std::string newSecret() {
    std::array<unsigned char, secretBytes> bytes{};
    if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw std::system_error(errno, std::generic_category(), "getrandom");
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

/// Compares in a time that does not depend on where the texts differ.
bool isSameSecret(std::string_view text, std::string_view secret) {
    if (text.size() != secret.size()) {
        return false;
    }
    unsigned difference = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        difference |= static_cast<unsigned char>(text[i]) ^ static_cast<unsigned char>(secret[i]);
    }
    return difference == 0;
}

/// Returns the value of a cookie in the header Cookie: "a=1; b=2".
std::string_view cookieIn(std::string_view cookies, std::string_view name) {
    std::string_view value;
    forEachField(cookies, ';', [&](std::string_view cookie) {
        cookie.remove_prefix(std::min(cookie.find_first_not_of(' '), cookie.size()));
        if (cookie.starts_with(name) && cookie.substr(name.size()).starts_with('=')) {
            value = cookie.substr(name.size() + 1);
        }
    });
    return value;
}

}  // namespace

PageAccess::PageAccess(int port)
    : _host("127.0.0.1:" + std::to_string(port)),
      _cookieName("nebsc-" + std::to_string(port)),
      _token(newSecret()),
      _cookieValue(newSecret()) {}

bool PageAccess::isToken(std::string_view text) const {
    return isSameSecret(text, _token);
}

std::string PageAccess::newCookie() const {
    return _cookieName + "=" + _cookieValue + "; HttpOnly; SameSite=Strict; Path=/";
}

/// A page of another name that resolves to this address has another Host. A script of another
/// origin has another Origin.
std::string PageAccess::refusalToOpen(const PageRequestHeaders& headers) const {
    if (headers.host != _host) {
        return "The address of this server is " + origin() + ".";
    }
    const bool isOwn = headers.origin.empty() || headers.origin == origin();
    return isOwn ? "" : std::string(foreignPage);
}

/// What a page of another origin loads without a script has another site.
std::string PageAccess::refusal(const PageRequestHeaders& headers) const {
    if (std::string refused = refusalToOpen(headers); !refused.empty()) {
        return refused;
    }
    if (!headers.site.empty() && headers.site != "same-origin" && headers.site != "none") {
        return std::string(foreignPage);
    }
    return isSameSecret(cookieIn(headers.cookies, _cookieName), _cookieValue)
               ? ""
               : "Open the URL that 'nebsc browse' has printed; it has the token.";
}

}  // namespace neb::nebsc

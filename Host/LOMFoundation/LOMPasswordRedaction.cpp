#include "LOMFoundation/LOMPasswordRedaction.h"

#include <algorithm>

namespace neb {

namespace {

constexpr std::string_view redacted = "<redacted>";
constexpr std::size_t minimumTokenLength = 20;
constexpr auto npos = std::string_view::npos;

bool isControlOrBlank(char character) {
    return static_cast<unsigned char>(character) <= ' ';
}

/// Returns the part of a URL between "://" and the path. `text` starts after "://".
std::string_view authorityAt(std::string_view text) {
    const auto* end = std::find_if(text.begin(), text.end(), [](char character) {
        return isControlOrBlank(character) || character == '/' || character == '?' ||
               character == '#';
    });
    return {text.begin(), end};
}

/// Returns `name` or `name:password` with the secret parts redacted.
std::string withoutSecret(std::string_view userInformation) {
    const std::size_t colon = userInformation.find(':');
    const std::string_view name = userInformation.substr(0, colon);
    std::string text(name.size() >= minimumTokenLength ? redacted : name);
    if (colon != npos) {
        text += ':';
        text += colon + 1 < userInformation.size() ? redacted : std::string_view();
    }
    return text;
}

/// Whether the text after the colon of a host is a port or empty. Otherwise it may be a password.
bool isPort(std::string_view text) {
    const std::size_t end = text.find_first_not_of("0123456789");
    constexpr std::string_view charactersAfterPort = "/?#'\"`)>],;:.";
    return end == npos || isControlOrBlank(text[end]) ||
           charactersAfterPort.find(text[end]) != npos;
}

/// Returns the length of the user information of a URL, npos if it has none. `text` starts after
/// "://" and continues to the end of the line.
std::size_t lengthOfUserInformation(std::string_view text) {
    const std::string_view authority = authorityAt(text);
    const std::size_t at = authority.rfind('@');
    if (at != npos) {
        return at;
    }
    // The port of "[::1]:80" follows the bracket.
    const std::size_t host = authority.starts_with('[') ? authority.find(']') : 0;
    const std::size_t colon = authority.find(':', host == npos ? 0 : host);
    if (colon == npos || isPort(text.substr(colon + 1))) {
        return npos;
    }
    const std::size_t lastAt = text.rfind('@');
    return lastAt != npos && lastAt > colon ? lastAt : npos;
}

/// Texts before a host name. For URLs without user information, such as git://, git treats a user
/// name and password as part of the host.
constexpr std::string_view textsBeforeHosts[] = {
    "unable to look up ",       "Unable to look up ",
    "unable to connect to ",    "unable to connect a socket to ",
    "Could not resolve host: ", "Could not resolve hostname ",
    "connect to host ",         "Failed to connect to ",
};

/// The text after a host name at the start of a line of ssh.
constexpr std::string_view sshRefusal = ": Permission denied (";

/// Returns the line with the password of `name:password@host` at `position` redacted.
std::string withoutPasswordOfHostAt(std::string_view line, std::size_t position) {
    const std::string_view rest = line.substr(position);
    const std::string_view address(rest.begin(),
                                   std::find_if(rest.begin(), rest.end(), isControlOrBlank));
    const std::size_t at = address.rfind('@');
    const std::size_t colon = address.find(':');
    if (at == npos || colon > at || address.substr(colon).starts_with("://")) {
        return std::string(line);
    }
    return std::string(line.substr(0, position))
        .append(withoutSecret(address.substr(0, at)))
        .append(rest.substr(at));
}

/// Returns the line with the passwords before hosts outside of URLs redacted.
std::string withoutPasswordsOfHosts(std::string_view line) {
    std::string shown(line);
    if (line.find(sshRefusal) != npos) {
        shown = withoutPasswordOfHostAt(shown, 0);
    }
    for (const std::string_view start : textsBeforeHosts) {
        if (const std::size_t position = shown.find(start); position != npos) {
            shown = withoutPasswordOfHostAt(shown, position + start.size());
        }
    }
    return shown;
}

void appendLine(std::string& shown, std::string_view line) {
    if (line.find('@') == npos) {
        shown += line;
        return;
    }
    const std::string withoutHosts = withoutPasswordsOfHosts(line);
    line = withoutHosts;
    const char* const lastAt = line.data() + line.rfind('@');
    constexpr std::string_view separator = "://";
    // No password follows the last "@". Searching for it in each step would take quadratic time.
    for (std::size_t position = line.find(separator); position != npos && line.data() <= lastAt;
         position = line.find(separator)) {
        shown += line.substr(0, position + separator.size());
        line.remove_prefix(position + separator.size());
        if (const std::size_t length = lengthOfUserInformation(line); length != npos) {
            shown += withoutSecret(line.substr(0, length));
            line.remove_prefix(length);
        }
    }
    shown += line;
}

}  // namespace

std::string textWithoutPasswords(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        appendLine(shown, text.substr(0, end));
        shown += text.substr(end, 1);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return shown;
}

}  // namespace neb

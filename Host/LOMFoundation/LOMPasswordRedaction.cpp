#include "LOMFoundation/LOMPasswordRedaction.h"

#include <algorithm>

#include "Platform/Text.h"

namespace neb {

namespace {

constexpr std::string_view redacted = "<redacted>";
constexpr std::size_t minimumTokenLength = 20;
constexpr std::string_view encodedAt = "%40";
constexpr auto npos = std::string_view::npos;

bool isControlOrBlank(char character) {
    return static_cast<unsigned char>(character) <= ' ';
}

/// The schemes of servers. Their URLs are found even if their slashes are mistyped.
constexpr std::string_view serverSchemes[] = {"http", "https", "ssh", "git", "ftp", "ftps", "svn"};

/// Whether the text ends with the scheme of a server, such as "HTTPS" or "svn+ssh".
bool endsWithServerScheme(std::string_view text) {
    const auto* begin =
        std::find_if_not(text.rbegin(), text.rend(), [](char character) {
            return lowercaseASCII(character) >= 'a' && lowercaseASCII(character) <= 'z';
        }).base();
    const std::string word = lowercaseASCII(std::string_view(begin, text.end()));
    return std::find(std::begin(serverSchemes), std::end(serverSchemes), word) !=
           std::end(serverSchemes);
}

/// Returns where the user information or host begins in the URL whose scheme is before the colon;
/// npos if that is no URL.
std::size_t positionOfAuthority(std::string_view line, std::size_t colon) {
    constexpr std::string_view separator = "://";
    if (endsWithServerScheme(line.substr(0, colon))) {
        return std::min(line.find_first_not_of("/\\", colon + 1), line.size());
    }
    return line.substr(colon).starts_with(separator) ? colon + separator.size() : npos;
}

/// Returns the position of the last "@"; of the last encoded one if there is no other.
std::size_t positionOfLastAt(std::string_view text) {
    const std::size_t at = text.rfind('@');
    return at != npos ? at : text.rfind(encodedAt);
}

/// Returns the part of a URL from positionOfAuthority() to the path, which `text` begins with.
std::string_view authorityAt(std::string_view text) {
    const auto* end = std::find_if(text.begin(), text.end(), [](char character) {
        return isControlOrBlank(character) || character == '/' || character == '?' ||
               character == '#';
    });
    return {text.begin(), end};
}

/// Returns the first colon, or the first encoded one if there is no other; empty without one.
std::string_view firstColon(std::string_view userInformation) {
    if (const std::size_t colon = userInformation.find(':'); colon != npos) {
        return userInformation.substr(colon, 1);
    }
    const std::size_t encoded = std::min(userInformation.find("%3A"), userInformation.find("%3a"));
    return userInformation.substr(std::min(encoded, userInformation.size())).substr(0, 3);
}

/// Returns `name` or `name:password` with the secret parts redacted.
std::string withoutSecret(std::string_view userInformation) {
    const std::string_view colon = firstColon(userInformation);
    const std::string_view name(userInformation.begin(), colon.begin());
    std::string text(name.size() >= minimumTokenLength ? redacted : name);
    text += colon;
    if (!colon.empty() && name.size() + colon.size() < userInformation.size()) {
        text += redacted;
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

/// Returns the length of the user information of a URL, npos if it has none. `text` begins with
/// the authority and continues to the end of the line.
std::size_t lengthOfUserInformation(std::string_view text, std::string_view authority) {
    const std::size_t at = positionOfLastAt(authority);
    if (at != npos) {
        return at;
    }
    // The port of "[::1]:80" follows the bracket.
    const std::size_t host = authority.starts_with('[') ? authority.find(']') : 0;
    const std::size_t colon = authority.find(':', host == npos ? 0 : host);
    if (colon == npos || isPort(text.substr(colon + 1))) {
        return npos;
    }
    const std::size_t lastAt = positionOfLastAt(text);
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

/// Returns the line with the passwords of URLs redacted.
std::string withoutPasswordsOfURLs(std::string_view line) {
    // No password follows the last "@". Searching for it at each URL would take quadratic time.
    const std::size_t end = std::max(line.rfind('@') + 1, line.rfind(encodedAt) + 1);
    std::string shown;
    std::size_t copied = 0;
    std::size_t searched = 0;  // the end of the last authority
    for (std::size_t colon = line.find(':'); colon < end; colon = line.find(':', colon + 1)) {
        const std::size_t position = positionOfAuthority(line, colon);
        if (position == npos || position < searched) {
            continue;
        }
        const std::string_view rest = line.substr(position);
        const std::string_view authority = authorityAt(rest);
        searched = position + authority.size();
        if (const std::size_t length = lengthOfUserInformation(rest, authority); length != npos) {
            shown += line.substr(copied, position - copied);
            shown += withoutSecret(rest.substr(0, length));
            colon = copied = position + length;
        }
    }
    return shown.append(line.substr(copied));
}

void appendLine(std::string& shown, std::string_view line) {
    const bool mayHavePassword = positionOfLastAt(line) != npos;
    shown += mayHavePassword ? withoutPasswordsOfHosts(withoutPasswordsOfURLs(line)) : line;
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

#include "LOMFoundation/LOMPasswordRedaction.h"

#include <algorithm>

namespace neb {

namespace {

constexpr std::string_view redacted = "<redacted>";
constexpr std::size_t shortestToken = 20;
constexpr auto nowhere = std::string_view::npos;

bool isControlOrBlank(char character) {
    return static_cast<unsigned char>(character) <= ' ';
}

/// A user name and a password, as long as no "@" ends them: what stands between "://" and the path.
std::string_view authorityAt(std::string_view text) {
    const auto* end = std::find_if(text.begin(), text.end(), [](char character) {
        return isControlOrBlank(character) || character == '/' || character == '?' ||
               character == '#';
    });
    return {text.begin(), end};
}

/// `name` or `name:password` without what is secret.
std::string withoutSecret(std::string_view userInformation) {
    const std::size_t colon = userInformation.find(':');
    const std::string_view name = userInformation.substr(0, colon);
    std::string text(name.size() >= shortestToken ? redacted : name);
    if (colon != nowhere) {
        text += ':';
        text += colon + 1 < userInformation.size() ? redacted : std::string_view();
    }
    return text;
}

/// Whether the text behind a host's colon is a port, or nothing: then no password begins there.
bool isPort(std::string_view text) {
    const std::size_t end = text.find_first_not_of("0123456789");
    constexpr std::string_view endsAPort = "/?#'\"`)>],;:.";
    return end == nowhere || isControlOrBlank(text[end]) || endsAPort.find(text[end]) != nowhere;
}

/// The length of the user information that `text`, which stands behind "://" and goes on to the
/// line's end, begins with; npos when there is none.
std::size_t lengthOfUserInformation(std::string_view text) {
    const std::string_view authority = authorityAt(text);
    const std::size_t at = authority.rfind('@');
    if (at != nowhere) {
        return at;
    }
    // "[::1]:80" has its port behind the bracket
    const std::size_t host = authority.starts_with('[') ? authority.find(']') : 0;
    const std::size_t colon = authority.find(':', host == nowhere ? 0 : host);
    if (colon == nowhere || isPort(text.substr(colon + 1))) {
        return nowhere;
    }
    const std::size_t lastAt = text.rfind('@');
    return lastAt != nowhere && lastAt > colon ? lastAt : nowhere;
}

/// Behind these words stands a host's name. Where a URL has no place for a user, git takes one for
/// a part of it.
constexpr std::string_view wordsBeforeHosts[] = {
    "unable to look up ",       "Unable to look up ",
    "unable to connect to ",    "unable to connect a socket to ",
    "Could not resolve host: ", "Could not resolve hostname ",
    "connect to host ",         "Failed to connect to ",
};

/// ssh begins a line with the name that it was given.
constexpr std::string_view refusalOfSSH = ": Permission denied (";

/// The line without the password of the `name:password@host` that stands at the place.
std::string withoutPasswordOfHostAt(std::string_view line, std::size_t place) {
    const std::string_view rest = line.substr(place);
    const std::string_view word(rest.begin(),
                                std::find_if(rest.begin(), rest.end(), isControlOrBlank));
    const std::size_t at = word.rfind('@');
    const std::size_t colon = word.find(':');
    if (at == nowhere || colon > at || word.substr(colon).starts_with("://")) {
        return std::string(line);
    }
    return std::string(line.substr(0, place))
        .append(withoutSecret(word.substr(0, at)))
        .append(rest.substr(at));
}

/// The line without the passwords that stand before hosts outside of URLs.
std::string withoutPasswordsOfHosts(std::string_view line) {
    std::string shown(line);
    if (line.find(refusalOfSSH) != nowhere) {
        shown = withoutPasswordOfHostAt(shown, 0);
    }
    for (const std::string_view words : wordsBeforeHosts) {
        if (const std::size_t place = shown.find(words); place != nowhere) {
            shown = withoutPasswordOfHostAt(shown, place + words.size());
        }
    }
    return shown;
}

void appendLine(std::string& shown, std::string_view line) {
    if (line.find('@') == nowhere) {
        shown += line;
        return;
    }
    const std::string withoutHosts = withoutPasswordsOfHosts(line);
    line = withoutHosts;
    const char* const lastAt = line.data() + line.rfind('@');
    constexpr std::string_view mark = "://";
    // Behind the last "@" there are no passwords, and looking for it each time would take long.
    for (std::size_t place = line.find(mark); place != nowhere && line.data() <= lastAt;
         place = line.find(mark)) {
        shown += line.substr(0, place + mark.size());
        line.remove_prefix(place + mark.size());
        if (const std::size_t length = lengthOfUserInformation(line); length != nowhere) {
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

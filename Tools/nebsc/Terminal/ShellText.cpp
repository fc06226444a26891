#include "Terminal/ShellText.h"

#include <algorithm>
#include <cctype>

#include "LOMFoundation/LOMPasswordRedaction.h"
#include "Platform/Text.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

bool isPlain(char character) {
    constexpr std::string_view plainMarks = "_@%+:,./-^";
    return std::isalnum(static_cast<unsigned char>(character)) != 0 ||
           plainMarks.find(character) != std::string_view::npos;
}

std::string inSingleQuotes(std::string_view text) {
    std::string quoted = "'";
    for (const char character : text) {
        if (character == '\'') {
            quoted += "'\\''";
        } else {
            quoted += character;
        }
    }
    return quoted + "'";
}

/// Returns a format with which printf(1) prints the text.
std::string printfFormat(std::string_view text) {
    std::string format;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '%') {
            format += "%%";
        } else if (byte < ' ' || byte > '~' || character == '\\' || character == '\'' ||
                   character == '!' || (character == '-' && format.empty())) {
            format += octalEscape(character);
        } else {
            format += character;
        }
    }
    return format;
}

bool endsWithScheme(std::string_view text, std::string_view scheme) {
    return text.size() >= scheme.size() &&
           equalIgnoringASCIICase(text.substr(text.size() - scheme.size()), scheme);
}

/// Returns whether the text ends with the scheme of an HTTP or FTP URL.
bool endsWithHTTPScheme(std::string_view text) {
    return endsWithScheme(text, "http") || endsWithScheme(text, "https") ||
           endsWithScheme(text, "ftp") || endsWithScheme(text, "ftps");
}

}  // namespace

std::string shellQuoted(std::string_view text) {
    if (!text.empty() && std::all_of(text.begin(), text.end(), isPlain)) {
        return std::string(text);
    }
    if (printable(text) == text) {
        return inSingleQuotes(text);
    }
    const std::size_t length = text.find_last_not_of('\n') + 1;
    return "\"$(printf '" + printfFormat(text.substr(0, length)) + "')" +
           std::string(text.substr(length)) + "\"";
}

/// textWithoutPasswords() has replaced all passwords, even those that contain "/". The colon shows
/// where a name and a replaced password remain.
std::string withoutSecrets(std::string_view text) {
    constexpr std::string_view separator = "://";
    const std::string withoutPasswords = textWithoutPasswords(text);
    std::string_view rest = withoutPasswords;
    std::string clean;
    for (std::size_t offset = rest.find(separator); offset != std::string_view::npos;
         offset = rest.find(separator)) {
        const std::string_view before = rest.substr(0, offset);
        clean.append(before).append(separator);
        const bool isHTTP = endsWithHTTPScheme(before);
        rest.remove_prefix(offset + separator.size());
        const std::string_view authority = rest.substr(0, rest.find_first_of("/?# \t\r\n'\""));
        const std::size_t at = authority.rfind('@');
        if (at != std::string_view::npos &&
            (isHTTP || authority.substr(0, at).find(':') != std::string_view::npos)) {
            clean += "***";
            rest.remove_prefix(at);
        }
    }
    return clean.append(rest);
}

}  // namespace neb::nebsc

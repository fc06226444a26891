#include "Terminal/ShellText.h"

#include <algorithm>

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

std::string octal(char character) {
    const auto byte = static_cast<unsigned char>(character);
    const auto digit = [byte](unsigned int shift) {
        return static_cast<char>('0' + ((byte >> shift) & 7U));
    };
    return {'\\', digit(6), digit(3), digit(0)};
}

/// The text as a format of printf(1), which writes it again.
std::string asFormat(std::string_view text) {
    std::string format;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '%') {
            format += "%%";
        } else if (byte < ' ' || byte > '~' || character == '\\' || character == '\'' ||
                   character == '!' || (character == '-' && format.empty())) {
            format += octal(character);
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

/// Whether a URL whose scheme ends the text asks for credentials by what stands before its "@".
bool asksOverHTTP(std::string_view before) {
    return endsWithScheme(before, "http") || endsWithScheme(before, "https") ||
           endsWithScheme(before, "ftp") || endsWithScheme(before, "ftps");
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
    return "\"$(printf '" + asFormat(text.substr(0, length)) + "')" +
           std::string(text.substr(length)) + "'";
}

/// What is a password has gone by then, one with a "/" in it too; what is left of a name and of a
/// mark in its place is told by its colon.
std::string withoutSecrets(std::string_view words) {
    constexpr std::string_view mark = "://";
    const std::string withoutPasswords = textWithoutPasswords(words);
    std::string_view text = withoutPasswords;
    std::string clean;
    for (std::size_t place = text.find(mark); place != std::string_view::npos;
         place = text.find(mark)) {
        const std::string_view before = text.substr(0, place);
        clean.append(before).append(mark);
        const bool isHTTP = asksOverHTTP(before);
        text.remove_prefix(place + mark.size());
        const std::string_view authority = text.substr(0, text.find_first_of("/?# \t\r\n''"));
        const std::size_t at = authority.rfind('@');
        if (at != std::string_view::npos &&
            (isHTTP || authority.substr(0, at).find(':') != std::string_view::npos)) {
            clean += "***";
            text.remove_prefix(at);
        }
    }
    return clean.append(text);
}

}  // namespace neb::nebsc

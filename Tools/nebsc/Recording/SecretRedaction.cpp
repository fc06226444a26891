#include "Recording/SecretRedaction.h"

#include <algorithm>
#include <array>
#include <optional>

#include "JSON/Base64.h"
#include "LOMFoundation/LOMPasswordRedaction.h"
#include "Platform/Text.h"
#include "Recording/RequestText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

constexpr auto npos = std::string_view::npos;
constexpr char replacement = 'x';

bool isTokenCharacter(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z') || character == '_' || character == '-';
}

void replace(std::string& text, std::size_t begin, std::size_t end) {
    std::fill(text.begin() + static_cast<std::ptrdiff_t>(begin),
              text.begin() + static_cast<std::ptrdiff_t>(end), replacement);
}

/// What the base redaction replaces has another length there: finds it between the texts around.
void replacePasswords(std::string& text) {
    constexpr std::string_view mark = "<redacted>";
    const std::string shown = textWithoutPasswords(text);
    if (shown == text) {
        return;
    }
    std::string_view rest = shown;
    std::size_t position = 0;
    for (std::size_t at = rest.find(mark); at != npos; at = rest.find(mark)) {
        position += at;  // the text before is the same
        rest.remove_prefix(at + mark.size());
        const std::string_view after = rest.substr(0, rest.find(mark));
        const std::size_t end =
            after.size() == rest.size() ? text.size() - after.size() : text.find(after, position);
        replace(text, position, std::max(position, std::min(end, text.size())));
        position = std::min(end, text.size());
    }
}

/// The names of header lines whose value is secret, in lower case.
constexpr std::array<std::string_view, 5> secretHeaders = {
    "authorization:", "cookie:", "private-token:", "job-token:", "api-key:"};

/// The ends of names of settings whose value is secret, in lower case.
constexpr std::array<std::string_view, 8> secretSettings = {
    "extraheader", "password", "passwd", "smtppass", ".pass", "token", "secret", "apikey"};

/// The beginnings of access tokens. What follows has at least this many characters.
constexpr std::array<std::string_view, 10> tokenStarts = {
    "ghp_", "gho_", "ghu_", "ghs_", "ghr_", "github_pat_", "glpat-", "xoxb-", "xoxp-", "AKIA"};
constexpr std::size_t leastTokenLength = 16;

void replaceHeaders(std::string& text, const std::string& lower) {
    for (const std::string_view header : secretHeaders) {
        for (std::size_t at = lower.find(header); at != npos;
             at = lower.find(header, at + header.size())) {
            std::size_t begin = at + header.size();
            begin = std::min(text.find_first_not_of(' ', begin), text.size());
            const std::size_t end =
                std::min(text.find_first_of(std::string_view("\r\n\0\"'", 5), begin), text.size());
            replace(text, begin, end);
        }
    }
}

/// Whether a name of a setting, with at least one dot, ends at the position.
bool isSettingBefore(std::string_view text, std::size_t end) {
    const std::size_t begin = text.find_last_of(std::string_view("\n\0 \t", 4), end - 1) + 1;
    return text.substr(begin, end - begin).find('.') != npos;
}

/// The separator is "=", or with "-z" a line end, and then a NUL ends the value.
void replaceSettings(std::string& text, const std::string& lower) {
    const bool hasNUL = text.find('\0') != npos;
    for (const std::string_view name : secretSettings) {
        for (std::size_t at = lower.find(name); at != npos; at = lower.find(name, at + 1)) {
            const std::size_t end = at + name.size();
            const char separator = end < text.size() ? text[end] : '\0';
            const bool isZeroTerminated = separator == '\n' && hasNUL;
            if ((separator != '=' && !isZeroTerminated) || !isSettingBefore(lower, end)) {
                continue;
            }
            replace(text, end + 1,
                    std::min(text.find_first_of(isZeroTerminated ? std::string_view("\0", 1)
                                                                 : std::string_view("\n\0", 2),
                                                end + 1),
                             text.size()));
        }
    }
}

void replaceTokens(std::string& text) {
    for (const std::string_view start : tokenStarts) {
        for (std::size_t at = text.find(start); at != npos; at = text.find(start, at + 1)) {
            const std::size_t begin = at + start.size();
            std::size_t end = begin;
            while (end < text.size() && isTokenCharacter(text[end])) {
                ++end;
            }
            if (end - begin >= leastTokenLength) {
                replace(text, begin, end);
            }
        }
    }
}

/// Returns the bytes of a string or of {"base64": "…"}; absent for other JSON.
std::optional<std::string> bytesIn(const JSON& json) {
    if (json.is_string()) {
        return json.get<std::string>();
    }
    const bool isBase64 = json.is_object() && json.size() == 1 && json.contains("base64") &&
                          json["base64"].is_string();
    return isBase64 ? bytesOfBase64(json["base64"].get_ref<const std::string&>()) : std::nullopt;
}

void replaceAll(JSON& json) {
    if (const auto bytes = bytesIn(json)) {
        json = std::string(bytes->size(), replacement);
    }
}

/// Returns the elements of an array member; an empty array without one.
JSON& elementsOf(JSON& object, const char* name, JSON& none) {
    const auto member = object.find(name);
    return member != object.end() && member->is_array() ? *member : none;
}

/// Replaces what only the other members of a child process show to be secret: the values of
/// variables, and the arguments that follow the name of a setting and its output, as
/// `git config NAME` takes and prints them.
void removeSecretsOfChild(JSON& object) {
    JSON none = JSON::array();
    bool isSecret = false;
    for (JSON& argument : elementsOf(object, "arguments", none)) {
        if (isSecret) {
            replaceAll(argument);
        }
        const auto bytes = bytesIn(argument);
        isSecret = isSecret || (bytes && isSecretSetting(*bytes));
    }
    if (const auto output = object.find("output"); isSecret && output != object.end()) {
        replaceAll(*output);
    }
    for (JSON& variable : elementsOf(object, "set", none)) {
        if (const auto bytes = bytesIn(variable)) {
            variable = jsonOfBytes(variableWithoutSecret(*bytes));
        }
    }
}

}  // namespace

std::string withoutSecretBytes(std::string_view bytes) {
    std::string text(bytes);
    replacePasswords(text);
    const std::string lower = lowercaseASCII(text);
    replaceHeaders(text, lower);
    replaceSettings(text, lower);
    replaceTokens(text);
    return text;
}

std::string variableWithoutSecret(std::string_view variable) {
    constexpr std::array<std::string_view, 8> secretNames = {
        "TOKEN", "PASSWORD", "PASSWD", "SECRET", "CREDENTIAL", "COOKIE", "API_KEY", "PRIVATE_KEY"};
    const std::size_t equals = std::min(variable.find('='), variable.size());
    const std::string_view name = variable.substr(0, equals);
    std::string text = withoutSecretBytes(variable);
    // The name of a setting is in another variable, GIT_CONFIG_KEY_0; git-config(1).
    const bool isSecret = std::ranges::any_of(
        secretNames, [name](std::string_view part) { return name.find(part) != npos; });
    if (isSecret && equals < text.size()) {
        replace(text, equals + 1, text.size());
    }
    return text;
}

bool isSecretSetting(std::string_view text) {
    const std::string lower = lowercaseASCII(text);
    return text.find('.') != npos && text.find_first_of(" =\n") == npos &&
           std::ranges::any_of(secretSettings,
                               [&lower](std::string_view name) { return lower.ends_with(name); });
}

void removeSecretsFrom(JSON& json) {
    if (const auto bytes = bytesIn(json)) {
        json = jsonOfBytes(withoutSecretBytes(*bytes));
        return;
    }
    if (json.is_object()) {
        removeSecretsOfChild(json);
    }
    const bool isSecret = json.is_object() && std::ranges::any_of(json, [](const auto& member) {
                              return member.is_string() &&
                                     isSecretSetting(member.template get_ref<const std::string&>());
                          });
    for (auto& [name, member] : json.items()) {
        const bool isValue = isSecret && name.find("Value") != npos;
        if (const auto bytes = isValue ? bytesIn(member) : std::nullopt) {
            member = std::string(bytes->size(), replacement);
        } else if (member.is_string() || member.is_structured()) {
            removeSecretsFrom(member);
        }
    }
}

}  // namespace neb::nebsc

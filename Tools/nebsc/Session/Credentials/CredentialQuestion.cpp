#include "Session/Credentials/CredentialQuestion.h"

#include <algorithm>
#include <iterator>

#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

struct KindName {
    CredentialKind kind;
    std::string_view name;
};
constexpr KindName kindNames[] = {
    {CredentialKind::name, "name"},       {CredentialKind::password, "password"},
    {CredentialKind::token, "token"},     {CredentialKind::passphrase, "passphrase"},
    {CredentialKind::hostKey, "hostKey"}, {CredentialKind::secondFactor, "secondFactor"},
    {CredentialKind::other, "other"},
};

struct Wording {
    std::string_view text;  // in lower case
    CredentialKind kind;
};

/// The first row whose text the prompt contains decides.
constexpr Wording wordings[] = {
    {"continue connecting", CredentialKind::hostKey},
    {"or the fingerprint", CredentialKind::hostKey},
    {"passphrase", CredentialKind::passphrase},
    {"pin for ", CredentialKind::passphrase},
    {"username", CredentialKind::name},
    {"user name", CredentialKind::name},
    {"login:", CredentialKind::name},
    {"verification code", CredentialKind::secondFactor},
    {"security code", CredentialKind::secondFactor},
    {"one-time", CredentialKind::secondFactor},
    {"otp", CredentialKind::secondFactor},
    {"passcode", CredentialKind::secondFactor},
    {"second factor", CredentialKind::secondFactor},
    {"two-factor", CredentialKind::secondFactor},
    {"2fa", CredentialKind::secondFactor},
    {"authenticator", CredentialKind::secondFactor},
    {"user presence", CredentialKind::secondFactor},
    {"token", CredentialKind::token},
    {"password", CredentialKind::password},
};

/// Reads "…'https://ann@host/path': " of git.
void readURL(std::string_view prompt, CredentialQuestion& question) {
    const std::size_t scheme = prompt.find("://");
    const std::size_t start = prompt.rfind('\'', scheme);
    const std::size_t end = prompt.rfind('\'');
    if (scheme == std::string_view::npos || start == std::string_view::npos || end <= scheme) {
        return;
    }
    std::string url(prompt.substr(start + 1, end - start - 1));
    const std::size_t authority = url.find("://") + 3;
    const std::size_t path = std::min(url.find('/', authority), url.size());
    const std::size_t at = url.rfind('@', path);
    if (at != std::string::npos && at >= authority) {
        const std::string user = url.substr(authority, at - authority);
        question.user = user.substr(0, user.find(':'));
        url.erase(authority, at + 1 - authority);
    }
    question.url = url;
}

/// Reads "ann@host's password: " and "(ann@host) Verification code: " of ssh. Returns the rest.
std::string_view readHost(std::string_view prompt, CredentialQuestion& question) {
    constexpr std::string_view genitive = "'s password";
    std::size_t start = 0;
    std::size_t end = prompt.find(genitive);
    if (prompt.starts_with('(')) {
        start = 1;
        end = prompt.find(") ");
    }
    if (end == std::string_view::npos) {
        return prompt;
    }
    const std::string_view account = prompt.substr(start, end - start);
    const std::size_t at = account.rfind('@');
    if (at == std::string_view::npos || account.find(' ') != std::string_view::npos) {
        return prompt;
    }
    question.user = account.substr(0, at);
    question.url = "ssh://" + std::string(account.substr(at + 1));
    return prompt.substr(end);
}

/// Returns the kind that the first matching row names; absent if none matches.
std::optional<CredentialKind> kindOf(std::string_view text) {
    const auto* row =
        std::find_if(std::begin(wordings), std::end(wordings), [text](const Wording& candidate) {
            return text.find(candidate.text) != std::string_view::npos;
        });
    return row != std::end(wordings) ? std::optional(row->kind) : std::nullopt;
}

}  // namespace

std::string_view nameOfCredentialKind(CredentialKind kind) {
    return std::find_if(std::begin(kindNames), std::end(kindNames),
                        [kind](const KindName& row) { return row.kind == kind; })
        ->name;
}

bool isSecret(CredentialKind kind) {
    return kind != CredentialKind::name && kind != CredentialKind::hostKey;
}

CredentialQuestion credentialQuestionOf(std::string_view prompt) {
    CredentialQuestion question{.prompt = std::string(prompt)};
    readURL(prompt, question);
    const std::string text = lowercaseASCII(question.url ? prompt : readHost(prompt, question));
    // The name of a server or key, in quotes, says nothing about the kind.
    const std::string beforeName = text.substr(0, text.find(" '"));
    const auto kind = kindOf(beforeName);
    question.kind = kind ? *kind : kindOf(text).value_or(CredentialKind::other);
    return question;
}

}  // namespace neb::nebsc

// CredentialQuestion.h - what git or ssh asks for before it can reach a server.
//
//     credentialQuestionOf("Password for 'https://ann@host': ").kind;   // CredentialKind::password
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace neb::nebsc {

enum class CredentialKind : std::uint8_t {
    /// The name of the user.
    name,
    password,
    /// An access token instead of a password.
    token,
    /// The passphrase or PIN of a key.
    passphrase,
    /// Whether the key of an unknown ssh host is right: "yes", "no" or the fingerprint.
    hostKey,
    /// A code of a second device, or a touch of it.
    secondFactor,
    other,
};

/// Returns the name in the protocol: "hostKey". Thread-safe.
[[nodiscard]] std::string_view nameOfCredentialKind(CredentialKind kind);

/// Whether the answer must not be shown while it is typed. Thread-safe.
[[nodiscard]] bool isSecret(CredentialKind kind);

struct CredentialQuestion {
    CredentialKind kind = CredentialKind::other;
    /// As git or ssh wrote it.
    std::string prompt{};
    /// The server: "https://host/path", or "ssh://host". Without user and password. Absent if the
    /// prompt names none.
    std::optional<std::string> url{};
    /// The name of the user at the server; absent if the prompt names none.
    std::optional<std::string> user{};
};

/// Recognises the prompts of git-credential(7) and ssh(1), which are English for the children of
/// nebsc, and the usual ones of servers. Thread-safe.
[[nodiscard]] CredentialQuestion credentialQuestionOf(std::string_view prompt);

}  // namespace neb::nebsc

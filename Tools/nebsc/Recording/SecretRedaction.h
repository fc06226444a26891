// SecretRedaction.h - removes passwords and tokens from texts that are recorded.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// Returns the bytes with "x" in place of each byte of a secret, so that lengths stay the same:
/// - the passwords of URLs, see LOMPasswordRedaction.h,
/// - the values of header lines that authenticate, such as "Authorization: Basic …",
/// - the values of settings such as "http.extraHeader" or "sendemail.smtpPass", as
///   git-config(1) lists and takes them,
/// - access tokens that are known by their beginning, such as "ghp_…".
///
/// Linear time. Applied again, it changes nothing. Thread-safe, like all functions here.
[[nodiscard]] std::string withoutSecretBytes(std::string_view bytes);

/// Returns a variable "NAME=value" in the same way. The whole value is secret if the name says so,
/// as in "API_TOKEN".
[[nodiscard]] std::string variableWithoutSecret(std::string_view variable);

/// Returns whether the text is the name of a setting whose value is secret: "sendemail.smtpPass".
[[nodiscard]] bool isSecretSetting(std::string_view text);

/// Replaces the secrets in all strings of the JSON. In an object with the name of a secret setting,
/// the members whose names contain "Value" are replaced, too. In an object of a child process, the
/// "arguments" after such a name, the "output" of such a process and the variables in "set" are
/// replaced as described above.
void removeSecretsFrom(nlohmann::ordered_json& json);

}  // namespace neb::nebsc

// AskpassProgram.h - nebsc as the program that git and ssh start to ask for a password, and the
// messages between it and the CredentialService.
//
// The program sends "TOKEN\0PROMPT\0" and gets "+ANSWER", or nothing if it is not answered. The
// connection ends after the answer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// The names in the private folder of a CredentialService.
inline constexpr std::string_view askpassProgramName = "nebsc-askpass";
inline constexpr std::string_view askpassSocketName = "socket";
/// The environment variable with the token of the grant.
inline constexpr std::string_view askpassTokenVariable = "NEBSC_ASKPASS_TOKEN";

/// Whether this process was started as askpassProgramName. `program` is argv[0]; null is none.
[[nodiscard]] bool isAskpassProgram(const char* program);

/// Sends the prompt, which is the first argument, and prints the answer. Returns the exit status:
/// 0, or 1 without an answer.
[[nodiscard]] int runAskpassProgram(int argc, const char* const* argv) noexcept;

/// What the program sends.
struct AskpassMessage {
    std::string token;
    std::string prompt;
};

/// Reads the message of a program. Absent if it is not complete within 5 seconds, too long or not
/// of the right form.
[[nodiscard]] std::optional<AskpassMessage> receiveAskpassMessage(int connection);

/// Sends the answer. Returns whether that is possible.
[[nodiscard]] bool sendAskpassAnswer(int connection, const std::string& answer);

}  // namespace neb::nebsc

// CommonOptions.h - the options that every command accepts.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "CommandLine/Command.h"

namespace neb::nebsc {

/// The directory to start in. Accepted only before the command, as git's own commands give "-C"
/// other meanings after it.
inline constexpr std::string_view folderOption = "-C";
inline constexpr std::string_view plugInOption = "--plugin";
inline constexpr std::string_view jsonOption = "--json";
inline constexpr std::string_view colourOption = "--color";
inline constexpr std::string_view traceOption = "--trace";
inline constexpr std::string_view timeoutOption = "--timeout";
inline constexpr std::string_view recordOption = "--record";
inline constexpr std::string_view anonymousOption = "--anonymous";
inline constexpr std::string_view inspectOption = "--inspect";
inline constexpr std::string_view versionOption = "--version";
inline constexpr std::string_view helpOption = "--help";

/// Returns the options of all commands, "-C" first.
[[nodiscard]] std::span<const Parameter> commonOptions();

/// Returns the value of "--timeout"; absent without it. Throws a UsageError unless it is a number
/// of seconds above 0, such as 30 or 0.5.
[[nodiscard]] std::optional<std::chrono::milliseconds> timeLimitIn(const Arguments& arguments);

/// Returns the options that are accepted after the command: its own, then the common ones. With
/// null, returns those that are accepted before the command.
[[nodiscard]] std::vector<const Parameter*> optionsOf(const Command* command);

/// Returns the one of these options that has the spelling ("-m" or "--message"), or null.
[[nodiscard]] const Parameter* optionNamed(std::string_view spelling, const Command* command);

}  // namespace neb::nebsc

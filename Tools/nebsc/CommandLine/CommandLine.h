// CommandLine.h - what the words on the command line mean.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "CommandLine/Command.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// The option that names the folder to start in. It stands in front of the command alone: behind
/// it, git's own commands have other meanings for it.
inline constexpr std::string_view folderOption = "-C";

/// The options that may stand in every call, but for the help, which has no row of its own.
[[nodiscard]] std::span<const Parameter> commonParameters();

/// What nebsc is, two lines without the last line end.
[[nodiscard]] std::string_view programDescription();

/// A call that is understood and needs the plug-in.
struct Call {
    /// Absent: the versions are asked for.
    const Command* command = nullptr;
    Arguments arguments;
    /// The folders to start in, each relative to the one before it.
    std::vector<std::string> folders;
    /// The plug-in's file; empty means the default one.
    std::string plugIn;
    bool isJSON = false;
    /// Whether each child is told of on standard error.
    bool isTraced = false;
    Colours colours = Colours::automatic;
};

/// Reads the words. What needs no more than an answer comes back as that: the help, and a call that
/// cannot be understood.
[[nodiscard]] std::variant<Call, CommandOutput> readCommandLine(int argc, const char* const* argv);

}  // namespace neb::nebsc

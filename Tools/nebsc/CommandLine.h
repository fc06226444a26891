// CommandLine.h - what the words on the command line mean.
#pragma once

#include <string>
#include <variant>

#include "Command.h"
#include "Reply.h"

namespace neb::nebsc {

/// A call that is understood and needs the plug-in.
struct Call {
    /// Absent: the versions are asked for.
    const Command* command = nullptr;
    Arguments arguments;
    /// The plug-in's file; empty means the default one.
    std::string plugIn;
    bool isJSON = false;
};

/// Reads the words. What needs no more than an answer comes back as that: the help, and a call that
/// cannot be understood.
[[nodiscard]] std::variant<Call, Reply> readCommandLine(int argc, const char* const* argv);

}  // namespace neb::nebsc

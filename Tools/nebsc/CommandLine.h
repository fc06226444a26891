// CommandLine.h - what the words on the command line mean.
#pragma once

#include <string>
#include <variant>

#include "Commands.h"
#include "Reply.h"

namespace neb::nebsc {

/// A call that is understood and needs the plug-in.
struct Call {
    struct Types {};
    struct Version {};

    std::variant<RequestCall, StatusCall, Types, Version> command;
    /// The plug-in's file; empty means the default one.
    std::string plugIn;
    bool isJSON = false;
};

/// Reads the words. What needs no more than an answer comes back as that: the help, and a call that
/// cannot be understood.
[[nodiscard]] std::variant<Call, Reply> readCommandLine(int argc, const char* const* argv);

}  // namespace neb::nebsc

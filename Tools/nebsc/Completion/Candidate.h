// Candidate.h - a text that completes the argument being typed.
#pragma once

#include <string>
#include <vector>

namespace neb::nebsc {

struct Candidate {
    std::string text;
    /// What a shell may show next to the text; may be empty.
    std::string description = {};
};

/// The paths that the shell completes itself.
enum class ShellPaths { none, files, folders };

struct Completion {
    ShellPaths paths = ShellPaths::none;
    std::vector<Candidate> candidates{};
};

}  // namespace neb::nebsc

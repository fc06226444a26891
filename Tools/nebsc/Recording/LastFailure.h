// LastFailure.h - the command line that failed last, kept in a private file for `nebsc report`.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace neb::nebsc {

/// A command line of nebsc that failed.
struct LastFailure {
    /// The arguments after "nebsc", without secrets.
    std::vector<std::string> arguments;
    /// The working directory.
    std::string folder;
    /// Whether an argument had a secret, so that the command cannot run again.
    bool hadSecret = false;
};

/// Replaces the file. Does nothing if the system refuses it, or if the arguments are longer than 64
/// KiB. Throws only std::bad_alloc, like the functions below.
void rememberFailure(const std::vector<std::string>& arguments, const std::string& folder);

/// Returns what was remembered last; absent if there is nothing, or if it cannot be read.
[[nodiscard]] std::optional<LastFailure> lastFailure();

/// Returns the path of the file: "nebgit/last-failure.json" in XDG_STATE_HOME or ~/.local/state;
/// empty without a home folder.
[[nodiscard]] std::string fileOfLastFailure();

}  // namespace neb::nebsc

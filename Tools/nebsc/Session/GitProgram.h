// GitProgram.h - functions that run git for nebsc itself, outside operations.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "NEBFoundation/NEBSourceControlTrust.h"
#include "Platform/ChildProcess.h"
#include "Session/Interruption.h"
#include "Session/Trace.h"

namespace neb::nebsc {

/// Returns the path of the git that operations run.
[[nodiscard]] std::string gitPath();

/// Runs git in the folder (absent: the current one), with the environment that operations use. A
/// signal to nebsc ends it. In a repository that is only inspected, git runs no hooks and fetches
/// no missing objects; the command must be one that starts no other program.
[[nodiscard]] ChildOutcome runGit(Interruption& interruption, const Trace& trace,
                                  std::vector<std::string> arguments,
                                  std::optional<std::string> folder,
                                  NEBSourceControlTrust trust = NEBSourceControlTrust::trusted);

/// The same, but `process` can be cancelled from another thread.
[[nodiscard]] ChildOutcome runGit(ChildProcess& process, const Trace& trace,
                                  std::vector<std::string> arguments,
                                  std::optional<std::string> folder);

/// The folder, the environment, the traits and the limits of git processes.
struct GitSurroundings {
    /// Absent: the current folder.
    std::optional<std::string> folder{};
    /// Environment variables to set or replace, each "NAME=value".
    std::vector<std::string> variables{};
    NEBSourceControlChildTraits traits{};
    ChildLimits limits{};
};

/// Runs one git process for each list of arguments, all at the same time, as a pipeline. Returns
/// the outcome of the last process, with the limit that any of them exceeded.
[[nodiscard]] ChildOutcome runGitProcesses(ChildProcess& process, const Trace& trace,
                                           std::vector<std::vector<std::string>> argumentLists,
                                           const GitSurroundings& surroundings);

/// Returns the output of git without its last line end; absent if git failed or printed nothing.
[[nodiscard]] std::optional<std::string> trimmedOutputOf(const ChildOutcome& outcome);

/// Returns the reason for a failure of git, on one line and without "fatal: ": the first line of
/// stderr with that prefix, else the first line of stderr, else how the process ended. Continuation
/// lines are appended: "unknown repository extensions found: foo, bar".
[[nodiscard]] std::string reasonOf(const ChildOutcome& outcome);

/// Returns whether the text has the form of an object id, as git prints it: lower-case hexadecimal
/// digits. Does not check how many, which depends on the hash of the repository.
[[nodiscard]] bool isObjectId(std::string_view text);

/// Splits output that git wrote with "-z", where a NUL byte ends each entry.
[[nodiscard]] std::vector<std::string> splitAtNUL(std::string_view bytes);

}  // namespace neb::nebsc

// GitProgram.h - the few questions that nebsc itself has for git.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"
#include "Session/Interruption.h"
#include "Session/Trace.h"

namespace neb::nebsc {

/// Returns the path of the git that operations run.
[[nodiscard]] std::string gitPath();

/// Runs git, in the same surroundings as an operation's, in the folder (absent: nebsc's own). A
/// signal ends it.
[[nodiscard]] ChildOutcome runGit(Interruption& interruption, const Trace& trace,
                                  std::vector<std::string> arguments,
                                  std::optional<std::string> folder);

/// The same; whoever has the process can cancel it.
[[nodiscard]] ChildOutcome runGit(ChildProcess& process, const Trace& trace,
                                  std::vector<std::string> arguments,
                                  std::optional<std::string> folder);

/// What surrounds a git process, beside what surrounds that of every operation.
struct GitSurroundings {
    /// Absent: nebsc's own.
    std::optional<std::string> folder{};
    /// "NAME=value", in place of what the environment says.
    std::vector<std::string> variables{};
    NEBSourceControlChildTraits traits{};
};

/// Runs git once for each list of arguments, at the same time, each output piped into the next
/// one. Returns the outcome of the last.
[[nodiscard]] ChildOutcome runGits(ChildProcess& process, const Trace& trace,
                                   std::vector<std::vector<std::string>> calls,
                                   const GitSurroundings& surroundings);

/// The output of a git that succeeded, without the line end; nothing when it failed or was silent.
[[nodiscard]] std::optional<std::string> answerOf(const ChildOutcome& outcome);

/// The reason that a failed git gave, on one line and without "fatal: ": its first line with that
/// prefix, else its first line, else how it ended. The lines on which git continues it are
/// appended: "unknown repository extensions found: foo, bar".
[[nodiscard]] std::string reasonOf(const ChildOutcome& outcome);

/// The texts of an output made with "-z": a NUL byte ends each.
[[nodiscard]] std::vector<std::string> textsBetweenNULs(std::string_view bytes);

/// The top of the working copy in which the folder lies, as git writes it; nothing when it lies in
/// none or git cannot tell.
[[nodiscard]] std::optional<std::string> workingCopyTop(Interruption& interruption,
                                                        const Trace& trace,
                                                        const std::string& folder);

}  // namespace neb::nebsc

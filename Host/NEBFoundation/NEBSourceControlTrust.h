// NEBSourceControlTrust.h - whether the programs that a repository names may run.
//
//     tree->trust = NEBSourceControlTrust::inspect;
#pragma once

#include <cstdint>

#include "Platform/Export.h"

namespace neb {

/// Whether the programs that a repository names may run.
enum class NEBSourceControlTrust : std::uint8_t {
    /// They run as with git.
    trusted,
    /// No program that the repository names runs: hooks, filters, text conversions and so on; see
    /// docs/inspect.md. Requests that read or export return what they would return if the
    /// repository named none. Requests that change the repository, and those that contact a server
    /// with settings that cannot be switched off, fail with an error of the class "not-trusted".
    inspect,
};

/// What is known about the repository of a request with NEBSourceControlTrust::inspect; internal to
/// the host library.
class NEB_EXPORT NEBSourceControlInspection;

}  // namespace neb

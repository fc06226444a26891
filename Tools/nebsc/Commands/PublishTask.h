// PublishTask.h - the forms of "push" that today's users of git expect: to the upstream branch,
// with -u, with a lease.
#pragma once

#include "CommandLine/Command.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

inline constexpr std::string_view setUpstreamFlag = "--set-upstream";
inline constexpr std::string_view leaseFlag = "--force-with-lease";
inline constexpr std::string_view pushDryRunFlag = "--dry-run";

/// Whether the invocation of "push" has no arguments, or one of the flags above.
[[nodiscard]] bool isPublishing(const Arguments& arguments);

/// Runs "push" for such an invocation.
[[nodiscard]] CommandOutput runPublish(const CommandCall& call);

}  // namespace neb::nebsc

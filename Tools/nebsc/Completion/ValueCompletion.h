// ValueCompletion.h - the completion of a parameter's value.
#pragma once

#include "Completion/Candidate.h"
#include "Completion/CompletionPoint.h"
#include "Session/HostSession.h"

namespace neb::nebsc {

/// Returns the values of `point.parameter` that start with the text at the point, each with the
/// point's head. Branches, remotes and the like come from the repository around the current
/// directory. After "-C" the paths are among the candidates, as the shell would look for them in
/// its own directory. Runs on the main thread.
[[nodiscard]] Completion completeValue(const CompletionPoint& point, const HostSession& session);

}  // namespace neb::nebsc

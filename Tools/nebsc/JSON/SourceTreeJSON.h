// SourceTreeJSON.h - reads a source tree from its JSON form; RequestJSON.h describes it.
#pragma once

#include <memory>

#include "JSON/RequestMembers.h"
#include "NEBFoundation/NEBSourceControlSourceTree.h"

namespace neb::nebsc {

/// Reads an object; null leaves the target unchanged. See RequestMembers.h for the result.
[[nodiscard]] bool readSourceTree(Refusal& refusal, const InputNode& input,
                                  std::shared_ptr<NEBSourceControlSourceTree>& tree);

}  // namespace neb::nebsc

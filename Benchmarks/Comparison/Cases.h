// Cases.h - the compared cases: a request, its repository, and the same with libgit2.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlRequest.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Repositories.h"

namespace neb::benchmarks {

using Request = std::shared_ptr<NEBSourceControlRequest>;

struct Case {
    const char* name;
    RepositoryKind kind;
    /// The unit of the size of the repository, "commits"; empty if the size does not matter.
    const char* unit;
    /// Returns the request for the repository at the path.
    Request (*request)(const std::string& path);
    /// Does the same with libgit2 and returns the number of records.
    std::size_t (*withLibGit2)(const std::string& path);
    /// The operation that parses the output of git.
    std::shared_ptr<NEBSourceControlTaskOperation> (*reader)(const Request& request);
};

/// Returns all cases, in the order of the report.
const std::vector<Case>& allCases();

}  // namespace neb::benchmarks

// Cases.h - what is compared: a request, the repository that is asked, and libgit2's way.
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
    /// What the repository has as many of as its size says; empty where that says nothing.
    const char* unit;
    /// The request to the repository at the path.
    Request (*request)(const std::string& path);
    /// Answers the same, and how many records there were.
    std::size_t (*withLibGit2)(const std::string& path);
    /// The operation that reads what git prints.
    std::shared_ptr<NEBSourceControlTaskOperation> (*reader)(const Request& request);
};

/// All of them, in the order of the report.
const std::vector<Case>& allCases();

}  // namespace neb::benchmarks

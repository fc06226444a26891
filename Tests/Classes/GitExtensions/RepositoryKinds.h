// RepositoryKinds.h - the kinds of repositories in which every type of request is tested.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {

/// A repository of one kind, made from one with two commits of the file "f".
struct RepositoryKind {
    std::string name;
    /// Makes the repository in the folder and returns its location.
    std::function<std::string(const TestRepository& source, const TemporaryFolder& folder)> make;
};

[[nodiscard]] const std::vector<RepositoryKind>& repositoryKinds();

}  // namespace neb::test

// TreeQuery.h - a query for the entries of a folder at a revision.
//
// A list request lets the shell expand the folder on disk, so it misses names that begin with ".",
// names that are not on disk, and fails for long lists. This query reads only the repository, so it
// works in bare repositories too.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb::nebsc {

/// An entry of git-ls-tree(1) with "-z".
struct TreeEntry {
    /// The bytes of the name without its folder.
    std::string name;
    /// False for a folder or a submodule.
    bool isFile = false;
};

/// Returns the entries in git's output.
[[nodiscard]] std::vector<TreeEntry> treeEntriesIn(std::string_view output);

/// Not thread-safe, like all operations.
class TreeQuery : public NEBSourceControlTaskOperation {
public:
    /// Queries the repository at the location of the source tree. `object` names the tree:
    /// "HEAD:src", or "HEAD:" for the top.
    TreeQuery(std::shared_ptr<NEBSourceControlRequest> request, const std::string& object);

    [[nodiscard]] std::string className() const override { return "TreeQuery"; }
    [[nodiscard]] std::string launchPath() override;
    /// The records have the same members as those of a list request. A name that is not UTF-8 is
    /// quoted as git does.
    void parseData() override;

    /// Returns the entries in git's order; empty until the operation has run.
    [[nodiscard]] const std::vector<TreeEntry>& entries() const { return _entries; }

private:
    std::vector<TreeEntry> _entries;
};

}  // namespace neb::nebsc

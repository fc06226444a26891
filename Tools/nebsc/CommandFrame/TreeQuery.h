// TreeQuery.h - a query for the entries of a folder at a revision.
//
// A list request lets the shell expand the folder on disk, so it misses names that begin with ".",
// names that are not on disk, and fails for long lists. This query reads only the repository, so it
// works in bare repositories too.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "CommandFrame/EntryQuery.h"

namespace neb::nebsc {

/// An entry of git-ls-tree(1) with "-z".
struct TreeEntry {
    /// The bytes of the name without its folder.
    std::string name;
    /// False for a folder or a submodule.
    bool isFile = false;
};

/// Not thread-safe, like all operations.
class TreeQuery : public EntryQuery<TreeEntry> {
public:
    /// Queries the repository at the location of the source tree. `object` names the tree:
    /// "HEAD:src", or "HEAD:" for the top.
    TreeQuery(std::shared_ptr<NEBSourceControlRequest> request, const std::string& object);

    [[nodiscard]] std::string className() const override { return "TreeQuery"; }

protected:
    [[nodiscard]] std::optional<TreeEntry> entryIn(std::string_view text) override;
    /// The record has the same members as that of a list request. A name that is not UTF-8 is
    /// quoted as git does.
    [[nodiscard]] NEBDictionary recordOf(const TreeEntry& entry) const override;
};

}  // namespace neb::nebsc

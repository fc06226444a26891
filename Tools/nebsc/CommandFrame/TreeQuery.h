// TreeQuery.h - asks git for the entries of a folder at a revision.
//
// A list request lets the shell expand the folder as it is on disk: names that begin with ".",
// names that are not on disk and long listings are beyond it. This asks the repository alone, so it
// works in bare repositories too.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb::nebsc {

/// An entry of git-ls-tree(1) with "-z".
struct TreeEntry {
    /// The bytes of the name, without folders.
    std::string name;
    /// False for a folder or a submodule.
    bool isFile = false;
};

[[nodiscard]] std::vector<TreeEntry> treeEntriesIn(std::string_view output);

/// Not thread-safe, as are all operations.
class TreeQuery : public NEBSourceControlTaskOperation {
public:
    /// In the repository at the source tree's location. `object` names the tree, such as "HEAD:src"
    /// or "HEAD:" for the top.
    TreeQuery(std::shared_ptr<NEBSourceControlRequest> request, const std::string& object);

    [[nodiscard]] std::string className() const override { return "TreeQuery"; }
    [[nodiscard]] std::string launchPath() override;
    /// The result has the form of a list request's. A name that is not UTF-8 is written the way of
    /// git, between quotes.
    void parseData() override;

    /// In git's order; empty until the operation has run.
    [[nodiscard]] const std::vector<TreeEntry>& entries() const { return _entries; }

private:
    std::vector<TreeEntry> _entries;
};

}  // namespace neb::nebsc

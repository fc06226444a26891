// Parses the attributes of worktrees.

#include "GitExtensions/GitWorktrees.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitWorktreesOperation operation(requestOf(neb::NEBSourceControlRequestWorktrees));
    const auto records = parsed(operation, bytes).value();
    std::size_t mains = 0;
    for (const neb::NEBDictionary& record : records) {
        require(!record.isEmpty(), "a record has a value");
        mains += record.contains(neb::NEBSourceControlOperationIsMainKey) ? 1 : 0;
    }
    require(mains == (records.empty() ? 0U : 1U), "the first worktree is the main one");
    return 0;
}

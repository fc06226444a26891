// Parses the branches of a repository and finds the current one.

#include "GitOperations/GitBranch.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Property.h"

using namespace neb::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    neb::GitListBranchesOperation list(requestOf(25));
    neb::GitCurrentBranchOperation current(requestOf(26));
    const auto branches = parsed(list, bytes);
    const auto branch = parsed(current, bytes);
    if (bytes.empty()) {
        require(!branches && !branch, "empty output has no result");
        return 0;
    }
    const auto lines = split(*neb::_nebsc_stringFromData(bytes), '\n');
    require(branches && branches->size() == lines.size(), "there is one record per line");
    std::optional<std::string> marked;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string name = trimmedOf(lines[i], "* ");
        require(*(*branches)[i].value(neb::NEBSourceControlOperationNameKey).string() == name,
                "the name is the line without marker and spaces");
        if (!marked && !lines[i].empty() && lines[i].front() == '*') {
            marked = name;
        }
    }
    require(branch.has_value() == marked.has_value(),
            "there is a current branch if a line is marked");
    require(!marked ||
                (branch->size() == 1 &&
                 *branch->front().value(neb::NEBSourceControlOperationNameKey).string() == *marked),
            "the first marked line is the current branch");
    return 0;
}

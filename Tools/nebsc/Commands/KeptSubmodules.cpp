#include "Commands/KeptSubmodules.h"

#include "CommandFrame/FailureText.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

std::optional<NEBSourceControlError> errorOfKeptSubmodules(const GitQueries& git,
                                                           const std::vector<std::string>& paths) {
    std::vector<std::string> arguments{
        "diff-files", "--raw", "-z", "--ignore-submodules=untracked", "--diff-filter=M", "--"};
    arguments.insert(arguments.end(), paths.begin(), paths.end());
    const ChildOutcome changed = git.run(std::move(arguments));
    if (!changed.status.isSuccess()) {
        return failureOfQuery(git, changed, paths).error;
    }
    // Pairs of ":160000 160000 ID ID M" and the path.
    const std::vector<std::string> entries = splitAtNUL(changed.output);
    std::vector<std::string> submodules;
    for (std::size_t i = 0; i + 1 < entries.size(); i += 2) {
        if (entries[i].starts_with(":160000 160000 ")) {
            submodules.push_back(entries[i + 1]);
        }
    }
    if (submodules.empty()) {
        return std::nullopt;
    }
    auto error = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError, "The changes of submodules were not discarded.",
        "Perform the operation in the submodule.");
    error.errorClass = NEBSourceControlPathInSubmoduleErrorClass;
    error.files = std::move(submodules);
    return error;
}

/// An error with a text is one of git, about a file in a submodule.
std::string adviceOnKeptSubmodules(const WorkingCopyLocation& workingCopy,
                                   const NEBSourceControlError& error) {
    if (error.errorClass != NEBSourceControlPathInSubmoduleErrorClass || error.text ||
        error.files.empty()) {
        return "";
    }
    std::string command = "nebsc submodule update --force";
    for (const std::string& file : error.files) {
        const std::string path = pathByAppendingComponent(workingCopy.location, file);
        command += " " + shellQuoted(pathAsSeen(workingCopy, path));
    }
    return inQuotes(command) + " discards them.";
}

}  // namespace neb::nebsc

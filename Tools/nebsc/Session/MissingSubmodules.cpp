#include "Session/MissingSubmodules.h"

#include <map>
#include <set>

#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"

namespace neb::nebsc {

namespace {

ChildOutcome run(const Trace& trace, const std::string& folder,
                 std::vector<std::string> arguments) {
    ChildProcess process;
    return runGit(process, trace, std::move(arguments), folder);
}

/// The output of a git in the folder; empty when it failed.
std::string outputOf(const Trace& trace, const std::string& folder,
                     std::vector<std::string> arguments) {
    const ChildOutcome outcome = run(trace, folder, std::move(arguments));
    return outcome.status.isSuccess() ? std::string(outcome.output) : std::string();
}

/// Reads "160000 COMMIT STAGE\tPATH" of git-ls-files(1): the commits by path.
std::map<std::string, std::string> submodulesInIndex(const Trace& trace,
                                                     const std::string& folder) {
    constexpr std::string_view mode = "160000 ";
    std::map<std::string, std::string> commits;
    for (const std::string& entry :
         textsBetweenNULs(outputOf(trace, folder, {"ls-files", "--stage", "-z"}))) {
        const std::size_t tab = entry.find('\t');
        if (entry.starts_with(mode) && tab != std::string::npos) {
            commits[entry.substr(tab + 1)] =
                entry.substr(mode.size(), entry.find(' ', mode.size()) - mode.size());
        }
    }
    return commits;
}

/// Reads "submodule.NAME.path\nPATH" of git-config(1). git clones no other submodules.
std::set<std::string> submodulesWithName(const Trace& trace, const std::string& folder) {
    std::set<std::string> paths;
    for (const std::string& entry :
         textsBetweenNULs(outputOf(trace, folder,
                                   {"config", "--file", ".gitmodules", "-z", "--get-regexp",
                                    "^submodule\\..*\\.path$"}))) {
        paths.insert(entry.substr(entry.find('\n') + 1));
    }
    return paths;
}

}  // namespace

std::vector<std::string> missingSubmodules(const Trace& trace, const std::string& folder) {
    std::vector<std::string> missing;
    // Without it, git would look at a repository further up.
    if (!isAnythingAt(pathByAppendingComponent(folder, ".git"))) {
        return missing;
    }
    const std::set<std::string> named = submodulesWithName(trace, folder);
    for (const auto& [path, commit] : submodulesInIndex(trace, folder)) {
        if (!named.contains(path)) {
            continue;
        }
        const std::string submodule = pathByAppendingComponent(folder, path);
        // git clones all of them before it checks any out, so a clone alone says nothing.
        const bool isThere =
            isAnythingAt(pathByAppendingComponent(submodule, ".git")) &&
            run(trace, submodule, {"diff-index", "--cached", "--quiet", commit}).status.isSuccess();
        if (!isThere) {
            missing.push_back(path);
            continue;
        }
        for (const std::string& inner : missingSubmodules(trace, submodule)) {
            missing.push_back(pathByAppendingComponent(path, inner));
        }
    }
    return missing;
}

}  // namespace neb::nebsc

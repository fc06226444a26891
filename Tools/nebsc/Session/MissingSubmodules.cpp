#include "Session/MissingSubmodules.h"

#include <algorithm>
#include <map>
#include <set>

#include "Platform/Interceptor.h"
#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"
#include "Session/SettingName.h"

namespace neb::nebsc {

namespace {

ChildOutcome run(const Trace& trace, const std::string& folder,
                 std::vector<std::string> arguments) {
    ChildProcess process;
    return runGit(process, trace, std::move(arguments), folder);
}

/// A replay has the recorded answer.
bool isThere(const std::string& path) {
    return interceptedFact("exists", path, [&path] { return isAnythingAt(path); });
}

/// Returns the output of git in the folder; empty if it fails.
std::string outputOf(const Trace& trace, const std::string& folder,
                     std::vector<std::string> arguments) {
    const ChildOutcome outcome = run(trace, folder, std::move(arguments));
    return outcome.status.isSuccess() ? std::string(outcome.output) : std::string();
}

/// Returns the commits of the submodules by path, from "160000 COMMIT STAGE\tPATH" of
/// git-ls-files(1).
std::map<std::string, std::string> submodulesInIndex(const Trace& trace,
                                                     const std::string& folder) {
    constexpr std::string_view mode = "160000 ";
    std::map<std::string, std::string> commits;
    for (const std::string& entry :
         splitAtNUL(outputOf(trace, folder, {"ls-files", "--stage", "-z"}))) {
        const std::size_t tab = entry.find('\t');
        if (entry.starts_with(mode) && tab != std::string::npos) {
            commits[entry.substr(tab + 1)] =
                entry.substr(mode.size(), entry.find(' ', mode.size()) - mode.size());
        }
    }
    return commits;
}

/// Returns the paths in .gitmodules, from "submodule.NAME.path\nPATH" of git-config(1). git clones
/// only these submodules.
std::set<std::string> submodulesInGitmodules(const Trace& trace, const std::string& folder) {
    std::set<std::string> paths;
    for (const std::string& entry : splitAtNUL(outputOf(
             trace, folder,
             {"config", "--file", ".gitmodules", "-z", "--get-regexp", "^submodule\\."}))) {
        const std::size_t end = std::min(entry.find('\n'), entry.size());
        if (end < entry.size() && isSettingOf("submodule", "path", entry.substr(0, end))) {
            paths.insert(entry.substr(end + 1));
        }
    }
    return paths;
}

}  // namespace

std::vector<std::string> missingSubmodules(const Trace& trace, const std::string& folder) {
    std::vector<std::string> missing;
    // Without this check, git would use a repository in a parent folder.
    if (!isThere(pathByAppendingComponent(folder, ".git"))) {
        return missing;
    }
    const std::set<std::string> configured = submodulesInGitmodules(trace, folder);
    for (const auto& [path, commit] : submodulesInIndex(trace, folder)) {
        if (!configured.contains(path)) {
            continue;
        }
        const std::string submodule = pathByAppendingComponent(folder, path);
        // git clones all submodules before it checks out any, so check the files as well.
        const bool isCheckedOut =
            isThere(pathByAppendingComponent(submodule, ".git")) &&
            run(trace, submodule, {"diff-index", "--cached", "--quiet", commit}).status.isSuccess();
        if (!isCheckedOut) {
            missing.push_back(path);
            continue;
        }
        for (const std::string& nested : missingSubmodules(trace, submodule)) {
            missing.push_back(pathByAppendingComponent(path, nested));
        }
    }
    return missing;
}

}  // namespace neb::nebsc

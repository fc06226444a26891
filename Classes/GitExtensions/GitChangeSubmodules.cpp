#include "GitExtensions/GitChangeSubmodules.h"

#include <algorithm>

#include "GitExtensions/GitSubmodules.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

std::string pathOf(const NEBDictionary& record) {
    const NEBValue& bytes = record.value(NEBSourceControlOperationPathBytesKey);
    return std::string(
        gitBytesOfValue(bytes.isPresent() ? bytes : record.value(NEBSourceControlOperationPathKey))
            .value_or(Data())
            .bytes());
}

/// "." and the empty path stand for the top.
bool isBelow(const std::string& path, const std::string& folder) {
    return folder.empty() || folder == "." || path == folder || path.starts_with(folder + "/");
}

}  // namespace

void GitChangeSubmodulesOperation::perform() {
    const std::string wanted = action("");
    if (wanted != "init" && wanted != "update") {
        failForOption(NEBSourceControlRequestOptionAction);
        return;
    }
    if (request()->fileCount() > 0 && !queriedSubmodules()) {
        return;
    }
    std::vector<std::string> arguments{"submodule", wanted};
    const std::pair<NEBConstant, const char*> flags[] = {
        {NEBSourceControlRequestOptionInitialize, "--init"},
        {NEBSourceControlRequestOptionRecursive, "--recursive"},
        {NEBSourceControlRequestOptionFollowBranch, "--remote"},
        {NEBSourceControlRequestOptionForce, "--force"},
    };
    for (const auto& [key, flag] : flags) {
        if (wanted == "update" && hasOption(key)) {
            arguments.emplace_back(flag);
        }
    }
    arguments.emplace_back("--");
    const std::vector<std::string> files = gitFileNames(*request());
    arguments.insert(arguments.end(), files.begin(), files.end());
    const auto submodules = runChange(arguments) ? queriedSubmodules() : std::nullopt;
    if (!submodules) {
        return;
    }
    setResult(*submodules);
    if (wanted == "update" && !files.empty()) {
        checkUpdated(*submodules);
    }
}

std::optional<NEBSourceControlResult> GitChangeSubmodulesOperation::queriedSubmodules() {
    const auto list = run<GitSubmodulesOperation>(request());
    if (!goesOnAfter(*list)) {
        return std::nullopt;
    }
    const NEBSourceControlResult all = list->result().value_or(NEBSourceControlResult());
    const std::vector<std::string> files = gitFileNames(*request());
    if (files.empty()) {
        return all;
    }
    std::vector<bool> isNamed(all.size());
    for (const std::string& file : files) {
        const std::string folder = gitPathFromTop(*request(), file);
        bool isFound = false;
        for (std::size_t i = 0; i < all.size(); ++i) {
            const bool isThere = isBelow(pathOf(all[i]), folder);
            isNamed[i] = isNamed[i] || isThere;
            isFound = isFound || isThere;
        }
        if (!isFound) {
            fail(NEBSourceControlPathUnknownErrorClass, "There is no submodule \"" + folder + "\".",
                 {folder}, "\"git submodule status\" lists the submodules.");
            return std::nullopt;
        }
    }
    NEBSourceControlResult named;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (isNamed[i]) {
            named.push_back(all[i]);
        }
    }
    return named;
}

/// git prefers the setting of the repository to that in .gitmodules.
bool GitChangeSubmodulesOperation::isNeverUpdated(const NEBDictionary& submodule) {
    const NEBValue& bytes = submodule.value(NEBSourceControlOperationNameBytesKey);
    const auto name = gitBytesOfValue(
        bytes.isPresent() ? bytes : submodule.value(NEBSourceControlOperationNameKey));
    const std::string setting =
        "submodule." + std::string(name.value_or(Data()).bytes()) + ".update";
    auto update = queriedLine({"config", "--get", "--", setting});
    if (update && update->empty()) {
        update = queriedLine({"config", "--file", ".gitmodules", "--get", "--", setting});
    }
    return update == "none";
}

void GitChangeSubmodulesOperation::checkUpdated(const NEBSourceControlResult& submodules) {
    for (const NEBDictionary& submodule : submodules) {
        if (error()) {
            return;
        }
        const std::string_view state = submodule.text(NEBSourceControlOperationStateKey);
        const std::string shown(submodule.text(NEBSourceControlOperationPathKey));
        if (state == "conflict") {
            fail(NEBSourceControlConflictUnresolvedErrorClass,
                 "The submodule \"" + shown + "\" is in conflict.", {shown});
        } else if (state == "not initialized" || state == "not cloned") {
            fail(NEBSourceControlSubmoduleFailedErrorClass,
                 "The submodule \"" + shown + "\" was not updated: it is " + std::string(state) +
                     ".",
                 {shown});
        } else if ((state == "other commit" ||
                    hasOption(NEBSourceControlRequestOptionFollowBranch)) &&
                   isNeverUpdated(submodule)) {
            fail(NEBSourceControlSubmoduleFailedErrorClass,
                 "The submodule \"" + shown +
                     "\" was not updated: its setting \"update\" is \"none\".",
                 {shown});
        }
    }
}

}  // namespace neb

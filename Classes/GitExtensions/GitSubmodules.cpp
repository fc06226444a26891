#include "GitExtensions/GitSubmodules.h"

#include <filesystem>

#include "GitExtensions/GitRecordFields.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"

namespace neb {

namespace {

constexpr std::string_view section = "submodule.";
constexpr std::string_view submoduleMode = "160000";

/// Calls visit(piece) with each text before a NUL byte.
template <typename Visit>
void forEachRecord(std::string_view output, Visit visit) {
    for (std::size_t end = 0; (end = output.find('\0')) != std::string_view::npos;
         output.remove_prefix(end + 1)) {
        visit(output.substr(0, end));
    }
}

}  // namespace

/// Reads settings "submodule.NAME.PROPERTY", a line end and the value, each before a NUL byte. A
/// "." of the pattern would not match a byte of the name that is not UTF-8.
GitSubmodulesOperation::Submodules GitSubmodulesOperation::submodulesOf(
    const std::vector<std::string>& source) {
    std::vector<std::string> arguments{"config", "--null"};
    arguments.insert(arguments.end(), source.begin(), source.end());
    arguments.insert(arguments.end(), {"--get-regexp", "^submodule\\."});
    const auto query = runQuery(request(), arguments);
    if (query->error()) {
        setError(query->error());
    }
    Submodules submodules;
    forEachRecord(query->output(), [&submodules](std::string_view setting) {
        const std::size_t end = std::min(setting.find('\n'), setting.size());
        const std::string_view name = setting.substr(0, end);
        const std::size_t dot = name.rfind('.');
        if (name.starts_with(section) && dot > section.size()) {
            const std::string key(name.substr(section.size(), dot - section.size()));
            submodules[key][std::string(name.substr(dot + 1))] =
                setting.substr(std::min(end + 1, setting.size()));
        }
    });
    return submodules;
}

namespace {

bool isRepository(const std::string& folder) {
    const std::string file = pathByAppendingComponent(folder, ".git");
    return interceptedFact("exists", file, [&file] {
        std::error_code failure;
        return std::filesystem::exists(file, failure);
    });
}

}  // namespace

/// git would find the repository around a folder that is none.
std::string GitSubmodulesOperation::lineIn(const std::string& path,
                                           const std::vector<std::string>& arguments) {
    const auto& location = request()->sourceTree ? request()->sourceTree->location : std::nullopt;
    const auto top = location ? pathOfLocation(*location) : std::nullopt;
    const std::string folder = pathByAppendingComponent(top.value_or("."), path);
    if (path.empty() || !isRepository(folder)) {
        return {};
    }
    const auto query = std::make_shared<GitQueryOperation>(request(), arguments);
    query->setArguments(arguments);
    query->setCurrentDirectoryPath(folder);
    runQuery(query);
    return query->error() ? std::string() : std::string(query->line());
}

NEBDictionary GitSubmodulesOperation::recordOf(const std::string& name,
                                               const Properties& properties, bool isInitialized) {
    const auto property = [&properties](const char* key) {
        const auto found = properties.find(key);
        return found == properties.end() ? std::string() : found->second;
    };
    const std::string path = property("path");
    NEBDictionary record;
    gitSetName(record, gitNameKeys, name);
    gitSetName(record, gitPathKeys, path);
    gitSetText(record, NEBSourceControlOperationURLKey, property("url"));
    gitSetName(record, gitBranchKeys, property("branch"));
    const auto staged = runQuery(gitRequestWithoutNames(*request()),
                                 {"ls-files", "--stage", "-z", "--", ":(top,literal)" + path});
    std::string indexID;
    bool isConflict = false;
    forEachRecord(staged->output(), [&](std::string_view entry) {
        Scanner scanner(entry);
        const bool isSubmodule = scanner.takeUpTo(' ') == submoduleMode;
        scanner.skipOne(' ');
        const std::string_view id = scanner.takeUpTo(' ');
        isConflict = isConflict || !scanner.rest().starts_with(" 0\t");
        indexID = isSubmodule ? id : indexID;
    });
    const std::string commit = lineIn(path, {"rev-parse", "--verify", "--quiet", "HEAD"});
    if (!isConflict) {
        gitSetObjectID(record, NEBSourceControlOperationIndexObjectIDKey, indexID);
    }
    gitSetObjectID(record, NEBSourceControlOperationObjectIDKey, commit);
    if (!commit.empty()) {
        gitSetText(record, NEBSourceControlOperationDescriptionKey,
                   lineIn(path, {"describe", "--tags", "--always", commit}));
    }
    const std::string_view present = commit == indexID ? "current" : "other commit";
    const std::string_view state = commit.empty() ? "not cloned" : present;
    record.set(NEBSourceControlOperationStateKey,
               isConflict ? "conflict" : (isInitialized ? state : "not initialized"));
    return record;
}

void GitSubmodulesOperation::main() {
    setOperationQueue(std::make_shared<OperationQueue>());
    const auto inside = runQuery(request(), {"rev-parse", "--git-dir"});
    if (inside->error()) {
        setError(inside->error());
        return;
    }
    const Submodules submodules = submodulesOf({"--file", ".gitmodules"});
    const Submodules known = error() ? Submodules() : submodulesOf({"--local"});
    NEBSourceControlResult records;
    for (const auto& [name, properties] : submodules) {
        if (error() || isCancelled()) {
            break;
        }
        const auto local = known.find(name);
        const bool isInitialized = local != known.end() && local->second.contains("url");
        records.push_back(recordOf(name, properties, isInitialized));
    }
    if (!error()) {
        setResult(std::move(records));
    }
}

}  // namespace neb

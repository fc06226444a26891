#include "Server/Watch/RepositoryFolders.h"

#include <filesystem>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// With more folders than this, the whole working tree is searched: arguments have a limit.
constexpr std::size_t mostFolderArguments = 500;

/// The user may not trust the repository. So git gets no missing objects, for which it could start
/// programs of the repository, and runs no hooks.
NEBSourceControlChildTraits untrustingTraits() {
    static const NEBSourceControlSetting withoutHooks[] = {{"core.hooksPath", "/dev/null"}};
    NEBSourceControlChildTraits traits;
    traits.isBackgroundWork = true;
    traits.mayFetchObjects = false;
    traits.settings = withoutHooks;
    return traits;
}

WatchFailure failureOf(const ChildOutcome& outcome, const std::string& location) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->name = lastPathComponent(location);
    const NEBSourceControlError error = NEBSourceControlErrorFromText(
        outcome.errorOutput,
        *NEBSourceControlRequest::initWithType(NEBSourceControlRequestStatus, tree));
    return {.errorClass = outcome.status.started()
                              ? error.errorClass.value_or("unknown")
                              : std::string(NEBSourceControlNotStartedErrorClass),
            .sentence = inQuotes(location) + " cannot be watched: " + reasonOf(outcome) + "."};
}

std::string withoutLinks(const std::string& path) {
    std::error_code failure;
    const std::filesystem::path whole = std::filesystem::weakly_canonical(path, failure);
    return failure ? path : whole.string();
}

std::vector<std::string> linesOf(std::string_view output) {
    std::vector<std::string> lines;
    forEachField(output, '\n', [&lines](std::string_view line) {
        if (!line.empty()) {
            lines.emplace_back(line);
        }
    });
    return lines;
}

}  // namespace

/// git-rev-parse(1) writes its answers one by one. It fails at the last question in a bare
/// repository and inside a git directory.
RepositoryFoldersResult findRepositoryFolders(ChildProcess& process, const Trace& trace,
                                              const std::string& location) {
    const ChildOutcome outcome =
        runGitProcesses(process, trace,
                        {{"rev-parse", "--path-format=absolute", "--git-dir", "--git-common-dir",
                          "--show-toplevel"}},
                        {.folder = location, .traits = untrustingTraits()});
    const std::vector<std::string> lines = linesOf(outcome.output);
    if (lines.size() < 2) {
        return {.failure = failureOf(outcome, location)};
    }
    return {.folders = {
                .gitFolder = withoutLinks(lines[0]),
                .commonFolder = withoutLinks(lines[1]),
                .top = lines.size() > 2 ? std::optional(withoutLinks(lines[2])) : std::nullopt}};
}

std::unordered_set<std::string> ignoredFolders(ChildProcess& process, const Trace& trace,
                                               const std::string& top,
                                               const std::vector<std::string>& within) {
    std::vector<std::string> arguments{"ls-files",           "-z",         "--others", "--ignored",
                                       "--exclude-standard", "--directory"};
    if (within.size() <= mostFolderArguments) {
        arguments.emplace_back("--");
        arguments.insert(arguments.end(), within.begin(), within.end());
    }
    GitSurroundings surroundings{.folder = top, .traits = untrustingTraits()};
    surroundings.traits.hasPatternCharacters = true;
    const ChildOutcome outcome = runGitProcesses(process, trace, {arguments}, surroundings);
    std::unordered_set<std::string> folders;
    if (!outcome.status.isSuccess()) {
        return folders;
    }
    for (std::string& path : splitAtNUL(outcome.output)) {
        if (path.ends_with('/')) {
            path.pop_back();
            folders.insert(pathByAppendingComponent(top, path));
        }
    }
    return folders;
}

}  // namespace neb::nebsc

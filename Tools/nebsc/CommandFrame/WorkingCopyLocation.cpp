#include "CommandFrame/WorkingCopyLocation.h"

#include <filesystem>
#include <utility>

#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

WorkingCopyLocation findWorkingCopy(Interruption& interruption, const Trace& trace,
                                    const std::string& currentFolder, const std::string& folder,
                                    const RepositoryQuestions& questions) {
    ChildOutcome outcome = runGit(interruption, trace, argumentsFor(questions, folder), folder);
    RepositoryAnswers answers = answersIn(outcome, questions, folder);
    return {.location = answers.top.value_or(folder),
            .currentFolder = currentFolder,
            .isWorkingCopy = answers.top.has_value(),
            .isRepository = answers.isRepository,
            .hasCommits = answers.hasCommits,
            .revisions = std::move(answers.revisions),
            .discovery = std::move(outcome)};
}

std::string repositoryLocation(const std::string& currentFolder, const std::string& url) {
    const std::size_t colon = url.find(':');
    const bool hasHost = colon != std::string::npos && url.find('/') > colon;
    const PathSearch search = findAbsolutePath(currentFolder, url);
    const bool isPath = !url.empty() && !url.starts_with('-') && search.path &&
                        (!hasHost || isAnythingAt(*search.path));
    return isPath ? *search.path : url;
}

std::string pathAsSeen(const WorkingCopyLocation& workingCopy, const std::string& path) {
    std::string absolute =
        path.starts_with('/') ? path : pathByAppendingComponent(workingCopy.location, path);
    if (!liesWithin(workingCopy.currentFolder, workingCopy.location)) {
        return absolute;
    }
    const bool isFolder = absolute.ends_with('/');
    const fs::path plain = isFolder ? absolute.substr(0, absolute.size() - 1) : absolute;
    const std::string relative = plain.lexically_relative(workingCopy.currentFolder).string();
    return isFolder ? relative + "/" : relative;
}

std::string shownPath(const WorkingCopyLocation& workingCopy, const std::string& path) {
    return printable(pathAsSeen(workingCopy, path));
}

std::string pathFromTop(const WorkingCopyLocation& workingCopy, const std::string& path) {
    if (!path.starts_with('/')) {
        return path;
    }
    const std::string& top = workingCopy.location;
    return path == top ? std::string() : path.substr(top == "/" ? 1 : top.size() + 1);
}

}  // namespace neb::nebsc

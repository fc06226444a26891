#include "CommandFrame/WorkingCopyLocation.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>

#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

/// "true" or "false", the top if there is a working copy, and the commit of HEAD if there is one;
/// a line end after each. The top may contain line ends itself.
constexpr const char* discoveryArguments[] = {
    "rev-parse", "--is-inside-work-tree", "--show-toplevel", "--verify", "--quiet", "HEAD"};

std::string_view withoutLastLine(std::string_view text) {
    text.remove_suffix(text.ends_with('\n') ? 1 : 0);
    return text.substr(0, text.rfind('\n') + 1);
}

}  // namespace

WorkingCopyLocation findWorkingCopy(Interruption& interruption, const Trace& trace,
                                    const std::string& currentFolder, const std::string& folder) {
    constexpr int isNoCommit = 1;
    WorkingCopyLocation found{.location = folder, .currentFolder = currentFolder};
    found.discovery =
        runGit(interruption, trace, {std::begin(discoveryArguments), std::end(discoveryArguments)},
               folder);
    std::string_view output = found.discovery.output;
    found.isRepository = !output.empty();
    if (!found.isRepository) {
        return found;
    }
    output.remove_prefix(std::min(output.find('\n') + 1, output.size()));
    const bool hasCommit = found.discovery.status.isSuccess();
    const std::string_view top = hasCommit ? withoutLastLine(output) : output;
    if (!top.empty()) {
        found.location = top.substr(0, top.size() - 1);
        found.isWorkingCopy = true;
    }
    if (hasCommit || (found.isWorkingCopy && found.discovery.status.exitStatus() == isNoCommit)) {
        found.hasCommits = hasCommit;
    }
    return found;
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

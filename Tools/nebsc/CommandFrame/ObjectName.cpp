#include "CommandFrame/ObjectName.h"

#include <string_view>
#include <utility>

#include "CommandFrame/FailureText.h"
#include "CommandFrame/RevisionArguments.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Session/Paths.h"

namespace neb::nebsc {

namespace {

/// Returns the position of the first colon outside of braces, as in "HEAD^{/a: b}:main.c".
std::size_t positionOfColon(std::string_view text) {
    std::size_t depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '{') {
            ++depth;
        } else if (text[i] == '}' && depth > 0) {
            --depth;
        } else if (text[i] == ':' && depth == 0) {
            return i;
        }
    }
    return std::string_view::npos;
}

bool isRelativeToCurrentFolder(std::string_view path) {
    return path == "." || path == ".." || path.starts_with("./") || path.starts_with("../");
}

}  // namespace

std::optional<ObjectName> objectNameIn(const std::string& text) {
    const std::size_t colon = positionOfColon(text);
    if (colon == std::string::npos) {
        return std::nullopt;
    }
    const std::string path = text.substr(colon + 1);
    if (colon > 0) {
        return ObjectName{.revision = text.substr(0, colon), .path = path};
    }
    if (path.size() > 1 && path[0] >= '0' && path[0] <= '3' && path[1] == ':') {
        return ObjectName{.stage = path[0] - '0', .path = path.substr(2)};
    }
    return ObjectName{.path = path};
}

ObjectPath findObjectPath(const GitQueries& git, const ObjectName& name) {
    const WorkingCopyLocation& workingCopy = git.workingCopy();
    std::string path = name.path;
    if (isRelativeToCurrentFolder(path)) {
        const PathSearch search = findFile(workingCopy, path);
        if (!search.path) {
            return {.refused =
                        refusal(search.failure, exitFailed, NEBSourceControlPathInvalidErrorClass)};
        }
        path = *search.path == "." ? "" : *search.path;
    }
    if (path.starts_with('/')) {
        if (auto refused = refusalOfPathOutside(git, path)) {
            return {.refused = std::move(refused)};
        }
        path = pathFromTop(workingCopy, path);
    }
    path.resize(path.find_last_not_of('/') + 1);
    return {.path = path};
}

void setRevision(NEBSourceControlRequest& request, const GitQueries& git, const ObjectName& name) {
    if (name.revision) {
        request.startingRevision = unambiguousRevision(git, *name.revision);
        return;
    }
    NEBDictionary options;
    options.set(NEBSourceControlRequestOptionStage, name.stage);
    request.setOptions(std::move(options));
}

}  // namespace neb::nebsc

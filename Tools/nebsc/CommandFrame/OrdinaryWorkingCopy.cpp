#include "CommandFrame/OrdinaryWorkingCopy.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"

namespace neb::nebsc {

namespace {

/// What changes where git looks for a repository, or whom it trusts: git(1), "ENVIRONMENT
/// VARIABLES".
constexpr const char* decisiveVariables[] = {
    "GIT_DIR",
    "GIT_WORK_TREE",
    "GIT_COMMON_DIR",
    "GIT_CEILING_DIRECTORIES",
    "GIT_OBJECT_DIRECTORY",
    "GIT_TEST_ASSUME_DIFFERENT_OWNER",
};

/// Parts of names in git-config(1): those that can move the working copy, or include another file.
constexpr std::string_view decisiveSettings[] = {"worktree", "bare", "include"};

/// git init writes this.
constexpr std::string_view notBare = "bare = false";

constexpr std::size_t sizeOfSHA1 = 40;
constexpr std::size_t sizeOfSHA256 = 64;

/// More than this is no ordinary configuration.
constexpr std::size_t mostBytes = 64UL * 1024;

std::optional<std::string> contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(mostBytes, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return file.eof() && !file.bad() ? std::optional(std::move(text)) : std::nullopt;
}

std::optional<struct stat> stateOf(const std::string& path) {
    struct stat state {};
    return lstat(path.c_str(), &state) == 0 ? std::optional(state) : std::nullopt;
}

/// Returns whether the path is a folder, not a symbolic link to one, of the user who runs this.
bool isOwnFolder(const std::string& path) {
    const auto state = stateOf(path);
    return state && S_ISDIR(state->st_mode) && state->st_uid == geteuid();
}

bool isOnDevice(const std::string& folder, dev_t device) {
    const auto state = stateOf(folder);
    return state && state->st_dev == device;
}

bool hasOrdinaryConfiguration(const std::string& gitDirectory) {
    const auto content = contentOf(pathByAppendingComponent(gitDirectory, "config"));
    if (!content) {
        return false;
    }
    std::string text = lowercaseASCII(*content);
    if (const auto position = text.find(notBare); position != std::string::npos) {
        text.erase(position, notBare.size());
    }
    return std::none_of(
        std::begin(decisiveSettings), std::end(decisiveSettings),
        [&text](std::string_view word) { return text.find(word) != std::string::npos; });
}

/// Returns whether every reader of HEAD takes the name for the same branch; some valid names have
/// other characters. The name ".invalid" says that the references are not in files:
/// gitrepository-layout(5).
bool isPlainBranch(std::string_view fullName) {
    constexpr std::string_view prefix = "refs/heads/";
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/-_.";
    return fullName.size() > prefix.size() && fullName.starts_with(prefix) &&
           fullName.find_first_not_of(plain) == std::string_view::npos &&
           fullName.find("..") == std::string_view::npos &&
           fullName.find("/.") == std::string_view::npos &&
           fullName.find("//") == std::string_view::npos && !fullName.ends_with(".lock") &&
           !fullName.ends_with('.') && !fullName.ends_with('/');
}

bool isSymbolic(const std::string& pathOfReference) {
    const auto content = contentOf(pathOfReference);
    return content && content->starts_with("ref:");
}

/// Returns the full name of the branch that HEAD has, or "HEAD" if it has an id; absent for
/// anything else.
std::optional<std::string> branchOfHEAD(const std::string& gitDirectory) {
    constexpr std::string_view prefix = "ref: ";
    const std::string path = pathByAppendingComponent(gitDirectory, "HEAD");
    const auto state = stateOf(path);
    auto text = state && S_ISREG(state->st_mode) ? contentOf(path) : std::nullopt;
    if (!text || !text->ends_with('\n')) {
        return std::nullopt;
    }
    text->pop_back();
    if (isObjectId(*text)) {
        return text->size() == sizeOfSHA1 || text->size() == sizeOfSHA256
                   ? std::optional<std::string>("HEAD")
                   : std::nullopt;
    }
    if (!text->starts_with(prefix)) {
        return std::nullopt;
    }
    text->erase(0, prefix.size());
    const bool isPlain =
        isPlainBranch(*text) && !isSymbolic(pathByAppendingComponent(gitDirectory, *text));
    return isPlain ? text : std::nullopt;
}

/// Returns the answer for a folder that has a ".git".
std::optional<WorkingCopyLocation> ordinaryWorkingCopyAt(const std::string& top,
                                                         const std::string& currentFolder) {
    const std::string gitDirectory = pathByAppendingComponent(top, ".git");
    const auto within = [&gitDirectory](std::string_view name) {
        return pathByAppendingComponent(gitDirectory, name);
    };
    if (!isOwnFolder(top) || !isOwnFolder(gitDirectory) || !isOwnFolder(within("objects")) ||
        !isOwnFolder(within("refs")) || isAnythingAt(within("commondir")) ||
        !hasOrdinaryConfiguration(gitDirectory)) {
        return std::nullopt;
    }
    auto branch = branchOfHEAD(gitDirectory);
    if (!branch) {
        return std::nullopt;
    }
    return WorkingCopyLocation{.location = top,
                               .currentFolder = currentFolder,
                               .isWorkingCopy = true,
                               .isRepository = true,
                               .revisions = {.head = std::move(branch)}};
}

}  // namespace

std::optional<WorkingCopyLocation> ordinaryWorkingCopy(const std::string& folder) {
    const auto start = stateOf(folder);
    if (!start || std::any_of(std::begin(decisiveVariables), std::end(decisiveVariables),
                              [](const char* name) { return std::getenv(name) != nullptr; })) {
        return std::nullopt;
    }
    std::string top = folder;
    while (isOnDevice(top, start->st_dev)) {
        if (isAnythingAt(pathByAppendingComponent(top, ".git"))) {
            return ordinaryWorkingCopyAt(top, folder);
        }
        // The folder may be a git directory itself.
        if (top == "/" || isAnythingAt(pathByAppendingComponent(top, "HEAD"))) {
            return std::nullopt;
        }
        top = pathByDeletingLastComponent(top);
    }
    return std::nullopt;
}

}  // namespace neb::nebsc

#include "CommandFrame/BrokenReference.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/ErrnoText.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view symbolicPrefix = "ref:";

/// Returns the reference in a revision: "main" for "main~3", HEAD for "@{1}".
std::string referencePartOf(const std::string& revision) {
    std::string name = revision.substr(0, std::min(revision.find_first_of("~^:"), revision.size()));
    name.resize(std::min(name.find("@{"), name.size()));
    return name.empty() || name == "@" ? "HEAD" : name;
}

/// git takes only such names for references in the top folder of the repository.
bool isPseudoReference(const std::string& name) {
    return std::all_of(name.begin(), name.end(), [](char character) {
        return (character >= 'A' && character <= 'Z') || character == '_';
    });
}

std::vector<std::string> candidatesFor(const std::string& name) {
    if (name == "HEAD") {
        return {name};
    }
    std::vector<std::string> candidates;
    if (name.starts_with("refs/") || isPseudoReference(name)) {
        candidates.push_back(name);
    }
    for (const char* prefix : {"refs/", "refs/tags/", "refs/heads/", "refs/remotes/"}) {
        candidates.push_back(prefix + name);
    }
    candidates.push_back("refs/remotes/" + name + "/HEAD");
    return candidates;
}

/// Returns why the file cannot be read: "Permission denied". Empty if it can be read, or if there
/// is no file.
std::string obstacleTo(const std::string& path) {
    std::error_code failure;
    const fs::file_status status = fs::status(path, failure);
    if (!fs::status_known(status)) {
        return failure.message();
    }
    const bool isReadable =
        !fs::is_regular_file(status) || ::access(path.c_str(), R_OK) == 0 || errno == ENOENT;
    return isReadable ? std::string() : textOfErrno(errno);
}

/// Returns the first bytes of the file, without white space at both ends; absent if there is no
/// file.
std::optional<std::string> contentOf(const std::string& path) {
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored)) {
        return std::nullopt;
    }
    std::array<char, 4096> bytes{};
    std::ifstream file(path, std::ios::binary);
    file.read(bytes.data(), bytes.size());
    const std::string_view content(bytes.data(), static_cast<std::size_t>(file.gcount()));
    constexpr std::string_view space = " \t\r\n";
    const std::size_t start = std::min(content.find_first_not_of(space), content.size());
    return std::string(content.substr(start, content.find_last_not_of(space) + 1 - start));
}

/// Whether the file is a link to a missing file. A link to "refs/…" names another reference.
bool isDanglingLink(const std::string& path) {
    std::error_code failure;
    const std::string target = fs::read_symlink(path, failure).string();
    return !target.empty() && !target.starts_with("refs/") && !fs::exists(path, failure);
}

class Search {
public:
    explicit Search(const GitQueries& git) : _git(git) {}

    [[nodiscard]] bool isReferenceName(const std::string& name) {
        return _git.succeeds({"check-ref-format", "--allow-onelevel", name});
    }

    /// The first name that exists decides.
    [[nodiscard]] std::optional<NEBSourceControlError> errorForFirst(
        const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            if (const auto object = _git.outputOf({"rev-parse", "--verify", "--quiet", name})) {
                return _git.succeeds({"cat-file", "-e", *object})
                           ? std::nullopt
                           : std::optional(errorOfLostObject(targetOf(name), *object));
            }
            if (auto error = errorOfFile(name)) {
                return error;
            }
        }
        return std::nullopt;
    }

private:
    /// Returns the branch that HEAD stands for.
    [[nodiscard]] std::string targetOf(const std::string& name) {
        return _git.outputOf({"rev-parse", "--symbolic-full-name", name}).value_or(name);
    }

    [[nodiscard]] std::string pathOf(const std::string& name) {
        const std::string path = _git.outputOf({"rev-parse", "--git-path", name}).value_or("");
        return path.starts_with('/') ? path
                                     : pathByAppendingComponent(_git.workingCopy().location, path);
    }

    /// Follows symbolic references. A reference without a file is a branch without commits.
    [[nodiscard]] std::optional<NEBSourceControlError> errorOfFile(std::string name) {
        constexpr int maximumSteps = 5;  // git's own limit
        for (int step = 0; step < maximumSteps; ++step) {
            const std::string path = pathOf(name);
            if (const std::string obstacle = obstacleTo(path); !obstacle.empty()) {
                return errorAbout(
                    name, "its file cannot be read: " + obstacle,
                    NEBSourceControlReferenceBrokenErrorClass,
                    "Check the permissions of the file " + inQuotes(path) + " and of its folders.");
            }
            const auto content = contentOf(path);
            if (!content) {
                return isDanglingLink(path)
                           ? std::optional(errorAbout(
                                 name, "its file is a link to a file that does not exist",
                                 NEBSourceControlReferenceBrokenErrorClass,
                                 "Correct or remove the link " + inQuotes(path) + "."))
                           : std::nullopt;
            }
            if (!content->starts_with(symbolicPrefix)) {
                return errorOfContent(name, content->empty()
                                                ? "its file is empty"
                                                : "its file does not hold the name of a commit");
            }
            const std::size_t start = content->find_first_not_of(" \t", symbolicPrefix.size());
            const std::string target = content->substr(std::min(start, content->size()));
            if (!isReferenceName(target)) {  // it may lead out of the repository
                return errorOfContent(name, "its file does not hold the name of a valid reference");
            }
            name = target;
        }
        return errorOfContent(name, "it refers to itself");
    }

    [[nodiscard]] NEBSourceControlError errorOfContent(const std::string& name,
                                                       const std::string& reason) {
        const std::string log = pathOf("logs/" + name);
        std::error_code ignored;
        const std::string source = fs::is_regular_file(log, ignored)
                                       ? "the last commit in " + inQuotes(log)
                                       : std::string("the name of its commit");
        return errorAbout(name, reason, NEBSourceControlReferenceBrokenErrorClass,
                          "Write " + source + " to the file " + inQuotes(pathOf(name)) +
                              ", or remove that file and fetch the branch again.");
    }

    [[nodiscard]] static NEBSourceControlError errorOfLostObject(const std::string& name,
                                                                 const std::string& object) {
        return errorAbout(
            name,
            "it names " + object.substr(0, 12) + ", which is not in the repository or is damaged",
            NEBSourceControlObjectsDamagedErrorClass,
            "Fetch that commit again, or set the reference to a commit that exists: 'git "
            "update-ref " +
                shellQuoted(name) + " COMMIT'.");
    }

    [[nodiscard]] static NEBSourceControlError errorAbout(const std::string& name,
                                                          const std::string& reason,
                                                          NEBConstant errorClass,
                                                          const std::string& suggestion) {
        auto error = NEBSourceControlError::withDescription(
            NEBSourceControlGenericError,
            "The reference " + inQuotes(name) + " is broken: " + reason + ".");
        error.errorClass = errorClass.text();
        error.userInfo.set(NEBLocalizedRecoverySuggestionKey, suggestion);
        return error;
    }

    const GitQueries& _git;
};

}  // namespace

std::optional<NEBSourceControlError> brokenReference(const GitQueries& git,
                                                     const std::string& revision) {
    if (const std::size_t dots = revision.find(".."); dots != std::string::npos) {
        const std::size_t end = revision.find_first_not_of('.', dots);
        auto error = brokenReference(git, revision.substr(0, dots));
        return error ? error
                     : brokenReference(git, revision.substr(std::min(end, revision.size())));
    }
    const std::string reference = referencePartOf(revision);
    Search search(git);
    return search.isReferenceName(reference) ? search.errorForFirst(candidatesFor(reference))
                                             : std::nullopt;
}

}  // namespace neb::nebsc

#include "CommandFrame/GitQueries.h"

#include <fstream>
#include <utility>

#include "Platform/PathString.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"

namespace neb::nebsc {

namespace {

std::optional<std::string> firstLineOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string line;
    return std::getline(file, line) ? std::optional(std::move(line)) : std::nullopt;
}

/// Returns what "packed-refs" has for the reference: lines of an id, a blank, and a full name.
std::optional<std::string> packedId(const std::string& gitDirectory, const std::string& fullName) {
    const std::string end = " " + fullName;
    std::ifstream file(pathByAppendingComponent(gitDirectory, "packed-refs"), std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        if (line.ends_with(end)) {
            return line.substr(0, line.size() - end.size());
        }
    }
    return std::nullopt;
}

/// Returns the full commit id of HEAD if HEAD, the file of its branch, or the file of packed
/// references has it. gitrepository-layout(5): the first two have the id, or "ref: " and the name
/// of another file.
std::optional<std::string> headCommitInFiles(const std::string& gitDirectory) {
    constexpr std::string_view prefix = "ref: ";
    auto line = firstLineOf(pathByAppendingComponent(gitDirectory, "HEAD"));
    if (line && line->starts_with(prefix)) {
        const std::string branch = line->substr(prefix.size());
        const std::string path = pathByAppendingComponent(gitDirectory, branch);
        line = isAnythingAt(path) ? firstLineOf(path) : packedId(gitDirectory, branch);
    }
    return line && isObjectId(*line) ? line : std::nullopt;
}

std::string gitDirectoryOf(const WorkingCopyLocation& workingCopy) {
    return pathByAppendingComponent(workingCopy.location, ".git");
}

}  // namespace

// ---- any question -----------------------------------------------------------------------------

ChildOutcome GitQueries::run(std::vector<std::string> arguments) const {
    if (!_isAvailable) {
        return {TerminationStatus::notStarted({}), {}, {}};
    }
    arguments.insert(arguments.begin(), "--literal-pathspecs");
    return runGit(_interruption, _trace, std::move(arguments), _workingCopy.location, _trust);
}

bool GitQueries::succeeds(std::vector<std::string> arguments) const {
    return run(std::move(arguments)).status.isSuccess();
}

std::optional<std::string> GitQueries::outputOf(std::vector<std::string> arguments) const {
    return trimmedOutputOf(run(std::move(arguments)));
}

std::vector<std::string> GitQueries::linesOf(std::vector<std::string> arguments) const {
    const std::string output(run(std::move(arguments)).output);
    std::vector<std::string> lines;
    forEachLine(output, [&lines](std::string_view line) { lines.emplace_back(line); });
    return lines;
}

// ---- revisions --------------------------------------------------------------------------------

ChildOutcome GitQueries::runForCommit(const std::string& revision) const {
    return run({"rev-parse", "--verify", "--quiet", "--end-of-options", revision + "^{commit}"});
}

std::optional<std::string> GitQueries::commitId(const std::string& revision) const {
    const auto known = _workingCopy.revisions.commits.find(revision);
    return known == _workingCopy.revisions.commits.end() ? trimmedOutputOf(runForCommit(revision))
                                                         : known->second;
}

bool GitQueries::isCommit(const std::string& revision) const {
    return commitId(revision).has_value();
}

bool GitQueries::isKnownCommit(const std::string& revision) const {
    const auto known = _workingCopy.revisions.commits.find(revision);
    return known != _workingCopy.revisions.commits.end() && known->second.has_value();
}

bool GitQueries::isUnknownRevision(const std::string& revision) const {
    return !isKnownCommit(revision) && runForCommit(revision).status.exitStatus() == 1;
}

bool GitQueries::isWithoutCommits() const {
    if (_workingCopy.hasCommits) {
        return !*_workingCopy.hasCommits;
    }
    return _isAvailable && !headCommitInFiles(gitDirectoryOf(_workingCopy)) &&
           run({"rev-parse", "--verify", "--quiet", "HEAD"}).status.exitStatus() == 1;
}

std::optional<std::string> GitQueries::headCommit() const {
    constexpr std::size_t length = 12;
    const auto commit =
        _isAvailable ? headCommitInFiles(gitDirectoryOf(_workingCopy)) : std::nullopt;
    return commit ? commit->substr(0, length)
                  : outputOf({"rev-parse", "--verify", "--quiet", "--short=12", "HEAD"});
}

bool GitQueries::isMerged(const std::string& revision) const {
    return succeeds({"merge-base", "--is-ancestor", revision, "HEAD"});
}

// ---- files ------------------------------------------------------------------------------------

bool GitQueries::isTracked(const std::string& path) const {
    return outputOf({"ls-files", "-z", "--", path}).has_value();
}

/// git check-ignore does not accept --literal-pathspecs, and takes no argument for a pattern.
bool GitQueries::isIgnored(const std::string& path) const {
    return _isAvailable && runGit(_interruption, _trace, {"check-ignore", "--quiet", "--", path},
                                  _workingCopy.location, _trust)
                               .status.isSuccess();
}

/// Reads the tree instead of the object, because a submodule's commit is not in the repository.
std::optional<std::string> GitQueries::typeOfEntry(const std::string& revision,
                                                   const std::string& path) const {
    const std::string fromTop = pathFromTop(_workingCopy, path);
    if (fromTop.empty()) {
        return "tree";
    }
    const ChildOutcome entry = run({"ls-tree", "--full-tree", "-z", revision, fromTop});
    if (!entry.status.isSuccess()) {
        return std::nullopt;
    }
    Scanner scanner(entry.output);
    scanner.takeUpToSpace();  // the mode
    scanner.skipSpace();
    return std::string(scanner.takeUpToSpace());
}

}  // namespace neb::nebsc

#include "CommandFrame/RevisionArguments.h"

#include <algorithm>
#include <filesystem>

#include "CommandFrame/BrokenReference.h"
#include "CommandFrame/FailureText.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

std::string orHEAD(const std::string& revision) {
    return revision.empty() ? "HEAD" : revision;
}

UsageError tooMany(std::string_view what, std::size_t most) {
    const std::string count = most == 1 ? "one " : "two ";
    return invalidArguments("too many arguments: expected at most " + count + std::string(what) +
                            (most == 1 ? "" : "s"));
}

/// git takes no argument for a file if there is no working copy.
bool isNameAtTop(const WorkingCopyLocation& workingCopy, const std::string& name) {
    return workingCopy.isWorkingCopy &&
           isAnythingAt(pathByAppendingComponent(workingCopy.location, name));
}

/// Returns the full commit id; the revision itself if it stands for no commit.
std::string commitIdOr(const GitQueries& git, const std::string& revision) {
    return git.commitId(revision).value_or(revision);
}

/// Reads the arguments one by one.
class Reader {
public:
    explicit Reader(const GitQueries& git) : _git(git) {}

    [[nodiscard]] RevisionArguments read(const Arguments& arguments);

private:
    [[nodiscard]] const WorkingCopyLocation& workingCopy() const { return _git.workingCopy(); }
    /// "^A" stands for a commit to git too, but means all commits except those of A.
    [[nodiscard]] bool isRevision(const std::string& argument) const {
        return !argument.empty() && !argument.starts_with('-') && !argument.starts_with('^') &&
               _git.isCommit(argument);
    }
    /// Whether the argument is a range between two commits that are known already.
    [[nodiscard]] bool isKnownRange(const std::string& argument) const;
    [[nodiscard]] std::optional<std::vector<std::string>> revisionsIn(
        const std::string& argument) const;
    [[nodiscard]] std::optional<CommandOutput> take(const std::string& argument,
                                                    bool mustBeRevision);
    [[nodiscard]] std::optional<CommandOutput> takeFile(const std::string& argument,
                                                        bool mustExist);
    [[nodiscard]] bool exists(const std::string& file) const;
    void makeRangeUnambiguous();

    const GitQueries& _git;
    RevisionArguments _result;
};

RevisionArguments Reader::read(const Arguments& arguments) {
    _result.refused = refusalOutsideRepository(_git);
    const std::vector<std::string> all = revisionAndFileArguments(arguments);
    const auto countAfterDashes = arguments.countAfterDashes();
    const std::size_t files = std::min(countAfterDashes.value_or(0), all.size());
    for (std::size_t i = 0; i < all.size() && !_result.refused; ++i) {
        if (i + files < all.size()) {
            _result.refused = take(all[i], countAfterDashes.has_value());
        } else {
            _result.refused = takeFile(all[i], false);
        }
    }
    if (!_result.refused) {
        makeRangeUnambiguous();
    }
    return std::move(_result);
}

bool Reader::isKnownRange(const std::string& argument) const {
    const std::vector<std::string> sides = revisionsToAskFor(argument);
    return sides.size() == 2 && _git.isKnownCommit(sides[0]) && _git.isKnownCommit(sides[1]);
}

/// Returns both ends of a range, or the one revision.
std::optional<std::vector<std::string>> Reader::revisionsIn(const std::string& argument) const {
    if (!isKnownRange(argument) && isRevision(argument)) {
        return std::vector{unambiguousRevision(_git, argument)};
    }
    const std::size_t dots = argument.find("..");
    if (dots == std::string::npos) {
        return std::nullopt;
    }
    const std::size_t end = dots + (argument.substr(dots).starts_with("...") ? 3 : 2);
    const std::string first = argument.substr(0, dots);
    const std::string second = argument.substr(end);
    if ((first.empty() && second.empty()) || !isRevision(orHEAD(first)) ||
        !isRevision(orHEAD(second))) {
        return std::nullopt;
    }
    return std::vector{unambiguousRevision(_git, orHEAD(first)),
                       unambiguousRevision(_git, orHEAD(second))};
}

std::optional<CommandOutput> Reader::take(const std::string& argument, bool mustBeRevision) {
    const auto revisions = _result.files.empty() ? revisionsIn(argument) : std::nullopt;
    if (!revisions) {
        return mustBeRevision ? refusalOfUnknownRevision(_git, argument) : takeFile(argument, true);
    }
    const PathSearch search = findAbsolutePath(workingCopy().currentFolder, argument);
    if (!mustBeRevision && workingCopy().isWorkingCopy && search.path &&
        isAnythingAt(*search.path)) {
        return refusal(inQuotes(argument) +
                           " is both a revision and a file; put '--' before it for the file, or "
                           "after it for the revision.",
                       exitFailed, NEBSourceControlRevisionAmbiguousErrorClass);
    }
    _result.revisions.insert(_result.revisions.end(), revisions->begin(), revisions->end());
    if (revisions->size() == 2) {
        _result.dots = argument.find("...") == std::string::npos ? ".." : "...";
    }
    return std::nullopt;
}

std::optional<CommandOutput> Reader::takeFile(const std::string& argument, bool mustExist) {
    const PathSearch search = findFile(workingCopy(), argument);
    if (!search.path) {
        return refusal(search.failure, exitFailed, NEBSourceControlPathInvalidErrorClass);
    }
    if (mustExist && !exists(*search.path)) {
        if (auto unborn = refusalOfUnbornHEAD(_git, argument)) {
            return unborn;
        }
        if (const auto broken = brokenReference(_git, argument)) {
            return failureWith(*broken);
        }
        if (auto other = refusalOfOtherObject(_git, argument)) {
            return other;
        }
        return refusal(
            inQuotes(argument) +
                " is neither a revision nor a file; put '--' before the name of a deleted file.",
            exitFailed, NEBSourceControlRevisionUnknownErrorClass);
    }
    _result.files.push_back(*search.path);
    return std::nullopt;
}

/// Looks on disk and in the index; without a working copy, in the last of the revisions.
bool Reader::exists(const std::string& file) const {
    if (!workingCopy().isWorkingCopy) {
        const std::string& revision = _result.revisions.empty() ? "HEAD" : _result.revisions.back();
        return !_git.typeOfEntry(revision, file).value_or("").empty();
    }
    return isAnythingAt(file) || _git.isTracked(file);
}

/// The request joins the two to one argument.
void Reader::makeRangeUnambiguous() {
    std::vector<std::string>& revisions = _result.revisions;
    if (revisions.size() == 2 &&
        (isNameAtTop(workingCopy(), revisions[0] + ".." + revisions[1]) ||
         isNameAtTop(workingCopy(), revisions[0] + "..." + revisions[1]))) {
        revisions = {commitIdOr(_git, revisions[0]), commitIdOr(_git, revisions[1])};
    }
}

/// Distinguishes revisions from files by what is on disk.
RevisionArguments readWithoutGit(const WorkingCopyLocation& workingCopy,
                                 const Arguments& arguments) {
    RevisionArguments result;
    const std::vector<std::string> all = revisionAndFileArguments(arguments);
    const auto countAfterDashes = arguments.countAfterDashes();
    const std::size_t files = std::min(countAfterDashes.value_or(0), all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        const PathSearch search = findAbsolutePath(workingCopy.currentFolder, all[i]);
        const bool isFound = !countAfterDashes && search.path && isAnythingAt(*search.path);
        if (i + files >= all.size() || isFound || !result.files.empty()) {
            if (!search.path) {
                result.refused =
                    refusal(search.failure, exitFailed, NEBSourceControlPathInvalidErrorClass);
                return result;
            }
            result.files.push_back(*search.path);
        } else if (all[i].find("..") != std::string::npos) {
            result.refused = refusalWithAdvice(
                inQuotes(all[i]) + " is a range of git, and the plug-in is not for git.",
                "'nebsc diff A B' compares two revisions.",
                NEBSourceControlRevisionUnknownErrorClass);
            return result;
        } else {
            result.revisions.push_back(all[i]);
        }
    }
    return result;
}

}  // namespace

void RevisionArguments::copyTo(NEBSourceControlRequest& request) const {
    if (!files.empty()) {
        request.files.emplace(files.begin(), files.end());
    }
    if (!revisions.empty()) {
        request.startingRevision = revisions.front();
    }
    if (revisions.size() > 1) {
        request.endingRevision = revisions.back();
    }
}

RevisionArguments readRevisionArguments(const GitQueries& git, const Arguments& arguments,
                                        RevisionArgumentLimits limits) {
    RevisionArguments result = git.isAvailable() ? Reader(git).read(arguments)
                                                 : readWithoutGit(git.workingCopy(), arguments);
    if (!result.refused && result.revisions.size() > limits.revisions) {
        throw tooMany("revision", limits.revisions);
    }
    if (!result.refused && result.files.size() > limits.files) {
        throw tooMany("file", limits.files);
    }
    return result;
}

std::vector<std::string> revisionAndFileArguments(const Arguments& arguments) {
    std::vector<std::string> all = arguments.all("REVISION");
    const std::vector<std::string>& others = arguments.all("FILE");
    all.insert(all.end(), others.begin(), others.end());
    return all;
}

std::vector<std::string> revisionsToAskFor(const Arguments& arguments) {
    std::vector<std::string> all = revisionAndFileArguments(arguments);
    all.resize(all.size() - std::min(arguments.countAfterDashes().value_or(0), all.size()));
    std::vector<std::string> revisions;
    for (const std::string& argument : all) {
        const std::vector<std::string> sides = revisionsToAskFor(argument);
        revisions.insert(revisions.end(), sides.begin(), sides.end());
    }
    return revisions;
}

PathSearch findFile(const WorkingCopyLocation& workingCopy, const std::string& argument) {
    if (workingCopy.isWorkingCopy || argument.starts_with('/')) {
        return findAbsolutePath(workingCopy.currentFolder, argument);
    }
    return {std::filesystem::path(argument).lexically_normal().string(), ""};
}

std::string unambiguousRevision(const GitQueries& git, const std::string& revision) {
    return revision == "0" || isNameAtTop(git.workingCopy(), revision) ? commitIdOr(git, revision)
                                                                       : revision;
}

std::string objectAt(const GitQueries& git, const std::string& revision, const std::string& path) {
    return revision + ":" + pathFromTop(git.workingCopy(), path);
}

}  // namespace neb::nebsc

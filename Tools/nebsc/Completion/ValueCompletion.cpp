#include "Completion/ValueCompletion.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "CommandLine/CommonOptions.h"
#include "Completion/RepositoryNames.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

/// Returns the paths that start with the text, in order, a directory with a trailing "/". Hidden
/// files are included only if the text starts with their dot, as in a shell.
std::vector<Candidate> pathsWithPrefix(const std::string& text, bool isForFolders) {
    const std::size_t slash = text.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : text.substr(0, slash + 1);
    const std::string start = text.substr(folder.size());
    std::vector<Candidate> paths;
    std::error_code failure;
    for (fs::directory_iterator entry(folder.empty() ? "." : folder, failure), end;
         !failure && entry != end; entry.increment(failure)) {
        const std::string name = entry->path().filename().string();
        std::error_code ignored;
        const bool isFolder = entry->is_directory(ignored);
        if (name.starts_with(start) && (isFolder || !isForFolders) &&
            (!name.starts_with('.') || !start.empty())) {
            paths.push_back({folder + name + (isFolder ? "/" : "")});
        }
    }
    std::sort(paths.begin(), paths.end(),
              [](const auto& left, const auto& right) { return left.text < right.text; });
    return paths;
}

class ValueCompletion {
public:
    ValueCompletion(const CompletionPoint& point, const HostSession& session)
        : _point(point), _names(session), _head(point.head), _text(point.text) {}

    [[nodiscard]] Completion run();

private:
    [[nodiscard]] Completion valuesOfKind();
    [[nodiscard]] std::vector<Candidate> branchPairs();
    [[nodiscard]] std::vector<Candidate> revisionsOrRanges();
    [[nodiscard]] std::vector<Candidate> choices() const;
    /// Returns whether the text is REVISION:PATH.
    [[nodiscard]] bool isInCommit() const { return _text.find(':', 1) != std::string::npos; }
    [[nodiscard]] std::vector<Candidate> entriesOfCommit();
    [[nodiscard]] std::vector<Candidate> entriesOfIndex();
    [[nodiscard]] std::vector<Candidate> objectNames() {
        return _text.starts_with(':') ? entriesOfIndex()
               : isInCommit()         ? entriesOfCommit()
                                      : _names.revisions();
    }
    /// Moves the first characters of the text to the head, which stays as it is.
    void skip(std::size_t count) {
        _head += _text.substr(0, count);
        _text.erase(0, count);
    }
    /// Returns the remote that the previous argument names.
    [[nodiscard]] std::string remote() const {
        const auto& operands = _point.before.operands();
        return operands.empty() ? "" : operands.back();
    }

    const CompletionPoint& _point;
    RepositoryNames _names;
    std::string _head;
    std::string _text;
};

/// Completes LOCAL:DEST: branches of this repository before the colon, of the remote after it.
std::vector<Candidate> ValueCompletion::branchPairs() {
    const std::size_t colon = _text.find(':');
    if (colon == std::string::npos) {
        return _names.branches();
    }
    skip(colon + 1);
    return _names.branchesOf(remote());
}

std::vector<Candidate> ValueCompletion::revisionsOrRanges() {
    const std::size_t dots = _text.rfind("..");
    if (dots != std::string::npos && dots > 0) {
        skip(dots + 2);
    }
    return _names.revisions();
}

std::vector<Candidate> ValueCompletion::choices() const {
    std::vector<Candidate> candidates;
    for (std::string& choice : choicesOf(*_point.parameter)) {
        candidates.push_back({std::move(choice)});
    }
    return candidates;
}

/// Completes the last name of REVISION:PATH.
std::vector<Candidate> ValueCompletion::entriesOfCommit() {
    const std::size_t colon = _text.find(':', 1);
    const std::size_t slash = _text.rfind('/');
    const bool hasFolder = slash != std::string::npos && slash > colon;
    const std::string folder = _text.substr(0, hasFolder ? slash : colon + 1);
    skip((hasFolder ? slash : colon) + 1);
    return _names.entriesOf(folder);
}

/// Completes the last name of :PATH or :STAGE:PATH.
std::vector<Candidate> ValueCompletion::entriesOfIndex() {
    constexpr std::size_t stageSize = 3;  // ":1:"
    const bool hasStage =
        _text.size() >= stageSize && _text[1] >= '0' && _text[1] <= '3' && _text[2] == ':';
    const std::string stage = hasStage ? _text.substr(1, 1) : "0";
    skip(hasStage ? stageSize : 1);
    const std::size_t slash = _text.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : _text.substr(0, slash + 1);
    skip(folder.size());
    return _names.entriesOfIndex(folder, stage);
}

Completion ValueCompletion::valuesOfKind() {
    switch (_point.parameter->takes) {
        case Takes::nothing:
            return {};
        case Takes::text:
            return {.candidates = choices()};
        case Takes::path:
        case Takes::pathAsWritten:
            return {.paths = ShellPaths::files};
        case Takes::folder:
            return {.paths = ShellPaths::folders};
        case Takes::folderOrObject:
            return isInCommit() ? Completion{.candidates = entriesOfCommit()}
                                : Completion{.paths = ShellPaths::folders};
        case Takes::objectName:
            return {.candidates = objectNames()};
        case Takes::branch:
            return {.candidates = _names.branches()};
        case Takes::revision:
            return {.candidates = _names.revisions()};
        case Takes::revisionOrPath:
            return {.paths = ShellPaths::files, .candidates = revisionsOrRanges()};
        case Takes::tag:
            return {.candidates = _names.tags()};
        case Takes::stash:
            return {.candidates = _names.stashes()};
        case Takes::remote:
            return {.candidates = _names.remotes()};
        case Takes::remoteBranch:
            return {.candidates = _names.remoteBranches()};
        case Takes::branchOfRemote:
            return {.candidates = _names.branchesOf(remote())};
        case Takes::branchPair:
            return {.candidates = branchPairs()};
        case Takes::location:
            return {.paths = ShellPaths::folders, .candidates = _names.locations()};
    }
    return {};
}

Completion ValueCompletion::run() {
    Completion completion = valuesOfKind();
    auto& [paths, candidates] = completion;
    if (paths != ShellPaths::none && _point.before.parsed().arguments.has(folderOption)) {
        const auto found = pathsWithPrefix(_text, paths == ShellPaths::folders);
        candidates.insert(candidates.end(), found.begin(), found.end());
        paths = ShellPaths::none;
    }
    std::erase_if(candidates, [this](const Candidate& candidate) {
        return !candidate.text.starts_with(_text) || candidate.text.starts_with('-');
    });
    for (Candidate& candidate : candidates) {
        candidate.text.insert(0, _head);
    }
    return completion;
}

}  // namespace

Completion completeValue(const CompletionPoint& point, const HostSession& session) {
    return ValueCompletion(point, session).run();
}

}  // namespace neb::nebsc

#include "CommandFrame/HistoryTask.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/PathString.h"
#include "Platform/Scanner.h"
#include "Session/GitProgram.h"
#include "Terminal/Presentation.h"

namespace neb::nebsc {

namespace {

std::string orHEAD(const std::string& revision) {
    return revision.empty() ? "HEAD" : revision;
}

CommandOutput tooMany(std::string_view what, std::size_t most) {
    const std::string count = most == 1 ? "one " : "two ";
    return refusal("There are too many words: " + count + std::string(what) +
                       (most == 1 ? "" : "s") + " at most can be given.",
                   exitNotUnderstood);
}

}  // namespace

// ---- words ------------------------------------------------------------------------------------

/// "^A" stands for a commit to git, too, but means all commits but those of A.
bool HistoryTask::isRevision(const std::string& word) {
    return !word.empty() && !word.starts_with('-') && !word.starts_with('^') &&
           askForCommit(word).status.isSuccess();
}

/// Both ends for a range, one revision for a word that is one.
std::optional<std::vector<std::string>> HistoryTask::revisionsIn(const std::string& word) {
    if (isRevision(word)) {
        return std::vector{unmistakable(word)};
    }
    const std::size_t dots = word.find("..");
    if (dots == std::string::npos) {
        return std::nullopt;
    }
    const std::size_t behind = dots + (word.substr(dots).starts_with("...") ? 3 : 2);
    const std::string start = word.substr(0, dots);
    const std::string end = word.substr(behind);
    if ((start.empty() && end.empty()) || !isRevision(orHEAD(start)) || !isRevision(orHEAD(end))) {
        return std::nullopt;
    }
    return std::vector{unmistakable(orHEAD(start)), unmistakable(orHEAD(end))};
}

PathSearch HistoryTask::findFile(const std::string& word) const {
    if (place().isWorkingCopy || word.starts_with('/')) {
        return findAbsolutePath(currentFolder(), word);
    }
    return {std::filesystem::path(word).lexically_normal().string(), ""};
}

bool HistoryTask::isThere(const std::string& file, const Words& words) {
    if (!place().isWorkingCopy) {
        const std::string& revision = words.revisions.empty() ? "HEAD" : words.revisions.back();
        return !typeOfEntry(revision, file).value_or("").empty();
    }
    return isAnythingAt(file) || answer({"ls-files", "-z", "--", file});
}

std::optional<CommandOutput> HistoryTask::takeFile(const std::string& word, bool mustBeThere,
                                                   Words& words) {
    const PathSearch search = findFile(word);
    if (!search.path) {
        return refusal(search.failure, exitFailed, NEBSourceControlPathInvalidErrorClass);
    }
    if (mustBeThere && !isThere(*search.path, words)) {
        if (const auto broken = brokenReference(word)) {
            return failureWith(*broken);
        }
        return refusal("There is no revision and no file " + inQuotes(word) +
                           "; put \"--\" in front of the name of a file that is gone.",
                       exitFailed, NEBSourceControlRevisionUnknownErrorClass.text());
    }
    words.files.push_back(*search.path);
    return std::nullopt;
}

std::optional<CommandOutput> HistoryTask::take(const std::string& word, bool mustBeRevision,
                                               Words& words) {
    const auto revisions = words.files.empty() ? revisionsIn(word) : std::nullopt;
    if (!revisions) {
        return mustBeRevision ? refusalOfUnknownRevision(word) : takeFile(word, true, words);
    }
    const PathSearch search = findAbsolutePath(currentFolder(), word);
    if (!mustBeRevision && place().isWorkingCopy && search.path && isAnythingAt(*search.path)) {
        return refusal(
            inQuotes(word) +
                " is both a revision and a file; put \"--\" in front of it for the file, "
                "or behind it for the revision.",
            exitFailed, NEBSourceControlRevisionAmbiguousErrorClass);
    }
    words.revisions.insert(words.revisions.end(), revisions->begin(), revisions->end());
    if (revisions->size() == 2) {
        words.dots = word.find("...") == std::string::npos ? ".." : "...";
    }
    return std::nullopt;
}

HistoryTask::Words HistoryTask::readWords(std::size_t mostRevisions, std::size_t mostFiles) {
    Words words;
    if (const ChildOutcome repository = ask({"rev-parse", "--git-dir"});
        !repository.status.isSuccess()) {
        words.refused = failureOf(repository);
        return words;
    }
    std::vector<std::string> all = arguments().all("REVISION");
    const std::vector<std::string>& others = arguments().all("FILE");
    all.insert(all.end(), others.begin(), others.end());
    const auto behindDashes = arguments().wordsBehindDashes();
    const std::size_t files = std::min(behindDashes.value_or(0), all.size());
    for (std::size_t i = 0; i < all.size() && !words.refused; ++i) {
        if (all[i].empty()) {
            words.refused =
                refusal("A word is empty; a revision or the path of a file was expected.",
                        exitNotUnderstood);
        } else if (i + files < all.size()) {
            words.refused = take(all[i], behindDashes.has_value(), words);
        } else {
            words.refused = takeFile(all[i], false, words);
        }
    }
    makeRangeUnmistakable(words.revisions);
    if (!words.refused && words.revisions.size() > mostRevisions) {
        words.refused = tooMany("revision", mostRevisions);
    } else if (!words.refused && words.files.size() > mostFiles) {
        words.refused = tooMany("file", mostFiles);
    }
    return words;
}

/// The request makes one word of the two.
void HistoryTask::makeRangeUnmistakable(std::vector<std::string>& revisions) {
    if (revisions.size() == 2 && (isNameAtTop(revisions[0] + ".." + revisions[1]) ||
                                  isNameAtTop(revisions[0] + "..." + revisions[1]))) {
        revisions = {commitOf(revisions[0]), commitOf(revisions[1])};
    }
}

std::string HistoryTask::unmistakable(const std::string& revision) {
    return revision == "0" || isNameAtTop(revision) ? commitOf(revision) : revision;
}

/// Without a working copy git takes no word for a file.
bool HistoryTask::isNameAtTop(const std::string& word) const {
    return place().isWorkingCopy && isAnythingAt(pathByAppendingComponent(place().location, word));
}

std::string HistoryTask::commitOf(const std::string& revision) {
    return answerOf(askForCommit(revision)).value_or(revision);
}

// ---- what is not there ------------------------------------------------------------------------

std::shared_ptr<NEBSourceControlRequest> HistoryTask::requestAboutWords(std::int32_t type,
                                                                        const Words& words) const {
    auto request = requestOfType(type);
    if (!words.files.empty()) {
        request->files.emplace(words.files.begin(), words.files.end());
    }
    if (!words.revisions.empty()) {
        request->startingRevision = words.revisions.front();
    }
    if (words.revisions.size() > 1) {
        request->endingRevision = words.revisions.back();
    }
    return request;
}

std::optional<CommandOutput> HistoryTask::refusalOfRevision(const std::string& revision) {
    if (revision.starts_with('-')) {
        return std::nullopt;
    }
    if (revision.starts_with('^')) {
        return refusalOfUnknownRevision(revision);
    }
    const ChildOutcome commit = askForCommit(revision);
    if (commit.status.isSuccess()) {
        return std::nullopt;
    }
    return commit.status.exitStatus() == 1 ? refusalOfUnknownRevision(revision) : failureOf(commit);
}

std::optional<CommandOutput> HistoryTask::refusalWithoutCommits() {
    if (!isWithoutCommits()) {
        return std::nullopt;
    }
    if (const auto broken = brokenReference("HEAD")) {
        return failureWith(*broken);
    }
    const std::string branch =
        answer({"symbolic-ref", "--quiet", "--short", "HEAD"}).value_or("HEAD");
    return refusal("There are no commits yet on the current branch " + inQuotes(branch) + ".",
                   exitFailed, NEBSourceControlNoCommitsYetErrorClass.text());
}

std::optional<CommandOutput> HistoryTask::refusalOfPathOutside(const std::string& path) const {
    return liesWithin(path, place().location)
               ? std::nullopt
               : std::optional(
                     refusal(inQuotes(path) + " lies outside the " +
                                 (place().isWorkingCopy ? "working copy " : "repository ") +
                                 inQuotes(place().location) + ".",
                             exitFailed, NEBSourceControlPathOutsideErrorClass));
}

std::optional<CommandOutput> HistoryTask::refusalInsideRepository(const std::string& path) {
    std::error_code ignored;
    const std::string place = std::filesystem::weakly_canonical(path, ignored).string();
    for (const char* question : {"--git-dir", "--git-common-dir"}) {
        const auto folder = answer({"rev-parse", "--path-format=absolute", question});
        if (folder &&
            liesWithin(place, std::filesystem::weakly_canonical(*folder, ignored).string())) {
            return refusal(inQuotes(path) + " lies in the repository's own folder " +
                               inQuotes(*folder) + "; nothing was written.",
                           exitFailed, NEBSourceControlPathInvalidErrorClass);
        }
    }
    return std::nullopt;
}

// ---- objects ----------------------------------------------------------------------------------

std::string HistoryTask::pathFromTop(const std::string& path) const {
    if (!path.starts_with('/')) {
        return path;
    }
    const std::string& top = place().location;
    return path == top ? std::string() : path.substr(top == "/" ? 1 : top.size() + 1);
}

/// The tree is asked, not the object: a submodule's commit is not in the repository.
std::optional<std::string> HistoryTask::typeOfEntry(const std::string& revision,
                                                    const std::string& path) {
    const std::string fromTop = pathFromTop(path);
    if (fromTop.empty()) {
        return "tree";
    }
    const ChildOutcome entry = ask({"ls-tree", "--full-tree", "-z", revision, fromTop});
    if (!entry.status.isSuccess()) {
        return std::nullopt;
    }
    Scanner scanner(entry.output);
    scanner.takeUpToSpace();  // the mode
    scanner.skipSpace();
    return std::string(scanner.takeUpToSpace());
}

}  // namespace neb::nebsc

#include "NEBFoundation/NEBSourceControlErrorDetails.h"

#include <algorithm>
#include <set>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/Text.h"

namespace neb {

namespace {

constexpr std::string_view hintMark = "hint:";
constexpr std::string_view remoteMark = "remote:";

/// Files named in a line that begins with `beginning`: what stands between `before` and `after`,
/// each time. An empty `before` is the place behind the beginning, an empty `after` the line's end.
/// The first that a line shows decides, with all others of the same beginning.
struct Mention {
    std::string_view errorClass;
    std::string_view beginning, before, after;
};

/// A line that holds `heading` and is followed by a list of files, each behind `indentation`.
struct Listing {
    std::string_view errorClass;
    std::string_view heading, indentation;
};

constexpr Mention mentions[] = {
    {NEBSourceControlPathUnknownErrorClass, "", "pathspec '", "' did not match any file"},
    {NEBSourceControlPathUnknownErrorClass, "fatal: no such path '", "", "' in "},
    {NEBSourceControlPathUnknownErrorClass, "fatal: no such path ", "",
     " in "},  // where a revision is given
    {NEBSourceControlPathUnknownErrorClass, "fatal: Cannot lstat '", "", "': "},
    {NEBSourceControlPathUnknownErrorClass, "fatal: cannot stat path '", "", "': "},
    {NEBSourceControlPathUnknownErrorClass, "fatal: path '", "", "' exists on disk, but not in "},
    {NEBSourceControlPathUnknownErrorClass, "fatal: path '", "", "' does not exist in '"},
    {NEBSourceControlPathUnknownErrorClass, "fatal: not under version control, source=", "",
     ", destination="},
    {NEBSourceControlPathUnknownErrorClass, "fatal: bad source, source=", "", ", destination="},
    {NEBSourceControlPathOutsideErrorClass, "fatal: ", ": '", "' is outside repository"},
    {NEBSourceControlPathOutsideErrorClass, "fatal: pathspec '", "", "' is beyond a symbolic link"},
    {NEBSourceControlPathInSubmoduleErrorClass, "fatal: Pathspec '", "", "' is in submodule '"},
    {NEBSourceControlOtherToolsErrorClass, "fatal: ", "", ": clean filter '"},
    {NEBSourceControlOtherToolsErrorClass, "fatal: ", "", ": smudge filter "},
    {NEBSourceControlLocalChangesErrorClass, "error: Entry '", "", "' not uptodate."},
    {NEBSourceControlNeedsCleanTreeErrorClass, "", "", ": needs update"},
    {NEBSourceControlUntrackedInTheWayErrorClass, "error: Untracked working tree file '", "",
     "' would be "},
    {NEBSourceControlConflictUnresolvedErrorClass, "U\t", "", ""},
    {NEBSourceControlConflictUnresolvedErrorClass, "", "", ": needs merge"},
    {NEBSourceControlConflictUnresolvedErrorClass, "warning: path '", "", "' is unmerged"},
    {NEBSourceControlConflictUnresolvedErrorClass, "error: path '", "", "' is unmerged"},
    {NEBSourceControlConflictErrorClass, "CONFLICT (", "): Merge conflict in ", ""},
    {NEBSourceControlConflictErrorClass, "CONFLICT (modify/delete): ", "", " deleted in "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/delete): ", " renamed to ", " in "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/rename): ", "", " renamed to "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/rename): ", " renamed to ", " in "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/rename): ", " and to ", " in "},
    // the merge of git before 2.50 that was asked for by its name
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/rename): Rename \"", "", "\"->\""},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/rename): Rename \"", "\"->\"", "\" in "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (rename/add): ", " Added ", " in "},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (file/directory): There is a directory with name ", "", " in "},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (directory/file): There is a directory with name ", "", " in "},
    // its successor
    {NEBSourceControlConflictErrorClass, "CONFLICT (file/directory): directory in the way of ", "",
     " from "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (file location): ", "", " added in "},
    {NEBSourceControlConflictErrorClass, "CONFLICT (distinct types): ", "", " had different types"},
    {NEBSourceControlConflictErrorClass, "warning: Cannot merge binary files: ", "", " ("},
    {NEBSourceControlDestinationExistsErrorClass, "fatal: destination path '", "",
     "' already exists"},
    {NEBSourceControlDestinationExistsErrorClass, "fatal: destination ", ", destination=", ""},
    {NEBSourceControlDestinationExistsErrorClass, "fatal: cannot move directory over file, ",
     ", destination=", ""},
    {NEBSourceControlDestinationMissingErrorClass, "fatal: destination ", ", destination=", ""},
    {NEBSourceControlSourceDirectoryEmptyErrorClass,
     "fatal: source directory is empty, source=", "", ", destination="},
    {NEBSourceControlPermissionDeniedErrorClass, "error: open(\"", "", "\"): "},
    {NEBSourceControlPermissionDeniedErrorClass, "error: unable to create file ", "", ": "},
    {NEBSourceControlPermissionDeniedErrorClass, "error: unable to unlink old '", "", "': "},
    {NEBSourceControlPermissionDeniedErrorClass, "warning: unable to unlink '", "", "': "},
    {NEBSourceControlPermissionDeniedErrorClass, "warning: could not open directory '", "", "': "},
    {NEBSourceControlObjectsDamagedErrorClass, "error: unable to read sha1 file of ", "", " ("},
    {NEBSourceControlConflictUnresolvedErrorClass, "fatal: conflicted, source=", "",
     ", destination="},
    {NEBSourceControlPathInvalidErrorClass,
     "fatal: can not move directory into itself, source=", "", ", destination="},
    {NEBSourceControlPathInvalidErrorClass, "error: invalid path '", "", "'"},
    {NEBSourceControlLineEndsRefusedErrorClass, "fatal: CRLF would be replaced by LF in ", "", ""},
    {NEBSourceControlLineEndsRefusedErrorClass, "fatal: LF would be replaced by CRLF in ", "", ""},
    {NEBSourceControlEncodingFailedErrorClass, "", "failed to encode '", "' from "},
    {NEBSourceControlEncodingFailedErrorClass, "", "BOM is required in '", "' if encoded as "},
    {NEBSourceControlEncodingFailedErrorClass, "", "BOM is prohibited in '", "' if encoded as "},
    {NEBSourceControlEmbeddedRepositoryErrorClass, "error: '", "",
     "' does not have a commit checked out"},
    {NEBSourceControlIndexLockedErrorClass, "", "Unable to create '", "': File exists"},
};

constexpr Listing listings[] = {
    {NEBSourceControlLocalChangesErrorClass,
     "local changes to the following files would be overwritten by", "\t"},
    {NEBSourceControlLocalChangesErrorClass,
     "cannot continue with staged changes in the following files", ""},
    {NEBSourceControlUntrackedInTheWayErrorClass, "untracked working tree files would be ", "\t"},
    {NEBSourceControlPathIgnoredErrorClass, "paths are ignored by one of your .gitignore files",
     ""},
    // the second line of the heading
    {NEBSourceControlPathSparseErrorClass, "updated in the index:", ""},
    {NEBSourceControlLocalChangesErrorClass, "local modifications:", "    "},
    {NEBSourceControlLocalChangesErrorClass, "changes staged in the index:", "    "},
    {NEBSourceControlLocalChangesErrorClass,
     "staged content different from both the file and the head:", "    "},
};

std::vector<std::string_view> linesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    forEachPiece(text, '\n', [&lines](std::string_view line) {
        lines.push_back(line.substr(0, line.find_last_not_of('\r') + 1));
    });
    return lines;
}

/// The line behind the mark and one blank.
std::string_view behindMark(std::string_view line, std::string_view mark) {
    line.remove_prefix(mark.size());
    line.remove_prefix(line.starts_with(' ') ? 1 : 0);
    return line;
}

/// Where the words stand in the line, whatever the case of their letters: that changed now and
/// then.
std::size_t placeOf(std::string_view words, std::string_view line) {
    const auto place =
        std::search(line.begin(), line.end(), words.begin(), words.end(),
                    [](char a, char b) { return lowercaseASCII(a) == lowercaseASCII(b); });
    return place == line.end() && !words.empty() ? std::string_view::npos
                                                 : static_cast<std::size_t>(place - line.begin());
}

/// The files that the line names by the row.
std::vector<std::string_view> filesNamedIn(std::string_view line, const Mention& mention) {
    std::vector<std::string_view> files;
    if (placeOf(mention.beginning, line.substr(0, mention.beginning.size())) != 0) {
        return files;
    }
    line.remove_prefix(mention.beginning.size());
    for (std::size_t before = placeOf(mention.before, line); before != std::string_view::npos;
         before = placeOf(mention.before, line)) {
        line.remove_prefix(before + mention.before.size());
        const std::size_t end = mention.after.empty() ? line.size() : placeOf(mention.after, line);
        if (end == std::string_view::npos) {
            break;
        }
        files.push_back(line.substr(0, end));
        if (mention.before.empty()) {
            break;
        }
        line.remove_prefix(end);
    }
    return files;
}

/// A line of git's own in which a file may be named.
bool isOwnLine(std::string_view line) {
    return !line.starts_with(hintMark) && !line.starts_with(remoteMark);
}

/// Collects each name once. The names are substrings of a text that outlives the object.
class Names {
public:
    void add(std::string_view name) {
        if (!name.empty() && _known.insert(name).second) {
            _names.emplace_back(name);
        }
    }
    [[nodiscard]] std::vector<std::string> take() { return std::move(_names); }

private:
    std::vector<std::string> _names;
    std::set<std::string_view> _known;  // ordered: no choice of names makes it slow
};

void addMentions(Names& names, std::string_view line, std::string_view errorClass) {
    const Mention* deciding = nullptr;
    for (const Mention& mention : mentions) {
        const bool isAsked = mention.errorClass == errorClass &&
                             (deciding == nullptr || mention.beginning == deciding->beginning);
        for (const std::string_view file :
             isAsked ? filesNamedIn(line, mention) : std::vector<std::string_view>{}) {
            names.add(file);
            deciding = &mention;
        }
    }
}

const Listing* listingBegunBy(std::string_view line, std::string_view errorClass) {
    const auto* listing =
        std::find_if(std::begin(listings), std::end(listings), [&](const Listing& candidate) {
            return candidate.errorClass == errorClass &&
                   placeOf(candidate.heading, line) != std::string_view::npos;
        });
    return listing != std::end(listings) ? listing : nullptr;
}

}  // namespace

std::vector<std::string> NEBSourceControlHintsInText(std::string_view text) {
    std::vector<std::string> hints;
    for (const std::string_view line : linesOf(text)) {
        if (line.starts_with(hintMark)) {
            hints.emplace_back(behindMark(line, hintMark));
        }
    }
    return hints;
}

std::string NEBSourceControlAdviceOfHints(const std::vector<std::string>& hints) {
    std::string advice;
    for (const std::string& hint : hints) {
        advice += advice.empty() ? hint : "\n" + hint;
    }
    return advice.substr(0, advice.find_last_not_of(" \n") + 1);
}

std::string NEBSourceControlTextWithoutHints(std::string_view text) {
    std::string others;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
        const std::string_view line = text.substr(0, length);
        others += line.starts_with(hintMark) ? std::string_view{} : line;
        text.remove_prefix(length);
    }
    return others;
}

std::vector<std::string> NEBSourceControlRemoteLinesInText(std::string_view text) {
    std::vector<std::string> remoteLines;
    for (std::string_view line : linesOf(text)) {
        if (line.starts_with(remoteMark)) {
            line = line.substr(line.rfind('\r') + 1);
            line = line.starts_with(remoteMark) ? behindMark(line, remoteMark) : line;
            remoteLines.emplace_back(line.substr(0, line.find_last_not_of(" \t") + 1));
        }
    }
    return remoteLines;
}

std::vector<std::string> NEBSourceControlFilesInText(std::string_view text,
                                                     std::string_view errorClass) {
    Names names;
    const Listing* listing = nullptr;
    for (const std::string_view line : linesOf(text)) {
        if (listing != nullptr && isOwnLine(line) && line.starts_with(listing->indentation)) {
            names.add(line.substr(listing->indentation.size()));
        } else {
            listing = isOwnLine(line) ? listingBegunBy(line, errorClass) : nullptr;
        }
        if (listing == nullptr && isOwnLine(line)) {
            addMentions(names, line, errorClass);
        }
    }
    return names.take();
}

}  // namespace neb

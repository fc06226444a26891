#include "NEBFoundation/NEBSourceControlArgumentInjection.h"

#include <algorithm>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// The places of a request whose values stand in a command line with no "--" in front.
enum Place : unsigned {
    location = 1U << 0,
    destination = 1U << 1,
    starting = 1U << 2,
    ending = 1U << 3,
    branch = 1U << 4,
    remoteName = 1U << 5,
    sourceLocation = 1U << 6,
    files = 1U << 7,
    lastComponentOfFiles = 1U << 8,
    /// The shell splits them at blanks.
    shellWordsOfFiles = 1U << 9,
    /// Likewise, but the first stands behind "HEAD^{".
    furtherShellWordsOfBranch = 1U << 10,
};

/// Types that are not here put nothing of the request where it could be read as an option.
unsigned exposedPlaces(std::int32_t type) {
    switch (type) {
        case NEBSourceControlRequestCreateBranch:
            return destination | sourceLocation;
        case NEBSourceControlRequestDeleteBranch:
        case NEBSourceControlRequestCheckout:
        case NEBSourceControlRequestRemoveRemote:
            return destination;
        case NEBSourceControlRequestMerge:
            return destination | ending;
        case NEBSourceControlRequestMove:
        case NEBSourceControlRequestAddRemote:
            return destination | files;
        case NEBSourceControlRequestUpdate:
            return destination | ending | remoteName | branch;
        case NEBSourceControlRequestList:
            return shellWordsOfFiles | furtherShellWordsOfBranch;
        case NEBSourceControlRequestListBranches:
        case NEBSourceControlRequestListRemoteBranches:
        case NEBSourceControlRequestListRemoteBranchesSecondForm:
            return files;
        case NEBSourceControlRequestLog:
            return starting | ending | branch;
        case NEBSourceControlRequestExportFiles:
        case NEBSourceControlRequestExport:
            return starting | files | lastComponentOfFiles;
        case NEBSourceControlRequestBlame:
        case NEBSourceControlRequestMergeBase:
            return starting | ending;
        case NEBSourceControlRequestDiff:
            return starting | ending | destination;
        case NEBSourceControlRequestClone:
            return location | destination | branch;
        case NEBSourceControlRequestPush:
            return remoteName | branch;
        case NEBSourceControlRequestTrackRemoteBranch:
            return destination | remoteName | branch;
        case NEBSourceControlRequestFetch:
            return remoteName;
        default:
            return 0;
    }
}

/// Between words of the shell. A line end in a word is quoted.
constexpr std::string_view blanks = " \t";

/// The text that a command line holds for the value, whatever its kind; nothing for an absent one.
std::optional<std::string> textOf(const NEBValue& value) {
    return value.isPresent() ? std::optional(value.description()) : std::nullopt;
}

/// The first of the blank-separated words that begins with "-"; nothing without one.
std::optional<std::string> firstOptionLikeWord(std::string_view text) {
    bool isAtStart = true;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (isAtStart && text[place] == '-') {
            const std::string_view rest = text.substr(place);
            return std::string(rest.substr(0, rest.find_first_of(blanks)));
        }
        isAtStart = blanks.find(text[place]) != std::string_view::npos;
    }
    return std::nullopt;
}

/// The same behind the first word.
std::optional<std::string> firstFurtherOptionLikeWord(std::string_view text) {
    return firstOptionLikeWord(text.substr(std::min(text.find_first_of(blanks), text.size())));
}

std::string fieldOf(NEBConstant option) {
    return "options." + std::string(option);
}

/// The limit of a log gets a "-" in front.
std::optional<NEBSourceControlArgumentInjection> limitThatIsNoCount(
    const NEBSourceControlRequest& request) {
    const auto limit = textOf(request.option(NEBSourceControlRequestOptionLogOutputLimit));
    const bool isCount =
        limit && !limit->empty() && limit->find_first_not_of("0123456789") == std::string::npos;
    if (request.type != NEBSourceControlRequestLog || !limit || isCount) {
        return std::nullopt;
    }
    return NEBSourceControlArgumentInjection{
        .field = fieldOf(NEBSourceControlRequestOptionLogOutputLimit), .value = *limit};
}

/// Both sides of a push are one argument, "branch:destination".
std::optional<NEBSourceControlArgumentInjection> firstOfPush(
    const NEBSourceControlRequest& request) {
    const bool isBridge = request.remote && request.remote->representsGitSVNBridge;
    if (request.type != NEBSourceControlRequestPush || isBridge) {
        return std::nullopt;
    }
    const std::pair<std::string, std::optional<std::string>> sides[] = {
        {fieldOf(NEBSourceControlRequestOptionBranch),
         textOf(request.option(NEBSourceControlRequestOptionBranch))},
        {"destination", textOf(request.destination)}};
    for (const auto& [field, text] : sides) {
        if (text && text->empty()) {
            return NEBSourceControlArgumentInjection{field, *text, "delete a branch of the remote"};
        }
        if (text && text->starts_with('+')) {
            return NEBSourceControlArgumentInjection{field, *text, "overwrite the remote's branch"};
        }
        if (text && text->find('*') != std::string::npos) {
            return NEBSourceControlArgumentInjection{field, *text, "take it for many branches"};
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<NEBSourceControlArgumentInjection> NEBSourceControlFirstArgumentInjection(
    const NEBSourceControlRequest& request) {
    const unsigned places = exposedPlaces(request.type);
    std::optional<NEBSourceControlArgumentInjection> found;
    const auto note = [&](Place place, const std::string& field, std::optional<std::string> text) {
        if (!found && (places & place) != 0 && text && text->starts_with('-')) {
            found = {.field = field, .value = *std::move(text)};
        }
    };
    const auto noteOption = [&](Place place, NEBConstant key) {
        note(place, fieldOf(key), textOf(request.option(key)));
    };

    if (request.sourceTree && request.sourceTree->location) {
        note(location, "sourceTree.location", request.sourceTree->location);
    }
    note(destination, "destination", textOf(request.destination));
    note(starting, "startingRevision", textOf(request.startingRevision));
    note(ending, "endingRevision", textOf(request.endingRevision));
    for (std::size_t i = 0; places != 0 && i < request.fileCount(); ++i) {
        const std::string file = textOf((*request.files)[i]).value_or("");
        const std::string field = "files[" + std::to_string(i) + "]";
        note(files, field, file);
        note(lastComponentOfFiles, field, lastPathComponent(file));
        note(shellWordsOfFiles, field, firstOptionLikeWord(file));
    }
    noteOption(branch, NEBSourceControlRequestOptionBranch);
    note(furtherShellWordsOfBranch, fieldOf(NEBSourceControlRequestOptionBranch),
         firstFurtherOptionLikeWord(
             textOf(request.option(NEBSourceControlRequestOptionBranch)).value_or("")));
    noteOption(remoteName, NEBSourceControlRequestOptionRemoteName);
    noteOption(sourceLocation, NEBSourceControlRequestOptionSourceLocation);
    if (!found) {
        found = limitThatIsNoCount(request);
    }
    return found ? found : firstOfPush(request);
}

}  // namespace neb

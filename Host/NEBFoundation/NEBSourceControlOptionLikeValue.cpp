#include "NEBFoundation/NEBSourceControlOptionLikeValue.h"

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

bool looksLikeOption(std::optional<std::string_view> text) {
    return text && text->starts_with('-');
}

bool isCount(const NEBValue& value) {
    const std::string text = value.description();
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// Both sides of a push are one argument, "branch:destination".
std::optional<NEBSourceControlOptionLikeValue> firstOfPush(const NEBSourceControlRequest& request) {
    const bool isBridge = request.remote && request.remote->representsGitSVNBridge;
    if (request.type != NEBSourceControlRequestPush || isBridge) {
        return std::nullopt;
    }
    const std::string branchField = "options." + std::string(NEBSourceControlRequestOptionBranch);
    const std::pair<std::string, std::optional<std::string_view>> sides[] = {
        {branchField, request.option(NEBSourceControlRequestOptionBranch).string()},
        {"destination", request.destination.string()}};
    for (const auto& [field, text] : sides) {
        if (text && text->empty()) {
            return NEBSourceControlOptionLikeValue{field, std::string(*text),
                                                   "delete a branch of the remote"};
        }
        if (text && text->starts_with('+')) {
            return NEBSourceControlOptionLikeValue{field, std::string(*text),
                                                   "overwrite the remote's branch"};
        }
        if (text && text->find('*') != std::string::npos) {
            return NEBSourceControlOptionLikeValue{field, std::string(*text),
                                                   "take it for many branches"};
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<NEBSourceControlOptionLikeValue> NEBSourceControlFirstOptionLikeValue(
    const NEBSourceControlRequest& request) {
    const unsigned places = exposedPlaces(request.type);
    std::optional<NEBSourceControlOptionLikeValue> found;
    const auto look = [&](Place place, std::string field, std::optional<std::string_view> text) {
        if (!found && (places & place) != 0 && looksLikeOption(text)) {
            found = {.field = std::move(field), .value = std::string(*text)};
        }
    };
    const auto lookAtOption = [&](Place place, NEBConstant key) {
        look(place, "options." + std::string(key), request.option(key).string());
    };

    if (request.sourceTree && request.sourceTree->location) {
        look(location, "sourceTree.location", request.sourceTree->location);
    }
    look(destination, "destination", request.destination.string());
    look(starting, "startingRevision", request.startingRevision.string());
    look(ending, "endingRevision", request.endingRevision.string());
    for (std::size_t i = 0; i < request.fileCount(); ++i) {
        const auto file = (*request.files)[i].string();
        const std::string field = "files[" + std::to_string(i) + "]";
        look(files, field, file);
        look(lastComponentOfFiles, field, lastPathComponent(file.value_or("")));
    }
    lookAtOption(branch, NEBSourceControlRequestOptionBranch);
    lookAtOption(remoteName, NEBSourceControlRequestOptionRemoteName);
    lookAtOption(sourceLocation, NEBSourceControlRequestOptionSourceLocation);
    const NEBValue& limit = request.option(NEBSourceControlRequestOptionLogOutputLimit);
    if (!found && request.type == NEBSourceControlRequestLog && limit.isPresent() &&
        !isCount(limit)) {
        found = {.field = "options." + std::string(NEBSourceControlRequestOptionLogOutputLimit),
                 .value = limit.description()};
    }
    return found ? found : firstOfPush(request);
}

}  // namespace neb

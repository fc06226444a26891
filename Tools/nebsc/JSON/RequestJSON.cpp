#include "JSON/RequestJSON.h"

#include <algorithm>
#include <optional>

#include "JSON/RequestMembers.h"
#include "JSON/Schema/TypeMembers.h"
#include "JSON/SourceTreeJSON.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"
#include "Session/Trust.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using Kind = JSONNode::Kind;

constexpr std::string_view optionPrefix = "NEBSourceControlRequestOption";

// ---- objects ----------------------------------------------------------------------------------

constexpr Member<NEBSourceControlRemote> remoteMembers[] = {
    {"representsGitSVNBridge",
     readInto<readBoolean, &NEBSourceControlRemote::representsGitSVNBridge>},
};

bool readRemote(Refusal& refusal, const InputNode& input,
                std::shared_ptr<NEBSourceControlRemote>& remote) {
    if (input.node.kind == Kind::null) {
        return true;
    }
    if (!isObject(input.node)) {
        return refusal.wrongKind(input, "an object");
    }
    remote = std::make_shared<NEBSourceControlRemote>();
    return readMembers<NEBSourceControlRemote>(refusal, input, remoteMembers, *remote);
}

bool readFiles(Refusal& refusal, const InputNode& input,
               std::optional<std::vector<NEBValue>>& files) {
    if (input.node.kind == Kind::null) {
        return true;
    }
    if (!isArray(input.node)) {
        return refusal.wrongKind(input, "an array");
    }
    files.emplace();
    for (const JSONNode& child : input.node.children) {
        const std::string path = pathOfElement(input.path, files->size());
        if (!readScalar(refusal, {child, path}, files->emplace_back())) {
            return false;
        }
    }
    return true;
}

bool isOptionKey(std::string_view name) {
    return std::any_of(NEBSourceControlAllRequestOptions.begin(),
                       NEBSourceControlAllRequestOptions.end(),
                       [name](NEBConstant key) { return key == name; });
}

bool isBooleanOption(std::string_view key) {
    const auto options = describedOptions();
    return std::any_of(options.begin(), options.end(), [key](const ValueDescription& option) {
        return option.kind == ValueKind::boolean && key.ends_with(option.name) &&
               key.size() == optionPrefix.size() + option.name.size();
    });
}

/// Refuses values whose truth an operation would have to guess. An integer other than 0 is true.
bool checkBoolean(Refusal& refusal, const InputNode& input) {
    const Kind kind = input.node.kind;
    return kind == Kind::boolean || kind == Kind::integer || kind == Kind::null ||
           refusal.wrongKind(input, "true or false");
}

std::string allOptionKeys() {
    std::string keys;
    for (const NEBConstant key : NEBSourceControlAllRequestOptions) {
        keys.append(keys.empty() ? "" : ", ").append(key.text());
    }
    return keys;
}

bool readOptions(Refusal& refusal, const InputNode& input, std::optional<NEBDictionary>& options) {
    if (input.node.kind == Kind::null) {
        return true;
    }
    if (!isObject(input.node)) {
        return refusal.wrongKind(input, "an object");
    }
    options.emplace();
    for (const JSONNode& child : input.node.children) {
        const InputNode childInput{child, pathOfMember(input.path, child.name)};
        NEBValue value;
        if (!isOptionKey(child.name)) {
            return refuseUnknownMember(refusal, childInput, allOptionKeys());
        }
        if ((isBooleanOption(child.name) && !checkBoolean(refusal, childInput)) ||
            !readValue(refusal, childInput, value)) {
            return false;
        }
        options->set(child.name, std::move(value));
    }
    return true;
}

constexpr Member<NEBSourceControlLimits> limitMembers[] = {
    {"silenceMilliseconds", readInto<readMilliseconds, &NEBSourceControlLimits::silence>},
    {"totalMilliseconds", readInto<readMilliseconds, &NEBSourceControlLimits::total>},
    {"outputBytes", readInto<readByteCount, &NEBSourceControlLimits::outputBytes>},
    {"lockWaitMilliseconds", readInto<readWaitingTime, &NEBSourceControlLimits::lockWait>},
};

bool readLimits(Refusal& refusal, const InputNode& input, NEBSourceControlLimits& limits) {
    if (input.node.kind == Kind::null) {
        return true;
    }
    if (!isObject(input.node)) {
        return refusal.wrongKind(input, "an object");
    }
    return readMembers<NEBSourceControlLimits>(refusal, input, limitMembers, limits);
}

// ---- the request ------------------------------------------------------------------------------

/// A request, and what its JSON says about the operation.
struct Request : NEBSourceControlRequest {
    NEBSourceControlLimits limits;
    bool isBackgroundWork = false;
    std::optional<NEBSourceControlTrust> trust;
};

bool readTrust(Refusal& refusal, const InputNode& input,
               std::optional<NEBSourceControlTrust>& trust) {
    std::optional<std::string> name;
    if (!readString(refusal, input, name)) {
        return false;
    }
    trust = name ? trustWithName(*name) : trust;
    return !name || trust ||
           refusal.wrongValue(
               input, "is " + inQuotes(shortened(*name)) + "; expected 'trusted' or 'inspect'");
}

constexpr Member<Request> requestMembers[] = {
    {"type", readInto<readType, &Request::type>},
    {"sourceTree", readInto<readSourceTree, &Request::sourceTree>},
    {"repositoryToAuthenticate", readInto<readSourceTree, &Request::repositoryToAuthenticate>},
    {"destination", readInto<readScalar, &Request::destination>},
    {"files", readInto<readFiles, &Request::files>},
    {"startingRevision", readInto<readScalar, &Request::startingRevision>},
    {"endingRevision", readInto<readScalar, &Request::endingRevision>},
    {"remote", readInto<readRemote, &Request::remote>},
    {"options", readInto<readOptions, &Request::options>},
    {"limits", readInto<readLimits, &Request::limits>},
    {"background", readInto<readBoolean, &Request::isBackgroundWork>},
    {"trust", readInto<readTrust, &Request::trust>},
};

/// Refuses a clone into a path that is not absolute. git runs in the destination and gets it as an
/// argument: a relative path would depend on the current folder, and "~" could mean two folders.
bool checkCloneDestination(Refusal& refusal, const Request& request) {
    const NEBValue& destination = request.destination;
    const bool isRelative =
        destination.isPresent() && !destination.string().value_or("").starts_with('/');
    if (isRelative && NEBSourceControlDescriptionOfRequestType(request.type).worksInDestination) {
        refusal.sentence = subjectAt("destination") + " is " +
                           inQuotes(shortened(destination.description())) +
                           "; expected an absolute path for a clone.";
        return false;
    }
    return true;
}

/// Refuses a location in which git cannot run, such as the URI of an unsaved text: git would run in
/// the current folder of nebsc. Requests about a remote repository may name it there.
bool checkLocation(Refusal& refusal, const Request& request) {
    if (!request.sourceTree || !request.sourceTree->location ||
        pathOfLocation(*request.sourceTree->location)) {
        return true;
    }
    const auto& description = NEBSourceControlDescriptionOfRequestType(request.type);
    const bool readsURLs = description.effect == NEBSourceControlRequestEffect::reads &&
                           (description.exposedValues & NEBSourceControlExposedFiles) != 0;
    if (description.worksInDestination || readsURLs) {
        return true;
    }
    refusal.sentence = subjectAt("sourceTree.location") + " is " +
                       inQuotes(shortened(*request.sourceTree->location)) +
                       "; expected an absolute path, or a file URL with one.";
    return false;
}

bool readRequest(Refusal& refusal, const JSONNode& root, Request& request) {
    const InputNode input{root, ""};
    if (root.kind != Kind::object) {
        return refusal.wrongKind(input, "an object");
    }
    if (!readMembers<Request>(refusal, input, requestMembers, request)) {
        return false;
    }
    const bool hasType = std::any_of(root.children.begin(), root.children.end(),
                                     [](const JSONNode& child) { return child.name == "type"; });
    if (!hasType) {
        return refusal.wrongValue({root, "type"}, "is missing; expected an integer");
    }
    return checkCloneDestination(refusal, request) && checkLocation(refusal, request);
}

}  // namespace

RequestReading requestFromJSON(std::string_view text) {
    const JSONReading reading = readJSON(text);
    return reading.root ? requestFromJSON(*reading.root)
                        : RequestReading{.request = nullptr, .refusal = reading.failure};
}

RequestReading requestFromJSON(const JSONNode& root, NEBSourceControlTrust defaultTrust) {
    Refusal refusal;
    auto request = std::make_shared<Request>();
    if (!readRequest(refusal, root, *request)) {
        return {.request = nullptr, .refusal = refusal.sentence};
    }
    if (request->trust.value_or(defaultTrust) == NEBSourceControlTrust::inspect) {
        inspectOnly(*request);
    }
    return {.request = request,
            .settings = {.limits = request->limits, .isBackgroundWork = request->isBackgroundWork}};
}

std::string sentenceOfRefusedValue(const NEBSourceControlArgumentInjection& value) {
    return subjectAt(value.field) + " is " + inQuotes(shortened(value.value)) +
           ", which is refused, because git would " + std::string(value.danger) + ".";
}

}  // namespace neb::nebsc

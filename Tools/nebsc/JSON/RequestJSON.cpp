#include "JSON/RequestJSON.h"

#include <algorithm>
#include <optional>

#include "JSON/RequestMembers.h"
#include "LOMFoundation/LOMPasswordRedaction.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"

namespace neb::nebsc {

namespace {

using Kind = JSONNode::Kind;

// ---- objects
// ---------------------------------------------------------------------------------------

/// What the form says of a source tree, before it is known of which class it is.
struct SourceTreeMembers {
    std::optional<std::string> className;
    std::optional<std::string> location;
    std::optional<std::string> name;
    bool reachable = true;
    bool isValid = true;
    bool isRemoteDistributedRepository = false;
};

constexpr Member<SourceTreeMembers> sourceTreeMembers[] = {
    {"class", [](Refusal& refusal, const Place& place,
                 SourceTreeMembers& tree) { return readString(refusal, place, tree.className); }},
    {"location", [](Refusal& refusal, const Place& place,
                    SourceTreeMembers& tree) { return readString(refusal, place, tree.location); }},
    {"name", [](Refusal& refusal, const Place& place,
                SourceTreeMembers& tree) { return readString(refusal, place, tree.name); }},
    {"reachable",
     [](Refusal& refusal, const Place& place, SourceTreeMembers& tree) {
         return readBoolean(refusal, place, tree.reachable);
     }},
    {"isValid", [](Refusal& refusal, const Place& place,
                   SourceTreeMembers& tree) { return readBoolean(refusal, place, tree.isValid); }},
    {"isRemoteDistributedRepository",
     [](Refusal& refusal, const Place& place, SourceTreeMembers& tree) {
         return readBoolean(refusal, place, tree.isRemoteDistributedRepository);
     }},
};

/// An object of the class that the members name; nothing, and a refusal, when there is no such one.
std::shared_ptr<NEBSourceControlSourceTree> makeSourceTree(Refusal& refusal, const Place& place,
                                                           const SourceTreeMembers& members) {
    const std::string className = members.className.value_or("NEBSourceControlWorkingTree");
    if (className == "NEBSourceControlRepository") {
        auto repository = std::make_shared<NEBSourceControlRepository>();
        repository->isRemoteDistributedRepository = members.isRemoteDistributedRepository;
        return repository;
    }
    if (className != "NEBSourceControlWorkingTree") {
        refusal.sentence = subjectAt(pathOfMember(place.path, "class")) + " is \"" +
                           shortened(className) +
                           "\"; NEBSourceControlWorkingTree or NEBSourceControlRepository was "
                           "expected.";
        return nullptr;
    }
    if (members.isRemoteDistributedRepository) {
        refusal.sentence =
            subjectAt(pathOfMember(place.path, "isRemoteDistributedRepository")) +
            " is true for a NEBSourceControlWorkingTree; only a NEBSourceControlRepository can be "
            "one, so false was expected.";
        return nullptr;
    }
    return std::make_shared<NEBSourceControlWorkingTree>();
}

/// An absolute path, a URL, or the address "host:path" of a repository. A relative path would mean
/// whatever folder nebsc happens to be in.
bool isLocation(std::string_view location) {
    return isAbsolutePath(location) || location.find(':') != std::string_view::npos;
}

bool readSourceTree(Refusal& refusal, const Place& place,
                    std::shared_ptr<NEBSourceControlSourceTree>& tree) {
    if (place.node.kind == Kind::null) {
        return true;
    }
    if (!isObject(place.node)) {
        return refusal.wrongKind(place, "an object");
    }
    SourceTreeMembers members;
    if (!readMembers<SourceTreeMembers>(refusal, place, sourceTreeMembers, members)) {
        return false;
    }
    if (members.location && !isLocation(*members.location)) {
        refusal.sentence = subjectAt(pathOfMember(place.path, "location")) + " is \"" +
                           shortened(*members.location) +
                           "\"; an absolute path or a URL was expected.";
        return false;
    }
    tree = makeSourceTree(refusal, place, members);
    if (!tree) {
        return false;
    }
    tree->location = members.location;
    tree->name = members.name.value_or(
        lastPathComponent(textWithoutPasswords(members.location.value_or(""))));
    tree->reachable = members.reachable;
    tree->isValid = members.isValid;
    return true;
}

constexpr Member<NEBSourceControlRemote> remoteMembers[] = {
    {"representsGitSVNBridge",
     [](Refusal& refusal, const Place& place, NEBSourceControlRemote& remote) {
         return readBoolean(refusal, place, remote.representsGitSVNBridge);
     }},
};

bool readRemote(Refusal& refusal, const Place& place,
                std::shared_ptr<NEBSourceControlRemote>& remote) {
    if (place.node.kind == Kind::null) {
        return true;
    }
    if (!isObject(place.node)) {
        return refusal.wrongKind(place, "an object");
    }
    remote = std::make_shared<NEBSourceControlRemote>();
    return readMembers<NEBSourceControlRemote>(refusal, place, remoteMembers, *remote);
}

bool readFiles(Refusal& refusal, const Place& place, std::optional<std::vector<NEBValue>>& files) {
    if (place.node.kind == Kind::null) {
        return true;
    }
    if (!isArray(place.node)) {
        return refusal.wrongKind(place, "an array");
    }
    files.emplace();
    for (const JSONNode& child : place.node.children) {
        const std::string path = pathOfElement(place.path, files->size());
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

std::string allOptionKeys() {
    std::string keys;
    for (const NEBConstant key : NEBSourceControlAllRequestOptions) {
        keys.append(keys.empty() ? "" : ", ").append(key.text());
    }
    return keys;
}

bool readOptions(Refusal& refusal, const Place& place, std::optional<NEBDictionary>& options) {
    if (place.node.kind == Kind::null) {
        return true;
    }
    if (!isObject(place.node)) {
        return refusal.wrongKind(place, "an object");
    }
    options.emplace();
    for (const JSONNode& child : place.node.children) {
        const Place childPlace{child, pathOfMember(place.path, child.name)};
        NEBValue value;
        if (!isOptionKey(child.name)) {
            return refuseUnknownMember(refusal, childPlace, allOptionKeys());
        }
        if (!readScalar(refusal, childPlace, value)) {
            return false;
        }
        options->set(child.name, std::move(value));
    }
    return true;
}

// ---- the request ------------------------------------------------------------------------------

constexpr Member<NEBSourceControlRequest> requestMembers[] = {
    {"type",
     [](Refusal& refusal, const Place& place, NEBSourceControlRequest& request) {
         return readType(refusal, place, request.type);
     }},
    {"sourceTree",
     [](Refusal& refusal, const Place& place, NEBSourceControlRequest& request) {
         return readSourceTree(refusal, place, request.sourceTree);
     }},
    {"repositoryToAuthenticate",
     [](Refusal& refusal, const Place& place, NEBSourceControlRequest& request) {
         return readSourceTree(refusal, place, request.repositoryToAuthenticate);
     }},
    {"destination",
     [](Refusal& refusal, const Place& place, NEBSourceControlRequest& request) {
         return readScalar(refusal, place, request.destination);
     }},
    {"files",
     [](Refusal& refusal, const Place& place, NEBSourceControlRequest& request) {
         return readFiles(refusal, place, request.files);
     }},
    {"startingRevision",
     [](Refusal& refusal, const Place& place, NEBSourceControlRequest& request) {
         return readScalar(refusal, place, request.startingRevision);
     }},
    {"endingRevision",
     [](Refusal& refusal, const Place& place, NEBSourceControlRequest& request) {
         return readScalar(refusal, place, request.endingRevision);
     }},
    {"remote",
     [](Refusal& refusal, const Place& place, NEBSourceControlRequest& request) {
         return readRemote(refusal, place, request.remote);
     }},
    {"options",
     [](Refusal& refusal, const Place& place, NEBSourceControlRequest& request) {
         return readOptions(refusal, place, request.options);
     }},
};

/// A clone runs in its destination, and hands it on to git: a relative one would mean whatever
/// folder nebsc happens to be in, and "~" two folders.
bool refuseRelativeClone(Refusal& refusal, const NEBSourceControlRequest& request) {
    const NEBValue& destination = request.destination;
    const bool isRelative =
        destination.isPresent() && !destination.string().value_or("").starts_with('/');
    if (isRelative && NEBSourceControlDescriptionOfRequestType(request.type).worksInDestination) {
        refusal.sentence = subjectAt("destination") + " is \"" +
                           shortened(destination.description()) +
                           "\"; for a clone an absolute path was expected, from \"/\" on.";
        return false;
    }
    return true;
}

bool readRequest(Refusal& refusal, const JSONNode& root, NEBSourceControlRequest& request) {
    const Place place{root, ""};
    if (root.kind != Kind::object) {
        return refusal.wrongKind(place, "an object");
    }
    if (!readMembers<NEBSourceControlRequest>(refusal, place, requestMembers, request)) {
        return false;
    }
    const bool hasType = std::any_of(root.children.begin(), root.children.end(),
                                     [](const JSONNode& child) { return child.name == "type"; });
    if (!hasType) {
        return refusal.wrongValue({root, "type"}, "is missing; an integer was expected");
    }
    return refuseRelativeClone(refusal, request);
}

}  // namespace

RequestReading requestFromJSON(std::string_view text) {
    const JSONReading reading = readJSON(text);
    return reading.root ? requestFromJSON(*reading.root) : RequestReading{nullptr, reading.failure};
}

RequestReading requestFromJSON(const JSONNode& root) {
    Refusal refusal;
    auto request = std::make_shared<NEBSourceControlRequest>();
    if (!readRequest(refusal, root, *request)) {
        return {nullptr, refusal.sentence};
    }
    return {std::move(request), {}};
}

std::string sentenceOfRefusedValue(const NEBSourceControlArgumentInjection& value) {
    return subjectAt(value.field) + " is \"" + shortened(value.value) +
           "\"; it is refused here, as git would " + std::string(value.danger) + ".";
}

}  // namespace neb::nebsc

#include "JSON/SourceTreeJSON.h"

#include <optional>
#include <string>
#include <string_view>

#include "LOMFoundation/LOMPasswordRedaction.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using Kind = JSONNode::Kind;

/// The members of a source tree, before an object of its class is created.
struct SourceTreeMembers {
    std::optional<std::string> className;
    std::optional<std::string> location;
    std::optional<std::string> name;
    bool reachable = true;
    bool isValid = true;
    bool isRemoteDistributedRepository = false;
};

constexpr Member<SourceTreeMembers> sourceTreeMembers[] = {
    {"class", readInto<readString, &SourceTreeMembers::className>},
    {"location", readInto<readText, &SourceTreeMembers::location>},
    {"name", readInto<readText, &SourceTreeMembers::name>},
    {"reachable", readInto<readBoolean, &SourceTreeMembers::reachable>},
    {"isValid", readInto<readBoolean, &SourceTreeMembers::isValid>},
    {"isRemoteDistributedRepository",
     readInto<readBoolean, &SourceTreeMembers::isRemoteDistributedRepository>},
};

/// Returns an object of the class in `members`; null, with a refusal, if the class is unknown.
std::shared_ptr<NEBSourceControlSourceTree> makeSourceTree(Refusal& refusal, const InputNode& input,
                                                           const SourceTreeMembers& members) {
    const std::string className = members.className.value_or("NEBSourceControlWorkingTree");
    if (className == "NEBSourceControlRepository") {
        auto repository = std::make_shared<NEBSourceControlRepository>();
        repository->isRemoteDistributedRepository = members.isRemoteDistributedRepository;
        return repository;
    }
    if (className != "NEBSourceControlWorkingTree") {
        refusal.sentence = subjectAt(pathOfMember(input.path, "class")) + " is " +
                           inQuotes(shortened(className)) +
                           "; expected NEBSourceControlWorkingTree or NEBSourceControlRepository.";
        return nullptr;
    }
    if (members.isRemoteDistributedRepository) {
        refusal.sentence =
            subjectAt(pathOfMember(input.path, "isRemoteDistributedRepository")) +
            " is true for a NEBSourceControlWorkingTree; expected false, because only a "
            "NEBSourceControlRepository can be one.";
        return nullptr;
    }
    return std::make_shared<NEBSourceControlWorkingTree>();
}

/// Returns whether the text is an absolute path, a URL or an address "host:path". A relative path
/// would depend on the current folder of nebsc.
bool isLocation(std::string_view location) {
    return isAbsolutePath(location) || location.find(':') != std::string_view::npos;
}

}  // namespace

bool readSourceTree(Refusal& refusal, const InputNode& input,
                    std::shared_ptr<NEBSourceControlSourceTree>& tree) {
    if (input.node.kind == Kind::null) {
        return true;
    }
    if (!isObject(input.node)) {
        return refusal.wrongKind(input, "an object");
    }
    SourceTreeMembers members;
    if (!readMembers<SourceTreeMembers>(refusal, input, sourceTreeMembers, members)) {
        return false;
    }
    if (members.location && !isLocation(*members.location)) {
        refusal.sentence = subjectAt(pathOfMember(input.path, "location")) + " is " +
                           inQuotes(shortened(*members.location)) +
                           "; expected an absolute path or a URL.";
        return false;
    }
    tree = makeSourceTree(refusal, input, members);
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

}  // namespace neb::nebsc

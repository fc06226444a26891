#include "Server/Watch/WatchParams.h"

#include <memory>
#include <optional>
#include <utility>

#include "JSON/RequestMembers.h"
#include "JSON/SourceTreeJSON.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

struct WatchMembers {
    std::shared_ptr<NEBSourceControlSourceTree> sourceTree;
    bool workingTree = false;
};
constexpr Member<WatchMembers> watchMembers[] = {
    {"sourceTree", readInto<readSourceTree, &WatchMembers::sourceTree>},
    {"workingTree", readInto<readBoolean, &WatchMembers::workingTree>},
};

struct UnwatchMembers {
    std::optional<std::string> watch;
};
constexpr Member<UnwatchMembers> unwatchMembers[] = {
    {"watch", readInto<readString, &UnwatchMembers::watch>},
};

/// Reads the members. Returns why they are refused; empty if they are valid.
template <typename Members>
std::string read(const JSONNode& params, std::span<const Member<Members>> table, Members& members) {
    Refusal refusal;
    const InputNode input{params, ""};
    if (params.kind != JSONNode::Kind::null && !isObject(params)) {
        static_cast<void>(refusal.wrongKind(input, "an object"));
    } else {
        static_cast<void>(readMembers<Members>(refusal, input, table, members));
    }
    return refusal.sentence;
}

}  // namespace

WatchParams watchParamsFromJSON(const JSONNode& params) {
    WatchMembers members;
    WatchParams read{.refusal = nebsc::read<WatchMembers>(params, watchMembers, members)};
    if (!read.refusal.empty()) {
        return read;
    }
    if (!members.sourceTree || !members.sourceTree->location) {
        read.refusal = "'sourceControl/watch' requires the member 'sourceTree' with a 'location'.";
        return read;
    }
    read.location = *members.sourceTree->location;
    const auto path = pathOfLocation(read.location);
    if (!path) {
        read.refusal = subjectAt(pathOfMember("sourceTree", "location")) + " is " +
                       inQuotes(shortened(read.location)) +
                       "; expected the absolute path of a folder.";
        return read;
    }
    read.path = pathByExpandingTilde(*path);
    read.withWorkingTree = members.workingTree;
    return read;
}

UnwatchParams unwatchParamsFromJSON(const JSONNode& params) {
    UnwatchMembers members;
    UnwatchParams read{.refusal = nebsc::read<UnwatchMembers>(params, unwatchMembers, members)};
    if (read.refusal.empty() && !members.watch) {
        read.refusal = "'sourceControl/unwatch' requires the member 'watch'.";
    }
    read.watch = members.watch.value_or("");
    return read;
}

}  // namespace neb::nebsc

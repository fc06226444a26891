#include <algorithm>
#include <array>

#include "Doctor/SlowCause.h"

namespace neb::nebsc {

namespace {

GitCalls callsForLooseObjects(const FormerState& /*formerState*/) {
    return {{"repack", "-d", "-l", "-q"}};
}

GitCalls callsForPacks(const FormerState& /*formerState*/) {
    return {{"multi-pack-index", "write"}};
}

/// The first command fails if the file system does not update the times of directories, on which
/// the cache relies; see git-update-index(1).
GitCalls callsForUntrackedCache(const FormerState& /*formerState*/) {
    return {{"update-index", "--test-untracked-cache"},
            {"update-index", "--untracked-cache"},
            {"status", "--porcelain"}};
}

GitCalls undoCallsForUntrackedCache(const FormerState& /*formerState*/) {
    return {{"update-index", "--no-untracked-cache"}};
}

GitCalls callsForIndexVersion(const FormerState& /*formerState*/) {
    return {{"update-index", "--index-version", "4"}};
}

GitCalls noCalls(const FormerState& /*formerState*/) {
    return {};
}

constexpr std::string_view commitGraphFiles[] = {"objects/info/commit-graph"};
constexpr std::string_view multiPackIndexFiles[] = {"objects/pack/multi-pack-index"};
constexpr GitSetting untrackedCacheSettings[] = {{"core.untrackedCache", "true"}};

constexpr std::array<SlowCause, 6> causes{{
    {.name = "commit-graph",
     .remedy = "write a commit-graph with changed paths",
     .detect = detectMissingCommitGraph,
     .calls = callsForCommitGraph,
     .files = commitGraphFiles,
     .undoCalls = undoCallsForCommitGraph},
    {.name = "untracked-cache",
     .remedy = "remember the untracked files of each folder in the index",
     .isInWorkingCopy = true,
     .detect = detectMissingUntrackedCache,
     .calls = callsForUntrackedCache,
     .settings = untrackedCacheSettings,
     .undoCalls = undoCallsForUntrackedCache},
    {.name = "index-version",
     .remedy = "write the index in version 4, which is smaller",
     .isInWorkingCopy = true,
     .detect = detectOldIndexVersion,
     .calls = callsForIndexVersion,
     .undoCalls = undoCallsForIndexVersion},
    {.name = "loose-objects",
     .remedy = "pack the loose objects",
     .detect = detectLooseObjects,
     .calls = callsForLooseObjects,
     .undoCalls = noCalls,
     .lasting = "the objects stay packed"},
    {.name = "packs",
     .remedy = "write an index of all packs, a multi-pack-index",
     .detect = detectManyPacks,
     .calls = callsForPacks,
     .files = multiPackIndexFiles,
     .undoCalls = noCalls},
    {.name = "file-system-monitor",
     .remedy = "",
     .isInWorkingCopy = true,
     .detect = detectUnusedFileSystemMonitor,
     .calls = noCalls,
     .undoCalls = noCalls},
}};

}  // namespace

std::span<const SlowCause> slowCauses() {
    return causes;
}

std::string valueIn(const FormerState& formerState, const std::string& name) {
    const auto value = formerState.find(name);
    return value == formerState.end() ? "" : value->second;
}

const SlowCause* slowCauseNamed(std::string_view name) {
    const auto cause = std::find_if(causes.begin(), causes.end(),
                                    [name](const SlowCause& row) { return row.name == name; });
    return cause == causes.end() ? nullptr : &*cause;
}

}  // namespace neb::nebsc

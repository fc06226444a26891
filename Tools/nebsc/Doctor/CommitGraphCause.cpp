#include <fstream>

#include "Doctor/CommitGraphFile.h"
#include "Doctor/SpeedExamination.h"
#include "Platform/PathString.h"
#include "Session/Paths.h"

namespace neb::nebsc {

namespace {

// The values of "former" in the state for --undo.
constexpr const char* noGraph = "none";
constexpr const char* singleFile = "file";
constexpr const char* chainOfFiles = "chain";

/// Returns the first commit-graph of the alternates; see gitrepository-layout(5).
CommitGraph graphOfAlternates(const std::string& objects) {
    std::ifstream alternates(pathByAppendingComponent(objects, "info/alternates"));
    CommitGraph graph;
    for (std::string folder; graph.layers.empty() && std::getline(alternates, folder);) {
        graph = commitGraphIn(isAbsolutePath(folder) ? folder
                                                     : pathByAppendingComponent(objects, folder));
    }
    return graph;
}

/// Returns what --undo has to know about the repository's own graph.
FormerState formerStateOf(const CommitGraph& graph) {
    return {{"former", graph.layers.empty() ? noGraph
                       : graph.isChain      ? chainOfFiles
                                            : singleFile},
            {"changedPaths", graph.hasChangedPaths() ? "yes" : "no"}};
}

/// Returns whether the newest commits are missing in the graph. git-maintenance(1) considers a
/// graph outdated without a hundred commits.
bool isOutdated(SpeedExamination& speed, const CommitGraph& graph) {
    const auto older =
        trimmedOutputOf(speed.query({"rev-list", "--max-count=1", "--skip=100", "HEAD"}));
    return older && !graph.contains(*older);
}

/// Returns why git cannot write or use a commit-graph; empty if it can.
std::string obstacleIn(SpeedExamination& speed) {
    const UserSettings& settings = speed.settings();
    const std::string& common = speed.repository().commonFolder;
    if (isSameSetting(settings.lastValue("core.commitGraph"), "false")) {
        return "git ignores commit-graphs, because core.commitGraph is false.";
    }
    if (trimmedOutputOf(speed.query({"rev-parse", "--is-shallow-repository"})) == "true") {
        return "git uses no commit-graph in a shallow clone; 'git fetch --unshallow' completes it.";
    }
    if (isAnythingAt(pathByAppendingComponent(common, "info/grafts")) ||
        trimmedOutputOf(speed.query({"for-each-ref", "--count=1", "refs/replace/"}))) {
        return "git uses no commit-graph while commits are replaced, see git-replace(1).";
    }
    if (settings.hasCloneFilter("tree:")) {
        return "The changed paths would need the trees that this partial clone lacks.";
    }
    return "";
}

/// Returns the path of a file that the newest commit changes; empty if it changes none.
std::string someFile(SpeedExamination& speed) {
    const ChildOutcome outcome =
        speed.query({"log", "--max-count=1", "--first-parent", "-m", "--format=", "--name-only",
                     "--no-renames", "--diff-filter=AM", "-z", "HEAD"});
    const std::vector<std::string> paths = splitAtNUL(outcome.output);
    return paths.empty() ? "" : paths.front();
}

}  // namespace

std::optional<Slowness> detectMissingCommitGraph(SpeedExamination& speed) {
    if (!trimmedOutputOf(speed.query({"rev-parse", "--verify", "--quiet", "HEAD^{commit}"}))) {
        return std::nullopt;
    }
    const std::string objects =
        pathByAppendingComponent(speed.repository().commonFolder, "objects");
    CommitGraph graph = commitGraphIn(objects);
    const FormerState formerState = formerStateOf(graph);
    if (graph.layers.empty()) {
        graph = graphOfAlternates(objects);
    }
    const bool exists = !graph.layers.empty();
    const bool lacksPaths = !graph.hasChangedPaths();
    if (exists && !lacksPaths &&
        (!speed.maintenance().updatesCommitGraph().empty() || !isOutdated(speed, graph))) {
        return std::nullopt;
    }
    Slowness slowness{.text = !exists      ? "there is no commit-graph"
                              : lacksPaths ? "the commit-graph has no changed paths"
                                           : "the commit-graph lacks the newest commits",
                      .probes = {},
                      .obstacle = obstacleIn(speed),
                      .formerState = formerState};
    if (!exists || !lacksPaths) {
        slowness.probes.push_back({.command = {.label = "git log --format=%H",
                                               .arguments = {"log", "--format=%H", "HEAD"}},
                                   .remainingPart = 0.2});
    }
    if (const std::string file = someFile(speed); !file.empty()) {
        slowness.probes.push_back({.command = {.label = "git log of one file",
                                               .arguments = {"--literal-pathspecs", "log",
                                                             "--format=%H", "HEAD", "--", file}},
                                   .remainingPart = 0.12});
    }
    return slowness;
}

GitCalls callsForCommitGraph(const FormerState& formerState) {
    std::vector<std::string> call{"commit-graph", "write", "--reachable", "--changed-paths"};
    if (valueIn(formerState, "former") == chainOfFiles) {
        call.emplace_back("--split=replace");
    }
    return {call};
}

/// A graph without changed paths is written again. One that only lacked commits stays up to date.
GitCalls undoCallsForCommitGraph(const FormerState& formerState) {
    if (valueIn(formerState, "former") == noGraph || valueIn(formerState, "changedPaths") != "no") {
        return {};
    }
    GitCalls calls = callsForCommitGraph(formerState);
    calls.front()[3] = "--no-changed-paths";
    return calls;
}

}  // namespace neb::nebsc

#include "GitExtensions/GitIntegrate.h"

#include <algorithm>
#include <iterator>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

constexpr std::string_view fastForward = "fast-forward";

struct Strategy {
    std::string_view name;
    std::vector<std::string> arguments;
};

/// Sets everything that the user's settings could change: merge.ff, merge.autoStash,
/// branch.*.mergeOptions, rebase.backend, rebase.autoStash, rebase.autoSquash, rebase.rebaseMerges
/// and rebase.updateRefs, whose option only git 2.38 and later know.
const Strategy* strategyOfName(std::string_view name) {
    static const Strategy strategies[] = {
        {"merge",
         {"merge", "--no-edit", "--ff", "--commit", "--no-squash", "--no-autostash", "--"}},
        {"rebase",
         {"-c", "rebase.updateRefs=false", "rebase", "--merge", "--no-autostash", "--no-autosquash",
          "--no-rebase-merges", "--"}},
        {fastForward, {"merge", "--ff-only", "--commit", "--no-squash", "--no-autostash", "--"}},
    };
    const auto* row = std::ranges::find(strategies, name, &Strategy::name);
    return row == std::end(strategies) ? nullptr : row;
}

}  // namespace

/// The remote branch may not have been fetched yet; git then says that the revision is unknown.
std::optional<std::string> GitIntegrateOperation::fetchedUpstream() {
    const std::string upstream = "@{upstream}";
    const std::vector<std::string> query{"rev-parse", "--symbolic-full-name", upstream};
    const auto name = runQuery(request(), query);
    const bool isMissing = !error() && name->error() &&
                           name->error()->errorClass == NEBSourceControlRevisionUnknownErrorClass;
    if (!error() && name->error() &&
        name->error()->errorClass == NEBSourceControlBranchUnknownErrorClass) {
        // A branch without commits.
        fail(NEBSourceControlNoUpstreamErrorClass, "The current branch has no upstream branch.");
        return std::nullopt;
    }
    if ((!isMissing && !goesOnAfter(*name)) || !runChange({"fetch", "--quiet"})) {
        return std::nullopt;
    }
    return !isMissing || queriedLine(query) ? std::optional(upstream) : std::nullopt;
}

std::optional<std::string> GitIntegrateOperation::fetchedRevision() {
    const NEBValue& remote = request()->option(NEBSourceControlRequestOptionRemoteName);
    const NEBValue& branch = request()->option(NEBSourceControlRequestOptionBranch);
    if (request()->destination.isPresent()) {
        return request()->destination.description();
    }
    if (remote.isPresent() != branch.isPresent()) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "The request has only one of the names of a remote and of its branch.");
        return std::nullopt;
    }
    if (!acceptsReference(branch)) {
        return std::nullopt;
    }
    if (remote.isPresent()) {
        const bool isFetched =
            runChange({"fetch", "--quiet", "--", remote.description(), branch.description()});
        return isFetched ? std::optional<std::string>("FETCH_HEAD") : std::nullopt;
    }
    return fetchedUpstream();
}

void GitIntegrateOperation::perform() {
    const NEBValue& name = request()->option(NEBSourceControlRequestOptionStrategy);
    const Strategy* strategy = strategyOfName(name.isPresent() ? name.description() : "merge");
    if (strategy == nullptr) {
        failForOption(NEBSourceControlRequestOptionStrategy);
        return;
    }
    const auto revision = fetchedRevision();
    const auto head = revision ? queriedHead() : std::nullopt;
    if (head) {
        // A branch without commits has nothing to rebase.
        std::vector<std::string> arguments =
            head->empty() ? strategyOfName(fastForward)->arguments : strategy->arguments;
        arguments.push_back(*revision);
        runStoppable(arguments);
    }
}

}  // namespace neb

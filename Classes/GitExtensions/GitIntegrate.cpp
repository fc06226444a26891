#include "GitExtensions/GitIntegrate.h"

#include <algorithm>
#include <iterator>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

struct Strategy {
    std::string_view name;
    std::vector<std::string> arguments;
};

const Strategy* strategyOfName(std::string_view name) {
    static const Strategy strategies[] = {
        {"merge", {"merge", "--no-edit", "--"}},
        {"rebase", {"rebase", "--"}},
        {"fast-forward", {"merge", "--ff-only", "--"}},
    };
    const auto* row = std::ranges::find(strategies, name, &Strategy::name);
    return row == std::end(strategies) ? nullptr : row;
}

}  // namespace

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
    const std::string upstream = "@{upstream}";
    const bool hasUpstream =
        queriedLine({"rev-parse", "--symbolic-full-name", upstream}).has_value();
    return hasUpstream && runChange({"fetch", "--quiet"}) ? std::optional(upstream) : std::nullopt;
}

void GitIntegrateOperation::perform() {
    const NEBValue& name = request()->option(NEBSourceControlRequestOptionStrategy);
    const Strategy* strategy = strategyOfName(name.isPresent() ? name.description() : "merge");
    if (strategy == nullptr) {
        failForOption(NEBSourceControlRequestOptionStrategy);
        return;
    }
    if (const auto revision = fetchedRevision()) {
        std::vector<std::string> arguments = strategy->arguments;
        arguments.push_back(*revision);
        runStoppable(arguments);
    }
}

}  // namespace neb

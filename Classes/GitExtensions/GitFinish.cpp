#include "GitExtensions/GitFinish.h"

#include <algorithm>
#include <iterator>

#include "GitExtensions/GitUnfinishedOperation.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

/// The kind of an operation, and the git command that finishes it.
struct FinishingCommand {
    std::string_view kind, command;
};

constexpr FinishingCommand finishingCommands[] = {
    {"merge", "merge"},   {"rebase", "rebase"}, {"apply", "am"}, {"cherry-pick", "cherry-pick"},
    {"revert", "revert"},
};

}  // namespace

void GitFinishOperation::perform() {
    const std::string wanted = action("");
    if (wanted != "continue" && wanted != "skip" && wanted != "abort") {
        failForOption(NEBSourceControlRequestOptionAction);
        return;
    }
    const auto underWay = run<GitUnfinishedOperation>(request());
    if (!goesOnAfter(*underWay)) {
        return;
    }
    const NEBSourceControlResult records = underWay->result().value_or(NEBSourceControlResult());
    const std::string_view kind =
        records.empty() ? "" : records.front().text(NEBSourceControlOperationKindKey);
    const auto* row = std::ranges::find(finishingCommands, kind, &FinishingCommand::kind);
    if (row == std::end(finishingCommands)) {
        fail(NEBSourceControlNothingInProgressErrorClass,
             "There is no merge, rebase, cherry-pick or revert to " + wanted + ".");
    } else if (wanted == "skip" && kind == "merge") {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "A merge has no steps to skip. Continue or abort it.");
    } else {
        runStoppable({std::string(row->command), "--" + wanted});
    }
}

}  // namespace neb

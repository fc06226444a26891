#include "CommandFrame/StoppableTask.h"

#include "CommandFrame/FileStates.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

std::string StoppableTask::conflictAdvice() const {
    return "Resolve them in the files, run 'nebsc stage' on these, then 'nebsc continue'; "
           "'nebsc abort' restores the state before.";
}

/// Without a record, git reports a conflict of another kind.
bool StoppableTask::isHandled(const NEBSourceControlError& error) const {
    return error.errorClass == NEBSourceControlConflictErrorClass && !error.files.empty();
}

void StoppableTask::report(const Outcome& outcome, CommandOutput& output) {
    if (!outcome.error) {
        output.standardOutput = textOfSuccess(outcome);
        return;
    }
    CommandOutput stopped = refusal(subject() + " stopped at conflicts:", exitFailed,
                                    NEBSourceControlConflictErrorClass);
    stopped.standardError +=
        fileStateLines(workingCopy(), outcome.result.value_or(NEBSourceControlResult()),
                       NEBSourceControlOperationConflictKey);
    addAdvice(stopped, conflictAdvice());
    addFailure(output, stopped);
}

bool StoppableTask::hasMoved(const Outcome& outcome) {
    return outcome.result && !outcome.result->empty() &&
           outcome.result->front().text(NEBSourceControlOperationOldObjectIDKey) !=
               outcome.result->front().text(NEBSourceControlOperationObjectIDKey);
}

std::string StoppableTask::endWithCommit() const {
    const auto commit = git().headCommit();
    return commit ? "; now at " + printable(*commit) + ".\n" : ".\n";
}

}  // namespace neb::nebsc

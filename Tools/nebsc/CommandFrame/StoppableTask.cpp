#include "CommandFrame/StoppableTask.h"

#include "CommandFrame/FileStates.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Whether git applied resolutions that it recorded earlier: "Staged 'a' using previous
/// resolution."; see git-rerere(1).
bool usedRecordedResolutions(const NEBSourceControlError& error) {
    return error.text.value_or("").find("' using previous resolution.") != std::string::npos;
}

}  // namespace

std::string StoppableTask::conflictAdvice() const {
    return "Resolve them in the files, run 'nebsc stage' on these, then 'nebsc continue'; "
           "'nebsc abort' restores the state before.";
}

std::string StoppableTask::resolutionAdvice() const {
    return "Check them with 'nebsc diff --staged', then run 'nebsc continue'; "
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
    const std::string files =
        fileStateLines(workingCopy(), outcome.result.value_or(NEBSourceControlResult()),
                       NEBSourceControlOperationConflictKey);
    const bool isResolved = files.empty() && usedRecordedResolutions(*outcome.error);
    CommandOutput stopped = refusal(
        subject() + (isResolved ? " stopped; git resolved the conflicts as recorded by 'git rerere'"
                                : " stopped at conflicts:"),
        exitFailed, NEBSourceControlConflictErrorClass);
    stopped.standardError += files;
    addAdvice(stopped, isResolved ? resolutionAdvice() : conflictAdvice());
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

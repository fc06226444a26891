#include "GitOperations/GitUpdate.h"

#include "GitOperations/GitExchange.h"
#include "GitOperations/GitMerge.h"
#include "GitOperations/GitSubversion.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"

namespace neb {

void GitUpdateOperation::main() {
    if (error()) {
        return;
    }
    setOperationQueue(std::make_shared<OperationQueue>());
    const NEBSourceControlRequest& asked = *request();
    const bool isWorkingTree =
        std::dynamic_pointer_cast<NEBSourceControlWorkingTree>(asked.sourceTree) != nullptr;
    NEBSourceControlAssertInstance(
        {.function = "-[GitUpdateOperation main]", .file = "Classes/GitOperations", .line = 1658},
        NEBValue(std::shared_ptr<const NEBObject>(asked.sourceTree)), isWorkingTree, "workingTree",
        "NEBSourceControlWorkingTree");
    if (asked.remote && asked.remote->representsGitSVNBridge) {
        const auto rebase = run<GitSvnRebaseOperation>(request());
        if (rebase->error()) {
            setError(rebase->error());
        }
    } else if (asked.option(NEBSourceControlRequestOptionPullByFastForwarding).boolValue()) {
        delegateTo<GitPullOperation>();
    } else {
        delegateTo<GitMergeOperation>();
    }
}

template <typename Op>
void GitUpdateOperation::delegateTo() {
    const auto operation = run<Op>(request());
    if (!isCancelled()) {
        setError(operation->error());
        setResult(operation->result());
    }
}

}  // namespace neb

#include <memory>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/ObjectName.h"
#include "CommandFrame/RevisionArguments.h"
#include "CommandFrame/TreeQuery.h"
#include "Commands/Commands.h"
#include "Commands/CommitListing.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Terminal/Colour.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// In a bare repository, DIR is relative to the top of the commit.
class ListTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] const std::string& folder() const {
        return paths("DIR").empty() ? currentFolder() : paths("DIR").front();
    }
    [[nodiscard]] std::string shownFolder() const {
        return inQuotes(arguments().value("DIR").value_or("."));
    }
    [[nodiscard]] std::optional<CommandOutput> refusalOfFolder();
    void explainMissingTree(Outcome& outcome);

    std::shared_ptr<TreeQuery> _query;
};

std::optional<CommandOutput> ListTask::validate() {
    if (auto refused = refusalOutsideRepository(git())) {
        return refused;
    }
    if (auto refused = refusalOfPathOutside(git(), folder())) {
        return refused;
    }
    if (auto refused = refusalWithoutCommits(git())) {
        return refused;
    }
    return refusalOfFolder();
}

/// If git fails here, the query fails later with git's message.
std::optional<CommandOutput> ListTask::refusalOfFolder() {
    const std::string type = git().typeOfEntry("HEAD", folder()).value_or("tree");
    if (type == "tree") {
        return std::nullopt;
    }
    const std::string name = shownFolder();
    if (!type.empty()) {
        return refusal(name + " is not a folder in the latest commit but a " +
                           (type == "blob" ? "file." : "submodule."),
                       exitFailed, NEBSourceControlPathInvalidErrorClass);
    }
    const bool isOnDisk = workingCopy().isWorkingCopy && isAnythingAt(folder());
    return refusal(isOnDisk ? name + " is on disk but not in the latest commit."
                            : "The folder " + name +
                                  (workingCopy().isWorkingCopy
                                       ? " exists neither on disk nor in the latest commit."
                                       : " does not exist in the latest commit."),
                   exitFailed, NEBSourceControlPathUnknownErrorClass);
}

std::shared_ptr<NEBSourceControlRequest> ListTask::makeRequest() {
    return newRequest(NEBSourceControlRequestList, {pathFromTop(workingCopy(), folder())});
}

RequestResult ListTask::perform() {
    _query = std::make_shared<TreeQuery>(makeRequest(), objectAt(git(), "HEAD", folder()));
    RequestResult requestResult = performStreamed(*_query);
    explainMissingTree(*requestResult.outcome);
    return requestResult;
}

/// git reports the missing root tree of a commit as an unknown revision. Another command of git
/// names the tree.
void ListTask::explainMissingTree(Outcome& outcome) {
    if (!outcome.error || outcome.error->errorClass != NEBSourceControlRevisionUnknownErrorClass) {
        return;
    }
    const ChildOutcome tree = git().run({"diff-tree", "--root", "HEAD"});
    if (!tree.status.isSuccess()) {
        outcome.error =
            NEBSourceControlErrorFromText(std::string(tree.errorOutput), *makeRequest());
    }
}

std::string ListTask::textOfResult(const NEBSourceControlResult& /*records*/) {
    const bool isColoured = isInColour();
    std::string lines;
    for (const TreeEntry& entry : _query->takeEntries()) {
        const std::string name = printable(entry.name) + (entry.isFile ? "" : "/");
        lines += (isColoured && !entry.isFile ? coloured(name, Colour::cyan) : name) + "\n";
    }
    return lines;
}

void ListTask::report(const Outcome& outcome, CommandOutput& output) {
    if (outcome.recordCount == 0U) {
        output.standardError += printable(shownFolder()) + " is empty in the latest commit.\n";
    }
}

constexpr Parameter parameters[] = {
    {"DIR", "The folder, or REVISION:DIR for any commit; default: the current folder",
     Takes::folderOrObject},
};

/// A folder on disk whose name has a colon is no folder of a commit.
CommandOutput run(const CommandCall& call) {
    const auto name = objectNameIn(call.arguments.value("DIR").value_or(""));
    return name && name->revision && !isAnythingAt(*call.arguments.value("DIR"))
               ? listFolderOfCommit(call)
               : runTask<ListTask>(call);
}

}  // namespace

constinit const Command listCommand{
    .name = "ls",
    .group = inspectGroup,
    .summary = "List a folder of the latest commit, or of any other",
    .details =
        "Folders and submodules end with '/'. Lists the commit, not the working copy, so\n"
        "names that are not on disk are listed too. In a bare repository, DIR is relative\n"
        "to the top.\n"
        "\n"
        "With REVISION:DIR, shows kind, size in bytes and name of each entry. That DIR is\n"
        "relative to the top, or to the current folder if it begins with './' or '../'.\n"
        "\n"
        "Examples:\n"
        "  nebsc ls             the current folder\n"
        "  nebsc ls src         the folder src\n"
        "  nebsc ls v1.0:       the top of v1.0\n"
        "  nebsc ls v1.0:src    the folder src of v1.0\n",
    .parameters = parameters,
    .activity = "Listing",
    .isPaged = true,
    .run = run,
};

}  // namespace neb::nebsc

#include "Commands/CommitListing.h"

#include <algorithm>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/ObjectName.h"
#include "CommandFrame/RecordNames.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/Colour.h"
#include "Terminal/PrintableText.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

/// The columns have fixed widths, as entries are printed while they arrive.
constexpr std::size_t kindColumns = std::string_view("symbolic link").size();
constexpr std::size_t sizeColumns = 10;

class CommitListTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    RepositoryQuestions questions() const override {
        return {.revisions = revisionsToAskFor(*name().revision)};
    }
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] ObjectName name() const { return *objectNameIn(argument("DIR")); }
    [[nodiscard]] std::string shownName() const { return inQuotes(argument("DIR")); }
    /// Returns why git has no such folder; absent if there is one.
    [[nodiscard]] std::optional<CommandOutput> refusalOfFolder() const;
    [[nodiscard]] std::string lineOf(const NEBDictionary& record) const;

    /// From the top of the repository.
    std::string _path;
};

std::optional<CommandOutput> CommitListTask::validate() {
    if (auto refused = refusalOutsideRepository(git())) {
        return refused;
    }
    ObjectPath found = findObjectPath(git(), name());
    if (found.refused) {
        return found.refused;
    }
    _path = std::move(found.path);
    return refusalOfRevision(git(), *name().revision);
}

std::shared_ptr<NEBSourceControlRequest> CommitListTask::makeRequest() {
    auto request = _path.empty() ? newRequest(NEBSourceControlRequestTree)
                                 : newRequest(NEBSourceControlRequestTree, {_path});
    setRevision(*request, git(), name());
    return request;
}

/// git does not say whether the folder or the revision is missing.
RequestResult CommitListTask::perform() {
    RequestResult result = performStreamed(makeRequest());
    std::optional<NEBSourceControlError>& error = result.outcome->error;
    if (error && error->errorClass != NEBSourceControlObjectsMissingErrorClass) {
        if (const auto refused = refusalOfFolder()) {
            error = refused->error;
        }
    }
    return result;
}

std::optional<CommandOutput> CommitListTask::refusalOfFolder() const {
    const std::string type = git().typeOfEntry(*name().revision, _path).value_or("tree");
    if (type == "tree") {
        return std::nullopt;
    }
    const std::string revision = *name().revision;
    if (type.empty()) {
        return refusalWithAdvice(
            "There is no folder " + inQuotes(_path) + " in " + inQuotes(revision) + ".",
            "'nebsc ls " + printable(revision) + ":' lists the top of that commit.",
            NEBSourceControlPathUnknownErrorClass);
    }
    return type == "blob"
               ? refusalWithAdvice(shownName() + " is a file.",
                                   "'nebsc cat " + printable(argument("DIR")) + "' prints it.",
                                   NEBSourceControlPathInvalidErrorClass)
               : refusalWithAdvice(shownName() + " is a submodule.",
                                   "Its files belong to another repository.",
                                   NEBSourceControlPathInvalidErrorClass);
}

std::string CommitListTask::lineOf(const NEBDictionary& record) const {
    const std::string_view kind = record.text(NEBSourceControlOperationKindKey);
    const bool isFolder = kind == "folder" || kind == "submodule";
    const std::string name = printable(bytesOfName(record, nameKeys)) + (isFolder ? "/" : "");
    const auto size = record.value(NEBSourceControlOperationSizeKey).integer();
    const std::string sizeText = size ? std::to_string(*size) : "";
    return paddedTo(kindColumns, kind) + "  " +
           std::string(sizeColumns - std::min(sizeColumns, sizeText.size()), ' ') + sizeText +
           "  " + (isInColour() && isFolder ? coloured(name, Colour::cyan) : name) + "\n";
}

std::string CommitListTask::textOfResult(const NEBSourceControlResult& records) {
    std::string lines;
    if (!isJSON()) {
        for (const NEBDictionary& record : records) {
            lines += lineOf(record);
        }
    }
    return lines;
}

void CommitListTask::report(const Outcome& outcome, CommandOutput& output) {
    if (outcome.recordCount == 0U) {
        output.standardError += printable(shownName()) + " is empty.\n";
    }
}

}  // namespace

CommandOutput listFolderOfCommit(const CommandCall& call) {
    return runTask<CommitListTask>(call);
}

}  // namespace neb::nebsc

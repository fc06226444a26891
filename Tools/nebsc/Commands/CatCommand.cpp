#include <unistd.h>

#include <filesystem>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/ObjectName.h"
#include "CommandFrame/RecordNames.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Terminal/PatchText.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

class CatTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    RepositoryQuestions questions() const override;
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override;
    std::string textOfResult(const NEBSourceControlResult& records) override;

private:
    [[nodiscard]] std::optional<CommandOutput> refusalOfOtherObject() const;
    [[nodiscard]] std::optional<CommandOutput> refusalInConflict() const;
    /// Returns the digits of the versions that the index has of a file in conflict.
    [[nodiscard]] std::string stagesInConflict() const;

    ObjectName _name;
    /// From the top of the repository.
    std::string _path;
};

RepositoryQuestions CatTask::questions() const {
    const auto name = objectNameIn(argument("OBJECT"));
    return {.revisions = name && name->revision ? revisionsToAskFor(*name->revision)
                                                : std::vector<std::string>{}};
}

std::optional<CommandOutput> CatTask::validate() {
    const auto name = objectNameIn(argument("OBJECT"));
    if (!name) {
        throw invalidValue("OBJECT", "REVISION:FILE, or :FILE for the index");
    }
    if (!mayRunGit() && !name->revision) {
        return refusalWithAdvice("The plug-in has no index.",
                                 "'nebsc cat REVISION:FILE' prints a file of a commit.",
                                 NEBSourceControlRequestInvalidErrorClass);
    }
    if (auto refused = mayRunGit() ? refusalOutsideRepository(git()) : std::nullopt) {
        return refused;
    }
    const ObjectPath found = findObjectPath(git(), *name);
    if (found.refused) {
        return found.refused;
    }
    if (found.path.empty()) {
        return refusal(inQuotes(argument("OBJECT")) + " names no file.", exitFailed,
                       NEBSourceControlPathInvalidErrorClass);
    }
    _name = *name;
    _path = found.path;
    return name->revision && mayRunGit() ? refusalOfRevision(git(), *name->revision) : std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> CatTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestContent, {_path});
    setRevision(*request, git(), _name);
    if (arguments().has("--filters")) {
        NEBDictionary options = request->options.value_or(NEBDictionary());
        options.set(NEBSourceControlRequestOptionApplyFilters, true);
        request->setOptions(std::move(options));
    }
    return request;
}

/// A terminal gets no control characters; anything else gets the bytes.
std::string CatTask::textOfResult(const NEBSourceControlResult& records) {
    std::string text;
    for (const NEBDictionary& record : records) {
        text += bytesOfName(record, {NEBSourceControlOperationContentKey,
                                     NEBSourceControlOperationContentBytesKey});
    }
    return PatchText(STDOUT_FILENO, false).textOf(std::move(text));
}

/// In a conflict, the index has the versions of both sides, or of one that changed what the other
/// deleted, and none for the next commit.
std::optional<CommandOutput> CatTask::refusalInConflict() const {
    const std::string stages =
        !_name.revision && _name.stage == 0 ? stagesInConflict() : std::string();
    if (stages.empty()) {
        return std::nullopt;
    }
    constexpr std::string_view versions[] = {"the common ancestor", "our side", "their side"};
    std::string advice;
    for (const char stage : stages) {
        const std::string name = std::string(":") + stage + ":";
        advice.append(advice.empty() ? "'nebsc cat " + shellQuoted(name + _path) + "' prints "
                                     : "; " + inQuotes(name) + " instead prints ");
        advice.append(versions[stage - '1']);
    }
    return refusalWithAdvice(inQuotes(_path) + " is in conflict.", advice + ".",
                             NEBSourceControlConflictUnresolvedErrorClass);
}

/// Reads lines "MODE ID STAGE\tPATH"; see git-ls-files(1), --stage.
std::string CatTask::stagesInConflict() const {
    const std::string path = std::filesystem::path(_path).lexically_normal();
    const auto entries = git().outputOf({"ls-files", "--unmerged", "-z", "--",
                                         pathByAppendingComponent(workingCopy().location, _path)});
    std::string stages;
    for (const std::string& entry : splitAtNUL(entries.value_or(""))) {
        const std::size_t tab = entry.find('\t');
        if (tab != std::string::npos && tab > 0 && entry.substr(tab + 1) == path) {
            stages += entry[tab - 1];
        }
    }
    return stages;
}

/// git reports that a folder or a submodule is a bad file, and does not name a missing one.
std::optional<CommandOutput> CatTask::refusalOfOtherObject() const {
    if (auto refused = refusalInConflict()) {
        return refused;
    }
    const auto type = _name.revision ? git().typeOfEntry(*_name.revision, _path) : std::nullopt;
    if (!type || *type == "blob") {
        return std::nullopt;
    }
    const std::string name = argument("OBJECT");
    if (type->empty()) {
        return refusalWithAdvice(
            "There is no file " + inQuotes(_path) + " in " + inQuotes(*_name.revision) + ".",
            "'nebsc ls " + printable(*_name.revision) + ":' lists the top of that commit.",
            NEBSourceControlPathUnknownErrorClass);
    }
    return *type == "tree" ? refusalWithAdvice(inQuotes(name) + " is a folder.",
                                               "'nebsc ls " + printable(name) + "' lists it.",
                                               NEBSourceControlPathInvalidErrorClass)
                           : refusalWithAdvice(inQuotes(name) + " is a submodule.",
                                               "Its files belong to another repository.",
                                               NEBSourceControlPathInvalidErrorClass);
}

RequestResult CatTask::perform() {
    RequestResult result = performStreamed(makeRequest());
    if (result.outcome && result.outcome->error && mayRunGit()) {
        if (const auto refused = refusalOfOtherObject()) {
            result.outcome->error = refused->error;
        }
    }
    return result;
}

constexpr Parameter parameters[] = {
    {"OBJECT", "REVISION:FILE, or :FILE for the index, :1:FILE to :3:FILE in a conflict",
     Takes::objectName, Occurs::once},
    {"--filters", "Convert line ends and encoding as for the working copy"},
};

}  // namespace

constinit const Command catCommand{
    .name = "cat",
    .group = inspectGroup,
    .summary = "Print a file of a commit or of the index",
    .details =
        "FILE is relative to the top of the repository, or to the current folder if it\n"
        "begins with './' or '../'. In a conflict, :1:FILE is the common ancestor,\n"
        ":2:FILE our side, :3:FILE their side. Prints every byte as it is stored; on a\n"
        "terminal, control characters other than TABs and line ends are escaped.\n"
        "\n"
        "Examples:\n"
        "  nebsc cat HEAD~3:src/main.c    the file three commits ago\n"
        "  nebsc cat v1.0:./main.c        in the current folder\n"
        "  nebsc cat :src/main.c          as it is staged\n",
    .parameters = parameters,
    .activity = "Reading",
    .isPaged = true,
    .run = runTask<CatTask>,
};

}  // namespace neb::nebsc

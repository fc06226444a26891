// The command "tag" and its subcommands.

#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view nameParameter = "NAME";
constexpr std::string_view revisionParameter = "REVISION";
constexpr std::string_view tagPrefix = "refs/tags/";

// ---- list -------------------------------------------------------------------------------------

class TagListTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        auto request = newRequest(NEBSourceControlRequestReferences);
        request->destination = std::string(tagPrefix);
        return request;
    }
    RequestResult perform() override { return performStreamed(makeRequest()); }
    std::string textOfResult(const NEBSourceControlResult& result) override {
        std::string lines;
        for (const NEBDictionary& record : result) {
            const std::string_view name = record.text(NEBSourceControlOperationNameKey);
            lines += printable(name.substr(std::min(tagPrefix.size(), name.size()))) + "\n";
        }
        return lines;
    }
};

constinit const Command listCommand{
    .name = "list",
    .group = subcommandGroup,
    .summary = "List the tags",
    .details =
        "Example:\n"
        "  nebsc tag list\n",
    .activity = "Reading",
    .isPaged = true,
    .run = runTask<TagListTask>,
};

// ---- create and delete ------------------------------------------------------------------------

/// Reports what became of a tag.
class TagTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> newTagRequest(const char* action) const {
        auto request = newRequest(NEBSourceControlRequestTag);
        request->destination = argument(nameParameter);
        request->options = NEBDictionary{{NEBSourceControlRequestOptionAction, action}};
        return request;
    }
    /// Returns "Created tag 'v1.0'".
    [[nodiscard]] std::string sentence(const char* verb) const {
        return std::string(verb) + " tag " + printable(inQuotes(argument(nameParameter)));
    }
    [[nodiscard]] static std::string idIn(const Outcome& outcome) {
        return outcome.result && !outcome.result->empty()
                   ? printable(outcome.result->front().text(NEBSourceControlOperationObjectIDKey))
                   : "";
    }
};

class TagCreateTask : public TagTask {
public:
    using TagTask::TagTask;

protected:
    std::optional<CommandOutput> validate() override {
        const auto revision = arguments().value(revisionParameter);
        return revision ? refusalOfRevision(git(), *revision) : refusalWithoutCommits(git());
    }
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    std::string adviceFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlTagExistsErrorClass
                   ? "'nebsc tag create --force' replaces the tag."
                   : "";
    }
    void report(const Outcome& /*outcome*/, CommandOutput& output) override {
        output.standardOutput = sentence("Created") + ".\n";
    }
};

std::shared_ptr<NEBSourceControlRequest> TagCreateTask::makeRequest() {
    auto request = newTagRequest("create");
    if (const auto revision = arguments().value(revisionParameter)) {
        request->startingRevision = *revision;
    }
    if (const auto message = arguments().value("--message")) {
        request->options->set(NEBSourceControlRequestOptionMessage, *message);
    }
    if (arguments().has("--force")) {
        request->options->set(NEBSourceControlRequestOptionForce, true);
    }
    return request;
}

constexpr Parameter createParameters[] = {
    {nameParameter, "The new tag", Takes::text, Occurs::once},
    {revisionParameter, "What it names: a branch, a tag or any other revision; default: HEAD",
     Takes::revision},
    {"-m,--message", "Create an annotated tag with this message", Takes::text, Occurs::optionally,
     "MESSAGE"},
    {"--force", "Replace an existing tag"},
};

constinit const Command createCommand{
    .name = "create",
    .group = subcommandGroup,
    .summary = "Create a tag",
    .details =
        "Examples:\n"
        "  nebsc tag create v1.0                   name the latest commit\n"
        "  nebsc tag create v0.9 HEAD~3 -m Old     an annotated tag for another commit\n",
    .parameters = createParameters,
    .activity = "Creating the tag",
    .run = runTask<TagCreateTask>,
};

class TagDeleteTask : public TagTask {
public:
    using TagTask::TagTask;

protected:
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newTagRequest("delete");
    }
    std::string textFor(const NEBSourceControlError& error) const override {
        return error.errorClass == NEBSourceControlRevisionUnknownErrorClass
                   ? "There is no tag " + inQuotes(argument(nameParameter)) + "."
                   : "";
    }
    SilentFailure silentFailure() const override { return SilentFailure::isIgnored; }
    /// The id restores a tag that was deleted by mistake.
    void report(const Outcome& outcome, CommandOutput& output) override {
        output.standardOutput = sentence("Deleted") + ", which was " + idIn(outcome) + ".\n";
    }
};

constexpr Parameter deleteParameters[] = {
    {nameParameter, "The tag", Takes::tag, Occurs::once},
};

constinit const Command deleteCommand{
    .name = "delete",
    .group = subcommandGroup,
    .summary = "Delete a tag",
    .details =
        "Does not delete it on remotes.\n"
        "\n"
        "Example:\n"
        "  nebsc tag delete v1.0\n",
    .parameters = deleteParameters,
    .activity = "Deleting",
    .run = runTask<TagDeleteTask>,
};

constexpr const Command* tagCommands[] = {&listCommand, &createCommand, &deleteCommand};

}  // namespace

constinit const Command tagCommand{
    .name = "tag",
    .group = branchesGroup,
    .summary = "List, create and delete tags",
    .details =
        "Examples:\n"
        "  nebsc tag                           list the tags\n"
        "  nebsc tag create v1.0 -m 'First'    create an annotated tag\n",
    .activity = "Reading",
    .commands = tagCommands,
    .run = runTask<TagListTask>,
};

}  // namespace neb::nebsc

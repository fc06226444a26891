// The commands "init" and "clone", which create a repository.

#include <array>

#include "CommandFrame/CommandTask.h"
#include "Commands/CloneWithoutSubmodules.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlFileError.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Platform/PathString.h"
#include "Session/GitProgram.h"
#include "Session/MissingFolder.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

// ---- init -------------------------------------------------------------------------------------

class InitTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    WorkingCopyLocation locate() override;
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] std::optional<CommandOutput> refusalOfRepository(const std::string& folder);

    std::optional<MissingFolder> _folder;
};

WorkingCopyLocation InitTask::locate() {
    return {.location = paths("DIR").empty() ? currentFolder() : paths("DIR").front(),
            .currentFolder = currentFolder(),
            .isWorkingCopy = false};
}

/// In an existing or damaged repository the request would go on and replace its .gitignore.
std::optional<CommandOutput> InitTask::refusalOfRepository(const std::string& folder) {
    const std::string inside = pathByAppendingComponent(folder, ".git");
    for (const std::string& place : {folder, inside}) {
        if (runGit(git().interruption(), git().trace(), {"rev-parse", "--resolve-git-dir", place},
                   currentFolder())
                .status.isSuccess()) {
            return refusal(
                inQuotes(folder) + " already contains a repository; nothing was changed.",
                exitFailed, NEBSourceControlDestinationExistsErrorClass);
        }
    }
    const bool isBroken =
        isAnythingAt(inside) || (isAnythingAt(pathByAppendingComponent(folder, "objects")) &&
                                 isAnythingAt(pathByAppendingComponent(folder, "refs")));
    return isBroken ? std::optional(refusal(
                          inQuotes(folder) +
                              " seems to contain a damaged repository; nothing was changed.",
                          exitFailed, NEBSourceControlDestinationExistsErrorClass))
                    : std::nullopt;
}

std::optional<CommandOutput> InitTask::validate() {
    const std::string& folder = workingCopy().location;
    if (const std::string typed = argument("DIR"); typed.find("://") != std::string::npos) {
        throw invalidValue("DIR", "a folder, not a URL");
    }
    if (auto refused = refusalOfBlockedFolder(workingCopy(), folder)) {
        return refused;
    }
    if (auto refused = refusalOfRepository(folder)) {
        return refused;
    }
    _folder.emplace(folder);
    if (const auto failure = _folder->make()) {
        return failureWith(NEBSourceControlErrorFromFileFailure(*failure));
    }
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> InitTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestCreateRepository);
    if (arguments().has("--bare")) {
        request->options.emplace();
        request->options->set(NEBSourceControlRequestOptionRepositoryPath, workingCopy().location);
    }
    return request;
}

void InitTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    _folder->keep();
    output.standardOutput =
        "Created an empty repository in " + printable(inQuotes(workingCopy().location)) + ".\n";
}

constexpr Parameter initParameters[] = {
    {"DIR", "The folder, created if missing; default: the current folder", Takes::folder},
    {"--bare", "Create a repository without a working copy, to push to"},
};

// ---- clone ------------------------------------------------------------------------------------

/// Returns the last component of a URL or path, after which git names the clone; empty if there is
/// none.
std::string nameOfClone(std::string_view source) {
    constexpr std::array<std::string_view, 3> endings{"/.git", ".git", ".bundle"};
    const auto withoutTrailingSlashes = [](std::string_view text) {
        return text.substr(0, text.find_last_not_of('/') + 1);
    };
    source = withoutTrailingSlashes(source);
    for (const std::string_view ending : endings) {
        if (source.ends_with(ending)) {
            source = withoutTrailingSlashes(source.substr(0, source.size() - ending.size()));
            break;
        }
    }
    const std::size_t separator = source.find_last_of("/:");
    return std::string(source.substr(separator == std::string_view::npos ? 0 : separator + 1));
}

class CloneTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    WorkingCopyLocation locate() override;
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    RequestResult perform() override {
        const auto request = makeRequest();
        return performRequest(request,
                              arguments().has("--no-submodules")
                                  ? initWithRequest<CloneWithoutSubmodulesOperation>(request)
                                  : nullptr);
    }
    void report(const Outcome& outcome, CommandOutput& output) override;
    std::string textFor(const NEBSourceControlError& error) const override {
        const std::string& url = workingCopy().location;
        return error.errorClass == NEBSourceControlTransportUnknownErrorClass
                   ? "git has no transport for " + inQuotes(url) + "."
                   : "";
    }

private:
    std::string _destination;
};

WorkingCopyLocation CloneTask::locate() {
    return {.location = repositoryLocation(currentFolder(), argument("URL")),
            .currentFolder = currentFolder(),
            .isWorkingCopy = false};
}

std::optional<CommandOutput> CloneTask::validate() {
    if (!paths("DIR").empty()) {
        _destination = paths("DIR").front();
        return std::nullopt;
    }
    const std::string name = nameOfClone(workingCopy().location);
    if (name.empty() || name == "." || name == "..") {
        throw invalidArguments(
            inQuotes(argument("URL")) +
            " does not contain a name for the folder of the clone; use 'nebsc clone URL DIR'");
    }
    _destination = pathByAppendingComponent(currentFolder(), name);
    return std::nullopt;
}

std::shared_ptr<NEBSourceControlRequest> CloneTask::makeRequest() {
    auto repository = std::make_shared<NEBSourceControlRepository>();
    repository->location = workingCopy().location;
    repository->name = nameOfClone(workingCopy().location);
    auto request = NEBSourceControlRequest::initWithType(NEBSourceControlRequestClone, repository,
                                                         std::nullopt, std::nullopt);
    request->repositoryToAuthenticate = repository;
    request->destination = _destination;
    if (const auto branch = arguments().value("--branch")) {
        request->options.emplace();
        request->options->set(NEBSourceControlRequestOptionBranch, *branch);
    }
    return request;
}

void CloneTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    output.standardOutput = "Cloned into " + printable(inQuotes(_destination)) + ".\n";
}

constexpr Parameter cloneParameters[] = {
    {"URL", "A URL, HOST:PATH, or a path", Takes::location, Occurs::once},
    {"DIR", "The folder, created if missing; default: named after the repository", Takes::folder},
    {"--branch", "Check out this branch instead of the default branch", Takes::text,
     Occurs::optionally, "BRANCH"},
    {"--no-submodules", "Do not clone submodules"},
};

}  // namespace

constinit const Command initCommand{
    .name = "init",
    .group = changeGroup,
    .summary = "Create an empty repository",
    .details =
        "Examples:\n"
        "  nebsc init demo                in the folder demo, which is created\n"
        "  nebsc init --bare demo.git     without a working copy, to push to\n",
    .parameters = initParameters,
    .activity = "Creating the repository",
    .run = runTask<InitTask>,
};

constinit const Command cloneCommand{
    .name = "clone",
    .group = remotesGroup,
    .summary = "Clone a repository with its submodules",
    .details =
        "If the clone fails or is interrupted, removes the folder that it created. If\n"
        "only submodules cannot be cloned, keeps the clone and lists what is missing.\n"
        "\n"
        "Examples:\n"
        "  nebsc clone https://example.org/demo.git        to the folder demo\n"
        "  nebsc clone --branch topic ../demo elsewhere    the branch topic, to elsewhere\n",
    .parameters = cloneParameters,
    .activity = "Cloning",
    .run = runTask<CloneTask>,
};

}  // namespace neb::nebsc

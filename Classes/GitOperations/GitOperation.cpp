#include "GitOperations/GitOperation.h"

#include <algorithm>
#include <atomic>

#include "GitOperations/GitErrorTable.h"
#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"

namespace neb {

namespace {

/// Returns the path of git, stored once per process. Concurrent first calls find the same path; the
/// second one discards its copy.
std::atomic<const std::string*> gitPath = nullptr;

std::string findGit() {
    return LOMDeveloperPaths::defaultPaths()
        .binSearchPathForPlatform(std::nullopt)
        .pathOfProgram("git");
}

/// Whether a line says that git could not write or remove a setting.
bool reportsUnwrittenSetting(std::string_view text) {
    constexpr std::string_view signs[] = {
        "error: could not lock config file ", "error: could not write config file ",
        "error: failed to write new configuration file ", "warning: Update of config-file failed"};
    bool isReported = false;
    forEachLine(text, [&](std::string_view line) {
        isReported = isReported || std::ranges::any_of(signs, [line](std::string_view sign) {
                         return line.starts_with(sign);
                     });
    });
    return isReported;
}

}  // namespace

GitOperation::GitOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : NEBSourceControlTaskOperation(std::move(request)) {
    const auto& sourceTree = this->request()->sourceTree;
    if (sourceTree && sourceTree->location) {
        setCurrentDirectoryPath(pathOfLocation(*sourceTree->location));
    }
}

std::string GitOperation::launchPath() {
    const std::string* known = gitPath.load();
    if (known == nullptr) {
        auto found = std::make_unique<const std::string>(findGit());
        if (gitPath.compare_exchange_strong(known, found.get())) {
            known = found.release();  // kept until the process ends
        }
    }
    return *known;
}

std::vector<std::string> GitOperation::defaultArguments() const {
    std::vector<std::string> arguments;
    const NEBValue& repository = request()->option(NEBSourceControlRequestOptionRepositoryPath);
    if (repository.isPresent()) {
        arguments.push_back("--git-dir=" + pathByExpandingTilde(repository.description()));
    }
    const NEBValue& workingCopy = request()->option(NEBSourceControlRequestOptionWorkingCopyPath);
    if (workingCopy.isPresent()) {
        arguments.push_back("--work-tree=" + workingCopy.description());
    }
    return arguments;
}

void GitOperation::setArgumentsBehindDefaults(const std::vector<std::string>& arguments) {
    std::vector<std::string> all = defaultArguments();
    all.insert(all.end(), arguments.begin(), arguments.end());
    setArguments(std::move(all));
}

void GitOperation::setCurrentDirectoryToOneFile() {
    if (request()->fileCount() == 1 && request()->files->front().isPresent()) {
        if (auto folder = pathOfLocation(request()->files->front().description())) {
            setCurrentDirectoryPath(std::move(folder));
        }
    }
}

void GitOperation::appendFiles(std::vector<std::string>& arguments) const {
    for (std::size_t i = 0; i < request()->fileCount(); ++i) {
        appendIfPresent(arguments, (*request()->files)[i]);
    }
}

void GitOperation::appendIfPresent(std::vector<std::string>& arguments, const NEBValue& value) {
    if (value.isPresent()) {
        arguments.push_back(value.description());
    }
}

std::optional<NEBSourceControlError> GitOperation::errorFromErrorMessage(
    const std::optional<std::string>& message) {
    const bool isSuccess = terminationStatus() && terminationStatus()->isSuccess();
    if (!message) {
        return std::nullopt;
    }
    if (isSuccess && _isJudgedByExitStatus) {
        return _changesBranchSettings && reportsUnwrittenSetting(*message)
                   ? std::optional(NEBSourceControlErrorFromText(*message, *request()))
                   : std::nullopt;
    }
    auto diagnosis = isSuccess ? std::nullopt : diagnoseFailure(*message);
    GitErrorTranslation translation = gitErrorTableLookUp(*message, *request());
    if (translation.error && request()->type >= NEBSourceControlFirstExtendedRequestType) {
        return diagnosis ? diagnosis : NEBSourceControlErrorWithoutDetails(*message, *request());
    }
    if (translation.error && diagnosis) {
        translation.error->errorClass = diagnosis->errorClass;
    }
    if (translation.error || (translation.isKnown && !diagnosis)) {
        return translation.error;
    }
    return diagnosis ? diagnosis : NEBSourceControlTaskOperation::errorFromErrorMessage(message);
}

std::optional<NEBSourceControlError> GitOperation::errorFromUnknownFailure(
    std::optional<NEBSourceControlError> error) {
    const int status = terminationStatus()->exitStatus().value_or(0);
    if (auto diagnosis = error ? std::nullopt : diagnoseFailure("")) {
        return diagnosis;
    }
    if (error || (_isEmptyOutputValid && status == 1)) {
        return error;
    }
    auto silence = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        "git exited with status " + std::to_string(status) + " and printed nothing.");
    silence.errorClass = NEBSourceControlUnknownErrorClass;
    return silence;
}

}  // namespace neb

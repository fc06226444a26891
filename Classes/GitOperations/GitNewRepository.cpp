#include "GitOperations/GitNewRepository.h"

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlFileError.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/FileManager.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

constexpr std::string_view excludedFiles = ".DS_Store\nUserInterface.vkuserstate";

bool isBare(const NEBSourceControlRequest& request) {
    return request.option(NEBSourceControlRequestOptionRepositoryPath).isPresent();
}

}  // namespace

GitCreateRepositoryOperation::GitCreateRepositoryOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    if (isBare(*this->request())) {
        setArgumentsBehindDefaults({"init", "--bare", "--quiet"});
    } else {
        setArgumentsBehindDefaults({"init", "--quiet"});
    }
}

void GitCreateRepositoryOperation::parseData() {
    if (data() && !data()->empty()) {
        setError(NEBSourceControlError::withDescription(
            NEBSourceControlGenericError, formattedText("Cannot initialize a git repository: (%@)",
                                                        {*_nebsc_stringFromData(data())})));
    } else if (!isBare(*request()) && terminationStatus() && terminationStatus()->isSuccess()) {
        // If git failed, the list may belong to an existing repository.
        writeExcludeFile();
    }
}

void GitCreateRepositoryOperation::writeExcludeFile() {
    const std::string folder = pathByExpandingTilde(currentDirectoryPath().value_or(""));
    const std::string file = pathByAppendingComponent(folder, ".git/info/exclude");
    if (const auto failure = FileManager().writeText(file, excludedFiles)) {
        setError(NEBSourceControlErrorFromFileFailure(*failure));
    }
}

GitCloneOperation::GitCloneOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    std::vector<std::string> arguments{"clone", "--recursive", "-q"};
    const NEBSourceControlRequest& asked = *this->request();
    const NEBValue& branch = asked.option(NEBSourceControlRequestOptionBranch);
    if (branch.isPresent()) {
        arguments.insert(arguments.end(), {"--branch", branch.description()});
    }
    if (asked.sourceTree && asked.sourceTree->location) {
        arguments.push_back(*asked.sourceTree->location);
    }
    if (asked.destination.isPresent()) {
        setCurrentDirectoryPath(asked.destination.description());
        arguments.push_back(asked.destination.description());
    }
    setArguments(std::move(arguments));
}

}  // namespace neb

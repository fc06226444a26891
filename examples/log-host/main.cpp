// log-host FOLDER - prints the latest commits of the repository that contains FOLDER.

#include <NEBFoundation/NEBFoundation.h>

#include <filesystem>
#include <iostream>

namespace {

int fail(const neb::NEBSourceControlError& error) {
    std::cerr << "log-host: " << error.localizedDescription().value_or("The log failed.") << "\n";
    if (const auto suggestion = error.localizedRecoverySuggestion()) {
        std::cerr << *suggestion << "\n";
    }
    return 1;
}

std::shared_ptr<neb::NEBSourceControlRequest> logOf(const std::filesystem::path& folder) {
    auto tree = std::make_shared<neb::NEBSourceControlWorkingTree>();
    tree->location = std::filesystem::absolute(folder).string();
    tree->name = folder.filename().string();
    neb::NEBDictionary options{{neb::NEBSourceControlRequestOptionLogOutputLimit, 20}};
    return neb::NEBSourceControlRequest::initWithType(neb::NEBSourceControlRequestLog, tree,
                                                      std::nullopt, options);
}

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: log-host FOLDER\n";
        return 2;
    }
    const auto load = neb::NEBSourceControlPlugIn::load(NEBGIT_PLUGIN);
    if (!load.plugIn) {
        std::cerr << "log-host: " << load.failure << "\n";
        return 1;
    }
    const auto controller = load.plugIn->makePrincipalClass();

    const auto request = logOf(argv[1]);
    std::optional<neb::NEBSourceControlError> refusal;
    if (!controller->validateRequest(*request, &refusal)) {
        return fail(refusal.value());
    }
    const auto operation = controller->operationForRequest(request);
    operation->start();
    if (operation->error()) {
        return fail(*operation->error());
    }
    for (const neb::NEBDictionary& commit :
         operation->result().value_or(neb::NEBSourceControlResult())) {
        std::cout << commit.value(neb::NEBSourceControlOperationRevisionKey).description() << "  "
                  << commit.value(neb::NEBSourceControlOperationDateKey).description() << "  "
                  << commit.value(neb::NEBSourceControlOperationAuthorKey).description() << "  "
                  << firstLine(commit.value(neb::NEBSourceControlOperationMessageKey).description())
                  << "\n";
    }
    return 0;
}

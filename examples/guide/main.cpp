// guide FOLDER: the code of docs/hosts.md as a program, at work on a folder's repository.

#include <NEBFoundation/NEBFoundation.h>

#include <filesystem>
#include <functional>
#include <future>
#include <iostream>

using namespace neb;

namespace {

// ---- the host's own services ------------------------------------------------------------------

void installServices() {
    LOMSetAssertionSink([](const LOMAssertionReport& report) {
        std::cout << "report: " << report.message << " in " << report.function << "\n";
    });

    LOMLogAspect& log = NEBSourceControlManager::sourceControlLogAspect();
    log.setSink([](std::string_view message) { std::cout << "log: " << message << "\n"; });
    log.logLevel = 1;
}

/// For a host that brings a git of its own, in `folder`.
void useGitIn(const std::string& folder) {
    LOMDeveloperPaths::defaultPaths().setPreferredBinaryDirectory(
        LOMFilePath::filePathForPathString(folder));
}

// ---- the life of a request --------------------------------------------------------------------

std::shared_ptr<NEBSourceControlRequest> requestAbout(std::int32_t type,
                                                      const std::string& folder) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = folder;  // an absolute path
    tree->name = std::filesystem::path(folder).filename().string();
    return NEBSourceControlRequest::initWithType(type, tree);
}

/// A commit of what is staged.
std::shared_ptr<NEBSourceControlRequest> commitIn(const std::string& folder,
                                                  const std::string& message) {
    auto request = requestAbout(NEBSourceControlRequestCommit, folder);
    request->setOptions(NEBDictionary{{NEBSourceControlRequestOptionMessage, message}});
    return request;
}

std::optional<NEBSourceControlError> refusalOf(const NEBSourceControlProtocol& controller,
                                               const NEBSourceControlRequest& request) {
    if (controller.authenticationRequiredForRequest(request)) {
        // Before it comes to this, a host says in `reachable` of the request's source tree and of
        // its repositoryToAuthenticate whether the far end can be reached.
        std::cout << "This may ask for a password.\n";
    }
    std::optional<NEBSourceControlError> refusal;
    if (!controller.validateRequest(request, &refusal)) {
        return refusal;
    }
    if (const auto value = NEBSourceControlFirstArgumentInjection(request)) {
        return NEBSourceControlError::withDescription(NEBSourceControlGenericError,
                                                      "\"" + value->value + "\" is no value for " +
                                                          value->field + ": git would " +
                                                          std::string(value->danger) + ".");
    }
    return std::nullopt;
}

// ---- errors -----------------------------------------------------------------------------------

void tell(const NEBSourceControlError& error) {
    std::cout << error.localizedDescription().value_or("It failed without a word.") << "\n";
    if (const auto suggestion = error.localizedRecoverySuggestion()) {
        std::cout << *suggestion << "\n";
    }
    for (const std::string& file : error.files) {
        std::cout << "    " << file << "\n";
    }
}

bool isWorthTelling(const NEBSourceControlError& error) {
    return error.errorClass != NEBSourceControlUpToDateErrorClass.text() &&
           error.errorClass != NEBSourceControlCancelledErrorClass.text();
}

// ---- queues -----------------------------------------------------------------------------------

/// The requests of one window. Those that write wait for each other, as two gits that write to one
/// working copy would trip over its lock; those that read run beside them.
class Workshop {
public:
    using Completion = std::function<void(const NEBSourceControlOperation&)>;

    explicit Workshop(const NEBSourceControlPlugIn& plugIn)
        : _controller(plugIn.makePrincipalClass()) {}

    /// Answers at once; `completion` is called later, on a thread of a queue. Nothing when the
    /// request is refused or nobody carries it out, and then it is not called.
    std::shared_ptr<NEBSourceControlOperation> perform(
        const std::shared_ptr<NEBSourceControlRequest>& request, bool writes,
        Completion completion) {
        if (const auto refusal = refusalOf(*_controller, *request)) {
            tell(*refusal);
            return nullptr;
        }
        auto operation = _controller->operationForRequest(request);
        if (operation) {
            OperationQueue& queue = writes ? _writes : _reads;
            queue.addBlock([operation, completion = std::move(completion)] {
                operation->start();      // blocks this thread until the work is done
                completion(*operation);  // a window's host sends itself an event here
            });
        }
        return operation;
    }

private:
    std::unique_ptr<NEBSourceControlProtocol> _controller;
    OperationQueue _reads;
    OperationQueue _writes{1};
};

// ---- at work ----------------------------------------------------------------------------------

/// Performs the request, waits for it as no window would, and tells what came of it.
void performAndWait(Workshop& workshop, const std::shared_ptr<NEBSourceControlRequest>& request,
                    bool writes) {
    std::promise<void> finished;
    const auto operation =
        workshop.perform(request, writes, [&](const NEBSourceControlOperation& work) {
            if (work.error() && isWorthTelling(*work.error())) {
                tell(*work.error());
            }
            for (const NEBDictionary& record : work.result().value_or(NEBSourceControlResult())) {
                std::cout << work.className() << ": " << record.size() << " entries\n";
            }
            finished.set_value();
        });
    if (operation) {
        finished.get_future().wait();
    }
}

/// From any thread, before the operation runs or while it does.
void cancel(NEBSourceControlOperation& operation) {
    operation.cancel();
}

void showCancelling(const NEBSourceControlPlugIn& plugIn, const std::string& folder) {
    const auto controller = plugIn.makePrincipalClass();
    const auto operation =
        controller->operationForRequest(requestAbout(NEBSourceControlRequestStatus, folder));
    cancel(*operation);
    operation->start();
    std::cout << operation->error()->errorClass.value_or("no class") << "\n";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: guide FOLDER [FOLDER-OF-GIT]\n";
        return 2;
    }
    installServices();
    if (argc > 2) {
        useGitIn(argv[2]);
    }
    const NEBSourceControlPlugInLoad load = NEBSourceControlPlugIn::load(NEBGIT_PLUGIN);
    if (!load.plugIn) {
        std::cerr << load.failure << "\n";
        return 1;
    }
    const std::string folder = std::filesystem::canonical(argv[1]).string();
    Workshop workshop(*load.plugIn);
    performAndWait(workshop, requestAbout(NEBSourceControlRequestStatus, folder), false);
    performAndWait(workshop, commitIn(folder, "Say hello"), true);
    performAndWait(workshop, commitIn(folder, "Say it again"), true);
    performAndWait(workshop, requestAbout(NEBSourceControlRequestCheckout, folder), true);
    performAndWait(workshop, requestAbout(NEBSourceControlRequestFetch, folder), false);
    showCancelling(*load.plugIn, folder);
    return 0;
}

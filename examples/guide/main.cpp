// guide FOLDER [FOLDER-OF-GIT] - the code of docs/hosts.md as a program, run on a repository.

#include <NEBFoundation/NEBFoundation.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <iostream>

using namespace neb;

namespace {

// ---- host services ----------------------------------------------------------------------------

void installServices() {
    LOMSetAssertionSink([](const LOMAssertionReport& report) {
        std::cout << "report: " << report.message << " in " << report.function << "\n";
    });

    LOMLogAspect& log = NEBSourceControlManager::sourceControlLogAspect();
    log.setSink([](std::string_view message) { std::cout << "log: " << message << "\n"; });
    log.logLevel = 1;
}

/// Uses the git in `folder`, for a host that brings its own.
void useGitIn(const std::string& folder) {
    LOMDeveloperPaths::defaultPaths().setPreferredBinaryDirectory(
        LOMFilePath::filePathForPathString(folder));
}

// ---- life cycle of a request ------------------------------------------------------------------

std::shared_ptr<NEBSourceControlRequest> requestFor(std::int32_t type, const std::string& folder) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = folder;  // an absolute path
    tree->name = std::filesystem::path(folder).filename().string();
    return NEBSourceControlRequest::initWithType(type, tree);
}

/// Returns a request to commit what is staged.
std::shared_ptr<NEBSourceControlRequest> commitRequest(const std::string& folder,
                                                       const std::string& message) {
    auto request = requestFor(NEBSourceControlRequestCommit, folder);
    request->setOptions(NEBDictionary{{NEBSourceControlRequestOptionMessage, message}});
    return request;
}

std::optional<NEBSourceControlError> refusalOf(const NEBSourceControlProtocol& controller,
                                               const NEBSourceControlRequest& request) {
    if (controller.authenticationRequiredForRequest(request)) {
        // A real host has set `reachable` of the request's sourceTree and of its
        // repositoryToAuthenticate by now.
        std::cout << "This may ask for a password.\n";
    }
    std::optional<NEBSourceControlError> refusal;
    if (!controller.validateRequest(request, &refusal)) {
        return refusal;
    }
    if (const auto value = NEBSourceControlFirstArgumentInjection(request)) {
        return NEBSourceControlError::withDescription(NEBSourceControlGenericError,
                                                      "'" + value->value + "' is not valid for " +
                                                          value->field + ": git would " +
                                                          std::string(value->danger));
    }
    return std::nullopt;
}

// ---- errors -----------------------------------------------------------------------------------

void print(const NEBSourceControlError& error) {
    std::cout << error.localizedDescription().value_or("The operation failed.") << "\n";
    if (const auto suggestion = error.localizedRecoverySuggestion()) {
        std::cout << *suggestion << "\n";
    }
    for (const std::string& file : error.files) {
        std::cout << "    " << file << "\n";
    }
}

bool isFailureForUser(const NEBSourceControlError& error) {
    return error.errorClass != NEBSourceControlUpToDateErrorClass.text() &&
           error.errorClass != NEBSourceControlCancelledErrorClass.text();
}

// ---- queues -----------------------------------------------------------------------------------

/// Runs the requests of one window. Writing requests run one after the other, because two writing
/// git processes would fail on the index lock; reading requests run in parallel.
class RequestRunner {
public:
    using Completion = std::function<void(const NEBSourceControlOperation&)>;

    explicit RequestRunner(const NEBSourceControlPlugIn& plugIn)
        : _controller(plugIn.makePrincipalClass()) {}

    /// Returns immediately; `completion` is called later, on a thread of a queue. Returns null, and
    /// never calls `completion`, if the request is refused or its type is unknown.
    std::shared_ptr<NEBSourceControlOperation> perform(
        const std::shared_ptr<NEBSourceControlRequest>& request, Completion completion) {
        if (const auto refusal = refusalOf(*_controller, *request)) {
            print(*refusal);
            return nullptr;
        }
        auto operation = _controller->operationForRequest(request);
        if (operation) {
            _scheduler.addOperation(operation, [operation, completion = std::move(completion)] {
                completion(*operation);  // a window would post an event here
            });
        }
        return operation;
    }

private:
    std::unique_ptr<NEBSourceControlProtocol> _controller;
    NEBSourceControlScheduler _scheduler;
};

// ---- demonstration ----------------------------------------------------------------------------

/// Performs the request, waits for it, and prints its outcome. A real window would not wait.
void performAndWait(RequestRunner& runner,
                    const std::shared_ptr<NEBSourceControlRequest>& request) {
    std::promise<void> finished;
    const auto operation = runner.perform(request, [&](const NEBSourceControlOperation& work) {
        if (work.error() && isFailureForUser(*work.error())) {
            print(*work.error());
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

void show(const NEBSourceControlResult& records) {
    std::cout << "records: " << records.size() << "\n";
}

/// Shows the records of a list as soon as git has printed them.
void showAsTheyArrive(const NEBSourceControlPlugIn& plugIn, const std::string& folder) {
    const auto controller = plugIn.makePrincipalClass();
    const auto operation =
        controller->operationForRequest(requestFor(NEBSourceControlRequestLog, folder));
    operation->setRecordSink([](NEBSourceControlResult records) { show(records); });
    operation->setLimits({.silence = std::chrono::seconds(30), .outputBytes = 100'000'000});
    operation->start();
    if (operation->error()) {
        print(*operation->error());
    }
}

/// Shows a list page by page.
void showInPages(const NEBSourceControlPlugIn& plugIn, const std::string& folder) {
    const auto controller = plugIn.makePrincipalClass();
    const auto operation =
        controller->operationForRequest(requestFor(NEBSourceControlRequestLog, folder));
    NEBSourceControlRecordCursor cursor(operation);
    auto page = cursor.next(50);  // starts git; returns as soon as there are 50 records
    show(page.records);
    while (!page.isLast) {
        page = cursor.next(50);  // when the user scrolls
        show(page.records);
    }
    if (operation->error()) {
        print(*operation->error());
    }
}

/// Thread-safe, before the operation runs and while it does.
void cancel(NEBSourceControlOperation& operation) {
    operation.cancel();
}

void showCancelling(const NEBSourceControlPlugIn& plugIn, const std::string& folder) {
    const auto controller = plugIn.makePrincipalClass();
    const auto operation =
        controller->operationForRequest(requestFor(NEBSourceControlRequestStatus, folder));
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
    RequestRunner runner(*load.plugIn);
    performAndWait(runner, requestFor(NEBSourceControlRequestStatus, folder));
    performAndWait(runner, commitRequest(folder, "Say hello"));
    performAndWait(runner, commitRequest(folder, "Say it again"));
    performAndWait(runner, requestFor(NEBSourceControlRequestCheckout, folder));
    performAndWait(runner, requestFor(NEBSourceControlRequestFetch, folder));
    showAsTheyArrive(*load.plugIn, folder);
    showInPages(*load.plugIn, folder);
    showCancelling(*load.plugIn, folder);
    return 0;
}

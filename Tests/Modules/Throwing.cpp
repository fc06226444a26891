// A plug-in that throws an int from the entry point named by the environment variable THROWS_FROM.

#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

#include "NEBFoundation/NEBSourceControlPlugIn.h"

namespace {

bool isChosen(std::string_view entryPoint) {
    const char* chosen = std::getenv("THROWS_FROM");
    return chosen != nullptr && chosen == entryPoint;
}

void throwFrom(std::string_view entryPoint) {
    if (isChosen(entryPoint)) {
        throw 42;
    }
}

class ThrowingOperation final : public neb::NEBSourceControlOperation {
public:
    using NEBSourceControlOperation::NEBSourceControlOperation;

    void start() override {
        throwFrom("start");
        NEBSourceControlOperation::start();
    }
    void main() override {
        setResult(neb::NEBSourceControlResult{});
        throwFrom("main");
        if (isChosen("cancel by a signal")) {
            ::kill(::getpid(), SIGTERM);
            while (!isCancelled()) {
                ::usleep(1000);
            }
        }
    }
    void cancel() override {
        NEBSourceControlOperation::cancel();
        throwFrom("cancel");
        throwFrom("cancel by a signal");
    }
    [[nodiscard]] std::string className() const override {
        throwFrom("className");
        return "ThrowingOperation";
    }
    [[nodiscard]] std::optional<neb::NEBSourceControlCommand> command() override {
        throwFrom("command");
        return std::nullopt;
    }
};

class ThrowingController final : public neb::NEBSourceControlProtocol {
public:
    [[nodiscard]] bool authenticationRequiredForRequest(
        const neb::NEBSourceControlRequest& /*request*/) const override {
        throwFrom("authenticationRequiredForRequest");
        return false;
    }
    [[nodiscard]] bool validateRequest(
        const neb::NEBSourceControlRequest& /*request*/,
        std::optional<neb::NEBSourceControlError>* /*error*/) const override {
        throwFrom("validateRequest");
        return true;
    }
    [[nodiscard]] std::shared_ptr<neb::NEBSourceControlOperation> operationForRequest(
        const std::shared_ptr<neb::NEBSourceControlRequest>& request) const override {
        throwFrom("operationForRequest");
        return neb::initWithRequest<ThrowingOperation>(request);
    }
};

}  // namespace

extern "C" NEB_EXPORT const neb::NEBSourceControlPlugInDescription*
NEBSourceControlDescribePlugIn() {
    throwFrom("describe");
    static constexpr neb::NEBSourceControlPlugInDescription description{
        .contractVersion = neb::NEBSourceControlContractVersion,
        .stamp = &neb::NEBSourceControlABIStamp,
        .name = "Throwing",
        .version = "1",
        .program = "git",
        .makePrincipalClass = []() -> neb::NEBSourceControlProtocol* {
            throwFrom("makePrincipalClass");
            return new ThrowingController;
        },
    };
    return &description;
}

// How a session performs requests, and how commands report the results of a plug-in.

#include "Session/HostSession.h"

#include <gmock/gmock.h>

#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb::nebsc {
namespace {

using testing::ElementsAre;

/// An operation that records the calls of its functions.
class Operation : public NEBSourceControlOperation {
public:
    Operation(std::shared_ptr<NEBSourceControlRequest> request, std::vector<std::string>& calls)
        : NEBSourceControlOperation(std::move(request)), _calls(calls) {}

    [[nodiscard]] std::string className() const override { return "Operation"; }
    void main() override {
        _calls.emplace_back("main");
        NEBSourceControlAssert({.function = "-[Operation main]", .file = "o", .line = 2}, false,
                               "in main");
        setResult(NEBSourceControlResult{});
    }

private:
    std::vector<std::string>& _calls;
};

/// The results and the recorded calls of a plug-in for tests.
struct PlugInBehaviour {
    bool valid = true;
    bool hasOperation = true;
    std::vector<std::string> conditions;
    std::vector<std::string> calls;
};

class Controller : public NEBSourceControlProtocol {
public:
    explicit Controller(PlugInBehaviour& behaviour) : _behaviour(behaviour) {}

    [[nodiscard]] bool authenticationRequiredForRequest(
        const NEBSourceControlRequest& /*request*/) const override {
        _behaviour.calls.emplace_back("authenticationRequired");
        return true;
    }
    [[nodiscard]] bool validateRequest(const NEBSourceControlRequest& /*request*/,
                                       std::optional<NEBSourceControlError>* error) const override {
        _behaviour.calls.emplace_back("validate");
        if (!_behaviour.valid) {
            *error = NEBSourceControlError::withDescription(-20, "Not now.");
        }
        return _behaviour.valid;
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> operationForRequest(
        const std::shared_ptr<NEBSourceControlRequest>& request) const override {
        _behaviour.calls.emplace_back("operation");
        for (const std::string& condition : _behaviour.conditions) {
            NEBSourceControlAssert({.function = "f", .file = "c", .line = 1}, false, condition);
        }
        return _behaviour.hasOperation ? std::make_shared<Operation>(request, _behaviour.calls)
                                       : nullptr;
    }

private:
    PlugInBehaviour& _behaviour;
};

class HostSessionTest : public testing::Test {
protected:
    [[nodiscard]] RequestResult perform(bool runs = true) const {
        return session.perform(request, runs ? HostSession::Runner([](auto& operation) {
                                   EXPECT_NE(operation.commandLog(), nullptr);
                                   operation.start();
                               })
                                             : HostSession::Runner());
    }

    [[nodiscard]] CommandOutput outputOf(const Command& command, bool isJSON = false) const {
        const PlugInFile plugIn;
        const Arguments arguments;
        return command.run({plugIn, session, command, arguments, isJSON});
    }

    mutable PlugInBehaviour behaviour;
    HostSession session{std::make_unique<Controller>(behaviour)};
    std::shared_ptr<NEBSourceControlRequest> request =
        NEBSourceControlRequest::initWithType(NEBSourceControlRequestPush, nullptr, {}, {});
};

TEST_F(HostSessionTest, CallsThePlugInInTheHostsOrder) {
    const RequestResult requestResult = perform();
    EXPECT_THAT(behaviour.calls,
                ElementsAre("authenticationRequired", "validate", "operation", "main"));
    ASSERT_TRUE(requestResult.outcome.has_value());
    EXPECT_EQ(requestResult.outcome->type, NEBSourceControlRequestPush);
    EXPECT_TRUE(requestResult.outcome->authenticationRequired);
    EXPECT_TRUE(requestResult.outcome->valid);
    EXPECT_EQ(requestResult.outcome->operation, "Operation");
    EXPECT_TRUE(requestResult.outcome->result.has_value());
    EXPECT_FALSE(requestResult.outcome->error.has_value());
    EXPECT_FALSE(requestResult.refusedValue.has_value());
}

TEST_F(HostSessionTest, CreatesNoOperationForAnInvalidRequest) {
    behaviour.valid = false;
    request->options.emplace();
    request->options->set(NEBSourceControlRequestOptionBranch, "-x");
    const RequestResult requestResult = perform();
    EXPECT_THAT(behaviour.calls, ElementsAre("authenticationRequired", "validate"));
    ASSERT_TRUE(requestResult.outcome.has_value());
    EXPECT_FALSE(requestResult.outcome->valid);
    EXPECT_FALSE(requestResult.outcome->operation.has_value());
    ASSERT_TRUE(requestResult.outcome->error.has_value());
    EXPECT_EQ(requestResult.outcome->error->code, -20);
    EXPECT_FALSE(requestResult.outcome->error->errorClass.has_value());
}

TEST_F(HostSessionTest, RefusesAnArgumentInjectionBeforeItCreatesAnOperation) {
    request->options.emplace();
    request->options->set(NEBSourceControlRequestOptionBranch, "-x");
    const RequestResult requestResult = perform();
    EXPECT_THAT(behaviour.calls, ElementsAre("authenticationRequired", "validate"));
    EXPECT_FALSE(requestResult.outcome.has_value());
    ASSERT_TRUE(requestResult.refusedValue.has_value());
    EXPECT_EQ(requestResult.refusedValue->field, "options.NEBSourceControlRequestOptionBranch");
    EXPECT_EQ(requestResult.refusedValue->value, "-x");
}

TEST_F(HostSessionTest, CreatesButDoesNotRunTheOperationWithoutARunner) {
    const RequestResult requestResult = perform(false);
    EXPECT_THAT(behaviour.calls, ElementsAre("authenticationRequired", "validate", "operation"));
    EXPECT_EQ(requestResult.outcome->operation, "Operation");
    EXPECT_FALSE(requestResult.outcome->result.has_value());
}

TEST_F(HostSessionTest, CollectsTheReportsOfCreationAndRun) {
    behaviour.conditions = {"a", "b"};
    const RequestResult requestResult = perform();
    std::vector<std::string> conditions;
    for (const LOMAssertionReport& report : requestResult.outcome->reports) {
        conditions.push_back(report.condition);
    }
    EXPECT_THAT(conditions, ElementsAre("a", "b", "in main"));
}

TEST_F(HostSessionTest, ReportsATypeWithoutOperation) {
    behaviour.hasOperation = false;
    for (const bool isRun : {true, false}) {
        const RequestResult requestResult = perform(isRun);
        ASSERT_TRUE(requestResult.outcome.has_value());
        EXPECT_FALSE(requestResult.outcome->operation.has_value());
        ASSERT_TRUE(requestResult.outcome->error.has_value());
        EXPECT_EQ(requestResult.outcome->error->errorClass,
                  NEBSourceControlRequestInvalidErrorClass);
    }
}

TEST_F(HostSessionTest, TypesGetOnlyTheOperationFromThePlugIn) {
    behaviour.conditions = {"request.weather", "request.destination"};
    const CommandOutput output = outputOf(typesCommand, true);
    EXPECT_THAT(output.standardOutput,
                testing::StartsWith(R"([{"type":0,"name":"add","operation":"Operation",)"
                                    R"("authentication":false,"needs":[]},)"
                                    R"({"type":1,"name":"create branch",)"
                                    R"("operation":"Operation","authentication":false,)"
                                    R"("needs":["destination"]},)"));
    behaviour.hasOperation = false;
    EXPECT_THAT(outputOf(typesCommand, true).standardOutput,
                testing::StartsWith(R"([{"type":0,"name":"add","operation":null,)"));
}

TEST_F(HostSessionTest, ACommandFailsWithoutAnOperation) {
    behaviour.hasOperation = false;
    const CommandOutput output = outputOf(remoteCommand);
    EXPECT_EQ(output.standardOutput, "");
    EXPECT_EQ(output.standardError,
              "nebsc: the plug-in has no operation for the request type 24 (list remotes)\n"
              "Correct the request; 'nebsc types' lists the types and what each needs.\n");
    EXPECT_EQ(output.exitStatus, exitFailed);
}

TEST_F(HostSessionTest, ACommandReportsThatThePlugInRefusesIt) {
    behaviour.valid = false;
    const CommandOutput output = outputOf(remoteCommand);
    EXPECT_EQ(output.standardOutput, "");
    EXPECT_EQ(output.standardError, "nebsc: not now\n");
    EXPECT_EQ(output.exitStatus, exitFailed);
}

TEST_F(HostSessionTest, CommandsPrintAssertionReports) {
    behaviour.conditions = {"request.weather"};
    const CommandOutput output = outputOf(remoteCommand);
    EXPECT_THAT(output.standardError,
                testing::StartsWith(
                    "nebsc: the plug-in reports: Assertion failed: request.weather (f, c:1)\n"));
    EXPECT_EQ(output.exitStatus, exitDone);
    EXPECT_THAT(outputOf(remoteCommand, true).standardError,
                testing::HasSubstr("nebsc: the plug-in reports: Assertion failed: in main"));
}

}  // namespace
}  // namespace neb::nebsc

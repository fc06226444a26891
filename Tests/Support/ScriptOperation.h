// ScriptOperation.h - a task operation that runs a shell script.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Support/Matchers.h"

namespace neb::test {

/// Runs a shell script. Function members replace the overrides of a subclass.
class ScriptOperation : public NEBSourceControlTaskOperation {
public:
    ScriptOperation(std::string script, std::shared_ptr<NEBSourceControlRequest> request)
        : NEBSourceControlTaskOperation(std::move(request)) {
        setArguments({"-c", std::move(script)});
    }
    std::string launchPath() override { return program; }
    void parseData() override {
        ++parses;
        if (parse) {
            parse();
        }
    }
    std::shared_ptr<NEBSourceControlTaskOperation> pipeToOperation() override { return second; }
    std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override {
        messages.push_back(message.value_or("(absent)"));
        return translate ? translate(*message)
                         : NEBSourceControlTaskOperation::errorFromErrorMessage(message);
    }

    std::string program = "/bin/sh";
    std::function<void()> parse;
    std::function<std::optional<NEBSourceControlError>(const std::string&)> translate;
    std::shared_ptr<ScriptOperation> second;
    std::vector<std::string> messages;
    int parses = 0;
};

inline std::shared_ptr<ScriptOperation> script(std::string text) {
    return std::make_shared<ScriptOperation>(std::move(text),
                                             requestFor(NEBSourceControlRequestLog, std::nullopt));
}

}  // namespace neb::test

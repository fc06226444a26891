// RequestRun.h - goes a host's way with a request: an operation from the controller, run to its
// end.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "GitController.h"
#include "NEBFoundation/NEBSourceControlCommandLog.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/Matchers.h"

namespace neb::test {

/// The operation, which has finished. Its command log holds the children that ran.
inline std::shared_ptr<NEBSourceControlOperation> perform(
    const std::shared_ptr<NEBSourceControlRequest>& request) {
    auto operation = GitController().operationForRequest(request);
    operation->setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
    operation->start();
    return operation;
}

/// The arguments of each child that ran, joined with blanks.
inline std::vector<std::string> commandLinesOf(const NEBSourceControlOperation& operation) {
    std::vector<std::string> lines;
    for (const NEBSourceControlCommandRun& run : operation.commandLog()->runs()) {
        std::string line;
        for (const std::string& argument : run.arguments) {
            line += (line.empty() ? "" : " ") + argument;
        }
        lines.push_back(line);
    }
    return lines;
}

/// The strings as values: files of a request.
inline std::vector<NEBValue> valuesOf(const std::vector<std::string>& strings) {
    return {strings.begin(), strings.end()};
}

/// Runs another program in git's place.
template <typename Op>
class StandIn : public Op {
public:
    StandIn(std::string program, std::shared_ptr<NEBSourceControlRequest> request)
        : Op(std::move(request)), _program(std::move(program)) {}
    std::string launchPath() override { return _program; }

private:
    std::string _program;
};

}  // namespace neb::test

// RequestRun.h - runs requests as a host does: an operation from the controller, run until it has
// finished.
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

/// Returns the finished operation. Its command log has the child processes.
inline std::shared_ptr<NEBSourceControlOperation> perform(
    const std::shared_ptr<NEBSourceControlRequest>& request) {
    auto operation = GitController().operationForRequest(request);
    operation->setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
    operation->start();
    return operation;
}

/// Runs the request with a record sink and returns the finished operation. Adds each record to
/// `records`.
inline std::shared_ptr<NEBSourceControlOperation> performWithSink(
    const std::shared_ptr<NEBSourceControlRequest>& request, NEBSourceControlResult& records) {
    auto operation = GitController().operationForRequest(request);
    operation->setRecordSink([&records](const NEBSourceControlResult& batch) {
        records.insert(records.end(), batch.begin(), batch.end());
    });
    operation->start();
    return operation;
}

/// Returns the arguments of each child process, joined with spaces.
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

/// Converts strings to values, for the files of a request.
inline std::vector<NEBValue> valuesOf(const std::vector<std::string>& strings) {
    return {strings.begin(), strings.end()};
}

/// An operation that runs another program instead of git.
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

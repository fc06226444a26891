#include "NEBFoundation/NEBSourceControlCommandLog.h"

namespace neb {

std::size_t NEBSourceControlCommandLog::started(const NEBSourceControlCommand& command) {
    const std::lock_guard lock(_mutex);
    _runs.push_back({.launchPath = command.launchPath,
                     .arguments = command.arguments,
                     .currentDirectoryPath = command.currentDirectoryPath,
                     .terminationStatus = std::nullopt,
                     .duration = std::nullopt});
    return _runs.size() - 1;
}

void NEBSourceControlCommandLog::ended(std::size_t index, std::optional<int> terminationStatus,
                                       std::chrono::nanoseconds duration) {
    const std::lock_guard lock(_mutex);
    _runs[index].terminationStatus = terminationStatus;
    _runs[index].duration = duration;
}

std::vector<NEBSourceControlCommandRun> NEBSourceControlCommandLog::runs() const {
    const std::lock_guard lock(_mutex);
    return _runs;
}

}  // namespace neb

#include "NEBFoundation/NEBSourceControlCommandLog.h"

namespace neb {

std::size_t NEBSourceControlCommandLog::started(const NEBSourceControlCommand& command) {
    MutexLock lock(_mutex);
    _runs.push_back({.launchPath = command.launchPath,
                     .arguments = command.arguments,
                     .currentDirectoryPath = command.currentDirectoryPath,
                     .terminationStatus = std::nullopt,
                     .duration = std::nullopt});
    const std::size_t index = _runs.size() - 1;
    lock.unlock();
    if (_observers.started) {
        _observers.started(index, command);
    }
    return index;
}

void NEBSourceControlCommandLog::ended(std::size_t index, const TerminationStatus& status,
                                       std::chrono::nanoseconds duration) {
    MutexLock lock(_mutex);
    _runs[index].terminationStatus = status.exitStatus();
    _runs[index].duration = duration;
    lock.unlock();
    if (_observers.ended) {
        _observers.ended(index, status, duration);
    }
}

std::vector<NEBSourceControlCommandRun> NEBSourceControlCommandLog::runs() const {
    const MutexLock lock(_mutex);
    return _runs;
}

}  // namespace neb

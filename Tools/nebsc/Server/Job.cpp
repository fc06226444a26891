#include "Server/Job.h"

namespace neb::nebsc {

Job::Work::Work(Job& job, std::function<void()> cancel) : _job(job) {
    const MutexLock lock(job._mutex);
    job._cancel = std::move(cancel);
    if (job._isCancelled) {
        job._cancel();
    }
}

Job::Work::~Work() {
    const MutexLock lock(_job._mutex);
    _job._cancel = nullptr;
}

bool Job::begin() {
    const MutexLock lock(_mutex);
    _hasBegun = !_isCancelled;
    return _hasBegun;
}

bool Job::cancel() {
    const MutexLock lock(_mutex);
    const bool isFirst = !_isCancelled;
    _isCancelled = true;
    if (_cancel) {
        _cancel();
    }
    return isFirst && !_hasBegun;
}

}  // namespace neb::nebsc

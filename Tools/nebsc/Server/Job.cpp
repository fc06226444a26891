#include "Job.h"

namespace neb::nebsc {

Job::Work::Work(Job& job, std::function<void()> cancel) : _job(job) {
    const std::lock_guard lock(job._mutex);
    job._cancel = std::move(cancel);
    if (job._isCancelled) {
        job._cancel();
    }
}

Job::Work::~Work() {
    const std::lock_guard lock(_job._mutex);
    _job._cancel = nullptr;
}

bool Job::begin() {
    const std::lock_guard lock(_mutex);
    _hasBegun = !_isCancelled;
    return _hasBegun;
}

bool Job::cancel() {
    const std::lock_guard lock(_mutex);
    const bool isFirst = !_isCancelled;
    _isCancelled = true;
    if (_cancel) {
        _cancel();
    }
    return isFirst && !_hasBegun;
}

}  // namespace neb::nebsc

#include "Server/Jobs.h"

#include <new>
#include <utility>

#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Server/RPCMessage.h"

namespace neb::nebsc {

using JSON = nlohmann::ordered_json;

void Jobs::start(const JSON& id, NEBSourceControlScheduler& scheduler,
                 const NEBSourceControlWork& place, Respond respond) {
    const auto job = std::make_shared<Job>(id);
    bool isNew = false;
    {
        const MutexLock lock(_mutex);
        isNew = _jobs.try_emplace(id.dump(), job).second;
    }
    if (!isNew) {
        refuse(id);
        return;
    }
    try {
        scheduler.add(place, [this, job, respond = std::move(respond)] { work(*job, respond); });
    } catch (...) {
        erase(id);
        throw;
    }
}

bool Jobs::refuseKnown(const JSON& id) {
    const bool isKnown = has(id);
    if (isKnown) {
        refuse(id);
    }
    return isKnown;
}

void Jobs::refuse(const JSON& id) {
    _writer.send(rpcError(id, RPCErrorCode::invalidRequest,
                          "A request with the id " + id.dump() + " is still running."));
}

bool Jobs::has(const JSON& id) const {
    const MutexLock lock(_mutex);
    return _jobs.contains(id.dump());
}

std::size_t Jobs::count() const {
    const MutexLock lock(_mutex);
    return _jobs.size();
}

void Jobs::work(Job& job, const Respond& respond) {
    if (!job.begin()) {
        return;
    }
    try {
        try {
            finish(job, respond(job));
        } catch (const std::exception&) {
            finish(
                job,
                rpcError(
                    job.id(), RPCErrorCode::internalError,
                    NEBSourceControlErrorOfCurrentException().localizedDescription().value_or("")));
        }
    } catch (const std::exception&) {
        _fail();
    }
}

/// Removed first: once the client has the response, it may use the id again.
void Jobs::finish(Job& job, const std::string& response) {
    erase(job.id());
    _writer.send(response);
}

void Jobs::cancel(const JSON& id) {
    std::shared_ptr<Job> job;
    {
        const MutexLock lock(_mutex);
        const auto entry = _jobs.find(id.dump());
        job = entry != _jobs.end() ? entry->second : nullptr;
    }
    if (job) {
        cancel(*job);
    }
}

void Jobs::cancel(Job& job) {
    if (job.cancel()) {
        finish(job, rpcError(job.id(), RPCErrorCode::requestCancelled,
                             "The request was cancelled before it started."));
    }
}

void Jobs::cancelAll() {
    std::map<std::string, std::shared_ptr<Job>> jobs;
    {
        const MutexLock lock(_mutex);
        jobs.swap(_jobs);
    }
    for (const auto& [id, job] : jobs) {
        try {
            cancel(*job);
        } catch (const std::bad_alloc&) {
            continue;
        }
    }
}

void Jobs::erase(const JSON& id) {
    const MutexLock lock(_mutex);
    _jobs.erase(id.dump());
}

}  // namespace neb::nebsc

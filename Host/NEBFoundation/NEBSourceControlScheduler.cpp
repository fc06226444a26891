#include "NEBFoundation/NEBSourceControlScheduler.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <thread>
#include <utility>

namespace neb {

namespace {

constexpr std::size_t fewestThreads = 4;

}  // namespace

NEBSourceControlScheduler::NEBSourceControlScheduler()
    : NEBSourceControlScheduler(
          std::max<std::size_t>(std::thread::hardware_concurrency(), fewestThreads)) {}

NEBSourceControlScheduler::NEBSourceControlScheduler(std::size_t mostAtOnce) : _queue(mostAtOnce) {}

NEBSourceControlScheduler::~NEBSourceControlScheduler() {
    waitUntilAllWorkIsDone();
}

// ---- adding and removing ------------------------------------------------------------------------

NEBSourceControlScheduler::Ticket NEBSourceControlScheduler::add(const NEBSourceControlWork& work,
                                                                 std::function<void()> run) {
    Entries added(1);
    const auto entry = added.begin();
    entry->run = std::move(run);
    entry->isBackground = work.isBackground;
    Ticket ticket = 0;
    bool isReady = false;
    {
        const MutexLock lock(_mutex);
        usePlaces(*entry, work.places);
        ticket = entry->ticket = ++_lastTicket;
        _waiting.splice(positionFor(*entry), added);
        isReady = takeReady(&*entry).has_value();
    }
    if (isReady) {
        try {
            queueFor(*entry).addBlock([this, entry] {
                perform(entry);
                startReady();
            });
        } catch (...) {
            {
                const MutexLock lock(_mutex);
                remove(_started, entry);
            }
            startReady();
            throw;
        }
    }
    return ticket;
}

NEBSourceControlScheduler::Ticket NEBSourceControlScheduler::addOperation(
    std::shared_ptr<NEBSourceControlOperation> operation, std::function<void()> finished) {
    const NEBSourceControlWork work{.places = NEBSourceControlWrittenPlaces(*operation->request()),
                                    .isBackground = operation->isBackgroundWork()};
    return add(work, [operation = std::move(operation), finished = std::move(finished)] {
        operation->start();
        if (finished) {
            finished();
        }
    });
}

bool NEBSourceControlScheduler::cancel(Ticket ticket) {
    std::function<void()> run;  // destroyed without the mutex: it may own anything
    {
        const MutexLock lock(_mutex);
        const auto hasTicket = [ticket](const Entry& entry) { return entry.ticket == ticket; };
        const auto waiting = std::find_if(_waiting.begin(), _waiting.end(), hasTicket);
        const auto started = std::find_if(_started.begin(), _started.end(), hasTicket);
        if (waiting != _waiting.end()) {
            run = std::move(waiting->run);
            remove(_waiting, waiting);
        } else if (started != _started.end()) {
            run = std::exchange(started->run, nullptr);
            if (run) {
                releasePlaces(*started);  // the entry goes when its turn comes
            }
        }
    }
    if (run) {
        startReady();
    }
    return run != nullptr;
}

void NEBSourceControlScheduler::waitUntilAllWorkIsDone() {
    MutexLock lock(_mutex);
    _workWasRemoved.wait(
        lock, [this]() NEB_REQUIRES(_mutex) { return _waiting.empty() && _started.empty(); });
}

void NEBSourceControlScheduler::remove(Entries& entries, Entries::iterator entry) {
    releasePlaces(*entry);
    entries.erase(entry);
    _workWasRemoved.notify_all();
}

// ---- places -------------------------------------------------------------------------------------

void NEBSourceControlScheduler::usePlaces(Entry& entry, const std::vector<std::string>& names) {
    try {
        entry.places.reserve(names.size());
        for (const std::string& name : names) {
            const auto place = _places.try_emplace(name).first;
            ++place->second.uses;
            entry.places.push_back(place);
        }
    } catch (...) {
        releasePlaces(entry);
        throw;
    }
}

void NEBSourceControlScheduler::releasePlaces(Entry& entry) {
    for (const auto place : entry.places) {
        place->second.isHeld = place->second.isHeld && !entry.holdsPlaces;
        if (--place->second.uses == 0) {
            _places.erase(place);
        }
    }
    entry.places.clear();
}

// ---- the order ----------------------------------------------------------------------------------

/// Foreground work passes background work. All waiting work is in one order, whatever its places:
/// two entries that wait for each other are impossible.
NEBSourceControlScheduler::Entries::iterator NEBSourceControlScheduler::positionFor(Entry& entry) {
    const auto conflicts = [&entry](const Entry& other) {
        return std::ranges::find_first_of(other.places, entry.places) != other.places.end();
    };
    auto position = _waiting.end();
    while (!entry.isBackground && position != _waiting.begin()) {
        Entry& before = *std::prev(position);
        const bool isFirm = !before.isBackground || before.overtakings >= mostOvertakings;
        if (isFirm && conflicts(before)) {
            break;
        }
        --position;
    }
    for (auto passed = position; passed != _waiting.end(); ++passed) {
        passed->overtakings += conflicts(*passed) ? 1 : 0;
    }
    return position;
}

/// Moves the first work to the started work whose places are neither held nor reserved by work that
/// waits before it. With `only`, moves no other work. Allocates nothing.
std::optional<NEBSourceControlScheduler::Entries::iterator> NEBSourceControlScheduler::takeReady(
    const Entry* only) {
    const std::uint64_t scan = ++_scan;
    for (auto entry = _waiting.begin(); entry != _waiting.end(); ++entry) {
        const bool isBlocked = std::ranges::any_of(entry->places, [scan](Places::iterator place) {
            return place->second.isHeld || place->second.reservedIn == scan;
        });
        entry->holdsPlaces = !isBlocked && (only == nullptr || &*entry == only);
        for (const auto place : entry->places) {
            place->second.reservedIn = scan;
            place->second.isHeld = place->second.isHeld || entry->holdsPlaces;
        }
        if (entry->holdsPlaces) {
            _started.splice(_started.end(), _waiting, entry);
            return entry;
        }
    }
    return std::nullopt;
}

std::optional<NEBSourceControlScheduler::Entries::iterator>
NEBSourceControlScheduler::lockAndTakeReady() {
    const MutexLock lock(_mutex);
    return takeReady(nullptr);
}

/// Adds ready work at the end of its queue, so that no repository blocks the others. If memory for
/// that is missing, does the work at once.
void NEBSourceControlScheduler::startReady() {
    for (auto ready = lockAndTakeReady(); ready; ready = lockAndTakeReady()) {
        const Entries::iterator entry = *ready;
        try {
            queueFor(*entry).addBlock([this, entry] {
                perform(entry);
                startReady();
            });
        } catch (const std::bad_alloc&) {
            perform(entry);
        }
    }
}

void NEBSourceControlScheduler::perform(Entries::iterator entry) {
    std::function<void()> run;
    {
        const MutexLock lock(_mutex);
        run = std::exchange(entry->run, nullptr);
    }
    if (run) {
        run();
        run = nullptr;
    }
    const MutexLock lock(_mutex);
    remove(_started, entry);
}

}  // namespace neb

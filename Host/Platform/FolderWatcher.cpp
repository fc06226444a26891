#include "Platform/FolderWatcher.h"

#include <cerrno>

#if __has_include(<sys/inotify.h>)

#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <optional>

namespace neb {

namespace {

constexpr std::uint32_t watchedEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                        IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF |
                                        IN_MOVE_SELF;
/// The entry must be a folder. A file that was removed and is still written is not of interest.
constexpr std::uint32_t conditions = IN_ONLYDIR | IN_DONT_FOLLOW | IN_EXCL_UNLINK;

bool has(std::uint32_t mask, std::uint32_t flags) {
    return (mask & flags) != 0;
}

/// Returns the event that the mask describes; absent for one without a meaning here.
std::optional<FolderEvent> eventOf(const inotify_event& head, const char* name) {
    using Kind = FolderEvent::Kind;
    if (has(head.mask, IN_Q_OVERFLOW)) {
        return FolderEvent{.kind = Kind::eventsLost};
    }
    if (has(head.mask, IN_DELETE_SELF | IN_UNMOUNT)) {
        return FolderEvent{.kind = Kind::folderRemoved, .folder = head.wd};
    }
    if (has(head.mask, IN_MOVE_SELF)) {
        return FolderEvent{.kind = Kind::folderMoved, .folder = head.wd};
    }
    if (head.len == 0) {
        return std::nullopt;  // attributes of the folder itself, or the end of its watch
    }
    const bool isNewFolder = has(head.mask, IN_ISDIR) && has(head.mask, IN_CREATE | IN_MOVED_TO);
    return FolderEvent{.kind = isNewFolder ? Kind::folderAppeared : Kind::changed,
                       .folder = head.wd,
                       .name = name};
}

}  // namespace

bool FolderWatcher::isAvailable() {
    return true;
}

FolderWatcher::FolderWatcher() : _descriptor(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (!_descriptor.isOpen()) {
        _failure = errno;
    }
}

FolderWatcher::Added FolderWatcher::add(const std::string& path) {
    if (!_descriptor.isOpen()) {
        return {.folder = -1, .failure = _failure};
    }
    const int folder =
        ::inotify_add_watch(_descriptor.get(), path.c_str(), watchedEvents | conditions);
    return {.folder = folder, .failure = folder < 0 ? errno : 0};
}

void FolderWatcher::remove(int folder) {
    static_cast<void>(::inotify_rm_watch(_descriptor.get(), folder));
}

std::vector<FolderEvent> FolderWatcher::takeEvents() {
    std::vector<FolderEvent> events;
    alignas(inotify_event) std::array<char, 65536> buffer;
    while (_descriptor.isOpen()) {
        const ssize_t count = ::read(_descriptor.get(), buffer.data(), buffer.size());
        if (count <= 0) {
            if (count < 0 && errno == EINTR) {
                continue;
            }
            break;
        }
        for (std::size_t position = 0; position < static_cast<std::size_t>(count);) {
            inotify_event head{};
            std::memcpy(&head, &buffer[position], sizeof head);
            const auto event = eventOf(head, &buffer[position] + sizeof head);
            if (event) {
                events.push_back(*event);
            }
            position += sizeof head + head.len;
        }
    }
    return events;
}

}  // namespace neb

#else  // no inotify

namespace neb {

bool FolderWatcher::isAvailable() {
    return false;
}

FolderWatcher::FolderWatcher() : _failure(ENOSYS) {}

FolderWatcher::Added FolderWatcher::add(const std::string& /*path*/) {
    return {.folder = -1, .failure = _failure};
}

void FolderWatcher::remove(int /*folder*/) {}

std::vector<FolderEvent> FolderWatcher::takeEvents() {
    return {};
}

}  // namespace neb

#endif

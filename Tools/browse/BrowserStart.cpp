#include "BrowserStart.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildSpawn.h"
#include "Platform/FileDescriptor.h"
#include "Session/Credentials/PrivateFolder.h"

namespace neb::nebsc {

namespace {

bool hasDisplay() {
    const auto isSet = [](const char* name) {
        const char* value = ::getenv(name);
        return value != nullptr && *value != '\0';
    };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

std::string pageLeadingTo(const std::string& url) {
    return "<!doctype html><meta charset=\"utf-8\"><title>nebsc browse</title>"
           "<meta http-equiv=\"refresh\" content=\"0;url=" +
           url + "\"><a href=\"" + url + "\">nebsc browse</a>\n";
}

/// Returns whether the new file was written.
bool writeNewFile(const std::string& path, const std::string& text) {
    constexpr mode_t forOwner = 0600;
    const FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, forOwner));
    return file.isOpen() && writeAll(file.get(), text) == 0;
}

/// The shell ends at once; xdg-open may run as long as the browser.
void openInBrowser(const std::string& file) {
    const ChildLaunch launch{
        .launchPath = "/bin/sh",
        .arguments = {"-c", "command -v xdg-open >/dev/null && xdg-open \"$1\" &", "sh", file},
        .currentDirectoryPath = "/",
        .environment = NEBSourceControlInheritedEnvironment()};
    const auto nothing = [] { return ChildStream::file("/dev/null", O_RDWR); };
    const SpawnedChild shell = spawnChild(launch, {.standardInput = nothing(),
                                                   .standardOutput = nothing(),
                                                   .standardError = nothing(),
                                                   .isIsolated = true});
    int status = 0;
    while (shell.pid >= 0 && ::waitpid(shell.pid, &status, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace

BrowserStart::BrowserStart(const std::string& url) {
    if (!hasDisplay()) {
        return;
    }
    _folder = newPrivateFolder();
    _file = _folder + "/browse.html";
    if (!_folder.empty() && writeNewFile(_file, pageLeadingTo(url))) {
        openInBrowser(_file);
    }
}

BrowserStart::~BrowserStart() {
    if (!_folder.empty()) {
        ::unlink(_file.c_str());
        removePrivateFolder(_folder);
    }
}

}  // namespace neb::nebsc

// SlowGit.h - a git that does not end, for tests of requests that run.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "Support/HygienicTest.h"
#include "Support/TemporaryFolder.h"
#include "nebsc/Server/ServerClient.h"

namespace neb::test {

/// Returns the parameters of a request for the working copy at the location.
inline ServerClient::JSON requestAbout(int type, const std::string& location) {
    return {{"type", type}, {"sourceTree", {{"location", location}}}};
}

/// Waits until another process has written a line into the file, and returns the content; empty
/// after a minute.
inline std::string awaitedLine(const TemporaryFolder& folder, std::string_view name) {
    for (int i = 0; i < 6000; ++i) {
        std::string text = folder.read(name);
        if (text.ends_with('\n')) {
            return text;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return {};
}

/// A git that writes its process id to a file and runs for an hour. Ends at once for `--version`
/// and in a folder named "quick".
class SlowGit {
public:
    SlowGit() {
        _folder.writeProgram("git",
                             "#!/bin/sh\ncase \"$1 $PWD\" in --version*|*/quick) exit 0;; "
                             "esac\necho $$ > '" +
                                 _folder.path("started") + "'\nexec sleep 3600\n");
        std::filesystem::create_directory(_folder.path("quick"));
    }
    [[nodiscard]] std::pair<std::string, std::optional<std::string>> path() const {
        return {"PATH", _folder.path() + ":/usr/bin:/bin"};
    }
    [[nodiscard]] std::string location() const { return _folder.path(); }
    [[nodiscard]] std::string quickLocation() const { return _folder.path("quick"); }
    /// Waits until git has started, and returns its process id.
    [[nodiscard]] pid_t process() const {
        std::istringstream number(awaitedLine(_folder, "started"));
        pid_t process = 0;
        number >> process;
        EXPECT_TRUE(process > 0 && isLiveProcess(process));
        return process;
    }

private:
    TemporaryFolder _folder;
};

}  // namespace neb::test

// RecordedFile.h - reads and replays the recordings of the tests.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "nebsc/NebscRun.h"

namespace neb::test {

inline std::string contentOfFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Replays with a git that leaves a trace when it runs.
inline NebscOutcome replayed(const std::string& file, std::vector<std::string> options = {}) {
    const TemporaryFolder folder;
    folder.writeProgram("git", "#!/bin/sh\ntouch '" + folder.path("ran") + "'\n");
    options.insert(options.begin(), {"replay", file});
    NebscOutcome outcome =
        runNebsc(options, {.folder = "/", .variables = {{"PATH", folder.path()}}});
    EXPECT_FALSE(std::filesystem::exists(folder.path("ran"))) << "a replay starts no git";
    return outcome;
}

}  // namespace neb::test

#include "Tuning/TuningRecord.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "Platform/ErrnoText.h"
#include "Platform/FileDescriptor.h"
#include "Platform/PathString.h"
#include "Session/Paths.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using nlohmann::ordered_json;

constexpr int currentVersion = 1;

// ---- JSON -------------------------------------------------------------------------------------

ordered_json jsonOf(const StepRecord& step) {
    auto settings = ordered_json::array();
    for (const SettingRecord& setting : step.settings) {
        settings.push_back({{"key", setting.key}, {"formerValues", setting.formerValues}});
    }
    auto files = ordered_json::array();
    for (const FileRecord& file : step.files) {
        files.push_back(
            {{"path", file.path}, {"existed", file.existed}, {"fingerprint", file.fingerprint}});
    }
    return {{"cause", step.cause},
            {"folder", step.folder},
            {"isComplete", step.isComplete},
            {"formerState", step.formerState},
            {"settings", std::move(settings)},
            {"files", std::move(files)}};
}

StepRecord stepOf(const ordered_json& json) {
    StepRecord step{.cause = json.at("cause"),
                    .folder = json.at("folder"),
                    .isComplete = json.at("isComplete"),
                    .formerState = json.at("formerState").get<FormerState>(),
                    .settings = {},
                    .files = {}};
    for (const ordered_json& setting : json.at("settings")) {
        step.settings.push_back(
            {.key = setting.at("key"), .formerValues = setting.at("formerValues")});
    }
    for (const ordered_json& file : json.at("files")) {
        step.files.push_back({.path = file.at("path"),
                              .existed = file.at("existed"),
                              .fingerprint = file.at("fingerprint")});
    }
    return step;
}

std::string textOf(const TuningRecord& record) {
    auto steps = ordered_json::array();
    for (const StepRecord& step : record.steps) {
        steps.push_back(jsonOf(step));
    }
    return ordered_json{{"version", currentVersion}, {"steps", std::move(steps)}}.dump(
               2, ' ', false, ordered_json::error_handler_t::replace) +
           "\n";
}

// ---- the file ---------------------------------------------------------------------------------

/// Writes a new file to the disk. Returns 0 or an error number.
int writeToDisk(const std::string& path, std::string_view text) {
    constexpr mode_t readableByAll = 0666;
    FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, readableByAll));
    if (!file.isOpen()) {
        return errno;
    }
    if (const int failure = writeAll(file.get(), text); failure != 0) {
        return failure;
    }
    return ::fsync(file.get()) == 0 ? file.close() : errno;
}

int replaceFile(const std::string& path, std::string_view text) {
    const std::string draft = path + ".new";
    int failure = writeToDisk(draft, text);
    if (failure == 0 && std::rename(draft.c_str(), path.c_str()) != 0) {
        failure = errno;
    }
    if (failure != 0) {
        ::unlink(draft.c_str());
    }
    return failure;
}

}  // namespace

StepRecord* TuningRecord::find(std::string_view cause, std::string_view folder) {
    const auto step = std::find_if(steps.begin(), steps.end(), [&](const StepRecord& one) {
        return one.cause == cause && one.folder == folder;
    });
    return step == steps.end() ? nullptr : &*step;
}

std::string pathOfTuningRecord(const std::string& commonFolder) {
    return pathByAppendingComponent(commonFolder, "nebsc-tune.json");
}

std::variant<TuningRecord, std::string> readTuningRecord(const std::string& path) {
    if (!isAnythingAt(path)) {
        return TuningRecord{};
    }
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) {
        return inQuotes(path) + " could not be read";
    }
    try {
        const auto json = ordered_json::parse(text);
        if (json.at("version") != currentVersion) {
            return inQuotes(path) + " was written by a newer nebsc";
        }
        TuningRecord record;
        for (const ordered_json& step : json.at("steps")) {
            record.steps.push_back(stepOf(step));
        }
        return record;
    } catch (const nlohmann::json::exception&) {
        return inQuotes(path) + " is damaged; remove it to forget the changes that it lists";
    }
}

std::optional<std::string> writeTuningRecord(const std::string& path, const TuningRecord& record) {
    int failure = 0;
    if (!record.steps.empty()) {
        failure = replaceFile(path, textOf(record));
    } else if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
        failure = errno;
    }
    return failure == 0
               ? std::nullopt
               : std::optional(inQuotes(path) + " could not be written: " + textOfErrno(failure));
}

std::string fingerprintOf(const std::string& path) {
    constexpr std::streamoff longestHash = 32;
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file ? static_cast<std::streamoff>(file.tellg()) : -1;
    if (size < 0) {
        return "";
    }
    file.seekg(std::max<std::streamoff>(size - longestHash, 0));
    std::string fingerprint = std::to_string(size) + "-";
    for (int byte = file.get(); byte != std::ifstream::traits_type::eof(); byte = file.get()) {
        constexpr std::string_view digits = "0123456789abcdef";
        const auto value = static_cast<unsigned char>(byte);
        fingerprint += digits[value >> 4U];
        fingerprint += digits[value & 15U];
    }
    return fingerprint;
}

}  // namespace neb::nebsc

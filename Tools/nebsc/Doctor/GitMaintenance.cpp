#include "Doctor/GitMaintenance.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <filesystem>

#include "Platform/PathString.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

/// Returns the value of an integer setting, which may end in "k", "m" or "g".
long integerSetting(const UserSettings& settings, std::string_view key, long byDefault) {
    const std::string text = settings.lastValue(key);
    long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) {
        return byDefault;
    }
    constexpr std::string_view units = "kmg";
    const bool hasUnit = end != text.data() + text.size();
    const std::size_t power = hasUnit ? units.find(lowercaseASCII(*end)) + 1 : 0;
    for (std::size_t i = 0; i < power; ++i) {
        value *= 1024;
    }
    return value;
}

/// git gc(1) does not run automatically for a day after it has written this file.
bool hasFreshLogOfGC(const RepositoryLayout& repository) {
    const std::filesystem::path log = pathByAppendingComponent(repository.commonFolder, "gc.log");
    std::error_code error;
    const bool isEmpty = std::filesystem::file_size(log, error) == 0;
    const auto written = std::filesystem::last_write_time(log, error);
    return !error && !isEmpty &&
           std::filesystem::file_time_type::clock::now() - written < std::chrono::hours(24);
}

constexpr std::string_view afterNextCommand = " after the next commit, merge or fetch.";
constexpr std::string_view scheduledMaintenance = "git's scheduled maintenance ";
constexpr std::string_view automaticMaintenance = "git's automatic maintenance ";

}  // namespace

GitMaintenance::GitMaintenance(const UserSettings& settings, const RepositoryLayout& repository)
    : _settings(settings),
      _repository(repository),
      _runsAutomatically(!isSameSetting(settings.lastValue("maintenance.auto"), "false") &&
                         integerSetting(settings, "gc.auto", 1) > 0 &&
                         !hasFreshLogOfGC(repository)) {}

bool GitMaintenance::isRegistered() const {
    const std::vector<std::string> folders = _settings.allValues("maintenance.repo");
    return std::any_of(folders.begin(), folders.end(), [this](const std::string& folder) {
        const std::string path = pathByExpandingTilde(folder);
        return path == _repository.workingCopy || path == _repository.commonFolder ||
               path == pathByDeletingLastComponent(_repository.commonFolder);
    });
}

bool GitMaintenance::isScheduled(std::string_view task) const {
    const std::string prefix = "maintenance." + std::string(task) + ".";
    const std::string schedule = _settings.lastValue(prefix + "schedule");
    const std::string strategy = _settings.lastValue("maintenance.strategy");
    const bool hasTime = schedule.empty() ? strategy == "incremental" || strategy == "geometric"
                                          : schedule != "none";
    return hasTime && isRegistered() &&
           !isSameSetting(_settings.lastValue(prefix + "enabled"), "false");
}

bool GitMaintenance::isAutomatic(std::string_view task) const {
    return _runsAutomatically && _settings.isTrue("maintenance." + std::string(task) + ".enabled");
}

std::string GitMaintenance::packsLooseObjects(long count) const {
    if (isScheduled("loose-objects")) {
        return std::string(scheduledMaintenance).append("packs them.");
    }
    constexpr long looseObjectsForGC = 6700;
    if (isAutomatic("loose-objects") ||
        (_runsAutomatically && count > integerSetting(_settings, "gc.auto", looseObjectsForGC))) {
        return std::string(automaticMaintenance).append("packs them").append(afterNextCommand);
    }
    return "";
}

std::string GitMaintenance::combinesPacks(long count) const {
    if (isScheduled("incremental-repack")) {
        return std::string(scheduledMaintenance).append("indexes and combines them.");
    }
    constexpr long packsForGC = 50;
    const long limit = integerSetting(_settings, "gc.autoPackLimit", packsForGC);
    if (isAutomatic("incremental-repack") || (_runsAutomatically && limit > 0 && count > limit)) {
        return std::string(automaticMaintenance).append("combines them").append(afterNextCommand);
    }
    return "";
}

std::string GitMaintenance::updatesCommitGraph() const {
    if (isScheduled("commit-graph")) {
        return std::string(scheduledMaintenance).append("updates it.");
    }
    if (isAutomatic("commit-graph")) {
        return std::string(automaticMaintenance).append("updates it").append(afterNextCommand);
    }
    if (_settings.isTrue("fetch.writeCommitGraph") ||
        (_settings.lastValue("fetch.writeCommitGraph").empty() &&
         _settings.isTrue("feature.experimental"))) {
        return "The next fetch updates it.";
    }
    return "";
}

}  // namespace neb::nebsc

#include "Doctor/SpeedExamination.h"

namespace neb::nebsc {

namespace {

/// The command reads the whole index and lists nothing: no tracked file has this name.
std::vector<std::string> callThatReadsIndex() {
    return {"ls-files", "--", ":(top,literal).git"};
}

TimedCommand status() {
    return {.label = "git status", .arguments = {"status", "--porcelain"}};
}

bool hasSettingsForManyFiles(SpeedExamination& speed) {
    return speed.settings().isTrue("feature.manyFiles");
}

}  // namespace

std::optional<Slowness> detectMissingUntrackedCache(SpeedExamination& speed) {
    const UserSettings& settings = speed.settings();
    const std::string value = settings.lastValue("core.untrackedCache");
    const bool isDecided = (!value.empty() && value != "keep") || hasSettingsForManyFiles(speed);
    const std::string shown = settings.lastValue("status.showUntrackedFiles");
    if (isDecided || isSameSetting(shown, "no")) {
        return std::nullopt;
    }
    const std::optional<IndexFile>& index = speed.index();
    if (!index || index->hasUntrackedCache) {
        return std::nullopt;
    }
    return Slowness{
        .text = "the index has no untracked cache",
        .probes = {{.command = {.label = "searching for untracked files",
                                .arguments = {"ls-files", "--others", "--exclude-standard",
                                              "--directory", "--no-empty-directory"}},
                    .remainingPart = 0.2,
                    .floor = callThatReadsIndex()}},
        .comparisons = {status()},
        .obstacle = {},
        .formerState = {}};
}

std::optional<Slowness> detectOldIndexVersion(SpeedExamination& speed) {
    constexpr std::uint32_t newestVersion = 4;
    if (!speed.settings().lastValue("index.version").empty() || hasSettingsForManyFiles(speed)) {
        return std::nullopt;
    }
    const std::optional<IndexFile>& index = speed.index();
    if (!index || index->entries == 0 || index->version >= newestVersion) {
        return std::nullopt;
    }
    const std::string version = std::to_string(index->version);
    return Slowness{
        .text = "the index has version " + version,
        .probes = {{.command = {.label = "reading the index", .arguments = callThatReadsIndex()},
                    .remainingPart = 0.9}},
        .obstacle = {},
        .formerState = {{"version", version}}};
}

GitCalls undoCallsForIndexVersion(const FormerState& formerState) {
    return {{"update-index", "--index-version", valueIn(formerState, "version")}};
}

std::optional<Slowness> detectUnusedFileSystemMonitor(SpeedExamination& speed) {
    const bool isAvailable = std::string_view(speed.query({"version", "--build-options"}).output)
                                 .find("feature: fsmonitor--daemon") != std::string_view::npos;
    if (!isAvailable || !speed.settings().lastValue("core.fsmonitor").empty()) {
        return std::nullopt;
    }
    return Slowness{.text = "git's file system monitor is not in use",
                    .probes = {{.command = {.label = "searching for changed files",
                                            .arguments = {"ls-files", "--deleted"}},
                                .remainingPart = 0.1,
                                .floor = callThatReadsIndex()}},
                    .obstacle =
                        "'git config core.fsmonitor true' starts it for git in a shell; "
                        "nebsc itself does not use it.",
                    .formerState = {}};
}

}  // namespace neb::nebsc

#include <filesystem>
#include <fstream>

#include "Doctor/SpeedExamination.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Session/Paths.h"

namespace neb::nebsc {

namespace {

constexpr long manyLooseObjects = 1000;
constexpr long manyPacks = 10;

/// Reads the newest commits and the trees that they change.
Probe newestChanges(double remainingPart) {
    return {.command = {.label = "git log --raw of 1000 commits",
                        .arguments = {"log", "--max-count=1000", "--format=%H", "--raw", "HEAD"}},
            .remainingPart = remainingPart};
}

/// Returns the number of packs in the multi-pack-index file, 0 without one; see
/// gitformat-pack(5).
long packsInIndex(const std::string& path) {
    constexpr std::size_t countAt = 8;
    char header[countAt + 4] = {};
    std::ifstream file(path, std::ios::binary);
    file.read(header, sizeof header);
    if (!file || !std::string_view(header, 4).starts_with("MIDX")) {
        return 0;
    }
    long count = 0;
    for (const char byte : std::string_view(header, sizeof header).substr(countAt)) {
        count = count << 8 | static_cast<unsigned char>(byte);
    }
    return count;
}

/// Returns whether another tool maintains the multi-pack-index: it has a bitmap or layers.
bool isMaintained(const std::string& packFolder) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(packFolder, error)) {
        const std::string name = entry.path().filename().string();
        if (name == "multi-pack-index.d" ||
            (name.starts_with("multi-pack-index-") && name.ends_with(".bitmap"))) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::optional<Slowness> detectLooseObjects(SpeedExamination& speed) {
    const long count = speed.objects().loose;
    if (count < manyLooseObjects) {
        return std::nullopt;
    }
    return Slowness{.text = std::to_string(count) + " objects are loose, each in its own file",
                    .probes = {newestChanges(0.2)},
                    .obstacle = speed.maintenance().packsLooseObjects(count),
                    .formerState = {}};
}

std::optional<Slowness> detectManyPacks(SpeedExamination& speed) {
    const std::string folder =
        pathByAppendingComponent(speed.repository().commonFolder, "objects/pack");
    const long indexed = packsInIndex(pathByAppendingComponent(folder, "multi-pack-index"));
    const long count = speed.objects().packs - indexed;
    if (count < manyPacks || isMaintained(folder) ||
        isSameSetting(speed.settings().lastValue("core.multiPackIndex"), "false")) {
        return std::nullopt;
    }
    return Slowness{.text = std::to_string(count) + " packs are not in a multi-pack-index",
                    .probes = {newestChanges(0.6)},
                    .obstacle = speed.maintenance().combinesPacks(speed.objects().packs),
                    .formerState = {}};
}

}  // namespace neb::nebsc

#include "Session/GitVersion.h"

#include <array>
#include <charconv>
#include <tuple>

namespace neb::nebsc {

namespace {

/// A feature of git, and the version that introduced it.
struct Feature {
    GitVersion since;
    std::string_view name;
};

/// In the order of versions; oldestGitWithAllFeatures() returns the last one.
constexpr std::array<Feature, 4> features{{
    {{2, 24}, "'--end-of-options', which keeps names from being options"},
    {{2, 26}, "the origin of each setting"},
    {{2, 31}, "settings for one call, in the environment"},
    {{2, 31}, "absolute paths of a repository's folders"},
}};

bool isOlder(const GitVersion& version, const GitVersion& other) {
    return std::tie(version.major, version.minor) < std::tie(other.major, other.minor);
}

}  // namespace

std::string GitVersion::text() const {
    return std::to_string(major) + "." + std::to_string(minor);
}

std::optional<GitVersion> gitVersionIn(std::string_view text) {
    constexpr std::string_view start = "git version ";
    if (!text.starts_with(start)) {
        return std::nullopt;
    }
    text.remove_prefix(start.size());
    const char* end = text.data() + text.size();
    GitVersion version;
    const auto major = std::from_chars(text.data(), end, version.major);
    if (major.ec != std::errc() || major.ptr == end || *major.ptr != '.') {
        return std::nullopt;
    }
    const auto minor = std::from_chars(major.ptr + 1, end, version.minor);
    return minor.ec == std::errc() ? std::optional(version) : std::nullopt;
}

std::vector<std::string_view> featuresMissingIn(const GitVersion& version) {
    std::vector<std::string_view> missing;
    for (const Feature& feature : features) {
        if (isOlder(version, feature.since)) {
            missing.push_back(feature.name);
        }
    }
    return missing;
}

GitVersion oldestGitWithAllFeatures() {
    return features.back().since;
}

bool canMergeInMemory(const GitVersion& version) {
    return !isOlder(version, oldestGitThatMergesInMemory());
}

GitVersion oldestGitThatMergesInMemory() {
    return {2, 38};
}

}  // namespace neb::nebsc

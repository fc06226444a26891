// GitVersion.h - which git is installed, and what of it is used here.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

struct GitVersion {
    int major = 0;
    int minor = 0;

    /// "2.39"
    [[nodiscard]] std::string text() const;
};

/// The version in what "git --version" prints; absent for what is no version of git.
[[nodiscard]] std::optional<GitVersion> gitVersionIn(std::string_view text);

/// What is used here and a git of this version does not have, each in words; none is the rule.
[[nodiscard]] std::vector<std::string_view> featuresMissingIn(const GitVersion& version);

/// The oldest version that has all that is used here.
[[nodiscard]] GitVersion oldestGitWithAllFeatures();

/// Whether a git of this version has "merge-tree --write-tree --no-messages", and the oldest that
/// does.
[[nodiscard]] bool canMergeInMemory(const GitVersion& version);
[[nodiscard]] GitVersion oldestGitThatMergesInMemory();

}  // namespace neb::nebsc

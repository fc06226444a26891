// GitVersion.h - the version of git, and the features that nebsc and the plug-in need from it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

/// The first two numbers of a version of git.
struct GitVersion {
    int major = 0;
    int minor = 0;

    /// Returns the version as text: "2.39".
    [[nodiscard]] std::string text() const;
};

/// Returns the version in the output of "git --version"; absent if the output has another form.
[[nodiscard]] std::optional<GitVersion> gitVersionIn(std::string_view text);

/// Returns a description of each feature that is used here and that this version does not have.
[[nodiscard]] std::vector<std::string_view> featuresMissingIn(const GitVersion& version);

/// Returns the oldest version that has all features that are used here.
[[nodiscard]] GitVersion oldestGitWithAllFeatures();

/// Returns whether this version supports "merge-tree --write-tree --no-messages".
[[nodiscard]] bool canMergeInMemory(const GitVersion& version);
/// Returns the oldest version for which canMergeInMemory() is true.
[[nodiscard]] GitVersion oldestGitThatMergesInMemory();

}  // namespace neb::nebsc

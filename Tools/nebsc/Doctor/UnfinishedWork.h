// UnfinishedWork.h - what git was asked to do in a repository and has not ended, as a conflict or a
// person stopped it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

struct UnfinishedWork {
    /// "a rebase"
    std::string_view work;
    /// How to go on with it, and how to take it back: a sentence.
    std::string_view advice;
};

/// What is under way in the repository whose own folder this is (that of its working copy, where it
/// has several); empty as a rule. From any thread.
[[nodiscard]] std::vector<UnfinishedWork> unfinishedWorkIn(const std::string& gitFolder);

}  // namespace neb::nebsc

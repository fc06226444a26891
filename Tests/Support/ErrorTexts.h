// ErrorTexts.h - error messages of git and other programs, with their classes.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace neb::test {

struct CatalogueText {
    std::string_view errorClass;
    /// The code of the catalogue.
    std::int64_t code;
    std::string text;
    /// Sentence and advice, if they differ from those of the class.
    const char* description = nullptr;
    const char* suggestion = nullptr;
};

/// Returns messages of git 2.39 and newer, and some that only older versions print.
[[nodiscard]] std::span<const CatalogueText> catalogueTexts();

struct TextOfGit {
    std::string_view errorClass;
    const char* text;
};

/// Returns exact messages of git, ssh, curl and git svn.
[[nodiscard]] std::span<const TextOfGit> textsOfGit();

/// Returns messages from the sources of git 2.39, one of each kind that the commands of the plug-in
/// can print. Every name is "x", every number 7.
[[nodiscard]] std::span<const TextOfGit> familyTexts();

}  // namespace neb::test

// ErrorTexts.h - texts of failures, with the class that each shows.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace neb::test {

struct CatalogueText {
    std::string_view errorClass;
    /// The code that the catalogue has for it.
    std::int64_t code;
    std::string text;
    /// Replaces the sentence and advice of the class.
    const char* description = nullptr;
    const char* suggestion = nullptr;
};

/// What git 2.39 and newer ones print, and some that only older ones printed.
[[nodiscard]] std::span<const CatalogueText> catalogueTexts();

struct TextOfGit {
    std::string_view errorClass;
    const char* text;
};

/// What git, ssh, curl and the Subversion bridge print, to the letter.
[[nodiscard]] std::span<const TextOfGit> textsOfGit();

/// Texts of git 2.39's own sources, one of each family that the commands of the plug-in can print;
/// every name is "x", every number 7.
[[nodiscard]] std::span<const TextOfGit> familyTexts();

}  // namespace neb::test

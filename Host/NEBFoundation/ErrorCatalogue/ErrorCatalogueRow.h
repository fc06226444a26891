// ErrorCatalogueRow.h - a row of the error catalogue: messages of git and the class that they show.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

/// A pattern of a message, in lower case: the text contains `first` and, unless `second` is empty,
/// `second` somewhere after it. A leading line feed matches the beginning of a line. Names in
/// quotes are removed from the text before it is compared.
struct ErrorPattern {
    template <std::size_t size>
    consteval ErrorPattern(const char (&pattern)[size]) : first(pattern, size - 1) {}
    template <std::size_t firstSize, std::size_t secondSize>
    consteval ErrorPattern(const char (&start)[firstSize], const char (&end)[secondSize])
        : first(start, firstSize - 1), second(end, secondSize - 1) {}

    std::string_view first;
    std::string_view second = {};
};

/// Replaces the sentence or the advice of a class where they are too general for a row. Empty texts
/// are those of the class. "%@" in the description is the name of the source tree.
struct ErrorSentence {
    std::string_view description = {};
    std::string_view advice = {};
};

/// A text that matches one of the patterns is an error of this class and code.
struct ErrorCatalogueRow {
    std::string_view errorClass;
    std::initializer_list<ErrorPattern> patterns;
    std::int64_t code = NEBSourceControlGenericError;
    ErrorSentence sentence = {};
};

/// Rows in order of precedence: special messages before general ones, causes before consequences.
using ErrorCatalogueTable = std::span<const ErrorCatalogueRow>;

}  // namespace neb

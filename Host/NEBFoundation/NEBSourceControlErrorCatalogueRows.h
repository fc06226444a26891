// NEBSourceControlErrorCatalogueRows.h - the rows of the error catalogue: which texts of git show
// which class of failure.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace neb {

/// Holds where `first` stands in the text and, unless that is empty, `second` somewhere behind it.
/// In small letters, as the text is when it is looked at; what begins with a line feed stands at
/// the beginning of a line.
struct ErrorTextSign {
    std::string_view first, second = {};
};

/// Replaces the sentence and advice of the class where they are too general, see
/// NEBSourceControlErrorClasses.h.
struct ErrorSentence {
    std::string_view description = {};  // "%@" is the source tree's name
    std::string_view suggestion = {};
};

struct ErrorCatalogueRow {
    std::string_view errorClass;
    std::int64_t code;
    /// Any of them shows the class.
    std::array<ErrorTextSign, 16> signs;
    /// Empty texts are replaced by those of the class.
    ErrorSentence sentence = {};
};

/// The first row that a text shows decides. From any thread, as is the other.
[[nodiscard]] std::span<const ErrorCatalogueRow> errorCatalogueRows();

/// Rows of which the first that is shown decides where none of the others is, and which only lines
/// can show that begin with "fatal:" or "error:".
[[nodiscard]] std::span<const ErrorCatalogueRow> generalErrorCatalogueRows();

}  // namespace neb

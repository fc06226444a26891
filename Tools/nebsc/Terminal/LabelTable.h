// LabelTable.h - a table of the words and colours that show the values of an enumeration.
//
//     constexpr std::array<LabelRow<Health>, 2> labels{{
//         {Health::ok, "ok", Colour::green},
//         {Health::problem, "problem", Colour::boldRed},
//     }};
//     paddedLabel(labelOf(labels, Health::ok), 9, isColoured);   // "ok       "
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "Terminal/Colour.h"

namespace neb::nebsc {

template <typename Value>
struct LabelRow {
    Value value;
    /// In ASCII.
    std::string_view text;
    Colour colour;
};

/// Returns the row of the value, which must be in the table. Thread-safe.
template <typename Value, std::size_t Count>
[[nodiscard]] const LabelRow<Value>& labelOf(const std::array<LabelRow<Value>, Count>& table,
                                             Value value) {
    return *std::find_if(table.begin(), table.end(),
                         [value](const LabelRow<Value>& row) { return row.value == value; });
}

/// Returns the text, followed by spaces up to the width in columns, which must not be smaller.
template <typename Value>
[[nodiscard]] std::string paddedLabel(const LabelRow<Value>& label, std::size_t columns,
                                      bool isColoured) {
    return (isColoured ? coloured(label.text, label.colour) : std::string(label.text)) +
           std::string(columns - label.text.size(), ' ');
}

}  // namespace neb::nebsc

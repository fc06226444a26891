// GitRecentTexts.h - shared values for repeated texts such as authors and paths.
//
//     GitRecentTexts texts(1000);
//     texts.value("Ann Example");   // a string
//     texts.value("Ann Example");   // the same one, shared
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBValue.h"

namespace neb {

/// A cache of fixed size: a new text replaces the one in the same slot. Not thread-safe.
class GitRecentTexts {
public:
    /// Allocates about `count` slots, within bounds.
    explicit GitRecentTexts(std::size_t count)
        : _slots(std::bit_ceil(std::clamp(count, minimumSlots, maximumSlots))) {}

    /// Returns the text as a string value, which shares its content with earlier values of the same
    /// text while that is cached.
    const NEBValue& value(std::string_view text) {
        NEBValue& slot = _slots[std::hash<std::string_view>()(text) & (_slots.size() - 1)];
        if (!slot.isString() || *slot.string() != text) {
            slot = text;
        }
        return slot;
    }

private:
    static constexpr std::size_t minimumSlots = 16;
    static constexpr std::size_t maximumSlots = 16384;

    std::vector<NEBValue> _slots;
};

}  // namespace neb

// GitRecentTexts.h - one value for texts that come again and again, as authors and paths do.
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

/// Remembers a fixed number of texts, so what it needs does not grow with what it is asked: a text
/// takes the place of another that falls to the same one. One thread at a time.
class GitRecentTexts {
public:
    /// Room for about `count` texts, within bounds.
    explicit GitRecentTexts(std::size_t count)
        : _places(std::bit_ceil(std::clamp(count, fewestPlaces, mostPlaces))) {}

    /// The text as a string value, shared with earlier ones as long as it is remembered.
    const NEBValue& value(std::string_view text) {
        NEBValue& place = _places[std::hash<std::string_view>()(text) & (_places.size() - 1)];
        if (!place.isString() || *place.string() != text) {
            place = text;
        }
        return place;
    }

private:
    static constexpr std::size_t fewestPlaces = 16;
    static constexpr std::size_t mostPlaces = 16384;

    std::vector<NEBValue> _places;
};

}  // namespace neb

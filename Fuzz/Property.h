// Property.h - what the fuzz targets have in common: the check of a property, the input as text,
// and plain ways of taking a text apart against which the quick ones are held.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Text.h"

namespace neb::fuzz {

/// Ends the process, which is how a fuzzer learns of a failure, unless the property holds.
inline void require(bool holds, const char* property) {
    if (!holds) {
        static_cast<void>(std::fprintf(stderr, "broken: %s\n", property));
        std::abort();
    }
}

inline std::string bytesOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// The pieces between separators, character by character.
inline std::vector<std::string> piecesOf(std::string_view text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char character : text) {
        if (character == separator) {
            pieces.emplace_back();
        } else {
            pieces.back() += character;
        }
    }
    return pieces;
}

/// The text without these characters at both its ends, one after the other.
inline std::string trimmedOf(std::string text, std::string_view characters) {
    const auto isOne = [characters](char character) {
        return characters.find(character) != std::string_view::npos;
    };
    while (!text.empty() && isOne(text.back())) {
        text.pop_back();
    }
    while (!text.empty() && isOne(text.front())) {
        text.erase(0, 1);
    }
    return text;
}

/// The first 12 characters of a well-formed text.
inline std::string twelveCharactersOf(std::string_view text) {
    std::string start;
    int characters = 0;
    for (const char byte : text) {
        const bool goesOn = (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
        characters += goesOn ? 0 : 1;
        if (characters > 12) {
            break;
        }
        start += byte;
    }
    return start;
}

/// Every string in the record is well-formed, and so are the strings in its dictionaries.
inline void requireText(const NEBDictionary& record) {
    for (const NEBDictionary::Entry& entry : record) {
        require(isUTF8(entry.key()), "a key is UTF-8");
        if (const auto text = entry.value().string()) {
            require(isUTF8(*text), "a value is UTF-8");
        }
        if (const NEBDictionary* inner = entry.value().dictionary()) {
            requireText(*inner);
        }
    }
}

/// A request about the valid working tree "/w".
inline std::shared_ptr<NEBSourceControlRequest> requestOf(std::int32_t type,
                                                          NEBDictionary options = {}) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = "/w";
    return NEBSourceControlRequest::initWithType(type, tree, std::nullopt, std::move(options));
}

/// What the operation makes of the bytes, as a git that ended well has printed them.
template <typename Op>
std::optional<std::vector<NEBDictionary>> parsed(Op& operation, const std::string& bytes) {
    operation.setData(bytes);
    operation.setErrorData(std::string());
    operation.parseData();
    if (operation.result()) {
        for (const NEBDictionary& record : *operation.result()) {
            requireText(record);
        }
    }
    return operation.result();
}

}  // namespace neb::fuzz

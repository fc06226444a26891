// Property.h - the functions that all fuzz targets use: checks, input, and simple string functions
// with which the fast ones are compared.
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

/// Aborts the process if the property does not hold, which the fuzzer reports as a failure.
inline void require(bool holds, const char* property) {
    if (!holds) {
        static_cast<void>(std::fprintf(stderr, "property violated: %s\n", property));
        std::abort();
    }
}

inline std::string bytesOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Splits the text at the separators.
inline std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts(1);
    for (const char character : text) {
        if (character == separator) {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    return parts;
}

/// Returns the text without these characters at its start and end.
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

/// Returns the first 12 characters of a UTF-8 text.
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

inline void requireText(const NEBDictionary& record);

/// Requires that a string, and all strings in a dictionary or array, are UTF-8.
inline void requireText(const NEBValue& value) {
    if (const auto text = value.string()) {
        require(isUTF8(*text), "a value is UTF-8");
    }
    if (const NEBDictionary* inner = value.dictionary()) {
        requireText(*inner);
    }
    if (const auto* elements = value.array()) {
        for (const NEBValue& element : *elements) {
            requireText(element);
        }
    }
}

/// Requires that all strings in the record and its dictionaries and arrays are UTF-8.
inline void requireText(const NEBDictionary& record) {
    for (const NEBDictionary::Entry& entry : record) {
        require(isUTF8(entry.key()), "a key is UTF-8");
        requireText(entry.value());
    }
}

/// Returns a request for the working tree "/w".
inline std::shared_ptr<NEBSourceControlRequest> requestOf(std::int32_t type,
                                                          NEBDictionary options = {}) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = "/w";
    return NEBSourceControlRequest::initWithType(type, tree, std::nullopt, std::move(options));
}

/// Requires that an output that arrives in parts has the same records as `whole`.
template <typename Op>
void requireSameInParts(const Op& operation, const std::string& bytes,
                        const std::vector<NEBDictionary>& whole) {
    Op other(operation.request());
    const auto parser = other.makeRecordParser();
    if (!parser) {
        return;
    }
    std::vector<NEBDictionary> records;
    std::size_t position = 0;
    for (std::size_t size = 1; size < bytes.size(); size += 1 + bytes.size() / 8) {
        position = parser->parse(bytes.substr(0, size), position, bytes.size(), records);
    }
    parser->parseToEnd(bytes, position, records);
    require(records == whole, "the parts of an output have the records of the whole");
}

/// Returns the result of the operation for the bytes as the output of a successful git.
template <typename Op>
std::optional<std::vector<NEBDictionary>> parsed(Op& operation, const std::string& bytes) {
    operation.setData(bytes);
    operation.setErrorData(std::string());
    operation.parseData();
    if (operation.result()) {
        if constexpr (requires { operation.makeRecordParser(); }) {
            requireSameInParts(operation, bytes, *operation.result());
        }
        for (const NEBDictionary& record : *operation.result()) {
            requireText(record);
        }
    }
    return operation.result();
}

}  // namespace neb::fuzz

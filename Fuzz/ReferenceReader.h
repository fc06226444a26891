// ReferenceReader.h - a slow and simple reader, with which the fast parsers are compared.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBValue.h"

namespace neb::fuzz {

class ReferenceReader {
public:
    explicit ReferenceReader(std::string text) : _text(std::move(text)) {}

    /// Returns and skips the text before the byte, or all remaining text without one.
    std::string before(char byte) {
        std::string taken;
        while (!_text.empty() && _text.front() != byte) {
            taken += next();
        }
        return taken;
    }
    /// Skips the next byte if it is this one.
    void pass(char byte) {
        if (!_text.empty() && _text.front() == byte) {
            next();
        }
    }
    /// Returns and skips a run of these bytes.
    std::string run(std::string_view members) {
        std::string taken;
        while (!_text.empty() && members.find(_text.front()) != std::string_view::npos) {
            taken += next();
        }
        return taken;
    }
    /// Returns and skips the text before the next white space.
    std::string beforeSpace() {
        std::string taken;
        while (!_text.empty() && spaceInFront().empty()) {
            taken += next();
        }
        return taken;
    }
    void passSpace() {
        for (std::string space = spaceInFront(); !space.empty(); space = spaceInFront()) {
            _text.erase(0, space.size());
        }
    }
    /// Returns and skips a decimal number with an optional sign. Skips nothing without a digit.
    std::string number() {
        std::string taken;
        std::string sign =
            _text.starts_with('-') || _text.starts_with('+') ? _text.substr(0, 1) : "";
        const std::string rest = _text;
        _text.erase(0, sign.size());
        taken = run("0123456789");
        if (taken.empty()) {
            _text = rest;
            return {};
        }
        return sign + taken;
    }
    [[nodiscard]] const std::string& rest() const { return _text; }

private:
    char next() {
        const char byte = _text.front();
        _text.erase(0, 1);
        return byte;
    }
    /// Returns the white space at the start: space, TAB, or a space separator of Unicode.
    [[nodiscard]] std::string spaceInFront() const {
        std::string spaces[] = {" ", "\t", "\u00a0", "\u1680", "\u202f", "\u205f", "\u3000"};
        for (const std::string& space : spaces) {
            if (_text.starts_with(space)) {
                return space;
            }
        }
        const bool isInRange = _text.size() > 2 && _text.starts_with("\xE2\x80") &&
                               static_cast<unsigned char>(_text[2]) >= 0x80 &&
                               static_cast<unsigned char>(_text[2]) <= 0x8A;  // U+2000 to U+200A
        return isInRange ? _text.substr(0, 3) : "";
    }

    std::string _text;
};

/// Returns the text without the line ends at its start and end.
inline std::string withoutLineEnds(std::string text) {
    const std::string ends[] = {"\n", "\r", "\v", "\f", "\u0085", "\u2028", "\u2029"};
    for (bool isTrimmed = true; isTrimmed;) {
        isTrimmed = false;
        for (const std::string& end : ends) {
            if (text.starts_with(end)) {
                text.erase(0, end.size());
                isTrimmed = true;
            }
            if (text.ends_with(end)) {
                text.erase(text.size() - end.size());
                isTrimmed = true;
            }
        }
    }
    return text;
}

/// Returns the status value of the first letter.
inline int expectedStatus(std::string_view letters) {
    switch (letters.empty() ? '\0' : letters.front()) {
        case 'A':
            return 1;
        case 'D':
            return 2;
        case 'M':
        case 'T':
            return 4;
        case 'U':
            return 16;
        case '?':
            return 256;
        case 'C':
        case 'R':
            return 4096;
        default:
            return 0;
    }
}

/// Returns the records of a status, or of names with their states, in "/w".
inline std::vector<NEBDictionary> expectedStates(const std::vector<std::string>& lines) {
    std::vector<NEBDictionary> records;
    for (const std::string& line : lines) {
        ReferenceReader reader(line);
        reader.run(" \t");
        const std::string letters = reader.run("ABCDEFGHIJKLMNOPQRSTUVWXYZ?");
        reader.run(" \t");
        if (letters.empty()) {
            continue;
        }
        std::string path = reader.rest();
        if (const std::size_t arrow = path.find("-> "); arrow != std::string::npos) {
            path = path.substr(arrow + 3);
        }
        if (path.starts_with('"')) {
            path.erase(0, 1);
        }
        if (path.ends_with('"')) {
            path.pop_back();
        }
        while (path.starts_with('/')) {
            path.erase(0, 1);
        }
        NEBDictionary& record = records.emplace_back();
        record.set(NEBSourceControlOperationWCStatusKey, expectedStatus(letters));
        record.set(NEBSourceControlOperationPathKey, "/w/" + path);
    }
    return records;
}

}  // namespace neb::fuzz

// PlainReader.h - reads a text byte by byte, in the plainest way there is: what the quick parsers
// are held against.
#pragma once

#include <string>
#include <string_view>

#include "NEBFoundation/NEBValue.h"

namespace neb::fuzz {

class PlainReader {
public:
    explicit PlainReader(std::string text) : _text(std::move(text)) {}

    /// What stands before the byte; the whole rest when there is none.
    std::string before(char byte) {
        std::string taken;
        while (!_text.empty() && _text.front() != byte) {
            taken += next();
        }
        return taken;
    }
    /// Passes over the byte, once, if it is the next one.
    void pass(char byte) {
        if (!_text.empty() && _text.front() == byte) {
            next();
        }
    }
    /// Takes bytes as long as they are among these.
    std::string run(std::string_view members) {
        std::string taken;
        while (!_text.empty() && members.find(_text.front()) != std::string_view::npos) {
            taken += next();
        }
        return taken;
    }
    /// What stands before the next white space.
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
    /// A decimal number with its sign, as it is written; empty, and nothing is passed, without a
    /// digit.
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
    /// The white space at the front: blank, TAB, or one of Unicode's space separators.
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

/// The text without the line ends at its ends.
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

/// The status value of the letter with which the letters begin.
inline int plainStatus(std::string_view letters) {
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

/// The records of a status, or of names with their states, below "/w".
inline std::vector<NEBDictionary> plainStates(const std::vector<std::string>& lines) {
    std::vector<NEBDictionary> records;
    for (const std::string& line : lines) {
        PlainReader reader(line);
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
        record.set(NEBSourceControlOperationWCStatusKey, plainStatus(letters));
        record.set(NEBSourceControlOperationPathKey, "/w/" + path);
    }
    return records;
}

}  // namespace neb::fuzz

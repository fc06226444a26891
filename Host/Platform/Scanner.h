// Scanner.h - reads a text from its start, run by run.
//
//     Scanner scanner("  AM name");
//     scanner.skip(CharacterSet::whitespace());          // the two blanks
//     scanner.take(CharacterSet("AM"));                  // "AM"
//     scanner.rest();                                    // " name"
//
// A scanner reads a text that somebody else keeps, and never beyond its end.
#pragma once

#include <bitset>
#include <string_view>

namespace neb {

/// A set of single-byte characters.
class CharacterSet {
public:
    /// The characters of `members`.
    explicit CharacterSet(std::string_view members) {
        for (const char member : members) {
            _members.set(static_cast<unsigned char>(member));
        }
    }
    /// Blank and TAB.
    static CharacterSet whitespace() { return CharacterSet(" \t"); }
    /// A to Z.
    static CharacterSet uppercaseLetters() { return CharacterSet("ABCDEFGHIJKLMNOPQRSTUVWXYZ"); }

    [[nodiscard]] CharacterSet operator|(const CharacterSet& other) const {
        CharacterSet both = *this;
        both._members |= other._members;
        return both;
    }
    [[nodiscard]] bool contains(char character) const {
        return _members.test(static_cast<unsigned char>(character));
    }

private:
    std::bitset<256> _members;
};

class Scanner {
public:
    explicit Scanner(std::string_view text) : _text(text) {}

    /// Takes the longest run of characters of the set; empty when the next one is none.
    std::string_view take(const CharacterSet& set) {
        std::size_t length = 0;
        while (length < _text.size() && set.contains(_text[length])) {
            ++length;
        }
        const std::string_view run = _text.substr(0, length);
        _text.remove_prefix(length);
        return run;
    }
    /// Passes over a run of characters of the set.
    void skip(const CharacterSet& set) { static_cast<void>(take(set)); }
    /// What has not been read yet.
    [[nodiscard]] std::string_view rest() const { return _text; }

private:
    std::string_view _text;
};

}  // namespace neb

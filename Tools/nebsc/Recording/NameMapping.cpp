#include "Recording/NameMapping.h"

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <stdexcept>

#include "Platform/Text.h"
#include "Recording/GitVocabulary.h"

namespace neb::nebsc {

namespace {

constexpr std::size_t shortestName = 3;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

/// Returns the number of bytes of the character of a word at the beginning; 0 if it is none.
std::size_t sizeOfWordCharacter(std::string_view text) {
    if (isDigit(text[0]) || isLetter(text[0])) {
        return 1;
    }
    const auto first = static_cast<unsigned char>(text[0]);
    constexpr unsigned char two = 0xC2, three = 0xE0, four = 0xF0, end = 0xF5;
    const std::size_t size = first < two || first >= end ? 0
                             : first < three             ? 2
                             : first < four              ? 3
                                                         : 4;
    return size > 0 && size <= text.size() && isUTF8(text.substr(0, size)) ? size : 0;
}

/// Returns the size of an escape sequence as git quotes paths, such as "\t" or "\303", whose
/// characters are not those of a word; 0 without one. git-config(1), core.quotePath.
std::size_t sizeOfEscape(std::string_view text) {
    if (text.size() < 2 || text[0] != '\\') {
        return 0;
    }
    constexpr std::size_t octalSize = 4;
    constexpr std::string_view octalDigits = "01234567";
    if (text.size() >= octalSize &&
        text.substr(1, octalSize - 1).find_first_not_of(octalDigits) == std::string_view::npos) {
        return octalSize;
    }
    return std::string_view("abfnrtv\\\"").find(text[1]) == std::string_view::npos ? 0 : 2;
}

/// Calls `word` for each word and `rest` for what is between, in order. Escape sequences are only
/// in double quotes, which end with the line; "C:\temp" elsewhere has the word "temp".
void forEachWord(std::string_view text, const std::function<void(std::string_view)>& word,
                 const std::function<void(std::string_view)>& rest) {
    bool isQuoted = false;
    while (!text.empty()) {
        std::size_t size = 0;
        while (size < text.size()) {
            const std::size_t next = sizeOfWordCharacter(text.substr(size));
            if (next == 0) {
                break;
            }
            size += next;
        }
        const bool isWord = size > 0;
        if (!isWord) {
            size = std::max<std::size_t>(isQuoted ? sizeOfEscape(text) : 0, 1);
            isQuoted = text[0] == '"' ? !isQuoted : isQuoted && text[0] != '\n';
        }
        (isWord ? word : rest)(text.substr(0, size));
        text.remove_prefix(size);
    }
}

bool isHexadecimalLetter(char character) {
    return character >= 'a' && character <= 'f';
}

/// An object id or an abbreviation of it.
bool looksLikeID(std::string_view word) {
    return std::ranges::all_of(word,
                               [](char character) {
                                   return isDigit(character) || isHexadecimalLetter(character);
                               }) &&
           std::ranges::any_of(word, isDigit);
}

/// "06T05", "09Z", "R100": digits with one letter of a date or of a state of git-diff(1).
bool looksLikeDateOrState(std::string_view lower) {
    constexpr std::size_t stateSize = 4;
    return std::ranges::count_if(lower, isDigit) == static_cast<std::ptrdiff_t>(lower.size()) - 1 &&
           (lower.find('t') != std::string_view::npos || lower.ends_with('z') ||
            (lower.size() == stateSize && (lower.starts_with('r') || lower.starts_with('c'))));
}

/// What replaces the bytes of secrets.
bool isRemovedSecret(std::string_view lower) {
    return lower.find_first_not_of('x') == std::string_view::npos;
}

/// Words of names and addresses that are also terms of git or parts of every path.
bool saysNothingOfAPerson(std::string_view lower) {
    constexpr std::array<std::string_view, 13> words = {
        "com",  "example", "git", "home", "host", "localhost", "mail",
        "name", "net",     "org", "root", "test", "user"};
    return std::ranges::find(words, lower) != words.end();
}

unsigned randomFrom(unsigned least, unsigned most) {
    static thread_local std::random_device device;
    return std::uniform_int_distribution<unsigned>(least, most)(device);
}

std::string randomCharacter(std::string_view old, bool isHexadecimal) {
    if (isDigit(old[0])) {
        return {static_cast<char>(randomFrom('0', '9'))};
    }
    if (old.size() == 1) {
        return {static_cast<char>(randomFrom('a', isHexadecimal ? 'f' : 'z'))};
    }
    // Letters of the same length: Latin Extended-A, Han, and Han of the second plane.
    constexpr unsigned bits = 6, mask = 0x3F, continuation = 0x80;
    const unsigned code = old.size() == 2   ? randomFrom(0x100, 0x17E)
                          : old.size() == 3 ? randomFrom(0x4E00, 0x9FA5)
                                            : randomFrom(0x20000, 0x2A6D0);
    std::string bytes(old.size(), '\0');
    unsigned rest = code;
    for (std::size_t i = old.size() - 1; i > 0; --i, rest >>= bits) {
        bytes[i] = static_cast<char>(continuation | (rest & mask));
    }
    const unsigned first[] = {0xC0, 0xE0, 0xF0};
    bytes[0] = static_cast<char>(first[old.size() - 2] | rest);
    return bytes;
}

std::string randomWord(std::string_view lower, bool isHexadecimal) {
    std::string word;
    while (!lower.empty()) {
        const std::size_t size = std::max<std::size_t>(sizeOfWordCharacter(lower), 1);
        word += randomCharacter(lower.substr(0, size), isHexadecimal);
        lower.remove_prefix(size);
    }
    return word;
}

/// Returns the replacement with capital letters where the word has them.
std::string withCapitalsOf(std::string_view word, std::string replacement) {
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] >= 'A' && word[i] <= 'Z') {
            replacement[i] = static_cast<char>(replacement[i] - 'a' + 'A');
        }
    }
    return replacement;
}

}  // namespace

bool NameMapping::isName(std::string_view lower) const {
    return lower.size() >= shortestName && !looksLikeID(lower) && !looksLikeDateOrState(lower) &&
           !isRemovedSecret(lower) && !lower.starts_with("nebsourcecontrol") &&
           (_personal.contains(std::string(lower)) ||
            (!gitVocabulary().contains(lower) && !_kept.contains(std::string(lower))));
}

const std::string& NameMapping::replacementOf(const std::string& lower) {
    const auto found = _replacements.find(lower);
    if (found != _replacements.end()) {
        return found->second;
    }
    // A word like "dad" may be the beginning of an object id, and so is replaced by another one of
    // this kind, as long as one is left.
    const bool isHexadecimal = std::ranges::all_of(lower, isHexadecimalLetter);
    constexpr int mostTries = 10000, mostHexadecimalTries = 100;
    for (int i = 0; i < mostTries; ++i) {
        std::string word = randomWord(lower, isHexadecimal && i < mostHexadecimalTries);
        if (isName(word) && !_originals.contains(word) && _used.insert(word).second) {
            return _replacements.emplace(lower, std::move(word)).first->second;
        }
    }
    throw std::runtime_error("it has too many different words of " + std::to_string(lower.size()) +
                             " bytes");
}

void NameMapping::collect(std::string_view text) {
    forEachWord(
        text,
        [this](std::string_view word) {
            if (std::string lower = lowercaseASCII(word); isName(lower)) {
                _originals.insert(std::move(lower));
            }
        },
        [](std::string_view) {});
}

void NameMapping::collectPersonal(std::string_view text) {
    forEachWord(
        text,
        [this](std::string_view word) {
            if (std::string lower = lowercaseASCII(word); !saysNothingOfAPerson(lower)) {
                _personal.insert(std::move(lower));
            }
        },
        [](std::string_view) {});
    collect(text);
}

std::string NameMapping::replaced(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    forEachWord(
        text,
        [&](std::string_view word) {
            const std::string lower = lowercaseASCII(word);
            if (isName(lower)) {
                result += withCapitalsOf(word, replacementOf(lower));
            } else {
                result += word;
            }
        },
        [&result](std::string_view rest) { result += rest; });
    return result;
}

void NameMapping::keep(const std::unordered_set<std::string>& words) {
    _kept.insert(words.begin(), words.end());
    _replacements.clear();
    _used.clear();
}

std::unordered_set<std::string> NameMapping::originalsIn(std::string_view text) const {
    std::unordered_set<std::string> originals;
    forEachWord(
        text,
        [&](std::string_view word) {
            const std::string lower = lowercaseASCII(word);
            if (_originals.contains(lower) && isName(lower)) {
                originals.insert(lower);
            }
        },
        [](std::string_view) {});
    return originals;
}

}  // namespace neb::nebsc

#include "TextWidth.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>

namespace neb::nebsc {

namespace {

/// The thread reads characters as UTF-8 for as long as the object lives, whatever the locale.
class UTF8Characters {
public:
    UTF8Characters() : _former(::uselocale(locale())) {}
    UTF8Characters(const UTF8Characters&) = delete;
    UTF8Characters& operator=(const UTF8Characters&) = delete;
    ~UTF8Characters() { ::uselocale(_former); }

private:
    /// No locale where the system has not this one: the former one then stays.
    static locale_t locale() {
        static const locale_t utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return utf8;
    }

    locale_t _former;
};

}  // namespace

std::size_t columnsOf(std::string_view text) {
    const auto isASCII = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    if (std::all_of(text.begin(), text.end(), isASCII)) {
        return text.size();
    }
    const UTF8Characters characters;
    std::size_t columns = 0;
    mbstate_t state{};
    while (!text.empty()) {
        wchar_t character = 0;
        const std::size_t length = ::mbrtowc(&character, text.data(), text.size(), &state);
        if (length == 0 || length > text.size()) {  // no character
            state = {};
            ++columns;
            text.remove_prefix(1);
            continue;
        }
        columns += static_cast<std::size_t>(std::max(::wcwidth(character), 0));
        text.remove_prefix(length);
    }
    return columns;
}

std::string paddedTo(std::size_t columns, std::string_view text) {
    const std::size_t width = columnsOf(text);
    return std::string(text) + std::string(columns > width ? columns - width : 0, ' ');
}

}  // namespace neb::nebsc

#include "Terminal/TextWidth.h"

#include <locale.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <wchar.h>

#include <algorithm>

namespace neb::nebsc {

namespace {

/// Makes the thread decode characters as UTF-8 while the object exists, whatever the locale.
class UTF8Characters {
public:
    UTF8Characters() : _former(::uselocale(locale())) {}
    UTF8Characters(const UTF8Characters&) = delete;
    UTF8Characters& operator=(const UTF8Characters&) = delete;
    ~UTF8Characters() { ::uselocale(_former); }

private:
    /// Null if the system lacks this locale; uselocale() then changes nothing.
    static locale_t locale() {
        static const locale_t utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return utf8;
    }

    locale_t _former;
};

/// The size of a character in bytes and its width in columns.
struct Extent {
    std::size_t bytes;
    std::size_t columns;
};

/// Returns the extent of the first character. The text must not be empty, and UTF8Characters must
/// exist.
Extent extentOfFirst(std::string_view text) {
    mbstate_t state{};
    wchar_t character = 0;
    const std::size_t length = ::mbrtowc(&character, text.data(), text.size(), &state);
    if (length == 0 || length > text.size()) {  // not a valid character
        return {1, 1};
    }
    return {length, static_cast<std::size_t>(std::max(::wcwidth(character), 0))};
}

bool isASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

}  // namespace

std::size_t columnsOf(std::string_view text) {
    if (isASCII(text)) {
        return text.size();
    }
    const UTF8Characters characters;
    std::size_t columns = 0;
    while (!text.empty()) {
        const Extent extent = extentOfFirst(text);
        columns += extent.columns;
        text.remove_prefix(extent.bytes);
    }
    return columns;
}

std::string truncated(std::size_t columns, std::string_view text) {
    if (columnsOf(text) <= columns) {
        return std::string(text);
    }
    const UTF8Characters characters;
    std::size_t end = 0;
    std::size_t taken = 1;  // for the "…"
    while (end < text.size()) {
        const Extent extent = extentOfFirst(text.substr(end));
        if (taken + extent.columns > columns) {
            break;
        }
        taken += extent.columns;
        end += extent.bytes;
    }
    return std::string(text.substr(0, end)) + "…";
}

std::optional<std::size_t> columnsOfTerminal(int descriptor) {
    winsize size{};
    const bool isKnown =
        ::isatty(descriptor) == 1 && ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? std::optional<std::size_t>(size.ws_col) : std::nullopt;
}

std::string fitting(int descriptor, std::size_t columnsBefore, std::string_view text) {
    const auto columns = columnsOfTerminal(descriptor);
    return columns ? truncated(std::max(*columns, columnsBefore + 1) - columnsBefore, text)
                   : std::string(text);
}

std::string wrapped(int descriptor, std::size_t columnsBefore, std::string_view text) {
    const auto columns = columnsOfTerminal(descriptor);
    if (!columns || *columns <= columnsBefore) {
        return std::string(text);
    }
    std::string lines;
    std::size_t taken = columnsBefore;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        const std::size_t width = columnsOf(word);
        if (taken == columnsBefore) {
            lines += word;
        } else if (taken + 1 + width <= *columns) {
            lines.append(" ").append(word);
            ++taken;
        } else {
            lines.append("\n").append(columnsBefore, ' ').append(word);
            taken = columnsBefore;
        }
        taken += width;
    }
    return lines;
}

std::string paddedTo(std::size_t columns, std::string_view text) {
    const std::size_t width = columnsOf(text);
    return std::string(text) + std::string(columns > width ? columns - width : 0, ' ');
}

}  // namespace neb::nebsc

#include "Server/MessageDecoder.h"

#include <algorithm>
#include <charconv>

#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view headerEnd = "\r\n\r\n";
constexpr std::string_view lineEnd = "\r\n";
/// In bytes. Real headers are much shorter.
constexpr std::size_t longestHeader = 4096;

std::string_view withoutBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

/// Returns the position of the first LF without a CR before it; npos without one.
std::size_t bareLineFeedIn(std::string_view header) {
    std::size_t position = header.find('\n');
    while (position != std::string_view::npos && position > 0 && header[position - 1] == '\r') {
        position = header.find('\n', position + 1);
    }
    return position;
}

std::string lastLineOf(const std::string& text) {
    return text.substr(text.rfind('\n') + 1);
}

bool isSameName(std::string_view name, std::string_view other) {
    return std::equal(name.begin(), name.end(), other.begin(), other.end(), [](char a, char b) {
        return a == b || (a >= 'A' && a <= 'Z' && a - 'A' + 'a' == b);
    });
}

std::optional<std::size_t> numberIn(std::string_view text) {
    std::size_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = failure == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

}  // namespace

void MessageDecoder::append(std::string_view bytes) {
    if (_failure) {
        return;
    }
    if (_length && *_length > _longest) {
        const std::size_t count = std::min(bytes.size(), *_length - _skipped);
        _skipped += count;
        bytes.remove_prefix(count);
    }
    _bytes.append(bytes);
}

std::optional<MessageDecoder::Frame> MessageDecoder::take() {
    if (_failure || (!_length && !takeHeader())) {
        return std::nullopt;
    }
    Frame frame{.content = {}, .length = *_length};
    if (*_length > _longest) {
        const std::size_t count = std::min(_bytes.size(), *_length - _skipped);
        _skipped += count;
        _bytes.erase(0, count);
        if (_skipped < *_length) {
            return std::nullopt;
        }
        _skipped = 0;
    } else {
        if (_bytes.size() < *_length) {
            return std::nullopt;
        }
        frame.content = _bytes.substr(0, *_length);
        _bytes.erase(0, *_length);
    }
    _length.reset();
    return frame;
}

bool MessageDecoder::takeHeader() {
    const std::size_t end = _bytes.find(headerEnd);
    if (std::min(end, _bytes.size()) > longestHeader) {
        return fail("A message's header has more than " + std::to_string(longestHeader) +
                    " bytes.");
    }
    const std::size_t bareLF = bareLineFeedIn(std::string_view(_bytes).substr(0, end));
    if (bareLF != std::string::npos) {
        return fail("A message's header has a line that ends with LF alone, and not with CR LF: " +
                    inQuotes(lastLineOf(_bytes.substr(0, bareLF)).substr(0, 60)) + ".");
    }
    if (end == std::string::npos) {
        return false;
    }
    std::string_view lines = std::string_view(_bytes).substr(0, end);
    while (!lines.empty()) {
        const std::string_view line = lines.substr(0, lines.find(lineEnd));
        if (!takeHeaderLine(line)) {
            return false;
        }
        lines.remove_prefix(std::min(line.size() + lineEnd.size(), lines.size()));
    }
    if (!_length) {
        return fail("A message's header has no Content-Length.");
    }
    _bytes.erase(0, end + headerEnd.size());
    return true;
}

bool MessageDecoder::takeHeaderLine(std::string_view line) {
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        return fail("A message's header has the line " + inQuotes(std::string(line.substr(0, 60))) +
                    ", which has no colon.");
    }
    if (isSameName(withoutBlanks(line.substr(0, colon)), "content-length")) {
        if (_length) {
            return fail("A message's header has more than one Content-Length.");
        }
        _length = numberIn(withoutBlanks(line.substr(colon + 1)));
        if (!_length) {
            return fail("A message's Content-Length is not a number: " +
                        inQuotes(std::string(line.substr(0, 60))) + ".");
        }
    }
    return true;
}

bool MessageDecoder::fail(std::string sentence) {
    _failure = std::move(sentence);
    _length.reset();
    return false;
}

std::string MessageDecoder::framed(std::string_view content) {
    std::string message = "Content-Length: " + std::to_string(content.size());
    message.append(headerEnd).append(content);
    return message;
}

}  // namespace neb::nebsc

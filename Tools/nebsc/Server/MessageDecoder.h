// MessageDecoder.h - a decoder for messages framed with a Content-Length header, as in the Language
// Server Protocol 3.17, "Base Protocol":
//
//     Content-Length: 16\r\n
//     \r\n
//     {"jsonrpc":"2.0"
//
//     MessageDecoder decoder(1 << 20);
//     decoder.append(bytes);                       // as read, of any size
//     while (const auto frame = decoder.take()) {  // every complete message
//         frame->content;
//     }
//     decoder.failure();                           // why decoding has stopped
//
// Not thread-safe. Buffers at most one message and one read.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace neb::nebsc {

/// Decodes `Content-Length` framed messages.
class MessageDecoder {
public:
    struct Frame {
        /// Empty if the message is longer than the limit.
        std::string content;
        /// The size of the message in bytes.
        std::size_t length = 0;
    };

    /// Skips the content of messages with more than `longest` bytes.
    explicit MessageDecoder(std::size_t longest) : _longest(longest) {}

    /// Adds bytes of the stream. Ignored after a failure.
    void append(std::string_view bytes);

    /// Removes and returns the next message; absent if it is incomplete, and after a failure.
    [[nodiscard]] std::optional<Frame> take();

    /// Returns why a header is invalid, as a sentence; absent if all were valid. Decoding stops
    /// there, because the position of the next message is unknown.
    [[nodiscard]] const std::optional<std::string>& failure() const { return _failure; }

    /// Returns whether the stream can end here. False in the middle of a message.
    [[nodiscard]] bool isBetweenMessages() const { return _bytes.empty() && !_length; }

    /// Returns the message with its header.
    [[nodiscard]] static std::string framed(std::string_view content);

private:
    bool takeHeader();
    bool takeHeaderLine(std::string_view line);
    bool fail(std::string sentence);

    const std::size_t _longest;
    std::string _bytes;                  // not decoded yet
    std::optional<std::size_t> _length;  // absent while the header is incomplete
    std::size_t _skipped = 0;            // bytes of a message that is too long
    std::optional<std::string> _failure;
};

}  // namespace neb::nebsc

// MessageDecoder.h - the messages of a stream, each behind a header that tells its length, as
// language servers frame them (Language Server Protocol 3.17, "Base Protocol"):
//
//     Content-Length: 16\r\n
//     \r\n
//     {"jsonrpc":"2.0"
//
//     MessageDecoder frames(1 << 20);
//     frames.append(bytes);                       // whatever was read
//     while (const auto frame = frames.take()) {  // every message that is whole by now
//         frame->content;
//     }
//     frames.failure();                           // why nothing can be read from here on
//
// One thread at a time. What is kept is never more than one message and one read.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace neb::nebsc {

class MessageDecoder {
public:
    struct Frame {
        std::string content;
        /// How long the message was, in bytes: of one that is longer than the limit the content is
        /// empty.
        std::size_t length = 0;
    };

    /// Messages of more bytes than `longest` are passed over.
    explicit MessageDecoder(std::size_t longest) : _longest(longest) {}

    void append(std::string_view bytes);

    /// The next message; nothing until it is whole, and nothing once there is a failure.
    [[nodiscard]] std::optional<Frame> take();

    /// One sentence; absent as long as the headers can be understood. Behind one that cannot be,
    /// nobody knows where the next message begins.
    [[nodiscard]] const std::optional<std::string>& failure() const { return _failure; }

    /// Whether the stream may end here: not in the middle of a message.
    [[nodiscard]] bool isBetweenMessages() const { return _bytes.empty() && !_length; }

    /// The bytes of a message with its header.
    [[nodiscard]] static std::string framed(std::string_view content);

private:
    bool takeHeader();
    bool takeHeaderLine(std::string_view line);
    bool fail(std::string sentence);

    const std::size_t _longest;
    std::string _bytes;                  // not taken yet
    std::optional<std::size_t> _length;  // of the message whose header was taken
    std::size_t _passedOver = 0;         // of a message that is too long
    std::optional<std::string> _failure;
};

}  // namespace neb::nebsc

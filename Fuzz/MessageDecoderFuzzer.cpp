// Decodes a stream of messages. The result must not depend on how the stream is split, and encoded
// messages must decode to themselves.

#include "Server/MessageDecoder.h"

#include "Property.h"

using namespace neb::fuzz;
using neb::nebsc::MessageDecoder;

namespace {

constexpr std::size_t longestMessage = 300;

struct Reading {
    std::vector<std::string> messages;  // the length of a message that is too long
    bool hasFailed = false;
    bool isBetweenMessages = true;
    bool operator==(const Reading&) const = default;
};

/// Decodes the stream in chunks of the sizes in `sizes`, or in one chunk without sizes.
Reading readingOf(std::string_view stream, std::string_view sizes) {
    MessageDecoder decoder(longestMessage);
    Reading reading;
    std::size_t turn = 0;
    while (!stream.empty()) {
        const std::size_t size =
            sizes.empty() ? stream.size()
                          : 1 + static_cast<unsigned char>(sizes[turn++ % sizes.size()]) % 32;
        decoder.append(stream.substr(0, size));
        stream.remove_prefix(std::min(size, stream.size()));
        while (const auto frame = decoder.take()) {
            require(frame->length > longestMessage ? frame->content.empty()
                                                   : frame->content.size() == frame->length,
                    "a message has the length of its header");
            reading.messages.push_back(
                frame->length > longestMessage ? std::to_string(frame->length) : frame->content);
        }
        require(!decoder.failure() || !decoder.take(), "nothing is decoded after a failure");
    }
    reading.hasFailed = decoder.failure().has_value();
    reading.isBetweenMessages = reading.hasFailed || decoder.isBetweenMessages();
    return reading;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    const std::string sizes = bytes.substr(0, std::min<std::size_t>(bytes.size(), 4));
    const std::string stream = bytes.substr(sizes.size());
    const Reading whole = readingOf(stream, {});
    if (!sizes.empty()) {
        require(readingOf(stream, sizes) == whole, "the chunks do not matter");
    }
    // Valid messages before the stream do not change what is decoded after them.
    const Reading extended = readingOf(MessageDecoder::framed(stream.substr(0, longestMessage)) +
                                           MessageDecoder::framed("{}") + stream,
                                       sizes);
    require(extended.messages.size() == whole.messages.size() + 2 &&
                extended.messages[0] == stream.substr(0, longestMessage) &&
                extended.messages[1] == "{}" && extended.hasFailed == whole.hasFailed,
            "encoded messages are decoded, and the stream after them");
    return 0;
}

// The frames of a stream of messages: the same in whatever pieces it arrives, and what is written
// is read again.

#include "Server/MessageDecoder.h"

#include "Property.h"

using namespace neb::fuzz;
using neb::nebsc::MessageDecoder;

namespace {

constexpr std::size_t longest = 300;

struct Reading {
    std::vector<std::string> messages;  // of one that is too long, its length
    bool hasFailed = false;
    bool isBetweenMessages = true;
    bool operator==(const Reading&) const = default;
};

/// The stream in pieces, each as long as the next byte of `sizes` says; in one piece without sizes.
Reading readingOf(std::string_view stream, std::string_view sizes) {
    MessageDecoder frames(longest);
    Reading reading;
    std::size_t turn = 0;
    while (!stream.empty()) {
        const std::size_t size =
            sizes.empty() ? stream.size()
                          : 1 + static_cast<unsigned char>(sizes[turn++ % sizes.size()]) % 32;
        frames.append(stream.substr(0, size));
        stream.remove_prefix(std::min(size, stream.size()));
        while (const auto frame = frames.take()) {
            require(frame->length > longest ? frame->content.empty()
                                            : frame->content.size() == frame->length,
                    "a message has its length");
            reading.messages.push_back(frame->length > longest ? std::to_string(frame->length)
                                                               : frame->content);
        }
        require(!frames.failure() || !frames.take(), "nothing is read behind a failure");
    }
    reading.hasFailed = frames.failure().has_value();
    reading.isBetweenMessages = reading.hasFailed || frames.isBetweenMessages();
    return reading;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    const std::string sizes = bytes.substr(0, std::min<std::size_t>(bytes.size(), 4));
    const std::string stream = bytes.substr(sizes.size());
    const Reading whole = readingOf(stream, {});
    if (!sizes.empty()) {
        require(readingOf(stream, sizes) == whole, "pieces do not matter");
    }
    // Messages of ours in front do not change what is read behind them.
    const Reading behind = readingOf(
        MessageDecoder::framed(stream.substr(0, longest)) + MessageDecoder::framed("{}") + stream,
        sizes);
    require(behind.messages.size() == whole.messages.size() + 2 &&
                behind.messages[0] == stream.substr(0, longest) && behind.messages[1] == "{}" &&
                behind.hasFailed == whole.hasFailed,
            "what is framed is read again, and what is behind it");
    return 0;
}

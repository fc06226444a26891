// The frames of messages, whatever the pieces in which they arrive.

#include "Server/MessageDecoder.h"

#include <gmock/gmock.h>

#include <vector>

namespace neb::test {
namespace {

using nebsc::MessageDecoder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Optional;

constexpr std::size_t limit = 100;

/// The messages of a stream that arrives in pieces of this size.
std::vector<std::string> messagesIn(std::string_view stream, std::size_t pieceSize,
                                    MessageDecoder& frames) {
    std::vector<std::string> messages;
    while (!stream.empty()) {
        frames.append(stream.substr(0, pieceSize));
        stream.remove_prefix(std::min(pieceSize, stream.size()));
        while (const auto frame = frames.take()) {
            messages.push_back(frame->length > limit ? std::to_string(frame->length)
                                                     : frame->content);
        }
    }
    return messages;
}

TEST(MessageDecoder, AreTheSameInPiecesOfAnySize) {
    const std::string stream =
        MessageDecoder::framed("{}") + MessageDecoder::framed("") +
        "content-length:  3 \r\nContent-Type: application/json\r\n\r\n\r\na" +
        MessageDecoder::framed(std::string(limit, 'x')) +
        MessageDecoder::framed(std::string(limit + 1, 'y')) + MessageDecoder::framed("[1]");
    for (const std::size_t pieceSize : {1U, 2U, 7U, 64U, 1000U}) {
        MessageDecoder frames(limit);
        EXPECT_THAT(messagesIn(stream, pieceSize, frames),
                    ElementsAre("{}", "", "\r\na", std::string(limit, 'x'), "101", "[1]"));
        EXPECT_EQ(frames.failure(), std::nullopt);
        EXPECT_TRUE(frames.isBetweenMessages());
    }
}

TEST(MessageDecoder, AreCountedInBytes) {
    EXPECT_EQ(MessageDecoder::framed("\xC3\xA4"), "Content-Length: 2\r\n\r\n\xC3\xA4");
}

TEST(MessageDecoder, TellWhereTheStreamStops) {
    MessageDecoder frames(limit);
    EXPECT_TRUE(frames.isBetweenMessages());
    for (const std::string_view piece : {"Content-Le", "ngth: 2\r\n\r\n", "{"}) {
        frames.append(piece);
        EXPECT_EQ(frames.take(), std::nullopt);
        EXPECT_FALSE(frames.isBetweenMessages());
    }
    frames.append("}");
    EXPECT_TRUE(frames.take());
    EXPECT_TRUE(frames.isBetweenMessages());
}

TEST(MessageDecoder, TheNameOfAHeaderMayHaveBlanksAroundIt) {
    MessageDecoder frames(limit);
    EXPECT_THAT(messagesIn("content-length : 2\r\n\r\n{}", 5, frames), ElementsAre("{}"));
}

struct BadHeader {
    const char* name;
    std::string header;
    const char* words;
};

class BadHeaders : public testing::TestWithParam<BadHeader> {};

TEST_P(BadHeaders, EndTheReading) {
    MessageDecoder frames(limit);
    EXPECT_THAT(messagesIn(MessageDecoder::framed("{}") + GetParam().header, 5, frames),
                ElementsAre("{}"));
    EXPECT_THAT(frames.failure(), Optional(HasSubstr(GetParam().words)));
    frames.append(MessageDecoder::framed("{}"));
    EXPECT_EQ(frames.take(), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Of, BadHeaders,
    testing::Values(BadHeader{"NoLength", "Content-Type: x\r\n\r\n{}", "has no Content-Length"},
                    BadHeader{"Empty", "\r\n\r\n{}", "has no Content-Length"},
                    BadHeader{"NoNumber", "Content-Length: x\r\n\r\n{}", "is no number"},
                    BadHeader{"Negative", "Content-Length: -1\r\n\r\n{}", "is no number"},
                    BadHeader{"TooLarge", "Content-Length: 99999999999999999999\r\n\r\n{}",
                              "is no number"},
                    BadHeader{"NoColon", "{\"jsonrpc\"\r\n\r\n", "which has no colon"},
                    BadHeader{"TwoLengths", "Content-Length: 2\r\nContent-Length: 3\r\n\r\n{}",
                              "more than one Content-Length"},
                    BadHeader{"LineFeedsAlone", "Content-Length: 2\n\n{}",
                              "ends with LF alone, and not with CR LF: 'Content-Length: 2'."},
                    BadHeader{"OneLineFeedAlone", "Content-Type: x\r\nContent-Length: 2\n\r\n",
                              "LF alone, and not with CR LF: 'Content-Length: 2'."},
                    BadHeader{"Endless", std::string(5000, 'x'), "more than 4096 bytes"}),
    [](const auto& tested) { return tested.param.name; });

}  // namespace
}  // namespace neb::test

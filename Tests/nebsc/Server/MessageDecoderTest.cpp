// Decoding of framed messages from reads of any size.

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

/// Decodes a stream from reads of this size. A message beyond the limit becomes its length.
std::vector<std::string> messagesIn(std::string_view stream, std::size_t readSize,
                                    MessageDecoder& decoder) {
    std::vector<std::string> messages;
    while (!stream.empty()) {
        decoder.append(stream.substr(0, readSize));
        stream.remove_prefix(std::min(readSize, stream.size()));
        while (const auto frame = decoder.take()) {
            messages.push_back(frame->length > limit ? std::to_string(frame->length)
                                                     : frame->content);
        }
    }
    return messages;
}

TEST(MessageDecoder, DecodesReadsOfAnySize) {
    const std::string stream =
        MessageDecoder::framed("{}") + MessageDecoder::framed("") +
        "content-length:  3 \r\nContent-Type: application/json\r\n\r\n\r\na" +
        MessageDecoder::framed(std::string(limit, 'x')) +
        MessageDecoder::framed(std::string(limit + 1, 'y')) + MessageDecoder::framed("[1]") +
        MessageDecoder::framed(std::string(limit + 5, 'y')) + MessageDecoder::framed("[2]");
    for (const std::size_t readSize : {1U, 2U, 7U, 64U, 1000U}) {
        MessageDecoder decoder(limit);
        EXPECT_THAT(
            messagesIn(stream, readSize, decoder),
            ElementsAre("{}", "", "\r\na", std::string(limit, 'x'), "101", "[1]", "105", "[2]"));
        EXPECT_EQ(decoder.failure(), std::nullopt);
        EXPECT_TRUE(decoder.isBetweenMessages());
    }
}

TEST(MessageDecoder, CountsTheLengthInBytes) {
    EXPECT_EQ(MessageDecoder::framed("\xC3\xA4"), "Content-Length: 2\r\n\r\n\xC3\xA4");
}

TEST(MessageDecoder, KnowsWhetherAMessageIsIncomplete) {
    MessageDecoder decoder(limit);
    EXPECT_TRUE(decoder.isBetweenMessages());
    for (const std::string_view bytes : {"Content-Le", "ngth: 2\r\n\r\n", "{"}) {
        decoder.append(bytes);
        EXPECT_EQ(decoder.take(), std::nullopt);
        EXPECT_FALSE(decoder.isBetweenMessages());
    }
    decoder.append("}");
    EXPECT_TRUE(decoder.take());
    EXPECT_TRUE(decoder.isBetweenMessages());
}

TEST(MessageDecoder, AcceptsBlanksAroundTheNameOfAHeader) {
    MessageDecoder decoder(limit);
    EXPECT_THAT(messagesIn("content-length : 2\r\n\r\n{}", 5, decoder), ElementsAre("{}"));
}

struct BadHeader {
    const char* name;
    std::string header;
    const char* failure;
};

class BadHeaders : public testing::TestWithParam<BadHeader> {};

TEST_P(BadHeaders, StopTheDecoding) {
    MessageDecoder decoder(limit);
    EXPECT_THAT(messagesIn(MessageDecoder::framed("{}") + GetParam().header, 5, decoder),
                ElementsAre("{}"));
    EXPECT_THAT(decoder.failure(), Optional(HasSubstr(GetParam().failure)));
    decoder.append(MessageDecoder::framed("{}"));
    EXPECT_EQ(decoder.take(), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Of, BadHeaders,
    testing::Values(BadHeader{"NoLength", "Content-Type: x\r\n\r\n{}", "has no Content-Length"},
                    BadHeader{"Empty", "\r\n\r\n{}", "has no Content-Length"},
                    BadHeader{"NoNumber", "Content-Length: x\r\n\r\n{}", "is not a number"},
                    BadHeader{"Negative", "Content-Length: -1\r\n\r\n{}", "is not a number"},
                    BadHeader{"TooLarge", "Content-Length: 99999999999999999999\r\n\r\n{}",
                              "is not a number"},
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

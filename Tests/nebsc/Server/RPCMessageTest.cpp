// The messages of JSON-RPC, understood and refused.

#include "RPCMessage.h"

#include <gmock/gmock.h>

namespace neb::test {
namespace {

using nebsc::RPCErrorCode;
using JSON = nlohmann::ordered_json;

TEST(RPCMessage, HasAnIdAMethodAndParameters) {
    const auto reading =
        nebsc::readRPCMessage(R"({"jsonrpc":"2.0","id":7,"method":"m","params":{"a":1}})");
    ASSERT_TRUE(reading.message);
    EXPECT_EQ(reading.message->id, JSON(7));
    EXPECT_EQ(reading.message->method, "m");
    EXPECT_EQ(reading.message->params.children.at(0).name, "a");
    EXPECT_EQ(nebsc::readRPCMessage(R"({"jsonrpc":"2.0","id":"x","method":"m"})").message->id,
              JSON("x"));
    EXPECT_EQ(nebsc::readRPCMessage(R"({"jsonrpc":"2.0","id":null,"method":"m"})").message->id,
              JSON(nullptr));
    EXPECT_EQ(nebsc::readRPCMessage(R"({"jsonrpc":"2.0","method":"m"})").message->id, std::nullopt);
}

TEST(RPCMessage, OfAnAnswerToNobodyIsPassedOver) {
    for (const char* text : {R"({"jsonrpc":"2.0","id":1,"result":null})",
                             R"({"jsonrpc":"2.0","id":1,"error":{"code":1,"message":""}})"}) {
        const auto reading = nebsc::readRPCMessage(text);
        EXPECT_FALSE(reading.message);
        EXPECT_EQ(reading.refusal, "");
    }
}

struct Refused {
    const char* name;
    const char* text;
    int code;
    JSON id;
};

class RefusedMessages : public testing::TestWithParam<Refused> {};

TEST_P(RefusedMessages, AreAnsweredWithTheirCode) {
    const auto reading = nebsc::readRPCMessage(GetParam().text);
    EXPECT_FALSE(reading.message);
    const JSON answer = JSON::parse(reading.refusal);
    EXPECT_EQ(answer["jsonrpc"], "2.0");
    EXPECT_EQ(answer["error"]["code"], GetParam().code);
    EXPECT_NE(answer["error"]["message"], "");
    EXPECT_EQ(answer["id"], GetParam().id);
}

INSTANTIATE_TEST_SUITE_P(
    Of, RefusedMessages,
    testing::Values(
        Refused{"NoJSON", "{", -32700, nullptr}, Refused{"NoUTF8", "\"\xFF\"", -32700, nullptr},
        Refused{"Empty", "", -32700, nullptr}, Refused{"NoObject", "1", -32600, nullptr},
        Refused{"ABatch", "[]", -32600, nullptr},
        Refused{"NoVersion", R"({"id":3,"method":"m"})", -32600, 3},
        Refused{"AnotherVersion", R"({"jsonrpc":"1.0","id":"a","method":"m"})", -32600, "a"},
        Refused{"NoMethod", R"({"jsonrpc":"2.0","id":4})", -32600, 4},
        Refused{"AMethodOfAnotherKind", R"({"jsonrpc":"2.0","id":4,"method":5})", -32600, 4},
        Refused{"AnIdOfAnotherKind", R"({"jsonrpc":"2.0","id":[],"method":"m"})", -32600, nullptr}),
    [](const auto& tested) { return tested.param.name; });

TEST(RPCAnswer, HasTheFormOfTheProtocol) {
    EXPECT_EQ(nebsc::rpcResult("a", nullptr), R"({"jsonrpc":"2.0","id":"a","result":null})");
    EXPECT_EQ(nebsc::rpcError(1, RPCErrorCode::requestCancelled, "Gone."),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32800,"message":"Gone."}})");
    EXPECT_EQ(nebsc::rpcError(1, RPCErrorCode::internalError, "No.", {{"a", 1}}),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32603,"message":"No.","data":{"a":1}}})");
    EXPECT_EQ(nebsc::rpcNotification("m", {{"a", "\xFF"}}),
              "{\"jsonrpc\":\"2.0\",\"method\":\"m\",\"params\":{\"a\":\"\xEF\xBF\xBD\"}}");
}

}  // namespace
}  // namespace neb::test

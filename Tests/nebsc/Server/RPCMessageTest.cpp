// Valid and refused JSON-RPC messages.

#include "Server/RPCMessage.h"

#include <gmock/gmock.h>

#include <tuple>

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

TEST(RPCMessage, OfAResponseIsNoRequest) {
    for (const char* text : {R"({"jsonrpc":"2.0","id":1,"result":null})",
                             R"({"jsonrpc":"2.0","id":1,"error":{"code":1,"message":""}})"}) {
        const auto reading = nebsc::readRPCMessage(text);
        EXPECT_FALSE(reading.message);
        EXPECT_EQ(reading.refusal, "");
        ASSERT_TRUE(reading.response);
        EXPECT_EQ(reading.response->id, JSON(1));
        EXPECT_EQ(reading.response->result.kind, nebsc::JSONNode::Kind::null);
    }
    const auto reading =
        nebsc::readRPCMessage(R"({"jsonrpc":"2.0","id":"a","result":{"value":5}})");
    ASSERT_TRUE(reading.response);
    ASSERT_NE(memberOf(reading.response->result, "value"), nullptr);
    EXPECT_EQ(memberOf(reading.response->result, "value")->integer, 5);
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
        Refused{"AMemberTwice", R"({"id":3,"params":{"a":1,"a":1},"method":"m"})", -32600, 3},
        Refused{"AMemberTwiceBeforeTheId", R"({"a":1,"a":1,"id":"x"})", -32600, "x"},
        Refused{"AMemberTwiceInNoJSON", R"({"id":3,"a":1,"a":1)", -32600, nullptr},
        Refused{"NoMethod", R"({"jsonrpc":"2.0","id":4})", -32600, 4},
        Refused{"AMethodOfAnotherKind", R"({"jsonrpc":"2.0","id":4,"method":5})", -32600, 4},
        Refused{"AnIdOfAnotherKind", R"({"jsonrpc":"2.0","id":[],"method":"m"})", -32600, nullptr}),
    [](const auto& tested) { return tested.param.name; });

/// Returns a request with this many elements in its parameters.
std::string requestOfSize(std::size_t count, const std::string& start, const std::string& end) {
    std::string text = start + R"("params":[0)";
    for (std::size_t i = 1; i < count; ++i) {
        text += ",0";
    }
    return text + "]" + end;
}

TEST(RPCMessage, TooLargeIsRefusedWithItsIdAndTheLimit) {
    const std::string start = R"({"jsonrpc":"2.0","method":"m",)";
    const std::size_t others = 4;  // the root, and three members
    EXPECT_TRUE(
        nebsc::readRPCMessage(requestOfSize(nebsc::mostJSONValues - others, start, "}")).message);
    for (const auto& [before, behind, id] :
         {std::tuple<std::string, std::string, JSON>{R"({"id":5,)", "}", 5},
          {"{", R"(,"id":"x"})", "x"},
          {R"({"result":{"id":9},)", "}", nullptr},
          {R"({"id":[1],"a":2,)", "}", nullptr},
          {R"({"id":5,)", "", nullptr}}) {
        const auto reading =
            nebsc::readRPCMessage(requestOfSize(nebsc::mostJSONValues, before, behind));
        EXPECT_FALSE(reading.message);
        const JSON answer = JSON::parse(reading.refusal);
        EXPECT_EQ(answer["id"], id) << before;
        EXPECT_EQ(answer["error"]["code"], -32600);
        EXPECT_EQ(answer["error"]["message"], "The request has more than 250000 values.");
    }
    const auto deep = nebsc::readRPCMessage(R"({"id":3,"a":)" + std::string(40, '[') +
                                            std::string(40, ']') + "}");
    EXPECT_EQ(JSON::parse(deep.refusal)["id"], 3);
    EXPECT_THAT(deep.refusal, testing::HasSubstr("-32600"));
    EXPECT_THAT(deep.refusal, testing::HasSubstr("more than 32 levels deep"));
}

TEST(RPCAnswer, HasTheFormOfTheProtocol) {
    EXPECT_EQ(nebsc::rpcResult("a", nullptr), R"({"jsonrpc":"2.0","id":"a","result":null})");
    EXPECT_EQ(nebsc::rpcError(1, RPCErrorCode::requestCancelled, "Gone."),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32800,"message":"Gone."}})");
    EXPECT_EQ(nebsc::rpcError(1, RPCErrorCode::internalError, "No.", R"({"a":1})"),
              R"({"jsonrpc":"2.0","id":1,"error":{"code":-32603,"message":"No.","data":{"a":1}}})");
    EXPECT_EQ(nebsc::rpcNotification("m", {{"a", "\xFF"}}),
              "{\"jsonrpc\":\"2.0\",\"method\":\"m\",\"params\":{\"a\":\"\xEF\xBF\xBD\"}}");
}

}  // namespace
}  // namespace neb::test

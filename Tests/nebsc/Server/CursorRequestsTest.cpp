// The age of idle cursors.

#include "Server/CursorRequests.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <future>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Server/MessageDecoder.h"

namespace neb::nebsc {
namespace {

using JSON = nlohmann::ordered_json;
using std::chrono::minutes;

/// Delivers a million records, unless it is cancelled.
class Operation : public NEBSourceControlOperation {
public:
    using NEBSourceControlOperation::NEBSourceControlOperation;
    void main() override { setResult(NEBSourceControlResult(1'000'000)); }
};

class Controller : public NEBSourceControlProtocol {
public:
    [[nodiscard]] bool authenticationRequiredForRequest(
        const NEBSourceControlRequest& /*request*/) const override {
        return false;
    }
    [[nodiscard]] bool validateRequest(
        const NEBSourceControlRequest& /*request*/,
        std::optional<NEBSourceControlError>* /*error*/) const override {
        return true;
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> operationForRequest(
        const std::shared_ptr<NEBSourceControlRequest>& request) const override {
        return initWithRequest<Operation>(request);
    }
};

class IdleCursor : public testing::Test {
protected:
    static Pipe newPipe() {
        Pipe pipe;
        EXPECT_EQ(openPipe(pipe, PipeSize::large), 0);
        return pipe;
    }

    /// Passes a message to a method and returns the response.
    JSON call(void (CursorRequests::*method)(RPCMessage&), const JSON& params) {
        const JSON request{{"jsonrpc", "2.0"}, {"id", ++id}, {"method", "any"}, {"params", params}};
        RPCReading reading = readRPCMessage(request.dump());
        (cursors.*method)(reading.message.value());
        while (true) {
            if (const auto frame = decoder.take()) {
                return JSON::parse(frame->content);
            }
            char bytes[4096];
            const ssize_t count = ::read(pipe.readEnd.get(), bytes, sizeof bytes);
            decoder.append({bytes, static_cast<std::size_t>(count)});
        }
    }
    JSON open() {
        return call(&CursorRequests::open,
                    {{"request", {{"type", NEBSourceControlRequestLog}}}, {"pageSize", 3}});
    }
    JSON next(const JSON& cursor) { return call(&CursorRequests::next, {{"cursor", cursor}}); }

    const Pipe pipe = newPipe();
    MessageDecoder decoder{1U << 20};
    int id = 0;
    std::atomic<minutes> time = minutes(0);
    const HostSession session{std::make_unique<Controller>()};
    MessageWriter writer{pipe.writeEnd.get(), [] {}};
    ProgressReports progress{[](const std::string&) {}};
    Jobs jobs{writer, [] {}};
    CredentialRequests credentials{writer};
    CursorRequests cursors{session,     writer,
                           progress,    jobs,
                           credentials, [this] { return CursorRequests::Moment() + time.load(); }};
};

TEST_F(IdleCursor, IsClosedAfterTenMinutes) {
    const JSON cursor = open()["result"]["cursor"];
    const JSON used = open()["result"]["cursor"];
    ASSERT_TRUE(cursor.is_string());
    time = minutes(9);
    cursors.closeIdle();
    EXPECT_EQ(next(used)["result"]["records"].size(), 3U);
    time = minutes(10);
    cursors.closeIdle();
    EXPECT_EQ(next(cursor)["error"]["code"], -32602);
    EXPECT_EQ(next(used)["result"]["records"].size(), 3U);
    EXPECT_TRUE(cursors.hasAny());
    time = minutes(20);
    cursors.closeIdle();
    EXPECT_EQ(next(used)["error"]["code"], -32602);
    EXPECT_FALSE(cursors.hasAny());
}

}  // namespace
}  // namespace neb::nebsc

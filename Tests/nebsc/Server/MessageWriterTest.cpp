// Order of messages, slow readers and readers that are gone.

#include "Server/MessageWriter.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <future>

#include "Server/MessageDecoder.h"

namespace neb::test {
namespace {

using nebsc::MessageDecoder;
using nebsc::MessageWriter;
using std::chrono::milliseconds;

constexpr milliseconds longEnough{60000};

class Writer : public testing::Test {
protected:
    Writer() { EXPECT_EQ(openPipe(pipe, PipeSize::ordinary), 0); }

    [[nodiscard]] std::string read(std::size_t size) const {
        std::string bytes;
        char buffer[4096];
        while (bytes.size() < size) {
            const ssize_t count =
                ::read(pipe.readEnd.get(), buffer, std::min(sizeof buffer, size - bytes.size()));
            if (count <= 0) {
                break;
            }
            bytes.append(buffer, static_cast<std::size_t>(count));
        }
        return bytes;
    }

    Pipe pipe;
};

TEST_F(Writer, KeepsTheOrder) {
    MessageWriter writer(pipe.writeEnd.get(), [] {});
    std::string expected;
    for (int i = 0; i < 100; ++i) {
        writer.send(std::to_string(i));
        expected += MessageDecoder::framed(std::to_string(i));
    }
    EXPECT_EQ(read(expected.size()), expected);
    EXPECT_TRUE(writer.finish(longEnough));
    EXPECT_EQ(writer.waitingBytes(), 0U);
}

TEST_F(Writer, DoesNotBlockTheSenderWithoutAReader) {
    const std::string big(1'000'000, 'x');
    {
        MessageWriter writer(pipe.writeEnd.get(), [] {});
        writer.send(big);
        writer.send(big);
        EXPECT_GT(writer.waitingBytes(), 1'500'000U);
        EXPECT_FALSE(writer.finish(milliseconds(1)));
    }
    MessageWriter writer(pipe.writeEnd.get(), [] {});
    EXPECT_EQ(writer.waitingBytes(), 0U);
}

TEST_F(Writer, ReportsOnceThatTheReaderIsGone) {
    std::promise<void> reported;
    std::atomic<int> times = 0;
    MessageWriter writer(pipe.writeEnd.get(), [&] {
        ++times;
        reported.set_value();
    });
    writer.send(std::string(1'000'000, 'x'));
    pipe.readEnd.close();
    EXPECT_EQ(reported.get_future().wait_for(longEnough), std::future_status::ready);
    writer.send("more");
    EXPECT_FALSE(writer.finish(longEnough));
    EXPECT_EQ(writer.waitingBytes(), 0U);
    EXPECT_EQ(times, 1);
}

}  // namespace
}  // namespace neb::test

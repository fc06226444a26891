#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <thread>

#include "Support/HygienicTest.h"

namespace neb {
namespace {

class FileDescriptorTest : public test::HygienicTest {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        ASSERT_EQ(openPipe(pipe, PipeSize::ordinary), 0);
        ASSERT_EQ(setNonBlocking(pipe.writeEnd), 0);
    }
    void TearDown() override {
        pipe = {};
        HygienicTest::TearDown();
    }

    Pipe pipe;
    const std::string moreThanThePipeHolds = std::string(1 << 20, 'x');
};

TEST_F(FileDescriptorTest, WritingFailsWhenThePipeIsFull) {
    EXPECT_EQ(writeAll(pipe.writeEnd.get(), moreThanThePipeHolds, WhenFull::fail), EAGAIN);
}

TEST_F(FileDescriptorTest, WritingWaitsForTheReader) {
    std::string received;
    std::thread reader([&] {
        char buffer[4096];
        for (ssize_t count = 0; (count = ::read(pipe.readEnd.get(), buffer, sizeof buffer)) > 0;) {
            received.append(buffer, static_cast<std::size_t>(count));
        }
    });
    EXPECT_EQ(writeAll(pipe.writeEnd.get(), moreThanThePipeHolds), 0);
    pipe.writeEnd.close();
    reader.join();
    EXPECT_EQ(received, moreThanThePipeHolds);
}

TEST_F(FileDescriptorTest, AFailureIsReturnedWithItsNumber) {
    EXPECT_EQ(writeAll(-1, "x"), EBADF);
    EXPECT_EQ(writeAll(-1, ""), 0);
}

TEST_F(FileDescriptorTest, MovingLeavesNothingBehind) {
    const int number = pipe.readEnd.get();
    FileDescriptor moved(std::move(pipe.readEnd));
    EXPECT_FALSE(pipe.readEnd.isOpen());  // NOLINT(bugprone-use-after-move): what is tested
    EXPECT_EQ(moved.get(), number);
    EXPECT_EQ(moved.close(), 0);
    EXPECT_EQ(::fcntl(number, F_GETFD), -1);
    EXPECT_EQ(moved.close(), 0) << "nothing is open";
}

}  // namespace
}  // namespace neb

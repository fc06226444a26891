#include "Platform/CapturedStream.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "Support/HygienicTest.h"

namespace neb {
namespace {

class CapturedStreamTest : public test::HygienicTest {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        ASSERT_EQ(openPipe(pipe, PipeSize::large), 0);
        ASSERT_EQ(setNonBlocking(pipe.readEnd), 0);
        stream = CapturedStream(std::move(pipe.readEnd));
    }
    void TearDown() override {
        stream = CapturedStream();
        pipe = Pipe();
        HygienicTest::TearDown();
    }
    void write(const std::string& bytes) const {
        ASSERT_EQ(::write(pipe.writeEnd.get(), bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }

    Pipe pipe;
    CapturedStream stream;
};

TEST_F(CapturedStreamTest, ReadsWhatIsAvailableAndStaysOpen) {
    write("one");
    stream.readAvailable();
    EXPECT_TRUE(stream.isOpen());
    write("two");
    stream.readAvailable();
    stream.readAvailable();
    EXPECT_TRUE(stream.isOpen());
    EXPECT_EQ(stream.takeData(), "onetwo");
}

TEST_F(CapturedStreamTest, ClosesAtTheEnd) {
    write("one");
    pipe.writeEnd.close();
    stream.readAvailable();
    EXPECT_FALSE(stream.isOpen());
    EXPECT_EQ(stream.descriptor(), -1);
    EXPECT_EQ(stream.takeData(), "one");
}

TEST_F(CapturedStreamTest, ReadsTheWholeRestThoughAnotherProcessHoldsThePipe) {
    const std::string bytes(300000, 'x');
    write(bytes);
    EXPECT_TRUE(stream.readRestAndClose());
    EXPECT_FALSE(stream.isOpen());
    EXPECT_EQ(stream.takeData(), bytes);
}

TEST_F(CapturedStreamTest, AClosedPipeWasNotHeldOpen) {
    write("rest");
    pipe.writeEnd.close();
    EXPECT_FALSE(stream.readRestAndClose());
    EXPECT_EQ(stream.takeData(), "rest");
}

TEST(CapturedStream, WithoutAPipeItIsNotOpen) {
    CapturedStream none;
    EXPECT_FALSE(none.isOpen());
    EXPECT_FALSE(none.readRestAndClose());
    EXPECT_EQ(none.takeData(), "");
}

}  // namespace
}  // namespace neb

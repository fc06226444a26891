#include "Platform/CapturedStream.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
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

TEST_F(CapturedStreamTest, KeepsTheEndsOfAnyAmountInLittleMemory) {
    CapturedStream ends(FileDescriptor(::dup(stream.descriptor())), CapturedStream::Keeping::ends);
    std::string lines;
    while (lines.size() < 300000) {
        lines += "a line in the middle\n";
    }
    write("first\n");
    std::uint64_t written = 6;
    std::size_t mostKept = 0;
    for (; written < 40000000; written += lines.size()) {
        write(lines);
        ends.readAvailable();
        mostKept = std::max(mostKept, ends.data().size());
    }
    write("last\n");
    ends.readAvailable();
    EXPECT_EQ(ends.arrived(), written + 5);
    EXPECT_LE(mostKept, 1U << 24U);
    const Data kept = ends.takeData();
    const std::string_view bytes = kept.bytes();
    EXPECT_TRUE(bytes.starts_with("first\na line"));
    EXPECT_TRUE(bytes.ends_with("middle\nlast\n"));
    EXPECT_LE(kept.size(), 1U << 23U);
    EXPECT_GE(kept.size(), (1U << 23U) - 10000);
    EXPECT_EQ((kept.size() - 11) % std::string_view("a line in the middle\n").size(), 0U)
        << "cut between lines";
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

// Shared and growing buffers.

#include "Platform/Data.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Support/Sanitizers.h"

namespace neb {
namespace {

void append(GrowingData& growing, std::string_view bytes) {
    bytes.copy(growing.roomFor(bytes.size()), bytes.size());
    growing.add(bytes.size());
}

TEST(Data, HoldsAnyBytes) {
    const std::string_view bytes("a\0\xFF\n", 4);
    EXPECT_EQ(Data(bytes).bytes(), bytes);
    EXPECT_EQ(Data(bytes).size(), 4U);
    EXPECT_FALSE(Data(bytes).empty());
    EXPECT_EQ(Data("text"), Data(std::string("text")));
    EXPECT_FALSE(Data("text") == Data("test"));
}

TEST(Data, MayBeEmpty) {
    for (const Data& data : {Data(), Data(""), Data(std::string())}) {
        EXPECT_TRUE(data.empty());
        EXPECT_EQ(data.size(), 0U);
        EXPECT_EQ(data, Data());
    }
}

TEST(Data, CopiesShareTheBytes) {
    Data data("text");
    const char* place = data.bytes().data();
    Data copy = data;
    EXPECT_EQ(copy.bytes().data(), place);
    const Data moved = std::move(data);
    EXPECT_EQ(moved.bytes().data(), place);
    copy = Data("other");
    EXPECT_EQ(moved, Data("text"));
    EXPECT_EQ(copy, Data("other"));
}

TEST(Data, ACopyOutlivesTheOriginal) {
    Data copy;
    {
        const Data data(std::string(1000000, 'x'));
        copy = data;
    }
    EXPECT_EQ(copy.bytes(), std::string(1000000, 'x'));
}

TEST(GrowingData, StartsEmpty) {
    GrowingData growing;
    EXPECT_EQ(growing.room(), 0U);
    EXPECT_TRUE(growing.data().empty());
    EXPECT_TRUE(growing.take().empty());
}

TEST(GrowingData, KeepsAllBytesAtEverySize) {
    GrowingData growing;
    std::string expected;
    for (std::size_t piece = 1; expected.size() < 3000000; piece = piece * 3 / 2 + 1) {
        const std::string bytes(piece, static_cast<char>('a' + piece % 26));
        append(growing, bytes);
        expected += bytes;
        ASSERT_EQ(growing.data().bytes(), expected);
    }
    EXPECT_EQ(growing.take().bytes(), expected);
}

TEST(GrowingData, GivesAtLeastTheRequestedRoom) {
    for (const std::size_t count : {1U, 1000U, 300000U, 5000000U}) {
        GrowingData growing;
        append(growing, "x");
        std::fill_n(growing.roomFor(count), count, 'y');
        EXPECT_GE(growing.room(), count);
        EXPECT_EQ(growing.data(), Data("x")) << "room is not content";
    }
}

TEST(GrowingData, ItsCopiesGrowWithIt) {
    GrowingData growing;
    append(growing, "a");
    const Data copy = growing.data();
    append(growing, std::string(2000000, 'b'));
    EXPECT_EQ(copy.size(), 2000001U);
    EXPECT_EQ(copy, growing.data());
}

TEST(GrowingData, IsEmptyAfterTake) {
    for (const std::size_t count : {1U, 2000000U}) {
        GrowingData growing;
        append(growing, std::string(count, 'x'));
        const Data taken = growing.take();
        EXPECT_TRUE(growing.data().empty());
        append(growing, "next");
        EXPECT_EQ(growing.take(), Data("next"));
        EXPECT_EQ(taken.bytes(), std::string(count, 'x'));
    }
}

TEST(GrowingData, RemovesTheFirstBytesAndLeavesThemToItsCopies) {
    for (const bool isShared : {false, true}) {
        for (const std::size_t count : {0U, 1U, 3U, 6U}) {
            GrowingData growing;
            append(growing, "abcdef");
            const Data copy = isShared ? growing.data() : Data();
            growing.removeFirst(count);
            EXPECT_EQ(growing.data(), Data(std::string("abcdef").substr(count)));
            append(growing, "g");
            EXPECT_EQ(growing.take(), Data(std::string("abcdefg").substr(count)));
            if (isShared && count > 0) {
                EXPECT_EQ(copy, Data("abcdef"));
            }
        }
    }
}

TEST(GrowingData, ThrowsBadAllocWithoutMemory) {
    if (test::hasSanitizer) {
        GTEST_SKIP() << "the sanitizer ends the process";
    }
    GrowingData growing;
    append(growing, "kept");
    EXPECT_THROW(static_cast<void>(growing.roomFor(std::size_t{1} << 60U)), std::bad_alloc);
    EXPECT_EQ(growing.data(), Data("kept"));
}

}  // namespace
}  // namespace neb

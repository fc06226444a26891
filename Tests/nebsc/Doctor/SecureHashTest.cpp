// The hash functions of git's files, with the examples of FIPS 180-4.

#include "Doctor/SecureHash.h"

#include <gtest/gtest.h>

namespace neb::test {
namespace {

std::string hexOf(const std::string& bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hex;
    for (const char byte : bytes) {
        hex += digits[static_cast<unsigned char>(byte) >> 4];
        hex += digits[static_cast<unsigned char>(byte) & 0xfU];
    }
    return hex;
}

TEST(SecureHash, HashesTheExamplesOfTheStandard) {
    const std::string twoBlocks = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    EXPECT_EQ(hexOf(nebsc::sha1Of("abc")), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hexOf(nebsc::sha1Of(twoBlocks)), "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
    EXPECT_EQ(hexOf(nebsc::sha256Of("abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hexOf(nebsc::sha256Of(twoBlocks)),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

TEST(SecureHash, PadsEverySize) {
    EXPECT_EQ(hexOf(nebsc::sha1Of("")), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(hexOf(nebsc::sha256Of("")),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    const std::pair<std::size_t, const char*> rows[] = {
        {55, "c1c8bbdc22796e28c0e15163d20899b65621d65a"},
        {56, "c2db330f6083854c99d4b5bfb6e8f29f201be699"},
        {63, "03f09f5b158a7a8cdad920bddc29b81c18a551f5"},
        {64, "0098ba824b5c16427bd7a1122a5a442a25ec644d"},
        {65, "11655326c708d70319be2610e8a57d9a5b959d3b"},
        {119, "ee971065aaa017e0632a8ca6c77bb3bf8b1dfc56"},
        {120, "f34c1488385346a55709ba056ddd08280dd4c6d6"},
    };
    for (const auto& [size, hash] : rows) {
        EXPECT_EQ(hexOf(nebsc::sha1Of(std::string(size, 'a'))), hash) << size;
    }
    EXPECT_EQ(hexOf(nebsc::sha1Of(std::string(1000000, 'a'))),
              "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
    EXPECT_EQ(hexOf(nebsc::sha256Of(std::string(1000000, 'a'))),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

}  // namespace
}  // namespace neb::test

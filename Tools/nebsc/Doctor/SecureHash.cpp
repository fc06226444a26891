#include "Doctor/SecureHash.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace neb::nebsc {

namespace {

constexpr std::size_t blockSize = 64;

template <std::size_t Count>
using Words = std::array<std::uint32_t, Count>;

/// Returns a schedule that begins with the words of the block; the most significant byte of a word
/// comes first.
template <std::size_t Count>
Words<Count> scheduleFor(std::string_view block) {
    Words<Count> schedule{};
    for (std::size_t i = 0; i < blockSize / 4; ++i) {
        for (const char byte : block.substr(i * 4, 4)) {
            schedule[i] = schedule[i] << 8 | static_cast<unsigned char>(byte);
        }
    }
    return schedule;
}

/// Adds the words to those of the state, modulo 2^32.
template <std::size_t Count>
void add(Words<Count>& state, const Words<Count>& words) {
    for (std::size_t i = 0; i < Count; ++i) {
        state[i] += words[i];
    }
}

/// Hashes each block of the bytes and of their padding: a bit, zeros and the number of bits.
template <std::size_t Count, typename Compress>
std::string hashOf(std::string_view bytes, Words<Count> state, Compress compress) {
    const std::size_t whole = bytes.size() / blockSize * blockSize;
    std::string padding(bytes.substr(whole));
    padding += '\x80';
    padding.append((blockSize * 2 - 8 - padding.size()) % blockSize, '\0');
    const std::uint64_t bits = static_cast<std::uint64_t>(bytes.size()) * 8;
    for (unsigned shift = 64; shift > 0; shift -= 8) {
        padding += static_cast<char>(bits >> (shift - 8) & 0xffU);
    }
    for (const std::string_view part : {bytes.substr(0, whole), std::string_view(padding)}) {
        for (std::size_t i = 0; i < part.size(); i += blockSize) {
            compress(state, part.substr(i, blockSize));
        }
    }
    std::string hash;
    for (const std::uint32_t word : state) {
        for (unsigned shift = 32; shift > 0; shift -= 8) {
            hash += static_cast<char>(word >> (shift - 8) & 0xffU);
        }
    }
    return hash;
}

// ---- SHA-1: FIPS 180-4, 6.1.2 -----------------------------------------------------------------

std::uint32_t mixed(std::size_t round, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    switch (round / 20) {
        case 0:
            return ((b & c) | (~b & d)) + 0x5a827999U;
        case 1:
            return (b ^ c ^ d) + 0x6ed9eba1U;
        case 2:
            return ((b & c) | (b & d) | (c & d)) + 0x8f1bbcdcU;
        default:
            return (b ^ c ^ d) + 0xca62c1d6U;
    }
}

void compressSHA1(Words<5>& state, std::string_view block) {
    Words<80> schedule = scheduleFor<80>(block);
    for (std::size_t i = 16; i < schedule.size(); ++i) {
        schedule[i] =
            std::rotl(schedule[i - 3] ^ schedule[i - 8] ^ schedule[i - 14] ^ schedule[i - 16], 1);
    }
    auto [a, b, c, d, e] = state;
    for (std::size_t i = 0; i < schedule.size(); ++i) {
        const std::uint32_t next = std::rotl(a, 5) + mixed(i, b, c, d) + e + schedule[i];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    add(state, Words<5>{a, b, c, d, e});
}

// ---- SHA-256: FIPS 180-4, 6.2.2 ---------------------------------------------------------------

constexpr Words<64> constants{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

void compressSHA256(Words<8>& state, std::string_view block) {
    Words<64> schedule = scheduleFor<64>(block);
    for (std::size_t i = 16; i < schedule.size(); ++i) {
        const std::uint32_t early = schedule[i - 15], late = schedule[i - 2];
        schedule[i] = schedule[i - 16] + schedule[i - 7] +
                      (std::rotr(early, 7) ^ std::rotr(early, 18) ^ early >> 3) +
                      (std::rotr(late, 17) ^ std::rotr(late, 19) ^ late >> 10);
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < schedule.size(); ++i) {
        const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                    ((e & f) ^ (~e & g)) + constants[i] + schedule[i];
        const std::uint32_t second =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    add(state, Words<8>{a, b, c, d, e, f, g, h});
}

}  // namespace

std::string sha1Of(std::string_view bytes) {
    return hashOf(bytes, Words<5>{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0},
                  compressSHA1);
}

std::string sha256Of(std::string_view bytes) {
    return hashOf(bytes,
                  Words<8>{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c,
                           0x1f83d9ab, 0x5be0cd19},
                  compressSHA256);
}

}  // namespace neb::nebsc

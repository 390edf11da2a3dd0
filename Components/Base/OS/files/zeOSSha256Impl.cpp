// SPDX-License-Identifier: MIT

#include "Base/OS/files/zeOSSha256Impl.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace zeOS {

namespace {

/// The fractions of the cube roots of the first 64 primes.
constexpr std::uint32_t roundConstants[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t fromBigEndian(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
           std::uint32_t{bytes[2]} << 8 | bytes[3];
}

void toBigEndian(std::uint64_t value, int n, unsigned char* bytes) {
    for (int i = n; i-- > 0; value >>= 8)
        bytes[i] = static_cast<unsigned char>(value);
}

} // namespace

Sha256::~Sha256() {
    explicit_bzero(state_.data(), sizeof state_);
    explicit_bzero(block_.data(), sizeof block_);
}

void Sha256::add(const void* bytes, std::size_t n) {
    const auto* from = static_cast<const unsigned char*>(bytes);
    while (n > 0) {
        const std::size_t filled = size_ % blockSize;
        const std::size_t taken = std::min(n, blockSize - filled);
        if (taken == blockSize) {
            compress(from);
        } else {
            std::memcpy(block_.data() + filled, from, taken);
            if (filled + taken == blockSize)
                compress(block_.data());
        }
        from += taken;
        n -= taken;
        size_ += taken;
    }
}

Sha256::Digest Sha256::finish() {
    // A one bit, zeros, and the length in bits at the very end of a block.
    unsigned char length[8];
    toBigEndian(size_ * 8, 8, length);
    constexpr unsigned char padding[blockSize] = {0x80};
    const std::size_t filled = size_ % blockSize;
    constexpr std::size_t room = blockSize - sizeof length;
    add(padding, (filled < room ? room : room + blockSize) - filled);
    add(length, sizeof length);

    Digest digest;
    for (std::size_t i = 0; i < state_.size(); ++i)
        toBigEndian(state_[i], 4, digest.data() + 4 * i);
    return digest;
}

void Sha256::compress(const unsigned char* block) {
    using std::rotr;
    std::uint32_t words[64];
    for (int i = 0; i < 16; ++i)
        words[i] = fromBigEndian(block + 4 * i);
    for (int i = 16; i < 64; ++i) {
        const std::uint32_t x = words[i - 15];
        const std::uint32_t y = words[i - 2];
        words[i] = words[i - 16] + (rotr(x, 7) ^ rotr(x, 18) ^ x >> 3) + words[i - 7] +
                   (rotr(y, 17) ^ rotr(y, 19) ^ y >> 10);
    }

    auto [a, b, c, d, e, f, g, h] = state_;
    for (int i = 0; i < 64; ++i) {
        const std::uint32_t t1 = h + (rotr(e, 6) ^ rotr(e, 11) ^ rotr(e, 25)) +
                                 ((e & f) ^ (~e & g)) + roundConstants[i] + words[i];
        const std::uint32_t t2 =
            (rotr(a, 2) ^ rotr(a, 13) ^ rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    const std::uint32_t sums[8] = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < 8; ++i)
        state_[i] += sums[i];
    explicit_bzero(words, sizeof words);
}

HmacSha256::HmacSha256(const void* key, std::size_t keyLength) {
    unsigned char pad[Sha256::blockSize] = {};
    if (keyLength <= sizeof pad) {
        std::memcpy(pad, key, keyLength);
    } else {
        Sha256 shortened;
        shortened.add(key, keyLength);
        Sha256::Digest digest = shortened.finish();
        std::memcpy(pad, digest.data(), digest.size());
        explicit_bzero(digest.data(), digest.size());
    }
    for (unsigned char& byte : pad)
        byte ^= 0x36;
    inner_.add(pad, sizeof pad);
    for (unsigned char& byte : pad)
        byte ^= 0x36 ^ 0x5c;
    outer_.add(pad, sizeof pad);
    explicit_bzero(pad, sizeof pad);
}

Sha256::Digest HmacSha256::finish() {
    const Sha256::Digest digest = inner_.finish();
    outer_.add(digest.data(), digest.size());
    return outer_.finish();
}

} // namespace zeOS

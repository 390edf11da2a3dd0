// SPDX-License-Identifier: MIT

/// @file
/// SHA-256 (FIPS 180-4) and the keyed digest over it, HMAC (RFC 2104). Both leave nothing of a key
/// in memory that they give back.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zeOS {

/// A digest of bytes that come piece by piece.
class Sha256 {
public:
    static constexpr std::size_t blockSize = 64;
    using Digest = std::array<unsigned char, 32>;

    Sha256() = default;
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;
    ~Sha256();

    void add(const void* bytes, std::size_t n);

    /// The digest of all that was added. Nothing may be added afterwards.
    Digest finish();

private:
    void compress(const unsigned char* block);

    std::array<std::uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                           0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<unsigned char, blockSize> block_; ///< of which the first size_ % blockSize count
    std::uint64_t size_ = 0;                     ///< bytes added
};

/// A digest that only those who have the key can make.
class HmacSha256 {
public:
    HmacSha256(const void* key, std::size_t keyLength);

    void add(const void* bytes, std::size_t n) { inner_.add(bytes, n); }

    /// As Sha256::finish().
    Sha256::Digest finish();

private:
    Sha256 inner_;
    Sha256 outer_;
};

} // namespace zeOS

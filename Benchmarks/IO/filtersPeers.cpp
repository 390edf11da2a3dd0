// SPDX-License-Identifier: MIT

// What others need for the work of filters.cpp: the checksums of zlib, and the same cipher of a
// library, one block at a time. limit_memcpy: the bandwidth of memory.

#include <xxhash.h>
#include <zlib.h>

#include "Support/Corpus.h"

#include <cryptopp/rc6.h>

namespace {

void registerChecksums(size_t n) {
    const std::string suffix = "/" + std::to_string(n);
    const auto add = [&](const std::string& peer, auto sum) {
        bench::reg("checksum/" + peer + suffix, [=](State& s) mutable {
            const std::string& bytes = bench::corpus("random", n);
            unsigned long value = 1;
            for (auto _ : s)
                value = sum(value, bytes.data(), n);
            bench::keep(value);
            bench::bytes(s, n);
        });
    };
    add("zlib_adler32", [](unsigned long a, const char* p, size_t size) {
        return adler32(a, reinterpret_cast<const Bytef*>(p), uInt(size));
    });
    add("zlib_crc32", [](unsigned long a, const char* p, size_t size) {
        return crc32(a, reinterpret_cast<const Bytef*>(p), uInt(size));
    });
    add("context_xxh3", [](unsigned long a, const char* p, size_t size) {
        return XXH3_64bits_withSeed(p, size, a);
    });
    add("limit_memcpy",
        [copy = std::string(n, '\0')](unsigned long, const char* p, size_t size) mutable {
            memcpy(copy.data(), p, size);
            benchmark::ClobberMemory();
            return 0ul;
        });
}

template<class Cipher>
void registerCipher(const std::string& name) {
    bench::reg(name, [](State& s) {
        std::string bytes = bench::corpus("random", 273 * 240);
        const CryptoPP::byte key[32] = {1, 2, 3};
        Cipher cipher(key, sizeof key);
        for (auto _ : s) {
            for (size_t at = 0; at < bytes.size(); at += 16)
                cipher.ProcessBlock(reinterpret_cast<CryptoPP::byte*>(&bytes[at]));
            benchmark::ClobberMemory();
        }
        bench::bytes(s, bytes.size());
    });
}

const bool registered = [] {
    registerChecksums(4096);
    registerChecksums(64 << 20);
    registerCipher<CryptoPP::RC6::Encryption>("encipher/cryptopp_rc6");
    registerCipher<CryptoPP::RC6::Decryption>("decipher/cryptopp_rc6");
    return true;
}();

} // namespace

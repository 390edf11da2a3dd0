// SPDX-License-Identifier: MIT

// The checksum and the cipher of the filters.
// checksum: random bytes, one block of 4096 bytes in the cache, or 64 MiB; the sum alone.
// ours_filter also frames the block and copies it into the block of the link below. encipher,
// decipher: 64 KiB as 273 frames of 240 bytes, 15 blocks each, in place. ours_plain is what
// machines without AVX2 run, ours_filter the same bytes through the filter.

#include "Base/IO/filters/ioBlockCipherImpl.h"
#include "Base/IO/ioBufferChecksum.h"
#include "Base/IO/ioBufferEncrypt.h"
#include "Support/Corpus.h"

namespace {

using namespace ioBlockCipher;

constexpr size_t frames = 273, frameSize = 240;

/// Drops what it is given.
class NullLink : public ioBuffer {
public:
    NullLink() : ioBuffer(false, 65536) {}
    int getType() override { return 100; }
    void close() override {}
    int read(char*, int) override { return 0; }
    void write(const char*, int) override {}
};

void registerChecksum(size_t n) {
    const std::string suffix = "/" + std::to_string(n);
    const auto measure = [n](State& s, ioBuffer::bufferStatus statusBelow) {
        const std::string& bytes = bench::corpus("random", n);
        ioBufferChecksum filter(false);
        auto* const sink = new NullLink;
        sink->setStatus(statusBelow);
        filter.chain(sink);
        for (auto _ : s)
            filter.write(bytes.data(), int(n));
        bench::bytes(s, n);
    };
    // A link that is not good drops its bytes at once: the sum is what remains.
    bench::reg("checksum/ours" + suffix,
               [measure](State& s) { measure(s, ioBuffer::bufferIOError); });
    bench::reg("checksum/ours_filter" + suffix,
               [measure](State& s) { measure(s, ioBuffer::bufferOK); });
}

using Transform = void (*)(char*, unsigned, const Schedule&, Kernel);

void registerCipher(const std::string& name, Transform transform, Kernel kernel) {
    bench::reg(name, [=](State& s) {
        std::string bytes = bench::corpus("random", frames * frameSize);
        Schedule schedule;
        const unsigned char key[keyBytes] = {1, 2, 3};
        expandKey(schedule, key, {0x12345679, 0x9ABCDEF1});
        for (auto _ : s) {
            for (size_t at = 0; at < bytes.size(); at += frameSize)
                transform(&bytes[at], frameSize / blockBytes, schedule, kernel);
            benchmark::ClobberMemory();
        }
        bench::bytes(s, bytes.size());
    });
}

const bool registered = [] {
    registerChecksum(4096);
    registerChecksum(64 << 20);
    registerCipher("encipher/ours", encipher, bestKernel());
    registerCipher("encipher/ours_plain", encipher, Kernel::plain);
    registerCipher("decipher/ours", decipher, bestKernel());
    registerCipher("decipher/ours_plain", decipher, Kernel::plain);
    bench::reg("encipher/ours_filter", [](State& s) {
        std::string bytes = bench::corpus("random", frames * frameSize);
        ioBufferEncrypt filter(false);
        filter.chain(new NullLink);
        for (auto _ : s)
            filter.write(bytes.data(), int(bytes.size()));
        bench::bytes(s, bytes.size());
    });
    return true;
}();

} // namespace

// SPDX-License-Identifier: MIT

// The compression filter on 16 MiB of text, of small binary records and of random bytes.
// encode, decode: from memory to memory in one stream, with the making of the tables.
// process_encode, process_decode: a whole program, from file to file; its time on the processor.

#include "Base/IO/ioBuffer.h"
#include "Support/Corpus.h"
#include "Support/MemoryLink.h"
#include "Support/Process.h"

namespace {

constexpr size_t size = 16 << 20;

std::string compressed(const std::string& bytes) {
    std::string section;
    section.reserve(2 * bytes.size());
    bench::StreamOver<ioBufferedStreamOutput> stream(new bench::MemoryLink(false, section));
    stream.compress(true);
    stream.writeData(bytes.data(), int(bytes.size()));
    stream.compress(false);
    return section;
}

void expand(std::string& section, std::string& bytes) {
    bench::StreamOver<ioBufferedStreamInput> stream(new bench::MemoryLink(true, section));
    stream.compress(true);
    bench::require(stream.readData(bytes.data(), int(bytes.size())) == int(bytes.size()),
                   "all bytes came back");
}

const bool registered = [] {
    static const bench::ScratchFile plain("compression"), packed("compression.lzw");
    for (const std::string kind : bench::corpora) {
        bench::reg("encode/ours/" + kind, [kind](State& s) {
            const std::string& bytes = bench::corpus(kind, size);
            for (auto _ : s)
                bench::keep(compressed(bytes).size());
            bench::bytes(s, size);
        });
        bench::reg("decode/ours/" + kind, [kind](State& s) {
            const std::string& bytes = bench::corpus(kind, size);
            std::string section = compressed(bytes);
            std::string result(size, '\0');
            for (auto _ : s)
                expand(section, result);
            bench::require(result == bytes, "the same bytes came back");
            bench::bytes(s, size);
        });
        bench::reg("process_encode/ours/" + kind, [kind](State& s) {
            bench::writeFile(plain.path, bench::corpus(kind, size));
            for (auto _ : s)
                s.SetIterationTime(bench::runProcess({LZW_PROGRAM}, plain.path, packed.path));
            bench::bytes(s, size);
        })->UseManualTime();
        bench::reg("process_decode/ours/" + kind, [kind](State& s) {
            bench::writeFile(plain.path, bench::corpus(kind, size));
            bench::runProcess({LZW_PROGRAM}, plain.path, packed.path);
            for (auto _ : s)
                s.SetIterationTime(bench::runProcess({LZW_PROGRAM, "-d"}, packed.path, plain.path));
            bench::bytes(s, size);
        })->UseManualTime();
    }
    return true;
}();

} // namespace

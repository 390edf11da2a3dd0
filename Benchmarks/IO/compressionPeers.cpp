// SPDX-License-Identifier: MIT

// What others need for the work of compression.cpp. The peers proper write the same family of
// format, with 16 bits and clearing: the program compress, and a library's filter. Newer formats
// are context. limit_backreference: strings as places in the output, copied forward from there.

#include <archive.h>
#include <archive_entry.h>
#include <lz4.h>
#include <zlib.h>

#include "Support/Corpus.h"
#include "Support/Process.h"

namespace {

constexpr size_t size = 16 << 20;

std::string archiveEncode(const std::string& in) {
    std::string out(in.size() * 2 + 4096, '\0');
    size_t used = 0;
    archive* a = archive_write_new();
    archive_write_set_format_raw(a);
    archive_write_add_filter_compress(a);
    archive_write_set_bytes_in_last_block(a, 1);
    archive_write_open_memory(a, out.data(), out.size(), &used);
    archive_entry* e = archive_entry_new();
    archive_entry_set_pathname(e, "x");
    archive_entry_set_filetype(e, AE_IFREG);
    archive_write_header(a, e);
    for (size_t i = 0; i < in.size(); i += 4096)
        archive_write_data(a, &in[i], std::min<size_t>(4096, in.size() - i));
    archive_entry_free(e);
    archive_write_close(a);
    archive_write_free(a);
    out.resize(used);
    return out;
}

void archiveDecode(const std::string& section, std::string& out) {
    archive* a = archive_read_new();
    archive_read_support_filter_compress(a);
    archive_read_support_format_raw(a);
    archive_read_open_memory(a, section.data(), section.size());
    archive_entry* e;
    archive_read_next_header(a, &e);
    size_t n = 0;
    la_ssize_t k;
    while ((k = archive_read_data(a, &out[n], std::min<size_t>(65536, out.size() - n))) > 0)
        n += size_t(k);
    archive_read_free(a);
    bench::require(n == out.size(), "all bytes came back");
}

/// `out` has 16 bytes to spare.
size_t backreferenceDecode(const std::string& section, char* out) {
    static uint32_t pos[65536], len[65536];
    const auto* p = reinterpret_cast<const uint8_t*>(section.data());
    uint64_t bit = 24, group = 24, end = section.size() * 8;
    uint32_t bits = 9, maxCode = 511, freeCode = 257, oldPos = 0, oldLen = 0;
    char* o = out;
    bool first = true;
    const auto align = [&] {
        const uint64_t g = bits * 8;
        bit = group + (bit - group + g - 1) / g * g;
        group = bit;
    };
    while (bit + bits <= end) {
        if (freeCode > maxCode && bits < 16) {
            align();
            ++bits;
            maxCode = bits == 16 ? 65536 : (1u << bits) - 1;
        }
        uint32_t x = 0;
        memcpy(&x, p + (bit >> 3), std::min<size_t>(4, section.size() - (bit >> 3)));
        const uint32_t c = (x >> (bit & 7)) & ((1u << bits) - 1);
        bit += bits;
        if (c == 256) {
            align();
            bits = 9;
            maxCode = 511;
            freeCode = 256;
            first = false;
            oldLen = 0;
            continue;
        }
        char* const s = o;
        uint32_t n = 1;
        if (c < 256) {
            *o = char(c);
        } else {
            n = c < freeCode ? len[c] : oldLen + 1;
            const char* from = out + (c < freeCode ? pos[c] : oldPos);
            if (o - from >= 16)
                for (uint32_t i = 0; i < n; i += 16)
                    memcpy(o + i, from + i, 16);
            else
                for (uint32_t i = 0; i < n; ++i)
                    o[i] = from[i];
        }
        o += n;
        if (!first && freeCode < 65536) {
            pos[freeCode] = oldPos;
            len[freeCode] = oldLen + 1;
            ++freeCode;
        }
        first = false;
        oldPos = uint32_t(s - out);
        oldLen = n;
    }
    return size_t(o - out);
}

template<class Decode>
void measureDecoding(State& s, const std::string& kind, Decode decode) {
    std::string out(size + 16, '\0');
    for (auto _ : s)
        decode(out);
    bench::require(out.compare(0, size, bench::corpus(kind, size)) == 0, "the bytes came back");
    bench::bytes(s, size);
}

void registerMemory(const std::string& kind) {
    bench::reg("encode/libarchive/" + kind, [kind](State& s) {
        for (auto _ : s)
            bench::keep(archiveEncode(bench::corpus(kind, size)).size());
        bench::bytes(s, size);
    });
    bench::reg("decode/libarchive/" + kind, [kind](State& s) {
        const std::string section = archiveEncode(bench::corpus(kind, size));
        measureDecoding(s, kind, [&](std::string& out) {
            out.resize(size);
            archiveDecode(section, out);
        });
    });
    bench::reg("decode/limit_backreference/" + kind, [kind](State& s) {
        const std::string section = archiveEncode(bench::corpus(kind, size));
        measureDecoding(s, kind, [&](std::string& out) {
            bench::require(backreferenceDecode(section, out.data()) == size, "all bytes");
        });
    });
    const auto deflated = [kind] {
        std::string out(compressBound(size), '\0');
        uLongf n = out.size();
        const std::string& in = bench::corpus(kind, size);
        compress2(reinterpret_cast<Bytef*>(out.data()), &n,
                  reinterpret_cast<const Bytef*>(in.data()), in.size(), 1);
        out.resize(n);
        return out;
    };
    bench::reg("encode/context_zlib_1/" + kind, [deflated](State& s) {
        for (auto _ : s)
            bench::keep(deflated().size());
        bench::bytes(s, size);
    });
    bench::reg("decode/context_zlib/" + kind, [kind, deflated](State& s) {
        const std::string section = deflated();
        measureDecoding(s, kind, [&](std::string& out) {
            uLongf n = out.size();
            uncompress(reinterpret_cast<Bytef*>(out.data()), &n,
                       reinterpret_cast<const Bytef*>(section.data()), section.size());
        });
    });
    const auto lz4 = [kind] {
        std::string out(size_t(LZ4_compressBound(size)), '\0');
        out.resize(size_t(LZ4_compress_default(bench::corpus(kind, size).data(), out.data(), size,
                                               int(out.size()))));
        return out;
    };
    bench::reg("encode/context_lz4/" + kind, [lz4](State& s) {
        for (auto _ : s)
            bench::keep(lz4().size());
        bench::bytes(s, size);
    });
    bench::reg("decode/context_lz4/" + kind, [kind, lz4](State& s) {
        const std::string section = lz4();
        measureDecoding(s, kind, [&](std::string& out) {
            LZ4_decompress_safe(section.data(), out.data(), int(section.size()), size);
        });
    });
}

void registerProcesses(const std::string& kind) {
    static const bench::ScratchFile plain("compression.peers"), packed("compression.peers.z");
    using Command = std::vector<const char*>;
    const struct {
        const char* name;
        Command encode, decode;
    } programs[] = {
        {"ncompress", {"compress", "-c", "-f", "-b", "16"}, {"compress", "-d", "-c"}},
        {"context_gzip_1", {"gzip", "-1", "-c"}, {"gzip", "-d", "-c"}},
    };
    for (const auto& program : programs) {
        const std::string name = std::string("/") + program.name + '/' + kind;
        bench::reg("process_encode" + name, [kind, program](State& s) {
            bench::writeFile(plain.path, bench::corpus(kind, size));
            for (auto _ : s)
                s.SetIterationTime(bench::runProcess(program.encode, plain.path, packed.path));
            bench::bytes(s, size);
        })->UseManualTime();
        bench::reg("process_decode" + name, [kind, program](State& s) {
            bench::writeFile(plain.path, bench::corpus(kind, size));
            bench::runProcess(program.encode, plain.path, packed.path);
            for (auto _ : s)
                s.SetIterationTime(bench::runProcess(program.decode, packed.path, plain.path));
            bench::bytes(s, size);
        })->UseManualTime();
    }
}

const bool registered = [] {
    for (const char* kind : bench::corpora) {
        registerMemory(kind);
        registerProcesses(kind);
    }
    return true;
}();

} // namespace

// SPDX-License-Identifier: MIT

/// @file
/// What the peers of packet files share, binary and text: the rows `small_write` and `small_read`,
/// in text also `short_write` and `short_read`, of records whose numbers are short.
/// A peer is a Writer and a Reader, made from the path of a file, with put(const Rec&) and
/// get(Rec&).

#pragma once

#include "Support/Workload.h"

namespace peers {

using bench::Rec;

constexpr size_t recordCount = 200'000;
constexpr size_t blockSize = 262'144;

/// A C stream with the block of the library's own sink.
struct StdioFile {
    StdioFile(const std::string& path, const char* mode) : file(fopen(path.c_str(), mode)) {
        setvbuf(file, nullptr, _IOFBF, blockSize);
    }
    ~StdioFile() { fclose(file); }
    StdioFile(const StdioFile&) = delete;
    StdioFile& operator=(const StdioFile&) = delete;

    FILE* const file;
};

/// A descriptor, to read or to write.
struct DescriptorFile {
    static constexpr int forWriting = O_WRONLY | O_CREAT | O_TRUNC;

    DescriptorFile(const std::string& path, int flags) : fd(open(path.c_str(), flags, 0666)) {}
    ~DescriptorFile() { close(fd); }
    DescriptorFile(const DescriptorFile&) = delete;
    DescriptorFile& operator=(const DescriptorFile&) = delete;

    void write(const char* bytes, size_t n) {
        bench::require(::write(fd, bytes, n) == ssize_t(n), "bytes were written");
    }

    const int fd;
};

/// Calls `f` with each value of a record, in the order in which they lie in a file.
template<class Record, class F>
void eachField(Record& r, F&& f) {
    f(r.id);
    f(r.x);
    f(r.y);
    f(r.z);
    f(r.w);
    f(r.kind);
    f(r.flag);
    f(r.name);
    f(r.ref);
}

/// A workload's records, by their number.
using Records = const std::vector<Rec>& (*)(size_t);

template<class Writer>
void writeRecords(const std::string& path, Records records) {
    Writer writer(path);
    for (const Rec& r : records(recordCount))
        writer.put(r);
}

/// Sums two values of each record, so that no record can be skipped.
template<class Reader>
double readRecords(const std::string& path) {
    Reader reader(path);
    Rec r;
    double sum = 0;
    for (size_t i = 0; i < recordCount; ++i) {
        reader.get(r);
        sum += r.id + r.x;
        bench::keep(r);
    }
    return sum;
}

template<class Writer>
void regWriting(const std::string& peer, const std::string& path,
                const std::string& row = "small_write/", Records records = bench::recs) {
    bench::reg(row + peer, [path, records](State& s) {
        for (auto _ : s)
            writeRecords<Writer>(path, records);
        bench::items(s, recordCount);
    });
}

template<class Writer, class Reader>
void regReading(const std::string& peer, const std::string& path,
                const std::string& row = "small_read/", Records records = bench::recs) {
    bench::reg(row + peer, [path, records](State& s) {
        double expected = 0;
        for (const Rec& r : records(recordCount))
            expected += r.id + r.x;
        writeRecords<Writer>(path, records);
        bench::require(std::abs(readRecords<Reader>(path) / expected - 1) < 1e-12,
                       "all records came back");
        for (auto _ : s)
            bench::keep(readRecords<Reader>(path));
        bench::items(s, recordCount);
    });
}

} // namespace peers

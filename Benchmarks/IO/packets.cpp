// SPDX-License-Identifier: MIT

// Binary packet files.
// small: 200,000 records of nine values, one packet each, to and from one file. Timed: open, header
// and
//   registry, every record value by value, the end packet, close.
// array: 8 packets of one million doubles each (64 MB), from and into one caller's array.
// array_swap: the same read from a file of the other byte order.
// Reading yields every value of a record and sums two, so that nothing can be skipped.

#include "Support/RecordFile.h"
#include "Support/Workload.h"

namespace {

constexpr size_t arrayLength = 1 << 20;
constexpr size_t arrayCount = 8;

const bench::ScratchFile scratch("packets");

class ArrayType : public ioPacketType {
public:
    ArrayType() : ioPacketType("array"), values(arrayLength) {}

    void read(ioClientReadContext& context) override {
        context.readDoubleArray(values.data(), int(arrayLength));
        ++count;
    }

    std::vector<double> values;
    size_t count = 0;
};

const std::vector<double>& array() {
    static const std::vector<double> values = bench::doubles(arrayLength);
    return values;
}

void writeArrays() {
    bench::writeFile<ArrayType>(scratch.path, ioWriteBinary,
                                [](ioWriteContext& context, const ioPacketType* type) {
                                    for (size_t i = 0; i < arrayCount; ++i) {
                                        context.startPacket(type, nullptr);
                                        context.writeDoubleArray(array().data(), int(arrayLength));
                                        context.endPacket();
                                    }
                                });
}

/// The file of writeArrays() as a machine of the other byte order would have written it.
void writeSwappedArrays() {
    FILE* file = std::fopen(scratch.path.c_str(), "wb");
    std::fputs("^@\n1\n0 1 1\n1 2 4 8 4 8 8\n@\n   0 packetFile_string\n   1 packetFile_EOF\n   2 "
               "array\n@\n",
               file);
    const auto put32 = [file](uint32_t value) {
        value = __builtin_bswap32(value);
        std::fwrite(&value, 4, 1, file);
    };
    for (size_t i = 0; i < arrayCount; ++i) {
        for (uint32_t head : {2u, 0u, uint32_t(arrayLength * 8)})
            put32(head);
        for (double d : array()) {
            uint64_t bits;
            std::memcpy(&bits, &d, 8);
            bits = __builtin_bswap64(bits);
            std::fwrite(&bits, 8, 1, file);
        }
    }
    for (uint32_t head : {1u, 0u, 0u})
        put32(head);
    std::fclose(file);
}

void readArrays() {
    bench::readFile<ArrayType>(scratch.path, [](const ArrayType& type) {
        bench::require(type.count == arrayCount && type.values == array(), "all arrays came back");
    });
}

/// Comparing the arrays belongs to the verification, not to what is timed.
void readArraysTimed() {
    bench::readFile<ArrayType>(scratch.path,
                               [](const ArrayType& type) { bench::keep(type.values[5]); });
}

const bool registered = [] {
    bench::reg("small_write/ours", [](State& s) {
        for (auto _ : s)
            bench::writeRecords(scratch.path, ioWriteBinary);
        bench::items(s, bench::recordCount);
    });
    bench::reg("small_read/ours", [](State& s) {
        bench::writeRecords(scratch.path, ioWriteBinary);
        for (auto _ : s)
            bench::readRecords(scratch.path);
        bench::items(s, bench::recordCount);
    });
    bench::reg("array_write/ours", [](State& s) {
        for (auto _ : s)
            writeArrays();
        bench::bytes(s, arrayLength * arrayCount * 8);
    });
    bench::reg("array_read/ours", [](State& s) {
        writeArrays();
        readArrays();
        for (auto _ : s)
            readArraysTimed();
        bench::bytes(s, arrayLength * arrayCount * 8);
    });
    bench::reg("array_read/ours_swapped", [](State& s) {
        writeSwappedArrays();
        readArrays();
        for (auto _ : s)
            readArraysTimed();
        bench::bytes(s, arrayLength * arrayCount * 8);
    });
    return true;
}();

} // namespace

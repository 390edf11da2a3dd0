// SPDX-License-Identifier: MIT

/// @file
/// The compression as it is defined, step by step, with nothing done for speed. What the filter
/// writes must be the same to the last bit.

#pragma once

#include <string>
#include <string_view>
#include <vector>

class CompressTwinWriter {
public:
    /// A whole section that holds `input`.
    static std::string section(std::string_view input) {
        CompressTwinWriter writer;
        writer.compress(input);
        writer.output(writer.currentCode);
        writer.output(257);
        if (writer.bitOffset > 0)
            writer.writeGroup();
        return writer.out;
    }

    /// How often the string of two zero bytes was forgotten in the last section.
    static inline int forgotten;

private:
    __extension__ using Bits = unsigned __int128;

    void compress(std::string_view input) {
        forgotten = 0;
        if (input.empty())
            return;
        out = "\x1f\x9d\x90";
        currentCode = static_cast<unsigned char>(input[0]);
        for (inCount = 2; inCount <= int(input.size()); ++inCount) {
            const int c = static_cast<unsigned char>(input[size_t(inCount - 1)]);
            const int key = (c << 16) + currentCode;
            int i = (c << 8) ^ currentCode;
            if (hashTable[size_t(i)] != key && hashTable[size_t(i)] >= 0) {
                const int step = i == 0 ? 1 : 69001 - i;
                do {
                    i -= step;
                    if (i < 0)
                        i += 69001;
                } while (hashTable[size_t(i)] != key && hashTable[size_t(i)] > 0);
            }
            if (hashTable[size_t(i)] == key) {
                currentCode = codeTable[size_t(i)];
                continue;
            }
            output(currentCode);
            currentCode = c;
            if (freeCode < 65536) {
                forgotten += hashTable[size_t(i)] == 0;
                codeTable[size_t(i)] = freeCode++;
                hashTable[size_t(i)] = key;
            } else if (inCount >= checkPoint) {
                checkRatio();
            }
        }
    }

    void checkRatio() {
        checkPoint = inCount + 10000;
        const int r = inCount < 8388608 ? (inCount << 8) / outCount : inCount / (outCount >> 8);
        if (r > ratio) {
            ratio = r;
            return;
        }
        ratio = 0;
        hashTable.assign(69001, -1);
        freeCode = 258;
        clearFlag = true;
        output(256);
    }

    void output(int code) {
        // Bits of the group that no code covers keep what they held before.
        const Bits mask = ((Bits(1) << codeBits) - 1) << bitOffset;
        group = (group & ~mask) | Bits(unsigned(code)) << bitOffset;
        bitOffset += codeBits;
        const int maxCode = codeBits == 16 ? 65536 : (1 << codeBits) - 1;
        const bool widthChanges = freeCode > maxCode || clearFlag;
        if (bitOffset == codeBits * 8 || widthChanges)
            writeGroup();
        if (!widthChanges)
            return;
        codeBits = clearFlag ? 9 : codeBits + 1;
        clearFlag = false;
    }

    void writeGroup() {
        out.append(reinterpret_cast<const char*>(&group), size_t(codeBits));
        outCount += codeBits;
        bitOffset = 0;
    }

    std::string out;
    int codeBits = 9;
    int freeCode = 258;
    bool clearFlag = false;
    int bitOffset = 0;
    Bits group = 0;
    int ratio = 0;
    int checkPoint = 10000;
    int currentCode = 0;
    int inCount = 0;
    int outCount = 0;
    std::vector<int> hashTable = std::vector<int>(69001, -1);
    std::vector<int> codeTable = std::vector<int>(69001);
};

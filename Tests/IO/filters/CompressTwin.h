// SPDX-License-Identifier: MIT

/// @file
/// The compression as it is defined, step by step, with nothing done for speed. What the filter
/// writes and reads must be the same to the last bit.

#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

/// What writer and reader share: the width of codes, and the group. Bits of the group that no code
/// covers keep what they held before.
class CompressTwin {
protected:
    __extension__ using Bits = unsigned __int128;

    int maxCode() const { return codeBits == 16 ? 65536 : (1 << codeBits) - 1; }
    Bits mask() const { return ((Bits(1) << codeBits) - 1) << bitOffset; }
    void changeWidth() {
        codeBits = clearFlag ? 9 : codeBits + 1;
        clearFlag = false;
    }

    int codeBits = 9;
    int freeCode = 258;
    bool clearFlag = false;
    int bitOffset = 0;
    Bits group = 0;
};

class CompressTwinWriter : CompressTwin {
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
        group = (group & ~mask()) | Bits(unsigned(code)) << bitOffset;
        bitOffset += codeBits;
        const bool widthChanges = freeCode > maxCode() || clearFlag;
        if (bitOffset == codeBits * 8 || widthChanges)
            writeGroup();
        if (widthChanges)
            changeWidth();
    }

    void writeGroup() {
        out.append(reinterpret_cast<const char*>(&group), size_t(codeBits));
        outCount += codeBits;
        bitOffset = 0;
    }

    std::string out;
    int ratio = 0;
    int checkPoint = 10000;
    int currentCode = 0;
    int inCount = 0;
    int outCount = 0;
    std::vector<int> hashTable = std::vector<int>(69001, -1);
    std::vector<int> codeTable = std::vector<int>(69001);
};

class CompressTwinReader : CompressTwin {
public:
    struct Result {
        std::string bytes;
        bool complete;   ///< Ended by its end code.
        size_t consumed; ///< Of the section.
    };

    static Result read(std::string_view section) {
        CompressTwinReader reader(section);
        const bool complete = reader.uncompress();
        return {reader.out, complete, reader.at};
    }

private:
    explicit CompressTwinReader(std::string_view section) : in(section) {
        for (size_t c = 0; c < 256; ++c)
            suffixTable[c] = static_cast<unsigned char>(c);
    }

    bool uncompress() {
        if (!in.starts_with("\x1f\x9d\x90"))
            return false;
        int oldCode = getcode();
        int finChar = oldCode;
        if (oldCode < 0 || oldCode == 257)
            return oldCode == 257;
        out += static_cast<char>(finChar);
        for (;;) {
            int code = getcode();
            if (code == 256) {
                clearFlag = true;
                freeCode = 257;
                code = getcode();
            }
            if (code < 0 || code == 257)
                return code == 257;
            std::string stack;
            int c = code;
            if (c >= freeCode) {
                stack += static_cast<char>(finChar);
                c = oldCode;
            }
            for (; c > 255 && stack.size() < 65536; c = prefixTable[size_t(c)])
                stack += static_cast<char>(suffixTable[size_t(c)]);
            if (stack.size() == 65536)
                return false;
            finChar = suffixTable[size_t(c)];
            stack += static_cast<char>(finChar);
            out.append(stack.rbegin(), stack.rend());
            if (freeCode < 65536) {
                prefixTable[size_t(freeCode)] = oldCode;
                suffixTable[size_t(freeCode)] = static_cast<unsigned char>(finChar);
                ++freeCode;
            }
            oldCode = code;
        }
    }

    int getcode() {
        const bool widthChanges = freeCode > maxCode() || clearFlag;
        if (widthChanges)
            changeWidth();
        if (widthChanges || bitOffset >= groupBits) {
            const std::string_view bytes = in.substr(at, size_t(codeBits));
            std::memcpy(&group, bytes.data(), bytes.size());
            at += bytes.size();
            bitOffset = 0;
            groupBits = static_cast<int>(bytes.size()) * 8 + 1 - codeBits;
            if (groupBits <= 0)
                return -1;
        }
        const auto code = static_cast<int>((group & mask()) >> bitOffset);
        bitOffset += codeBits;
        return code;
    }

    std::string_view in;
    size_t at = 3;
    std::string out;
    int groupBits = 0;
    std::vector<int> prefixTable = std::vector<int>(69001);
    std::vector<unsigned char> suffixTable = std::vector<unsigned char>(69001);
};

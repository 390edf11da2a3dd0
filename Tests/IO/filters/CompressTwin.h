// SPDX-License-Identifier: MIT

/// @file
/// The compression as it is defined, step by step and byte by byte, with nothing done for speed.
/// What the filter writes and reads must be the same to the last bit.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What writer and reader share: the width of codes and the group.
class CompressTwin {
protected:
    void widen() {
        ++codeBits;
        maxCode = codeBits == 16 ? 65536 : (1 << codeBits) - 1;
    }
    void narrow() {
        codeBits = 9;
        maxCode = 511;
        clearFlag = false;
    }

    int codeBits = 9;
    int maxCode = 511;
    int freeCode = 258;
    bool clearFlag = false;
    int bitOffset = 0;
    std::vector<bool> group = std::vector<bool>(128);
};

class CompressTwinWriter : CompressTwin {
public:
    /// A whole section that holds `input`.
    static std::string section(std::string_view input) {
        CompressTwinWriter writer;
        writer.compress(input);
        writer.output(writer.currentCode);
        writer.output(257);
        writer.output(-1);
        return writer.out;
    }

    /// How often the string of two zero bytes was forgotten in the last section.
    static inline int forgotten;

private:
    void compress(std::string_view input) {
        forgotten = 0;
        bool first = true;
        for (const char next : input) {
            const int c = static_cast<unsigned char>(next);
            ++inCount;
            if (first) {
                out = "\x1f\x9d\x90";
                currentCode = c;
                first = false;
                continue;
            }
            const int key = (c << 16) + currentCode;
            int i = (c << 8) ^ currentCode;
            if (hashTable[size_t(i)] == key) {
                currentCode = codeTable[size_t(i)];
                continue;
            }
            if (hashTable[size_t(i)] >= 0) {
                const int step = i == 0 ? 1 : 69001 - i;
                do {
                    i -= step;
                    if (i < 0)
                        i += 69001;
                } while (hashTable[size_t(i)] != key && hashTable[size_t(i)] > 0);
                if (hashTable[size_t(i)] == key) {
                    currentCode = codeTable[size_t(i)];
                    continue;
                }
            }
            output(currentCode);
            currentCode = c;
            if (freeCode < 65536) {
                forgotten += hashTable[size_t(i)] == 0;
                codeTable[size_t(i)] = static_cast<unsigned short>(freeCode++);
                hashTable[size_t(i)] = key;
            } else if (inCount >= checkPoint) {
                checkRatio();
            }
        }
    }

    void checkRatio() {
        checkPoint = inCount + 10000;
        int r;
        if (inCount < 8388608)
            r = (inCount << 8) / outCount;
        else
            r = outCount >> 8 == 0 ? 2147483647 : inCount / (outCount >> 8);
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
        if (code < 0) {
            if (bitOffset > 0)
                writeGroup();
            outCount += codeBits;
            bitOffset = 0;
            return;
        }
        for (int bit = 0; bit < codeBits; ++bit)
            group[size_t(bitOffset + bit)] = code >> bit & 1;
        bitOffset += codeBits;
        if (bitOffset == codeBits * 8) {
            outCount += codeBits;
            writeGroup();
            bitOffset = 0;
        }
        if (freeCode > maxCode || clearFlag) {
            if (bitOffset > 0) {
                writeGroup();
                outCount += codeBits;
            }
            bitOffset = 0;
            if (clearFlag)
                narrow();
            else
                widen();
        }
    }

    void writeGroup() {
        for (int byte = 0; byte < codeBits; ++byte) {
            int value = 0;
            for (int bit = 0; bit < 8; ++bit)
                value |= group[size_t(8 * byte + bit)] << bit;
            out += static_cast<char>(value);
        }
    }

    std::string out;
    int ratio = 0;
    int checkPoint = 10000;
    int currentCode = 0;
    int inCount = 0;
    int outCount = 0;
    std::vector<int> hashTable = std::vector<int>(69001, -1);
    std::vector<unsigned short> codeTable = std::vector<unsigned short>(69001);
};

class CompressTwinReader : CompressTwin {
public:
    enum End { atEndCode, broken };
    struct Result {
        std::string bytes;
        End end;
        size_t consumed; ///< Of the section.
    };

    static Result read(std::string_view section) {
        CompressTwinReader reader(section);
        const End end = reader.uncompress();
        return {reader.out, end, reader.at};
    }

private:
    explicit CompressTwinReader(std::string_view section) : in(section) {
        for (int c = 0; c < 256; ++c)
            suffixTable[size_t(c)] = static_cast<unsigned char>(c);
    }

    End uncompress() {
        at = 3;
        if (in.substr(0, 3) != "\x1f\x9d\x90")
            return broken;
        int oldCode = getcode();
        int finChar = oldCode;
        if (oldCode < 0 || oldCode == 257)
            return oldCode == 257 ? atEndCode : broken;
        out += static_cast<char>(finChar);
        for (;;) {
            int code = getcode();
            if (code == 256) {
                clearFlag = true;
                freeCode = 257;
                code = getcode();
            }
            if (code < 0 || code == 257)
                return code == 257 ? atEndCode : broken;
            std::string stack;
            int c = code;
            if (c >= freeCode) {
                stack += static_cast<char>(finChar);
                c = oldCode;
            }
            for (; c > 255 && stack.size() <= 65536; c = prefixTable[size_t(c)])
                stack += static_cast<char>(suffixTable[size_t(c)]);
            finChar = suffixTable[size_t(c)];
            stack += static_cast<char>(finChar);
            if (stack.size() > 65536)
                return broken;
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
        if (clearFlag || bitOffset >= groupBits || freeCode > maxCode) {
            if (freeCode > maxCode)
                widen();
            if (clearFlag)
                narrow();
            const std::string_view bytes = in.substr(at, size_t(codeBits));
            at += bytes.size();
            for (size_t bit = 0; bit < 8 * bytes.size(); ++bit)
                group[bit] = bytes[bit / 8] >> (bit % 8) & 1;
            bitOffset = 0;
            groupBits = static_cast<int>(bytes.size()) * 8 + 1 - codeBits;
            if (groupBits <= 0)
                return -1;
        }
        int code = 0;
        for (int bit = 0; bit < codeBits; ++bit)
            code |= group[size_t(bitOffset + bit)] << bit;
        bitOffset += codeBits;
        return code;
    }

    std::string_view in;
    size_t at = 0;
    std::string out;
    int groupBits = 0;
    std::vector<int> prefixTable = std::vector<int>(69001);
    std::vector<unsigned char> suffixTable = std::vector<unsigned char>(69001);
};

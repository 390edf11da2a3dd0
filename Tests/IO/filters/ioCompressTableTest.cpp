// SPDX-License-Identifier: MIT

#include <map>
#include <memory>

#include <gtest/gtest.h>

#include "Base/IO/filters/ioCompressTableImpl.h"

namespace {

using Table = ioCompressTableImpl;

/// The code of three bytes, the first two of which make `pair`; 0 if the table has no such string.
unsigned codeOf(Table& table, unsigned pair, unsigned byte, Table::Match& prefix) {
    prefix = Table::Match::ofByte(pair >> 8);
    Table::Match match = prefix;
    if (!table.extend(match, pair & 0xFF))
        return 0;
    prefix = match;
    return table.extend(match, byte) ? match.code : 0;
}

} // namespace

// Strings of two bytes whose places, mixed, are neighbours, and third bytes that keep them so:
// longer rows than the quick table can hold.
TEST(CompressTable, KnowsStringsWhosePlacesCoincide) {
    const auto mixed = [](unsigned pair) {
        return ((1u << 17) + 128 + pair) * 0x9E3B % (1u << 17);
    };
    const auto shift = [](unsigned byte) { return byte * 0x9E3779B1 >> 15; };
    const auto table = std::make_unique<Table>();
    std::map<std::pair<unsigned, unsigned>, unsigned> strings;
    unsigned newCode = 258;
    Table::Match prefix;
    for (unsigned pair = 0; pair < 1 << 16; ++pair) {
        if (mixed(pair) >= 1024)
            continue;
        ASSERT_EQ(codeOf(*table, pair, 0, prefix), 0u);
        table->add(prefix, pair & 0xFF, newCode++);
        for (unsigned byte = 0; byte < 256; ++byte) {
            if (shift(byte) >= 1024)
                continue;
            ASSERT_EQ(codeOf(*table, pair, byte, prefix), 0u);
            table->add(prefix, byte, newCode);
            strings[{pair, byte}] = newCode++;
        }
        for (const auto& [string, code] : strings)
            ASSERT_EQ(codeOf(*table, string.first, string.second, prefix), code);
    }
}

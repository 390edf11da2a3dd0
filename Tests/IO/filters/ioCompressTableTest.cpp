// SPDX-License-Identifier: MIT

#include <map>
#include <memory>

#include <gtest/gtest.h>

#include "Base/IO/filters/ioCompressTableImpl.h"

// Codes whose places are neighbours, and three bytes that bring them to the same places: longer
// rows than the quick table can hold.
TEST(CompressTable, KnowsStringsWhosePlacesCoincide) {
    unsigned inverse = 1;
    while (inverse * 0x9E3B % 65536 != 1)
        inverse += 2;
    const auto table = std::make_unique<ioCompressTableImpl>();
    std::map<std::pair<unsigned, unsigned>, unsigned> strings;
    for (const unsigned byte : {1u, 1u + 144, 1u + 233}) {
        for (unsigned i = 0; i < 4096; ++i) {
            const unsigned code = i * inverse % 65536;
            const unsigned newCode = 258 + static_cast<unsigned>(strings.size());
            if (code < 258)
                continue;
            ASSERT_EQ(table->find(code, byte), 0u);
            table->add(code, byte, newCode);
            strings[{code, byte}] = newCode;
        }
    }
    for (const auto& [string, code] : strings)
        ASSERT_EQ(table->find(string.first, string.second), code);
}

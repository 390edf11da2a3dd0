// SPDX-License-Identifier: MIT

#include <map>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "Base/IO/filters/ioCompressTableImpl.h"

namespace {

using Strings = std::map<std::pair<unsigned, unsigned>, unsigned>;

/// Adds strings with the codes from 258 on, and then knows all of them and no others.
class Table : public testing::Test {
protected:
    void add(unsigned code, unsigned byte) {
        const unsigned newCode = 258 + static_cast<unsigned>(strings.size());
        if (newCode > 65535 || !strings.insert({{code, byte}, newCode}).second)
            return;
        ASSERT_EQ(table->find(code, byte), 0u);
        table->add(code, byte, newCode);
    }

    void expectAll() {
        for (const auto& [string, code] : strings)
            ASSERT_EQ(table->find(string.first, string.second), code);
        for (unsigned code = 0; code < 65536; ++code)
            if (!strings.count({code, code % 251})) {
                ASSERT_EQ(table->find(code, code % 251), 0u);
            }
    }

    std::unique_ptr<ioCompressTableImpl> table = std::make_unique<ioCompressTableImpl>();
    Strings strings;
};

TEST_F(Table, KnowsWhatWasAdded) {
    std::minstd_rand random(1);
    for (int round = 0; round < 2; ++round) {
        while (strings.size() < 65536 - 258)
            add(static_cast<unsigned>(random() % 65536), static_cast<unsigned>(1 + random() % 255));
        expectAll();
        table->clear();
        strings.clear();
    }
}

// Codes whose places are neighbours, and three bytes that bring them to the same places: longer
// rows than the quick table bears.
TEST_F(Table, KnowsWhatFallsTogether) {
    unsigned inverse = 1;
    while (inverse * 0x9E3B % 65536 != 1)
        inverse += 2;
    for (const unsigned byte : {1u, 1u + 144, 1u + 233})
        for (unsigned i = 0; i < 4096; ++i)
            if (const unsigned code = i * inverse % 65536; code > 257)
                add(code, byte);
    expectAll();
}

} // namespace

// SPDX-License-Identifier: MIT

#include <string>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringTableStringTable.h"

using zeString::IString;
using zeStringTable::Key;
using zeStringTable::StringTable;

TEST(StringTableKey, HasASetAndAnId) {
    const struct {
        zeString::CString text;
        bool valid;
        bool pair;
        const char* set;
        const char* id;
    } rows[] = {
        {"S_1._2", true, true, "S_1", "_2"},
        {"a.b.", true, true, "a", "b"}, // one full stop at the end does not count
        {".b", false, true, "", "b"},
        {"a..", false, true, "a", ""},
        {"a.", false, false, "", ""},
        {"", false, false, "", ""},
        {"a.b.c", false, false, "", ""},
        {"a-b.c", false, true, "a-b", "c"},
        {"a.b\xC3\xA4", false, true, "a", "b\xC3\xA4"},
        {zeString::CString("a\0.b", 4), false, true, "a", "b"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text.asChar());
        zeString::CString set("before");
        zeString::CString id("before");
        EXPECT_EQ(Key::isValidKeyString(row.text), row.valid);
        EXPECT_EQ(Key(row.text).getSubParts(set, id), row.pair);
        EXPECT_STREQ(set.asChar(), row.set);
        EXPECT_STREQ(id.asChar(), row.id);
    }
    EXPECT_LT(Key("a.b"), Key("a_.b")); // "." before "_"
    EXPECT_LT(Key("a.z").compareSetID("b.a"), 0);
    EXPECT_EQ(Key("none").compareSetID("a.b.c"), 0) << "no pair has an empty set";
}

TEST(StringTable, KeepsTheLastStringOfAKeyAndListsKeysInTheirOrder) {
    StringTable table;
    const IString fallback("fallback");
    for (const wchar_t* value : {L"first", L""})
        EXPECT_TRUE(table.assign("a.b", value));
    for (const char* key : {"a.b", "a.c"}) {
        bool found = key[2] == 'c';
        EXPECT_EQ(table.getString(key, &found), L"");
        EXPECT_EQ(found, key[2] == 'b') << "an empty string was stored";
        EXPECT_EQ(table.keyExists(key), found);
        EXPECT_EQ(&table.getString(key, fallback, &found) == &fallback, !found);
    }

    // A reference stays while others come and go.
    const IString& kept = table.getString("a.b", fallback);
    for (int i = 0; i < 1000; ++i)
        table.assign(std::to_string(i).c_str(), fallback);
    table.remove("7");
    table.remove("none");
    EXPECT_EQ(&table.getString("a.b", fallback), &kept);
    EXPECT_EQ(table.size(), 1000U);

    table.clear();
    for (const char* key : {"b.z", "a.b", "b.a", "b", "c.a", "a.b.c"})
        table.assign(key, L"");
    std::vector<Key> keys = {"b.any"};
    EXPECT_EQ(table.getKeysInSet(keys[0], keys), 2U);
    EXPECT_EQ(keys, (std::vector<Key>{"b.a", "b.z"}));
    EXPECT_EQ(table.getKeysInSet("none", keys), 2U);
    EXPECT_EQ(keys, (std::vector<Key>{"a.b.c", "b"})) << "those of no set";
}

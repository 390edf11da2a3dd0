// SPDX-License-Identifier: MIT

#include <string>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringTableStringTable.h"

using zeString::CString;
using zeString::IString;
using zeStringTable::Key;
using zeStringTable::StringTable;

TEST(StringTableKey, HasASetAndAnId) {
    const struct {
        CString text;
        bool valid;
        bool pair;
        const char* set;
        const char* id;
    } rows[] = {
        {"S_1._2", true, true, "S_1", "_2"},
        {"a.b.", true, true, "a", "b"}, // one full stop at the end does not count
        {"a.b..", false, false, "", ""},
        {".b", false, true, "", "b"},
        {"a..", false, true, "a", ""},
        {"a.", false, false, "", ""},
        {"", false, false, "", ""},
        {"a.b.c", false, false, "", ""},
        {"a-b.c", false, true, "a-b", "c"},
        {"a.b\xC3\xA4", false, true, "a", "b\xC3\xA4"},
        {CString("a\0.b", 4), false, true, "a", "b"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text.asChar());
        CString set("before");
        CString id("before");
        EXPECT_EQ(Key::isValidKeyString(row.text), row.valid);
        EXPECT_EQ(Key(row.text).getSubParts(set, id), row.pair);
        EXPECT_STREQ(set.asChar(), row.set);
        EXPECT_STREQ(id.asChar(), row.id);
    }
    EXPECT_LT(Key("a.b"), Key("a_.b")); // "." before "_"
    EXPECT_LT(Key("a.z").compareSetID("b.a"), 0);
    EXPECT_EQ(Key("none").compareSetID("a.b.c"), 0) << "no pair has an empty set";
}

TEST(StringTable, KeepsTheLastStringOfAKey) {
    StringTable table;
    bool found = true;
    EXPECT_EQ(table.getString("a.b", &found), L"");
    EXPECT_FALSE(found);
    for (const wchar_t* value : {L"first", L""})
        EXPECT_TRUE(table.assign("a.b", value));
    EXPECT_TRUE(table.keyExists("a.b") && !table.keyExists("a.c"));
    EXPECT_EQ(table.getString("a.b", &found), L"");
    EXPECT_TRUE(found) << "an empty string was stored";
    const IString fallback("fallback");
    EXPECT_EQ(&table.getString("a.c", fallback, &found), &fallback);
    EXPECT_FALSE(found);

    // A reference stays while others come and go.
    const IString& kept = table.getString("a.b", fallback);
    for (int i = 0; i < 1000; ++i)
        table.assign(std::to_string(i).c_str(), fallback);
    table.remove("7");
    table.remove("none");
    EXPECT_EQ(&table.getString("a.b", fallback), &kept);
    EXPECT_EQ(table.size(), 1000U);
    table.clear();
    EXPECT_EQ(table.size(), 0U);
}

TEST(StringTable, ListsKeysInTheirOrder) {
    StringTable table;
    for (const char* key : {"b.z", "a.b", "b.a", "b", "c.a", "a.b.c"})
        table.assign(key, L"");
    std::vector<Key> keys = {"b.any"};
    EXPECT_EQ(table.getKeysInSet(keys[0], keys), 2U);
    EXPECT_EQ(keys, (std::vector<Key>{"b.a", "b.z"}));
    EXPECT_EQ(table.getKeysInSet("none", keys), 2U);
    EXPECT_EQ(keys, (std::vector<Key>{"a.b.c", "b"})) << "those of no set";
}

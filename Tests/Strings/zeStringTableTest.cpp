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
        {"set.id", true, true, "set", "id"},
        {"S_1._2", true, true, "S_1", "_2"},
        {"a.b.", true, true, "a", "b"}, // one full stop at the end does not count
        {"a.b..", false, false, "", ""},
        {".b", false, true, "", "b"},
        {"a..", false, true, "a", ""},
        {"a.", false, false, "", ""},
        {"a", false, false, "", ""},
        {"", false, false, "", ""},
        {".", false, false, "", ""},
        {"a.b.c", false, false, "", ""},
        {"a-b.c", false, true, "a-b", "c"},
        {"a .b", false, true, "a ", "b"},
        {"a.b\xC3\xA4", false, true, "a", "b\xC3\xA4"},
        {CString("a.b\0", 4), false, true, "a", nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text.asChar());
        const Key key(row.text);
        CString set("before");
        CString id("before");
        EXPECT_EQ(Key::isValidKeyString(row.text), row.valid);
        EXPECT_EQ(key.getSubParts(set, id), row.pair);
        EXPECT_EQ(set, row.set);
        EXPECT_EQ(id, row.id ? CString(row.id) : CString("b\0", 2));
        EXPECT_EQ(key.value(), row.text) << "nothing is checked";
    }
}

TEST(StringTableKey, IsOrderedByBytesAndBySet) {
    EXPECT_LT(Key("a.b"), Key("a.c"));
    EXPECT_LT(Key("a.b"), Key("a_.b")); // "." before "_"
    EXPECT_EQ(Key("a.b").compareSetID("a.c"), 0);
    EXPECT_LT(Key("a.z").compareSetID("b.a"), 0);
    EXPECT_EQ(Key("none").compareSetID("a.b.c"), 0) << "no pair has an empty set";
    EXPECT_LT(Key("none").compareSetID("a.b"), 0);
    Key key("a.b");
    key = "c.d";
    EXPECT_EQ(key, Key("c.d"));
    key.assign(CString("e.f"));
    EXPECT_EQ(key.compare("e.f"), 0);
}

TEST(StringTable, KeepsTheLastStringOfAKey) {
    StringTable table;
    bool found = true;
    EXPECT_EQ(table.getString("a.b", &found), L"");
    EXPECT_FALSE(found);
    EXPECT_TRUE(table.assign("a.b", L"first") && table.assign("a.b", L"") &&
                table.assign("a", L"x"));
    EXPECT_EQ(table.size(), 2U);
    EXPECT_TRUE(table.keyExists("a.b") && !table.keyExists("a.c"));
    EXPECT_EQ(table.getString("a.b", &found), L"");
    EXPECT_TRUE(found) << "an empty string was stored";

    const IString fallback("fallback");
    EXPECT_EQ(table.getString("a", fallback, &found), L"x");
    EXPECT_TRUE(found);
    EXPECT_EQ(&table.getString("a.c", fallback, &found), &fallback);
    EXPECT_FALSE(found);
    EXPECT_EQ(&table.getString("a.c", fallback, nullptr), &fallback);

    // A reference stays while others come and go.
    const IString& kept = table.getString("a", fallback);
    table.remove("a.b");
    table.remove("none");
    for (int i = 0; i < 1000; ++i)
        table.assign(std::to_string(i).c_str(), IString(L"n"));
    EXPECT_EQ(&table.getString("a", fallback), &kept);
    EXPECT_EQ(table.size(), 1001U);
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
    EXPECT_EQ(table.getKeysInSet("d.a", keys), 0U);
    EXPECT_TRUE(keys.empty());
    const auto sameLength = [](const Key& key, const Key& candidate) {
        return static_cast<int>(key.value().length()) -
               static_cast<int>(candidate.value().length());
    };
    EXPECT_EQ(table.getKeys(sameLength, "xyz", keys), 4U);
    EXPECT_EQ(keys.front(), Key("a.b"));
}

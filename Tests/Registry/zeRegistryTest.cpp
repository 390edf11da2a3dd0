// SPDX-License-Identifier: MIT

#include "Base/Registry/zeRegistry.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/Registry/zeRegistryImpl.h"

namespace {

using zeString::IString;
using Type = zeRegistryValue::ValueType;

/// The bytes of a value.
std::string bytes(const zeRegistryValue& value) {
    std::string all(value.getSize(), '?');
    value.getData(reinterpret_cast<unsigned char*>(all.data()));
    return all;
}

/// Whether the type fits; if it does not, the operation must throw this text, its "#" the type.
template<class Operation>
bool fits(Type type, std::string complaint, Operation operation) {
    try {
        operation();
        return true;
    } catch (const zeUtil::Error& error) {
        EXPECT_EQ(error.code(), 1);
        EXPECT_EQ(error.message(), complaint.replace(complaint.find('#'), 1, std::to_string(type)));
        return false;
    }
}

} // namespace

TEST(RegistryValue, HoldsNumbersTextsAndBytesByType) {
    for (int number = -1; number < 11; ++number) {
        const auto type = static_cast<Type>(number);
        const bool isNumber = number >= 1 && number <= 3, isText = number == 4 || number == 9;
        zeRegistryValue value(L"name", type);
        EXPECT_EQ(isNumber, fits(type, "Unsigned int cannot be converted to data of type #",
                                 [&] { value.setData(0x64636261u); }));
        EXPECT_EQ(bytes(value), isNumber ? "abcd" : "");
        EXPECT_EQ(isText, fits(type, "zeString::IString cannot be converted to data of type #",
                               [&] { value.setData(IString(L"gr\u00FCn")); }));
        if (isText) {
            EXPECT_EQ(bytes(value), std::string("gr\xC3\xBCn\0\0", 7)) << "one byte more";
        }
        value.setData(reinterpret_cast<const unsigned char*>("A\xC3\xBCz"), 3); // no terminator
        unsigned int read = 1;
        EXPECT_EQ(isNumber, fits(type, "Data of type # cannot be converted to unsigned int",
                                 [&] { value.getData(read); }));
        EXPECT_EQ(read, isNumber ? 0xBCC341u : 1u) << "a missing byte is 0";
        IString text(L"old");
        EXPECT_EQ(isText, fits(type, "Data of type # cannot be converted to zeString::IString",
                               [&] { value.getData(text); }));
        EXPECT_EQ(text, isText ? L"A\u00FC" : L"old");
        EXPECT_EQ(bytes(value), "A\xC3\xBC");
    }
}

TEST(RegistryValue, IsAValue) {
    const zeRegistryValue text(L"name", Type::TypeText, IString(L"same"));
    zeRegistryValue copy(text);
    copy.setData(reinterpret_cast<const unsigned char*>("same\0\1"), 6);
    EXPECT_FALSE(copy == text) << "every byte counts";
    copy = text;
    EXPECT_TRUE(copy == text);
    EXPECT_FALSE(zeRegistryValue(L"name", Type::TypeText9, IString(L"same")) == text);
    copy.setData(nullptr, 0);
    EXPECT_TRUE(copy == zeRegistryValue(L"name", Type::TypeText));
    IString read(L"old");
    copy.getData(read);
    EXPECT_TRUE(read.isEmpty());
}

TEST(Registry, AcceptsEverythingAndKeepsNothing) {
    for (const bool readOnly : {false, true}) {
        const zeRegistry original(L"HKEY_USERS\\key", readOnly);
        zeRegistry registry(original);
        for (const bool absolute : {false, true}) {
            EXPECT_TRUE(registry.openKey(L"", absolute) && !registry.openKey(L"key", absolute));
            EXPECT_TRUE(registry.createKey(L"", absolute, L"class"));
            EXPECT_TRUE(registry.createKey(L"key", absolute, L""));
            EXPECT_FALSE(registry.createKey(L"key", absolute, L"class"));
        }
        zeRegistryValue value(L"old", Type::TypeUInt, 5u);
        registry.setValue(L"new", value);
        EXPECT_EQ(value.getName(), readOnly ? L"old" : L"new");
        registry.getValue(L"asked", value);
        EXPECT_TRUE(value == zeRegistryValue(L"asked", Type::TypeUInt, 5u));
        EXPECT_EQ(registry.deleteKey(L""), !readOnly);
        EXPECT_EQ(registry.deleteValue(L""), !readOnly);
        EXPECT_FALSE(registry.deleteKey(L"key") || registry.deleteValue(L"asked"));
        std::vector<IString> names{L"name"};
        std::vector<zeRegistryValue> values{value};
        registry.getSubkeys(names);
        registry.getValues(values);
        EXPECT_TRUE(names.empty() && values.empty());
    }
}

TEST(Registry, KnowsTheNamesOfItsRoots) {
    auto hive = zeRegistryImpl::NumHives;
    EXPECT_TRUE(zeRegistryImpl::checkHiveName(L"HKEY_USERS", hive));
    EXPECT_EQ(hive, zeRegistryImpl::HiveUsers);
    EXPECT_FALSE(zeRegistryImpl::checkHiveName(L"HKEY_USER", hive));
}

// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSLocale.h"

#include <clocale>
#include <cstdlib>

#include <gtest/gtest.h>

#include "Base/OS/zeOSByteOrder.h"
#include "Base/Strings/zeStringIString.h"

using zeOS::Locale;

namespace {

/// Starts in the "C" locale, as programs do, and ends there.
class LocaleTest : public testing::Test {
protected:
    void TearDown() override { std::setlocale(LC_CTYPE, "C"); }

    /// All that a locale shows.
    static std::string text(const Locale& locale) {
        EXPECT_EQ(locale.id(), locale.clibLocale());
        return locale.description().asChar() +
               std::string(locale.isMultibyte() ? " multibyte" : "") +
               (locale.isDefault() ? " default" : "");
    }

    static constexpr const char* plain = "Locale:C CodeSet:ANSI_X3.4-1968";
    static constexpr const char* utf8 = "Locale:C.UTF-8 CodeSet:UTF-8 multibyte";
};

} // namespace

TEST_F(LocaleTest, ShowsTheProcesssLocaleAndChangesIt) {
    Locale locale;
    EXPECT_EQ(text(locale), std::string(plain) + " default");
    EXPECT_EQ(locale.setLocale("C.UTF-8"), zeUtil::Error());
    EXPECT_EQ(text(locale), utf8);
    EXPECT_EQ(locale.codeSet(), "UTF-8");
    EXPECT_EQ(zeString::IString("\xC3\xB6").length(), 1u);
    const Locale second; // whose default is the locale of now
    EXPECT_EQ(text(second), std::string(utf8) + " default");
    EXPECT_EQ(locale.setDefault(), zeUtil::Error());
    EXPECT_EQ(text(locale), std::string(plain) + " default");
    EXPECT_EQ(text(second), std::string(utf8) + " default") << "it was not told";
    EXPECT_EQ(&zeOS::appLocale(), &zeOS::appLocale());
}

TEST_F(LocaleTest, KeepsTheOldOneIfThereIsNoSuchLocale) {
    Locale locale;
    for (const char* name : {"no such", "Sch\xC3\xB6n"}) {
        const zeUtil::Error error = locale.setLocale(name);
        EXPECT_EQ(error.code(), 4);
        EXPECT_EQ(error.message(),
                  "Unable to set locale: " + std::string(zeString::IString(name).asMultibyte()) +
                      ", system error: No such file or directory\n");
        EXPECT_EQ(text(locale), plain) << "not the default: it was changed in vain";
    }
    for (const char* native : {"no such", "C.UTF-8"}) {
        setenv("LC_ALL", native, 1);
        EXPECT_EQ(locale.setNative().code(), *native == 'n' ? 4 : 0);
    }
    unsetenv("LC_ALL");
    EXPECT_EQ(text(locale), utf8);
}

TEST(ByteOrder, IsReversedForEveryTypeAndAlignment) {
    EXPECT_EQ(zeOS::swap(short(0x0102)), 0x0201);
    EXPECT_EQ(zeOS::swap(int(0xF1020304)), 0x040302F1);
    EXPECT_EQ(zeOS::swap(0x0102030405060708L), 0x0807060504030201L);
    EXPECT_EQ(zeOS::swap(zeOS::swap(1.5f)), 1.5f);
    EXPECT_EQ(zeOS::swap(0x1p-1022), 0x1p-1074 * 0x1000); // 0010 0000 0000 0000 reversed

    char bytes[] = "-abcdefgh";
    zeOS::swap(reinterpret_cast<int*>(bytes + 1), 2);
    EXPECT_STREQ(bytes, "-dcbahgfe");
    zeOS::swapLittle(reinterpret_cast<int*>(bytes + 1), 2);
    EXPECT_EQ(zeOS::swapLittle(7L), 7);
    EXPECT_STREQ(bytes, "-dcbahgfe");
}

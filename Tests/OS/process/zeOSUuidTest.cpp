// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSUuid.h"

#include <unistd.h>

#include <cstring>

#include <gtest/gtest.h>

#include "Base/Strings/zeStringCString.h"

using zeOS::Uuid;

TEST(Uuid, IsReadFromItsOwnFormOnly) {
    const unsigned int words[] = {0x00010203, 0x04050607, 0x08090A0B, 0xDEADBEEF};
    const unsigned char bytes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 0xDE, 0xAD, 0xBE, 0xEF};
    const char* const text = "00010203-0405-0607-0809-0A0BDEADBEEF";
    for (const Uuid& id :
         {Uuid(words), Uuid(bytes), Uuid(text), Uuid("00010203-0405-0607-0809-0a0bdeadbeef")}) {
        EXPECT_STREQ(id.asString().asChar(), text);
        unsigned char written[16];
        id.get(written);
        EXPECT_EQ(std::memcmp(written, bytes, 16), 0);
        unsigned int copied[4];
        id.get(copied);
        EXPECT_EQ(std::memcmp(copied, words, 16), 0);
        EXPECT_EQ(id.compare(Uuid(words)), 0);
    }
    for (const char* bad :
         {"", "00010203-0405-0607-0809-0A0BDEADBEE", "00010203-0405-0607-0809-0A0BDEADBEEF0",
          "00010203+0405-0607-0809-0A0BDEADBEEF", "00010203-0405-0607+0809-0A0BDEADBEEF",
          "0001020g-0405-0607-0809-0A0BDEADBEEF", "00010203-0405-0607-08 9-0A0BDEADBEEF",
          "00010203-0405-0607-0809-0x0BDEADBEEF", "00010203-0405-0607-0809-0A0BDEADBEE-",
          "-0010203-0405-0607-0809-0A0BDEADBEEF", "00000000-0000-0000-0000-000000000000"})
        EXPECT_FALSE(Uuid(bad).valid()) << bad;
}

TEST(Uuid, IsGeneratedFromProcessTimeAndCounter) {
    Uuid a, b;
    EXPECT_TRUE(a.generate());
    EXPECT_TRUE(b.generate());
    unsigned int first[4], second[4];
    a.get(first);
    b.get(second);
    EXPECT_EQ(first[1], static_cast<unsigned int>(getpid()));
    EXPECT_NEAR(static_cast<double>(first[2]), static_cast<double>(time(nullptr)), 5);
    EXPECT_EQ(second[3], first[3] + 1);
    EXPECT_FALSE(a.set(second)) << "it is set once";
}

// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSTypeIdName.h"

#include <string>
#include <typeinfo>

#include <gtest/gtest.h>

#include "Base/OS/zeOSAppOutput.h"
#include "Base/Strings/zeStringCString.h"

namespace {

std::string cleaned(const char* mangled) {
    zeString::CString out("before");
    zeOS::cleanupTypeIdName(mangled, out);
    EXPECT_STREQ(zeOS::cleanupTypeIdName(mangled), out.asChar());
    return std::string(out.asChar(), out.length());
}

} // namespace

TEST(TypeIdName, ReadsMangledNames) {
    const char* const cases[][2] = {
        {"", ""},
        {nullptr, ""},
        {"a b c d e f h i j l", // "a" is not "signed char"
         "unsigned char bool char double long double float unsigned char int unsigned int long"},
        {"m s t v w x y z", "unsigned long short unsigned short void wchar_t long long "
                            "unsigned long long ..."},
        // pointers
        {"PPc", "char *"}, // one star for all
        {"PN3foo3barE", "foo::bar *"},
        {"PP", ""},
        {"PE", " *"},
        // names
        {"N3foo3bar4quuxE", "foo::barquux"},
        {"5foo", "foo"}, // as many characters as there are
        {"0", ""},
        {"12345678901", "1"}, // ten digits are a length
        {"99999999999x", "9x"},
        {"Sa Sb Ss St6vector", "std::allocator std::basic_string std::string std::vector"},
        {"PSs", "std::string"},
        // back-references stand for the last name, whatever their number
        {"3foo3barS_S0_", "foobarbarbar"},
        {"N3foo3barENS3_3quxE", "foo::bar, foo::qux"},
        {"SsS2_", "std::stringstring"},
        {"3fooS4_", "fooS4_"},
        {"S", "S"},
        // templates
        {"3fooIN3bar3bazEiEE", "foo<bar::baz, int>"},
        {"St6vectorIiSaIiEE", "std::vector<intstd::allocator<int>>"},
        {"P3fooIPiE", "foo<int *"},
        {"P3fooIPiEE", "foo<int *> *"},
        // what is not understood stays
        {"EEE", ">>"},
        {"\xFF*RfA7_i", "\xFF*RfloatA_i"},
        // what the compiler gives
        {typeid(zeOS::AppOutputStream).name(), "zeOS::AppOutputStream"},
        {typeid(const zeString::CString*).name(), "const zeString::CString *"},
    };
    for (const auto& [mangled, expected] : cases)
        EXPECT_EQ(cleaned(mangled), expected) << (mangled ? mangled : "null");
}

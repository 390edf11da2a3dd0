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
    struct {
        const char* mangled;
        const char* expected;
    } const cases[] = {
        {"", ""},
        {nullptr, ""},
        {"a", "unsigned char"}, // not "signed char"
        {"b", "bool"},
        {"c", "char"},
        {"d", "double"},
        {"e", "long double"},
        {"f", "float"},
        {"h", "unsigned char"},
        {"i", "int"},
        {"j", "unsigned int"},
        {"l", "long"},
        {"m", "unsigned long"},
        {"s", "short"},
        {"t", "unsigned short"},
        {"v", "void"},
        {"w", "wchar_t"},
        {"x", "long long"},
        {"y", "unsigned long long"},
        {"z", "..."},
        // pointers
        {"Pi", "int *"},
        {"PKc", "const char *"},
        {"PPc", "char *"}, // one star for all
        {"P3foo", "foo *"},
        {"PN3foo3barE", "foo::bar *"},
        {"PP", ""},
        {"PE", " *"},
        // names
        {"3foo", "foo"},
        {"N3foo3barE", "foo::bar"},
        {"N3foo3bar4quuxE", "foo::barquux"},
        {"5foo", "foo"}, // as many characters as there are
        {"0", ""},
        {"12345678901", "1"}, // ten digits are a length
        {"99999999999x", "9x"},
        // the standard library
        {"St6vector", "std::vector"},
        {"Sa", "std::allocator"},
        {"Sb", "std::basic_string"},
        {"Ss", "std::string"},
        {"PSs", "std::string"},
        // back-references stand for the last name, whatever their number
        {"3fooS_", "foofoo"},
        {"3foo3barS0_", "foobarbar"},
        {"N3foo3barENS3_3quxE", "foo::bar, foo::qux"},
        {"SsS2_", "std::stringstring"},
        {"3fooS4_", "fooS4_"},
        {"3fooS0", "fooS0"},
        {"S", "S"},
        {"Sx", "Sx"},
        // templates
        {"3fooIiE", "foo<int"},
        {"3fooIiEE", "foo<int>"},
        {"3fooIidEE", "foo<intdouble>"},
        {"3fooIN3bar3bazEiEE", "foo<bar::baz, int>"},
        {"St6vectorIiSaIiEE", "std::vector<intstd::allocator<int>>"},
        {"N2ze9ReferenceIiEE", "ze::Reference<int>"},
        {"P3fooIPiE", "foo<int *"},
        {"P3fooIPiEE", "foo<int *> *"},
        // what is not understood stays
        {"Rf", "Rfloat"},
        {"EEE", ">>"},
        {"A7_i", "A_i"},
        {"*x y", "*long long unsigned long long"},
        {"\xFF", "\xFF"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(cleaned(c.mangled), c.expected) << (c.mangled ? c.mangled : "null");
}

TEST(TypeIdName, ReadsWhatTheCompilerGives) {
    EXPECT_EQ(cleaned(typeid(zeOS::AppOutputStream).name()), "zeOS::AppOutputStream");
    EXPECT_EQ(cleaned(typeid(const zeString::CString*).name()), "const zeString::CString *");
    EXPECT_EQ(cleaned(typeid(unsigned long*).name()), "unsigned long *");
}

// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilUniqueNames.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace {

using zeUtil::UniqueNames;

/// A model for names of letters, one number and the suffix: looks at every name there is.
class Model {
public:
    explicit Model(const std::string& suffix) : suffix_(suffix) {}

    std::string insert(const std::string& name) {
        if (names_.insert(name).second)
            return name;
        std::string stem;
        std::string end;
        long number;
        split(name, stem, number, end);
        long highest = 0;
        for (const std::string& other : names_) {
            std::string otherStem;
            std::string otherEnd;
            if (split(other, otherStem, number, otherEnd) && otherStem == stem && otherEnd == end)
                highest = std::max(highest, number);
        }
        return *names_.insert(stem + "-" + std::to_string(highest + 1) + end).first;
    }

private:
    /// Whether the name has a number.
    bool split(const std::string& name, std::string& stem, long& number, std::string& end) const {
        stem = name;
        if (!suffix_.empty() && stem.size() > suffix_.size() && stem.ends_with(suffix_)) {
            end = suffix_;
            stem.resize(stem.size() - suffix_.size());
        }
        const std::size_t found = stem.find_last_not_of("0123456789");
        if (found == stem.npos || stem[found] != '-')
            return false;
        number = std::atol(stem.c_str() + found + 1);
        stem.resize(found);
        return true;
    }

    std::string suffix_;
    std::set<std::string> names_;
};

} // namespace

TEST(UniqueNames, NumberAsASearchOfAllNamesWould) {
    std::mt19937 random(6);
    const char* const stems[] = {"a", "ab", "b"};
    const char* const numbers[] = {"", "", "-", "-1", "-7", "-12"};
    for (const char* suffix : {"", ".x", "1", "x"}) {
        SCOPED_TRACE(suffix);
        for (int round = 0; round < 30; ++round) {
            UniqueNames names{zeString::CString(suffix)};
            Model model{suffix};
            for (int step = 0; step < 100; ++step) {
                std::string name = stems[random() % 3];
                name += numbers[random() % 6];
                if (random() % 2)
                    name += suffix;
                ASSERT_EQ(names.insert(name.c_str()).asChar(), model.insert(name)) << name;
            }
        }
    }
}

TEST(UniqueNames, FollowTheStatedRules) {
    struct Case {
        const char *suffix, *separator, *first, *second, *third, *expected; ///< Of the third.
    };
    const Case cases[] = {
        {"", "-", "a", "b", "A", "A"},
        {"", " no. ", "a", "a", "a", "a no. 2"},
        {".x", "-", "b", ".x", ".x", ".x-1"}, // nothing but the suffix
        // The number is printed in 32 bits, and saturates in 64.
        {"", "-", "a", "a-4294967297", "a", "a-2"},
        {"", "-", "a", "a-9223372036854775807", "a", "a-0"},
        {"", "", "a", "a", "a", "a1"}, // as the second one
    };
    for (const Case& c : cases) {
        UniqueNames names(c.suffix, c.separator);
        names.insert(c.first);
        names.insert(c.second);
        EXPECT_STREQ(names.insert(c.third).asChar(), c.expected);
        EXPECT_TRUE(names.getNames().contains(c.expected));
    }
    // Uniqueness ends where a family does not stand together in the order of the names.
    UniqueNames split;
    for (const char* name : {"a", "a b-1", "a"})
        split.insert(name);
    EXPECT_STREQ(split.insert("a").asChar(), "a-1");
    EXPECT_EQ(split.getNames().size(), 3u);
    UniqueNames names;
    names.setSuffix(".x");
    names.setSeparator("_");
    names.insert("a.x");
    EXPECT_STREQ(names.insert("a.x").asChar(), "a_1.x");
}

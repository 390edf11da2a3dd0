// SPDX-License-Identifier: MIT

#include <ctime>

#include <gtest/gtest.h>

#include "Base/IO/ioPackageFile.h"
#include "Support/TempFolder.h"

#include "IO/package/PackageSupport.h"

using packages::wide;

// Ten times the entries take ten times as long, and a little more; a hundred times if anything
// looked at all of them for each.
TEST(PackageSpeed, TakesTimeInProportionToItsEntries) {
    const auto secondsFor = [](int entries) {
        const TempFolder folder(TempFolder::memory());
        const zeString::IString path = wide(folder.path("p"));
        const zeString::IString source = wide(folder.write("source", "some bytes"));
        const auto name = [](int i) { return wide("folder/" + std::to_string(i)); };
        const std::clock_t start = std::clock();
        ioPackageFile package;
        EXPECT_EQ(package.open(path).code(), 0);
        const auto add = [&](int step) {
            for (int i = 0; i < entries; i += step)
                EXPECT_EQ(package.addEntry(source, name(i), false).code(), 0);
        };
        const auto remove = [&](int step) {
            for (int i = 0; i < entries; i += step)
                EXPECT_EQ(package.deleteEntry(name(i)).code(), 0);
        };
        add(1);
        EXPECT_EQ(package.update().code(), 0);
        EXPECT_EQ(package.open(path).code(), 0);
        for (const auto& [key, index] : package.getDirectory())
            EXPECT_EQ(package.getEntry(key), package.getEntry(index));
        remove(2); // free space between entries, all of which is used again
        add(2);
        remove(1);
        return double(std::clock() - start) / CLOCKS_PER_SEC;
    };
    const double few = secondsFor(10'000);
    EXPECT_LT(secondsFor(100'000), 30 * few);
}

// SPDX-License-Identifier: MIT

#include <ctime>
#include <utility>

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
        const std::clock_t start = std::clock();
        ioPackageFile package;
        // Free space between entries, all of which is used again.
        for (const auto& [adds, step] : {std::pair(true, 1), {false, 2}, {true, 2}, {false, 1}}) {
            EXPECT_EQ(package.open(path).code(), 0);
            for (const auto& [key, index] : package.getDirectory())
                EXPECT_EQ(package.getEntry(key), package.getEntry(index));
            for (int i = 0; i < entries; i += step) {
                const zeString::IString name = wide("folder/" + std::to_string(i));
                const zeUtil::Error error =
                    adds ? package.addEntry(source, name, false) : package.deleteEntry(name);
                EXPECT_EQ(error.code(), 0);
            }
            EXPECT_EQ(package.update().code(), 0);
        }
        return double(std::clock() - start) / CLOCKS_PER_SEC;
    };
    const double few = secondsFor(10'000);
    EXPECT_LT(secondsFor(100'000), 30 * few);
}

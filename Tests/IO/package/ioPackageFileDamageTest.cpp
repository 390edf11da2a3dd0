// SPDX-License-Identifier: MIT

// Packages that are damaged, by accident or by intent.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include <gtest/gtest.h>

#include "Base/IO/ioPackageFile.h"
#include "Support/TempFolder.h"

#include "IO/package/PackageSupport.h"

using namespace packages;

namespace {

using namespace std::string_literals;

const std::string large(5'000, 'x');

/// A package with a plain, a compressed and a deleted entry.
std::string smallPackage(const TempFolder& folder) {
    ioPackageFile package;
    EXPECT_EQ(package.open(wide(folder.path("small"))).code(), 0);
    for (const char* name : {"a", "b", "c"}) {
        const std::string source = folder.write("source", *name == 'c' ? large : "plain");
        EXPECT_EQ(package.addEntry(wide(source), name, *name == 'c').code(), 0);
    }
    EXPECT_EQ(package.deleteEntry(L"b").code(), 0);
    EXPECT_EQ(package.update().code(), 0);
    return folder.read("small");
}

/// Opens, lists, extracts and empties, and returns what was found, in place and in files alike.
Contents takeOut(const TempFolder& folder, const std::string& bytes) {
    ioPackageFile package;
    const std::string path = folder.write("p", bytes);
    const int code = package.open(wide(path)).code();
    EXPECT_TRUE(code == 0 || code == 17);
    EXPECT_TRUE(code != 17 || (package.size() == 0 && package.getPackageFileName().isEmpty()));
    const Contents found = contents(package);
    const bool expanded = package.expand(wide(folder.path("out/files"))).code() == 0;
    for (const auto& [name, content] : found) {
        EXPECT_TRUE(!expanded || folder.read("out/files/" + name) == content);
        EXPECT_EQ(text(package.deleteEntry(wide(name))), "0 ");
    }
    std::filesystem::remove_all(folder.path("out"));
    EXPECT_TRUE(code != 0 ||
                (package.update().code() == 0 && package.open(wide(path)).code() == 0));
    return found;
}

/// Runs `body` in a process that may take no more than so much, and expects it to end well.
void withinLimits(const std::function<void()>& body) {
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        const rlimit seconds{60, 60};
        setrlimit(RLIMIT_CPU, &seconds);
        const rlimit space{256ul << 20, 256ul << 20};
        unsigned long pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        if (pages * 4096 < space.rlim_cur) // the sanitizers reserve far more
            setrlimit(RLIMIT_AS, &space);
        body();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

} // namespace

TEST(PackageDamage, FlippedBytesStayWhereTheyAreAndCutFilesAreRefused) {
    const TempFolder folder(TempFolder::memory());
    const std::string whole = smallPackage(folder);
    const std::size_t place = std::stoul(whole.substr(61, 24));
    withinLimits([&] {
        EXPECT_EQ(takeOut(folder, whole), (Contents{{"a", "plain"}, {"c", large}}));
        for (std::size_t at = 0; at < whole.size(); ++at) {
            SCOPED_TRACE(at);
            EXPECT_EQ(takeOut(folder, whole.substr(0, at)), Contents());
            for (const int flip : {0x01, 0x80, 0xFF}) {
                std::string bytes = whole;
                bytes[at] = static_cast<char>(bytes[at] ^ flip);
                const Contents found = takeOut(folder, bytes);
                if (at < 60) {
                    EXPECT_EQ(found, Contents());
                }
                if (at < 85 || at >= place)
                    continue;
                EXPECT_EQ(found.at("a") == "plain", at >= 90);
                const std::string c = found.at("c"); // how it ended stands behind it
                EXPECT_TRUE(c.find("(status ") != std::string::npos || large.find(c) == 0);
            }
        }
    });
}

TEST(PackageDamage, DirectoriesTileTheirData) {
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    const Contents all{{"a", "abcdefgh"}};
    const Contents part{{"a", "defgh"}};
    const std::pair<std::vector<Element>, Contents> lists[] = {
        {{{"a", 85, 8}, {"", 93, -1}}, all},
        {{{"", 85, 3}, {"a", 88, 5}, {"", 93, -1}}, part},
        {{{"", 85, 1}, {"", 86, 2}, {"a", 88, 5}, {"", 93, highest}}, part},
        {{{"a", 85, 0}, {"b", 85, 8}, {"", 93, -1}}, {{"a", ""}, {"b", "abcdefgh"}}},
        {{{"a", 85, 3}, {"a", 88, 5}, {"", 93, -1}}, part}, // of a name, the last counts
        {{{".", 85, 3}, {"a", 88, 5}, {"", 93, -1}}, part}, // no name
        // Refused: without a place, or with one elsewhere,
        {{}, {}},
        {{{"a", 85, 8}}, {}},
        {{{"", 93, -1}}, {}},
        {{{"a", 85, 7}, {"", 92, -1}}, {}},
        {{{"", 93, -1}, {"a", 85, 8}}, {}},
        // with a gap, an overlap, and bytes outside of the data,
        {{{"a", 86, 7}, {"", 93, -1}}, {}},
        {{{"a", 85, 5}, {"b", 88, 5}, {"", 93, -1}}, {}},
        {{{"a", 61, 32}, {"", 93, -1}}, {}},
        {{{"a", 85, 9}, {"", 93, -1}}, {}},
        // and with numbers that are none of a file.
        {{{"a", -1, 94}, {"", 93, -1}}, {}},
        {{{"a", 85, 10}, {"b", 95, -2}, {"", 93, -1}}, {}},
        {{{"a", 85, highest}, {"", 93, -1}}, {}},
        {{{"a", 85, highest}, {"b", 84 - highest, highest}, {"", 93, -1}}, {}},
    };
    const std::string start = headerStart + pointer("93") + "abcdefgh";
    const std::string good = directory(lists[0].first);
    const std::string packets = good.substr(directoryStart.size());
    const std::pair<std::string, Contents> directories[] = {
        {good + "older directory", all},
        {directoryStart + packet(0, "text\0"s) + packets, all},
        {"^@\n1\n1 0 1\n" + good.substr(11), {}}, // text
        {"^@\n1\n1 7 1\n" + good.substr(11), {}}, // no method at all
        {"^@\n1\n0 1 1\n" + good.substr(11), {}}, // the other order of bytes
        {directoryStart + packet(2, number(7) + body({"a", 85, 8}), 1) +
             packet(2, body({"", 93, -1})) + packet(1, ""),
         {}}, // a reference
        {directoryStart + packet(0, number(7) + "text\0"s, 1) + packets, {}},
        {directoryStart + packet(2, "name") + packet(1, ""), {}},
        {directoryStart + number(2) + number(0) + number(2'000'000'000), {}},
    };
    const TempFolder folder(TempFolder::memory());
    withinLimits([&] {
        for (const auto& [elements, expected] : lists)
            EXPECT_EQ(takeOut(folder, package("abcdefgh", elements)), expected)
                << directory(elements);
        for (const auto& [bytes, expected] : directories)
            EXPECT_EQ(takeOut(folder, start + bytes), expected) << bytes;
    });
}

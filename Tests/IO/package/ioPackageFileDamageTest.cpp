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
    const zeString::IString plain = wide(folder.write("source", "plain"));
    EXPECT_EQ(package.addEntry(plain, L"a", false).code(), 0);
    EXPECT_EQ(package.addEntry(plain, L"b", false).code(), 0);
    EXPECT_EQ(package.addEntry(wide(folder.write("source", large)), L"c", true).code(), 0);
    EXPECT_EQ(package.deleteEntry(L"b").code(), 0);
    EXPECT_EQ(package.update().code(), 0);
    return folder.read("small");
}

/// Opens, lists and extracts, and returns what was found, in place and in files alike.
Contents takeOut(const TempFolder& folder, const std::string& bytes) {
    ioPackageFile package;
    const std::string path = folder.write("p", bytes);
    const int code = package.open(wide(path)).code();
    EXPECT_TRUE(code == 0 || code == 17);
    EXPECT_TRUE(code != 17 || (package.size() == 0 && package.getPackageFileName().isEmpty()));
    const Contents found = contents(package);
    const std::string out = folder.path("out/files");
    const bool expanded = package.expand(wide(out)).code() == 0;
    for (const auto& [name, content] : found)
        if (expanded) {
            EXPECT_EQ(folder.read("out/files/" + name), content);
        }
    std::filesystem::remove_all(folder.path("out"));
    return found;
}

/// Runs `body` in a process that may take no more than so much, and expects it to end well.
void withinLimits(const std::function<void()>& body) {
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        const rlimit seconds{60, 60};
        setrlimit(RLIMIT_CPU, &seconds);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        const rlimit space{256ul << 20, 256ul << 20};
        setrlimit(RLIMIT_AS, &space);
#endif
        body();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

} // namespace

TEST(PackageDamage, FlippedBytesStayWhereTheyAre) {
    const TempFolder folder(TempFolder::memory());
    const std::string whole = smallPackage(folder);
    const std::size_t place = std::stoul(whole.substr(61, 24));
    withinLimits([&] {
        for (std::size_t at = 0; at < whole.size(); ++at)
            for (const int flip : {0x01, 0x80, 0xFF}) {
                SCOPED_TRACE(testing::Message() << at << ' ' << flip);
                std::string bytes = whole;
                bytes[at] = static_cast<char>(bytes[at] ^ flip);
                const Contents found = takeOut(folder, bytes);
                if (at < 85 || at >= place)
                    continue;
                EXPECT_EQ(found.at("a") == "plain", at >= 90);
                const std::string c = found.at("c"); // how it ended stands behind it
                EXPECT_TRUE(c.find("(status ") != std::string::npos || large.find(c) == 0);
            }
    });
}

TEST(PackageDamage, CutFilesAreRefused) {
    const TempFolder folder(TempFolder::memory());
    const std::string whole = smallPackage(folder);
    withinLimits([&] {
        for (std::size_t size = 0; size < whole.size(); ++size)
            EXPECT_EQ(takeOut(folder, whole.substr(0, size)), Contents()) << size;
        EXPECT_EQ(takeOut(folder, whole), (Contents{{"a", "plain"}, {"c", large}}));
    });
}

TEST(PackageDamage, DirectoriesTileTheirData) {
    const std::string data = "abcdefgh";
    const auto bytes = [&data](const std::vector<Element>& elements) {
        return package(data, elements);
    };
    const auto raw = [&data](const std::string& directory) {
        return headerStart + pointer("93") + data + directory;
    };
    const std::string good = directory({{"a", 85, 8}, {"", 93, -1}});
    const auto method = [&](const char* line) { return raw("^@\n1\n" + (line + good.substr(11))); };
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    const struct {
        const char* what;
        std::string bytes;
        Contents contents; // empty: refused
    } cases[] = {
        {"one entry", raw(good), {{"a", data}}},
        {"free space", bytes({{"", 85, 3}, {"a", 88, 5}, {"", 93, -1}}), {{"a", "defgh"}}},
        {"free space beside free space",
         bytes({{"", 85, 1}, {"", 86, 2}, {"a", 88, 5}, {"", 93, 7}}),
         {{"a", "defgh"}}},
        {"empty entries",
         bytes({{"a", 85, 0}, {"b", 85, 8}, {"", 93, -1}}),
         {{"a", ""}, {"b", data}}},
        {"a name twice: the last counts",
         bytes({{"a", 85, 3}, {"a", 88, 5}, {"", 93, -1}}),
         {{"a", "defgh"}}},
        {"a name that is no name",
         bytes({{".", 85, 3}, {"a", 88, 5}, {"", 93, -1}}),
         {{"a", "defgh"}}},
        {"bytes behind it", raw(good + "older directory"), {{"a", data}}},
        {"no element", bytes({}), {}},
        {"no place", bytes({{"a", 85, 8}}), {}},
        {"only a place", bytes({{"", 93, -1}}), {}},
        {"a place elsewhere", bytes({{"a", 85, 7}, {"", 92, -1}}), {}},
        {"a gap", bytes({{"a", 86, 7}, {"", 93, -1}}), {}},
        {"an overlap", bytes({{"a", 85, 5}, {"b", 88, 5}, {"", 93, -1}}), {}},
        {"into the header", bytes({{"a", 61, 32}, {"", 93, -1}}), {}},
        {"out of the data", bytes({{"a", 85, 9}, {"", 93, -1}}), {}},
        {"a negative offset", bytes({{"a", -1, 94}, {"", 93, -1}}), {}},
        {"a negative size", bytes({{"a", 85, 10}, {"b", 95, -2}, {"", 93, -1}}), {}},
        {"a huge size", bytes({{"a", 85, highest}, {"", 93, -1}}), {}},
        {"a sum that wraps",
         bytes({{"a", 85, highest}, {"b", 84 - highest, highest}, {"", 93, -1}}),
         {}},
        {"the list the other way round", bytes({{"", 93, -1}, {"a", 85, 8}}), {}},
        {"text", method("1 0 1\n"), {}},
        {"text with tags", method("1 2 1\n"), {}},
        {"binary with tags", method("1 3 1\n"), {}},
        {"an unknown method", method("1 7 1\n"), {}},
        {"the other order of bytes by its header alone", method("0 1 1\n"), {}},
        {"a reference",
         raw(directoryStart + packet(2, number(7) + body({"a", 85, 8}), 1) +
             packet(2, body({"", 93, -1})) + packet(1, "")),
         {}},
        {"a string that is referred to",
         raw(directoryStart + packet(0, number(7) + "text\0"s, 1) +
             good.substr(directoryStart.size())),
         {}},
        {"a string",
         raw(directoryStart + packet(0, "text\0"s) + good.substr(directoryStart.size())),
         {{"a", data}}},
        {"a name without an end", raw(directoryStart + packet(2, "name") + packet(1, "")), {}},
        {"a packet of 2 GB",
         raw(directoryStart + number(2) + number(0) + number(2'000'000'000)),
         {}},
    };
    const TempFolder folder(TempFolder::memory());
    withinLimits([&] {
        for (const auto& [what, file, expected] : cases) {
            SCOPED_TRACE(what);
            EXPECT_EQ(takeOut(folder, file), expected);
        }
    });
}

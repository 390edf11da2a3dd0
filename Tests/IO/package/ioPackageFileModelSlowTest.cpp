// SPDX-License-Identifier: MIT

// Packages against a plain model: a map of names to contents, and a list of elements that is kept
// by the rules, step by step.

#include <ctime>
#include <filesystem>
#include <random>

#include <gtest/gtest.h>

#include "Base/IO/ioPackageFile.h"
#include "Support/TempFolder.h"

#include "IO/chain/TestLinks.h"
#include "IO/package/PackageSupport.h"

using packages::Contents;
using packages::text;
using packages::wide;

namespace {

/// First fit, with joins at once.
class ElementList {
public:
    void replace(const std::string& name, long size) {
        free(name);
        for (std::size_t i = 0; i + 1 < list_.size(); ++i) { // the last is the directory's place
            Element& place = list_[i];
            if (!place.name.empty() || place.size < size)
                continue;
            if (place.size > size) {
                const Element rest{"", place.offset + size, place.size - size};
                list_.insert(list_.begin() + long(i) + 1, rest);
            }
            list_[i] = {name, list_[i].offset, size};
            return;
        }
        list_.insert(list_.end() - 1, {name, list_.back().offset, size});
        list_.back().offset += size;
    }

    void free(const std::string& name) {
        for (std::size_t i = 0; i < list_.size(); ++i)
            if (list_[i].name == name) {
                list_[i].name.clear();
                join(i);
                if (i > 0)
                    join(i - 1);
                return;
            }
    }

    std::string text() const {
        std::string result;
        for (const auto& [name, offset, size] : list_)
            result += (result.empty() ? "" : ", ") + name + (name.empty() ? "" : " ") +
                      std::to_string(offset) + (size < 0 ? "" : "+") + std::to_string(size);
        return result;
    }

private:
    void join(std::size_t i) {
        if (!list_[i].name.empty() || !list_[i + 1].name.empty())
            return;
        list_[i].size += list_[i + 1].size;
        list_.erase(list_.begin() + long(i) + 1);
    }

    struct Element {
        std::string name;
        long offset;
        long size;
    };
    std::vector<Element> list_{{"", 85, -1}};
};

} // namespace

TEST(PackageModel, HoldsWhatAMapHolds) {
    const TempFolder folder(TempFolder::memory());
    const std::string path = folder.path("p");
    ioPackageFile package;
    ASSERT_EQ(package.open(wide(path)).code(), 0);
    Contents model;
    ElementList elements;
    std::minstd_rand random(7);
    const auto upTo = [&random](std::size_t n) { return random() % n; };
    const auto name = [&] { return "n" + std::to_string(upTo(60)); };

    const auto add = [&] {
        const std::string content = upTo(2) ? randomData(upTo(12'000), unsigned(random()))
                                            : std::string(upTo(12'000), char('a' + upTo(26)));
        const std::string entry = name();
        const std::string source = folder.write("source", content);
        ASSERT_EQ(text(package.addEntry(wide(source), wide(entry), upTo(3) == 0)), "0 ");
        model[entry] = content;
        elements.replace(entry, package.getEntry(wide(entry))->getSize());
    };
    const auto remove = [&] {
        const std::string entry = name();
        const bool isThere = model.erase(entry) > 0;
        ASSERT_EQ(package.deleteEntry(wide(entry)).code(), isThere ? 0 : 13);
        elements.free(entry);
    };
    const auto copyFromAnother = [&] {
        std::filesystem::remove(folder.path("other"));
        ioPackageFile other;
        ASSERT_EQ(other.open(wide(folder.path("other"))).code(), 0);
        const std::string content = randomData(upTo(9'000), unsigned(random()));
        const std::string entry = name();
        const zeString::IString source = wide(folder.write("source", content));
        ASSERT_EQ(other.addEntry(source, wide(entry), upTo(2) == 0).code(), 0);
        const ioPackageFileEntry* const from = other.getEntry(wide(entry));
        const bool isThere = model.count(entry) != 0;
        ASSERT_EQ(package.addEntry(from, wide(entry)).code(), isThere ? 14 : 0);
        if (!isThere) {
            model[entry] = content;
            elements.replace(entry, from->getSize());
        }
    };
    const auto look = [&] {
        const std::string entry = name();
        const ioPackageFileEntry* const found = package.getEntry(wide(entry));
        ASSERT_EQ(found != nullptr, model.count(entry) != 0);
        if (found) {
            ASSERT_EQ(packages::content(found), model[entry]);
        }
        ASSERT_EQ(package.size(), int(model.size()));
    };

    for (int step = 1; step <= 10'000; ++step) {
        const std::size_t kind = upTo(100);
        // Times of growth and of shrinking take turns.
        if (kind < (step / 1'000 % 2 ? 30u : 50u))
            add();
        else if (kind < 80)
            remove();
        else if (kind < 82)
            copyFromAnother();
        else
            look();
        if (HasFatalFailure())
            FAIL() << "at step " << step;
        if (step % 100 != 0)
            continue;
        ASSERT_EQ(text(package.update()), "0 ");
        ASSERT_EQ(packages::elements(folder.read("p")), elements.text()) << step;
        ASSERT_EQ(text(package.open(wide(path))), "0 ");
        ASSERT_EQ(packages::contents(package), model) << step;
    }
    while (!model.empty()) {
        const std::string entry = model.begin()->first;
        ASSERT_EQ(package.deleteEntry(wide(entry)).code(), 0);
        model.erase(entry);
    }
    ASSERT_EQ(package.update().code(), 0);
    EXPECT_EQ(packages::elements(folder.read("p")).substr(0, 3), "85+") << "nothing is left over";
}

// Ten times the entries take ten times as long, and a little more; a hundred times if anything
// looked at all of them for each.
TEST(PackageModel, TakesTimeInProportionToItsEntries) {
    const auto secondsFor = [](int entries) {
        const TempFolder folder(TempFolder::memory());
        const zeString::IString path = wide(folder.path("p"));
        const zeString::IString source = wide(folder.write("source", "some bytes"));
        const auto name = [](int i) { return wide("folder/" + std::to_string(i)); };
        const std::clock_t start = std::clock();
        ioPackageFile package;
        EXPECT_EQ(package.open(path).code(), 0);
        const auto add = [&](int first, int step) {
            for (int i = first; i < entries; i += step)
                EXPECT_EQ(package.addEntry(source, name(i), false).code(), 0);
        };
        const auto remove = [&](int first, int step) {
            for (int i = first; i < entries; i += step)
                EXPECT_EQ(package.deleteEntry(name(i)).code(), 0);
        };
        add(0, 1);
        EXPECT_EQ(package.update().code(), 0);
        EXPECT_EQ(package.open(path).code(), 0);
        for (const auto& [key, index] : package.getDirectory())
            EXPECT_EQ(package.getEntry(key), package.getEntry(index));
        remove(0, 2); // free space between entries, all of which is used again
        add(0, 2);
        EXPECT_EQ(package.getEntry(name(0))->getOffset(), 85);
        remove(0, 1);
        EXPECT_EQ(package.size(), 0);
        return double(std::clock() - start) / CLOCKS_PER_SEC;
    };
    const double few = secondsFor(10'000);
    EXPECT_LT(secondsFor(100'000), 30 * few);
}

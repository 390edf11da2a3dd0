// SPDX-License-Identifier: MIT

// Packages against a plain model, which joins free space at once, looks names up one by one, and
// knows the bytes of the whole file.

#include <algorithm>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "Base/IO/ioPackageFile.h"
#include "Support/TempFolder.h"

#include "IO/chain/TestLinks.h"
#include "IO/package/PackageSupport.h"

using packages::Contents;
using packages::Element;
using packages::text;
using packages::wide;

namespace {

/// First fit over a list of elements, step by step.
class Model {
public:
    std::vector<Element> list{{"", 85, -1}};

    void free(const std::string& name) {
        const auto at = std::ranges::find(list, name, &Element::name) - list.begin();
        list[std::size_t(at)].name.clear();
        join(std::size_t(at));
        if (at > 0)
            join(std::size_t(at - 1));
    }

    void add(const Element& entry) {
        if (std::ranges::count(list, entry.name, &Element::name) != 0)
            free(entry.name);
        std::size_t at = 0; // the last element is the directory's place
        while (at + 1 < list.size() && (!list[at].name.empty() || list[at].size < entry.size))
            ++at;
        if (at + 1 == list.size() || list[at].size > entry.size) {
            list.insert(list.begin() + long(at), list[at]);
            list[at + 1].offset += entry.size;
            if (at + 2 < list.size())
                list[at + 1].size -= entry.size;
        }
        const std::int64_t offset = list[at].offset;
        list[at] = entry;
        list[at].offset = offset;
    }

private:
    void join(std::size_t at) {
        if (at + 1 >= list.size() || !list[at].name.empty() || !list[at + 1].name.empty())
            return;
        list[at].size = long(std::uint64_t(list[at].size) + std::uint64_t(list[at + 1].size));
        list.erase(list.begin() + long(at) + 1);
    }
};

class PackageModel : public testing::TestWithParam<unsigned> {
protected:
    std::size_t upTo(std::size_t n) { return random() % n; }
    std::string someName() { return "n" + std::to_string(upTo(20)); }

    /// A package of another writer, with free space beside free space and a place of any size.
    void startWithForeignFile() {
        std::string data;
        model.list.clear();
        for (std::size_t i = 0, n = upTo(14); i < n; ++i) {
            const std::string name = upTo(3) != 0 ? "" : "n" + std::to_string(20 + i);
            const std::string content(upTo(30), char('A' + i));
            model.list.push_back(
                {name, 85 + long(data.size()), long(content.size()), long(upTo(99))});
            if (!name.empty())
                contents[name] = content;
            data += content;
        }
        const std::int64_t sizes[] = {-1, 0, 40, std::numeric_limits<std::int64_t>::max()};
        model.list.push_back({"", 85 + long(data.size()), sizes[upTo(4)]});
        folder.write("p", packages::package(data, model.list));
    }

    void add() {
        const std::string name = someName();
        const bool fails = upTo(9) == 0; // a source that says that it is empty, and is not
        const std::string content =
            fails ? "" : randomData(upTo(400), GetParam(), unsigned(1 + upTo(9)));
        const zeString::IString source =
            fails ? wide("/proc/self/status") : wide(folder.write("source", content));
        ASSERT_EQ(package.addEntry(source, wide(name), !fails && upTo(3) == 0).code(),
                  fails ? 16 : 0);
        const ioPackageFileEntry* const entry = package.getEntry(wide(name));
        ASSERT_EQ(entry == nullptr, fails);
        model.add({name, 0, fails ? 0 : entry->getSize(), fails ? -1 : entry->getTimeStamp(),
                   !fails && entry->getCompressed()});
        contents[name] = content;
        if (fails)
            free(name);
    }

    void free(const std::string& name) {
        model.free(name);
        contents.erase(name);
    }

    void compare() {
        for (const auto& [name, index] : package.getDirectory())
            ASSERT_EQ(model.list.at(std::size_t(index)).name, name.asUTF8());
        for (int i = -1; i < int(model.list.size()) + 2; ++i) {
            const bool isInside = i >= 0 && i < int(model.list.size());
            const Element element = isInside ? model.list[std::size_t(i)] : Element{"", 0, 0};
            const ioPackageFileEntry* const entry = package.getEntry(i);
            ASSERT_EQ(entry ? entry->getName().asUTF8() : "", element.name);
            ASSERT_TRUE(!entry || entry->getOffset() == element.offset);
        }
        ASSERT_EQ(packages::contents(package), contents);
    }

    TempFolder folder{TempFolder::memory()};
    std::minstd_rand random{GetParam() + 1};
    ioPackageFile package;
    Model model;
    Contents contents;
};

} // namespace

TEST_P(PackageModel, ListsHoldsAndWritesTheSame) {
    const zeString::IString path = wide(folder.path("p"));
    if (GetParam() % 2 != 0)
        startWithForeignFile();
    ASSERT_EQ(text(package.open(path)), "0 ");
    for (int step = 1; step <= 300; ++step) {
        SCOPED_TRACE(step);
        const std::string name = someName();
        const bool isThere = contents.count(name) != 0;
        if (upTo(100) < (step / 50 % 2 ? 30U : 60U)) { // growth and shrinking take turns
            ASSERT_NO_FATAL_FAILURE(add());
        } else {
            ASSERT_EQ(package.deleteEntry(wide(name)).code(), isThere ? 0 : 13);
            if (isThere)
                free(name);
        }
        if (upTo(4) == 0) {
            ASSERT_NO_FATAL_FAILURE(compare());
        }
        if (step % 20 != 0)
            continue;
        ASSERT_EQ(text(package.update()), "0 ");
        const std::string file = folder.read("p");
        const auto place = std::size_t(model.list.back().offset);
        ASSERT_EQ(file.substr(0, 85),
                  packages::headerStart + packages::pointer(std::to_string(place)));
        const std::string directory = packages::directory(model.list);
        ASSERT_EQ(file.substr(place, directory.size()), directory);
        ASSERT_EQ(text(package.open(path)), "0 ");
        ASSERT_NO_FATAL_FAILURE(compare());
    }
}

INSTANTIATE_TEST_SUITE_P(Random, PackageModel, testing::Range(0U, 20U));

// SPDX-License-Identifier: MIT

// Opens a package, reads its entries in place and takes them out, and changes it: a package that
// opens can be changed, and opens again.

#include <cstddef>
#include <cstdint>
#include <filesystem>

#include "Base/IO/ioPackageFile.h"
#include "Support/TempFolder.h"

#include "Fuzz/require.h"
#include "IO/package/PackageSupport.h"

namespace {

void change(ioPackageFile& package, const zeString::IString& file) {
    if (package.size() > 0)
        require(
            package.deleteEntry(zeString::IString(package.getDirectory().begin()->first)).code() ==
            0);
    require(package.addEntry(L"/dev/null", L"x", false).code() == 7); // no file
    require(package.addEntry(file, L"x", true).code() == 0);
    require(package.update().code() == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempFolder folder(TempFolder::memory());
    static const zeString::IString file =
        packages::wide(folder.write("small", std::string(100, 's')));
    const zeString::IString path =
        packages::wide(folder.write("p", std::string(reinterpret_cast<const char*>(data), size)));
    ioPackageFile package;
    const int code = package.open(path).code();
    require(code == 0 || code == 17);
    require(code == 0 || (package.size() == 0 && package.getPackageFileName().isEmpty()));
    require(code != 0 || ioPackageFile::isFilePackageFile(path));
    if (code != 0)
        return 0;
    for (int index = 0; index <= static_cast<int>(size); ++index) // packets have many bytes
        if (const ioPackageFileEntry* entry = package.getEntry(index))
            require(entry->getOffset() >= 85 && entry->getSize() >= 0 &&
                    entry->getOffset() + entry->getSize() < static_cast<long>(size));
    packages::contents(package);
    (void)package.expand(packages::wide(folder.path("out/files")));
    require(!std::filesystem::exists(folder.path("out/files")) ||
            std::distance(std::filesystem::directory_iterator(folder.path()),
                          std::filesystem::directory_iterator()) == 3);
    std::filesystem::remove_all(folder.path("out"));
    change(package, file);
    std::string refused;
    require(packages::reopened(path.asUTF8(), &refused).count("x") == 1);
    return 0;
}

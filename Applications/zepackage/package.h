// SPDX-License-Identifier: MIT

/// @file
/// Packages: opening them, changing them so that nothing can be lost, and reading their entries.
/// Names of entries are in UTF-8.

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Base/IO/ioPackageFile.h"
#include "Base/Utility/zeUtilDescriptor.h"
#include "Base/Utility/zeUtilError.h"

namespace zepackage {

/// Throws a Failure "SUBJECT: REASON" unless `error` is a success.
void check(const zeUtil::Error& error, const std::string& subject);

/// A path or a name in UTF-8 as the library takes it. Throws a Failure for one that is not UTF-8,
/// since it would become another name.
zeString::IString libraryText(const std::string& text);

/// A package that is open for reading. What is read is the file that was opened, even if another
/// one is put in its place meanwhile.
class PackageReader {
public:
    /// Throws a Failure for anything else that may be at `path`, and never waits for it, as opening
    /// a FIFO would.
    explicit PackageReader(const std::string& path);

    const ioPackageFile& package() const { return package_; }

private:
    zeUtil::Descriptor file_;
    ioPackageFile package_;
};

/// Makes a package with what `fill` adds. One that is there is replaced if `force` is true, or else
/// refused.
void createPackage(const std::string& path, bool force,
                   const std::function<void(ioPackageFile&)>& fill);

/// Changes a package: see editPackage() in package.cpp for what survives. Throws a Failure, also if
/// another zepackage is changing it.
void editPackage(const std::string& path, const std::function<void(ioPackageFile&)>& change);

/// Writes a package anew, without free space.
void compactPackage(const std::string& path);

using Entries = std::vector<const ioPackageFileEntry*>;

/// The entries of these names, and those in folders of these names, each once; without names, all.
/// Throws a Failure that names what is not there.
Entries selectEntries(const ioPackageFile& package, const std::vector<std::string>& names);

/// The name of an entry.
std::string nameOf(const ioPackageFileEntry& entry);

/// Passes what an entry holds to `take`, block by block, expanded. Throws a Failure "NAME: REASON"
/// if it cannot be read whole, after the blocks before the damage.
void readEntry(const ioPackageFileEntry& entry, const std::function<void(std::string_view)>& take);

} // namespace zepackage

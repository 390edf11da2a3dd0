// SPDX-License-Identifier: MIT

#include "package.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <set>

#include "Base/IO/ioBufferedStreamInput.h"

#include "Shared/failure.h"
#include "Shared/save.h"
#include "Shared/terminal.h"

namespace zepackage {

namespace {

using zeUtil::Descriptor;

constexpr std::size_t blockSize = 65536;

/// What the codes of ioPackageFile.h mean to the user. The library's own texts name files that the
/// user does not know.
const char* reason(int code) {
    switch (code) {
    case 2:
    case 15:
        return "it cannot be written";
    case 4:
        return "it is not writable";
    case 6:
    case 7:
    case 9:
        return "it cannot be read";
    case 8:
    case 16:
        return "it was changed while it was read";
    case 10:
        return "a write failed: the disk may be full";
    case 11:
        return "its name is empty, or reserved for a device on other systems";
    case 12:
        return "its name is not allowed";
    case 13:
        return "there is no such entry";
    case 17:
        return "it is not a package, or its directory of entries is damaged";
    default:
        return "internal error";
    }
}

/// A regular file, open for reading.
Descriptor openFile(const std::string& path) {
    Descriptor file(
        zeUtil::retried([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
    if (!file.isOpen())
        throw app::Failure(path + ": cannot be opened: " + app::systemMessage(errno));
    struct stat status = {};
    if (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        throw app::Failure(path + ": it is not a package, but " +
                           (S_ISDIR(status.st_mode) ? "a folder" : "a device, a pipe or a socket"));
    return file;
}

/// A path that leads to the open file, whatever becomes of its name.
zeString::IString placeOf(const Descriptor& file) {
    return ("/proc/self/fd/" + std::to_string(file.get())).c_str();
}

/// A regular file that no other zepackage changes as long as it is open. The lock goes with the
/// file, not with its name.
Descriptor lockFile(const std::string& path) {
    Descriptor file = openFile(path);
    if (flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        throw app::Failure(path + ": another zepackage is changing it");
    return file;
}

/// A package that is to be changed.
class LockedPackage {
public:
    /// The target is looked at under the lock: it may be what another one has just put in place.
    explicit LockedPackage(const std::string& path) : file_(lockFile(path)), target_(path) {
        if (!target_.isSameFile(file_.get()))
            throw app::Failure(path + ": another zepackage has just changed it");
    }

    const app::Target& target() const { return target_; }
    zeString::IString place() const { return placeOf(file_); }

    /// By the system, which shares the blocks on disk where the file system can.
    void copyTo(const std::string& path) const {
        constexpr std::size_t atOnce = 1 << 30;
        const Descriptor copy(zeUtil::retried(
            [&] { return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600); }));
        ssize_t size = copy.isOpen() ? 1 : -1;
        while (size > 0)
            size = zeUtil::retried([&] {
                const ssize_t done =
                    copy_file_range(file_.get(), nullptr, copy.get(), nullptr, atOnce, 0);
                return done >= 0 ? done : sendfile(copy.get(), file_.get(), nullptr, atOnce);
            });
        if (size < 0)
            throw app::Failure("it cannot be copied: " + app::systemMessage(errno));
    }

private:
    Descriptor file_;
    app::Target target_;
};

std::string withoutSlash(std::string name) {
    while (name.size() > 1 && name.ends_with('/'))
        name.pop_back();
    return name;
}

} // namespace

void check(const zeUtil::Error& error, const std::string& subject) {
    if (error.code() != 0)
        throw app::Failure(subject + ": " + reason(error.code()));
}

zeString::IString libraryText(const std::string& text) {
    bool ok = false;
    zeString::IString result(text.c_str(), zeString::EncodingUTF8, &ok);
    if (!ok || result.asUTF8() != text)
        throw app::Failure(text + ": its name is not UTF-8");
    return result;
}

PackageReader::PackageReader(const std::string& path) : file_(openFile(path)) {
    check(package_.open(placeOf(file_)), path);
}

void createPackage(const std::string& path, bool force,
                   const std::function<void(ioPackageFile&)>& fill) {
    const app::Target target(path);
    if (target.exists() && !force)
        throw app::Failure(path + ": exists already; --force replaces it");
    app::saveFile(target, [&](const std::string& name) {
        ioPackageFile package;
        check(package.open(libraryText(name)), "the new package");
        fill(package);
        check(package.update(), "the new package");
    });
}

/// A copy is changed, and a protected write puts it in the place of the package: so whenever the
/// process ends, the package is the old one or the new one. Changing it in place could leave
/// neither, whatever the order of steps, since an entry that finds no free space is written over
/// the directory. Between the two renames of the protected write, the old package has another name,
/// which app::leftoverNotes() finds.
void editPackage(const std::string& path, const std::function<void(ioPackageFile&)>& change) {
    const LockedPackage old(path);
    app::saveFile(old.target(), [&](const std::string& name) {
        old.copyTo(name);
        ioPackageFile package;
        check(package.open(libraryText(name)), "the copy");
        change(package);
        check(package.update(), "the copy");
    });
}

void compactPackage(const std::string& path) {
    const LockedPackage old(path);
    app::saveFile(old.target(), [&](const std::string& name) {
        ioPackageFile package;
        check(package.open(old.place()), "the old package");
        check(package.write(libraryText(name)), "the new package");
    });
}

Entries selectEntries(const ioPackageFile& package, const std::vector<std::string>& names) {
    std::map<std::string, int> all;
    for (const auto& [name, index] : package.getDirectory())
        all.emplace_hint(all.end(), name.asUTF8(), index);
    Entries entries;
    std::set<int> taken;
    const auto take = [&](auto first, const auto& last) {
        for (; first != last; ++first)
            if (taken.insert(first->second).second)
                entries.push_back(package.getEntry(first->second));
    };
    if (names.empty())
        take(all.begin(), all.end());
    for (const std::string& name : names) {
        const auto [entry, next] = all.equal_range(name);
        const std::string folder = withoutSlash(name);
        const auto first = all.lower_bound(folder + '/');
        const auto last = all.lower_bound(folder + char('/' + 1));
        if (entry == next && first == last)
            throw app::Failure(name + ": there is no such entry");
        take(entry, next);
        take(first, last);
    }
    return entries;
}

std::string nameOf(const ioPackageFileEntry& entry) {
    return entry.getName().asUTF8();
}

/// A plain entry has no checksum, but a size; a compressed one has an end of its own.
void readEntry(const ioPackageFileEntry& entry, const std::function<void(std::string_view)>& take) {
    ioBufferedStreamInput stream;
    stream.openPackageFileEntry(&entry);
    if (stream.getStatus() != streamOK && stream.getStatus() != streamEOF)
        throw app::Failure(nameOf(entry) + ": the package cannot be opened");
    if (entry.getCompressed()) {
        stream.compress(true);
        stream.checksum(true);
    }
    std::string block(blockSize, '\0');
    long total = 0;
    while (stream.getStatus() == streamOK) {
        const int size = stream.readData(block.data(), static_cast<int>(block.size()));
        if (size > 0) {
            take({block.data(), static_cast<std::size_t>(size)});
            total += size;
        }
    }
    const ioStreamStatus end = stream.getStatus();
    stream.close();
    if (entry.getCompressed() ? end != streamCompressEnd
                              : end != streamEOF || total != entry.getSize())
        throw app::Failure(nameOf(entry) + ": it is damaged or cut off");
}

} // namespace zepackage

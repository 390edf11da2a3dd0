// SPDX-License-Identifier: MIT

// What goes into a package and comes out of it.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Base/IO/ioBufferFD.h"
#include "Base/IO/ioBufferedStreamInput.h"
#include "Base/IO/ioPackageFile.h"
#include "Base/IO/package/ioPackageFileFailureImpl.h"
#include "Base/OS/zeOSError.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSTempFiles.h"
#include "Base/Utility/zeUtilDescriptor.h"

using zeString::IString;
using zeUtil::Error;

namespace {

constexpr int blockSize = 4096;

bool isFailure(ioStreamStatus status) {
    return status != streamOK && status != streamEOF;
}

/// A new file, which others can neither read nor have made before. It has no name, so that nothing
/// stays behind however the process ends. Not open if that fails.
zeUtil::Descriptor namelessFile() {
    const IString path = zeOS::createTmpFilename(IString(), nullptr).path();
    zeUtil::Descriptor file(zeUtil::retried([&] {
        return ::open(path.asUTF8(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    }));
    if (file.isOpen())
        unlink(path.asUTF8());
    return file;
}

/// Makes `out` write to `file`, which it owns from now on.
void openOutput(ioBufferedStreamOutput& out, zeUtil::Descriptor file) {
    auto* const sink = new ioBufferFD(false);
    out.addBufferToChain(sink);
    sink->useFD(file.release());
    out.flush(); // takes over the failure of a file that did not open
}

/// Copies blocks until the input or the output fails, or the input ends. Returns how many bytes
/// that were.
long copyBlocks(ioBufferedStreamInput& in, ioBufferedStreamOutput& out) {
    char block[blockSize];
    long copied = 0;
    for (int got; (got = in.readData(block, blockSize)) > 0; copied += got) {
        out.writeData(block, got);
        if (out.getStatus() != streamOK)
            break;
    }
    return copied;
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Whether a copy of `package` may be written to `path`, once what is there has been deleted. What
/// cannot be looked at may be the package itself.
bool clearForCopy(const IString& path, const IString& package) {
    struct stat target;
    struct stat source;
    if (stat(path.asUTF8(), &target) != 0)
        return errno == ENOENT || errno == ENOTDIR;
    return stat(package.asUTF8(), &source) == 0 && !isSameFile(source, target) &&
           unlink(path.asUTF8()) == 0;
}

/// Empties a file that is known not to be `package`, which is never empty itself.
bool emptyTarget(int file, const struct stat& target, const IString& package) {
    struct stat source;
    return target.st_size == 0 ||
           (stat(package.asUTF8(), &source) == 0 && !isSameFile(source, target) &&
            zeUtil::retried([&] { return ftruncate(file, 0); }) == 0);
}

/// Opens a file to extract to. With O_NOFOLLOW among the flags it must be a plain file.
zeUtil::Descriptor openTarget(int directory, const char* path, int flags, const IString& package) {
    zeUtil::Descriptor file(zeUtil::retried(
        [&] { return openat(directory, path, O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0666); }));
    struct stat target;
    if (!file.isOpen() || fstat(file.get(), &target) != 0)
        return {};
    const bool isUsable = S_ISREG(target.st_mode) ? emptyTarget(file.get(), target, package)
                                                  : (flags & O_NOFOLLOW) == 0;
    return isUsable ? std::move(file) : zeUtil::Descriptor();
}

/// The steps from `directory` to `target`, both in normal form; none if it leads out of it. The
/// normal form of what lies below a directory like "../.." can have ".." anywhere.
std::vector<std::string> stepsBelow(const IString& directory, const IString& target) {
    IString front(directory);
    if (front != L"/")
        front.append(L'/');
    if (target.find(front) != 0)
        return {};
    std::vector<std::string> steps{"."};
    std::istringstream path(target.substr(front.length()).asUTF8());
    for (std::string step; std::getline(path, step, '/');) {
        if (step == "..")
            steps.pop_back();
        else if (!step.empty())
            steps.push_back(step);
        if (steps.empty())
            break;
    }
    return steps;
}

/// Steps into the directory `name`, which is made if it is missing. Follows no link.
zeUtil::Descriptor enterDirectory(int parent, const char* name) {
    if (mkdirat(parent, name, 0777) != 0 && errno != EEXIST)
        return {};
    return zeUtil::Descriptor(zeUtil::retried(
        [&] { return openat(parent, name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
}

Error directoryFailure() {
    return packageFailure(packageDirectoryFailed, L"%S", zeOS::getLastError());
}

} // namespace

// Adding

IString ioPackageFile::cleanupName(const IString& name) {
    IString text(name);
    for (;;) {
        text.replace(L"\\", L"/");
        if (text.length() > 1 && text[1] == L':')
            text.erase(0, 2);
        if (text.length() > 2 && text.find(L"./") == 0)
            text.erase(0, 2);
        else if (text.length() > 3 && text.find(L"../") == 0)
            text.erase(0, 3);
        else if (!text.isEmpty() && text[0] == L'/')
            text.erase(0, 1);
        else
            return text;
    }
}

Error ioPackageFile::verifyAddEntry(const IString& name) const {
    if (fileName_.isEmpty())
        return Error(packageNotOpen, "The package file has not been opened yet.");
    if (!writable_)
        return Error(packageNotWritable,
                     "This package file can not be modified as it is not writable.");
    if (name.isEmpty()) // it would be free space
        return Error(packageNoName, "The name can not be empty.");
    const zeOS::Filename filename(name);
    if (zeOS::isWindowsReservedDeviceName(filename))
        return packageFailure(packageNoName,
                              L"File is using a windows reserved device name.  Please choose "
                              L"another name: %S",
                              name);
    // A name that the directory does not give back as it is would be another one, or free space.
    const bool storable = IString(name.asUTF8(), zeString::EncodingUTF8) == name;
    const IString& last = filename.basename();
    if (!storable || last == L"." || last == L"..")
        return packageFailure(packageBadName, L"File is using a name which is not allowed: %S",
                              name);
    return Error();
}

Error ioPackageFile::addEntry(const IString& sourcePath, const IString& name, bool compress) {
    const IString stored = cleanupName(name);
    Error error = verifyAddEntry(stored);
    if (error.code() != 0)
        return error;
    const zeOS::FileStatus status = getStatus(sourcePath);
    if (!status.exists())
        return packageFailure(packageNoSource, L"File does not exist: %S\n", sourcePath);
    if (!status.isReadable() || !status.isFile()) // opening a FIFO would wait for its writer
        return packageFailure(packageCanNotRead, L"Could not read file: %S\n", sourcePath);
    if (!compress)
        return copyFileIntoPackage(sourcePath, status.size(), status.lastModification(), false,
                                   stored);

    const zeUtil::Descriptor file = namelessFile();
    const IString temporary(("/proc/self/fd/" + std::to_string(file.get())).c_str());
    long compressedSize = 0;
    error = compressFile(sourcePath, temporary, status.size(), compressedSize);
    if (error.code() != 0)
        return error;
    const bool smaller = compressedSize < status.size();
    return copyFileIntoPackage(smaller ? temporary : sourcePath,
                               smaller ? compressedSize : status.size(), status.lastModification(),
                               smaller, stored);
}

Error ioPackageFile::addEntry(const ioPackageFileEntry* entry, const IString& name) {
    const IString stored = cleanupName(name);
    Error error = verifyAddEntry(stored);
    if (error.code() != 0)
        return error;
    if (!entry)
        return Error(packageCanNotRead, "The given package file entry is NULL.");
    if (entry->getPackage() == this)
        return Error(packageCanNotOpenForWrite, "The source entry can not be in the package.");
    return copyEntryIntoPackage(entry, stored);
}

Error ioPackageFile::deleteEntry(const IString& name) {
    if (fileName_.isEmpty())
        return Error(packageNotOpen, "The package file has not been opened yet.");
    if (!writable_)
        return Error(packageNotWritable,
                     "This package file can not be modified as it is not writable.");
    const auto found = names_.find(name);
    if (found == names_.end())
        return packageFailure(packageUnknownName,
                              L"Can not delete named entry as it does not exist: %S", name);
    const int index = found->second;
    names_.erase(found);
    freeEntry(index);
    return Error();
}

/// Compresses `source` into a file that exists.
Error ioPackageFile::compressFile(const IString& source, const IString& destination, long size,
                                  long& compressedSize) {
    ioBufferedStreamInput in;
    in.openFile(source);
    ioBufferedStreamOutput out;
    openOutput(out, zeUtil::Descriptor(zeUtil::retried(
                        [&] { return ::open(destination.asUTF8(), O_WRONLY | O_CLOEXEC); })));
    out.compress(true);
    out.checksum(true);
    const long copied = copyBlocks(in, out);
    // A failure would not rise through the filters: they go first.
    out.checksum(false);
    out.compress(false);
    out.close();
    in.close();
    if (out.getStatus() != streamOK)
        return packageFailure(packageWriteFailed, L"Error compressing file: %S", source);
    if (in.getStatus() != streamEOF)
        return packageFailure(packageReadFailed, L"Error reading file: %S", source);
    if (copied != size)
        return packageFailure(packageSizeInCompressing,
                              L"While compressing file it changed size: %S", source);
    compressedSize = getStatus(destination).size();
    return Error();
}

Error ioPackageFile::copyFileIntoPackage(const IString& source, long size, long timeStamp,
                                         bool compressed, const IString& name) {
    ioBufferedStreamInput in;
    in.openFile(source);
    if (in.getStatus() != streamOK)
        return packageFailure(packageCanNotRead, L"Could not read file: %S\n", source);
    Error error = copyStreamIntoPackage(in, size, timeStamp, compressed, name);
    in.close();
    return error;
}

Error ioPackageFile::copyStreamIntoPackage(ioBufferedStreamInput& stream, long size, long timeStamp,
                                           bool compressed, const IString& name) {
    Error error = openPackageForOutput();
    if (error.code() != 0)
        return error;
    if (const auto old = names_.find(name); old != names_.end())
        freeEntry(old->second); // the new one may take its place
    const int index = createEntry(size);
    ioPackageFileEntry& entry = entries_[static_cast<std::size_t>(index)];
    error = fillEntry(stream, entry.offset_, size, name);
    if (error.code() != 0) {
        freeEntry(index);
        names_.erase(name);
        return error;
    }
    entry.name_ = name;
    entry.timeStamp_ = timeStamp;
    entry.compressed_ = compressed;
    names_[name] = index;
    return Error();
}

/// Copies a stream to the place of an entry.
Error ioPackageFile::fillEntry(ioBufferedStreamInput& stream, long offset, long size,
                               const IString& name) {
    const auto writeFailure = [&name] {
        return packageFailure(packageWriteFailed, L"Error writing entry: %S", name);
    };
    if (!seekOutput(offset))
        return writeFailure();
    char block[blockSize];
    long copied = 0;
    // Up to more than the size: the last read must meet the end of the source. What is too much
    // belongs to the entry behind, and is not written.
    for (int got; copied <= size && (got = stream.readData(block, blockSize)) > 0; copied += got) {
        output_.writeData(block, static_cast<int>(std::min<long>(got, size - copied)));
        if (output_.getStatus() != streamOK)
            break;
    }
    output_.flush();
    if (output_.getStatus() != streamOK)
        return writeFailure();
    if (isFailure(stream.getStatus()))
        return packageFailure(packageReadFailed, L"Error reading file for entry: %S", name);
    if (stream.getStatus() != streamEOF || copied != size)
        return packageFailure(packageSizeInCopying,
                              L"While writing file for entry it changed size: %S", name);
    return Error();
}

Error ioPackageFile::copyEntryIntoPackage(const ioPackageFileEntry* entry, const IString& name) {
    if (name.isEmpty())
        return Error(packageNoName, "The name can not be empty.");
    if (names_.contains(name))
        return packageFailure(packageNameExists, L"The entry is already present in the package: %S",
                              name);
    ioBufferedStreamInput in;
    in.openPackageFileEntry(entry);
    if (isFailure(in.getStatus()))
        return packageFailure(packageCanNotRead, L"Could not read package file entry: %S\n",
                              entry->getName());
    Error error = copyStreamIntoPackage(in, entry->getSize(), entry->getTimeStamp(),
                                        entry->getCompressed(), name);
    in.close();
    return error;
}

Error ioPackageFile::copyEntryIntoPackage(const ioPackageFileEntry* entry) {
    return copyEntryIntoPackage(entry, entry->getName());
}

Error ioPackageFile::write(const IString& path) {
    if (fileName_.isEmpty())
        return Error(packageNotOpen, "The package file has not been opened yet.");
    if (!clearForCopy(path, fileName_))
        return Error(packageNotWritable, "The pacakge is not writable.");
    ioPackageFile copy;
    Error error = copy.open(path);
    if (error.code() != 0)
        return error;
    if (!copy.writable_)
        return Error(packageNotWritable, "The pacakge is not writable.");
    for (const auto& [name, index] : getDirectory()) {
        error = copy.copyEntryIntoPackage(getEntry(index));
        if (error.code() != 0)
            return error;
    }
    copy.dirty_ = true; // a package without entries, too, is given a directory
    error = copy.update();
    if (error.code() == 0)
        swap(copy);
    return error;
}

// Extracting

Error ioPackageFile::extractEntry(const ioPackageFileEntry* entry, const IString& path) {
    if (!entry)
        return Error(packageCanNotRead, "The given package file entry is NULL.");
    const zeOS::Filename target(path);
    if (!target.dirname().isEmpty()) {
        Error error = createDirectory(target.dirname());
        if (error.code() != 0)
            return error;
    }
    return extractTo(*entry, path, AT_FDCWD, path.asUTF8(), 0);
}

/// Extracts to `file` in `directory`, a descriptor; `path` is what messages call it.
Error ioPackageFile::extractTo(const ioPackageFileEntry& entry, const IString& path, int directory,
                               const char* file, int flags) {
    closePackageForOutput();
    ioBufferedStreamInput in;
    in.openPackageFileEntry(&entry);
    if (isFailure(in.getStatus()))
        return packageFailure(packageCanNotRead, L"Could not read package file entry: %S\n",
                              entry.getName());
    if (entry.getCompressed()) {
        in.compress(true);
        in.checksum(true);
    }
    ioBufferedStreamOutput out;
    openOutput(out, openTarget(directory, file, flags, entry.getPackageName()));
    Error error;
    if (out.getStatus() != streamOK) {
        error = packageFailure(packageCanNotCreate, L"Can not create file: %S", path);
    } else {
        copyBlocks(in, out);
        const bool ended = in.getStatus() == streamEOF || in.getStatus() == streamCompressEnd;
        out.close(); // flushes, and some systems tell of a full disk only now
        if (out.getStatus() != streamOK)
            error = packageFailure(packageWriteFailed, L"Error writing file: %S", path);
        else if (!ended)
            error = packageFailure(packageReadFailed, L"Error reading package file entry: %S",
                                   entry.getName());
    }
    in.close();
    return error;
}

Error ioPackageFile::expand(const IString& directory) {
    Error error = createDirectory(directory);
    if (error.code() != 0)
        return error;
    const IString path = zeOS::Filename(directory).path();
    const zeUtil::Descriptor place(
        zeUtil::retried([&] { return ::open(path.asUTF8(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
    if (!place.isOpen())
        return directoryFailure();
    for (const auto& [name, index] : getDirectory()) {
        error = expandEntry(*getEntry(index), place.get(), path);
        if (error.code() != 0)
            break;
    }
    return error;
}

/// Extracts to where the entry's name leads below `directory`, a descriptor, step by step, so that
/// no link can lead elsewhere.
Error ioPackageFile::expandEntry(const ioPackageFileEntry& entry, int directory,
                                 const IString& directoryPath) {
    const IString target = zeOS::Filename::join(directoryPath, entry.getName());
    const std::vector<std::string> steps = stepsBelow(directoryPath, target);
    if (steps.empty())
        return packageFailure(packageBadName, L"File is using a name which is not allowed: %S",
                              entry.getName());
    zeUtil::Descriptor parent;
    int parentNumber = directory;
    for (std::size_t i = 1; i + 1 < steps.size(); ++i) { // the first is the directory itself
        parent = enterDirectory(parentNumber, steps[i].c_str());
        if (!parent.isOpen())
            return directoryFailure();
        parentNumber = parent.get();
    }
    return extractTo(entry, target, parentNumber, steps.back().c_str(), O_NOFOLLOW | O_NONBLOCK);
}

Error ioPackageFile::createDirectory(const IString& path) {
    const Error error = zeOS::File(path).makeDirectoryAll();
    return error.code() == 0 ? Error() : Error(packageDirectoryFailed, "%s", error.message());
}

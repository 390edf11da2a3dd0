// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSLocalFileTransport.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "Base/OS/files/zeOSLocalFileTransportImpl.h"
#include "Base/OS/zeOSError.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSTempDirectory.h"

namespace zeOS {
namespace {

using zeString::IString;
using zeString::String;

/// What `fopen` is given. Passed on as it comes out: "rw" is one way of saying "r", and an empty
/// mode or a mere "b" is refused.
std::string streamMode(int mode) {
    std::string text;
    if (mode & File::ModeRead)
        text += 'r';
    if (mode & File::ModeWrite)
        text += 'w';
    if (mode & File::ModeAppend)
        text = "a+";
    if ((mode & (File::ModeText | File::ModeBinary)) != File::ModeText)
        text += 'b';
    return text;
}

zeUtil::Error openError(int reason) {
    switch (reason) {
    case ENOENT:
        return File::getError(File::ErrDoesNotExist);
    case EEXIST:
        return File::getError(File::ErrFileExists);
    default:
        return File::getError(File::ErrIO);
    }
}

/// The error of a call that returned `result`: `known` for EEXIST, ErrIO for every other reason.
zeUtil::Error directoryError(int result, File::ErrorCode known) {
    if (result == 0)
        return zeUtil::Error();
    return File::getError(errno == EEXIST ? known : File::ErrIO);
}

zeUtil::Error makeLocalDirectory(const IString& path) {
    return directoryError(::mkdir(path.asUTF8(), 0777), File::ErrFileExists);
}

/// Whether there is a directory of that name; no answer if it cannot be asked.
std::optional<bool> findDirectory(IString path) {
    // With a separator at its end the system would refuse the name of a file.
    if (path.length() > 1 && path[path.last()] == Filename::separator())
        path.erase(path.last());
    struct stat status;
    if (::stat(path.asUTF8(), &status) != 0)
        return std::nullopt;
    return S_ISDIR(status.st_mode);
}

/// How long the first `length` characters of a path are without their last component; 0 if that is
/// the first one.
unsigned int lengthAbove(const IString& path, unsigned int length) {
    const unsigned int last = path.rfind(Filename::separator(), length - 1);
    return last == String::npos ? 0 : last;
}

/// `count` letters from a to y: `rand() % 25` has never given a z.
IString randomLetters(int count) {
    IString letters;
    for (int i = 0; i < count; ++i)
        letters.append(static_cast<wchar_t>(L'a' + std::rand() % 25));
    return letters;
}

/// What mkstemp() is to fill in: the base name with its suffix once more, which is how the names of
/// these files have always looked.
IString temporarySeed(const IString& text) {
    const Filename name(text);
    IString seed = plus(name.basename(), name.baseSuffix());
    if (seed.isEmpty() || seed == L".")
        seed.format(L"ASTMP%d", static_cast<int>(::getpid()));
    return seed.append(L"XXXXXX");
}

/// A new file, open, and its name.
struct Temporary {
    std::FILE* file;
    int reason; ///< errno, where there is no file
    IString name;
};

Temporary openTemporary(const IString& seed, const std::string& mode) {
    std::string name = seed.asMultibyte();
    const int fd = ::mkstemp(name.data());
    std::FILE* file = fd == -1 ? nullptr : ::fdopen(fd, mode.c_str());
    const int reason = errno;
    if (fd != -1 && !file)
        ::close(fd);
    return {file, reason, Filename(IString(name.c_str())).path()};
}

} // namespace

// The factory.

FileTransport* LocalFileTransportFactory::create(const IString& name) {
    std::optional<IString> storage;
    return new LocalFileTransport(localPath(name, storage));
}

int LocalFileTransportFactory::s_forceTransportLoad() {
    return 1;
}

// What else is done with local paths.

const IString& localPath(const IString& name, std::optional<IString>& storage) {
    const unsigned int colon = name.find(L':');
    if (colon == String::npos || name.substr(0, colon) != L"file")
        return name;
    storage.emplace(name.substr(colon + 1));
    return storage->rstrip(Filename::separator()).prepend(Filename::separator());
}

bool mayBeLocalLink(const IString& path) {
    struct stat status;
    return ::lstat(path.asUTF8(), &status) != 0 || S_ISLNK(status.st_mode);
}

void unlinkLocal(const IString& path) {
    ::unlink(path.asUTF8());
}

// The transport.

LocalFileTransport::~LocalFileTransport() {
    LocalFileTransport::close();
}

zeUtil::Error LocalFileTransport::read(void* buffer, unsigned long count, unsigned long* done) {
    const std::size_t got = file_ ? std::fread(buffer, 1, count, file_) : 0;
    if (done)
        *done = got;
    if (!file_)
        return File::getError(File::ErrIO);
    // A read that fails is a success with a short count: only the end is told.
    return std::feof(file_) ? File::getError(File::ErrEndOfFile) : zeUtil::Error();
}

zeUtil::Error LocalFileTransport::write(const void* buffer, unsigned long count,
                                        unsigned long* done) {
    const std::size_t put = file_ ? std::fwrite(buffer, 1, count, file_) : 0;
    if (done)
        *done = put;
    return file_ && put == count ? zeUtil::Error() : File::getError(File::ErrIO);
}

zeUtil::Error LocalFileTransport::open(int mode) {
    close();
    file_ = std::fopen(name_.asUTF8(), streamMode(mode).c_str());
    return file_ ? zeUtil::Error() : openError(errno);
}

zeUtil::Error LocalFileTransport::openTemp(int mode) {
    close();
    // mkstemp() gets the seed alone: the file is made in the current directory, whatever directory
    // this name has, and whatever the one for temporary files is.
    IString seed = temporarySeed(name_);
    int reason = 0;
    for (int attempt = 0; attempt < 10; ++attempt) {
        const Temporary made = openTemporary(seed, streamMode(mode));
        if (made.file) {
            file_ = made.file;
            name_ = made.name;
            return zeUtil::Error();
        }
        reason = made.reason;
        if (reason != EEXIST)
            break;
        seed = temporarySeed(randomLetters(5));
    }
    return openError(reason);
}

zeUtil::Error LocalFileTransport::close() {
    // Nobody hears of a buffer that the disk had no room for: closing always succeeds.
    if (file_)
        std::fclose(file_);
    file_ = nullptr;
    return zeUtil::Error();
}

zeUtil::Error LocalFileTransport::makeDirectory() {
    return makeLocalDirectory(name_);
}

zeUtil::Error LocalFileTransport::makeTempDirectory() {
    IString base = Filename(name_).dirname();
    if (base.isEmpty())
        base = getTempDirectory().path();
    base.append(Filename::separator());
    zeUtil::Error error;
    for (int attempt = 0; attempt < 3; ++attempt) {
        name_ = plus(base, randomLetters(10)); // kept also when the last attempt fails
        error = makeLocalDirectory(name_);
        if (error.code() == File::ErrNone)
            break;
    }
    return error;
}

zeUtil::Error LocalFileTransport::makeDirectoryAll() {
    if (isDirectory())
        return zeUtil::Error();
    // Up from here until a directory is there, two steps at a time. Only each second step may be
    // the first component: callers know the error for a path that is climbed in vain, and that
    // nothing is made then.
    const auto isThere = [this](unsigned int length) {
        return findDirectory(name_.substr(0, length)) == true;
    };
    std::vector<unsigned int> missing{name_.length()}; // the lengths of the paths to make
    for (;;) {
        const unsigned int parent = lengthAbove(name_, missing.back());
        if (parent == 0)
            return File::getError(File::ErrPathTooLong);
        if (isThere(parent))
            break;
        missing.push_back(parent);
        const unsigned int grand = lengthAbove(name_, parent);
        if (grand == 0 || isThere(grand))
            break;
        missing.push_back(grand);
    }
    for (; !missing.empty(); missing.pop_back())
        if (zeUtil::Error error = makeLocalDirectory(name_.substr(0, missing.back()));
            error.code() != File::ErrNone)
            return error;
    return zeUtil::Error();
}

zeUtil::Error LocalFileTransport::readDir(std::vector<IString>& names, bool fullNames) {
    names.clear();
    IString directory = name_;
    if (!directory.isEmpty() && directory[directory.last()] != Filename::separator())
        directory.append(Filename::separator());
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(directory.asUTF8()), &::closedir);
    if (!entries)
        return zeUtil::Error(); // a directory that cannot be read looks empty

    // Bytes first, so that the array is made once: growing would copy every name again.
    std::string bytes;
    std::size_t count = 0;
    while (const dirent* entry = ::readdir(entries.get())) {
        bytes.append(entry->d_name).push_back('\0');
        ++count;
    }
    names.reserve(count);
    for (const char* name = bytes.c_str(); count > 0; --count, name += std::strlen(name) + 1) {
        names.emplace_back(name, zeString::EncodingUTF8);
        if (fullNames)
            names.back().prepend(directory);
    }
    return zeUtil::Error();
}

zeUtil::Error LocalFileTransport::moveTo(FileTransport& dest) {
    FileStatus here;
    FileStatus there;
    zeUtil::Error error = query(here);
    dest.query(there);
    if (error.code() != File::ErrNone)
        return error;
    if (!here.exists())
        return File::getError(File::ErrFileExists); // that code, whatever its words
    if (transportId() == dest.transportId() &&
        (isDirectory() == dest.isDirectory() || !there.exists()) &&
        std::rename(name_.asUTF8(), dest.getFullName().asUTF8()) == 0)
        return zeUtil::Error();
    return FileTransport::moveTo(dest); // to another file system, for one
}

zeUtil::Error LocalFileTransport::deleteSelf() {
    // Linux says ENOTEMPTY, not EEXIST, of a directory that is not empty: that is ErrIO.
    if (isDirectory())
        return directoryError(::rmdir(name_.asUTF8()), File::ErrDirectoryNotEmpty);
    return ::unlink(name_.asUTF8()) == 0 ? zeUtil::Error() : File::getError(File::ErrIO);
}

bool LocalFileTransport::isDirectory() const {
    if (!directoryKnown_) {
        const std::optional<bool> found = findDirectory(name_);
        directoryKnown_ = found.has_value();
        directoryValue_ = found.value_or(directoryValue_);
    }
    return directoryValue_;
}

IString LocalFileTransport::getNameTitle() const {
    const unsigned int last = name_.rfind(Filename::separator());
    return last == String::npos ? IString() : name_.substr(0, last + 1);
}

IString LocalFileTransport::getNameBase() const {
    const unsigned int last = name_.rfind(Filename::separator());
    return last == String::npos ? IString() : name_.substr(last + 1);
}

zeUtil::Error LocalFileTransport::query(FileStatus& status) const {
    struct stat found;
    const char* path = name_.asUTF8();
    if (::stat(path, &found) != 0) {
        if (errno == ENOENT)
            return zeUtil::Error();
        return zeUtil::Error(File::ErrIO, getLastError());
    }
    status.setIsDirectory(S_ISDIR(found.st_mode));
    status.setIsFile(S_ISREG(found.st_mode));
    status.setExists(true);
    status.setSize(found.st_size);
    status.setLastModification(found.st_mtime);
    status.setCreationDate(found.st_ctime);
    status.setIsRemote(false);
    status.setIsReadable(::access(path, R_OK) == 0);
    status.setIsWritable(::access(path, W_OK) == 0);
    return zeUtil::Error();
}

zeUtil::Error LocalFileTransport::queryOwnerGroup(FileStatus& status) {
    FileTransport::queryOwnerGroup(status); // "Unknown", which is no error here
    return zeUtil::Error();
}

} // namespace zeOS

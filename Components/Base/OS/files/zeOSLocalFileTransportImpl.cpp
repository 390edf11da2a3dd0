// SPDX-License-Identifier: MIT

#include "Base/OS/files/zeOSLocalFileTransportImpl.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>

#include "Base/OS/files/zeOSLocalPathImpl.h"
#include "Base/OS/zeOSError.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSTempDirectory.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace zeOS {
namespace {

using zeString::IString;
using zeString::String;

/// The mode of `fopen` for the bits of `mode`, passed on as it comes out: the C library takes "rw"
/// for "r", and refuses an empty mode and "b".
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

/// How long the first `length` characters of a path are without their last component; 0 if that is
/// the first one.
unsigned int lengthAbove(const IString& path, unsigned int length) {
    const unsigned int last = path.rfind(Filename::separator(), length - 1);
    return last == String::npos ? 0 : last;
}

/// `count` letters from a to y: the names contain no z, kept for compatibility.
IString randomLetters(int count) {
    IString letters;
    for (int i = 0; i < count; ++i)
        letters.append(static_cast<wchar_t>(L'a' + std::rand() % 25));
    return letters;
}

/// The pattern of a temporary name: the base name with its suffix once more, kept for
/// compatibility.
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
    zeUtil::Descriptor fd(::mkostemp(name.data(), O_CLOEXEC));
    std::FILE* file = fd.isOpen() ? ::fdopen(fd.get(), mode.c_str()) : nullptr;
    const int reason = errno;
    if (file)
        fd.release();
    return {file, reason, Filename(IString(name.c_str())).path()};
}

} // namespace

LocalFileTransport::~LocalFileTransport() {
    LocalFileTransport::close();
}

zeUtil::Error LocalFileTransport::read(void* buffer, unsigned long count, unsigned long* done) {
    const std::size_t got = file_ ? std::fread(buffer, 1, count, file_) : 0;
    if (done)
        *done = got;
    if (!file_)
        return File::getError(File::ErrIO);
    // A read that fails is a success with a short count: only the end is reported.
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
    file_ = std::fopen(name_.asUTF8(), (streamMode(mode) + 'e').c_str()); // close-on-exec
    return file_ ? zeUtil::Error() : openError(errno);
}

zeUtil::Error LocalFileTransport::openTemp(int mode) {
    close();
    // The seed alone: the file is made in the current directory, whatever directory this name has,
    // and whatever the one for temporary files is.
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
    // Always a success, also where the disk had no room for the buffer.
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
    const auto isThere = [this](unsigned int length) {
        return findLocalDirectory(name_.substr(0, length)) == true;
    };
    // Climb two components at a time, up to one that is there, then make what is missing on the way
    // back. Only the upper one of the two may be the first component of the path: kept for
    // compatibility. Paths are noted by their lengths.
    std::vector<unsigned int> missing;
    unsigned int path = name_.length();
    do {
        const unsigned int parent = lengthAbove(name_, path);
        if (parent == 0)
            return File::getError(File::ErrPathTooLong);
        missing.push_back(path);
        if (isThere(parent))
            break;
        missing.push_back(parent);
        path = lengthAbove(name_, parent);
    } while (path != 0 && !isThere(path));

    for (; !missing.empty(); missing.pop_back())
        if (zeUtil::Error error = makeLocalDirectory(name_.substr(0, missing.back()));
            error.code() != File::ErrNone)
            return error;
    return zeUtil::Error();
}

zeUtil::Error LocalFileTransport::readDir(std::vector<IString>& names, bool fullNames) {
    IString directory = name_;
    if (!directory.isEmpty() && directory[directory.last()] != Filename::separator())
        directory.append(Filename::separator());
    names = decodedLocalEntries(directory, fullNames ? directory : IString());
    return zeUtil::Error(); // also for a directory that cannot be read: it looks empty
}

zeUtil::Error LocalFileTransport::moveTo(FileTransport& dest) {
    FileStatus here;
    FileStatus there;
    zeUtil::Error error = query(here);
    dest.query(there);
    if (error.code() != File::ErrNone)
        return error;
    if (!here.exists())
        return File::getError(File::ErrFileExists); // this code, kept for compatibility
    if (transportId() == dest.transportId() &&
        (isDirectory() == dest.isDirectory() || !there.exists()) &&
        std::rename(name_.asUTF8(), dest.getFullName().asUTF8()) == 0)
        return zeUtil::Error();
    return FileTransport::moveTo(dest); // for example to another file system
}

zeUtil::Error LocalFileTransport::deleteSelf() {
    // For a directory that is not empty Linux gives ENOTEMPTY and not EEXIST: hence ErrIO.
    if (isDirectory())
        return directoryError(::rmdir(name_.asUTF8()), File::ErrDirectoryNotEmpty);
    return ::unlink(name_.asUTF8()) == 0 ? zeUtil::Error() : File::getError(File::ErrIO);
}

bool LocalFileTransport::isDirectory() const {
    if (!directoryKnown_) {
        const std::optional<bool> found = findLocalDirectory(name_);
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

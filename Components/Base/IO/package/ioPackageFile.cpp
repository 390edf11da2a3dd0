// SPDX-License-Identifier: MIT

#include "Base/IO/ioPackageFile.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

#include "Base/IO/ioBufferedStreamInput.h"
#include "Base/IO/ioPacketFile.h"
#include "Base/IO/package/ioFirstFitImpl.h"
#include "Base/IO/package/ioPackageFileFailureImpl.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/Utility/zeNumberText.h"

using zeString::IString;
using zeUtil::Error;

namespace {

constexpr unsigned char mark = 143;
constexpr unsigned char alternativeMark = '.';
constexpr char magic[] = "ZephirumPortablePackageFile\n"
                         "eliFegakcaPelbatroPmurihpeZ\n";
constexpr char version[] = "1\n";
constexpr char headerEnd[] = "@\n";
constexpr int pointerSize = 24; // decimal digits, blanks and a newline

constexpr int magicSize = sizeof magic - 1;
constexpr int versionSize = sizeof version - 1;
constexpr int headerEndSize = sizeof headerEnd - 1;

/// Reads the header up to the pointer, whose position it returns; -1 if this is no header.
long readHeaderStart(ioBufferedStreamInput& in) {
    char start[1 + magicSize + versionSize];
    if (in.readData(start, sizeof start) != sizeof start)
        return -1;
    const auto first = static_cast<unsigned char>(start[0]);
    if ((first != mark && first != alternativeMark) ||
        std::memcmp(start + 1, magic, magicSize) != 0 ||
        std::memcmp(start + 1 + magicSize, version, versionSize) != 0)
        return -1;
    long position = sizeof start;
    int c;
    do { // later versions may have more to say here
        c = in.readChar();
        ++position;
    } while (c != '@' && in.getStatus() == streamOK);
    in.readChar(); // the newline
    return in.getStatus() == streamOK ? position + 1 : -1;
}

/// Whether a directory can be read as such: binary, complete, and without references, which its
/// packets never have.
class DirectoryVisitor : public ioPacketFileVisitor {
public:
    bool start(const ioHeader& header, const ioPacketRegistry&) override {
        return header.method == ioWriteBinary;
    }
    bool packet(ioReadContext&, const ioPacketType&, const ioPacketFilePlace& place) override {
        return place.hasReference != 1;
    }
};

} // namespace

// ioPackageFileEntry

void ioPackageFileEntry::swap(ioPackageFileEntry& other) {
    std::swap(package_, other.package_);
    name_.swap(other.name_);
    std::swap(offset_, other.offset_);
    std::swap(size_, other.size_);
    std::swap(timeStamp_, other.timeStamp_);
    std::swap(compressed_, other.compressed_);
}

IString ioPackageFileEntry::getPackageName() const {
    return package_ ? package_->getPackageFileName() : IString();
}

// ioPackageFile

ioPackageFile::ioPackageFile() : entries_(1), firstFit_(new ioFirstFitImpl) {}

ioPackageFile::~ioPackageFile() {
    closePackageForOutput();
    delete firstFit_;
}

Error ioPackageFile::open(const IString& path) {
    IString name;
    name = path; // which may be the name of this package
    closePackageForOutput();
    ioPackageFile().swap(*this);

    zeOS::FileStatus status;
    // What cannot be looked at may exist: it must not be taken for a file to be made. All calls are
    // given the path as it is, since its normal form may lead elsewhere where there are links.
    if (zeOS::File::query(name, status).code() != 0)
        return packageFailure(packageCanNotCreate, L"Can not create file: %S", name);
    fileName_ = name;
    Error error = status.exists() ? readPackageHeader() : createPackage();
    if (error.code() == 0 && status.exists())
        error = readDirectory();
    if (error.code() == 0)
        writable_ = getStatus(name).isWritable();
    else
        ioPackageFile().swap(*this);
    return error;
}

void ioPackageFile::close() {
    closePackageForOutput();
}

Error ioPackageFile::update() {
    if (fileName_.isEmpty())
        return Error(packageNotOpen, "The package file has not been opened yet.");
    if (!writable_)
        return Error(packageNotWritable, "The package file is not writable.");
    if (!dirty_)
        return Error();
    Error error = writeDirectory();
    if (error.code() == 0)
        dirty_ = false;
    return error;
}

const ioPackageFileEntry* ioPackageFile::getEntry(int index) const {
    const_cast<ioPackageFile*>(this)->joinEntries(); // never due in an object that is const itself
    if (index < 0 || static_cast<std::size_t>(index) >= entries_.size())
        return nullptr;
    const ioPackageFileEntry& entry = entries_[static_cast<std::size_t>(index)];
    return entry.name_.isEmpty() ? nullptr : &entry;
}

const ioPackageFileEntry* ioPackageFile::getEntry(const IString& name) const {
    const Directory& names = getDirectory();
    const auto found = names.find(name);
    return found == names.end() ? nullptr : getEntry(found->second);
}

const ioPackageFile::Directory& ioPackageFile::getDirectory() const {
    const_cast<ioPackageFile*>(this)->joinEntries(); // as above
    return names_;
}

bool ioPackageFile::isFilePackageFile(const IString& path) {
    if (path.isEmpty() || !getStatus(path).isReadable())
        return false;
    ioPackageFile package;
    package.fileName_ = path;
    return package.readPackageHeader().code() == 0;
}

zeOS::FileStatus ioPackageFile::getStatus(const IString& path) {
    zeOS::FileStatus status;
    (void)zeOS::File::query(path, status); // a failure leaves "does not exist"
    return status;
}

void ioPackageFile::swap(ioPackageFile& other) {
    const IString name(fileName_);
    fileName_ = other.fileName_;
    other.fileName_ = name;
    std::swap(writable_, other.writable_);
    std::swap(dirty_, other.dirty_);
    std::swap(pointerPosition_, other.pointerPosition_);
    names_.swap(other.names_);
    entries_.swap(other.entries_);
    std::swap(freeCount_, other.freeCount_);
    output_.swapChain(other.output_);
    std::swap(outputOpen_, other.outputOpen_);
    std::swap(firstFit_, other.firstFit_);
    joinsDue_.swap(other.joinsDue_);
    for (ioPackageFile* package : {this, &other})
        for (ioPackageFileEntry& entry : package->entries_)
            entry.package_ = package;
}

// The file

Error ioPackageFile::openPackageForOutput() {
    if (outputOpen_ && output_.getStatus() == streamOK)
        return Error();
    closePackageForOutput(); // after a failure, such as a full disk, what follows may succeed
    output_.resetStatus();
    output_.truncateOnOpen(false);
    // A file that has vanished would be made anew, without what the package holds.
    if (ioBufferedStream::fileSize(fileName_) >= 0) {
        output_.openFile(fileName_);
        output_.flush(); // opening does not promote a failure
        outputOpen_ = output_.getStatus() == streamOK;
        if (outputOpen_)
            return Error();
        output_.close();
    }
    return packageFailure(packageCanNotOpenForWrite, L"Could not open package for write: %S",
                          fileName_);
}

void ioPackageFile::closePackageForOutput() {
    if (outputOpen_)
        output_.close();
    outputOpen_ = false;
}

/// After a failure nothing may be written: it would land elsewhere.
bool ioPackageFile::seekOutput(long position) {
    if (output_.seek(position))
        return true;
    output_.setStatus(streamIOError);
    return false;
}

/// What a failed write of header, pointer or directory ends in.
Error ioPackageFile::outputFailure() const {
    if (output_.getStatus() == streamOK)
        return Error();
    return packageFailure(packageWriteFailed, L"Error writing directory: %S", fileName_);
}

Error ioPackageFile::createPackage() {
    ioBufferedStreamOutput file;
    file.truncateOnOpen(false); // another process may have made it meanwhile
    file.openFile(fileName_);
    file.close();
    if (file.getStatus() != streamOK)
        return packageFailure(packageCanNotCreate, L"Can not create file: %S", fileName_);
    Error error = writePackageHeader();
    if (error.code() != 0) {
        closePackageForOutput();
        ::unlink(fileName_.asUTF8());
    }
    return error;
}

Error ioPackageFile::readPackageHeader() {
    closePackageForOutput();
    Error noPackage = packageFailure(packageBad, L"The file is not a package file: %S", fileName_);
    const zeOS::FileStatus status = getStatus(fileName_);
    if (status.exists() && !status.isFile()) // opening a FIFO would wait for its writer
        return noPackage;
    ioBufferedStreamInput in;
    in.openFile(fileName_);
    if (in.getStatus() != streamOK)
        return packageFailure(packageCanNotRead, L"Could not read the package file: %S", fileName_);
    const long position = readHeaderStart(in);
    char pointer[pointerSize + 1] = "";
    const bool complete = position >= 0 && in.readData(pointer, pointerSize) == pointerSize;
    in.close();
    const long place = ze::asciiToInt64(pointer);
    if (!complete || place > status.size() || place <= position)
        return noPackage;
    updateDirectoryEntry(place);
    pointerPosition_ = position;
    return Error();
}

Error ioPackageFile::writePackageHeader() {
    Error error = openPackageForOutput();
    if (error.code() != 0)
        return error;
    const char first = static_cast<char>(mark);
    output_.writeData(&first, 1);
    output_.writeString(magic);
    output_.writeString(version);
    output_.writeString(headerEnd);
    output_.flush();
    error = outputFailure();
    if (error.code() != 0)
        return error;
    pointerPosition_ = 1 + magicSize + versionSize + headerEndSize;
    long end = 0;
    error = writeDirectoryPointer(-1, end);
    updateDirectoryEntry(end);
    return error;
}

Error ioPackageFile::writeDirectory() {
    joinEntries();
    const long place = entries_.back().offset_;
    Error error = openPackageForOutput();
    if (error.code() != 0)
        return error;
    if (!seekOutput(place))
        return outputFailure();
    ioPackageIO::PackageRegistry registry(false);
    const std::unique_ptr<ioWriteContext> context(
        ioWriteContextAlloc(output_, ioWriteBinary, &registry));
    if (!context)
        return Error(packageInternal, "Internal error.");
    context->startFile();
    for (const ioPackageFileEntry& entry : entries_)
        ioPackageIO::writeEntryPacket(*context, entry);
    context->endFile();
    output_.flush();
    if (!context->good() && output_.getStatus() == streamOK)
        output_.setStatus(streamIOError);
    error = outputFailure();
    long end = 0;
    if (error.code() == 0)
        error = writeDirectoryPointer(place, end);
    closePackageForOutput(); // some systems tell of a full disk only now
    return error.code() == 0 ? outputFailure() : error;
}

Error ioPackageFile::writeDirectoryPointer(long value, long& end) {
    char text[pointerSize + 1];
    std::snprintf(text, sizeof text, "%-*ld\n", pointerSize - 1, value);
    Error error = openPackageForOutput();
    if (error.code() != 0)
        return error;
    if (!seekOutput(pointerPosition_))
        return outputFailure();
    output_.writeData(text, pointerSize);
    output_.flush();
    end = pointerPosition_ + pointerSize;
    return outputFailure();
}

void ioPackageFile::updateDirectoryEntry(long offset) {
    entries_.back().package_ = this;
    entries_.back().offset_ = offset;
}

Error ioPackageFile::readDirectory() {
    const long place = entries_.back().offset_;
    if (place < 1)
        return Error();
    closePackageForOutput();
    ioBufferedStreamInput in;
    in.openFile(fileName_);
    if (in.getStatus() != streamOK || !in.seek(place)) {
        in.close();
        return packageFailure(packageBad, L"Can not open directory: %S", fileName_);
    }
    const IString name(fileName_);
    const bool understood = readEntries(in, place);
    in.close();
    if (understood && coversDataArea(place)) {
        dirty_ = false;
        return Error();
    }
    ioPackageFile().swap(*this);
    return packageFailure(packageBad, L"Error reading directory: %S", name);
}

/// Reads the directory at `place` of the stream, which stands there.
bool ioPackageFile::readEntries(ioBufferedStreamInput& in, long place) {
    // First whether the reader may be started on it: on a file that ends too early it would wait.
    DirectoryVisitor visitor;
    if (ioPacketFileCheck(in, &visitor) != ioOK || !in.seek(place))
        return false;
    ioPackageIO::PackageRegistry registry(true);
    const std::unique_ptr<ioReadContext> context(ioReadContextAlloc(in, &registry));
    if (!context)
        return false;
    entries_.clear();
    names_.clear();
    freeCount_ = 0;
    joinsDue_.clear();
    firstFit_->invalidate();
    ioPackageIO::PackageReadContext client(context.get(), this);
    if (client.readFile() != ioOK || entries_.empty())
        return false;
    --freeCount_; // the directory's place, which is never given to an entry
    return true;
}

/// Whether the elements lie one behind the other, from the end of the header to the directory.
bool ioPackageFile::coversDataArea(long place) const {
    long end = pointerPosition_ + pointerSize;
    const ioPackageFileEntry& last = entries_.back();
    for (const ioPackageFileEntry& entry : entries_) {
        if (entry.offset_ != end || end > place)
            return false;
        if (&entry == &last)
            break;
        if (entry.size_ < 0 || entry.size_ > place - end)
            return false;
        end += entry.size_;
    }
    return last.name_.isEmpty() && end == place;
}

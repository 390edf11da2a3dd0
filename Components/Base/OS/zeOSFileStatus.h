// SPDX-License-Identifier: MIT

/// @file
/// What a query says about a file.
///
/// @code
/// zeOS::FileStatus status;
/// assert(!status.exists() && status.size() == 0);
/// status.setSize(12);
/// status.reset();
/// assert(status.size() == 0);
/// @endcode

#pragma once

#include "Base/Strings/zeStringCString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// The answer of zeOS::File::query(): a plain record that a transport fills. A new one is reset().
class ZEBASE_API FileStatus {
public:
    FileStatus();

    /// Flags false, numbers 0, texts empty.
    void reset();

    /// Where this is false, all other fields are as reset() leaves them.
    bool exists() const { return exists_; }
    /// What the effective rights were at the moment of the query: opening may yet fail.
    bool isReadable() const { return isReadable_; }
    bool isWritable() const { return isWritable_; }
    bool isDirectory() const { return isDirectory_; }
    /// Whether it is a regular file. A device or a pipe is neither file nor directory.
    bool isFile() const { return isFile_; }
    bool isRemote() const { return isRemote_; }
    /// For transports over a revision control: nothing local sets it.
    bool isCheckedout() const { return isCheckedout_; }
    /// In bytes.
    long size() const { return size_; }
    /// Seconds since the epoch. A local file has no such date: it gives its last change of content
    /// or of rights (`st_ctime`).
    long creationDate() const { return creationDate_; }
    /// Seconds since the epoch.
    long lastModification() const { return lastModification_; }
    /// "Unknown" from every transport that has no better answer.
    const zeString::CString& owner() const { return owner_; }
    const zeString::CString& group() const { return group_; }

    /// For transports.
    void setExists(bool value) { exists_ = value; }
    void setIsReadable(bool value) { isReadable_ = value; }
    void setIsWritable(bool value) { isWritable_ = value; }
    void setIsDirectory(bool value) { isDirectory_ = value; }
    void setIsFile(bool value) { isFile_ = value; }
    void setIsRemote(bool value) { isRemote_ = value; }
    void setIsCheckedout(bool value) { isCheckedout_ = value; }
    void setSize(long bytes) { size_ = bytes; }
    void setCreationDate(long seconds) { creationDate_ = seconds; }
    void setLastModification(long seconds) { lastModification_ = seconds; }
    void setOwner(const zeString::CString& name) { owner_ = name; }
    void setGroup(const zeString::CString& name) { group_ = name; }

private:
    bool exists_;
    bool isReadable_;
    bool isWritable_;
    bool isDirectory_;
    bool isFile_;
    bool isRemote_;
    bool isCheckedout_;
    long size_;
    long creationDate_;
    long lastModification_;
    zeString::CString owner_;
    zeString::CString group_;
};

} // namespace zeOS

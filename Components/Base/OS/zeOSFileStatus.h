// SPDX-License-Identifier: MIT

/// @file
/// What a query says about a file.
///
/// Threads: a FileStatus belongs to one thread at a time.
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
    /// A status as reset() leaves it.
    FileStatus();

    /// Sets flags to false and numbers to 0, and empties the texts.
    void reset();

    /// Whether the file exists. If not, all other fields are as reset() leaves them.
    bool exists() const { return exists_; }
    /// Whether the user may read the file. A local file answers for the **real** user and group of
    /// the process (`access`), at the moment of the query: a program with a set-user-ID bit, whose
    /// effective rights differ, may find that opening fails, or succeeds, in spite of the answer.
    bool isReadable() const { return isReadable_; }
    /// Whether the user may write the file, under the same terms as isReadable().
    bool isWritable() const { return isWritable_; }
    /// Whether it is a directory.
    bool isDirectory() const { return isDirectory_; }
    /// Whether it is a regular file. A device or a pipe is neither file nor directory.
    bool isFile() const { return isFile_; }
    /// Whether it lies on another machine; never for local files.
    bool isRemote() const { return isRemote_; }
    /// For transports of revision control systems; never set for local files.
    bool isCheckedout() const { return isCheckedout_; }
    /// The size in bytes.
    long size() const { return size_; }
    /// In seconds since the epoch. A local file gives the last change of its content or of its
    /// rights (`st_ctime`), since it has no date of creation.
    long creationDate() const { return creationDate_; }
    /// In seconds since the epoch.
    long lastModification() const { return lastModification_; }
    /// The owner, if the query asked for it; "Unknown" from transports that do not know it, local
    /// files among them.
    const zeString::CString& owner() const { return owner_; }
    /// The group, under the same terms as owner().
    const zeString::CString& group() const { return group_; }

    /// @{
    /// Sets the field of the same name, for transports that answer a query.
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
    /// @}

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

// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFileStatus.h"

namespace zeOS {

FileStatus::FileStatus() {
    reset();
}

void FileStatus::reset() {
    exists_ = false;
    isReadable_ = false;
    isWritable_ = false;
    isDirectory_ = false;
    isFile_ = false;
    isRemote_ = false;
    isCheckedout_ = false;
    size_ = 0;
    creationDate_ = 0;
    lastModification_ = 0;
    owner_ = "";
    group_ = "";
}

} // namespace zeOS

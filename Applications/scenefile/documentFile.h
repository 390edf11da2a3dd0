// SPDX-License-Identifier: MIT

/// @file
/// A document that is open for reading, and streams over it.

#pragma once

#include <cstdint>
#include <string>

#include "Base/IO/ioBuffer.h"

#include "progress.h"

namespace scenefile {

/// The file of a document.
class DocumentFile {
public:
    /// Throws a Failure if there is no such file, or it is something else.
    explicit DocumentFile(const std::string& path);
    DocumentFile(const DocumentFile&) = delete;
    DocumentFile& operator=(const DocumentFile&) = delete;
    ~DocumentFile();

    const std::string& path() const { return path_; }
    int descriptor() const { return descriptor_; }
    std::int64_t size() const { return size_; }

private:
    std::string path_;
    int descriptor_;
    std::int64_t size_ = 0;
};

/// The file from its start, with progress on the terminal: "checking 50 %". One at a time, since
/// they share the place in the file.
class DocumentStream : public ioBufferedStreamInput {
public:
    /// `what` must outlive it.
    DocumentStream(const DocumentFile& file, const char* what);
    ~DocumentStream() override;

private:
    Progress progress_;
};

} // namespace scenefile

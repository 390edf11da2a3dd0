// SPDX-License-Identifier: MIT

/// @file
/// A document that is open for reading, and streams over it.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Base/IO/ioBuffer.h"
#include "Base/IO/ioPackageFile.h"
#include "Base/Utility/zeUtilDescriptor.h"

#include "Shared/terminal.h"

namespace scenefile {

/// The file that the document `path` lies in: `path` itself, or for "PACKAGE:ENTRY" the package. A
/// file of that whole name comes first; the name of a package may have colons too.
std::string placeOf(const std::string& path);

/// The file of a document, or a package with a document as an entry.
class DocumentFile {
public:
    /// Standard input (see standardStream) is copied into a temporary file without a name, since a
    /// document is read twice. Throws a Failure if there is no such file or entry, or it is
    /// something else.
    explicit DocumentFile(const std::string& path);

    /// The path, or "standard input".
    const std::string& name() const { return name_; }
    /// Of the file, or of the package.
    int descriptor() const { return descriptor_.get(); }
    /// Null for a document that has a file of its own.
    const ioPackageFileEntry* entry() const { return entry_; }
    /// Whether it is an entry that is stored compressed: its end is then that of the compression.
    bool isCompressed() const { return entry_ != nullptr && entry_->getCompressed(); }
    /// In the file, or in the package.
    std::int64_t size() const { return size_; }

private:
    void openEntry(const std::string& package, const std::string& name);

    std::string name_;
    zeUtil::Descriptor descriptor_;
    ioPackageFile package_;
    const ioPackageFileEntry* entry_ = nullptr;
    std::int64_t size_ = 0;
};

/// The document from its start, with progress on the terminal: "checking 50 %". One at a time,
/// since streams share the position in the file.
class DocumentStream : public ioBufferedStreamInput {
public:
    /// `what` must outlive it.
    DocumentStream(const DocumentFile& file, const char* what);
    ~DocumentStream() override;

private:
    app::Progress progress_;
};

} // namespace scenefile

// SPDX-License-Identifier: MIT

/// @file
/// A document that is open for reading, and streams over it.

#pragma once

#include <cstdint>
#include <string>

#include "Base/IO/ioBuffer.h"
#include "Base/Utility/zeUtilDescriptor.h"

#include "Shared/terminal.h"

namespace scenefile {

/// The file of a document.
class DocumentFile {
public:
    /// Standard input (see standardStream) is copied into a temporary file without a name, since a
    /// document is read twice. Throws a Failure if there is no such file, or it is something else.
    explicit DocumentFile(const std::string& path);

    /// The path, or "standard input".
    const std::string& name() const { return name_; }
    int descriptor() const { return descriptor_.get(); }
    std::int64_t size() const { return size_; }

private:
    std::string name_;
    zeUtil::Descriptor descriptor_;
    std::int64_t size_ = 0;
};

/// The file from its start, with progress on the terminal: "checking 50 %". One at a time, since
/// streams share the position in the file.
class DocumentStream : public ioBufferedStreamInput {
public:
    /// `what` must outlive it.
    DocumentStream(const DocumentFile& file, const char* what);
    ~DocumentStream() override;

private:
    app::Progress progress_;
};

} // namespace scenefile

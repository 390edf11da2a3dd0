// SPDX-License-Identifier: MIT

/// @file
/// The folder in which the server keeps documents, one file each under its own name.
///
/// All of it happens in the folder that was opened at the start, wherever that is moved, and no
/// link in it is followed. Names have no nameFault().

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Base/OS/zeOSProtectedWrite.h"
#include "Base/Utility/zeUtilDescriptor.h"

namespace relay {

/// Whether the open file is a packet file from its first byte to its last: see ioPacketFileCheck().
/// The descriptor's position is lost.
bool isDocument(int descriptor);

/// A document that is open for reading, from its start.
struct OpenDocument {
    zeUtil::Descriptor file;
    std::uint64_t size = 0;
};

class Store {
public:
    /// Opens and locks the folder, and deletes what a server that was killed left unfinished.
    /// Throws a Failure, also if another server has the folder.
    explicit Store(const std::string& folder);

    /// Throws a Failure if there is no such document.
    OpenDocument open(const std::string& name) const;

    /// "SIZE NAME\n" for each document, by name. Throws a Failure.
    std::string list() const;

private:
    friend class Upload;

    zeUtil::Descriptor folder_;
};

/// A document on its way into the store. Destroyed before finish(), it leaves nothing behind.
class Upload {
public:
    /// The store must outlive it. Throws a Failure.
    Upload(const Store& store, const std::string& name);

    /// Appends to the document. Throws a Failure.
    void write(std::string_view bytes);

    /// Puts the document in the place of the old one, or throws a Failure: if it is damaged or cut
    /// off, or cannot be kept. Whenever the process ends, the store has the old one or the new one,
    /// whole.
    void finish();

private:
    int folder_;
    std::string name_;
    zeOS::ProtectedWrite save_;
    zeUtil::Descriptor file_;
};

} // namespace relay

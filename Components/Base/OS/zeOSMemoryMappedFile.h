// SPDX-License-Identifier: MIT

/// @file
/// A file of a fixed size that is mapped piece by piece, and the pieces.
///
/// zeOS::MemoryMappedFile creates the file and gives mappings of parts of it, which share their
/// bytes with the file and with one another. A zeOS::FileMapping is a plain value that owns
/// nothing: only FileMapping::unmap() unmaps it, it may outlive the MemoryMappedFile, and once one
/// copy is unmapped, no other copy may be used.
///
/// The process ends with SIGBUS when it touches mapped bytes of a file that another program has
/// made shorter, and when it first writes to a page while the disk is full. An unlinked file
/// (`unlinkNow`) has no name by which others could open it.
///
/// Threads: a MemoryMappedFile belongs to one thread at a time; mapped bytes may be used from any
/// thread.
///
/// @code
/// #include "Base/Strings/zeStringIString.h"
/// zeOS::MemoryMappedFile file;
/// const long size = 2 * zeOS::FileMapping::getGranularity();
/// assert(file.createFile(L"mapped-example.bin", size, true)); // without a name from now on
/// zeOS::FileMapping page = file.map(0, 16);
/// static_cast<char*>(page.pointer)[15] = 'z';
/// zeOS::FileMapping again = file.map(0, 16);
/// assert(static_cast<char*>(again.pointer)[15] == 'z');
/// page.unmap();
/// again.unmap();
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeString {
class IString;
}

namespace zeOS {

/// A mapped part of a file. Copies share the mapping, and nothing unmaps it but unmap().
class ZEBASE_API FileMapping {
public:
    /// Nothing: all fields 0.
    FileMapping() = default;

    /// Stores the arguments as they are.
    FileMapping(long offset, unsigned long size, void* pointer);

    /// Unmaps, and sets all fields to 0. Changes nothing if `pointer` is null.
    void unmap();

    /// @{
    /// Works on the bytes `from` to `to`, counted from `pointer`, without the one at `to`. `from`
    /// is a multiple of getGranularity(): the system ignores any other. Does nothing if `pointer`
    /// is null.

    /// Writes these bytes to disk and waits until that is done. A failure is not reported.
    void flush(unsigned long from, unsigned long to);

    /// Reads these bytes from the file ahead of their use, in order: accessPagesSequentially() with
    /// the advice to the system to read ahead.
    void load(unsigned long from, unsigned long to);
    /// @}

    /// Reads one byte at every 4096 bytes from `from` to `to`, the last included, after rounding
    /// both down to a multiple of 1 MiB. So a range within one MiB takes one read. Addresses beyond
    /// the mapping are skipped. Does nothing if `pointer` is null.
    void accessPagesSequentially(unsigned long from, unsigned long to);

    /// The size of a page in bytes. Offsets in a file that is to be mapped are multiples of it.
    static int getGranularity();

    long offset = 0;         ///< Of the first byte in the file.
    unsigned long size = 0;  ///< In bytes.
    void* pointer = nullptr; ///< The first byte; null if nothing is mapped.
};

/// A file of a fixed size to map parts of. The destructor closes it; mappings stay.
class ZEBASE_API MemoryMappedFile {
public:
    /// Without a file.
    MemoryMappedFile();
    MemoryMappedFile(const MemoryMappedFile&) = delete; ///< Owns a descriptor: pass a pointer.
    MemoryMappedFile& operator=(const MemoryMappedFile&) = delete; ///< Owns a descriptor.
    ~MemoryMappedFile();

    /// Whether there is a file.
    bool valid() const;

    /// Creates the file `name`, or empties it, readable and writable for the user alone, and gives
    /// it `size` bytes, sparse where the file system allows. With `unlinkNow` the name is gone at
    /// once, and the space returns to the system when the file and its last mapping do, however the
    /// process ends. A file that was held before is closed first.
    ///
    /// Returns false, and holds no file, if `size` is below 1 or any step fails; an empty file may
    /// then remain under the name if `unlinkNow` is false or unlinking failed.
    ///
    /// An existing file of that name is reused, and symbolic links are followed. So nobody else may
    /// be able to create files in the directory: whoever creates the name first can read and change
    /// the bytes.
    bool createFile(const zeString::IString& name, long size, bool unlinkNow);

    /// The name as given, unlinked or not; empty without a file.
    const zeString::IString& getFilename() const;

    /// In bytes; 0 without a file.
    long getSize() const;

    /// Maps `size` bytes from `offset` on, for reading and writing. `offset` is a multiple of
    /// FileMapping::getGranularity(). On failure `pointer` is null in the result. The caller
    /// unmaps.
    FileMapping map(long offset, unsigned long size);

private:
    class MemoryMappedFileImpl;

    MemoryMappedFileImpl* impl_;
    bool owned_ = true;
};

} // namespace zeOS

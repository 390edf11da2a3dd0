// SPDX-License-Identifier: MIT

/// @file
/// Package files: many named entries in one file, which are read in place and replaced without
/// writing the rest anew.
///
/// **Until update(), the file is not safe.** A change moves an entry's bytes into the file at once,
/// and the directory, which says where each entry lies, follows with update(). If the process ends
/// before that, the directory in the file is the old one, or is gone:
/// - **Bytes of an entry that was deleted or replaced are used again by the next one that fits**,
///   while the old directory still names the old entry. Save a and b, delete a, add c of the same
///   size, and end without update(): the file now has c's bytes under the name a. Call update()
///   between deleting and adding where that must not happen.
/// - An entry that finds no free space lies where the old directory lay, so that the package can no
///   longer be opened (code 17) until update() has written the next one.
/// - Adding under a name that exists frees the old entry first. If adding fails, for example on a
///   full disk, the old entry is gone.
///
/// So what a user must not lose is changed in a copy (write(), or a copy of the file), and a
/// zeOS::ProtectedWrite puts the copy in the place of the old file. Documentation/architecture.md
/// has a table of what lies on disk at each moment. update() does not wait for the disk (`fsync`):
/// a power cut can undo it or tear it apart.
///
/// The layout is described in Documentation/formats.md. In short: a header, which points at the
/// directory; the entries, and the free space between them; the directory, which is a packet file.
///
/// **Failures.** Operations return a zeUtil::Error with one of these codes, and the path or the
/// name in the message:
///
/// | Code | Meaning |
/// |---|---|
/// | 0 | success |
/// | 1 | internal error |
/// | 2 | a file cannot be created |
/// | 3 | no package is open |
/// | 4 | the package is not writable |
/// | 5 | a directory cannot be made |
/// | 6 | the source does not exist |
/// | 7 | a file, or an entry, cannot be opened for reading; the entry is null |
/// | 8 | the source changed its size while it was compressed |
/// | 9 | reading failed |
/// | 10 | writing failed: a full disk, for example |
/// | 11 | the name is empty, or that of a device on certain other systems |
/// | 12 | the name is not allowed |
/// | 13 | there is no entry of that name |
/// | 14 | there is an entry of that name already |
/// | 15 | the package cannot be opened for writing; the entry is in this very package |
/// | 16 | the source changed its size while it was copied |
/// | 17 | the file is not a package, or its directory is damaged |
///
/// **Bad files.** Opening refuses a file whose entries overlap, leave gaps or reach out of the data
/// area. It takes memory in proportion to the size of the directory, and always ends. What is
/// inside an entry is not looked at before it is read: plain entries carry no checksum. Names come
/// as they are in the file; only expand() makes sure that they stay within a directory.
///
/// **Costs**, for n entries: opening and update() O(n log n). Looking up, adding and deleting
/// O(log n), beside the copying, with two exceptions of O(n): adding into free space that is larger
/// than the entry, which is split, and the first call after entries were deleted beside free space,
/// other than the next deletion, which joins that space. So delete first, then look and add.
/// Copying goes by blocks of 4096 bytes.
///
/// Threads: a package and its entries belong to one thread at a time. Processes that change one
/// package at the same time destroy it: let applications lock what they edit.
///
/// @code
/// #include <cstdio>
/// #include <fstream>
/// #include "Base/IO/ioBufferedStreamInput.h"
/// std::ofstream("package-example.txt") << "some text";
/// ioPackageFile package;
/// assert(package.open(L"example.zpk").code() == 0); // creates it
/// assert(package.addEntry(L"package-example.txt", L"notes/a.txt", false).code() == 0);
/// assert(package.update().code() == 0); // before this, the file has no directory
///
/// ioBufferedStreamInput in; // read in place
/// in.openPackageFileEntry(package.getEntry(L"notes/a.txt"));
/// char text[16];
/// assert(in.readData(text, 16) == 9 && in.getStatus() == streamEOF);
/// in.close();
/// assert(package.deleteEntry(L"notes/a.txt").code() == 0);
/// package.close();
/// std::remove("example.zpk");
/// std::remove("package-example.txt");
/// @endcode

#pragma once

#include <map>
#include <vector>

#include "Base/IO/ioBufferedStreamOutput.h"
#include "Base/IO/ioClientContext.h"
#include "Base/IO/ioPacketRegistry.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

class ioBufferedStreamInput;
class ioFirstFitImpl;
class ioPackageFile;
namespace zeOS {
class FileStatus;
}

/// An entry of a package: where its bytes lie, and what they are. A value; a copy says what was so
/// when it was made.
class ZEBASE_API ioPackageFileEntry {
public:
    /// An entry of no package, with numbers of -1.
    ioPackageFileEntry() = default;
    ioPackageFileEntry(const ioPackageFileEntry& other) = default;            ///< A copy.
    ioPackageFileEntry& operator=(const ioPackageFileEntry& other) = default; ///< A copy.
    ~ioPackageFileEntry() = default;

    /// Exchanges all fields.
    void swap(ioPackageFileEntry& other);

    /// Not owned; null for an entry of no package.
    ioPackageFile* getPackage() const { return package_; }
    /// The path of the package; empty for an entry of no package.
    zeString::IString getPackageName() const;
    /// Its name in the package.
    const zeString::IString& getName() const { return name_; }
    /// Where its bytes begin, counted from the start of the file.
    long getOffset() const { return offset_; }
    /// How many bytes it takes in the package, which for a compressed entry is less than it holds.
    long getSize() const { return size_; }
    /// When the source was changed last, in seconds since the epoch.
    long getTimeStamp() const { return timeStamp_; }
    /// Whether the bytes are compressed, below a checksum: see
    /// ioBufferedStreamInput::openPackageFileEntry().
    bool getCompressed() const { return compressed_; }

private:
    friend class ioPackageFile;

    ioPackageFile* package_ = nullptr; // not owned
    zeString::IString name_;           // empty for free space
    long offset_ = -1;
    long size_ = -1;
    long timeStamp_ = -1;
    bool compressed_ = false;
};

/// A package file.
///
/// It is empty, without a file name, at first and after a failed open(). Then it is open, whether
/// or not close() was called: that only closes the file for writing, until the next change. The
/// path is used again for each opening; a relative one needs the current directory to stay as it
/// is.
///
/// **Entries** that getEntry() returns are valid until the next change of the package.
class ZEBASE_API ioPackageFile {
public:
    /// The names in order, each with the index of its element: see getEntry(int).
    using Directory = std::map<zeString::IString, int>;

    /// An empty object.
    ioPackageFile();
    ioPackageFile(const ioPackageFile&) = delete;            ///< Open another one, or swap().
    ioPackageFile& operator=(const ioPackageFile&) = delete; ///< Open another one, or swap().
    /// Closes the file. Changes since the last update() are lost.
    virtual ~ioPackageFile();

    /// Opens the package at `path`, or creates it with nothing but a header. The old content of
    /// this object is dropped first, with its changes since the last update(). On failure the
    /// object is empty: code 2 or 10 if the file cannot be created or written, 7 if it cannot be
    /// opened, 17 if it is no package, or a damaged one. A file that the call made itself is
    /// deleted again.
    ///
    /// A new package, closed without an entry, has no directory: opening it gives code 17.
    [[nodiscard]] zeUtil::Error open(const zeString::IString& path);

    /// Closes the file for writing. The directory is not written: see update().
    void close();

    /// Writes the directory if there were changes: 3, 4, 10, 15. If it fails, for example on a full
    /// disk, it can be repeated. Success means that the system has all bytes, and has closed the
    /// file without an error.
    [[nodiscard]] zeUtil::Error update();

    /// Saves a copy without free space at `path`, and makes this object the package there. An
    /// existing file at `path` is deleted first (code 4 if that fails, or if it is this package).
    /// After a failure, this object is as it was, and what has been written of the copy remains.
    /// An empty package, too, gets a directory, with which it can be opened.
    [[nodiscard]] zeUtil::Error write(const zeString::IString& path);

    /// Adds the content of a file, or replaces an entry by it, under cleanupName(name). With
    /// `compress` the bytes are compressed, in a temporary file first, and stored so if that makes
    /// them fewer. That file has no name, so that nothing stays behind if the process is killed; it
    /// is found by way of `/proc`, without which compressing fails (10). The entry takes over the
    /// date of the source's last change.
    ///
    /// Not allowed (11, 12) are names that are empty, those of devices (see
    /// zeOS::isWindowsReservedDeviceName()), those whose last component is "." or "..", and those
    /// that do not come back from UTF-8 as they were. The source must be a file (6, 7), and must
    /// keep its size (8, 16). If copying fails (9, 10, 16), an entry of that name is gone.
    [[nodiscard]] zeUtil::Error addEntry(const zeString::IString& sourcePath,
                                         const zeString::IString& name, bool compress);

    /// Adds a copy of an entry of another package (else 15), byte by byte as it is stored, with its
    /// date. A name that exists is refused (14); other failures are as above.
    [[nodiscard]] zeUtil::Error addEntry(const ioPackageFileEntry* entry,
                                         const zeString::IString& name);

    /// Deletes an entry: 3, 4, 13 for an unknown name, which is not cleaned up. Its bytes become
    /// free space.
    [[nodiscard]] zeUtil::Error deleteEntry(const zeString::IString& name);

    /// Writes what an entry of this or another package holds into a file, which is created or
    /// overwritten, and whose directory is made if need be (5). Links are followed. The package's
    /// own file is refused (2). 7 if the entry is null or cannot be opened, 9 if it is damaged, 10
    /// if writing fails. After a failure, what has been written remains.
    ///
    /// An entry that lies behind the end of its file, which was cut off since it was opened, gives
    /// an empty file, with success.
    [[nodiscard]] zeUtil::Error extractEntry(const ioPackageFileEntry* entry,
                                             const zeString::IString& path);

    /// Extracts all entries to `directory`, in the order of their names, and stops at the first
    /// failure. The directory is made by createDirectory(), and those in it as they are needed.
    ///
    /// Nothing is written outside of `directory`: a name that leads out of it gives code 12; "/x"
    /// and "a/../b" lie inside. No symbolic link below it is followed, whoever made it and
    /// whenever: one in the place of a directory gives code 5, one in the place of a file code 2,
    /// as does anything else there that is no plain file. What is not prevented: others who may
    /// write below `directory` can move its folders elsewhere while it is filled, and replace what
    /// has been written.
    [[nodiscard]] zeUtil::Error expand(const zeString::IString& directory);

    /// The element at `index`; null for free space, for the directory's place and out of range.
    const ioPackageFileEntry* getEntry(int index) const;
    /// Null if there is no such name, which is not cleaned up.
    const ioPackageFileEntry* getEntry(const zeString::IString& name) const;
    /// The number of names.
    int size() const { return static_cast<int>(names_.size()); }
    /// The names. After a change of the package, ask for it again: what was returned before may
    /// have new names with indices of old.
    const Directory& getDirectory() const;
    /// The path that was opened; empty unless the package is open.
    const zeString::IString& getPackageFileName() const { return fileName_; }

    /// Whether the file has the header of a package, with a directory within the file. The
    /// directory is not read.
    static bool isFilePackageFile(const zeString::IString& path);
    /// What the system says about a file: see zeOS::File::query().
    static zeOS::FileStatus getStatus(const zeString::IString& path);

    /// Exchanges everything. Pointers to entries become invalid.
    void swap(ioPackageFile& other);

    /// The form in which addEntry() stores a name: backslashes become slashes, and a drive ("C:"),
    /// slashes, "./" and "../" at the front are taken off, again and again. What stands further
    /// back stays: "a/../b".
    static zeString::IString cleanupName(const zeString::IString& name);

    /// zeOS::File::makeDirectoryAll(), whose failure becomes code 5: a missing directory of one
    /// component, such as "a", is never made.
    [[nodiscard]] static zeUtil::Error createDirectory(const zeString::IString& path);

private:
    friend class ioPackageIO; // its packets become entries

    // The file.
    ZEBASE_HIDDEN zeUtil::Error openPackageForOutput();
    ZEBASE_HIDDEN void closePackageForOutput();
    ZEBASE_HIDDEN zeUtil::Error createPackage();
    ZEBASE_HIDDEN zeUtil::Error readPackageHeader();
    ZEBASE_HIDDEN zeUtil::Error writePackageHeader();
    ZEBASE_HIDDEN zeUtil::Error writeDirectory();
    ZEBASE_HIDDEN zeUtil::Error readDirectory();
    ZEBASE_HIDDEN bool readEntries(ioBufferedStreamInput& in, long place);
    ZEBASE_HIDDEN bool coversDataArea(long place) const;
    ZEBASE_HIDDEN zeUtil::Error writeDirectoryPointer(long value, long& end);
    ZEBASE_HIDDEN void updateDirectoryEntry(long offset);
    ZEBASE_HIDDEN bool seekOutput(long position);
    ZEBASE_HIDDEN zeUtil::Error outputFailure() const;

    // The list of elements.
    ZEBASE_HIDDEN int createEntry(long size);
    ZEBASE_HIDDEN int takeFreeEntry(long size);
    ZEBASE_HIDDEN void splitEntry(int index, long size);
    ZEBASE_HIDDEN void freeEntry(int index);
    ZEBASE_HIDDEN void joinEntries();
    ZEBASE_HIDDEN void appendEntry(const char* name, long offset, long size, long timeStamp,
                                   bool compressed);

    // What goes in and out.
    ZEBASE_HIDDEN zeUtil::Error verifyAddEntry(const zeString::IString& name) const;
    ZEBASE_HIDDEN zeUtil::Error compressFile(const zeString::IString& source,
                                             const zeString::IString& destination, long size,
                                             long& compressedSize);
    ZEBASE_HIDDEN zeUtil::Error copyFileIntoPackage(const zeString::IString& source, long size,
                                                    long timeStamp, bool compressed,
                                                    const zeString::IString& name);
    ZEBASE_HIDDEN zeUtil::Error copyStreamIntoPackage(ioBufferedStreamInput& stream, long size,
                                                      long timeStamp, bool compressed,
                                                      const zeString::IString& name);
    ZEBASE_HIDDEN zeUtil::Error fillEntry(ioBufferedStreamInput& stream, long offset, long size,
                                          const zeString::IString& name);
    ZEBASE_HIDDEN zeUtil::Error copyEntryIntoPackage(const ioPackageFileEntry* entry,
                                                     const zeString::IString& name);
    ZEBASE_HIDDEN zeUtil::Error copyEntryIntoPackage(const ioPackageFileEntry* entry);
    ZEBASE_HIDDEN zeUtil::Error extractTo(const ioPackageFileEntry& entry,
                                          const zeString::IString& path, int directory,
                                          const char* file, int flags);
    ZEBASE_HIDDEN zeUtil::Error expandEntry(const ioPackageFileEntry& entry, int directory,
                                            const zeString::IString& directoryPath);

    zeString::IString fileName_;
    bool writable_ = false;
    bool dirty_ = false;
    long pointerPosition_ = -1;
    Directory names_;
    std::vector<ioPackageFileEntry> entries_; // the last one is the directory's place
    int freeCount_ = 0;                       // free elements, without the directory's place
    ioBufferedStreamOutput output_;
    bool outputOpen_ = false;
    ioFirstFitImpl* firstFit_;  // owned; the free elements by their sizes
    std::vector<int> joinsDue_; // elements that were freed beside free space
};

/// The packets of a package's directory. Programs do not need it unless they read a directory by
/// themselves.
class ZEBASE_API ioPackageIO {
public:
    /// Knows the type "package.entry".
    class ZEBASE_API PackageRegistry : public ioPacketRegistry {
    public:
        /// `namesOnly`: true for reading, false for writing.
        explicit PackageRegistry(bool namesOnly);
        ~PackageRegistry() override;

        void registerAllTypes() override;
    };

    /// Hands the package that is being loaded to readEntryPacket().
    class ZEBASE_API PackageReadContext : public ioClientReadContext {
    public:
        /// Both must outlive the handle.
        PackageReadContext(ioReadContext* context, ioPackageFile* package);
        ~PackageReadContext() override;

        /// The package that is being loaded.
        ioPackageFile* getPackage() const { return package_; }

    private:
        ioPackageFile* package_; // not owned
    };

    /// Writes an entry as a packet of the type "package.entry".
    static void writeEntryPacket(ioWriteContext& context, const ioPackageFileEntry& entry);
    /// Reads such a packet and appends the entry to the package. `client` must be a
    /// PackageReadContext.
    static void readEntryPacket(ioClientReadContext& client);
};

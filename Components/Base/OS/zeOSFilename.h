// SPDX-License-Identifier: MIT

/// @file
/// The path value: a wide text in normal form that splits itself into its parts on demand.
///
/// The work is purely textual: apart from getCwd(), setCwd() and makeDir(), nothing here touches
/// the file system, and a path is never resolved against the disk or the current directory. Links
/// are not resolved: "link/../a" becomes "a". URL schemes have no meaning: a text that may be a URL
/// goes through `zeOS::URL`.
///
/// Every text that is assigned is brought into normal form: runs of separators become one,
/// separators at the end are removed (not the one at the start), and "name/../" in the middle is
/// removed. "." and a ".." at the end stay. **Going above the root makes a path relative**: "/../x"
/// becomes "x". Each pass is a function of its own below.
///
/// **Names in `char`** are decoded in the locale's encoding. A program starts in the "C" locale,
/// which knows ASCII only: there both "Schön.txt" and "Schän.txt" in UTF-8 become "Sch??n.txt", and
/// so the same file, without an error. Call `setlocale(LC_ALL, "")` before the first name, as early
/// as in `main`, or pass zeString::EncodingUTF8 to the zeString::IString that you make of it.
///
/// Threads: a Filename belongs to one thread at a time, since even const accessors may write the
/// cache of its parts.
///
/// @code
/// #include <clocale>
/// std::setlocale(LC_ALL, ""); // before names from outside are decoded
/// const zeString::IString given("Sch\xC3\xB6n.txt", zeString::EncodingUTF8);
/// assert(zeOS::Filename(given).baseTrunk() == L"Sch\u00F6n");
///
/// const zeOS::Filename scene(L"shots//take1/../take2/scene.v2.ze");
/// assert(scene.path() == L"shots/take2/scene.v2.ze");
/// assert(scene.dirname() == L"shots/take2" && scene.basename() == L"scene.v2.ze");
/// assert(scene.baseTrunk() == L"scene.v2" && scene.baseSuffix() == L"ze");
/// assert(zeOS::Filename::join(scene.dirname(), L"../notes.txt") == L"shots/notes.txt");
/// assert(std::vector<zeString::IString>(scene.begin(), scene.end())[1] == L"take2");
/// @endcode

#pragma once

#include <compare>
#include <typeindex> // std::hash
#include <vector>

#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

namespace zeString {
class CString;
}

namespace zeOS {

/// A place among the elements of a path: the root if the path begins with its separator, then each
/// name. It is valid until the next assignment to the Filename, and models `std::forward_iterator`.
class FilenameIterator {
public:
    using value_type = zeString::IString; ///< By value: there is no element to refer to.
    using difference_type = long;         ///< No distance exceeds the length of a text.

    /// At no path.
    FilenameIterator() = default;
    /// The first element of a text, or its end if it is empty.
    FilenameIterator(const wchar_t* begin, const wchar_t* end, wchar_t separator)
        : first_(begin), last_(begin), end_(end), separator_(separator) {
        if (first_ != end_ && *first_ == separator_)
            ++last_; // the root
        else
            findLast();
    }

    /// The element, as a text of its own.
    zeString::IString operator*() const {
        return zeString::IString(first_, static_cast<int>(last_ - first_));
    }
    /// The next element, or the end.
    FilenameIterator& operator++() {
        for (first_ = last_; first_ != end_ && *first_ == separator_;)
            ++first_;
        last_ = first_;
        findLast();
        return *this;
    }
    /// The place before the step.
    FilenameIterator operator++(int) {
        const FilenameIterator before(*this);
        ++*this;
        return before;
    }
    /// Whether both are at one place of one path.
    bool operator==(const FilenameIterator& other) const { return first_ == other.first_; }

private:
    void findLast() {
        while (last_ != end_ && *last_ != separator_)
            ++last_;
    }

    const wchar_t* first_ = nullptr; ///< The element is [first_, last_).
    const wchar_t* last_ = nullptr;
    const wchar_t* end_ = nullptr; ///< Of the path.
    wchar_t separator_ = 0;
};

/// A path. Copies are independent; there is no move, so that moving a Filename copies it. A path
/// that is only stored and passed on is never split.
///
/// Paths compare, hash and print by their texts; zeOSFilenamePath.h makes them from
/// `std::filesystem::path`, and such paths from them.
///
/// Each object has a separator, "/" unless a constructor is given another. It decides where the
/// text is split, and which separators are removed from the end. Pairs and "/../" are searched for
/// with backslashes if the separator is a backslash, and with slashes in all other cases.
class ZEBASE_API Filename {
public:
    /// The empty path.
    Filename();
    /// The normal form of `name`. Implicit, so that a text can be passed for a path.
    Filename(const zeString::IString& name);
    /// The normal form of `name` with `sep` as the object's separator.
    Filename(const zeString::IString& name, wchar_t sep);
    /// @{
    /// The same for text in the locale's encoding; `sep` counts as an unsigned byte. See above for
    /// what the "C" locale does to names.
    Filename(const zeString::CString& name, char sep);
    Filename(const char* name, char sep);
    /// @}
    /// The same path with separator() as the object's separator, whatever `other` has;
    /// assignment takes over the separator.
    Filename(const Filename& other);
    /// @{
    /// The two joined: see assign().
    Filename(const Filename& a, const Filename& b);
    Filename(const zeString::IString& a, const zeString::IString& b);
    /// @}
    /// References to the parts end with it.
    virtual ~Filename();

    /// Takes over the path and the separator of `other`, as they are.
    Filename& operator=(const Filename& other);
    /// The same as assign(name).
    Filename& operator=(const zeString::IString& name);

    /// Replaces the path by the normal form of `name`, which may be a part of this object.
    void assign(const zeString::IString& name);
    /// Replaces the path by the normal form of `dir`, separator() and `name`, or by that of the one
    /// that is not empty. Both may be parts of this object. An absolute `name` is no special case:
    /// "/x" and "/y" give "/x/y". The object's own separator is ignored.
    void assign(const zeString::IString& dir, const zeString::IString& name);

    /// The whole text.
    const zeString::IString& path() const;

    /// "/".
    static wchar_t separator();
    /// ":", which separates the directories of a search path.
    static wchar_t pathSeparator();
    /// 4096, the system's limit for the bytes of a path with its terminator, which is not enforced
    /// here.
    static int maxLength();

    /// @name Parts
    /// @{

    /// The prefix, which is always empty on this platform. Like the other parts it is a reference
    /// that is valid until the next assignment.
    const zeString::IString& prefix() const;
    /// The text before the last separator; the separator itself for what lies in the root, and
    /// empty if there is no separator.
    const zeString::IString& dirname() const;
    /// The text after the last separator; empty for the root.
    const zeString::IString& basename() const;
    /// The base name before its last ".": "a.tar" of "a.tar.gz", empty for ".profile" and ".".
    const zeString::IString& baseTrunk() const;
    /// The base name after its last ".": "gz" of "a.tar.gz", "profile" of ".profile", empty if
    /// there is no ".".
    const zeString::IString& baseSuffix() const;
    /// Splits the path now, if that has not been done.
    void split() const;
    /// Five texts: prefix, directory, base name, trunk, suffix.
    std::vector<zeString::IString> components() const;
    /// @}

    /// @{
    /// The elements from the root on, split at the object's separator: "/", "a" and "b" of "/a/b".
    /// An empty path has none.
    FilenameIterator begin() const { return {path_.begin(), path_.end(), separator_}; }
    FilenameIterator end() const { return {path_.end(), path_.end(), separator_}; }
    /// @}

    /// Equality of the texts, whatever the separators.
    friend bool operator==(const Filename& a, const Filename& b) { return a.path_ == b.path_; }
    /// Order of the texts, by code points.
    friend std::strong_ordering operator<=>(const Filename& a, const Filename& b) {
        return a.path_ <=> b.path_;
    }
    /// Writes the path in UTF-8 to a `std::ostream`.
    template<class Traits>
    friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                                        const Filename& name) {
        return stream << name.path_;
    }

    /// Whether the path begins with "/", whatever the object's separator.
    bool isAbsolute() const;

    /// The current directory of the process; empty if the system does not give it.
    static Filename getCwd();
    /// Makes this the current directory of the process. False on failure, with `errno`.
    bool setCwd() const;
    /// Creates this directory, one level only, with mode 0777 less the process's mask. False on
    /// failure, with `errno`.
    bool makeDir() const;

    /// @{
    /// The path of Filename(a, b). More arguments are joined one by one from the left, and each
    /// step normalises.
    static zeString::IString join(const zeString::IString& a, const zeString::IString& b);
    static zeString::IString join(const zeString::IString& a, const zeString::IString& b,
                                  const zeString::IString& c);
    static zeString::IString join(const zeString::IString& a, const zeString::IString& b,
                                  const zeString::IString& c, const zeString::IString& d);
    /// @}

    /// Puts the normal form of `in` into `out`, which may be the same string: the three passes
    /// below in their order, in linear time.
    static void canonicalize(const zeString::IString& in, wchar_t sep, zeString::IString& out);
    /// Leaves one of each run of separators, at the start too.
    static void removeDuplicateSeparators(zeString::IString& text, wchar_t sep);
    /// Removes all `sep` at the end but the first character of the text.
    static void removeTrailingSeparators(zeString::IString& text, wchar_t sep);
    /// Removes the first "/../" with the component before it, and repeats that. It ends at one with
    /// nothing but ".." before it, and leaves what follows: "../../a/../b" stays as it is. A first
    /// component "." becomes "..", and an empty one (the root) is removed like any other.
    static void removeSlashDotDotSlash(zeString::IString& text, wchar_t sep);

private:
    class ZEBASE_HIDDEN Impl;

    wchar_t separator_;
    zeString::IString path_;
    mutable Impl* impl_ = nullptr; ///< Owned; null until a part is asked for.

    ZEBASE_HIDDEN void deleteImpl();
};

/// Whether the name is reserved for a device on certain other systems: its trunk is CON, PRN, AUX
/// or NUL, or COM or LPT and a digit from 1 to 9, in upper or lower case. True for "dir/con.txt",
/// false for ".con". Available on every platform, for names of files that are exchanged.
ZEBASE_API bool isWindowsReservedDeviceName(const Filename& name);

} // namespace zeOS

namespace std {

/// That of path().
template<>
struct hash<zeOS::Filename> {
    /// The hash.
    size_t operator()(const zeOS::Filename& name) const noexcept {
        return std::hash<zeString::IString>()(name.path());
    }
};

} // namespace std

/// The same for callers that hold narrow strings. Texts are in the locale's encoding. `out` must
/// have room for the result and its terminator, which Filename::maxLength() bytes are for every
/// path that the system takes; it may be the same buffer as an argument.
extern "C" {

/// Filename::makeDir(): 1 on success, 0 on failure.
ZEBASE_API int zeOS_FilenameMakeDir(const char* path);
/// Filename::join().
ZEBASE_API void zeOS_FilenameJoin(const char* a, const char* b, char* out);
/// Filename(path).prefix().
ZEBASE_API void zeOS_FilenamePrefix(const char* path, char* out);
/// Filename(path).dirname().
ZEBASE_API void zeOS_FilenameDirname(const char* path, char* out);
/// Filename(path).basename().
ZEBASE_API void zeOS_FilenameBasename(const char* path, char* out);
/// Filename(path).baseTrunk().
ZEBASE_API void zeOS_FilenameBaseTrunk(const char* path, char* out);
/// Filename(path).baseSuffix().
ZEBASE_API void zeOS_FilenameBaseSuffix(const char* path, char* out);

} // extern "C"

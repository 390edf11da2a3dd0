// SPDX-License-Identifier: MIT

/// @file
/// A text that may be a path or a URL, taken apart.
///
/// A text without "://" is a local path, with the protocol "file"; so is one with a single letter
/// before it, which is a drive letter. Every text has some split: there are no errors, and nothing
/// says that a URL makes sense. No network and no file is touched.
///
/// Each of path, query and fragment has two forms: plain, as it was given, and encoded, with "%20",
/// "%3C", "%3E" and "%25" for space, "<", ">" and "%". **Nothing is ever decoded by itself**, so a
/// text that is encoded already is encoded once more: pass it through decode() first. The split is
/// not that of RFC 3986: "?" is looked for before "#", user names stay part of the host, and an
/// IPv6 address in brackets is cut at its first colon.
///
/// **In the "C" locale** the parts of the path that go through zeOS::Filename (basename(),
/// dirname() and their kin, and so getDirname()) have "?" for each byte above 0x7F: see
/// zeOSFilename.h.
///
/// Threads: a URL belongs to one thread at a time, since const operations write the caches of its
/// file names.
///
/// @code
/// const zeOS::URL url("http://Host:8080/shots/a b.ze?take=1#end");
/// assert(url.getProtocol() == "http" && url.getHost() == "host" && url.getPort() == 8080);
/// assert(url.getPath(true) == "/shots/a%20b.ze" && url.baseSuffix(false) == "ze");
/// assert(url.getQuery(false) == "take=1" && url.getRef(false) == "end");
/// const zeOS::URL local("shots//a.ze");
/// assert(local.isLocalFile() && local.getName(false) == "shots/a.ze");
/// @endcode

#pragma once

#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/zeBaseExport.h"

namespace zeOS {

/// A path or URL in its parts. A value: copies are independent.
class ZEBASE_API URL {
public:
    /// Takes the text apart:
    /// - protocol: what stands before "://", in lower case;
    /// - authority: what stands between "://" and the next "/", in lower case. Without a "/" it is
    ///   all of the rest, even with "?" or "#" in it, unless it begins with one of these;
    /// - host: the authority up to its first ":";
    /// - port: the decimal number behind that ":"; without one 443 for "https", 23 for "telnet", 21
    ///   for "ftp", and 80 for all others;
    /// - path: what follows up to the first "?", or else "#", with runs of "/" as one; "/" if
    ///   nothing at all follows;
    /// - query: what stands between that "?" and the next "#", or the end. At the end, **a query of
    ///   one character is dropped**, kept for compatibility;
    /// - fragment: what stands behind the "#".
    ///
    /// A local path is the whole text, and that of "file" all that follows "://", less the "/"
    /// before a drive letter. Both lose the separators at their end; they have no other parts.
    explicit URL(const zeString::CString& text);

    /// The protocol, "file" for a local path.
    zeString::CString getProtocol() const { return protocol_; }
    /// The host, empty for a local path.
    zeString::CString getHost() const { return host_; }
    /// Host and port as given.
    zeString::CString getAuthority() const { return authority_; }
    /// The port, which is not checked for sense.
    int getPort() const { return port_; }
    /// The path.
    zeString::CString getPath(bool encoded) const { return encoded ? encodedPath_ : path_; }
    /// The query without its "?".
    zeString::CString getQuery(bool encoded) const { return encoded ? encodedQuery_ : query_; }
    /// The fragment without its "#".
    zeString::CString getRef(bool encoded) const { return encoded ? encodedRef_ : ref_; }

    /// zeOS::Filename::separator() for a local file, else "/".
    char getSeparator() const;
    /// Whether the protocol is "file".
    bool isLocalFile() const;
    /// Whether the protocol is "iman".
    bool IsIMan() const;
    /// Whether the path begins with "/". A URL without a path is not absolute.
    bool isAbsolute() const;
    /// isAbsolute() for a local file; true for every other protocol.
    bool isAbsolutePath() const;

    /// @{
    /// The part of the path that zeOS::Filename gives under that name, in UTF-8. Empty in a URL
    /// without a path.
    zeString::CString basename(bool encoded) const;
    zeString::CString baseTrunk(bool encoded) const;
    zeString::CString baseSuffix(bool encoded) const;
    zeString::CString dirname(bool encoded) const;
    /// @}

    /// The path with runs of separators as one.
    zeString::CString getCanonicalPath(bool encoded) const;
    /// What opens it: the path of a local file, and for any other protocol that, "://", authority
    /// and path.
    zeString::CString getName(bool encoded) const;
    /// getName() with the directory of the path in its place, and a separator at the end. **For a
    /// local name without a directory that is "/"**, kept for compatibility.
    zeString::CString getDirname(bool encoded) const;
    /// Protocol, "://", authority, path, and query and fragment with their marks where they are not
    /// empty: for a local path too.
    zeString::CString getFullURL(bool encoded) const;
    /// Whether getName(false) of both is the same.
    bool comparePath(const URL& other) const;

    /// The text with "%" and two hexadecimal digits for each space, "<", ">" and "%".
    static zeString::CString encode(const zeString::CString& text);
    /// @{
    /// The text with a byte for each "%" and two hexadecimal digits. A character that is none
    /// counts as 0, so that "%zz" is a zero byte, and the text ends at a "%" that has less than two
    /// characters behind it. A wide text is taken in UTF-8. What comes out may hold any byte:
    /// separators, "..", zero bytes. Check it before it becomes the name of a file.
    static zeString::CString decode(const zeString::CString& text);
    static zeString::CString decode(const char* text);
    static zeString::CString decode(const zeString::IString& text);
    /// @}

    /// Whether the text holds a control character, a backslash, a space, a quotation mark, a number
    /// sign, a dollar sign, a backtick, or one of `&+,;<=>?@^{|}`.
    static bool hasIllegalCharacters(const zeString::CString& text);
    /// Whether the encoded path, the host or the protocol holds such a character, or a ":"; the
    /// host or the protocol a "/"; the path or the protocol a square bracket. The query and the
    /// fragment are not looked at.
    bool hasIllegalCharacters() const;

    /// The text with one of each run of `separator`.
    static zeString::CString removeDuplicateSeparators(const zeString::CString& text,
                                                       char separator);
    /// The text without each `separator` at its end, but for its first character.
    static zeString::CString removeTrailingSeparators(const zeString::CString& text,
                                                      char separator);
    /// removeDuplicateSeparators().
    zeString::CString canonicalize(const zeString::CString& text, char separator) const;

    /// "0" to "9" and "A" to "F" for the numbers from 0 to 15; the number 0 for any other.
    static char decimalHexit2asciiHexit(char number);
    /// The other way, in either case; 0 for what is no digit.
    static char asciiHexit2decimalHexit(char digit);

private:
    ZEBASE_HIDDEN void encodeAllInfo();
    ZEBASE_HIDDEN void setLocalPath(const zeString::CString& text);
    ZEBASE_HIDDEN void setRemotePath(const zeString::CString& text);
    ZEBASE_HIDDEN void splitAuthority();
    ZEBASE_HIDDEN void splitRemote(const zeString::CString& text, unsigned int begin);
    ZEBASE_HIDDEN void splitPath(const zeString::CString& text, unsigned int begin);
    ZEBASE_HIDDEN const Filename& file(bool encoded) const;
    ZEBASE_HIDDEN zeString::CString origin() const;

    zeString::CString encodedPath_;
    zeString::CString encodedQuery_;
    zeString::CString encodedRef_;
    zeString::CString path_;
    zeString::CString query_;
    zeString::CString ref_;
    zeString::CString host_;
    zeString::CString authority_;
    zeString::CString protocol_;
    int port_ = 80;
    bool rooted_ = false;  ///< A local name began with the separator.
    Filename encodedName_; ///< Of encodedPath_; empty without a path.
    Filename name_;        ///< Of path_; empty without a path.
};

} // namespace zeOS

/// @{
/// The same question to the zeOS::URL of a text.
ZEBASE_API bool isAbsolutePath(const char* text);
ZEBASE_API bool isLocalFile(const char* text);
/// @}

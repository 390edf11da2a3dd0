// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringTableManager.h"

#include <cerrno>
#include <cstdio>
#include <memory>

#include "Base/OS/zeOSError.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Strings/zeStringTableStringTable.h"

namespace zeStringTable {

using zeString::CString;
using zeString::IString;

namespace {

constexpr unsigned int npos = IString::npos;

/// What a line of a file is read into, with its terminator. A longer line comes in pieces.
constexpr int lineBytes = 4098;

void trim(IString& text) {
    text.stripSpaces().rstripSpaces();
}

/// Takes off a comment. One that begins at the second character goes with the first; behind that it
/// must stand before the line's first quote, and takes the character before it along: all kept for
/// compatibility. So "//" in a value, or in a line without quotes, is text.
void removeComment(IString& line) {
    const unsigned int comment = line.find(L"//");
    if (comment == npos)
        return;
    const unsigned int quote = line.find(L'"');
    if (comment < 2)
        line.erase();
    else if (quote != npos && quote > comment)
        line.erase(comment - 1);
}

/// Takes the quotes off. A single one is both.
bool removeQuotes(IString& value) {
    if (value.isEmpty() || value[0] != L'"' || value[value.last()] != L'"')
        return false;
    value.erase(0, 1);
    if (!value.isEmpty())
        value.erase(value.last());
    return true;
}

/// One after the other over the whole text, so that `\""` becomes one quote, and `""n` is not
/// looked at again. A backslash has no escape of its own.
void replaceEscapes(IString& value) {
    value.replace(L"\\r\\n", L"\n")
        .replace(L"\\n", L"\n")
        .replace(L"\\t", L"\t")
        .replace(L"\"\"", L"\"")
        .replace(L"\\\"", L"\"");
}

/// Reads one file into the application's table.
class Catalog {
public:
    explicit Catalog(const IString& path) : path_(path) {}

    zeUtil::Error read();

private:
    zeUtil::Error takeLine(const char* bytes);
    zeUtil::Error takeEntry();
    zeUtil::Error parsingError(const wchar_t* reason) const;
    zeUtil::Error systemError(int code, const wchar_t* format, int number) const;

    const IString& path_;
    unsigned int lineNumber_ = 0;
    IString entry_; ///< the lines of an entry, as far as they were read
};

zeUtil::Error Catalog::read() {
    // "e": close-on-exec.
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path_.asUTF8(), "re"),
                                                               &std::fclose);
    if (!file)
        return systemError(1, L"Can't open catalog file %S for read: %S\n", errno);
    char bytes[lineBytes];
    while (std::fgets(bytes, lineBytes, file.get()))
        if (zeUtil::Error error = takeLine(bytes); error.code() != 0)
            return error;
    const int reason = errno;
    if (std::ferror(file.get()))
        return systemError(2, L"Error reading file %S: %S\n", reason);
    return zeUtil::Error(); // an entry that is still open is dropped
}

zeUtil::Error Catalog::takeLine(const char* bytes) {
    ++lineNumber_;
    // Converted before anything else, so that a byte order mark shifts no position.
    bool ok = false;
    IString line(bytes, zeString::EncodingUTF8, &ok);
    if (!ok)
        return zeUtil::Error(
            5, L"String file conversion error encountered, line %d, file %S: \n%S: %S\n",
            lineNumber_, path_.asWChar(), L"Error interpreting input as UTF-8", line.asWChar());
    line.rstrip(L'\n');
    removeComment(line);
    trim(line);
    if (line.isEmpty())
        return zeUtil::Error(); // between the lines of an entry, too
    const bool continues = line[line.last()] == L'\\';
    if (continues)
        line.erase(line.last());
    entry_.append(line);
    return continues ? zeUtil::Error() : takeEntry();
}

zeUtil::Error Catalog::takeEntry() {
    const unsigned int equals = entry_.find(L'=');
    if (equals == npos || equals == 0 || equals == entry_.last())
        return parsingError(L"Expected idToken = \"quoted value string\" format");
    // Without the character before the "=", whatever it is: writers put a blank there.
    IString key = entry_.substr(0, equals - 1);
    IString value = entry_.substr(equals + 1);
    trim(key);
    trim(value);
    if (!removeQuotes(value))
        return parsingError(L"Expected quotes surrounding value string. Illegal character(s) "
                            L"encountered at start or end");
    if (!key.isAscii())
        return parsingError(L"Key string contains non-ascii characters");
    const CString keyText(key.asUTF8());
    if (!Key::isValidKeyString(keyText))
        return parsingError(L"Key string does not have valid format");
    replaceEscapes(value);
    if (!appStringTable().assign(keyText, value))
        return zeUtil::Error(4, L"Error assigning string table entry for key:%S, value%S\n",
                             key.asWChar(), value.asWChar());
    entry_.erase();
    return zeUtil::Error();
}

zeUtil::Error Catalog::parsingError(const wchar_t* reason) const {
    return zeUtil::Error(3, L"String file parsing error encountered, line %d, file %S: \n%S: %S\n",
                         lineNumber_, path_.asWChar(), reason, entry_.asWChar());
}

zeUtil::Error Catalog::systemError(int code, const wchar_t* format, int number) const {
    return zeUtil::Error(code, format, path_.asWChar(), zeOS::errorText(number).asWChar());
}

} // namespace

zeUtil::Error Manager::loadCatalog(const zeOS::Filename& file) {
    return FileUtil::readCatalogFile(file);
}

zeUtil::Error Manager::loadCatalog(const IString& file) {
    return FileUtil::readCatalogFile(zeOS::Filename(file));
}

zeUtil::Error FileUtil::readCatalogFile(const zeOS::Filename& file) {
    return Catalog(file.path()).read();
}

} // namespace zeStringTable

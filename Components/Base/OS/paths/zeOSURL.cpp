// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSURL.h"

#include <cstdlib>
#include <cstring>

#include "Base/Strings/zeStringCharacter.h"
#include "Base/Strings/zeStringIString.h"

namespace zeOS {

using zeString::CString;
using zeString::IString;

namespace {

constexpr unsigned int npos = CString::npos;
constexpr char remoteSeparator = '/';

char localSeparator() {
    return static_cast<char>(Filename::separator());
}

int defaultPort(const CString& protocol) {
    if (protocol == "https")
        return 443;
    if (protocol == "telnet")
        return 23;
    if (protocol == "ftp")
        return 21;
    return 80;
}

CString utf8(const IString& text) {
    return CString(text.asUTF8());
}

bool isEncoded(char c) {
    return c == ' ' || c == '<' || c == '>' || c == '%';
}

/// The characters that may stand in some texts and not in others.
struct Forbidden {
    bool colon;
    bool slash;
    bool brackets;
};

bool isInvalid(char c, const Forbidden& forbidden) {
    switch (c) {
    case ':':
        return forbidden.colon;
    case '/':
        return forbidden.slash;
    case '[':
    case ']':
        return forbidden.brackets;
    case '\0':
        return true; // a control character, which strchr would take for its terminator
    default:
        return zeString::isCntrl(c) || std::strchr("\\ \"#$&+,;<=>?@^`{|}", c);
    }
}

bool hasInvalidCharacters(const CString& text, const Forbidden& forbidden) {
    for (unsigned int i = 0; i < text.length(); ++i)
        if (isInvalid(text[i], forbidden))
            return true;
    return false;
}

} // namespace

URL::URL(const CString& text) : path_("/") {
    const unsigned int mark = text.find("://");
    if (mark == npos || mark == 1) { // one letter is a drive
        protocol_ = "file";
        rooted_ = text.isEmpty() || text[0] == localSeparator();
        setLocalPath(text);
        return;
    }
    protocol_ = text.substr(0, mark).toLowerCase();
    const unsigned int begin = mark + 3;
    if (!isLocalFile()) {
        port_ = defaultPort(protocol_);
        splitRemote(text, begin);
        return;
    }
    if (begin < text.length())
        path_ = text.substr(begin);
    if (path_.length() > 2 && path_[0] == '/' && path_[2] == ':')
        path_.erase(0, 1);
    setLocalPath(path_);
}

void URL::setLocalPath(const CString& text) {
    const char separator = localSeparator();
    path_ = removeTrailingSeparators(removeDuplicateSeparators(text, separator), separator);
    encodeAllInfo();
    encodedName_ = Filename(encodedPath_, separator);
    name_ = Filename(path_, separator);
}

/// What follows "://", from `begin`.
void URL::splitRemote(const CString& text, unsigned int begin) {
    unsigned int path = begin;
    if (begin == text.length()) {
        path = begin - 1; // the last slash of "://"
    } else if (const unsigned int slash = text.find(remoteSeparator, begin); slash != npos) {
        authority_ = text.substr(begin, slash - begin);
        path = slash;
    } else if (text[begin] != '#' && text[begin] != '?') {
        authority_ = text.substr(begin);
        path = npos;
    }
    splitAuthority();
    if (path != npos)
        splitPath(text, path);
    encodeAllInfo();
}

void URL::splitAuthority() {
    authority_.toLowerCase();
    const unsigned int colon = authority_.find(':');
    host_ = authority_.substr(0, colon);
    if (colon != npos && colon != authority_.last())
        port_ = static_cast<int>(std::strtol(authority_.asChar() + colon + 1, nullptr, 10));
}

/// Path, query and fragment, from `begin`.
void URL::splitPath(const CString& text, unsigned int begin) {
    unsigned int mark = text.find('?', begin);
    if (mark == npos)
        mark = text.find('#', begin);
    if (mark == npos)
        return setRemotePath(text.substr(begin));
    setRemotePath(text.substr(begin, mark - begin));
    if (text[mark] == '?') {
        const unsigned int query = mark + 1;
        mark = text.find('#', query);
        if (mark == npos) {
            if (query < text.last()) // one of a single character is dropped: kept for compatibility
                query_ = text.substr(query);
            return;
        }
        query_ = text.substr(query, mark - query);
    }
    if (mark != text.last())
        ref_ = text.substr(mark + 1);
}

void URL::setRemotePath(const CString& text) {
    path_ = removeDuplicateSeparators(text, remoteSeparator);
    encodeAllInfo();
    encodedName_ =
        Filename(removeTrailingSeparators(encodedPath_, remoteSeparator), remoteSeparator);
    name_ = Filename(removeTrailingSeparators(path_, remoteSeparator), remoteSeparator);
}

char URL::getSeparator() const {
    return isLocalFile() ? localSeparator() : remoteSeparator;
}

bool URL::isLocalFile() const {
    return protocol_ == "file";
}

bool URL::IsIMan() const {
    return protocol_ == "iman";
}

bool URL::isAbsolute() const {
    return name_.isAbsolute();
}

bool URL::isAbsolutePath() const {
    return !isLocalFile() || isAbsolute();
}

CString URL::basename(bool encoded) const {
    return utf8(file(encoded).basename());
}

CString URL::baseTrunk(bool encoded) const {
    return utf8(file(encoded).baseTrunk());
}

CString URL::baseSuffix(bool encoded) const {
    return utf8(file(encoded).baseSuffix());
}

CString URL::dirname(bool encoded) const {
    return utf8(file(encoded).dirname());
}

const Filename& URL::file(bool encoded) const {
    return encoded ? encodedName_ : name_;
}

CString URL::getCanonicalPath(bool encoded) const {
    return canonicalize(getPath(encoded), getSeparator());
}

/// What stands before the path.
CString URL::origin() const {
    return CString(protocol_).append("://").append(authority_);
}

CString URL::getName(bool encoded) const {
    if (!isLocalFile())
        return origin().append(getPath(encoded));
    if (!rooted_)
        return removeDuplicateSeparators(getPath(encoded), '/');
    return removeDuplicateSeparators(getPath(encoded).prepend(getSeparator()), getSeparator());
}

CString URL::getDirname(bool encoded) const {
    CString directory = dirname(encoded);
    if (isLocalFile())
        return removeDuplicateSeparators(directory.append(getSeparator()), getSeparator());
    if (!directory.isEmpty() && directory[directory.last()] != remoteSeparator)
        directory.append(remoteSeparator);
    return origin().append(directory);
}

CString URL::getFullURL(bool encoded) const {
    CString text = origin().append(getPath(encoded));
    if (const CString query = getQuery(encoded); !query.isEmpty())
        text.append('?').append(query);
    if (const CString ref = getRef(encoded); !ref.isEmpty())
        text.append('#').append(ref);
    return text;
}

bool URL::comparePath(const URL& other) const {
    return getName(false) == other.getName(false);
}

CString URL::encode(const CString& text) {
    CString result;
    result.reserve(text.length());
    for (unsigned int i = 0; i < text.length(); ++i) {
        const char c = text[i];
        if (isEncoded(c))
            result.append('%')
                .append(decimalHexit2asciiHexit(static_cast<char>(c >> 4)))
                .append(decimalHexit2asciiHexit(static_cast<char>(c & 15)));
        else
            result.append(c);
    }
    return result;
}

void URL::encodeAllInfo() {
    encodedPath_ = encode(path_);
    encodedQuery_ = encode(query_);
    encodedRef_ = encode(ref_);
}

CString URL::decode(const CString& text) {
    CString result;
    result.reserve(text.length());
    for (unsigned int i = 0; i < text.length(); ++i) {
        if (text[i] != '%') {
            result.append(text[i]);
            continue;
        }
        if (text.length() - i < 3)
            break; // the rest is lost, kept for compatibility
        result.append(static_cast<char>(asciiHexit2decimalHexit(text[i + 1]) << 4 |
                                        asciiHexit2decimalHexit(text[i + 2])));
        i += 2;
    }
    return result;
}

CString URL::decode(const char* text) {
    return decode(CString(text));
}

CString URL::decode(const IString& text) {
    return decode(utf8(text));
}

bool URL::hasIllegalCharacters(const CString& text) {
    return hasInvalidCharacters(text, {.colon = false, .slash = false, .brackets = false});
}

bool URL::hasIllegalCharacters() const {
    return hasInvalidCharacters(encodedPath_, {.colon = true, .slash = false, .brackets = true}) ||
           hasInvalidCharacters(host_, {.colon = true, .slash = true, .brackets = false}) ||
           hasInvalidCharacters(protocol_, {.colon = true, .slash = true, .brackets = true});
}

CString URL::removeDuplicateSeparators(const CString& text, char separator) {
    CString result;
    result.reserve(text.length());
    for (unsigned int i = 0; i < text.length(); ++i)
        if (i == 0 || text[i] != separator || text[i - 1] != separator)
            result.append(text[i]);
    return result;
}

CString URL::removeTrailingSeparators(const CString& text, char separator) {
    unsigned int length = text.length();
    while (length > 1 && text[length - 1] == separator)
        --length;
    return text.substr(0, length);
}

CString URL::canonicalize(const CString& text, char separator) const {
    return removeDuplicateSeparators(text, separator);
}

char URL::decimalHexit2asciiHexit(char number) {
    if (number < 0 || number > 15)
        return 0;
    return static_cast<char>(number < 10 ? '0' + number : 'A' + number - 10);
}

char URL::asciiHexit2decimalHexit(char digit) {
    if (digit >= '0' && digit <= '9')
        return static_cast<char>(digit - '0');
    if (digit >= 'A' && digit <= 'F')
        return static_cast<char>(digit - 'A' + 10);
    if (digit >= 'a' && digit <= 'f')
        return static_cast<char>(digit - 'a' + 10);
    return 0;
}

} // namespace zeOS

bool isAbsolutePath(const char* text) {
    return zeOS::URL(text).isAbsolutePath();
}

bool isLocalFile(const char* text) {
    return zeOS::URL(text).isLocalFile();
}

// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSFilename.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>

#include "Base/Strings/zeStringCString.h"
#include "Base/Utility/zeReferenceCount.h"

namespace zeOS {

using zeString::IString;

namespace {

constexpr int maxPathBytes = 4096;
constexpr std::size_t none = std::wstring_view::npos;

/// The separator of the pairs and "/../" that are searched for: the slash for any but the
/// backslash. So a Filename with the separator ':' still searches for "//", kept for compatibility.
wchar_t searchedSeparator(wchar_t sep) {
    return sep == L'\\' ? L'\\' : L'/';
}

/// Whether "/../" begins here, in a terminated text.
bool isParentStep(const wchar_t* text, wchar_t slash) {
    return text[0] == slash && text[1] == L'.' && text[2] == L'.' && text[3] == slash;
}

/// Whether the passes leave the text as it is, which they do without two separators or two dots
/// side by side, or a separator at the end. It has no early exit, so that the compiler can test
/// several characters at once, and its flag is as wide as they are.
bool isNormal(std::wstring_view text, wchar_t sep) {
    const wchar_t slash = searchedSeparator(sep);
    int found = text.size() > 1 && text.back() == sep;
    for (std::size_t i = 1; i < text.size(); ++i)
        found |= text[i - 1] == text[i] && (text[i] == slash || text[i] == L'.');
    return found == 0;
}

void normalize(IString& text, wchar_t sep) {
    if (isNormal(text, sep))
        return;
    Filename::removeDuplicateSeparators(text, sep);
    Filename::removeTrailingSeparators(text, sep);
    Filename::removeSlashDotDotSlash(text, sep);
}

void cutAt(IString& text, std::size_t length) {
    if (length < text.length())
        text.erase(static_cast<unsigned int>(length));
}

/// Puts the normal form of the two joined into `out`, which may be either of them.
void joinInto(IString& out, const IString& dir, const IString& name) {
    if (&name == &out)
        return joinInto(out, dir, IString(name));
    if (name.isEmpty()) {
        out.assign(dir);
    } else if (dir.isEmpty()) {
        out.assign(name);
    } else {
        out.reserve(dir.length() + 1 + name.length());
        out.assign(dir).append(Filename::separator()).append(name);
    }
    normalize(out, Filename::separator());
}

/// A part of a path. Its text is made when it is first asked for: most callers want one part only.
class Part {
public:
    const IString& text() {
        if (!text_)
            text_.emplace(place.data(), static_cast<int>(place.size()));
        return *text_;
    }

    std::wstring_view place;

private:
    std::optional<IString> text_;
};

void copyOut(const IString& text, char* out) {
    std::strcpy(out, text.asMultibyte());
}

} // namespace

/// The path, split.
class Filename::Impl : public ze::ImplBase {
public:
    Impl(const IString& fullName, wchar_t separator);

    const IString* fullName_; ///< the owner's path, not owned
    Part prefix_;             ///< for paths with a volume prefix; always empty here
    Part dirname_;
    Part basename_;
    Part baseTrunk_;
    Part baseSuffix_;
    wchar_t separator_; ///< the owner's

private:
    void splitPath();
    void splitBasename();
};

Filename::Impl::Impl(const IString& fullName, wchar_t separator)
    : fullName_(&fullName), separator_(separator) {
    splitPath();
    splitBasename();
}

void Filename::Impl::splitPath() {
    const std::wstring_view path = *fullName_;
    const std::size_t last = path.rfind(separator_);
    if (last == none) {
        basename_.place = path;
        return;
    }
    dirname_.place = path.substr(0, std::max<std::size_t>(last, 1)); // the root keeps its separator
    basename_.place = path.substr(last + 1);
}

void Filename::Impl::splitBasename() {
    const std::wstring_view name = basename_.place;
    const std::size_t dot = name.rfind(L'.');
    if (dot == none) {
        baseTrunk_.place = name;
    } else if (name.size() > 1) { // "." has neither
        baseTrunk_.place = name.substr(0, dot);
        baseSuffix_.place = name.substr(dot + 1);
    }
}

Filename::Filename() : separator_(separator()) {}

Filename::Filename(const IString& name) : Filename(name, separator()) {}

Filename::Filename(const IString& name, wchar_t sep)
    : separator_(sep), path_(name.asWChar(), static_cast<int>(name.length())) {
    normalize(path_, sep);
}

Filename::Filename(const zeString::CString& name, char sep)
    : Filename(IString(name), static_cast<unsigned char>(sep)) {}

Filename::Filename(const char* name, char sep)
    : Filename(IString(name), static_cast<unsigned char>(sep)) {}

// Unlike operator=, it does not take over the separator: callers rely on a copy that splits at "/".
Filename::Filename(const Filename& other) : separator_(separator()) {
    path_.assign(other.path_);
}

Filename::Filename(const Filename& a, const Filename& b) : Filename(a.path_, b.path_) {}

Filename::Filename(const IString& a, const IString& b) : separator_(separator()) {
    assign(a, b);
}

Filename::~Filename() {
    deleteImpl();
}

Filename& Filename::operator=(const Filename& other) {
    separator_ = other.separator_;
    path_.assign(other.path_);
    deleteImpl();
    return *this;
}

Filename& Filename::operator=(const IString& name) {
    assign(name);
    return *this;
}

// The parts go last in both: `name` and `dir` may be among them.

void Filename::assign(const IString& name) {
    canonicalize(name, separator_, path_);
    deleteImpl();
}

void Filename::assign(const IString& dir, const IString& name) {
    joinInto(path_, dir, name);
    deleteImpl();
}

const IString& Filename::path() const {
    return path_;
}

wchar_t Filename::separator() {
    return L'/';
}

wchar_t Filename::pathSeparator() {
    return L':';
}

int Filename::maxLength() {
    return maxPathBytes;
}

const IString& Filename::prefix() const {
    split();
    return impl_->prefix_.text();
}

const IString& Filename::dirname() const {
    split();
    return impl_->dirname_.text();
}

const IString& Filename::basename() const {
    split();
    return impl_->basename_.text();
}

const IString& Filename::baseTrunk() const {
    split();
    return impl_->baseTrunk_.text();
}

const IString& Filename::baseSuffix() const {
    split();
    return impl_->baseSuffix_.text();
}

void Filename::split() const {
    if (!impl_)
        impl_ = new Impl(path_, separator_);
}

std::vector<IString> Filename::components() const {
    std::vector<IString> parts;
    parts.reserve(5);
    for (const IString* part : {&prefix(), &dirname(), &basename(), &baseTrunk(), &baseSuffix()})
        parts.push_back(*part);
    return parts;
}

bool Filename::isAbsolute() const {
    return !path_.isEmpty() && path_[0] == L'/';
}

Filename Filename::getCwd() {
    char buffer[maxPathBytes];
    if (!getcwd(buffer, sizeof buffer))
        buffer[0] = '\0';
    return Filename(IString(buffer));
}

bool Filename::setCwd() const {
    return chdir(path_.asUTF8()) == 0;
}

bool Filename::makeDir() const {
    return mkdir(path_.asUTF8(), 0777) == 0;
}

IString Filename::join(const IString& a, const IString& b) {
    IString result;
    joinInto(result, a, b);
    return result;
}

IString Filename::join(const IString& a, const IString& b, const IString& c) {
    IString result = join(a, b);
    joinInto(result, result, c);
    return result;
}

IString Filename::join(const IString& a, const IString& b, const IString& c, const IString& d) {
    IString result = join(a, b, c);
    joinInto(result, result, d);
    return result;
}

void Filename::canonicalize(const IString& in, wchar_t sep, IString& out) {
    out.assign(in);
    normalize(out, sep);
}

// The passes work within the text: what is kept moves to the front, and the rest is cut off.

void Filename::removeDuplicateSeparators(IString& text, wchar_t sep) {
    const wchar_t slash = searchedSeparator(sep);
    wchar_t* const begin = &text[0];
    const wchar_t* const end =
        std::unique(begin, begin + text.length(),
                    [slash](wchar_t a, wchar_t b) { return a == slash && b == slash; });
    cutAt(text, static_cast<std::size_t>(end - begin));
}

void Filename::removeTrailingSeparators(IString& text, wchar_t sep) {
    unsigned int kept = text.length();
    while (kept > 1 && text[kept - 1] == sep)
        --kept;
    cutAt(text, kept);
}

void Filename::removeSlashDotDotSlash(IString& text, wchar_t sep) {
    const wchar_t slash = searchedSeparator(sep);
    wchar_t* const begin = &text[0];
    wchar_t* const end = begin + text.length();
    wchar_t* kept = begin; // the text is [begin, kept) and [next, end); the first holds no "/../"
    wchar_t* next = begin;
    while (next < end) {
        if (!isParentStep(next, slash)) {
            *kept++ = *next++;
            continue;
        }
        const std::wstring_view before(begin, kept);
        const std::size_t last = before.rfind(sep);
        if (last != none) {
            kept = begin + last + 1;
        } else if (before == L"..") {
            break; // callers rely on it: what follows stays, even where it could be reduced
        } else if (before == L".") {
            begin[1] = L'.';
            begin[2] = sep;
            kept = begin + 3;
        } else {
            kept = begin; // the root too: "/../x" is "x", and callers rely on it
        }
        next += 4;
        // The next one may begin with up to three characters that are kept: they are read again.
        const std::ptrdiff_t again = std::min<std::ptrdiff_t>(3, kept - begin);
        next = std::copy_backward(kept - again, kept, next);
        kept -= again;
    }
    kept = std::copy(next, end, kept);
    cutAt(text, static_cast<std::size_t>(kept - begin));
}

void Filename::deleteImpl() {
    delete impl_;
    impl_ = nullptr;
}

bool isWindowsReservedDeviceName(const Filename& name) {
    const IString trunk = IString(name.baseTrunk()).toUpperCase();
    if (trunk.length() == 3)
        return trunk == L"CON" || trunk == L"PRN" || trunk == L"AUX" || trunk == L"NUL";
    return trunk.length() == 4 && (trunk.find(L"COM") == 0 || trunk.find(L"LPT") == 0) &&
           trunk[3] >= L'1' && trunk[3] <= L'9';
}

} // namespace zeOS

extern "C" {

using zeOS::Filename;

int zeOS_FilenameMakeDir(const char* path) {
    return Filename(path).makeDir();
}

void zeOS_FilenameJoin(const char* a, const char* b, char* out) {
    zeOS::copyOut(Filename::join(a, b), out);
}

void zeOS_FilenamePrefix(const char* path, char* out) {
    zeOS::copyOut(Filename(path).prefix(), out);
}

void zeOS_FilenameDirname(const char* path, char* out) {
    zeOS::copyOut(Filename(path).dirname(), out);
}

void zeOS_FilenameBasename(const char* path, char* out) {
    zeOS::copyOut(Filename(path).basename(), out);
}

void zeOS_FilenameBaseTrunk(const char* path, char* out) {
    zeOS::copyOut(Filename(path).baseTrunk(), out);
}

void zeOS_FilenameBaseSuffix(const char* path, char* out) {
    zeOS::copyOut(Filename(path).baseSuffix(), out);
}

} // extern "C"

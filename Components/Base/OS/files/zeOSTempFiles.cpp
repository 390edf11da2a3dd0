// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSTempFiles.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileOperations.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSTempDirectory.h"

namespace zeOS {
namespace {

using zeString::IString;

/// As many bytes of the prefix as `tempnam` takes, but never a part of a character, which would
/// come back as "?" and name another file.
std::string cutPrefix(const std::string& text) {
    constexpr std::size_t taken = 5;
    if (text.size() <= taken)
        return text;
    std::size_t end = taken;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end);
}

/// A name from the C library's `tempnam`, which is looked up at run time: the linker would warn
/// every user of the library of the race between the name and its use, which the header states.
std::string proposeName(const Filename& dir, const std::string& prefix) {
    using Tempnam = char*(const char*, const char*);
    static const auto tempnam = reinterpret_cast<Tempnam*>(dlsym(RTLD_DEFAULT, "tempnam"));
    const std::unique_ptr<char, decltype(&std::free)> name(
        tempnam(dir.path().asUTF8(), prefix.c_str()), &std::free);
    return name ? name.get() : "";
}

Filename createFilename(const Filename& dir, const wchar_t* prefix, const IString& suffix) {
    IString text;
    text.format(L"%S.%d", prefix, static_cast<int>(::getpid()));
    const std::string proposed = proposeName(dir, cutPrefix(text.asUTF8()));
    if (proposed.empty())
        return Filename();
    IString path(proposed.c_str(), zeString::EncodingUTF8);
    if (!suffix.isEmpty())
        path.append(L'.').append(suffix);
    return Filename(path);
}

/// Removes `ending` from the end of `name`; false if the name does not end in it.
bool takeEnding(std::wstring_view& name, std::wstring_view ending) {
    if (!name.ends_with(ending))
        return false;
    name.remove_suffix(ending.size());
    return true;
}

bool endsInDigit(std::wstring_view name) {
    return !name.empty() && name.back() >= L'0' && name.back() <= L'9';
}

/// Whether a name ends in `before`, one decimal digit, `after`.
bool endsInNumbered(std::wstring_view name, std::wstring_view before, std::wstring_view after) {
    if (!takeEnding(name, after) || !endsInDigit(name))
        return false;
    name.remove_suffix(1);
    return name.ends_with(before);
}

bool isLeftover(std::wstring_view name) {
    const std::size_t length = name.size();
    return (length >= 13 && name.starts_with(L"eru") && name.ends_with(L".unload")) ||
           (length >= 15 && name.starts_with(L"erubaTempWire.")) ||
           (length >= 5 && name.ends_with(L".ac$")) ||
           (length >= 10 && name.starts_with(L"jam") && endsInNumbered(name, L"out", L"")) ||
           (length >= 14 && name.starts_with(L"jam") && endsInNumbered(name, L"cmd", L".bat"));
}

/// Whether the file was last changed before `limit`. One that cannot be queried counts as new.
bool isOlder(const Filename& file, std::time_t limit) {
    FileStatus status;
    return File::query(file, status).code() == File::ErrNone && status.lastModification() < limit;
}

} // namespace

// By value, as plug-ins are linked against them. NOLINTBEGIN(performance-unnecessary-value-param)
Filename createTmpFilename(IString suffix, const wchar_t* prefix) {
    return createFilename(getTempDirectory(), prefix ? prefix : L"ASTMP", suffix);
}

Filename createNewFilenameVariant(Filename dir, const wchar_t* prefix, IString suffix) {
    return createFilename(dir, prefix ? prefix : L"recover", suffix);
}
// NOLINTEND(performance-unnecessary-value-param)

int cleanupTempDirectory(const IString& dir) {
    constexpr std::time_t week = 604800;
    std::vector<IString> names;
    File(dir).readDir(names, true);
    const std::time_t limit = std::time(nullptr) - week;
    const std::wstring_view text = dir.asWChar();
    const bool hasSeparator = text.ends_with(L'/') || text.ends_with(L'\\');
    const std::size_t base = text.size() + (hasSeparator ? 0 : 1);

    int deleted = 0;
    for (const IString& name : names) {
        // A transport may use a shorter name for the directory than the one that was given.
        const std::wstring_view fullName = name.asWChar();
        if (fullName.size() <= base || !isLeftover(fullName.substr(base)))
            continue;
        const Filename file(name);
        if (isOlder(file, limit) && fileDelete(file).code() == 0)
            ++deleted;
    }
    return deleted;
}

int cleanupTempDirectory() {
    const IString dir = getTempDirectory().path();
    int deleted = cleanupTempDirectory(dir);
    if (dir != L"/tmp" && dir != L"\\tmp" && File(L"/tmp").isDirectory())
        deleted += cleanupTempDirectory(L"/tmp");
    return deleted;
}

} // namespace zeOS

char* zeOS_GetTemporaryDirectory() {
    return zeOS::getTempDirectory().path().copyAsMultibyte();
}

wchar_t* zeOS_GetTemporaryDirectoryW() {
    return zeOS::getTempDirectory().path().copyAsWChar();
}

char* zeOS_CreateTemporaryFileName(const char* suffix) {
    const zeOS::Filename name = zeOS::createTmpFilename(suffix, nullptr);
    return name.path().isEmpty() ? nullptr : name.path().copyAsMultibyte();
}

wchar_t* zeOS_CreateTemporaryFileNameW(const wchar_t* suffix) {
    const zeOS::Filename name = zeOS::createTmpFilename(suffix, nullptr);
    return name.path().isEmpty() ? nullptr : name.path().copyAsWChar();
}

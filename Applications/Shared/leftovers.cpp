// SPDX-License-Identifier: MIT

#include <algorithm>
#include <filesystem>

#include "Shared/message.h"
#include "Shared/save.h"

namespace app {

namespace {

namespace fs = std::filesystem;

/// zeOS::ProtectedWrite names its files after the first 5 bytes of the name, without the part of a
/// character at their end. A shorter name is filled up with a dot and a number.
std::string beginning(const std::string& name) {
    std::size_t end = 5;
    if (name.size() < end)
        return name + ".";
    while (end > 0 && (name[end] & 0xC0) == 0x80)
        --end;
    return name.substr(0, end);
}

/// 6 letters and the ending follow the beginning.
bool mayBeLeftOf(const std::string& name, const std::string& other, const std::string& ending) {
    return other.starts_with(beginning(name)) && other.ends_with(ending) &&
           other.size() <= 5 + 6 + ending.size();
}

/// What a save replaces: what a link points at, though it may be missing just now.
fs::path savedPlace(const fs::path& path) {
    std::error_code error;
    const fs::path target = fs::read_symlink(path, error);
    return error ? path : path.parent_path() / target;
}

} // namespace

std::vector<std::string> leftoverNotes(const std::string& path) {
    const fs::path saved = savedPlace(path);
    const std::string name = saved.filename();
    const fs::path folder = saved.parent_path();
    std::vector<std::string> notes;
    std::error_code error;
    for (fs::directory_iterator entry(folder.empty() ? "." : folder, error), end;
         !error && entry != end; entry.increment(error)) {
        const std::string other = entry->path().filename();
        const std::string place = (folder / other).string();
        if (mayBeLeftOf(name, other, ".0.tmp"))
            notes.push_back(message("shared.left_new",
                                    "note: {1} may be a part of a new file, from a save that was "
                                    "killed: delete it",
                                    {place}));
        if (mayBeLeftOf(name, other, ".1.tmp"))
            notes.push_back(message("shared.left_old",
                                    "note: {1} may be the old file, from a save that was killed: "
                                    "if {2} is missing, rename it",
                                    {place, saved.string()}));
    }
    std::sort(notes.begin(), notes.end());
    return notes;
}

} // namespace app

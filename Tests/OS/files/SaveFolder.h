// SPDX-License-Identifier: MIT

/// @file
/// Where protected saves are tried: a document with old content, and a temporary directory.

#pragma once

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSTempDirectory.h"
#include "Support/TempFolder.h"

#include "OS/files/protectedSave.h"

class SaveFolder {
    TempFolder folder_;

public:
    explicit SaveFolder(const std::string& name = "scene.zd",
                        const std::filesystem::path& parent = TempFolder::memory())
        : folder_(parent), main(folder_.path("documents/" + name)) {
        for (const char* sub : {"documents", "temporary"}) {
            std::filesystem::create_directory(folder_.path(sub));
            std::filesystem::permissions(folder_.path(sub), std::filesystem::perms::all);
        }
        std::filesystem::permissions(folder_.path(), std::filesystem::perms::all);
        folder_.write("documents/" + name, oldContent);
        unsetenv("TMPDIR"); // which would decide otherwise
        zeOS::setTempDirectory(temporary().c_str());
    }
    SaveFolder(const SaveFolder&) = delete;
    SaveFolder& operator=(const SaveFolder&) = delete;
    ~SaveFolder() { zeOS::setTempDirectory(L""); }

    const std::string main; ///< the document's full name

    zeOS::Filename mainName() const {
        return zeOS::Filename(zeString::IString(main.c_str(), zeString::EncodingUTF8));
    }
    std::string documents() const { return folder_.path("documents"); }
    std::string temporary() const { return folder_.path("temporary"); }

    /// What lies on disk: "backup part of old, main old, temp new".
    std::string state() const {
        std::vector<std::string> found;
        for (const std::string& directory : {documents(), temporary()})
            if (std::filesystem::is_directory(directory))
                for (const auto& entry : std::filesystem::directory_iterator(directory))
                    found.push_back(role(entry.path()) + " " + content(entry.path()));
        std::sort(found.begin(), found.end());
        std::string text;
        for (const std::string& file : found)
            text += (text.empty() ? "" : ", ") + file;
        return text;
    }

private:
    std::string role(const std::filesystem::path& path) const {
        const std::string name = path.filename();
        return path == main               ? "main"
               : name.ends_with(".0.tmp") ? "temp"
               : name.ends_with(".1.tmp") ? "backup"
                                          : name;
    }

    std::string content(const std::filesystem::path& path) const {
        if (std::filesystem::is_symlink(path))
            return "link";
        if (std::filesystem::is_directory(path))
            return "directory";
        const std::string text = folder_.read(std::filesystem::relative(path, folder_.path()));
        return text.empty()                   ? "empty"
               : text == oldContent           ? "old"
               : text == newContent           ? "new"
               : oldContent.starts_with(text) ? "part of old"
               : newContent.starts_with(text) ? "part of new"
                                              : "damaged";
    }
};

// SPDX-License-Identifier: MIT

/// @file
/// A folder on the disk, and short forms of what the tests of files say often.

#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Support/TempFolder.h"

class FileFixture : public testing::Test {
protected:
    static zeString::IString wide(const std::string& text) {
        return zeString::IString(text.c_str(), zeString::EncodingUTF8);
    }

    /// The full name of an entry of the folder.
    zeString::IString at(const std::string& entry) const { return wide(folder.path(entry)); }

    bool isThere(const std::string& entry) const {
        return std::filesystem::exists(std::filesystem::symlink_status(folder.path(entry)));
    }

    ino_t inode(const std::string& entry) const {
        struct stat status = {};
        ::stat(folder.path(entry).c_str(), &status);
        return status.st_ino;
    }

    void makeFolder(const std::string& entry) const {
        std::filesystem::create_directories(folder.path(entry));
    }

    void link(const std::string& target, const std::string& entry) const {
        std::filesystem::create_symlink(target, folder.path(entry));
    }

    TempFolder folder{TempFolder::memory()};
};

/// "code: message", or "" for a success.
inline std::string text(const zeUtil::Error& error) {
    if (error == zeUtil::Error())
        return "";
    return std::to_string(error.code()) + ": " + error.message();
}

// SPDX-License-Identifier: MIT

/// @file
/// A folder with copies of the test plug-in under any names. Each copy is a library of its own.

#pragma once

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/Plugin/zePluginPluginLoader.h"
#include "Base/Plugin/zePluginServiceManager.h"
#include "Support/TempFolder.h"

#include "Plugin/exporter.h"

using testing::ElementsAre;

class PluginFolder : public TempFolder {
public:
    /// Beside the test, from where code may surely be run: temporary folders can forbid it.
    PluginFolder() : TempFolder(std::filesystem::path(PLUGIN).parent_path()) { journal().clear(); }

    /// Copies the plug-in, or another library, and returns the full name of the copy.
    std::string add(const std::string& name, const char* library = PLUGIN) const {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        std::filesystem::copy_file(library, path(name));
        return path(name);
    }
};

inline bool isMapped(const std::string& path) {
    void* handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    return handle && dlclose(handle) == 0;
}

/// What happened since the last call.
inline Lines happened() {
    return std::exchange(journal(), {});
}

inline std::string narrow(const zeString::IString& text) {
    return text.asUTF8();
}

inline zePlugin::ServiceManager& manager() {
    return zePlugin::ServiceManager::getInstance();
}

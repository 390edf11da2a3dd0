// SPDX-License-Identifier: MIT

/// @file
/// The name of a plug-in's own file: tests copy one plug-in under many names.

#pragma once

#include <dlfcn.h>

#include <filesystem>
#include <string>

inline std::string ownName() {
    static const char here = 0;
    Dl_info info{};
    dladdr(&here, &info);
    return std::filesystem::path(info.dli_fname).filename().string();
}

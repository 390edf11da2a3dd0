// SPDX-License-Identifier: MIT

#include "fileName.h"

#include <filesystem>

#include "failure.h"

namespace scenefile {

zeOS::Filename fileName(const std::string& path) {
    const std::filesystem::path given(path);
    std::error_code error;
    const auto directory = std::filesystem::weakly_canonical(given.parent_path(), error);
    const std::string resolved = error ? path : (directory / given.filename()).string();
    bool ok = false;
    const zeString::IString text(resolved.c_str(), zeString::EncodingUTF8, &ok);
    if (!ok)
        throw Failure("its name is not UTF-8");
    return zeOS::Filename(text);
}

} // namespace scenefile

// SPDX-License-Identifier: MIT

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Base/OS/zeOSFileHash.h"
#include "Base/Strings/zeStringCString.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "Shared/save.h"
#include "command/command.h"

namespace scenefile {

namespace {

std::string readKey(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string key;
    bool isRead = file.is_open();
    try {
        key.assign(std::istreambuf_iterator<char>(file), {});
    } catch (const std::ios_base::failure&) { // a directory
        isRead = false;
    }
    if (!isRead)
        throw app::Failure(app::message("scenefile.no_key", "{1}: cannot be read: {2}",
                                        {path, app::systemMessage(errno)}));
    return key;
}

/// The path of a file whose name counts. Links in its directory are resolved, so that ".." means
/// what it means to the system.
std::string resolved(const std::string& path) {
    const std::filesystem::path given(path);
    std::error_code error;
    const auto directory = std::filesystem::weakly_canonical(given.parent_path(), error);
    return error ? path : (directory / given.filename()).string();
}

} // namespace

std::string hashKey(const std::optional<std::string>& keyFile) {
    const char* fromEnvironment = std::getenv("SCENEFILE_KEY");
    const std::string key = keyFile           ? readKey(*keyFile)
                            : fromEnvironment ? fromEnvironment
                                              : "scenefile";
    if (key.empty())
        throw app::Failure(app::message("scenefile.empty_key", "{1}: the key is empty",
                                        {keyFile ? *keyFile : "SCENEFILE_KEY"}));
    return key;
}

std::string fileHash(const std::string& path, const std::string& key) {
    zeString::CString hash;
    try {
        const zeUtil::Error error = zeOS::CreateFileHash(app::libraryFilename(resolved(path)),
                                                         key.data(), key.size(), hash);
        if (error.code() != 0)
            throw app::Failure(error.message());
    } catch (const app::Failure& failure) {
        throw app::Failure(
            app::message("scenefile.no_hash", "{1}: has no digest: {2}", {path, failure.what()}));
    }
    return hash.asChar();
}

void expectHash(const std::string& path, const std::string& hash, const std::string& expected) {
    if (expected.size() != hash.size() ||
        expected.find_first_not_of("0123456789abcdef") != std::string::npos)
        throw app::UsageError(app::message(
            "scenefile.bad_hash", "'{1}' is no digest: a digest has 64 digits, 0 to 9 and a to f",
            {expected}));
    if (!zeOS::EqualFileHash(hash.c_str(), expected.c_str()))
        throw app::Failure(app::message(
            "scenefile.other_hash",
            "{1}: does not have this digest: it was changed, or the key is a different one",
            {path}));
}

} // namespace scenefile

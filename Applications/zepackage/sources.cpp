// SPDX-License-Identifier: MIT

#include "sources.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "Base/IO/ioPackageFile.h"

#include "Shared/failure.h"
#include "package.h"

namespace zepackage {

namespace {

namespace fs = std::filesystem;

/// The path without what would lead out of a folder, "/" and "../" at its start. Throws a Failure
/// where the package would change more than that: it would come back as another file.
std::string entryName(const fs::path& path) {
    std::string name = path.lexically_normal().relative_path();
    while (name.starts_with("../"))
        name.erase(0, 3);
    if (ioPackageFile::cleanupName(libraryText(name)) != libraryText(name))
        throw app::Failure(path.string() + ": a package cannot keep its name");
    return name;
}

class Search {
public:
    explicit Search(const Arguments& arguments) : folder_(arguments.folder) {
        if (stat(arguments.package().c_str(), &package_) != 0)
            package_ = {};
    }

    /// A file or folder that the user names: a link is followed.
    void argument(const std::string& name) {
        const fs::path path = folder_ / name;
        struct stat status = {};
        if (name.empty() || stat(path.c_str(), &status) != 0)
            throw app::Failure(
                name + ": cannot be read: " + app::systemMessage(name.empty() ? ENOENT : errno));
        if (!isTaken(path, name, status))
            throw app::Failure(name + ": it is neither a file nor a folder");
    }

    Sources take() { return std::move(found_); }

private:
    /// `name` is what the user calls the path.
    bool isTaken(const fs::path& path, const fs::path& name, const struct stat& status) {
        if (S_ISDIR(status.st_mode))
            inside(path, name);
        else if (S_ISREG(status.st_mode))
            file(path, name, status);
        return S_ISDIR(status.st_mode) || S_ISREG(status.st_mode);
    }

    /// A link in a folder is not followed: others may have put it there.
    void inside(const fs::path& path, const fs::path& name) {
        std::error_code error;
        fs::directory_iterator entry(path, error);
        const fs::directory_iterator end;
        if (!error && entry == end)
            report(name.string() + ": left out: an empty folder");
        for (; !error && entry != end; entry.increment(error)) {
            const fs::path own = name / entry->path().filename();
            struct stat status = {};
            if (lstat(entry->path().c_str(), &status) != 0)
                throw app::Failure(own.string() + ": cannot be read: " + app::systemMessage(errno));
            if (!isTaken(entry->path(), own, status))
                report(own.string() + ": left out: neither a file nor a folder");
        }
        if (error)
            throw app::Failure(name.string() + ": cannot be read: " + error.message());
    }

    void file(const fs::path& path, const fs::path& name, const struct stat& status) {
        if (status.st_dev == package_.st_dev && status.st_ino == package_.st_ino)
            return report(name.string() + ": left out: the package itself");
        const auto [entry, isNew] = found_.emplace(entryName(name), Source{path, status.st_size});
        if (!isNew && !fs::equivalent(entry->second.path, path))
            throw app::Failure(path.string() + " and " + entry->second.path +
                               " would become one entry, " + entry->first);
    }

    fs::path folder_;
    struct stat package_ = {};
    Sources found_;
};

} // namespace

Sources findSources(const Arguments& arguments) {
    Search search(arguments);
    for (const std::string& name : arguments.names())
        search.argument(name);
    return search.take();
}

} // namespace zepackage

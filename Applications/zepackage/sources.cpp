// SPDX-License-Identifier: MIT

#include "sources.h"

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
    explicit Search(const Arguments& arguments)
        : folder_(arguments.folder), package_(arguments.package()) {}

    /// A file or folder that the user names: a link is followed.
    void argument(const std::string& name) {
        std::error_code error;
        const fs::path path = folder_ / name;
        const fs::file_status status = fs::status(path, error);
        if (name.empty() || !fs::exists(status))
            throw app::Failure(
                name + ": cannot be read: " + app::systemMessage(error ? error.value() : ENOENT));
        if (fs::is_directory(status))
            inside(path, name);
        else if (fs::is_regular_file(status))
            file(path, name);
        else
            throw app::Failure(name + ": it is neither a file nor a folder");
    }

    Sources take() { return std::move(found_); }

private:
    /// `name` is what the user calls the folder. A link in it is not followed: others may have put
    /// it there.
    void inside(const fs::path& path, const fs::path& name) {
        std::error_code error;
        fs::directory_iterator entry(path, error);
        const fs::directory_iterator end;
        if (!error && entry == end)
            report(name.string() + ": left out: an empty folder");
        for (; !error && entry != end; entry.increment(error)) {
            const fs::path own = name / entry->path().filename();
            const fs::file_status status = entry->symlink_status(error);
            if (error)
                break;
            if (fs::is_directory(status))
                inside(entry->path(), own);
            else if (fs::is_regular_file(status))
                file(entry->path(), own);
            else
                report(own.string() + ": left out: neither a file nor a folder");
        }
        if (error)
            throw app::Failure(name.string() + ": cannot be read: " + error.message());
    }

    void file(const fs::path& path, const fs::path& name) {
        std::error_code error;
        if (fs::equivalent(path, package_, error))
            return report(name.string() + ": left out: the package itself");
        const Source source{path, static_cast<std::int64_t>(fs::file_size(path, error))};
        const auto [entry, isNew] = found_.emplace(entryName(name), source);
        if (!isNew && entry->second.path != source.path)
            throw app::Failure(source.path + " and " + entry->second.path +
                               " would become one entry, " + entry->first);
    }

    fs::path folder_;
    fs::path package_;
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

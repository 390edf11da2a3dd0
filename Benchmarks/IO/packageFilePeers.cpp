// SPDX-License-Identifier: MIT

// What others need for the work of packageFile.cpp. limit_copy_4096, limit_copy_256K: the bare
// reads and writes, in blocks of these sizes.

#include <archive.h>
#include <archive_entry.h>
#include <sqlite3.h>

#include "Support/PackageWorkload.h"

namespace {

using bench::fileCount;
using bench::packageFiles;
using bench::packagePath;

// An archive library.

void archiveAdd(void (*setFormat)(archive*)) {
    archive* const a = archive_write_new();
    setFormat(a);
    archive_write_open_filename(a, packagePath().c_str());
    for (size_t i = 0; i < fileCount; ++i) {
        const std::string content = bench::readFile(packageFiles().path(i));
        archive_entry* const entry = archive_entry_new();
        archive_entry_set_pathname(entry, packageFiles().names[i].c_str());
        archive_entry_set_size(entry, la_int64_t(content.size()));
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_perm(entry, 0644);
        archive_write_header(a, entry);
        archive_write_data(a, content.data(), content.size());
        archive_entry_free(entry);
    }
    bench::require(archive_write_close(a) == ARCHIVE_OK, "the archive is written");
    archive_write_free(a);
}

void ustar(archive* a) {
    archive_write_set_format_ustar(a);
}

void zipStore(archive* a) {
    archive_write_set_format_zip(a);
    archive_write_set_options(a, "zip:compression=store");
}

void archiveExtract() {
    archive* const a = archive_read_new();
    archive_read_support_format_all(a);
    archive_read_open_filename(a, packagePath().c_str(), 65536);
    archive_entry* entry;
    for (size_t i = 0; archive_read_next_header(a, &entry) == ARCHIVE_OK; ++i) {
        const int file =
            open(packageFiles().targetPath(i).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        archive_read_data_into_fd(a, file);
        close(file);
    }
    archive_read_free(a);
}

void archiveReadOne(State& s) {
    unlink(packagePath().c_str());
    archiveAdd(zipStore);
    for (auto _ : s) {
        archive* const a = archive_read_new();
        archive_read_support_format_zip_seekable(a);
        archive_read_open_filename(a, packagePath().c_str(), 65536);
        archive_entry* entry;
        while (archive_read_next_header(a, &entry) == ARCHIVE_OK)
            if (archive_entry_pathname(entry) == packageFiles().names[700]) {
                std::string content(size_t(archive_entry_size(entry)), '\0');
                archive_read_data(a, content.data(), content.size());
                bench::keep(content);
                break;
            }
        archive_read_free(a);
    }
}

// A database.

class Database {
public:
    Database() { sqlite3_open(packagePath().c_str(), &handle_); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database() { sqlite3_close(handle_); }

    void run(const char* commands) {
        bench::require(sqlite3_exec(handle_, commands, nullptr, nullptr, nullptr) == SQLITE_OK,
                       commands);
    }

    /// Calls `each` before every row.
    template<class Each>
    void query(const char* command, Each each) {
        sqlite3_stmt* statement;
        sqlite3_prepare_v2(handle_, command, -1, &statement, nullptr);
        while (each(statement)) {
        }
        sqlite3_finalize(statement);
    }

private:
    sqlite3* handle_ = nullptr;
};

void databaseAdd() {
    Database database;
    database.run("PRAGMA synchronous=OFF; PRAGMA journal_mode=OFF;"
                 "CREATE TABLE f(name TEXT PRIMARY KEY, mtime INT, data BLOB); BEGIN");
    size_t i = 0;
    database.query("INSERT INTO f VALUES(?,0,?)", [&](sqlite3_stmt* row) {
        const std::string content = bench::readFile(packageFiles().path(i));
        sqlite3_bind_text(row, 1, packageFiles().names[i].c_str(), -1, SQLITE_STATIC);
        sqlite3_bind_blob(row, 2, content.data(), int(content.size()), SQLITE_STATIC);
        bench::require(sqlite3_step(row) == SQLITE_DONE, "a row is written");
        sqlite3_reset(row);
        return ++i < fileCount;
    });
    database.run("COMMIT");
}

void databaseExtract() {
    Database database;
    size_t i = 0;
    database.query("SELECT data FROM f", [&](sqlite3_stmt* row) {
        if (sqlite3_step(row) != SQLITE_ROW)
            return false;
        bench::spillFile(packageFiles().targetPath(i++), sqlite3_column_blob(row, 0),
                         size_t(sqlite3_column_bytes(row, 0)));
        return true;
    });
}

void databaseReadOne(State& s) {
    unlink(packagePath().c_str());
    databaseAdd();
    const std::string expected = bench::readFile(packageFiles().path(700));
    for (auto _ : s) {
        Database database;
        database.query("SELECT data FROM f WHERE name='file700.dat'", [&](sqlite3_stmt* row) {
            bench::require(sqlite3_step(row) == SQLITE_ROW, "it is there");
            const std::string content(static_cast<const char*>(sqlite3_column_blob(row, 0)),
                                      size_t(sqlite3_column_bytes(row, 0)));
            bench::require(content.size() == expected.size(), "the entry came back");
            return false;
        });
    }
}

// Bare calls.

template<size_t block>
void copyAll() {
    static char bytes[block];
    const int output = open(packagePath().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    for (size_t i = 0; i < fileCount; ++i) {
        const int input = open(packageFiles().path(i).c_str(), O_RDONLY);
        while (const ssize_t got = read(input, bytes, block))
            bench::require(write(output, bytes, size_t(got)) == got, "a block");
        close(input);
    }
    close(output);
}

template<size_t block>
void copyBack() {
    static char bytes[block];
    const int input = open(packagePath().c_str(), O_RDONLY);
    for (size_t i = 0; i < fileCount; ++i) {
        size_t left = std::filesystem::file_size(packageFiles().path(i));
        const int output =
            open(packageFiles().targetPath(i).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        while (left > 0) {
            const ssize_t got = read(input, bytes, std::min(block, left));
            bench::require(got > 0 && write(output, bytes, size_t(got)) == got, "a block");
            left -= size_t(got);
        }
        close(output);
    }
    close(input);
}

const bool registered = [] {
    bench::registerPackage(
        "libarchive_ustar", [] { archiveAdd(ustar); }, archiveExtract);
    bench::registerPackage(
        "libarchive_zip_store", [] { archiveAdd(zipStore); }, archiveExtract);
    bench::registerPackage("sqlite", databaseAdd, databaseExtract);
    bench::registerPackage("limit_copy_4096", copyAll<4096>, copyBack<4096>);
    bench::registerPackage("limit_copy_256K", copyAll<262144>, copyBack<262144>);
    bench::reg("read_one/libarchive_zip_store", archiveReadOne);
    bench::reg("read_one/sqlite", databaseReadOne);
    bench::registerPackers("tar", {"tar", "-cf", "PACKAGE", "-C", "SOURCE", "."},
                           {"tar", "-xf", "PACKAGE", "-C", "TARGET"});
    bench::registerPackers("tar/z", {"tar", "-cZf", "PACKAGE", "-C", "SOURCE", "."},
                           {"tar", "-xZf", "PACKAGE", "-C", "TARGET"});
    bench::registerPackers("zip", {"zip", "-q0rj", "PACKAGE", "SOURCE"},
                           {"unzip", "-q", "PACKAGE", "-d", "TARGET"});
    bench::registerPackers("context_zip/z", {"zip", "-q1rj", "PACKAGE", "SOURCE"},
                           {"unzip", "-q", "PACKAGE", "-d", "TARGET"});
    return true;
}();

} // namespace

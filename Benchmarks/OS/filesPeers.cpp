// SPDX-License-Identifier: MIT

// What others need for the work of files.cpp, and the bare system calls that each of ours makes.

#include <dirent.h>
#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Base/Strings/zeStringIString.h"
#include "Support/FilesWorkload.h"

namespace {

void bareCopy(State& s) {
    const std::string to = bench::folder().path("copy.bare");
    for (auto _ : s) {
        const int input = open(bench::largeFile().c_str(), O_RDONLY);
        const int output = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
        char block[4096];
        while (const ssize_t got = read(input, block, sizeof block))
            bench::require(write(output, block, size_t(got)) == got, "a block");
        close(output);
        close(input);
    }
    bench::bytes(s, bench::copySize());
    unlink(to.c_str());
}

/// The kernel copies without showing the bytes to the process: another kind of thing.
void kernelCopy(State& s) {
    const std::string to = bench::folder().path("copy.kernel");
    for (auto _ : s)
        std::filesystem::copy_file(bench::largeFile(), to,
                                   std::filesystem::copy_options::overwrite_existing);
    bench::bytes(s, bench::copySize());
    unlink(to.c_str());
}

void bareStat(State& s, const std::string& path, int expected) {
    struct stat status;
    for (auto _ : s)
        bench::require(stat(path.c_str(), &status) == expected, "whether it exists");
    bench::items(s, 1);
}

void standardExists(State& s, const std::filesystem::path& path, bool expected) {
    for (auto _ : s)
        bench::require(std::filesystem::exists(path) == expected, "whether it exists");
    bench::items(s, 1);
}

/// Decoded into the same strings, with the number of names known before.
void bareReadDirectory(State& s) {
    for (auto _ : s) {
        std::vector<zeString::IString> names;
        names.reserve(bench::entryCount + 2);
        DIR* entries = opendir(bench::fullDirectory().c_str());
        while (const dirent* entry = readdir(entries))
            names.emplace_back(entry->d_name, zeString::EncodingUTF8);
        closedir(entries);
        bench::require(names.size() == bench::entryCount + 2, "all names");
    }
    bench::items(s, bench::entryCount);
}

void standardReadDirectory(State& s) {
    for (auto _ : s) {
        std::vector<std::wstring> names;
        for (const auto& entry : std::filesystem::directory_iterator(bench::fullDirectory()))
            names.push_back(entry.path().filename().wstring());
        bench::require(names.size() == bench::entryCount, "all names");
    }
    bench::items(s, bench::entryCount);
}

void waitForDisk(const char* path) {
    const int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    fsync(fd);
    close(fd);
}

/// Puts six letters of a number in the place of the "XXXXXX".
class FreshName {
public:
    explicit FreshName(const std::string& path) : path_(path), place_(path.find("XXXXXX")) {}

    const char* with(uint64_t number) {
        for (size_t i = 0; i < 6; ++i, number /= 26)
            path_[place_ + i] = char('A' + number % 26);
        return path_.c_str();
    }

private:
    std::string path_;
    size_t place_;
};

/// The 30 system calls of one save in their order, without any of the work between. The names are
/// new each time, as those of a save are: the system keeps what it knows about names.
void bareSave(State& s) {
    const std::string& directory = bench::folder().root;
    const std::string temporaryDirectory = std::filesystem::temp_directory_path();
    const std::string main = bench::folder().path("bare.ze");
    FreshName candidates(temporaryDirectory + "/bare.XXXXXX");
    FreshName temporaries(bench::folder().path("bare.XXXXXX.0.tmp"));
    FreshName backups(bench::folder().path("bare.XXXXXX.1.tmp"));
    const std::string& content = bench::document();
    std::ofstream(main) << content;
    struct stat status;
    char random[8];
    uint64_t number = 0;
    for (auto _ : s) {
        bool good = stat(main.c_str(), &status) == 0;
        good &= access(main.c_str(), R_OK) == 0;
        good &= access(main.c_str(), W_OK) == 0;
        for (int i = 0; i < 2; ++i) { // the names of both files
            bench::keep(getpid());
            good &= stat(temporaryDirectory.c_str(), &status) == 0;
            good &= getrandom(random, sizeof random, GRND_NONBLOCK) == sizeof random;
            good &= lstat(candidates.with(++number), &status) != 0;
        }
        const char* const temporary = temporaries.with(number);
        const char* const backup = backups.with(number);
        good &= stat(temporary, &status) != 0;
        good &= stat(backup, &status) != 0;

        const int fd = open(temporary, O_WRONLY | O_CREAT | O_TRUNC, 0666);
        good &= write(fd, content.data(), content.size()) == ssize_t(content.size());
        close(fd);

        good &= stat(temporary, &status) == 0;
        waitForDisk(temporary);
        good &= stat(main.c_str(), &status) == 0;
        good &= rename(main.c_str(), backup) == 0;
        good &= rename(temporary, main.c_str()) == 0;
        waitForDisk(directory.c_str());
        good &= stat(temporary, &status) != 0;
        good &= stat(backup, &status) == 0;
        good &= unlink(backup) == 0;
        good &= stat(temporary, &status) != 0;
        bench::require(good, "the save");
    }
    bench::items(s, 1);
}

const bool registered = [] {
    const std::string& file = bench::folder().path("there");
    std::ofstream(file) << bench::document();
    bench::reg("copy/bare_loop", bareCopy);
    bench::reg("copy/context_kernel", kernelCopy);
    bench::reg("exists/bare_stat/yes", [file](State& s) { bareStat(s, file, 0); });
    bench::reg("exists/bare_stat/no", [file](State& s) { bareStat(s, file + ".missing", -1); });
    bench::reg("exists/std_filesystem/yes", [file](State& s) { standardExists(s, file, true); });
    bench::reg("exists/std_filesystem/no",
               [file](State& s) { standardExists(s, file + ".missing", false); });
    bench::reg("readDir/bare_calls", bareReadDirectory);
    bench::reg("readDir/std_filesystem", standardReadDirectory);
    bench::reg("save/bare_calls", bareSave);
    return true;
}();

} // namespace

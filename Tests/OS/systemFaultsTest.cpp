// SPDX-License-Identifier: MIT

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "Support/FaultTrial.h"
#include "Support/TempFolder.h"

namespace {

/// Makes one call of every name in a folder of its own; `failed` counts those that did not work.
class Tour {
public:
    explicit Tour(const std::string& folder) : folder_(folder) {}

    int failed = 0;

    void operator()() {
        const std::string file = folder_ + "/file";
        char buffer[4096] = {};
        struct stat status = {};
        struct statvfs volume = {};

        const int fd = open(file.c_str(), O_RDWR);
        expect(fd >= 0);
        expect(read(fd, buffer, 2) == 2);
        expect(write(fd, buffer, 2) == 2);
        expect(fsync(fd) == 0);
        expect(close(fd) == 0);
        FILE* opened = fopen(file.c_str(), "r");
        expect(opened && fread(buffer, 1, 2, opened) == 2);
        expect(opened && fclose(opened) == 0);
        std::string name = folder_ + "/XXXXXX";
        const int temporary = mkstemp(name.data());
        FILE* writing = temporary < 0 ? nullptr : fdopen(temporary, "w");
        if (temporary >= 0 && !writing)
            close(temporary);
        expect(writing && fwrite("ab", 1, 2, writing) == 2);
        if (writing)
            expect(fclose(writing) == 0);
        expect(mkdir((folder_ + "/a").c_str(), 0777) == 0);
        expect(rmdir((folder_ + "/a").c_str()) == 0);
        expect(stat(file.c_str(), &status) == 0);
        expect(lstat(file.c_str(), &status) == 0);
        expect(access(file.c_str(), R_OK) == 0);
        expect(getcwd(buffer, sizeof buffer) != nullptr);
        expect(chdir(buffer) == 0);
        expect(statvfs(file.c_str(), &volume) == 0);
        DIR* listing = opendir(folder_.c_str());
        expect(listing && readdir(listing));
        if (listing)
            closedir(listing);
        char* proposed = proposeName(folder_.c_str());
        expect(proposed);
        free(proposed);
        expect(rename(file.c_str(), (folder_ + "/renamed").c_str()) == 0);
        expect(unlink((folder_ + "/renamed").c_str()) == 0);
    }

private:
    void expect(bool worked) { failed += !worked; }

    /// As the library finds it.
    static char* proposeName(const char* folder) {
        using Tempnam = char*(const char*, const char*);
        const auto found = reinterpret_cast<Tempnam*>(dlsym(RTLD_DEFAULT, "tempnam"));
        return found(folder, "a");
    }

    std::string folder_;
};

} // namespace

TEST(SystemFaults, MeetEveryCallThatTheyName) {
    for (int i = 0; i < SystemFaults::callCount; ++i) {
        const auto call = static_cast<SystemFaults::Call>(i);
        int hits = 0;
        std::optional<TempFolder> folder;
        Tour tour("");
        FaultTrial trial;
        trial.prepare = [&] {
            folder.emplace();
            folder->write("file", "content");
            tour = Tour(folder->path());
        };
        trial.operation = std::ref(tour);
        trial.check = [&](const Fault& fault) {
            EXPECT_EQ(tour.failed > 0, fault.n > 0);
            hits += fault.n > 0;
        };
        trial.run(call, {EIO});
        EXPECT_GE(hits, 1) << SystemFaults::name(call);
    }
}

TEST(FaultTrial, TriesEachCallInTurnAndNoticesWhatIsLeftOpen) {
    static int runs = 0;
    static FaultTrial trial;
    trial.operation = [] {
        ++runs;
        const int first = open("/dev/null", O_RDONLY);
        const int second = first < 0 ? -1 : open("/dev/null", O_RDONLY);
        if (second < 0)
            return; // and the first stays open
        close(first);
        close(second);
    };
    EXPECT_NONFATAL_FAILURE(trial.run(SystemFaults::onOpen, {EACCES}), "openDescriptors()");
    EXPECT_EQ(runs, 3);
    EXPECT_EQ(trial.faultsTried(), 2u);
}

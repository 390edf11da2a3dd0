// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSSysInfo.h"

#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace zeOS {
namespace {

/// Closes itself.
using SystemFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

SystemFile openSystemFile(const char* path) {
    return SystemFile(std::fopen(path, "re"), std::fclose);
}

/// The rest of the line, or its next 127 bytes.
using Line = char[128];

bool readLine(std::FILE* file, Line& line) {
    return std::fgets(line, sizeof line, file) != nullptr;
}

unsigned long kilobytes(long pages, unsigned long pageSize) {
    if (pages < 0) // the system does not say
        return 0;
    return static_cast<unsigned long>(static_cast<double>(pages) * static_cast<double>(pageSize) /
                                      1024);
}

int countProcessors() {
    int count = 0;
    if (const SystemFile file = openSystemFile("/proc/cpuinfo"))
        for (Line line; readLine(file.get(), line);)
            if (std::strncmp(line, "processor\t", 10) == 0)
                ++count;
    return count > 0 ? count : 1;
}

/// `count`, or the number that the variable holds if that is lower, but above 0.
int lowered(int count, const char* variable) {
    const char* const value = std::getenv(variable);
    const long wanted = value ? std::strtol(value, nullptr, 10) : 0;
    return wanted > 0 && wanted < count ? static_cast<int>(wanted) : count;
}

/// The answer in `cache`, which is asked for while it is 0.
template<class Number, class Question>
Number cached(Number& cache, Question question) {
    const std::atomic_ref<Number> shared(cache);
    Number answer = shared.load(std::memory_order_relaxed);
    if (answer == 0) {
        answer = question();
        shared.store(answer, std::memory_order_relaxed);
    }
    return answer;
}

/// The same for texts from `malloc`: if several threads ask, the first one's answer stays, since
/// somebody may hold it already.
template<class Question>
const char* cachedText(char*& cache, Question question) {
    const std::atomic_ref<char*> shared(cache);
    char* text = shared.load(std::memory_order_acquire);
    if (!text) {
        char* const answer = question();
        if (shared.compare_exchange_strong(text, answer, std::memory_order_acq_rel))
            text = answer;
        else
            std::free(answer);
    }
    return text;
}

char* askHostname() {
    char name[1025] = {}; // longer than what is asked for: a name that was cut need not end
    return ::strdup(::gethostname(name, 1024) == 0 ? name : "unknown");
}

char* askUsername() {
    const char* name = std::getenv("USERNAME");
    if (!name)
        name = std::getenv("USER");
    return name ? ::strdup(name) : nullptr;
}

} // namespace

SysInfo::SysInfo() : pageSize_(getPageSize()) {}

SysInfo::~SysInfo() {
    std::free(hostName_);
    std::free(userName_);
}

unsigned long SysInfo::getPageSize() {
    return static_cast<unsigned long>(::sysconf(_SC_PAGESIZE));
}

int SysInfo::getProcessID() const {
    return ::getpid();
}

unsigned long SysInfo::totalPhysicalMemory() const {
    return cached(totalPhysical_, [&] { return kilobytes(::sysconf(_SC_PHYS_PAGES), pageSize_); });
}

unsigned long SysInfo::availPhysicalMemory() const {
    return kilobytes(::sysconf(_SC_AVPHYS_PAGES), pageSize_);
}

unsigned long SysInfo::totalVirtualMemory() const {
    unsigned long total = 0;
    getSwapInfo(&total, nullptr);
    return total;
}

unsigned long SysInfo::availVirtualMemory() const {
    unsigned long avail = 0;
    getSwapInfo(nullptr, &avail);
    return avail;
}

void SysInfo::getSwapInfo(unsigned long* total, unsigned long* avail) const {
    unsigned long sizes = 0;
    unsigned long used = 0;
    if (const SystemFile file = openSystemFile("/proc/swaps")) {
        long size = 0;
        long usedOfIt = 0;
        if (Line header; readLine(file.get(), header))
            while (std::fscanf(file.get(), "%*s %*s %ld %ld %*d\n", &size, &usedOfIt) == 2) {
                sizes += static_cast<unsigned long>(size);
                used += static_cast<unsigned long>(usedOfIt);
            }
    }
    if (total)
        *total = sizes;
    if (avail)
        *avail = sizes - used;
}

int SysInfo::numCPUs() const {
    return cached(cpuCount_, [] { return lowered(countProcessors(), "ZE_NUM_CPUS"); });
}

int SysInfo::numPhysicalCPUs() const {
    return cached(physicalCpuCount_, [&] { return lowered(numCPUs(), "ZE_NUM_PHYS_CPUS"); });
}

const char* SysInfo::hostname() const {
    return cachedText(hostName_, askHostname);
}

const char* SysInfo::username() const {
    return cachedText(userName_, askUsername);
}

SysInfo& sysInfo() {
    static SysInfo info;
    return info;
}

} // namespace zeOS

// SPDX-License-Identifier: MIT

/// @file
/// What a program asks about the machine: processors, memory, host and user.
///
/// Sizes of memory are in KB (1024 bytes). What cannot be found out is 0, or a text as stated.
///
/// Threads: any thread may call, while no thread changes the environment.
///
/// @code
/// const zeOS::SysInfo& info = zeOS::sysInfo();
/// assert(info.numCPUs() >= 1 && info.totalPhysicalMemory() > 0);
/// assert(zeOS::SysInfo::getPageSize() % 4096 == 0);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeOS {

/// Knows the machine. What does not change is asked once and kept. sysInfo() gives the only one.
class ZEBASE_API SysInfo {
public:
    SysInfo(const SysInfo&) = delete;            ///< Pass a reference.
    SysInfo& operator=(const SysInfo&) = delete; ///< Pass a reference.
    /// Texts from hostname() and username() end with it, which is at the end of the process.
    ~SysInfo();

    /// The size of a page of memory, in bytes.
    static unsigned long getPageSize();
    /// The number of this process; after a `fork`, the child's own.
    int getProcessID() const;

    /// The machine's memory. Asked once.
    unsigned long totalPhysicalMemory() const;
    /// The memory that nobody uses now. Memory that the system holds for caches, and would give, is
    /// not counted.
    unsigned long availPhysicalMemory() const;
    /// The swap space alone, without the memory, as getSwapInfo() gives it.
    unsigned long totalVirtualMemory() const;
    /// The free swap space.
    unsigned long availVirtualMemory() const;
    /// Puts the size of the swap space into `total` and what is free of it into `avail`, read from
    /// "/proc/swaps" at each call; 0 where there is none, or it cannot be read. Either may be null.
    void getSwapInfo(unsigned long* total, unsigned long* avail) const;

    /// The processors of "/proc/cpuinfo", at least 1. The environment variable `ZE_NUM_CPUS` can
    /// lower the number: it is taken if it is above 0 and lower. Asked once. How many of them this
    /// process may use (`sched_getaffinity`, control groups) is not looked at.
    int numCPUs() const;
    /// The same as numCPUs(), unless `ZE_NUM_PHYS_CPUS` lowers it further: cores and threads of a
    /// processor are not told apart. Asked once.
    int numPhysicalCPUs() const;

    /// The machine's name, up to 1023 bytes; "unknown" if the system does not say. Asked once.
    const char* hostname() const;
    /// The environment variable `USERNAME`, or else `USER`; null as long as neither is set. The
    /// first value found is kept. Not checked against the system's users.
    const char* username() const;

private:
    friend ZEBASE_API SysInfo& sysInfo();
    ZEBASE_HIDDEN SysInfo();

    // Caches, which threads may fill at the same time with the same answer.
    const unsigned long pageSize_;
    mutable unsigned long totalPhysical_ = 0;
    mutable char* hostName_ = nullptr; // owned
    mutable char* userName_ = nullptr; // owned
    mutable int cpuCount_ = 0;
    mutable int physicalCpuCount_ = 0;
};

/// The machine that this process runs on.
ZEBASE_API SysInfo& sysInfo();

} // namespace zeOS

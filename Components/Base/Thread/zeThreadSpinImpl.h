// SPDX-License-Identifier: MIT

/// @file
/// Waiting for another thread without sleeping, for as long as that is likely to be short.

#pragma once

#include <atomic>

#include "Base/zeBaseExport.h"

namespace zeThread {

/// The processors that this process may use.
ZEBASE_HIDDEN unsigned int usableProcessors();

/// Tells the processor that the thread spins.
inline void pauseSpinning() {
    __builtin_ia32_pause();
}

/// Spins before a wait that puts the thread to sleep: falling asleep and being woken costs tens of
/// microseconds, and what is waited for is often there in one. Nobody can tell the difference but
/// by the time that it takes.
///
/// One object for each place where threads wait. It learns: where spinning was in vain, as when
/// all processors are busy or the work takes long, the next waits do without, more of them after
/// each failure. Any thread may call at any time.
class AdaptiveSpin {
public:
    /// Calls `done` until it returns true, for some 20 microseconds at most, and returns whether it
    /// did. Not even once if spinning does not pay.
    template<class Done>
    bool until(Done done) {
        if (!isWorthwhile())
            return false;
        const long end = now() + longest;
        do {
            for (int i = 0; i < looksPerClock; ++i) {
                if (done()) {
                    misses_.store(0, std::memory_order_relaxed);
                    return true;
                }
                pauseSpinning();
            }
        } while (now() < end);
        noteMiss();
        return false;
    }

private:
    static constexpr long longest = 20000; // nanoseconds
    static constexpr int looksPerClock = 16;

    /// Nanoseconds on a clock that only goes forward.
    ZEBASE_HIDDEN static long now();

    ZEBASE_HIDDEN bool isWorthwhile();
    ZEBASE_HIDDEN void noteMiss();

    // Threads may overwrite each other's counts: they are a guess in any case.
    std::atomic<unsigned int> misses_ = 0;  ///< In a row.
    std::atomic<unsigned int> skipped_ = 0; ///< Waits to come that do without.
};

} // namespace zeThread

// SPDX-License-Identifier: MIT

/// @file
/// The intrusive count for objects that several threads share: zeThread::ReferenceCount.
///
/// Threads: any thread may call at any time, as long as it holds an owner.
///
/// @code
/// struct Job : zeThread::ReferenceCount {
///     int number = 0;
/// };
/// ze::Reference<Job> mine(new Job);
/// ze::Reference<Job> theirs = mine; // may go to another thread
/// assert(mine->refs() == 2);
/// @endcode

#pragma once

#include "Base/Utility/zeReferenceCount.h"
#include "Base/zeBaseExport.h"

namespace zeThread {

/// What ze::ReferenceCount is, with a count that several threads may change. It works with
/// ze::Reference too, but the two bases are not interchangeable. Only the count is shared: a
/// ze::Reference itself, and the rest of the object, need a lock of their own.
///
/// ref() and unref() cost as much as zeThread::atomicIncrement.
class ZEBASE_API ReferenceCount {
public:
    /// Without owners.
    ReferenceCount() = default;
    /// A new object without owners, whatever the count of the other.
    ReferenceCount(const ReferenceCount&) {}
    /// Leaves both counts alone.
    ReferenceCount& operator=(const ReferenceCount&) { return *this; }
    virtual ~ReferenceCount();

    /// Adds an owner.
    void ref() const;

    /// Removes an owner; the last one deletes the object.
    void unref() const;

    /// The number of owners at some moment: other threads may have changed it when the call
    /// returns.
    int refs() const;

private:
    mutable int count_ = 0;
};

} // namespace zeThread

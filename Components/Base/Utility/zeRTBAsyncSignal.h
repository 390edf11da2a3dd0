// SPDX-License-Identifier: MIT

/// @file
/// One firing of a signal as an object, for another thread to run later.
///
/// Nothing is fired or queued here: a zeThread::MessageSender carries the object to its receiver,
/// whose thread runs send(). The object holds a bare pointer to the signal: whoever packs a firing
/// keeps the signal alive until it has been sent or thrown away, and leaves the signal to the
/// receiving thread meanwhile.
///
/// Threads: made on one thread, and sent on another or the same, one after the other.
///
/// @code
/// #include "Base/Utility/zeRTBSignal.h"
/// struct Sum {
///     int total = 0;
///     void add(int n) { total += n; }
/// };
/// Sum sum;
/// zeRTB::SignalArg<int> counted;
/// counted.connect(&sum, &Sum::add);
/// zeRTB::AsyncSignalArg<zeRTB::SignalArg<int>> later(&counted, 5);
/// assert(sum.total == 0);
/// later.send();
/// assert(sum.total == 5);
/// @endcode

#pragma once

#include <type_traits>

#include "Base/zeBaseExport.h"

namespace zeRTB {

/// A packed firing.
class ZEBASE_API AsyncSignal {
public:
    /// Nothing to set up.
    AsyncSignal() = default;
    AsyncSignal(const AsyncSignal&) = delete; ///< Pack the firing again.
    AsyncSignal& operator=(const AsyncSignal&) = delete;
    virtual ~AsyncSignal();

    /// Fires the signal on the calling thread.
    virtual void send() = 0;
};

/// A packed firing of a signal of type `S` (a zeRTB::SignalArg), with a copy of the argument.
template<class S>
class AsyncSignalArg : public AsyncSignal {
public:
    /// The type of the copy.
    using ArgType = std::remove_cvref_t<typename S::ArgType>;

    /// A firing of `*signal`, which it does not own, with `argument`.
    AsyncSignalArg(S* signal, ArgType argument)
        : signal_(signal), argument_(static_cast<ArgType&&>(argument)) {}

    void send() override { signal_->send(argument_); }

private:
    S* signal_;
    ArgType argument_;
};

} // namespace zeRTB

// SPDX-License-Identifier: MIT

/// @file
/// A connection that can be kept and dropped: zeRTB::ScopedConnection.
///
/// Threads: a connection belongs to the thread of its signal.
///
/// @code
/// #include "Base/Utility/zeRTBSignal.h"
/// int calls = 0;
/// zeRTB::SignalVoid changed;
/// {
///     const zeRTB::ScopedConnection kept = changed.connectScoped([&calls] { ++calls; });
///     changed.send();
///     assert(kept.connected());
/// }
/// changed.send(); // calls nobody
/// assert(calls == 1);
/// @endcode

#pragma once

#include "Base/Utility/zeRTBSignalBase.h"

namespace zeRTB {

/// Keeps one connection, which ends when it is dropped: destroyed, assigned to, or told to
/// disconnect(). The `connectScoped` of a signal makes one.
///
/// Signal and connection may be dropped in either order, and inside the firing as well. The
/// connection's callable belongs to the signal's side: it is destroyed when the connection ends,
/// and, if it is just running, when the firing has left it.
///
/// One pointer wide. Moving hands the connection over, and leaves the source without one.
class ScopedConnection : private SignalClient {
public:
    /// Without a connection.
    ScopedConnection() = default;
    /// Takes the connection of `other` over.
    ScopedConnection(ScopedConnection&& other) noexcept { takeConnections(other); }
    /// Ends the own connection and takes that of `other` over.
    ScopedConnection& operator=(ScopedConnection&& other) noexcept {
        ScopedConnection taken(static_cast<ScopedConnection&&>(other));
        const ScopedConnection ending(static_cast<ScopedConnection&&>(*this)); // ends last of all
        takeConnections(taken);
        return *this;
    }
    /// Ends the connection.
    ~ScopedConnection() = default;

    /// Whether there is a connection that has not ended.
    bool connected() const { return isConnected(); }

    /// Ends the connection, if there is one.
    void disconnect() { ScopedConnection(static_cast<ScopedConnection&&>(*this)); }

private:
    template<class...>
    friend class SignalOf;
};

} // namespace zeRTB

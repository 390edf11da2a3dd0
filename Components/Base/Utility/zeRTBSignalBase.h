// SPDX-License-Identifier: MIT

/// @file
/// The list of connections under every signal, and the listener's end of a connection.
///
/// See zeRTB::SignalBase for the contract, and zeRTBSignal.h for the typed signals.

#pragma once

#include <cstdint>

#include "Base/Utility/zeRTBFunction.h"
#include "Base/zeBaseExport.h"

namespace zeRTB {

class SignalClient;

/// A list of connections, newest first.
///
/// Each connection owns the function object that it calls. A connection may be tied to a
/// zeRTB::SignalClient, usually a member of the listening object: whichever of the two dies first
/// ends the connection.
///
/// The list may be changed at any time from inside a callback: connecting, disconnecting any
/// connection, the running one included, destroying the client or the signal itself. A connection
/// that ends while it is running stays in the list, is not called again, and is freed when the last
/// firing has left it.
///
/// No operation reports an error. Where memory runs out, std::bad_alloc is thrown and nothing is
/// connected. A callback must not throw: its connection would never be freed. The destructor of a
/// function object must not end other connections of a signal that is firing, or that is in
/// disconnectInstance().
///
/// One pointer wide and without virtual operations, so that a class can embed many. Neither copied
/// nor moved: connections refer to the address of their list. Calls cost the length of the list,
/// except where said.
///
/// Threads: a signal and its connections belong to one thread at a time; nothing is locked.
///
/// @code
/// #include "Base/Utility/zeRTBSignal.h"
/// struct View {
///     zeRTB::SignalClient client;
///     int drawn = 0;
///     void draw() { ++drawn; }
/// };
/// zeRTB::SignalVoid changed;
/// {
///     View view;
///     changed.connect(view.client, &view, &View::draw);
///     changed.send();
///     assert(view.drawn == 1 && changed.findInstance(&view));
/// }
/// assert(!changed.isConnected()); // ended with the view's client
/// @endcode
class ZEBASE_API SignalBase {
public:
    /// One connection, or one half of a connection tied to a client. Plain fields for the firing
    /// loop; everybody else treats it as the opaque handle zeRTB::SignalBase::Connection.
    struct ZEBASE_API connectionItem {
        /// Belongs to this list, but is not in it yet.
        explicit connectionItem(SignalBase* list) : owner(list) {}
        connectionItem(const connectionItem&) = delete;
        connectionItem& operator=(const connectionItem&) = delete;

        /// Keeps the item from being freed until the matching unlock(). Up to 65,535 at once.
        void lock() { ++lockCount; }

        /// The last unlock() frees an item whose destruction was asked for meanwhile.
        void unlock() {
            if (--lockCount == 0 && pendingDestroy)
                destroy();
        }

        /// Ends the connection, its other half included, and frees the item with its function: now,
        /// or with the last unlock() if the item is locked.
        void destroy();

        connectionItem* next = nullptr;   ///< In the owner's list.
        connectionItem* prev = nullptr;   ///< Null at the head.
        FunctionBase* function = nullptr; ///< Owned; null in a client's list.
        SignalBase* owner;                ///< The list this item is in; null once detached.
        connectionItem* peer = nullptr;   ///< The other half of a connection tied to a client.
        std::uint16_t lockCount = 0;      ///< Firings and walks that stand on this item.
        bool pendingDestroy = false;      ///< destroy() was called while the item was locked.

    private:
        friend class SignalBase;
        ~connectionItem();
        ZEBASE_HIDDEN void detach();
    };

    /// The handle of a connection, valid until the connection ends.
    using Connection = connectionItem;

    /// Constant-initialised, so that a signal at file scope can be connected to before its turn in
    /// the order of static construction.
    constexpr SignalBase() = default;
    SignalBase(const SignalBase&) = delete;
    SignalBase& operator=(const SignalBase&) = delete;

    /// Ends every connection. Those that are running are freed when their firing has left them.
    ~SignalBase();

    /// The number of connections, those that only wait for a firing to leave them included.
    int numConnections() const;

    /// Whether there is any connection, even one that only waits for a firing to leave it. Costs
    /// one test.
    bool isConnected() const { return head_ != nullptr; }

    /// Adds an item without a function at the head. Whoever fires this list must first give the
    /// item its function, which the item then owns. Constant cost.
    connectionItem* createConnectionItem();

    /// Connects `function`, not null, which the connection owns from here on, even if this call
    /// fails. It must be of the function family of the signal. Constant cost.
    Connection* addCallback(FunctionBase* function);

    /// The same, tied to `client`: the connection also ends when the client dies. Returns the
    /// signal's half.
    Connection* addCallback(FunctionBase* function, SignalClient& client);

    /// Ends a connection. Null and connections of other signals are ignored.
    void disconnect(Connection* connection);

    /// Ends every connection to the object at this address, which must be the one that was given on
    /// connecting.
    void disconnectInstance(void* instance);

    /// The newest connection to the object at this address, or null. A connection that only waits
    /// for a firing to leave it is not found.
    Connection* findInstance(void* instance) const;

    /// The newest connection to this global function, or null. Unlike findInstance(), it also finds
    /// a connection that only waits for a firing to leave it.
    Connection* findGlobalCallback(void* function) const;

protected:
    /// Takes over all connections of `other`; this list must be empty. Costs the number of them.
    void takeConnections(SignalBase& other) noexcept;

    /// Calls `call(function)` for each connection, newest first. Connections added meanwhile stand
    /// ahead of the walk and are left for the next one. The signal is read once, at the start, so
    /// that a callback may destroy it.
    template<class Family, class Call>
    void fire(Call call) const {
        for (connectionItem* item = head_; item;) {
            item->lock();
            if (!item->pendingDestroy)
                call(*static_cast<Family*>(item->function));
            connectionItem* next = item->next; // only now: the callback may have changed it
            item->unlock();
            item = next;
        }
    }

private:
    connectionItem* head_ = nullptr;
};

/// A listener's list of connections. Embed one as a member: every connection made with it ends with
/// it, so that no signal calls a destroyed object. Declare it last, so that it is destroyed first.
class SignalClient : public SignalBase {};

} // namespace zeRTB

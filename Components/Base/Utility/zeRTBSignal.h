// SPDX-License-Identifier: MIT

/// @file
/// The typed signals: synchronous callback lists.
///
/// Firing a signal calls each connected function in turn, on the calling thread, newest connection
/// first; an unconnected signal costs one test. What may happen inside a callback, who owns what,
/// and the thread rule are told in zeRTBSignalBase.h.
///
/// `connect` takes the instance as a plain pointer and keeps its address as given; the instance
/// must outlive the connection, which passing the listener's SignalClient ensures. Every form
/// returns the connection's handle, for disconnect().
///
/// @code
/// struct Sum {
///     int total = 0;
///     void add(int n) { total += n; }
/// };
/// Sum sum;
/// zeRTB::SignalArg<int> counted;
/// auto* connection = counted.connect(&sum, &Sum::add);
/// counted.send(3);
/// counted.disconnect(connection);
/// counted.send(4);
/// assert(sum.total == 3);
/// @endcode

#pragma once

#include <type_traits>

#include "Base/Utility/zeRTBSignalBase.h"

namespace zeRTB {

/// A signal without arguments.
class SignalVoid : public SignalBase {
public:
    /// Calls every connected function.
    void send() const {
        fire<FunctionVoid>([](FunctionVoid& function) { function.call(); });
    }

    /// Connects a function, or a member function with its instance.
    Connection* connect(void (*function)()) {
        return addCallback(new FunctionVoidGlobal(function));
    }
    Connection* connect(SignalClient& client, void (*function)()) {
        return addCallback(new FunctionVoidGlobal(function), client);
    }
    template<class C>
    Connection* connect(C* instance, std::type_identity_t<void (C::*)()> member) {
        return addCallback(new FunctionVoidMember<C>(instance, member));
    }
    template<class C>
    Connection* connect(SignalClient& client, C* instance,
                        std::type_identity_t<void (C::*)()> member) {
        return addCallback(new FunctionVoidMember<C>(instance, member), client);
    }
};

/// A signal with one argument, which each callback gets as a `T` of its own.
template<class T>
class SignalArg : public SignalBase {
public:
    /// The type of the argument.
    using ArgType = T;

    /// Calls every connected function.
    void send(T argument) const {
        fire<FunctionArg<T>>([&](FunctionArg<T>& function) { function.call(argument); });
    }

    /// Connects a member function with its instance.
    template<class C>
    Connection* connect(C* instance, std::type_identity_t<void (C::*)(T)> member) {
        return addCallback(new FunctionArgMember<T, C>(instance, member));
    }
    template<class C>
    Connection* connect(SignalClient& client, C* instance,
                        std::type_identity_t<void (C::*)(T)> member) {
        return addCallback(new FunctionArgMember<T, C>(instance, member), client);
    }
};

/// A signal with three arguments.
template<class A, class B, class C>
class Signal3Args : public SignalBase {
public:
    /// Calls every connected function.
    void send(A a, B b, C c) const {
        fire<Function3Args<A, B, C>>(
            [&](Function3Args<A, B, C>& function) { function.call(a, b, c); });
    }

    /// Connects a member function with its instance.
    template<class I>
    Connection* connect(I* instance, std::type_identity_t<void (I::*)(A, B, C)> member) {
        return addCallback(new Function3ArgsMember<A, B, C, I>(instance, member));
    }
    template<class I>
    Connection* connect(SignalClient& client, I* instance,
                        std::type_identity_t<void (I::*)(A, B, C)> member) {
        return addCallback(new Function3ArgsMember<A, B, C, I>(instance, member), client);
    }
};

} // namespace zeRTB

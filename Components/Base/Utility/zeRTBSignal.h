// SPDX-License-Identifier: MIT

/// @file
/// The typed signals: synchronous callback lists.
///
/// Firing a signal calls each connected function in turn, on the calling thread, newest connection
/// first; an unconnected signal costs one test. zeRTB::SignalBase says what may happen inside a
/// callback and who owns what.
///
/// Every form of `connect` returns the connection's handle, for disconnect(), and has a second form
/// that takes the listener's zeRTB::SignalClient first: the connection ends with that client too.
///
/// - `connect(function)` calls a global function.
/// - `connect(instance, member)` calls a member function. It keeps the plain address of the
///   instance, which must outlive the connection; a SignalClient in the instance ensures that.
/// - `connectOwned(callable)` calls anything else, such as a lambda with captures, and **owns** it:
///   it is copied or moved into the connection and destroyed with it. What a lambda captures by
///   reference must outlive the connection. Destroying the callable must not end other connections
///   of a signal that is firing: do not let it own the last reference to the signal's owner.
/// - `connectScoped(callable)` and `connectScoped(instance, member)` return the connection itself,
///   a zeRTB::ScopedConnection, which can be kept anywhere and ends when it is dropped. The
///   callable is owned as by `connectOwned`.
///
/// Functions may return something, which is ignored, and may take their arguments in any way in
/// which the signal's arguments can be passed (`const T&` for a `T`). Of overloaded names, the one
/// that returns void and takes exactly the signal's arguments is chosen; select another by a cast.
///
/// Threads: a signal and its connections belong to one thread at a time.
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
/// int calls = 0;
/// counted.connectOwned([&calls](int) { ++calls; });
/// counted.send(4);
/// assert(sum.total == 3 && calls == 1);
/// @endcode

#pragma once

#include <type_traits>

#include "Base/Utility/zeRTBFunction.h"
#include "Base/Utility/zeRTBScopedConnection.h"
#include "Base/Utility/zeRTBSignalBase.h"

namespace zeRTB {

/// A global function that can be called with `Arguments`.
template<class F, class... Arguments>
concept GlobalFor = std::is_function_v<F> && std::is_invocable_v<F*, Arguments...>;

/// A member function that can be called on a `C*` with `Arguments`, other than the plain one, which
/// converts to `void (C::*)(Arguments...)`.
template<class Member, class C, class... Arguments>
concept MemberFor =
    std::is_member_function_pointer_v<Member> && std::is_invocable_v<Member, C*, Arguments...> &&
    !std::is_convertible_v<Member, void (C::*)(Arguments...)>;

/// Anything that can be called with `Arguments` once it is stored.
template<class F, class... Arguments>
concept CallableFor =
    std::is_invocable_v<std::add_lvalue_reference_t<std::decay_t<F>>, Arguments...>;

/// A type that is not const.
template<class C>
concept NonConst = !std::is_const_v<C>;

/// What all typed signals are: firing and connecting, for any list of arguments.
template<class... Arguments>
class SignalOf : public SignalBase {
    using Family = FunctionFamily<Arguments...>;
    using Function = typename Family::Function;
    template<class C>
    using PlainMember = std::type_identity_t<void (C::*)(Arguments...)>;
    template<class Callable>
    using Owned = FunctionOwned<Function, std::decay_t<Callable>, Arguments...>;

public:
    /// Calls every connected function, each with arguments of its own.
    void send(Arguments... arguments) const {
        fire<Function>([&](Function& function) { function.call(arguments...); });
    }

    /// Connects a global function.
    Connection* connect(void (*function)(Arguments...)) {
        return addCallback(new typename Family::Global(function));
    }
    /// The same, tied to `client`.
    Connection* connect(SignalClient& client, void (*function)(Arguments...)) {
        return addCallback(new typename Family::Global(function), client);
    }
    /// Connects a global function that returns something, or takes its arguments in another way.
    template<GlobalFor<Arguments...> F>
    Connection* connect(F* function) {
        return addCallback(new FunctionGlobal<Function, F, Arguments...>(function));
    }
    /// The same, tied to `client`.
    template<GlobalFor<Arguments...> F>
    Connection* connect(SignalClient& client, F* function) {
        return addCallback(new FunctionGlobal<Function, F, Arguments...>(function), client);
    }

    /// Connects a member function of `instance`, which the connection does not own.
    template<NonConst C>
    Connection* connect(C* instance, PlainMember<C> member) {
        return addCallback(new typename Family::template Member<C>(instance, member));
    }
    /// The same, tied to `client`.
    template<NonConst C>
    Connection* connect(SignalClient& client, C* instance, PlainMember<C> member) {
        return addCallback(new typename Family::template Member<C>(instance, member), client);
    }
    /// Connects a member function that is const, returns something, or takes its arguments in
    /// another way, of `instance`, which may be const and which the connection does not own.
    template<class C, MemberFor<C, Arguments...> Member>
    Connection* connect(C* instance, Member member) {
        return addCallback(new FunctionMember<Function, C, Member, Arguments...>(instance, member));
    }
    /// The same, tied to `client`.
    template<class C, MemberFor<C, Arguments...> Member>
    Connection* connect(SignalClient& client, C* instance, Member member) {
        return addCallback(new FunctionMember<Function, C, Member, Arguments...>(instance, member),
                           client);
    }

    /// Connects a callable, such as a lambda, and takes it over: the connection owns it.
    template<CallableFor<Arguments...> Callable>
    Connection* connectOwned(Callable&& callable) {
        return addCallback(new Owned<Callable>(static_cast<Callable&&>(callable)));
    }
    /// The same, tied to `client`.
    template<CallableFor<Arguments...> Callable>
    Connection* connectOwned(SignalClient& client, Callable&& callable) {
        return addCallback(new Owned<Callable>(static_cast<Callable&&>(callable)), client);
    }

    /// Connects a callable, such as a lambda or a function, which the connection owns, until the
    /// result is dropped.
    template<CallableFor<Arguments...> Callable>
    [[nodiscard]] ScopedConnection connectScoped(Callable&& callable) {
        ScopedConnection kept;
        connectOwned(static_cast<SignalClient&>(kept), static_cast<Callable&&>(callable));
        return kept;
    }
    /// Connects a member function of `instance`, which the connection does not own, until the
    /// result is dropped.
    template<NonConst C>
    [[nodiscard]] ScopedConnection connectScoped(C* instance, PlainMember<C> member) {
        ScopedConnection kept;
        connect(static_cast<SignalClient&>(kept), instance, member);
        return kept;
    }
    /// The same for a member function that is const, returns something, or takes its arguments in
    /// another way.
    template<class C, MemberFor<C, Arguments...> Member>
    [[nodiscard]] ScopedConnection connectScoped(C* instance, Member member) {
        ScopedConnection kept;
        connect(static_cast<SignalClient&>(kept), instance, member);
        return kept;
    }
};

/// A signal without arguments.
class SignalVoid : public SignalOf<> {};

/// A signal with one argument, which each callback gets as a `T` of its own.
template<class T>
class SignalArg : public SignalOf<T> {
public:
    /// The type of the argument.
    using ArgType = T;
};

/// A signal with three arguments.
template<class A, class B, class C>
class Signal3Args : public SignalOf<A, B, C> {};

} // namespace zeRTB

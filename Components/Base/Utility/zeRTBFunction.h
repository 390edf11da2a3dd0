// SPDX-License-Identifier: MIT

/// @file
/// Function objects: what a connection of a signal holds and calls.
///
/// The `connect` of a signal makes the right one, so that applications seldom name these classes.
/// Each connection owns its function object, on the heap, and deletes it through the virtual
/// destructor of zeRTB::FunctionBase. No function object owns the instance that it calls.
///
/// Threads: a function object belongs to the thread of its signal.
///
/// @code
/// struct Counter {
///     int total = 0;
///     void add(int n) { total += n; }
/// };
/// Counter counter;
/// zeRTB::FunctionArgMember<int, Counter> function(&counter, &Counter::add);
/// zeRTB::FunctionArg<int>& family = function;
/// family.call(3);
/// assert(counter.total == 3 && function.isInstance(&counter));
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeRTB {

/// Base of all function objects.
class ZEBASE_API FunctionBase {
public:
    /// Nothing to set up.
    FunctionBase() = default;
    FunctionBase(const FunctionBase&) = delete; ///< A connection owns its own object.
    FunctionBase& operator=(const FunctionBase&) = delete;
    virtual ~FunctionBase();

    /// Whether the object calls this global function.
    virtual bool isGlobalFunction(void* function);

    /// Whether the object calls a member of the instance at this address. Addresses are compared as
    /// they are: of an object with several bases, only the one given on connecting is recognised.
    virtual bool isInstance(void* instance);
};

/// A function object that takes no argument.
class ZEBASE_API FunctionVoid : public FunctionBase {
public:
    ~FunctionVoid() override;

    /// Calls the function.
    virtual void call() = 0;
};

/// A function object that takes one argument.
template<class T>
class FunctionArg : public FunctionBase {
public:
    /// Calls the function.
    virtual void call(T argument) = 0;
};

/// A function object that takes three arguments.
template<class A, class B, class C>
class Function3Args : public FunctionBase {
public:
    /// Calls the function.
    virtual void call(A a, B b, C c) = 0;
};

/// Calls a global function without arguments.
class ZEBASE_API FunctionVoidGlobal : public FunctionVoid {
public:
    /// For this function.
    explicit FunctionVoidGlobal(void (*function)()) : function_(function) {}
    ~FunctionVoidGlobal() override;

    bool isGlobalFunction(void* function) override;
    void call() override;

private:
    void (*function_)();
};

/// Calls a global function of type `Function` with the arguments of `Family` (zeRTB::FunctionVoid,
/// zeRTB::FunctionArg or zeRTB::Function3Args), and ignores what it returns.
template<class Family, class Function, class... Arguments>
class FunctionGlobal : public Family {
public:
    /// For this function.
    explicit FunctionGlobal(Function* function) : function_(function) {}

    /// Whether it is this function.
    bool isGlobalFunction(void* function) override {
        return function == reinterpret_cast<void*>(function_);
    }
    /// Calls it.
    void call(Arguments... arguments) override {
        static_cast<void>(function_(static_cast<Arguments&&>(arguments)...));
    }

private:
    Function* function_;
};

/// Calls a member function, given as a pointer of type `Member`, on an instance of `I`, perhaps
/// const, and ignores what it returns.
template<class Family, class I, class Member, class... Arguments>
class FunctionMember : public Family {
public:
    /// For this member of this instance.
    FunctionMember(I* instance, Member member) : instance_(instance), member_(member) {}

    /// Whether it is this instance.
    bool isInstance(void* instance) override { return instance == instance_; }
    /// Calls it.
    void call(Arguments... arguments) override {
        static_cast<void>((instance_->*member_)(static_cast<Arguments&&>(arguments)...));
    }

private:
    I* instance_;
    Member member_;
};

/// Calls a member function without arguments.
template<class C>
class FunctionVoidMember : public FunctionMember<FunctionVoid, C, void (C::*)()> {
    using FunctionVoidMember::FunctionMember::FunctionMember;
};

/// Calls a member function with one argument.
template<class T, class C>
class FunctionArgMember : public FunctionMember<FunctionArg<T>, C, void (C::*)(T), T> {
    using FunctionArgMember::FunctionMember::FunctionMember;
};

/// Calls a member function with three arguments.
template<class A, class B, class C, class I>
class Function3ArgsMember
    : public FunctionMember<Function3Args<A, B, C>, I, void (I::*)(A, B, C), A, B, C> {
    using Function3ArgsMember::FunctionMember::FunctionMember;
};

/// Owns a callable, such as a closure, and calls it.
template<class Family, class Callable, class... Arguments>
class FunctionOwned : public Family {
public:
    /// Keeps `callable`.
    explicit FunctionOwned(Callable callable) : callable_(static_cast<Callable&&>(callable)) {}

    /// Calls it.
    void call(Arguments... arguments) override {
        static_cast<void>(callable_(static_cast<Arguments&&>(arguments)...));
    }

private:
    Callable callable_;
};

/// The classes that a signal with these arguments calls: `Function` is their base, `Global` and
/// `Member` are the plain cases.
template<class... Arguments>
struct FunctionFamily;

/// Of a signal without arguments.
template<>
struct FunctionFamily<> {
    using Function = FunctionVoid;     ///< What a connection holds.
    using Global = FunctionVoidGlobal; ///< For `void (*)()`.
    template<class C>
    using Member = FunctionVoidMember<C>; ///< For `void (C::*)()`.
};

/// Of a signal with one argument.
template<class T>
struct FunctionFamily<T> {
    using Function = FunctionArg<T>;                     ///< What a connection holds.
    using Global = FunctionGlobal<Function, void(T), T>; ///< For `void (*)(T)`.
    template<class C>
    using Member = FunctionArgMember<T, C>; ///< For `void (C::*)(T)`.
};

/// Of a signal with three arguments.
template<class A, class B, class C>
struct FunctionFamily<A, B, C> {
    using Function = Function3Args<A, B, C>;                         ///< What a connection holds.
    using Global = FunctionGlobal<Function, void(A, B, C), A, B, C>; ///< For `void (*)(A, B, C)`.
    template<class I>
    using Member = Function3ArgsMember<A, B, C, I>; ///< For `void (I::*)(A, B, C)`.
};

} // namespace zeRTB

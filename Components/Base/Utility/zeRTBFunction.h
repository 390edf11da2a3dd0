// SPDX-License-Identifier: MIT

/// @file
/// Function objects: what a connection of a signal holds and calls.
///
/// A signal's `connect` makes the right one, so that applications seldom name these classes. To
/// connect something else, such as a closure, derive from zeRTB::FunctionVoid or
/// zeRTB::FunctionArg and hand the object to zeRTB::SignalBase::addCallback, which owns it from
/// then on.
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

#include <utility>

#include "Base/zeBaseExport.h"

namespace zeRTB {

/// Base of all function objects. A connection owns its function object, on the heap, and deletes it
/// through this destructor.
class ZEBASE_API FunctionBase {
public:
    FunctionBase() = default;
    FunctionBase(const FunctionBase&) = delete;
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

/// Calls a global function without arguments.
class ZEBASE_API FunctionVoidGlobal : public FunctionVoid {
public:
    explicit FunctionVoidGlobal(void (*function)()) : function_(function) {}
    ~FunctionVoidGlobal() override;

    bool isGlobalFunction(void* function) override;
    void call() override;

private:
    void (*function_)();
};

/// Calls a member function without arguments on an instance, which it does not own.
template<class C>
class FunctionVoidMember : public FunctionVoid {
public:
    FunctionVoidMember(C* instance, void (C::*member)()) : instance_(instance), member_(member) {}

    bool isInstance(void* instance) override { return instance == instance_; }
    void call() override { (instance_->*member_)(); }

private:
    C* instance_;
    void (C::*member_)();
};

/// A function object that takes one argument.
template<class T>
class FunctionArg : public FunctionBase {
public:
    /// Calls the function.
    virtual void call(T argument) = 0;
};

/// Calls a member function with one argument on an instance, which it does not own.
template<class T, class C>
class FunctionArgMember : public FunctionArg<T> {
public:
    FunctionArgMember(C* instance, void (C::*member)(T)) : instance_(instance), member_(member) {}

    bool isInstance(void* instance) override { return instance == instance_; }
    void call(T argument) override { (instance_->*member_)(std::forward<T>(argument)); }

private:
    C* instance_;
    void (C::*member_)(T);
};

/// A function object that takes three arguments.
template<class A, class B, class C>
class Function3Args : public FunctionBase {
public:
    /// Calls the function.
    virtual void call(A a, B b, C c) = 0;
};

/// Calls a member function with three arguments on an instance of `I`, which it does not own.
template<class A, class B, class C, class I>
class Function3ArgsMember : public Function3Args<A, B, C> {
public:
    Function3ArgsMember(I* instance, void (I::*member)(A, B, C))
        : instance_(instance), member_(member) {}

    bool isInstance(void* instance) override { return instance == instance_; }
    void call(A a, B b, C c) override {
        (instance_->*member_)(std::forward<A>(a), std::forward<B>(b), std::forward<C>(c));
    }

private:
    I* instance_;
    void (I::*member_)(A, B, C);
};

} // namespace zeRTB

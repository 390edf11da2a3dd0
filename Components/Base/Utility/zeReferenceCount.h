// SPDX-License-Identifier: MIT

/// @file
/// Lifetime: the base of hidden implementation objects (ze::ImplBase), the intrusive count
/// (ze::ReferenceCount) and the counted pointer (ze::Reference).
///
/// An object of a class derived from ze::ReferenceCount lives as long as the last ze::Reference to
/// it (or the last manual ref()).
///
/// Threads: the count is a plain integer, so that an object and everything that refers to it belong
/// to one thread at a time.
///
/// @code
/// struct Mesh : ze::ReferenceCount {
///     int vertices = 0;
/// };
/// ze::Reference<Mesh> a(new Mesh);
/// {
///     ze::Reference<Mesh> b = a;
///     assert(a->refs() == 2);
/// }
/// assert(a->refs() == 1); // deleted when `a` goes
/// @endcode

#pragma once

#include <concepts>
#include <iosfwd>
#include <typeindex> // declares std::hash
#include <utility>

#include "Base/zeBaseExport.h"

namespace ze {

/// Base of every hidden implementation object (the `…Impl` classes). A public class holds a pointer
/// to one, and deletes it through this virtual destructor if it owns it.
class ZEBASE_API ImplBase {
public:
    virtual ~ImplBase();
};

/// Base of objects whose lifetime is shared within one thread. A new object has no owner: its count
/// is 0, and the first ze::Reference brings it to 1. Such objects are made with `new`.
///
/// Copying a derived object is safe: the copy is a new object without owners (count 0), and
/// assignment leaves the counts of both sides alone.
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
    void ref() const { ++count_; }

    /// Removes an owner; the last one deletes the object.
    void unref() const {
        if (--count_ == 0)
            delete this;
    }

    /// The number of owners.
    int refs() const { return count_; }

private:
    mutable int count_ = 0;
};

/// The counted pointer: holds one `T*`, where `T` offers ref() and unref() as ze::ReferenceCount
/// does. Null is legal everywhere. Copying adds an owner; moving hands the ownership over and
/// leaves the source null.
template<class T>
class Reference {
public:
    /// Null.
    Reference() = default;
    /// Adds an owner to `object`, which may be null.
    Reference(T* object) : object_(object) {
        if (object_)
            object_->ref();
    }
    /// Adds an owner.
    Reference(const Reference& other) : Reference(other.object_) {}
    /// From a counted pointer to a derived or a non-const object.
    template<class Other>
    requires std::convertible_to<Other*, T*> Reference(const Reference<Other>& other)
        : Reference(other.get()) {}
    /// Takes the ownership over and leaves `other` null.
    Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ~Reference() {
        if (object_)
            object_->unref();
        object_ = nullptr;
    }

    /// The new object gains its owner before the old one loses one, so that self-assignment is
    /// safe.
    Reference& operator=(const Reference& other) {
        Reference(other).swap(*this);
        return *this;
    }
    /// Takes the ownership over and leaves `other` null.
    Reference& operator=(Reference&& other) noexcept {
        Reference(std::move(other)).swap(*this);
        return *this;
    }

    /// Refers to `object`, which may be null, in place of the one before.
    void reset(T* object = nullptr) { Reference(object).swap(*this); }

    /// Exchanges the objects.
    void swap(Reference& other) noexcept { std::swap(object_, other.object_); }

    /// The object, or null.
    T* get() const { return object_; }
    /// The object, which must not be null.
    T* operator->() const { return object_; }
    /// The object, which must not be null.
    T& operator*() const { return *object_; }
    /// Whether there is an object.
    explicit operator bool() const { return object_ != nullptr; }

    /// Whether both refer to the same object, or to none.
    friend bool operator==(const Reference& a, const Reference& b) = default;
    /// The same with a reference to a derived or a non-const object.
    template<class Other>
    requires std::convertible_to<Other*, T*>
    friend bool operator==(const Reference& a, const Reference<Other>& b) {
        return a.object_ == b.get();
    }
    /// Whether `a` refers to this object. Does not make a Reference to it, which would delete an
    /// object that has no owner yet.
    friend bool operator==(const Reference& a, const T* b) { return a.object_ == b; }

private:
    T* object_ = nullptr;
};

/// Writes the address of the object to a stream of the standard library.
template<class Traits, class T>
std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& stream,
                                             const Reference<T>& reference) {
    return stream << static_cast<const void*>(reference.get());
}

} // namespace ze

/// Of the object's address, so that a reference is found where it is equal.
template<class T>
struct std::hash<ze::Reference<T>> {
    /// The same as that of the plain pointer.
    std::size_t operator()(const ze::Reference<T>& reference) const noexcept {
        return reinterpret_cast<std::size_t>(reference.get());
    }
};

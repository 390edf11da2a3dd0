// SPDX-License-Identifier: MIT

/// @file
/// The map of the value types that are made of components x, y, z and w, and what all of them
/// share: comparison within a tolerance.
///
/// | Meaning           | double | double, 2-D | float     | float, 2-D | others         |
/// |-------------------|--------|-------------|-----------|------------|----------------|
/// | displacement      | Vector | Vector2     | VectorFlt | Vector2Flt |                |
/// | unit direction    | Normal |             |           |            |                |
/// | position          | Point  | Point2      | PointFlt  | Point2Flt  | RPoint, HPoint |
/// | bare numbers      | Tuple3 | Tuple2      |           |            | Tuple4         |
/// | rotation          |        |             |           |            | Quaternion     |
///
/// All are plain values: no virtual operations, no allocation, nothing to destroy. Fields are
/// public. A value made without arguments is zero (a Normal is then invalid, a Quaternion the
/// identity). `operator==` compares the components exactly, so that a NaN is unequal to itself.
/// Widening to double is implicit; what loses (narrowing to float, dividing by w) is explicit.
/// Components may be given as any mixture of numbers, `VectorFlt(0.5, 1, 2.F)`: each is converted
/// by itself, to the nearest value that the type of the component has.
///
/// Threads: values are as safe as numbers are; the tolerances that functions read are not locked
/// (zeLinearTolerance.h).
///
/// Everything short is inline, and is compiled with the flags of the code that includes it. The
/// results of the forms written here are the same bits on every compiler and at every level of
/// optimisation, as long as those flags leave the arithmetic alone: no `-ffast-math`, and
/// `-ffp-contract=off` where the target has fused multiply-add (`-march=haswell` and above).
///
/// @code
/// #include "Base/Linear/zeLinearPoint.h"
/// using namespace zeLinear;
/// Point a(0, 0, 0), b(0, 0, 1e-13);
/// assert(a != b);
/// assert(equivalent(a, b));         // within epsilonTol
/// assert(!equivalent(a, b, 1e-13)); // a difference equal to the tolerance is too much
/// @endcode

#pragma once

#include <cmath>
#include <concepts>

#include "Base/Linear/zeLinearTolerance.h"

namespace zeLinear {

struct Tuple2;
struct Tuple3;
struct Tuple4;
struct Vector;
struct Vector2;
struct VectorFlt;
struct Vector2Flt;
class Normal;
struct Point;
struct Point2;
struct PointFlt;
struct Point2Flt;
struct RPoint;
struct HPoint;
struct Quaternion;
struct ParamLine;

/// One of the types that follow.
template<class T, class... Types>
concept OneOf = (std::same_as<T, Types> || ...);

/// What a component may be given as: a number of any type, or what converts to one.
template<class T>
concept Number = std::convertible_to<T, double>;

/// A tuple.
template<class T>
concept AnyTuple = OneOf<T, Tuple2, Tuple3, Tuple4>;
/// A vector. A Normal is none.
template<class T>
concept AnyVector = OneOf<T, Vector, Vector2, VectorFlt, Vector2Flt>;
/// A position without a weight.
template<class T>
concept AnyPoint = OneOf<T, Point, Point2, PointFlt, Point2Flt>;
/// Any type of the table above.
template<class T>
concept AnyComponents =
    AnyTuple<T> || AnyVector<T> || AnyPoint<T> || OneOf<T, Normal, RPoint, HPoint, Quaternion>;

/// The type of a component: double or float.
template<class T>
using Scalar = decltype(T::x);

/// How the operations that the types share are written once. Internal.
namespace detail {

template<class T>
constexpr int countComponents() {
    if constexpr (std::floating_point<T>)
        return 1;
    else if constexpr (requires(T t) { t.w; })
        return 4;
    else if constexpr (requires(T t) { t.z; })
        return 3;
    else
        return 2;
}

/// The number of components: the last of x, y, z, w that the type has; 1 for a bare number.
template<class T>
inline constexpr int dimension = countComponents<T>();

/// The arithmetic of components, as function objects.
struct Plus {
    template<class S>
    constexpr S operator()(S a, S b) const {
        return a + b;
    }
};
struct Minus {
    template<class S>
    constexpr S operator()(S a, S b) const {
        return a - b;
    }
};
struct Negate {
    template<class S>
    constexpr S operator()(S a) const {
        return -a;
    }
};

/// A T whose components are `f` of the components of the arguments, each by itself.
template<class T, class F, class... Ts>
constexpr T each(F f, const Ts&... t) {
    if constexpr (dimension<T> == 1)
        return f(t...);
    else if constexpr (dimension<T> == 2)
        return T(f(t.x...), f(t.y...));
    else if constexpr (dimension<T> == 3)
        return T(f(t.x...), f(t.y...), f(t.z...));
    else
        return T(f(t.x...), f(t.y...), f(t.z...), f(t.w...));
}

/// Whether `f` holds for each component.
template<class F, class T, class... Ts>
constexpr bool all(F f, const T& first, const Ts&... t) {
    if constexpr (dimension<T> == 1)
        return f(first, t...);
    else if constexpr (dimension<T> == 2)
        return f(first.x, t.x...) && f(first.y, t.y...);
    else if constexpr (dimension<T> == 3)
        return f(first.x, t.x...) && f(first.y, t.y...) && f(first.z, t.z...);
    else
        return f(first.x, t.x...) && f(first.y, t.y...) && f(first.z, t.z...) && f(first.w, t.w...);
}

/// The sum of the products of the components, from x on.
template<class A, class B>
constexpr Scalar<A> sumOfProducts(const A& a, const B& b) {
    if constexpr (dimension<A> == 2)
        return a.x * b.x + a.y * b.y;
    else if constexpr (dimension<A> == 3)
        return a.x * b.x + a.y * b.y + a.z * b.z;
    else
        return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}

/// The smallest length that counts, in the precision of S.
template<std::floating_point S>
S smallestLength() {
    if constexpr (std::same_as<S, float>)
        return epsilonTolFlt;
    else
        return epsilonTol;
}

} // namespace detail

/// True if every component of `a` differs from that of `b` by strictly less than `tol`: with 0 it
/// is never true, nor with a NaN.
template<AnyComponents T>
bool equivalent(const T& a, const T& b, Scalar<T> tol = detail::smallestLength<Scalar<T>>()) {
    return detail::all([tol](auto s, auto t) { return std::fabs(s - t) < tol; }, a, b);
}

} // namespace zeLinear

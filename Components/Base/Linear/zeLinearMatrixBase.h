// SPDX-License-Identifier: MIT

/// @file
/// What the five matrices share: products, sums, comparison, and tests for NaN. Include
/// zeLinearMatrix.h, which explains them, for the matrices themselves.
///
/// Threads: plain values, which any thread may use by itself.

#pragma once

#include <cmath>
#include <concepts>
#include <type_traits>

#include "Base/Linear/zeLinearVector.h"

namespace zeLinear {

struct AffineMatrix;
struct AffineMatrix2;
struct AffineMatrixFlt;
struct ProjMatrix;
struct ProjMatrixFlt;

/// A projective matrix.
template<class T>
concept AnyProjMatrix = OneOf<T, ProjMatrix, ProjMatrixFlt>;
/// Any of the five matrices.
template<class T>
concept AnyMatrix = AnyProjMatrix<T> || OneOf<T, AffineMatrix, AffineMatrix2, AffineMatrixFlt>;

/// The type of an entry: double or float.
template<AnyMatrix M>
using Entry = std::remove_all_extents_t<decltype(M::m)>;

/// The entries of a matrix M, which derives from this class, and its products with others of its
/// own type. The entries stand here, not in M: GCC 12 keeps a local matrix in memory if it has an
/// empty base class, and then each copy waits for the stores before it.
template<AnyMatrix M, class Number, unsigned Rows, unsigned Columns>
struct MatrixEntries {
    /// The entries: m[row][column].
    Number m[Rows][Columns];

    /// `result` = `a` times this matrix. It must be neither `a` nor this matrix.
    constexpr void preMult(M& result, const M& a) const {
        result = a * static_cast<const M&>(*this);
    }
    /// This matrix becomes `a` times itself: `a` acts first.
    constexpr void preMult(const M& a) {
        M& self = static_cast<M&>(*this);
        self = a * self;
    }
    /// This matrix becomes itself times `a`: `a` acts last.
    constexpr M& operator*=(const M& a) {
        M& self = static_cast<M&>(*this);
        return self = self * a;
    }

    /// Compares the entries exactly.
    constexpr bool operator==(const MatrixEntries&) const = default;
};

namespace detail {

/// `v` times the square part of a matrix. Every product comes down to this one.
template<class V, AnyMatrix M>
constexpr V times(const V& v, const M& matrix) {
    const auto& m = matrix.m;
    if constexpr (dimension<V> == 2)
        return V(v.x * m[0][0] + v.y * m[1][0], v.x * m[0][1] + v.y * m[1][1]);
    else if constexpr (dimension<V> == 3)
        return V(v.x * m[0][0] + v.y * m[1][0] + v.z * m[2][0],
                 v.x * m[0][1] + v.y * m[1][1] + v.z * m[2][1],
                 v.x * m[0][2] + v.y * m[1][2] + v.z * m[2][2]);
    else
        return V(v.x * m[0][0] + v.y * m[1][0] + v.z * m[2][0] + v.w * m[3][0],
                 v.x * m[0][1] + v.y * m[1][1] + v.z * m[2][1] + v.w * m[3][1],
                 v.x * m[0][2] + v.y * m[1][2] + v.z * m[2][2] + v.w * m[3][2],
                 v.x * m[0][3] + v.y * m[1][3] + v.z * m[2][3] + v.w * m[3][3]);
}

/// `v` times the square part plus the translation.
template<class V, AnyMatrix M>
constexpr V timesAndTranslate(const V& v, const M& matrix) {
    return each<V>(Plus(), times(v, matrix), matrix.row(dimension<V>));
}

/// The determinant of the upper 3-by-3 part, with the rows as V.
template<class V, AnyMatrix M>
constexpr Entry<M> determinant3(const M& matrix) {
    return dot(V(matrix.m[0]), cross(V(matrix.m[1]), V(matrix.m[2])));
}

template<AnyMatrix M>
inline constexpr int rowCount = std::extent_v<decltype(M::m), 0>;
template<AnyMatrix M>
inline constexpr int columnCount = std::extent_v<decltype(M::m), 1>;

/// The matrix whose entries are `f` of the entries of the arguments.
template<AnyMatrix M, class F, class... Ms>
constexpr M eachEntry(F f, const Ms&... a) {
    M result;
    for (int i = 0; i < rowCount<M>; ++i)
        for (int j = 0; j < columnCount<M>; ++j)
            result.m[i][j] = f(a.m[i][j]...);
    return result;
}

/// Whether `f` holds for all entries.
template<class F, AnyMatrix M, class... Ms>
constexpr bool allEntries(F f, const M& first, const Ms&... a) {
    for (int i = 0; i < rowCount<M>; ++i)
        for (int j = 0; j < columnCount<M>; ++j)
            if (!f(first.m[i][j], a.m[i][j]...))
                return false;
    return true;
}

template<AnyMatrix M>
constexpr M transposed(const M& a) {
    M result;
    for (int i = 0; i < columnCount<M>; ++i)
        for (int j = 0; j < columnCount<M>; ++j)
            result.m[i][j] = a.m[j][i];
    return result;
}

} // namespace detail

/// The product: `a` is applied first.
template<AnyMatrix M>
constexpr M operator*(const M& a, const M& b) {
    using namespace detail;
    if constexpr (AnyProjMatrix<M>)
        return M(times(a.row(0), b), times(a.row(1), b), times(a.row(2), b), times(a.row(3), b));
    else if constexpr (std::same_as<M, AffineMatrix2>)
        return M(times(a.row(0), b), times(a.row(1), b), timesAndTranslate(a.row(2), b));
    else
        return M(times(a.row(0), b), times(a.row(1), b), times(a.row(2), b),
                 timesAndTranslate(a.row(3), b));
}

/// @{
/// Sums and multiples of every entry, the translation included.
template<AnyMatrix M>
constexpr M operator+(const M& a, const M& b) {
    return detail::eachEntry<M>(detail::Plus(), a, b);
}

template<AnyMatrix M>
constexpr M operator-(const M& a, const M& b) {
    return detail::eachEntry<M>(detail::Minus(), a, b);
}

template<AnyMatrix M>
constexpr M operator*(const M& a, Entry<M> factor) {
    return detail::eachEntry<M>([factor](auto s) { return s * factor; }, a);
}

template<AnyMatrix M>
constexpr M operator*(Entry<M> factor, const M& a) {
    return a * factor;
}

template<AnyMatrix M>
constexpr M& operator+=(M& a, const M& b) {
    return a = a + b;
}

template<AnyMatrix M>
constexpr M& operator-=(M& a, const M& b) {
    return a = a - b;
}

template<AnyMatrix M>
constexpr M& operator*=(M& a, Entry<M> factor) {
    return a = a * factor;
}
/// @}

/// Whether every entry differs by strictly less than `tol`.
template<AnyMatrix M>
bool equivalent(const M& a, const M& b, Entry<M> tol = detail::smallestLength<Entry<M>>()) {
    return detail::allEntries([tol](auto s, auto t) { return std::fabs(s - t) < tol; }, a, b);
}

/// Whether any entry is not a number.
template<AnyMatrix M>
bool isNaN(const M& a) {
    return !detail::allEntries([](auto s) { return !std::isnan(s); }, a);
}

/// Whether every entry is finite: neither infinite nor NaN.
template<AnyMatrix M>
bool isFinite(const M& a) {
    return detail::allEntries([](auto s) { return std::isfinite(s); }, a);
}

} // namespace zeLinear

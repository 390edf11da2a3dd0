// SPDX-License-Identifier: MIT

/// @file
/// The projective matrices: zeLinear::ProjMatrix and its single-precision form. zeLinearMatrix.h
/// includes this header, and explains what all matrices have in common.
///
/// Threads: plain values, which any thread may use by itself.
///
/// @code
/// using namespace zeLinear;
/// ProjMatrix m; // divides by z
/// m.m[2][3] = 1;
/// m.m[3][3] = 0;
/// assert(Point(HPoint(Point(2, 4, 2)) * m) == Point(1, 2, 1));
/// @endcode

#pragma once

#include <cmath>
#include <cstring>

#include "Base/Linear/zeLinearAffineMatrix.h"
#include "Base/Linear/zeLinearTuple.h"
#include "Base/zeBaseExport.h"

namespace zeLinear {

namespace detail {

/// A row of ProjMatrixFlt.
struct RowFlt4 {
    float x, y, z, w;

    constexpr RowFlt4(float x0, float y0, float z0, float w0) : x(x0), y(y0), z(z0), w(w0) {}
    constexpr explicit RowFlt4(const float* xyzw) : RowFlt4(xyzw[0], xyzw[1], xyzw[2], xyzw[3]) {}
    constexpr void get(float* xyzw) const { xyzw[0] = x, xyzw[1] = y, xyzw[2] = z, xyzw[3] = w; }
};

} // namespace detail

/// A projective map of space, which takes homogeneous points to homogeneous points.
struct ProjMatrix : MatrixEntries<ProjMatrix, double, 4, 4> {
    using MatrixEntries::preMult;

    /// The type of a row.
    using Row = Tuple4;

    /// 1 on the diagonal.
    static const ProjMatrix Identity;

    /// The identity.
    constexpr ProjMatrix() : ProjMatrix(1.0) {}
    /// `s` on the whole diagonal, zero elsewhere.
    constexpr explicit ProjMatrix(double s)
        : ProjMatrix(Tuple4(s, 0, 0, 0), Tuple4(0, s, 0, 0), Tuple4(0, 0, s, 0),
                     Tuple4(0, 0, 0, s)) {}
    /// From 16 numbers, row by row.
    explicit ProjMatrix(const double* entries) : ProjMatrix() { set(entries); }
    /// From rows.
    constexpr ProjMatrix(const Tuple4& x, const Tuple4& y, const Tuple4& z, const Tuple4& w) {
        x.get(m[0]), y.get(m[1]), z.get(m[2]), w.get(m[3]);
    }
    /// With a fourth column of 0, 0, 0, 1.
    constexpr ProjMatrix(const AffineMatrix& affine);
    /// Widens each entry.
    constexpr ProjMatrix(const ProjMatrixFlt& other);

    /// Stores 16 numbers, row by row.
    void set(const double* entries) { std::memcpy(m, entries, sizeof m); }
    /// Reads 16 numbers, row by row.
    void get(double* entries) const { std::memcpy(entries, m, sizeof m); }
    /// A row.
    constexpr Tuple4 row(int i) const { return Tuple4(m[i]); }

    /// Becomes the identity.
    constexpr void identity() { *this = Identity; }

    /// @{
    /// `out` = `in` times this matrix; nothing happens if `out` is `in`.
    constexpr void preMult(HPoint& out, const HPoint& in) const;
    constexpr void preMult(Tuple4& out, const Tuple4& in) const;
    /// @}

    /// Transposes all four rows.
    constexpr void transpose();
    /// The determinant of the upper 3-by-3 part.
    constexpr double det3x3() const { return detail::determinant3<Vector>(*this); }
    /// The determinant.
    ZEBASE_API double det4x4() const;
    /// Whether |det4x4()| is not below epsilonTol.
    bool isInvertible() const { return !(std::fabs(det4x4()) < epsilonTol); }
    /// Whether the last column is 0, 0, 0, 1, to less than epsilonTol.
    bool isAffine() const;

    /// Inverts by elimination with pivots. False, and the matrix unchanged, if a pivot is below
    /// epsilonTol.
    ZEBASE_API bool invert();
    /// Inverts by cofactors, several times faster, for matrices that are known to be well
    /// conditioned. False, and unchanged, if the determinant is below epsilonTol.
    ZEBASE_API bool invertFast();
    /// An inverted copy, by invert(); of a singular matrix silently a plain copy.
    ZEBASE_API ProjMatrix inverse() const;

    /// Compares the entries exactly.
    constexpr bool operator==(const ProjMatrix&) const = default;
};

/// A projective map in single precision.
struct ProjMatrixFlt : MatrixEntries<ProjMatrixFlt, float, 4, 4> {
    using MatrixEntries::preMult;

    /// The type of a row.
    using Row = detail::RowFlt4;

    /// 1 on the diagonal.
    static const ProjMatrixFlt Identity;

    /// The identity.
    constexpr ProjMatrixFlt() : ProjMatrixFlt(1.0F) {}
    /// `s` on the whole diagonal, zero elsewhere.
    constexpr explicit ProjMatrixFlt(float s)
        : ProjMatrixFlt(Row(s, 0, 0, 0), Row(0, s, 0, 0), Row(0, 0, s, 0), Row(0, 0, 0, s)) {}
    /// From 16 numbers, row by row.
    explicit ProjMatrixFlt(const float* entries) : ProjMatrixFlt() { set(entries); }
    /// From rows.
    constexpr ProjMatrixFlt(const Row& x, const Row& y, const Row& z, const Row& w) {
        x.get(m[0]), y.get(m[1]), z.get(m[2]), w.get(m[3]);
    }
    /// Rounds each entry to single precision.
    constexpr explicit ProjMatrixFlt(const ProjMatrix& other);

    /// Stores 16 numbers, row by row.
    void set(const float* entries) { std::memcpy(m, entries, sizeof m); }
    /// Reads 16 numbers, row by row.
    void get(float* entries) const { std::memcpy(entries, m, sizeof m); }
    /// A row.
    constexpr Row row(int i) const { return Row(m[i]); }

    /// Becomes the identity.
    constexpr void identity() { *this = Identity; }

    /// Transposes all four rows.
    constexpr void transpose();
    /// The determinant of the upper 3-by-3 part.
    constexpr float det3x3() const { return detail::determinant3<VectorFlt>(*this); }

    /// Compares the entries exactly.
    constexpr bool operator==(const ProjMatrixFlt&) const = default;
};

inline constexpr ProjMatrix ProjMatrix::Identity(1.0);
inline constexpr ProjMatrixFlt ProjMatrixFlt::Identity(1.0F);

/// @{
/// The image: a row vector times the matrix.
constexpr HPoint operator*(const HPoint& p, const ProjMatrix& m) {
    return detail::times(p, m);
}
constexpr Tuple4 operator*(const Tuple4& t, const ProjMatrix& m) {
    return detail::times(t, m);
}
/// @}

constexpr AffineMatrix::AffineMatrix(const Promise&, const ProjMatrix& affine)
    : AffineMatrix(Vector(affine.m[0]), Vector(affine.m[1]), Vector(affine.m[2]),
                   Vector(affine.m[3])) {}

// ProjMatrix

constexpr ProjMatrix::ProjMatrix(const AffineMatrix& affine)
    : ProjMatrix(Tuple4(affine.m[0][0], affine.m[0][1], affine.m[0][2], 0),
                 Tuple4(affine.m[1][0], affine.m[1][1], affine.m[1][2], 0),
                 Tuple4(affine.m[2][0], affine.m[2][1], affine.m[2][2], 0),
                 Tuple4(affine.m[3][0], affine.m[3][1], affine.m[3][2], 1)) {}

constexpr ProjMatrix::ProjMatrix(const ProjMatrixFlt& other)
    : ProjMatrix(detail::eachEntry<ProjMatrix>([](float s) -> double { return s; }, other)) {}

constexpr void ProjMatrix::preMult(HPoint& out, const HPoint& in) const {
    if (&out != &in)
        out = in * *this;
}

constexpr void ProjMatrix::preMult(Tuple4& out, const Tuple4& in) const {
    if (&out != &in)
        out = in * *this;
}

constexpr void ProjMatrix::transpose() {
    *this = detail::transposed(*this);
}

inline bool ProjMatrix::isAffine() const {
    return equivalent(Tuple4(m[0][3], m[1][3], m[2][3], m[3][3]), Tuple4(0, 0, 0, 1));
}

// ProjMatrixFlt

constexpr ProjMatrixFlt::ProjMatrixFlt(const ProjMatrix& other)
    : ProjMatrixFlt(detail::eachEntry<ProjMatrixFlt>([](double s) { return static_cast<float>(s); },
                                                     other)) {}

constexpr void ProjMatrixFlt::transpose() {
    *this = detail::transposed(*this);
}

} // namespace zeLinear

// SPDX-License-Identifier: MIT

/// @file
/// The affine matrices: zeLinear::AffineMatrix with its two-dimensional and single-precision forms.
/// zeLinearMatrix.h includes this header, and explains what all matrices have in common.
///
/// Threads: plain values, which any thread may use by itself.
///
/// @code
/// using namespace zeLinear;
/// AffineMatrix2 m;
/// m.translate(10, 0);
/// m.scale(2); // acts first
/// assert(Point2(1, 3) * m == Point2(12, 6));
/// @endcode

#pragma once

#include <cmath>
#include <cstring>

#include "Base/Linear/zeLinearLine.h"
#include "Base/Linear/zeLinearMatrixBase.h"
#include "Base/Linear/zeLinearPlane.h"
#include "Base/Linear/zeLinearRange.h"
#include "Base/zeBaseExport.h"

namespace zeLinear {

/// The caller's promise that a ProjMatrix is affine; nothing is tested.
struct Promise {};

/// An affine map of space.
struct AffineMatrix : MatrixEntries<AffineMatrix, double, 4, 3> {
    using MatrixEntries::preMult;

    /// The type of a row.
    using Row = Vector;

    /// 1 on the diagonal.
    static const AffineMatrix Identity;

    /// The identity.
    constexpr AffineMatrix() : AffineMatrix(1.0) {}
    /// `s` on the diagonal, zero elsewhere: 1.0 is the identity, -1.0 the reflection in the origin.
    constexpr explicit AffineMatrix(double s)
        : AffineMatrix(Vector(s, 0, 0), Vector(0, s, 0), Vector(0, 0, s), Vector::zero) {}
    /// From 12 numbers, row by row.
    explicit AffineMatrix(const double* entries) : AffineMatrix() { set(entries); }
    /// From rows: the images of the axes, and the translation.
    constexpr AffineMatrix(const Vector& x, const Vector& y, const Vector& z,
                           const Vector& translation) {
        x.get(m[0]), y.get(m[1]), z.get(m[2]), translation.get(m[3]);
    }
    /// Widens each entry.
    constexpr AffineMatrix(const AffineMatrixFlt& other);
    /// Takes the first three columns and ignores the fourth.
    constexpr AffineMatrix(const Promise&, const ProjMatrix& affine);

    /// Stores 12 numbers, row by row.
    void set(const double* entries) { std::memcpy(m, entries, sizeof m); }
    /// Reads 12 numbers, row by row.
    void get(double* entries) const { std::memcpy(entries, m, sizeof m); }
    /// A row; the last is the translation.
    constexpr Vector row(int i) const { return Vector(m[i]); }
    /// The translation.
    constexpr Vector getTranslate() const { return row(3); }
    /// Reads the rows, the translation first.
    constexpr void getFrame(Point& origin, Vector& x, Vector& y, Vector& z) const;
    /// Stores the rows, the translation first.
    constexpr void setFrame(const Point& origin, const Vector& x, const Vector& y, const Vector& z);

    /// Becomes the identity.
    constexpr void identity() { *this = Identity; }
    /// All entries become zero.
    constexpr void zero() { *this = AffineMatrix(0.0); }
    /// The 3-by-3 part becomes a_i b_j: v times it is (v · a) b. The translation stays.
    constexpr void outerProduct(const Vector& a, const Vector& b);
    /// Becomes the matrix that takes w to cross(w, v), without a translation.
    constexpr void crossMatrix(const Vector& v);

    /// @{
    /// `out` = `in` times this matrix, as `in * matrix` gives it, unless `out` is `in`: then a
    /// point or vector stays as it is. See zeLinearMatrix.h for the other types.
    constexpr void preMult(Point& out, const Point& in) const;
    constexpr void preMult(Vector& out, const Vector& in) const;
    constexpr void preMult(HPoint& out, const HPoint& in) const;
    void preMult(Line& out, const Line& in) const;
    void preMult(ParamLine& out, const ParamLine& in) const;
    void preMult(Plane& out, const Plane& in) const;
    void preMult(ParamPlane& out, const ParamPlane& in) const;
    constexpr void preMult(Range3d& out, const Range3d& in) const;
    /// @}
    /// @{
    /// The same with `normals` for the normal: vectorMatrix() or normalMatrix() of this matrix,
    /// which the caller computes once for many planes. Without it the matrix is inverted for each
    /// plane.
    void preMult(Plane& out, const Plane& in, const AffineMatrix& normals) const;
    void preMult(ParamPlane& out, const ParamPlane& in, const AffineMatrix& normals) const;
    /// @}

    /// @{
    /// Multiplies a translation in front: it acts before what the matrix did already.
    constexpr void translate(double dx, double dy, double dz) { translate(Vector(dx, dy, dz)); }
    constexpr void translate(const Vector& v);
    /// @}
    /// @{
    /// Multiplies a scale in front. The translation row does not change, since the scale acts
    /// before it.
    constexpr void scale(double sx, double sy, double sz);
    constexpr void scale(double s) { scale(s, s, s); }
    /// @}
    /// @{
    /// Multiplies a rotation in front, about an axis of the frame by an angle in radians,
    /// right-handed.
    ZEBASE_API void rotateX(double angle);
    ZEBASE_API void rotateY(double angle);
    ZEBASE_API void rotateZ(double angle);
    /// @}
    /// About a direction through the origin. An invalid axis scales by cos(angle).
    ZEBASE_API void rotate(double angle, const Normal& axis);
    /// About a line anywhere.
    ZEBASE_API void rotate(double angle, const Line& axis);
    /// Deleted: the line would convert to its direction, and the axis would pass through the
    /// origin. Pass `Line(axis)`.
    void rotate(double angle, const ParamLine& axis) = delete;
    /// The shortest turn that takes one direction to the other. Opposite ones turn by half about
    /// `from.orthogonalVector()`; along (1, -1, 1), where that is zero, this is a reflection in the
    /// origin. Nothing happens if one of the two is not valid.
    ZEBASE_API void rotate(const Normal& from, const Normal& to);
    /// Reflects in a plane.
    ZEBASE_API void mirror(const Plane& plane);

    /// Transposes the 3-by-3 part, and **zeroes the translation**.
    constexpr void transpose();
    /// The determinant of the 3-by-3 part.
    constexpr double det3x3() const { return detail::determinant3<Vector>(*this); }
    /// The determinant of the homogeneous matrix: with its last column, the same.
    constexpr double det4x4() const { return det3x3(); }
    /// Whether |det3x3()| is not below epsilonTol. A uniform scale of 1e-5 already fails, which
    /// invert() can still invert.
    bool isInvertible() const { return !(std::fabs(det3x3()) < epsilonTol); }

    /// Inverts by elimination with pivots. False, and the matrix unchanged, if a pivot is below
    /// epsilonTol.
    ZEBASE_API bool invert();
    /// Inverts by cofactors, several times faster, for matrices that are known to be well
    /// conditioned. False, and unchanged, if the determinant is below epsilonTol.
    bool invertFast();
    /// An inverted copy, by invert(); of a singular matrix silently a plain copy.
    ZEBASE_API AffineMatrix inverse() const;
    /// The transpose of the inverse, which carries covectors such as the normals of planes; it has
    /// no translation. If the matrix is singular, `ok` is false and the result is the matrix
    /// itself.
    ZEBASE_API AffineMatrix vectorMatrix(bool& ok) const;
    /// vectorMatrix(), negated if the determinant is negative, so that the normals of a mirrored
    /// surface keep their side.
    ZEBASE_API AffineMatrix normalMatrix(bool& ok) const;

    /// Compares the entries exactly.
    constexpr bool operator==(const AffineMatrix&) const = default;
};

/// An affine map of the plane.
struct AffineMatrix2 : MatrixEntries<AffineMatrix2, double, 3, 2> {
    using MatrixEntries::preMult;

    /// The type of a row.
    using Row = Vector2;

    /// 1 on the diagonal.
    static const AffineMatrix2 Identity;

    /// The identity.
    constexpr AffineMatrix2() : AffineMatrix2(1.0) {}
    /// `s` on the diagonal, zero elsewhere.
    constexpr explicit AffineMatrix2(double s)
        : AffineMatrix2(Vector2(s, 0), Vector2(0, s), Vector2::zero) {}
    /// From 6 numbers, row by row.
    explicit AffineMatrix2(const double* entries) : AffineMatrix2() { set(entries); }
    /// From rows: the images of the axes, and the translation.
    constexpr AffineMatrix2(const Vector2& x, const Vector2& y, const Vector2& translation) {
        x.get(m[0]), y.get(m[1]), translation.get(m[2]);
    }

    /// Stores 6 numbers, row by row.
    void set(const double* entries) { std::memcpy(m, entries, sizeof m); }
    /// Reads 6 numbers, row by row.
    void get(double* entries) const { std::memcpy(entries, m, sizeof m); }
    /// A row; the last is the translation.
    constexpr Vector2 row(int i) const { return Vector2(m[i]); }
    /// The translation.
    constexpr Vector2 getTranslate() const { return row(2); }
    /// Reads the rows, the translation first.
    constexpr void getFrame(Point2& origin, Vector2& x, Vector2& y) const;
    /// Stores the rows, the translation first.
    constexpr void setFrame(const Point2& origin, const Vector2& x, const Vector2& y);

    /// Becomes the identity.
    constexpr void identity() { *this = Identity; }
    /// All entries become zero.
    constexpr void zero() { *this = AffineMatrix2(0.0); }

    /// @{
    /// `out` = `in` times this matrix; nothing happens to a point or vector if `out` is `in`.
    constexpr void preMult(Point2& out, const Point2& in) const;
    constexpr void preMult(Vector2& out, const Vector2& in) const;
    constexpr void preMult(Range2d& out, const Range2d& in) const;
    /// @}

    /// @{
    /// Multiplies a translation in front, as in AffineMatrix.
    constexpr void translate(double dx, double dy) { translate(Vector2(dx, dy)); }
    constexpr void translate(const Vector2& v);
    /// @}
    /// @{
    /// Multiplies a scale in front, as in AffineMatrix.
    constexpr void scale(double sx, double sy);
    constexpr void scale(double s) { scale(s, s); }
    /// @}
    /// Multiplies a rotation in front, about the origin by an angle in radians, from x towards y.
    ZEBASE_API void rotate(double angle);

    /// Inverts by elimination with pivots. False, and the matrix unchanged, if a pivot is below
    /// epsilonTol.
    ZEBASE_API bool invert();
    /// An inverted copy, by invert(); of a singular matrix silently a plain copy.
    ZEBASE_API AffineMatrix2 inverse() const;

    /// Compares the entries exactly.
    constexpr bool operator==(const AffineMatrix2&) const = default;
};

/// An affine map of space in single precision, for storing and applying. Build and invert it in
/// double precision, and convert.
struct AffineMatrixFlt : MatrixEntries<AffineMatrixFlt, float, 4, 3> {
    using MatrixEntries::preMult;

    /// The type of a row.
    using Row = VectorFlt;

    /// 1 on the diagonal.
    static const AffineMatrixFlt Identity;

    /// The identity.
    constexpr AffineMatrixFlt() : AffineMatrixFlt(1.0F) {}
    /// `s` on the diagonal, zero elsewhere.
    constexpr explicit AffineMatrixFlt(float s)
        : AffineMatrixFlt(VectorFlt(s, 0, 0), VectorFlt(0, s, 0), VectorFlt(0, 0, s),
                          VectorFlt::zero) {}
    /// From 12 numbers, row by row.
    explicit AffineMatrixFlt(const float* entries) : AffineMatrixFlt() {
        std::memcpy(m, entries, sizeof m);
    }
    /// From rows: the images of the axes, and the translation.
    constexpr AffineMatrixFlt(const VectorFlt& x, const VectorFlt& y, const VectorFlt& z,
                              const VectorFlt& translation) {
        x.get(m[0]), y.get(m[1]), z.get(m[2]), translation.get(m[3]);
    }
    /// Rounds each entry to single precision.
    constexpr explicit AffineMatrixFlt(const AffineMatrix& other);
    /// Rounds each entry to single precision.
    constexpr AffineMatrixFlt& operator=(const AffineMatrix& other);

    /// A row; the last is the translation.
    constexpr VectorFlt row(int i) const { return VectorFlt(m[i]); }

    /// Becomes the identity.
    constexpr void identity() { *this = Identity; }
    /// All entries become zero.
    constexpr void zero() { *this = AffineMatrixFlt(0.0F); }

    /// @{
    /// `out` = `in` times this matrix; nothing happens if `out` is `in`.
    constexpr void preMult(PointFlt& out, const PointFlt& in) const;
    constexpr void preMult(VectorFlt& out, const VectorFlt& in) const;
    /// @}

    /// Compares the entries exactly.
    constexpr bool operator==(const AffineMatrixFlt&) const = default;
};

inline constexpr AffineMatrix AffineMatrix::Identity(1.0);
inline constexpr AffineMatrix2 AffineMatrix2::Identity(1.0);
inline constexpr AffineMatrixFlt AffineMatrixFlt::Identity(1.0F);

namespace detail {

/// The range that holds the images of the corners.
template<AnyRange R, AnyMatrix M>
constexpr R transformedRange(const R& range, const M& matrix) {
    R result;
    if (range.isUnbounded())
        return result;
    constexpr unsigned corners = 1U << dimension<decltype(range.low)>;
    for (unsigned i = 0; i < corners; ++i) {
        auto corner = range.low;
        if (i & 1U)
            corner.x = range.high.x;
        if (i & 2U)
            corner.y = range.high.y;
        if constexpr (corners == 8) {
            if (i & 4U)
                corner.z = range.high.z;
        }
        corner = timesAndTranslate(corner, matrix);
        if (i == 0)
            result.set(corner);
        else
            result.include(corner);
    }
    return result;
}

} // namespace detail

/// @{
/// The image of a point: a row vector times the matrix, plus the translation.
constexpr Point operator*(const Point& p, const AffineMatrix& m) {
    return detail::timesAndTranslate(p, m);
}

constexpr Point2 operator*(const Point2& p, const AffineMatrix2& m) {
    return detail::timesAndTranslate(p, m);
}

constexpr PointFlt operator*(const PointFlt& p, const AffineMatrixFlt& m) {
    return detail::timesAndTranslate(p, m);
}
/// @}

/// @{
/// The image of a vector, without the translation.
constexpr Vector operator*(const Vector& v, const AffineMatrix& m) {
    return detail::times(v, m);
}

constexpr Vector2 operator*(const Vector2& v, const AffineMatrix2& m) {
    return detail::times(v, m);
}

constexpr VectorFlt operator*(const VectorFlt& v, const AffineMatrixFlt& m) {
    return detail::times(v, m);
}
/// @}

/// Adds `w` times the translation, and keeps `w`.
constexpr HPoint operator*(const HPoint& p, const AffineMatrix& m) {
    const Vector v = Vector(p.x, p.y, p.z) * m + p.w * m.row(3);
    return HPoint(v.x, v.y, v.z, p.w);
}

/// The image of a line; the direction is normalised again.
inline Line operator*(const Line& line, const AffineMatrix& m) {
    Line out;
    m.preMult(out, line);
    return out;
}

/// The image of a line, with the same parameters.
inline ParamLine operator*(const ParamLine& line, const AffineMatrix& m) {
    return ParamLine(line.point * m, line.vector * m);
}

/// The image of a plane. The normal is mapped by the vectorMatrix() of `m`.
inline Plane operator*(const Plane& plane, const AffineMatrix& m) {
    Plane out;
    m.preMult(out, plane);
    return out;
}

/// The image of a plane; `u` and `v` are mapped as vectors, and made orthogonal again.
inline ParamPlane operator*(const ParamPlane& plane, const AffineMatrix& m) {
    ParamPlane out;
    m.preMult(out, plane);
    return out;
}

/// @{
/// The smallest range that holds the images of all corners; unbounded stays unbounded.
constexpr Range3d operator*(const Range3d& range, const AffineMatrix& m) {
    return detail::transformedRange(range, m);
}

constexpr Range2d operator*(const Range2d& range, const AffineMatrix2& m) {
    return detail::transformedRange(range, m);
}
/// @}

// AffineMatrix

constexpr AffineMatrix::AffineMatrix(const AffineMatrixFlt& other)
    : AffineMatrix(other.row(0), other.row(1), other.row(2), other.row(3)) {}

constexpr void AffineMatrix::getFrame(Point& origin, Vector& x, Vector& y, Vector& z) const {
    origin = Point(m[3]);
    x = row(0);
    y = row(1);
    z = row(2);
}

constexpr void AffineMatrix::setFrame(const Point& origin, const Vector& x, const Vector& y,
                                      const Vector& z) {
    *this = AffineMatrix(x, y, z, origin - Point::origin);
}

constexpr void AffineMatrix::outerProduct(const Vector& a, const Vector& b) {
    *this = AffineMatrix(a.x * b, a.y * b, a.z * b, row(3));
}

constexpr void AffineMatrix::crossMatrix(const Vector& v) {
    *this = AffineMatrix(Vector(0, -v.z, v.y), Vector(v.z, 0, -v.x), Vector(-v.y, v.x, 0),
                         Vector::zero);
}

constexpr void AffineMatrix::preMult(Point& out, const Point& in) const {
    if (&out != &in)
        out = in * *this;
}

constexpr void AffineMatrix::preMult(Vector& out, const Vector& in) const {
    if (&out != &in)
        out = in * *this;
}

constexpr void AffineMatrix::preMult(HPoint& out, const HPoint& in) const {
    if (&out != &in)
        out = in * *this;
}

inline void AffineMatrix::preMult(Line& out, const Line& in) const {
    preMult(out.point, in.point);
    out.direction = in.direction * *this;
}

inline void AffineMatrix::preMult(ParamLine& out, const ParamLine& in) const {
    preMult(out.point, in.point);
    preMult(out.vector, in.vector);
}

inline void AffineMatrix::preMult(Plane& out, const Plane& in, const AffineMatrix& normals) const {
    preMult(out.point, in.point);
    out.normal = in.normal * normals;
}

inline void AffineMatrix::preMult(Plane& out, const Plane& in) const {
    bool ok;
    preMult(out, in, vectorMatrix(ok));
}

inline void AffineMatrix::preMult(ParamPlane& out, const ParamPlane& in,
                                  const AffineMatrix& normals) const {
    preMult(out.point, in.point);
    out.normal = in.normal * normals;
    preMult(out.u, in.u);
    preMult(out.v, in.v);
    out.orthogonalize(false);
}

inline void AffineMatrix::preMult(ParamPlane& out, const ParamPlane& in) const {
    bool ok;
    preMult(out, in, vectorMatrix(ok));
}

constexpr void AffineMatrix::preMult(Range3d& out, const Range3d& in) const {
    out = in * *this;
}

constexpr void AffineMatrix::translate(const Vector& v) {
    (v * *this + row(3)).get(m[3]);
}

constexpr void AffineMatrix::scale(double sx, double sy, double sz) {
    *this = AffineMatrix(sx * row(0), sy * row(1), sz * row(2), row(3));
}

constexpr void AffineMatrix::transpose() {
    *this = detail::transposed(*this);
}

inline bool AffineMatrix::invertFast() {
    // The columns of the adjugate are the cross products of the rows.
    const Vector yz = cross(row(1), row(2));
    const Vector zx = cross(row(2), row(0));
    const Vector xy = cross(row(0), row(1));
    const double det = dot(row(0), yz);
    if (std::fabs(det) < epsilonTol)
        return false;
    AffineMatrix result(Vector(yz.x / det, zx.x / det, xy.x / det),
                        Vector(yz.y / det, zx.y / det, xy.y / det),
                        Vector(yz.z / det, zx.z / det, xy.z / det), Vector::zero);
    (-(row(3) * result)).get(result.m[3]);
    *this = result;
    return true;
}

// AffineMatrix2

constexpr void AffineMatrix2::getFrame(Point2& origin, Vector2& x, Vector2& y) const {
    origin = Point2(m[2]);
    x = row(0);
    y = row(1);
}

constexpr void AffineMatrix2::setFrame(const Point2& origin, const Vector2& x, const Vector2& y) {
    *this = AffineMatrix2(x, y, origin - Point2::origin);
}

constexpr void AffineMatrix2::preMult(Point2& out, const Point2& in) const {
    if (&out != &in)
        out = in * *this;
}

constexpr void AffineMatrix2::preMult(Vector2& out, const Vector2& in) const {
    if (&out != &in)
        out = in * *this;
}

constexpr void AffineMatrix2::preMult(Range2d& out, const Range2d& in) const {
    out = in * *this;
}

constexpr void AffineMatrix2::translate(const Vector2& v) {
    (v * *this + row(2)).get(m[2]);
}

constexpr void AffineMatrix2::scale(double sx, double sy) {
    *this = AffineMatrix2(sx * row(0), sy * row(1), row(2));
}

// AffineMatrixFlt

constexpr AffineMatrixFlt::AffineMatrixFlt(const AffineMatrix& other)
    : AffineMatrixFlt(VectorFlt(other.row(0)), VectorFlt(other.row(1)), VectorFlt(other.row(2)),
                      VectorFlt(other.row(3))) {}

constexpr AffineMatrixFlt& AffineMatrixFlt::operator=(const AffineMatrix& other) {
    return *this = AffineMatrixFlt(other);
}

constexpr void AffineMatrixFlt::preMult(PointFlt& out, const PointFlt& in) const {
    if (&out != &in)
        out = in * *this;
}

constexpr void AffineMatrixFlt::preMult(VectorFlt& out, const VectorFlt& in) const {
    if (&out != &in)
        out = in * *this;
}

} // namespace zeLinear

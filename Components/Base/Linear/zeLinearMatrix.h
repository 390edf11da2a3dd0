// SPDX-License-Identifier: MIT

/// @file
/// The matrices: affine maps of space and of the plane, and projective maps.
///
/// **Points and vectors are row vectors, multiplied from the left: p' = p M.** The rows of a matrix
/// are the images of the axes, and the last row is the translation. In a product `A * B`, A is
/// applied first.
///
/// | Class           | Entries      | Meaning                                              |
/// |-----------------|--------------|------------------------------------------------------|
/// | AffineMatrix    | 4 x 3 double | rows x, y, z and translation; the last column is     |
/// |                 |              | implied to be 0, 0, 0, 1                             |
/// | AffineMatrix2   | 3 x 2 double | the same in the plane                                |
/// | AffineMatrixFlt | 4 x 3 float  | the same in single precision                         |
/// | ProjMatrix      | 4 x 4 double | any homogeneous map                                  |
/// | ProjMatrixFlt   | 4 x 4 float  | the same in single precision                         |
///
/// A matrix made without arguments is the identity. The members of each class stand in the class;
/// what all five share (products, sums, comparison, tests for NaN) stands once below them. The
/// operations that build (`translate`, `scale`, `rotate`, `mirror`) multiply **in front**: what is
/// called last acts first.
///
/// `preMult(out, in)` of points, vectors and homogeneous points **does nothing if `out` and `in`
/// are the same object**: use another one, or `p = p * m`. Lines and planes follow from that: in
/// place, the point stays (and so do the vectors of the parametric forms), while the direction or
/// normal is transformed; a ParamPlane then makes its old `v` orthogonal to the new normal.
///
/// @code
/// using namespace zeLinear;
/// AffineMatrix m;
/// m.translate(10, 0, 0);
/// m.rotateZ(toRadians(90)); // acts first
/// assert(equivalent(Point(1, 0, 0) * m, Point(10, 1, 0)));
/// assert(equivalent(Vector(1, 0, 0) * m, Vector(0, 1, 0)));
/// assert(equivalent(m * m.inverse(), AffineMatrix::Identity));
/// @endcode

#pragma once

#include <cmath>
#include <cstring>
#include <functional>
#include <type_traits>

#include "Base/Linear/zeLinearLine.h"
#include "Base/Linear/zeLinearPlane.h"
#include "Base/Linear/zeLinearRange.h"
#include "Base/Linear/zeLinearTuple.h"
#include "Base/zeBaseExport.h"

namespace zeLinear {

struct AffineMatrix;
struct AffineMatrix2;
struct AffineMatrixFlt;
struct ProjMatrix;
struct ProjMatrixFlt;

template<class T>
concept AnyProjMatrix = OneOf<T, ProjMatrix, ProjMatrixFlt>;
template<class T>
concept AnyMatrix = AnyProjMatrix<T> || OneOf<T, AffineMatrix, AffineMatrix2, AffineMatrixFlt>;

/// The type of an entry: double or float.
template<AnyMatrix M>
using Entry = std::remove_all_extents_t<decltype(M::m)>;

/// The caller's promise that a ProjMatrix is affine; nothing is tested.
struct Promise {};

namespace detail {

/// A row of ProjMatrixFlt.
struct RowFlt4 {
    float x, y, z, w;

    constexpr RowFlt4(float x0, float y0, float z0, float w0) : x(x0), y(y0), z(z0), w(w0) {}
    constexpr explicit RowFlt4(const float* xyzw) : RowFlt4(xyzw[0], xyzw[1], xyzw[2], xyzw[3]) {}
};

/// `v` times the square part of a matrix. Every product of this header comes down to this one.
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
    return each<V>(std::plus<>(), times(v, matrix), matrix.row(dimension<V>));
}

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

/// The determinant of the upper 3-by-3 part, with the rows as V.
template<class V, AnyMatrix M>
constexpr Entry<M> determinant3(const M& matrix) {
    return dot(V(matrix.m[0]), cross(V(matrix.m[1]), V(matrix.m[2])));
}

} // namespace detail

/// An affine map of space.
struct AffineMatrix {
    /// The type of a row.
    using Row = Vector;

    /// The entries: m[row][column].
    double m[4][3];

    /// 1 on the diagonal.
    static const AffineMatrix Identity;

    /// The identity.
    constexpr AffineMatrix() : AffineMatrix(1.0) {}
    /// `s` on the diagonal, zero elsewhere: 1.0 is the identity, -1.0 the reflection in the origin.
    constexpr explicit AffineMatrix(double s) : m{{s, 0, 0}, {0, s, 0}, {0, 0, s}, {0, 0, 0}} {}
    /// From 12 numbers, row by row.
    explicit AffineMatrix(const double* entries) : AffineMatrix() { set(entries); }
    /// From rows: the images of the axes, and the translation.
    constexpr AffineMatrix(const Vector& x, const Vector& y, const Vector& z,
                           const Vector& translation)
        : m{{x.x, x.y, x.z},
            {y.x, y.y, y.z},
            {z.x, z.y, z.z},
            {translation.x, translation.y, translation.z}} {}
    constexpr AffineMatrix(const AffineMatrixFlt& other);
    /// Takes the first three columns and ignores the fourth.
    constexpr AffineMatrix(const Promise&, const ProjMatrix& affine);

    /// 12 numbers, row by row.
    void set(const double* entries) { std::memcpy(m, entries, sizeof m); }
    void get(double* entries) const { std::memcpy(entries, m, sizeof m); }
    /// A row; the last is the translation.
    constexpr Vector row(int i) const { return Vector(m[i]); }
    constexpr Vector getTranslate() const { return row(3); }
    /// The rows, the translation first.
    constexpr void getFrame(Point& origin, Vector& x, Vector& y, Vector& z) const;
    constexpr void setFrame(const Point& origin, const Vector& x, const Vector& y, const Vector& z);

    /// Becomes the identity, and all zero.
    constexpr void identity() { *this = Identity; }
    constexpr void zero() { *this = AffineMatrix(0.0); }
    /// The 3-by-3 part becomes a_i b_j: v times it is (v · a) b. The translation stays.
    constexpr void outerProduct(const Vector& a, const Vector& b);
    /// Becomes the matrix that takes w to cross(w, v), without a translation.
    constexpr void crossMatrix(const Vector& v);

    /// `result` = a times this matrix. It must be neither `a` nor this matrix.
    constexpr void preMult(AffineMatrix& result, const AffineMatrix& a) const;
    /// This matrix becomes `a` times itself: `a` acts first.
    constexpr void preMult(const AffineMatrix& a);
    /// This matrix becomes itself times `a`: `a` acts last.
    constexpr AffineMatrix& operator*=(const AffineMatrix& a);

    /// `out` = `in` times this matrix, as the operators * below have it. See the head of the file
    /// for an `out` that is `in`.
    constexpr void preMult(Point& out, const Point& in) const;
    constexpr void preMult(Vector& out, const Vector& in) const;
    constexpr void preMult(HPoint& out, const HPoint& in) const;
    void preMult(Line& out, const Line& in) const;
    void preMult(ParamLine& out, const ParamLine& in) const;
    /// With `normals` for the normal: vectorMatrix() or normalMatrix() of this matrix, kept by the
    /// caller where it has many planes to transform. The others invert the matrix for each.
    void preMult(Plane& out, const Plane& in, const AffineMatrix& normals) const;
    void preMult(Plane& out, const Plane& in) const;
    void preMult(ParamPlane& out, const ParamPlane& in, const AffineMatrix& normals) const;
    void preMult(ParamPlane& out, const ParamPlane& in) const;
    constexpr void preMult(Range3d& out, const Range3d& in) const;

    /// Multiplies in front, as all that build: it acts before what the matrix did already.
    constexpr void translate(double dx, double dy, double dz) { translate(Vector(dx, dy, dz)); }
    constexpr void translate(const Vector& v);
    /// The translation is not touched: the scale acts before it.
    constexpr void scale(double sx, double sy, double sz);
    constexpr void scale(double s) { scale(s, s, s); }
    /// About an axis of the frame by an angle in radians, right-handed.
    ZEBASE_API void rotateX(double angle);
    ZEBASE_API void rotateY(double angle);
    ZEBASE_API void rotateZ(double angle);
    /// About a direction through the origin. An invalid axis scales by cos(angle).
    ZEBASE_API void rotate(double angle, const Normal& axis);
    /// About a line anywhere.
    ZEBASE_API void rotate(double angle, const Line& axis);
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
    /// vectorMatrix(), turned round if the determinant is negative, so that the normals of a
    /// mirrored surface keep their side.
    ZEBASE_API AffineMatrix normalMatrix(bool& ok) const;

    constexpr bool operator==(const AffineMatrix&) const = default;
};

/// An affine map of the plane.
struct AffineMatrix2 {
    /// The type of a row.
    using Row = Vector2;

    /// The entries: m[row][column].
    double m[3][2];

    /// 1 on the diagonal.
    static const AffineMatrix2 Identity;

    /// The identity.
    constexpr AffineMatrix2() : AffineMatrix2(1.0) {}
    /// `s` on the diagonal, zero elsewhere.
    constexpr explicit AffineMatrix2(double s) : m{{s, 0}, {0, s}, {0, 0}} {}
    /// From 6 numbers, row by row.
    explicit AffineMatrix2(const double* entries) : AffineMatrix2() { set(entries); }
    /// From rows: the images of the axes, and the translation.
    constexpr AffineMatrix2(const Vector2& x, const Vector2& y, const Vector2& translation)
        : m{{x.x, x.y}, {y.x, y.y}, {translation.x, translation.y}} {}

    /// 6 numbers, row by row.
    void set(const double* entries) { std::memcpy(m, entries, sizeof m); }
    void get(double* entries) const { std::memcpy(entries, m, sizeof m); }
    /// A row; the last is the translation.
    constexpr Vector2 row(int i) const { return Vector2(m[i]); }
    constexpr Vector2 getTranslate() const { return row(2); }
    /// The rows, the translation first.
    constexpr void getFrame(Point2& origin, Vector2& x, Vector2& y) const;
    constexpr void setFrame(const Point2& origin, const Vector2& x, const Vector2& y);

    /// Becomes the identity, and all zero.
    constexpr void identity() { *this = Identity; }
    constexpr void zero() { *this = AffineMatrix2(0.0); }

    /// As in AffineMatrix.
    constexpr void preMult(AffineMatrix2& result, const AffineMatrix2& a) const;
    constexpr void preMult(const AffineMatrix2& a);
    constexpr AffineMatrix2& operator*=(const AffineMatrix2& a);
    constexpr void preMult(Point2& out, const Point2& in) const;
    constexpr void preMult(Vector2& out, const Vector2& in) const;
    constexpr void preMult(Range2d& out, const Range2d& in) const;

    /// As in AffineMatrix: in front.
    constexpr void translate(double dx, double dy) { translate(Vector2(dx, dy)); }
    constexpr void translate(const Vector2& v);
    constexpr void scale(double sx, double sy);
    constexpr void scale(double s) { scale(s, s); }
    /// About the origin by an angle in radians, from x towards y.
    ZEBASE_API void rotate(double angle);

    /// As in AffineMatrix, by elimination with pivots.
    ZEBASE_API bool invert();
    ZEBASE_API AffineMatrix2 inverse() const;

    constexpr bool operator==(const AffineMatrix2&) const = default;
};

/// An affine map of space in single precision: to store and to apply. It is built and inverted in
/// double precision, and converted.
struct AffineMatrixFlt {
    /// The type of a row.
    using Row = VectorFlt;

    /// The entries: m[row][column].
    float m[4][3];

    /// 1 on the diagonal.
    static const AffineMatrixFlt Identity;

    /// The identity.
    constexpr AffineMatrixFlt() : AffineMatrixFlt(1.0F) {}
    /// `s` on the diagonal, zero elsewhere.
    constexpr explicit AffineMatrixFlt(float s) : m{{s, 0, 0}, {0, s, 0}, {0, 0, s}, {0, 0, 0}} {}
    /// From 12 numbers, row by row.
    explicit AffineMatrixFlt(const float* entries) : AffineMatrixFlt() {
        std::memcpy(m, entries, sizeof m);
    }
    /// From rows: the images of the axes, and the translation.
    constexpr AffineMatrixFlt(const VectorFlt& x, const VectorFlt& y, const VectorFlt& z,
                              const VectorFlt& translation)
        : m{{x.x, x.y, x.z},
            {y.x, y.y, y.z},
            {z.x, z.y, z.z},
            {translation.x, translation.y, translation.z}} {}
    constexpr explicit AffineMatrixFlt(const AffineMatrix& other);
    constexpr AffineMatrixFlt& operator=(const AffineMatrix& other);

    /// A row; the last is the translation.
    constexpr VectorFlt row(int i) const { return VectorFlt(m[i]); }

    /// Becomes the identity, and all zero.
    constexpr void identity() { *this = Identity; }
    constexpr void zero() { *this = AffineMatrixFlt(0.0F); }

    /// As in AffineMatrix.
    constexpr void preMult(AffineMatrixFlt& result, const AffineMatrixFlt& a) const;
    constexpr void preMult(const AffineMatrixFlt& a);
    constexpr AffineMatrixFlt& operator*=(const AffineMatrixFlt& a);
    constexpr void preMult(PointFlt& out, const PointFlt& in) const;
    constexpr void preMult(VectorFlt& out, const VectorFlt& in) const;

    constexpr bool operator==(const AffineMatrixFlt&) const = default;
};

/// A projective map of space, which takes homogeneous points to homogeneous points.
struct ProjMatrix {
    /// The type of a row.
    using Row = Tuple4;

    /// The entries: m[row][column].
    double m[4][4];

    /// 1 on the diagonal.
    static const ProjMatrix Identity;

    /// The identity.
    constexpr ProjMatrix() : ProjMatrix(1.0) {}
    /// `s` on the whole diagonal, zero elsewhere.
    constexpr explicit ProjMatrix(double s)
        : m{{s, 0, 0, 0}, {0, s, 0, 0}, {0, 0, s, 0}, {0, 0, 0, s}} {}
    /// From 16 numbers, row by row.
    explicit ProjMatrix(const double* entries) : ProjMatrix() { set(entries); }
    /// From rows.
    constexpr ProjMatrix(const Tuple4& x, const Tuple4& y, const Tuple4& z, const Tuple4& w)
        : m{{x.x, x.y, x.z, x.w},
            {y.x, y.y, y.z, y.w},
            {z.x, z.y, z.z, z.w},
            {w.x, w.y, w.z, w.w}} {}
    /// With a fourth column of 0, 0, 0, 1.
    constexpr ProjMatrix(const AffineMatrix& affine);
    constexpr ProjMatrix(const ProjMatrixFlt& other);

    /// 16 numbers, row by row.
    void set(const double* entries) { std::memcpy(m, entries, sizeof m); }
    void get(double* entries) const { std::memcpy(entries, m, sizeof m); }
    /// A row.
    constexpr Tuple4 row(int i) const { return Tuple4(m[i]); }

    /// Becomes the identity.
    constexpr void identity() { *this = Identity; }

    /// As in AffineMatrix.
    constexpr void preMult(ProjMatrix& result, const ProjMatrix& a) const;
    constexpr void preMult(const ProjMatrix& a);
    constexpr ProjMatrix& operator*=(const ProjMatrix& a);
    constexpr void preMult(HPoint& out, const HPoint& in) const;
    constexpr void preMult(Tuple4& out, const Tuple4& in) const;

    /// Transposes all four rows.
    constexpr void transpose();
    /// The determinant of the upper 3-by-3 part.
    constexpr double det3x3() const { return detail::determinant3<Vector>(*this); }
    ZEBASE_API double det4x4() const;
    /// Whether |det4x4()| is not below epsilonTol.
    bool isInvertible() const { return !(std::fabs(det4x4()) < epsilonTol); }
    /// Whether the last column is 0, 0, 0, 1, to less than epsilonTol.
    bool isAffine() const;

    /// As in AffineMatrix, on all four columns.
    ZEBASE_API bool invert();
    ZEBASE_API bool invertFast();
    ZEBASE_API ProjMatrix inverse() const;

    constexpr bool operator==(const ProjMatrix&) const = default;
};

/// A projective map in single precision.
struct ProjMatrixFlt {
    /// The type of a row.
    using Row = detail::RowFlt4;

    /// The entries: m[row][column].
    float m[4][4];

    /// 1 on the diagonal.
    static const ProjMatrixFlt Identity;

    /// The identity.
    constexpr ProjMatrixFlt() : ProjMatrixFlt(1.0F) {}
    /// `s` on the whole diagonal, zero elsewhere.
    constexpr explicit ProjMatrixFlt(float s)
        : m{{s, 0, 0, 0}, {0, s, 0, 0}, {0, 0, s, 0}, {0, 0, 0, s}} {}
    /// From 16 numbers, row by row.
    explicit ProjMatrixFlt(const float* entries) : ProjMatrixFlt() { set(entries); }
    /// From rows.
    constexpr ProjMatrixFlt(const Row& x, const Row& y, const Row& z, const Row& w)
        : m{{x.x, x.y, x.z, x.w},
            {y.x, y.y, y.z, y.w},
            {z.x, z.y, z.z, z.w},
            {w.x, w.y, w.z, w.w}} {}
    constexpr explicit ProjMatrixFlt(const ProjMatrix& other);

    /// 16 numbers, row by row.
    void set(const float* entries) { std::memcpy(m, entries, sizeof m); }
    void get(float* entries) const { std::memcpy(entries, m, sizeof m); }
    /// A row.
    constexpr Row row(int i) const { return Row(m[i]); }

    /// Becomes the identity.
    constexpr void identity() { *this = Identity; }

    /// As in ProjMatrix.
    constexpr void preMult(ProjMatrixFlt& result, const ProjMatrixFlt& a) const;
    constexpr void preMult(const ProjMatrixFlt& a);
    constexpr ProjMatrixFlt& operator*=(const ProjMatrixFlt& a);
    constexpr void transpose();
    constexpr float det3x3() const { return detail::determinant3<VectorFlt>(*this); }

    constexpr bool operator==(const ProjMatrixFlt&) const = default;
};

inline constexpr AffineMatrix AffineMatrix::Identity(1.0);
inline constexpr AffineMatrix2 AffineMatrix2::Identity(1.0);
inline constexpr AffineMatrixFlt AffineMatrixFlt::Identity(1.0F);
inline constexpr ProjMatrix ProjMatrix::Identity(1.0);
inline constexpr ProjMatrixFlt ProjMatrixFlt::Identity(1.0F);

// What the matrices share, entry by entry

namespace detail {

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

// Sums and multiples, of every entry: the translation too.

template<AnyMatrix M>
constexpr M operator+(const M& a, const M& b) {
    return detail::eachEntry<M>(std::plus<>(), a, b);
}

template<AnyMatrix M>
constexpr M operator-(const M& a, const M& b) {
    return detail::eachEntry<M>(std::minus<>(), a, b);
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

// What a matrix maps: row vectors, from the left

constexpr Point operator*(const Point& p, const AffineMatrix& m) {
    return detail::timesAndTranslate(p, m);
}
/// Without the translation.
constexpr Vector operator*(const Vector& v, const AffineMatrix& m) {
    return detail::times(v, m);
}
/// Adds `w` times the translation, and keeps `w`.
constexpr HPoint operator*(const HPoint& p, const AffineMatrix& m) {
    const Vector v = Vector(p.x, p.y, p.z) * m + p.w * m.row(3);
    return HPoint(v.x, v.y, v.z, p.w);
}
/// The direction as a vector, normalised again.
inline Line operator*(const Line& line, const AffineMatrix& m) {
    Line out;
    m.preMult(out, line);
    return out;
}
inline ParamLine operator*(const ParamLine& line, const AffineMatrix& m) {
    return ParamLine(line.point * m, line.vector * m);
}
/// The normal by the vectorMatrix() of `m`.
inline Plane operator*(const Plane& plane, const AffineMatrix& m) {
    Plane out;
    m.preMult(out, plane);
    return out;
}
/// The same; `u` and `v` as vectors, made orthogonal again.
inline ParamPlane operator*(const ParamPlane& plane, const AffineMatrix& m) {
    ParamPlane out;
    m.preMult(out, plane);
    return out;
}
/// The smallest range that holds the images of the eight corners; unbounded stays unbounded.
constexpr Range3d operator*(const Range3d& range, const AffineMatrix& m) {
    return detail::transformedRange(range, m);
}

constexpr Point2 operator*(const Point2& p, const AffineMatrix2& m) {
    return detail::timesAndTranslate(p, m);
}
constexpr Vector2 operator*(const Vector2& v, const AffineMatrix2& m) {
    return detail::times(v, m);
}
constexpr Range2d operator*(const Range2d& range, const AffineMatrix2& m) {
    return detail::transformedRange(range, m);
}

constexpr PointFlt operator*(const PointFlt& p, const AffineMatrixFlt& m) {
    return detail::timesAndTranslate(p, m);
}
constexpr VectorFlt operator*(const VectorFlt& v, const AffineMatrixFlt& m) {
    return detail::times(v, m);
}

constexpr HPoint operator*(const HPoint& p, const ProjMatrix& m) {
    return detail::times(p, m);
}
constexpr Tuple4 operator*(const Tuple4& t, const ProjMatrix& m) {
    return detail::times(t, m);
}

// AffineMatrix

constexpr AffineMatrix::AffineMatrix(const AffineMatrixFlt& other)
    : AffineMatrix(other.row(0), other.row(1), other.row(2), other.row(3)) {}

constexpr AffineMatrix::AffineMatrix(const Promise&, const ProjMatrix& affine)
    : AffineMatrix(Vector(affine.m[0]), Vector(affine.m[1]), Vector(affine.m[2]),
                   Vector(affine.m[3])) {}

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

constexpr void AffineMatrix::preMult(AffineMatrix& result, const AffineMatrix& a) const {
    result = a * *this;
}

constexpr void AffineMatrix::preMult(const AffineMatrix& a) {
    *this = a * *this;
}

constexpr AffineMatrix& AffineMatrix::operator*=(const AffineMatrix& a) {
    return *this = *this * a;
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

constexpr void AffineMatrix2::preMult(AffineMatrix2& result, const AffineMatrix2& a) const {
    result = a * *this;
}

constexpr void AffineMatrix2::preMult(const AffineMatrix2& a) {
    *this = a * *this;
}

constexpr AffineMatrix2& AffineMatrix2::operator*=(const AffineMatrix2& a) {
    return *this = *this * a;
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

constexpr void AffineMatrixFlt::preMult(AffineMatrixFlt& result, const AffineMatrixFlt& a) const {
    result = a * *this;
}

constexpr void AffineMatrixFlt::preMult(const AffineMatrixFlt& a) {
    *this = a * *this;
}

constexpr AffineMatrixFlt& AffineMatrixFlt::operator*=(const AffineMatrixFlt& a) {
    return *this = *this * a;
}

constexpr void AffineMatrixFlt::preMult(PointFlt& out, const PointFlt& in) const {
    if (&out != &in)
        out = in * *this;
}

constexpr void AffineMatrixFlt::preMult(VectorFlt& out, const VectorFlt& in) const {
    if (&out != &in)
        out = in * *this;
}

// ProjMatrix

constexpr ProjMatrix::ProjMatrix(const AffineMatrix& affine)
    : m{{affine.m[0][0], affine.m[0][1], affine.m[0][2], 0},
        {affine.m[1][0], affine.m[1][1], affine.m[1][2], 0},
        {affine.m[2][0], affine.m[2][1], affine.m[2][2], 0},
        {affine.m[3][0], affine.m[3][1], affine.m[3][2], 1}} {}

constexpr ProjMatrix::ProjMatrix(const ProjMatrixFlt& other)
    : ProjMatrix(detail::eachEntry<ProjMatrix>([](float s) -> double { return s; }, other)) {}

constexpr void ProjMatrix::preMult(ProjMatrix& result, const ProjMatrix& a) const {
    result = a * *this;
}

constexpr void ProjMatrix::preMult(const ProjMatrix& a) {
    *this = a * *this;
}

constexpr ProjMatrix& ProjMatrix::operator*=(const ProjMatrix& a) {
    return *this = *this * a;
}

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

constexpr void ProjMatrixFlt::preMult(ProjMatrixFlt& result, const ProjMatrixFlt& a) const {
    result = a * *this;
}

constexpr void ProjMatrixFlt::preMult(const ProjMatrixFlt& a) {
    *this = a * *this;
}

constexpr ProjMatrixFlt& ProjMatrixFlt::operator*=(const ProjMatrixFlt& a) {
    return *this = *this * a;
}

constexpr void ProjMatrixFlt::transpose() {
    *this = detail::transposed(*this);
}

} // namespace zeLinear

// SPDX-License-Identifier: MIT

/// @file
/// Displacements: zeLinear::Vector with its two-dimensional and single-precision forms, and
/// zeLinear::Normal, a direction of unit length that knows whether it is valid.
///
/// The four vectors and Normal share sums, scaling, dot and cross products and weighted
/// combinations, which are free functions and operators. A Normal converts to a Vector: `n * 2.0`,
/// `n + v` and `cross(n, n)` are vectors.
///
/// Division multiplies by the reciprocal and does not test for zero. Lengths are the plain root of
/// the sum of squares, so components beyond 1e154 (1e19 in single precision) overflow. Normalising
/// treats a vector that is too short as zero, and the types differ in what they leave behind:
///
/// | Type                  | Too short                               | Left behind   | Result |
/// |-----------------------|-----------------------------------------|---------------|--------|
/// | Normal                | squared length not above epsilon2Tol    | zero, invalid | false  |
/// | Vector                | the same                                | zero          | false  |
/// | VectorFlt, Vector2Flt | squared length not above epsilon2TolFlt | zero          | false  |
/// | Vector2               | length strictly below epsilonTol        | its value     | false  |
///
/// Threads: plain values, which any thread may use by itself.
///
/// @code
/// using namespace zeLinear;
/// Vector v(3, 0, 4);
/// Normal n = v.normalized();
/// assert(n.valid && v.length() == 5);
/// assert(std::fabs(dot(v, n) - 5) < 1e-12);
/// assert(!Vector(0, 0, 1e-13).normalized().valid);
/// @endcode

#pragma once

#include <cmath>

#include "Base/Linear/zeLinearComponents.h"
#include "Base/zeBaseExport.h"

namespace zeLinear {

namespace detail {

/// Scales `v` to unit length. What is not longer than the root of `tol2`, and a NaN, becomes zero.
template<class V>
bool normalizeOrZero(V& v, Scalar<V> tol2) {
    Scalar<V> scale = sumOfProducts(v, v);
    if (!(scale > tol2)) {
        v = V();
        return false;
    }
    scale = 1 / std::sqrt(scale);
    v = each<V>([scale](auto s) { return s * scale; }, v);
    return true;
}

} // namespace detail

/// A displacement in space.
struct Vector {
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    double z = 0;
    /// @}

    /// @{
    /// The unit vector along an axis.
    static const Vector xAxis;
    static const Vector yAxis;
    static const Vector zAxis;
    /// @}
    /// All zero.
    static const Vector zero;

    /// Zero.
    constexpr Vector() = default;
    /// @{
    /// From the components, in order.
    constexpr Vector(double x0, double y0, double z0) : x(x0), y(y0), z(z0) {}
    constexpr explicit Vector(const double* xyz) : x(xyz[0]), y(xyz[1]), z(xyz[2]) {}
    /// @}
    /// @{
    /// Copies the components, exactly.
    constexpr Vector(const VectorFlt& v);
    constexpr Vector(const Normal& n);
    /// @}
    /// The line's vector. A constructor, since two implicit conversions of ParamLine would make
    /// `Vector(line)` ambiguous.
    constexpr Vector(const ParamLine& line);

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(double x0, double y0, double z0) { *this = Vector(x0, y0, z0); }
    constexpr void set(const double* xyz) { *this = Vector(xyz); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0, double& z0) const { x0 = x, y0 = y, z0 = z; }
    constexpr void get(double* xyz) const { get(xyz[0], xyz[1], xyz[2]); }
    /// @}

    /// The root of the sum of squares.
    double length() const { return std::sqrt(length2()); }
    /// The sum of squares.
    constexpr double length2() const { return detail::sumOfProducts(*this, *this); }

    /// Scales to unit length; zero and false if too short.
    bool normalize();
    /// The direction of this vector; invalid if too short.
    Normal normalized() const;
    /// Turns to the opposite direction.
    constexpr void reverse() { set(-x, -y, -z); }

    /// A vector at right angles to this one: cross((-z, x, y), *this), not normalised. It is zero
    /// for zero and for the multiples of (1, -1, 1), which are parallel to (-z, x, y).
    constexpr Vector orthogonalVector() const;

    /// Compares the components exactly.
    constexpr bool operator==(const Vector&) const = default;
};

/// A displacement in the plane.
struct Vector2 {
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    /// @}

    /// @{
    /// The unit vector along an axis.
    static const Vector2 xAxis;
    static const Vector2 yAxis;
    /// @}
    /// All zero.
    static const Vector2 zero;

    /// Zero.
    constexpr Vector2() = default;
    /// @{
    /// From the components, in order.
    constexpr Vector2(double x0, double y0) : x(x0), y(y0) {}
    constexpr explicit Vector2(const double* xy) : x(xy[0]), y(xy[1]) {}
    /// @}
    /// Copies the components, exactly.
    constexpr Vector2(const Vector2Flt& v);

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(double x0, double y0) { *this = Vector2(x0, y0); }
    constexpr void set(const double* xy) { *this = Vector2(xy); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0) const { x0 = x, y0 = y; }
    constexpr void get(double* xy) const { get(xy[0], xy[1]); }
    /// @}

    /// The root of the sum of squares.
    double length() const { return std::sqrt(length2()); }
    /// The sum of squares.
    constexpr double length2() const { return detail::sumOfProducts(*this, *this); }

    /// Scales to unit length. Unlike the other vectors it keeps its value if it is too short (the
    /// result is then false), and accepts a length of exactly epsilonTol: callers rely on both.
    bool normalize();
    /// Turns to the opposite direction.
    constexpr void reverse() { set(-x, -y); }

    /// This vector turned by a quarter to the left: (-y, x).
    constexpr Vector2 orthogonalVector() const { return Vector2(-y, x); }

    /// Compares the components exactly.
    constexpr bool operator==(const Vector2&) const = default;
};

/// A displacement in space, in single precision.
struct VectorFlt {
    /// @{
    /// A component.
    float x = 0;
    float y = 0;
    float z = 0;
    /// @}

    /// @{
    /// The unit vector along an axis.
    static const VectorFlt xAxis;
    static const VectorFlt yAxis;
    static const VectorFlt zAxis;
    /// @}
    /// All zero.
    static const VectorFlt zero;

    /// Zero.
    constexpr VectorFlt() = default;
    /// @{
    /// From the components, in order.
    constexpr VectorFlt(Number auto x0, Number auto y0, Number auto z0)
        : x(static_cast<float>(x0)), y(static_cast<float>(y0)), z(static_cast<float>(z0)) {}
    constexpr explicit VectorFlt(const float* xyz) : x(xyz[0]), y(xyz[1]), z(xyz[2]) {}
    /// @}
    /// @{
    /// Rounds each component to single precision.
    constexpr explicit VectorFlt(const Vector& v) : VectorFlt(v.x, v.y, v.z) {}
    constexpr explicit VectorFlt(const Normal& n) : VectorFlt(Vector(n)) {}
    /// @}

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(Number auto x0, Number auto y0, Number auto z0) {
        *this = VectorFlt(x0, y0, z0);
    }
    constexpr void set(const float* xyz) { *this = VectorFlt(xyz); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(float& x0, float& y0, float& z0) const { x0 = x, y0 = y, z0 = z; }
    constexpr void get(float* xyz) const { get(xyz[0], xyz[1], xyz[2]); }
    /// @}

    /// The root of the sum of squares.
    float length() const { return std::sqrt(length2()); }
    /// The sum of squares.
    constexpr float length2() const { return detail::sumOfProducts(*this, *this); }

    /// Scales to unit length; zero and false if too short.
    bool normalize() { return detail::normalizeOrZero(*this, epsilon2TolFlt); }
    /// Turns to the opposite direction.
    constexpr void reverse() { set(-x, -y, -z); }

    /// Compares the components exactly.
    constexpr bool operator==(const VectorFlt&) const = default;
};

/// A displacement in the plane, in single precision.
struct Vector2Flt {
    /// @{
    /// A component.
    float x = 0;
    float y = 0;
    /// @}

    /// @{
    /// The unit vector along an axis.
    static const Vector2Flt xAxis;
    static const Vector2Flt yAxis;
    /// @}
    /// All zero.
    static const Vector2Flt zero;

    /// Zero.
    constexpr Vector2Flt() = default;
    /// @{
    /// From the components, in order.
    constexpr Vector2Flt(Number auto x0, Number auto y0)
        : x(static_cast<float>(x0)), y(static_cast<float>(y0)) {}
    constexpr explicit Vector2Flt(const float* xy) : x(xy[0]), y(xy[1]) {}
    /// @}
    /// Rounds each component to single precision.
    constexpr explicit Vector2Flt(const Vector2& v) : Vector2Flt(v.x, v.y) {}

    /// @{
    /// Stores what the constructor of the same arguments does.
    constexpr void set(Number auto x0, Number auto y0) { *this = Vector2Flt(x0, y0); }
    constexpr void set(const float* xy) { *this = Vector2Flt(xy); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(float& x0, float& y0) const { x0 = x, y0 = y; }
    constexpr void get(float* xy) const { get(xy[0], xy[1]); }
    /// @}

    /// The root of the sum of squares.
    float length() const { return std::sqrt(length2()); }
    /// The sum of squares.
    constexpr float length2() const { return detail::sumOfProducts(*this, *this); }

    /// Scales to unit length; zero and false if too short.
    bool normalize() { return detail::normalizeOrZero(*this, epsilon2TolFlt); }
    /// Turns to the opposite direction.
    constexpr void reverse() { set(-x, -y); }

    /// Compares the components exactly.
    constexpr bool operator==(const Vector2Flt&) const = default;
};

/// A direction: of unit length with `valid` true, or all zero with `valid` false. Constructors,
/// set() and assignment normalise; code that writes the fields itself calls normalize() afterwards.
///
/// Of components whose sum of squares overflows neither holds: `Normal(1e155, 0, 0)` is all zero
/// with `valid` true, and an infinite component becomes NaN. Scale such vectors down first.
class Normal {
public:
    /// @{
    /// A component.
    double x = 0;
    double y = 0;
    double z = 0;
    /// @}
    /// Whether this is a direction.
    bool valid = false;

    /// @{
    /// The direction of an axis.
    static const Normal xAxis;
    static const Normal yAxis;
    static const Normal zAxis;
    /// @}

    /// Invalid.
    constexpr Normal() = default;
    /// @{
    /// From the components, which are normalised.
    Normal(double x0, double y0, double z0) : x(x0), y(y0), z(z0) { normalize(); }
    explicit Normal(const double* xyz) : Normal(xyz[0], xyz[1], xyz[2]) {}
    /// @}
    /// The direction of a vector.
    explicit Normal(const Vector& v) : Normal(v.x, v.y, v.z) {}
    /// The direction of the line's vector. See Vector(const ParamLine&).
    Normal(const ParamLine& line);
    /// @{
    /// Stores what the constructor of the same argument does.
    Normal& operator=(const Vector& v) { return *this = Normal(v); }
    Normal& operator=(const ParamLine& line) { return *this = Normal(line); }
    /// @}

    /// @{
    /// Stores what the constructor of the same arguments does.
    void set(double x0, double y0, double z0) { *this = Normal(x0, y0, z0); }
    void set(const double* xyz) { *this = Normal(xyz); }
    /// @}
    /// @{
    /// Reads the components.
    constexpr void get(double& x0, double& y0, double& z0) const { x0 = x, y0 = y, z0 = z; }
    constexpr void get(double* xyz) const { get(xyz[0], xyz[1], xyz[2]); }
    /// @}

    /// Scales to unit length; invalid if too short. The result is `valid`.
    bool normalize();
    /// Becomes all zero and invalid.
    constexpr void setInvalid() { *this = Normal(); }
    /// Turns to the opposite direction.
    constexpr void reverse() { *this = -*this; }
    /// The opposite direction, as valid as this one.
    constexpr Normal operator-() const { return Normal(-x, -y, -z, valid); }

    /// A vector at right angles, as Vector::orthogonalVector() has it.
    constexpr Vector orthogonalVector() const { return Vector(*this).orthogonalVector(); }

    /// Compares the components exactly; `valid` is not compared.
    constexpr bool operator==(const Normal& n) const { return Vector(*this) == Vector(n); }

private:
    constexpr Normal(double x0, double y0, double z0, bool isValid)
        : x(x0), y(y0), z(z0), valid(isValid) {}
};

// The constants

inline constexpr Vector Vector::xAxis(1, 0, 0);
inline constexpr Vector Vector::yAxis(0, 1, 0);
inline constexpr Vector Vector::zAxis(0, 0, 1);
inline constexpr Vector Vector::zero(0, 0, 0);
inline constexpr Vector2 Vector2::xAxis(1, 0);
inline constexpr Vector2 Vector2::yAxis(0, 1);
inline constexpr Vector2 Vector2::zero(0, 0);
inline constexpr VectorFlt VectorFlt::xAxis(1, 0, 0);
inline constexpr VectorFlt VectorFlt::yAxis(0, 1, 0);
inline constexpr VectorFlt VectorFlt::zAxis(0, 0, 1);
inline constexpr VectorFlt VectorFlt::zero(0, 0, 0);
inline constexpr Vector2Flt Vector2Flt::xAxis(1, 0);
inline constexpr Vector2Flt Vector2Flt::yAxis(0, 1);
inline constexpr Vector2Flt Vector2Flt::zero(0, 0);
inline constexpr Normal Normal::xAxis(1, 0, 0, true);
inline constexpr Normal Normal::yAxis(0, 1, 0, true);
inline constexpr Normal Normal::zAxis(0, 0, 1, true);

// Members that need a sibling

constexpr Vector::Vector(const VectorFlt& v) : x(v.x), y(v.y), z(v.z) {}
constexpr Vector::Vector(const Normal& n) : x(n.x), y(n.y), z(n.z) {}
constexpr Vector2::Vector2(const Vector2Flt& v) : x(v.x), y(v.y) {}

inline bool Normal::normalize() {
    Vector direction(*this);
    valid = detail::normalizeOrZero(direction, epsilon2Tol);
    direction.get(x, y, z);
    return valid;
}

inline bool Vector::normalize() {
    return detail::normalizeOrZero(*this, epsilon2Tol);
}

inline Normal Vector::normalized() const {
    return Normal(*this);
}

/// A vector or a Normal.
template<class T>
concept Displacement = AnyVector<T> || std::same_as<T, Normal>;

/// The vector type that a displacement counts as: Vector for a Normal, otherwise itself.
template<Displacement T>
using VectorOf = std::conditional_t<std::same_as<T, Normal>, Vector, T>;

/// What mixes with Other in sums and products: the same type, and a Normal with a Vector.
template<class T, class Other>
concept DisplacementLike = Displacement<T> && std::same_as<VectorOf<T>, VectorOf<Other>>;

/// @{
/// Arithmetic, each component by itself.
template<Displacement A, DisplacementLike<A> B>
constexpr VectorOf<A> operator+(const A& a, const B& b) {
    return detail::each<VectorOf<A>>(detail::Plus(), a, b);
}

template<Displacement A, DisplacementLike<A> B>
constexpr VectorOf<A> operator-(const A& a, const B& b) {
    return detail::each<VectorOf<A>>(detail::Minus(), a, b);
}

template<AnyVector V>
constexpr V operator-(const V& v) {
    return detail::each<V>(detail::Negate(), v);
}

template<Displacement A>
constexpr VectorOf<A> operator*(const A& a, Scalar<A> factor) {
    return detail::each<VectorOf<A>>([factor](auto s) { return s * factor; }, a);
}

template<Displacement A>
constexpr VectorOf<A> operator*(Scalar<A> factor, const A& a) {
    return a * factor;
}

template<AnyVector V, DisplacementLike<V> B>
constexpr V& operator+=(V& a, const B& b) {
    return a = a + b;
}

template<AnyVector V, DisplacementLike<V> B>
constexpr V& operator-=(V& a, const B& b) {
    return a = a - b;
}

template<AnyVector V>
constexpr V& operator*=(V& v, Scalar<V> factor) {
    return v = v * factor;
}
/// @}

/// @{
/// Multiplies by the reciprocal of `divisor`, which may be zero.
template<Displacement A>
constexpr VectorOf<A> operator/(const A& a, Scalar<A> divisor) {
    return a * (1 / divisor);
}

template<AnyVector V>
constexpr V& operator/=(V& v, Scalar<V> divisor) {
    return v = v / divisor;
}
/// @}

/// The dot product.
template<Displacement A, DisplacementLike<A> B>
constexpr Scalar<A> dot(const A& a, const B& b) {
    return detail::sumOfProducts(a, b);
}

/// The cross product, right-handed: cross(x, y) is z. Also of two normals it is a Vector.
template<Displacement A, DisplacementLike<A> B>
requires(detail::dimension<A> == 3) constexpr VectorOf<A> cross(const A& a, const B& b) {
    return VectorOf<A>(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

constexpr Vector Vector::orthogonalVector() const {
    return cross(Vector(-z, x, y), *this);
}

inline bool Vector2::normalize() {
    const double l = length();
    if (l < epsilonTol)
        return false;
    *this /= l;
    return true;
}

/// What combine() takes: it works on each component by itself, of an HPoint on all four.
template<class T>
concept Combinable = AnyVector<T> || AnyPoint<T> || std::same_as<T, HPoint>;

/// The middle: (a + b) times one half.
template<Combinable T>
constexpr T combine(const T& a, const T& b) {
    return detail::each<T>([](auto s, auto t) { return (s + t) * Scalar<T>(0.5); }, a, b);
}

/// weightA a + weightB b. The weights need not add up to 1.
template<Combinable T>
constexpr T combine(Scalar<T> weightA, const T& a, Scalar<T> weightB, const T& b) {
    return detail::each<T>([=](auto s, auto t) { return weightA * s + weightB * t; }, a, b);
}

/// The sum of weight times item over `n` items. The first is always used, even if `n` is below 1.
/// The weights are not normalised.
template<Combinable T>
constexpr T combine(int n, const Scalar<T>* weights, const T* items) {
    T sum = detail::each<T>([w = weights[0]](auto s) { return w * s; }, items[0]);
    for (int i = 1; i < n; ++i)
        sum =
            detail::each<T>([w = weights[i]](auto s, auto t) { return s + w * t; }, sum, items[i]);
    return sum;
}

/// The mean: the sum of `n` items times 1 / `n`. Callers pass at least 1; 0 divides by zero.
template<Combinable T>
constexpr T combine(int n, const T* items) {
    T sum = items[0];
    for (int i = 1; i < n; ++i)
        sum = detail::each<T>(detail::Plus(), sum, items[i]);
    const auto scale = 1 / static_cast<Scalar<T>>(n);
    return detail::each<T>([scale](auto s) { return s * scale; }, sum);
}

// Projections

/// The length of the projection of `v` on `direction`, with its sign.
constexpr double projectMagnitude(const Vector& v, const Normal& direction) {
    return dot(v, direction);
}

/// The same as projectMagnitude().
constexpr double projectParam(const Vector& v, const Normal& direction) {
    return dot(v, direction);
}

/// The projection of `a` on `b` in units of `b`; 0 if `b` is shorter than epsilonTol.
inline double projectParam(const Vector& a, const Vector& b) {
    const double l = b.length();
    return l < epsilonTol ? 0 : dot(a, b) / (l * l);
}

/// The projection of `v` on `direction`.
constexpr Vector project(const Vector& v, const Normal& direction) {
    return direction * dot(v, direction);
}

// Angles and directions

/// Both valid, and `|a·b|` at least `tol`.
inline bool isParallel(const Normal& a, const Normal& b, double tol = parallelTol) {
    return a.valid && b.valid && std::fabs(dot(a, b)) >= tol;
}

/// Both valid, and `|a·b|` at most `tol`.
inline bool isPerpendicular(const Normal& a, const Normal& b, double tol = perpendicularTol) {
    return a.valid && b.valid && std::fabs(dot(a, b)) <= tol;
}

/// The angle between two valid directions, 0 to pi. It is never NaN, since the dot product is
/// clamped to -1 through 1; near 0 and pi it is exact to some 4e-8 only.
ZEBASE_API double angle(const Normal& a, const Normal& b);

/// Stores the angle in `out` and returns true; pi / 2 and false if a direction is not valid.
ZEBASE_API bool angle(const Normal& a, const Normal& b, double& out);

/// The angle of `v` in the plane of two axes, counted from `xAxis` towards `yAxis`: -pi to pi, or
/// 0 to 2 pi if `positive`. 0 if `v` is not valid.
ZEBASE_API double unitCircleRotation(const Normal& v, const Normal& xAxis, const Normal& yAxis,
                                     bool positive);

/// `v` turned by `angle` radians about `axis`, right-handed; `v` itself if `axis` is not valid.
ZEBASE_API Vector rotate(const Vector& v, const Normal& axis, double angle);

/// The direction at `t` (0 is `a`, 1 is `b`) of the turn from `a` to `b`; `a` if one of them is
/// not valid or if they coincide. Opposite directions turn about `a.orthogonalVector()`; along
/// (1, -1, 1), where that is zero, the result stays at `a`.
ZEBASE_API Normal interpolate(const Normal& a, const Normal& b, double t);

/// Interpolates the direction as that of two normals, and the length linearly.
ZEBASE_API Vector interpolate(const Vector& a, const Vector& b, double t);

} // namespace zeLinear

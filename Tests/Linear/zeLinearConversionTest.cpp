// SPDX-License-Identifier: MIT

// Every constructor, conversion, set() and get(), with components that differ, so that exchanged
// fields show. What is constexpr is proven at compile time.

#include <array>
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "Base/Linear/zeLinearQuaternion.h"

namespace {

using namespace zeLinear;

/// The components as the fields have them.
template<AnyComponents T>
constexpr auto fields(const T& t) {
    if constexpr (detail::dimension<T> == 2)
        return std::array{t.x, t.y};
    else if constexpr (detail::dimension<T> == 3)
        return std::array{t.x, t.y, t.z};
    else
        return std::array{t.x, t.y, t.z, t.w};
}

/// Whether T takes the first of the numbers as components in each way, and gives them back.
template<class T>
constexpr bool takes(auto... numbers) {
    const std::tuple all(numbers...);
    return [&]<std::size_t... I>(std::index_sequence<I...>) {
        const std::array expected{static_cast<Scalar<T>>(std::get<I>(all))...};
        T stored;
        stored.set(std::get<I>(all)...);
        T copied;
        copied.set(expected.data());
        auto array = expected;
        array.fill(0);
        auto single = array;
        stored.get(array.data());
        stored.get(single[I]...);
        return fields(T(std::get<I>(all)...)) == expected && fields(stored) == expected &&
               fields(copied) == expected && fields(T(expected.data())) == expected &&
               array == expected && single == expected;
    }
    (std::make_index_sequence<detail::dimension<T>>());
}

template<class T>
constexpr bool takesMixtures() {
    return takes<T>(0.5, 1, 2, 3) && takes<T>(1, 0.5F, 2U, 3.25) &&
           takes<T>(short(3), true, -0.5, 'c') && takes<T>(0.5F, 0.1, 1, -2) &&
           takes<T>(1, 2, 3, 4) && takes<T>(1.F, 2.F, 3.F, 4.F) &&
           takes<T>(16'777'217, 1e-3, 0.1F, 7);
}

template<class... Ts>
constexpr bool allTakeMixtures = (takesMixtures<Ts>() && ...);
static_assert(allTakeMixtures<Tuple2, Tuple3, Tuple4, Vector, Vector2, VectorFlt, Vector2Flt, Point,
                              Point2, PointFlt, Point2Flt, RPoint, HPoint, Quaternion>);
// Single precision takes wide and narrowing types as well, also between braces.
static_assert(takes<VectorFlt>(1L << 60, 0.1L, 2UL) && takes<Point2Flt>(-1LL, 0.9L));
static_assert([](int i, double s) {
    return PointFlt{i, s, i} == PointFlt(2.F, 0.5F, 2.F);
}(2, 0.5));
static_assert(!std::is_constructible_v<VectorFlt, const float*, int, int> &&
              !std::is_constructible_v<Point2Flt, std::nullptr_t, int>);

/// Whether `from` becomes a To with the expected components, by constructor and, where it exists,
/// by assignment and set().
template<class To, class From>
constexpr bool gives(const From& from, auto... expected) {
    const std::array<Scalar<To>, sizeof...(expected)> components{
        static_cast<Scalar<To>>(expected)...};
    bool same = fields(To(from)) == components;
    To to;
    if constexpr (requires { to = from; })
        same = same && fields(to = from) == components;
    to = To();
    if constexpr (requires { to.set(from); })
        same = same && (to.set(from), fields(to) == components);
    return same;
}

constexpr Normal numbered() {
    Normal n;
    n.x = 1, n.y = 2, n.z = 3;
    return n;
}

constexpr ParamLine line(Point(4, 5, 6), Vector(1, 2, 3));

static_assert(gives<Tuple2>(Point2(1, 2), 1, 2) && gives<Tuple2>(Vector2(1, 2), 1, 2));
static_assert(gives<Tuple3>(Point(1, 2, 3), 1, 2, 3) && gives<Tuple3>(Vector(1, 2, 3), 1, 2, 3) &&
              gives<Tuple3>(numbered(), 1, 2, 3));
static_assert(gives<Tuple4>(RPoint(1, 2, 3, 4), 1, 2, 3, 4) &&
              gives<Tuple4>(HPoint(1, 2, 3, 4), 1, 2, 3, 4));
static_assert(gives<Vector>(VectorFlt(1, 2, 3), 1, 2, 3) && gives<Vector>(numbered(), 1, 2, 3) &&
              gives<Vector>(line, 1, 2, 3));
static_assert(gives<VectorFlt>(Vector(1, 2, 3), 1, 2, 3) && gives<VectorFlt>(numbered(), 1, 2, 3));
static_assert(gives<Vector2>(Vector2Flt(1, 2), 1, 2) && gives<Vector2Flt>(Vector2(1, 2), 1, 2));
static_assert(gives<Point>(PointFlt(1, 2, 3), 1, 2, 3) && gives<Point>(Point2(1, 2), 1, 2, 0) &&
              gives<Point>(RPoint(1, 2, 3, 4), 1, 2, 3) &&
              gives<Point>(HPoint(1, 2, 3, 4), 0.25, 0.5, 0.75));
static_assert(gives<PointFlt>(Point(1, 2, 3), 1, 2, 3) &&
              gives<PointFlt>(Point2Flt(1, 2), 1, 2, 0));
static_assert(gives<Point2>(Point2Flt(1, 2), 1, 2) && gives<Point2Flt>(Point2(1, 2), 1, 2));
static_assert(gives<RPoint>(Point(1, 2, 3), 1, 2, 3, 1) &&
              gives<RPoint>(HPoint(1, 2, 3, 4), 0.25, 0.5, 0.75, 4));
static_assert(gives<HPoint>(Point(1, 2, 3), 1, 2, 3, 1) &&
              gives<HPoint>(RPoint(1, 2, 3, 4), 4, 8, 12, 4));

// What is implicit and what is not: what loses is explicit, and a Normal counts as a Vector.
static_assert(std::is_convertible_v<VectorFlt, Vector> &&
              !std::is_convertible_v<Vector, VectorFlt>);
static_assert(std::is_convertible_v<Normal, Vector> && !std::is_convertible_v<Vector, Normal>);
static_assert(!std::is_convertible_v<HPoint, Point> && !std::is_convertible_v<Point2, Point>);
static_assert(std::is_convertible_v<ParamLine, Vector> && std::is_convertible_v<ParamLine, Normal>);
static_assert(std::is_convertible_v<ParamPlane, Normal> && !std::is_convertible_v<ParamLine, Line>);
// A bare 0 would be a number or a null pointer: neither converts by itself.
static_assert(!std::is_convertible_v<double, AffineMatrix>);

/// Rows 1 2 3, 4 5 6, 7 8 9 and 10 11 12.
constexpr AffineMatrix affine(Vector(1, 2, 3), Vector(4, 5, 6), Vector(7, 8, 9),
                              Vector(10, 11, 12));
constexpr ProjMatrix projective(Tuple4(1, 2, 3, 0), Tuple4(4, 5, 6, 0), Tuple4(7, 8, 9, 0),
                                Tuple4(10, 11, 12, 1));
static_assert(ProjMatrix(affine) == projective && AffineMatrix(Promise(), projective) == affine);
static_assert(AffineMatrix(AffineMatrixFlt(affine)) == affine &&
              (AffineMatrixFlt() = affine) == AffineMatrixFlt(affine));
static_assert(ProjMatrix(ProjMatrixFlt(projective)) == projective);

/// A matrix from numbered entries and back, in row order.
template<class M>
void expectNumberedEntries() {
    using E = Entry<M>;
    constexpr std::size_t columns = detail::columnCount<M>;
    std::array<E, sizeof(M) / sizeof(E)> entries;
    for (std::size_t i = 0; i < entries.size(); ++i)
        entries[i] = static_cast<E>(i + 1);
    const M matrix(entries.data());
    for (std::size_t i = 0; i < entries.size(); ++i)
        EXPECT_EQ(matrix.m[i / columns][i % columns], entries[i]);
    if constexpr (requires(M m) { m.set(entries.data()); }) {
        M stored;
        stored.set(entries.data());
        EXPECT_EQ(stored, matrix);
        auto out = entries;
        out.fill(0);
        stored.get(out.data());
        EXPECT_EQ(out, entries);
    }
}

} // namespace

TEST(LinearConversion, MatricesTakeEntriesRowByRow) {
    expectNumberedEntries<AffineMatrix>();
    expectNumberedEntries<AffineMatrix2>();
    expectNumberedEntries<AffineMatrixFlt>();
    expectNumberedEntries<ProjMatrix>();
    expectNumberedEntries<ProjMatrixFlt>();
    const auto expectFrame = []<class M, class V>(const M& matrix, auto origin, V x, auto... yz) {
        matrix.getFrame(origin, x, yz...);
        M framed;
        framed.setFrame(origin, x, yz...);
        EXPECT_TRUE(framed == matrix && x == V(matrix.m[0]));
    };
    expectFrame(affine, Point(), Vector(), Vector(), Vector());
    expectFrame(AffineMatrix2(Vector2(1, 2), Vector2(3, 4), Vector2(5, 6)), Point2(), Vector2(),
                Vector2());
}

TEST(LinearConversion, NormalsTakeAnyNumbersAndNormalise) {
    const double xyz[] = {0.5, 1, -1};
    Normal set;
    set.set(0.5F, 1, -1.0);
    Normal setFromArray;
    setFromArray.set(xyz);
    for (const Normal& n :
         {Normal(0.5, 1, -1.F), Normal(xyz), Normal(Vector(1, 2, -2)), set, setFromArray}) {
        double x, y, z;
        n.get(x, y, z);
        EXPECT_TRUE(n.valid);
        EXPECT_EQ((std::array{x, y, z}), (std::array{1 / 3.0, 2 / 3.0, -2 / 3.0}));
    }
}

TEST(LinearConversion, ParametricLinesAndPlanesConvertToTheirParts) {
    Normal n = line;
    EXPECT_EQ(n, Normal(1, 2, 3));
    EXPECT_TRUE(n.valid);
    EXPECT_EQ(Line(line), Line(Point(4, 5, 6), n));
    const ParamPlane sheet(Point(4, 5, 6), Normal::zAxis, Vector(1, 0, 0), Vector(0, 2, 0), false);
    EXPECT_EQ(Plane(sheet), Plane(Point(4, 5, 6), Normal::zAxis));
    n = sheet;
    EXPECT_EQ(n, Normal::zAxis);
}

// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearIntersect.h"

#include <cmath>
#include <utility>

#include <gtest/gtest.h>

namespace {

using namespace zeLinear;

constexpr Point origin = Point::origin;

// Formulas, by values worked out by hand.
constexpr ParamLine line(Point(1, 0, 0), Point(1, 0, 4));
static_assert(line == ParamLine(Point(1, 0, 0), Vector(0, 0, 4)) &&
              line.eval(0.25) == Point(1, 0, 1));
static_assert((line + Vector(0, 1, 0)).point == Point(1, 1, 0) &&
              (line - Vector(0, 1, 0)).point == Point(1, -1, 0));
constexpr Plane ground(Point(0, 0, 1), Normal::zAxis);
static_assert(ground.calculateD() == -1 && (-ground).eval(Point(7, 7, 5)) == -4);
static_assert((ground - Vector(0, 0, 3)).eval(origin) == 2);

struct Segments {
    Point2 a, b, c, d;
    bool meet;
    double parameter;
    bool hasPoint;
    Point2 point; // only if hasPoint
    double tol = epsilonTol;
};

} // namespace

TEST(LinearLine, RunsBothWays) {
    EXPECT_FALSE(Line(origin, origin).direction.valid);
    EXPECT_TRUE(equivalent(Line(line), Line(Point(1, 0, 7), -Normal::zAxis)));
    EXPECT_FALSE(equivalent(Line(line), Line(Point(1, 1e-11, 7), Normal::zAxis)));
    EXPECT_EQ(projectParam(Point(5, 5, 5), ParamLine()), 0);
    for (auto [z, inBounds] : {std::pair(-5.0, 2.0), {3.0, 3.0}, {9.0, 4.0}})
        EXPECT_EQ(line.projectBounded(Point(9, 9, z), 0.5, 1), Point(1, 0, inBounds));
}

TEST(LinearPlane, HasTwoSides) {
    EXPECT_EQ(Plane(Point(0, 0, 1), Point(1, 0, 1), Point(0, 1, 1)), ground);
    EXPECT_FALSE(Plane(origin, Point(1, 1, 1), Point(2, 2, 2)).isValid());
    EXPECT_TRUE(equivalent(ground, Plane(Point(5, 5, 1), -Normal::zAxis)));
    EXPECT_FALSE(equivalent(ground, Plane(origin, Normal::zAxis)) || equivalent(ground, Plane()));
}

TEST(ParamPlane, MakesItsVectorsOrthogonal) {
    const ParamPlane p(origin, Vector(2, 0, 0), Vector(5, 3, 0), false);
    EXPECT_TRUE(p.v == Vector(0, 3, 0) && p.normal == Normal::zAxis);
    const ParamPlane q(origin, Point(2, 0, 0), Point(5, 3, 0));
    EXPECT_EQ(q.eval(Point2(1, 0.5)), Point(2, 1, 0));
    const ParamPlane n = -q;
    EXPECT_TRUE(n.normal == Normal(cross(n.u, n.v)) && n.v == q.v);
    EXPECT_TRUE(equivalent(q, q) && !equivalent(q, n));
    const ParamPlane degenerate(origin, Vector(1, 0, 0), Vector(2, 0, 0), true);
    EXPECT_TRUE(!degenerate.normal.valid && std::isnan(degenerate.v.x)); // nothing of v was left
}

TEST(LinearIntersect, LinesAndPlanes) {
    bool ok = false;
    const Line level(Point(3, 4, 5), Normal::xAxis);
    EXPECT_EQ(intersect(level, ground, ok), level.point);
    EXPECT_FALSE(ok);
    // A bound that is just met counts.
    EXPECT_EQ(intersect(Line(origin, Normal::zAxis), ground, ok, 1), Point(0, 0, 1));
    EXPECT_TRUE(ok);
    // Lines that pass each other still give a point, on the second.
    EXPECT_EQ(intersect(Line(origin, Normal::xAxis), Line(Point(3, 0, 7), Normal::yAxis), ok),
              Point(3, 0, 7));
    EXPECT_TRUE(ok);
    EXPECT_EQ(intersect(level, Line(origin, -Normal::xAxis), ok), level.point);
    EXPECT_FALSE(ok);

    EXPECT_EQ(intersect(ground, -ground, ok), Line(ground.point, ground.normal));
    EXPECT_FALSE(ok);
    intersect(ground, Plane(Point(2, 0, 0), Normal::xAxis), Plane(origin, Normal(1, 0, 1)), ok);
    EXPECT_FALSE(ok);
}

TEST(LinearIntersect, LineThroughBoxAndCylinder) {
    const Range3d box(Point(0, 0, 0), Point(1, 2, 3));
    EXPECT_TRUE(intersect(ParamLine(Point(-1, 1, 1), Vector()), box).isUnbounded());
    // One edge: two faces give the same parameter.
    EXPECT_TRUE(
        equivalent(intersect(ParamLine(Point(-1, 1, 1), Vector(1, -1, 0)), box), Range1d(1, 1)));

    const Line axis(Point(1, 0, 0), Normal::yAxis);
    double t[2] = {0, 0};
    EXPECT_EQ(intersectCylinder(ParamLine(Point(1, 3, 0), Vector(0, 1, 0)), axis, 2, t), 0);
    // Of radius 0 through the axis: a double root is one hit.
    EXPECT_EQ(intersectCylinder(ParamLine(Point(0, 0, 0), Vector(1, 0, 0)), axis, 0, t), 1);
    EXPECT_DOUBLE_EQ(t[0], 1);
}

TEST(LinearIntersect, ClassifiesSegments) {
    const Range2d r(Point2(0, 0), Point2(2, 2));
    struct Case {
        Point2 a, b;
        int expected;
    };
    for (const Case& c : {Case{{-1, 0}, {-2, 9}, 0},
                          {{0, 0}, {2, 2}, 1},
                          {{1, 1}, {5, 5}, 2},
                          {{-1, 1}, {3, 1}, 3},
                          {{1, 3}, {1, -1}, 3},
                          {{-1, 1}, {1, 3}, 4},
                          {{-1, 3}, {3, -1}, 4}}) {
        EXPECT_EQ(classifySegmentRangeIntersection(r, c.a, c.b), c.expected);
        EXPECT_EQ(classifySegmentRangeIntersection(r, c.b, c.a), c.expected);
    }
}

TEST(LinearIntersect, SegmentsMeetOrNot) {
    const Segments cases[] = {
        {{0, 0}, {4, 0}, {5, -1}, {5, 1}, false, -1, true, {5, 0}}, // the lines cross beyond
        {{0, 0}, {4, 0}, {1, 0}, {2, 0}, true, 0.25, false, {}},    // collinear, inside
        {{0, 0}, {4, 0}, {9, 0}, {-9, 0}, true, 0, false, {}},      // collinear, around
        {{0, 0}, {4, 0}, {5, 0}, {6, 0}, false, -1, false, {}},     // collinear, apart
        {{0, 0}, {4, 0}, {4, 0}, {6, 0}, false, -1, false, {}},     // touching in one end
        {{0, 0}, {0, 0}, {-1, 0}, {1, 0}, false, -1, false, {}},    // without length
        {{-1, 0}, {1, 0}, {0, 0}, {0, 0}, false, -1, false, {}},
        // Collinear segments that overlap by almost nothing share a point.
        {{0, 0}, {1, 0}, {1 - 1e-13, 0}, {2, 0}, true, 1 - 1e-13, true, {1, 0}},
        // The tolerance decides what is collinear, but not what is an end.
        {{0, 0}, {4, 0}, {1, 0.05}, {2, 0.05}, true, 0.25, false, {}, 0.1},
        {{0, 0}, {4, 0}, {4.5, 0.5}, {5, 1}, false, -1, true, {4, 0}, 0.1},
        {{0, 0}, {4, 0}, {4.05, 0.05}, {9, 0.05}, false, -1, false, {}, 0.1},
        // A crossing just beyond an end counts while it is equivalent to the end.
        {{0, 0}, {1, 0}, {1 + 5e-13, -1}, {1 + 5e-13, 1}, true, 1 + 5e-13, true, {1, 0}},
        {{0, 0}, {1, 0}, {-5e-13, -1}, {-5e-13, 1}, true, -5e-13, true, {0, 0}},
    };
    for (const Segments& s : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &s - cases);
        double parameter = 7;
        Point2 point;
        bool hasPoint = true;
        EXPECT_EQ(doLineSegmentsIntersect(s.a, s.b, s.c, s.d, parameter, point, hasPoint, s.tol),
                  s.meet);
        EXPECT_DOUBLE_EQ(parameter, s.parameter);
        EXPECT_EQ(hasPoint, s.hasPoint);
        EXPECT_TRUE(!s.hasPoint || equivalent(point, s.point));
    }
}

TEST(LinearIntersect, RaysAgainstRectangles) {
    const Range2d r(Point2(1, 1), Point2(2, 2));
    struct Case {
        Point2 origin;
        Vector2 direction;
        double tMin, tMax;
        bool hit;
    };
    const Case cases[] = {
        {{0, 0}, {1, 1}, 0, 1, false}, // strictly
        {{9, 0}, {0, 1}, 0, 10, true}, // beside it in x, which is not looked at
        {{0, 9}, {1, 0}, 0, 10, true}, // beside it in y
        {{9, 0}, {0, 1}, 2, 10, false},
        {{0, 0}, {0, 0}, 0, 10, false}, // its slab begins at infinity
    };
    for (const Case& c : cases)
        EXPECT_EQ(doesRayIntersectRange2d(c.origin, c.direction, r, c.tMin, c.tMax), c.hit)
            << "case " << &c - cases;
    EXPECT_TRUE(doesRayIntersectRange2d({0, 0}, {0, 0}, Range2d(), 1, 0));
}

TEST(LinearIntersect, TrianglesAgainstBoxesAndCollinearPoints) {
    EXPECT_TRUE(triangleBoxOverlap({1, 1}, {1, 1}, {2, 0}, {3, 0}, {3, 1})); // touching
    EXPECT_TRUE(testBorder(-3, 5, 9, 1));
    EXPECT_FALSE(testBorder(3, 5, 9, 1));
    EXPECT_TRUE(areCollinear(origin, origin, Point(1, 2, 3)));
}

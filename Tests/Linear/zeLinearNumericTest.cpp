// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearNumeric.h"

#include <cmath>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace zeLinear;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct Function : evalFunction {
    explicit Function(std::function<double(double)> f) : f_(std::move(f)) {}
    double evaluate(double x) override {
        arguments.push_back(x);
        return f_(x);
    }

    std::vector<double> arguments;
    std::function<double(double)> f_;
};

} // namespace

TEST(LinearNumeric, SolvesQuadratics) {
    const struct {
        double a, b, c;
        std::vector<double> roots;
    } cases[] = {
        {0, 0, 1, {}},
        {1e-13, 2, -6, {3}},
        {1, 0, 0, {0, 0}},
        {1, 2, 1, {-1, -1}},
        {0, notANumber, 1, {}}, // a NaN is neither above a tolerance nor negative
        {1, 0, notANumber, {}},
        // Without cancellation the small root is exact: the textbook formula gives 7.45e-9.
        {1, -1e8, 1, {1e-8, 1e8}},
        // A negative leading coefficient without a linear term is judged by the last alone.
        {-1, 0, 4, {}},
    };
    for (const auto& q : cases) {
        double roots[2] = {0, 0};
        const int count = solveQuadratic(q.a, q.b, q.c, roots);
        SCOPED_TRACE(testing::Message() << q.a << ' ' << q.b << ' ' << q.c);
        ASSERT_EQ(count, static_cast<int>(q.roots.size()));
        for (std::size_t i = 0; i < q.roots.size(); ++i)
            EXPECT_DOUBLE_EQ(roots[i], q.roots[i]);
    }
    double roots[2] = {0, 0};
    EXPECT_EQ(solveQuadratic(-1, 0, -4, roots), 2);
    EXPECT_TRUE(std::isnan(roots[0]) && std::isnan(roots[1]));
}

TEST(Brent, JudgesTheEndsFirst) {
    int status = -1;
    Function line([](double x) { return x - 1; });
    EXPECT_EQ(brentsIteration(line, 1, 5, 1e-9, status), 1);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(line.arguments.back(), 5); // the other end is evaluated all the same
    EXPECT_EQ(brentsIteration(line, -5, 1, 1e-9, status), 1);
    EXPECT_EQ(brentsIteration(line, 2, 5, 1e-9, status), 5);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(brentsIteration(line, 1, 5, 0, status), 1); // zero is neither sign
    EXPECT_EQ(status, 0);
}

TEST(Brent, GivesUpAfterAHundredRounds) {
    // Never near zero, and a tolerance that no bracket meets at such magnitudes.
    Function jump([](double x) { return x < 1e-300 ? -1.0 : 1.0; });
    int status = -1;
    brentsIteration(jump, -1e300, 1e300, 0, status);
    EXPECT_EQ(status, 2);
    EXPECT_EQ(jump.arguments.size(), 102U);
}

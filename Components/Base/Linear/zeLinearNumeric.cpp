// SPDX-License-Identifier: MIT

#include "Base/Linear/zeLinearNumeric.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Base/Linear/zeLinearTolerance.h"

namespace zeLinear {

namespace {

int storeInOrder(double first, double second, double* roots) {
    // Not minmax: NaN keeps its place.
    if (second < first)
        std::swap(first, second);
    roots[0] = first;
    roots[1] = second;
    return 2;
}

struct Sample {
    double x;
    double y;
};

bool sameSign(const Sample& s, const Sample& t) {
    return (s.y > 0 && t.y > 0) || (s.y < 0 && t.y < 0);
}

/// The step from `best` by interpolation, as a fraction: through three points (inverse quadratic)
/// if they are distinct, otherwise through two.
struct Fraction {
    double numerator;
    double denominator;
};

Fraction interpolationStep(const Sample& best, const Sample& previous, const Sample& opposite,
                           double halfBracket) {
    const double s = best.y / previous.y;
    Fraction step;
    if (previous.x == opposite.x) {
        step = {2 * halfBracket * s, 1 - s};
    } else {
        const double q = previous.y / opposite.y;
        const double r = best.y / opposite.y;
        step = {s * (2 * halfBracket * q * (q - r) - (best.x - previous.x) * (r - 1)),
                (q - 1) * (r - 1) * (s - 1)};
    }
    if (step.numerator > 0)
        step.denominator = -step.denominator;
    step.numerator = std::fabs(step.numerator);
    return step;
}

} // namespace

int solveQuadratic(double a, double b, double c, double* roots) {
    if (std::fabs(a) < epsilonTol) {
        if (!(std::fabs(b) >= epsilonTol)) // a NaN too
            return 0;
        roots[0] = -c / b;
        return 1;
    }
    const double h = b / (2 * a);
    const double d = a * h * h;
    if (std::fabs(d) >= epsilonTol) {
        const double e = c / d;
        if (1 - e < 0)
            return 0;
        // The larger root first, without cancellation; the other by their product.
        const double s = -1 - std::sqrt(1 - e);
        return storeInOrder(h * s, h * e / s, roots);
    }
    if (std::fabs(c) < epsilonTol)
        return storeInOrder(0, 0, roots);
    if (!(c < 0))
        return 0;
    const double root = std::sqrt(-c / a);
    return storeInOrder(-root, root, roots);
}

evalFunction::~evalFunction() = default;

double brentsIteration(evalFunction& f, double a, double b, double tol, int& status) {
    Sample previous{a, f.evaluate(a)};
    Sample best{b, f.evaluate(b)};
    status = 0;
    if (std::fabs(previous.y) < tol)
        return a;
    if (std::fabs(best.y) < tol)
        return b;
    if (sameSign(previous, best)) {
        status = 1;
        return b;
    }

    // The root lies between `best` and `opposite`; `previous` is the last best.
    Sample opposite = best;
    double step = 0;
    double stepBefore = 0;
    for (int round = 0; round < 100; ++round) {
        if (sameSign(best, opposite)) {
            opposite = previous;
            step = stepBefore = best.x - previous.x;
        }
        if (std::fabs(opposite.y) < std::fabs(best.y)) {
            previous = best;
            best = opposite;
            opposite = previous;
        }
        const double tolerance = 2e-16 * std::fabs(best.x) + tol / 2;
        const double halfBracket = (opposite.x - best.x) / 2;
        if (std::fabs(halfBracket) <= tolerance || std::fabs(best.y) < 1e-16)
            return best.x;

        bool bisect = true;
        if (std::fabs(stepBefore) >= tolerance && std::fabs(previous.y) > std::fabs(best.y)) {
            const auto [p, q] = interpolationStep(best, previous, opposite, halfBracket);
            if (2 * p < std::min(3 * halfBracket * q - std::fabs(tolerance * q),
                                 std::fabs(stepBefore * q))) {
                stepBefore = step;
                step = p / q;
                bisect = false;
            }
        }
        if (bisect)
            step = stepBefore = halfBracket;

        previous = best;
        best.x += std::fabs(step) > tolerance ? step : std::copysign(tolerance, halfBracket);
        best.y = f.evaluate(best.x);
    }
    status = 2;
    return best.x;
}

} // namespace zeLinear

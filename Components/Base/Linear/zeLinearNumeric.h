// SPDX-License-Identifier: MIT

/// @file
/// Numbers without geometry: the least and greatest of several, roots of a quadratic, and roots of
/// any function of one variable.
///
/// Threads: pure functions, callable from any thread; brentsIteration() calls the function that it
/// is given in the calling thread.
///
/// @code
/// #include <cmath>
/// struct Cubic : zeLinear::evalFunction {
///     double evaluate(double x) override { return x * x * x - 8; }
/// } cubic;
/// int status = 0;
/// double root = zeLinear::brentsIteration(cubic, 0, 10, 1e-12, status);
/// assert(status == 0 && std::fabs(root - 2) < 1e-11);
/// @endcode

#pragma once

#include "Base/zeBaseExport.h"

namespace zeLinear {

namespace detail {

// The rule of the processor's instructions: the second if they are equal or one is NaN.
constexpr double least(double a, double b) {
    return a < b ? a : b;
}
constexpr double greatest(double a, double b) {
    return a > b ? a : b;
}

} // namespace detail

/// @{
/// The least, taken two by two from the left. Of two of which one is NaN, the second is taken: a
/// NaN counts only if it comes last.
constexpr double min(double a, double b, double c) {
    return detail::least(detail::least(a, b), c);
}
constexpr double min(double a, double b, double c, double d) {
    return detail::least(min(a, b, c), d);
}
/// @}

/// @{
/// The greatest, taken two by two from the left, with the same rule for NaN as min().
constexpr double max(double a, double b, double c) {
    return detail::greatest(detail::greatest(a, b), c);
}
constexpr double max(double a, double b, double c, double d) {
    return detail::greatest(max(a, b, c), d);
}
/// @}

/// Stores the real roots of a x² + b x + c in `roots`, which has room for two, in rising order, and
/// returns their number. It keeps its precision where one root is much smaller than the other. A
/// double root counts as two.
///
/// Coefficients are compared with epsilonTol without scaling: with |a| below it the equation is
/// taken as linear. Where |a (b / 2a)²| is below it, b is taken as 0, and the sign of `c` alone
/// decides, which is right for positive `a` only: with a negative `a`, positive `c` gives no root,
/// and negative `c` gives two NaN. Kept for compatibility.
ZEBASE_API int solveQuadratic(double a, double b, double c, double* roots);

/// A function of one variable, for brentsIteration(). A client derives from it.
class ZEBASE_API evalFunction {
public:
    /// Destroys the function.
    virtual ~evalFunction();
    /// The value at `x`.
    virtual double evaluate(double x) = 0;
};

/// A root of `f` between `a` and `b`, by Brent's method: as safe as bisection, and much faster near
/// a smooth root. `f` is evaluated at `a` and at `b`, in this order, and then at most once in each
/// of 100 rounds. An end where |f| is below `tol` is the root. Otherwise the search ends where the
/// sign is known to change within `tol` (plus 4e-16 of the root's size) of the result, or where |f|
/// is below 1e-16.
///
/// `status` becomes 0 on success; 1 if f(a) and f(b) have the same sign (the result is `b`); 2 if
/// 100 rounds did not suffice (the result is the latest estimate).
ZEBASE_API double brentsIteration(evalFunction& f, double a, double b, double tol, int& status);

} // namespace zeLinear

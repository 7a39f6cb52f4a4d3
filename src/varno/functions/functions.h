#pragma once

#include <gmp.h>

/// The elementary functions on GMP floats, by Taylor series.
///
/// They give the initial values of auxiliary equations and fold constants. Each sets `result`,
/// which the caller has initialised and which may be x itself, to the value at x; angles are in
/// radians. Temporaries have the default precision in force, the constants pi and ln 2 that of the
/// record.
///
/// Every series stops, with `_SIMPLIFYSMALL` set, after the first pass whose change of the sum is
/// less than `_ACCURACY` (absolute; for exp and atanh: whose term is); with `_SIMPLIFYSMALL` clear,
/// after the first pass that leaves the sum as it was.
///
/// Several functions deliberately differ from the textbook. These values are part of the program's
/// results and stay as they are:
/// - with `_SIMPLIFYSMALL` set, sinh, tanh, asinh (0), cosh, exp and atanh (1) answer every x below
///   `_ACCURACY`, and so every negative x, with the constant in parentheses;
/// - sin of a negative x ends in an assertion failure unless it reduces to less than `_ACCURACY`;
/// - with `_SIMPLIFYSMALL` clear, sin and cos divide by the squares of 2, 6, 10, ... instead of by
///   products of two neighbours, which gives other functions than sine and cosine;
/// - atanh sums x + x^3/3 + x^5/(3 5) + x^7/(3 5 7) + ...
///
/// Outside its domain a function writes an empty line and "#(COMP) NAME(x): CONDITION" and ends the
/// process with status 1. At a pole the value is the stand-in 1e999999, ln 0 is -1e99999. An
/// argument of sine or cosine so large that its precision does not reach down to 2 pi ends the run
/// with a message, too, and so does a value that is out of range (range.h).
///
/// Series: Abramowitz & Stegun, Handbook of Mathematical Functions, chapter 4.
namespace varno::functions {

/// x - x^3/3! + x^5/5! - ..., after subtracting 2 pi as often as possible (4.3.65).
void sin(mpf_t& result, mpf_ptr x);

/// 1 - x^2/2! + x^4/4! - ... of |x|, after subtracting 2 pi as often as possible (4.3.66).
void cos(mpf_t& result, mpf_ptr x);

/// sin x / cos x; 1e999999 where the cosine is exactly 0.
void tan(mpf_t& result, mpf_ptr x);

/// cos x / sin x; 1e999999 where the sine is exactly 0.
void cotan(mpf_t& result, mpf_ptr x);

/// x + (1/2) x^3/3 + (1 3)/(2 4) x^5/5 + ..., between -pi/2 and pi/2 (4.4.40). Domain |x| <= 1.
void asin(mpf_t& result, mpf_ptr x);

/// pi/2 - asin x, between 0 and pi. Domain |x| <= 1.
void acos(mpf_t& result, mpf_ptr x);

/// x - x^3/3 + x^5/5 - ..., for |x| > 1 in 1/x, between -pi/2 and pi/2 (4.4.42); 0 where |x| is
/// less than `_ACCURACY` and `_SIMPLIFYSMALL` is set.
void atan(mpf_t& result, mpf_ptr x);

/// pi/2 - atan |x| with the sign of x; on purpose 0, not pi/2, where |x| is less than `_ACCURACY`
/// and `_SIMPLIFYSMALL` is set.
void acotan(mpf_t& result, mpf_ptr x);

/// x + x^3/3! + x^5/5! + ... (4.5.62).
void sinh(mpf_t& result, mpf_ptr x);

/// 1 + x^2/2! + x^4/4! + ... (4.5.63).
void cosh(mpf_t& result, mpf_ptr x);

/// sinh x / cosh x.
void tanh(mpf_t& result, mpf_ptr x);

/// cosh x / sinh x; 1e999999 with the sign of x where the hyperbolic sine is exactly 0.
void cotanh(mpf_t& result, mpf_ptr x);

/// ln(x + sqrt(x^2 + 1)).
void asinh(mpf_t& result, mpf_ptr x);

/// ln(x + sqrt(x - 1) sqrt(x + 1)). Domain x >= 1.
void acosh(mpf_t& result, mpf_ptr x);

/// The series above, not the area tangent. Domain |x| <= 1; +-1e999999 at the ends.
void atanh(mpf_t& result, mpf_ptr x);

/// atanh(1/x). Domain |x| >= 1; +-1e999999 at the ends.
void acotanh(mpf_t& result, mpf_ptr x);

/// 1 + x + x^2/2! + ..., without argument reduction (4.2.1).
void exp(mpf_t& result, mpf_ptr x);

/// ln m + e ln 2 for x = m 2^e with 1/2 <= m < 1, ln m = z - z^2/2 + z^3/3 - ... with z = m - 1
/// (4.1.24). Domain x >= 0.
void ln(mpf_t& result, mpf_ptr x);

}  // namespace varno::functions

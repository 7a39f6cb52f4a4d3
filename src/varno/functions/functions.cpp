#include "varno/functions/functions.h"

#include <iostream>
#include <string_view>

#include "arith/magnitude.h"
#include "arith/mpf.h"
#include "arith/wide_integer.h"
#include "varno/core/expr.h"
#include "varno/core/global_data.h"
#include "varno/functions/period_reduction.h"
#include "varno/sys/assertion.h"
#include "varno/sys/messages.h"
#include "varno/sys/number_checks.h"

namespace varno::functions {

using arith::Mpf;

namespace {

constexpr const char* kPole = "1e999999";
/// On purpose with one digit less in the exponent.
constexpr const char* kLogarithmOfZero = "-1e99999";

/// Where the checks of sine and cosine stand, in the words of their failure messages.
struct CircularChecks {
  const char* function;
  const char* rangeText;
  unsigned rangeLine;
  unsigned upperLine;
  unsigned lowerLine;
};

constexpr CircularChecks kSinChecks = {
    "void sin(__mpf_struct (&)[1], __mpf_struct*)",
    "__gmpf_cmp(A,(Expr::Global -> _ZERO)) >= 0 && __gmpf_cmp(A,(Expr::Global -> _PI_2)) < 0", 57,
    110, 114};

constexpr CircularChecks kCosChecks = {
    "void cos(__mpf_struct (&)[1], __mpf_struct*)",
    "__gmpf_cmp(A,(Expr::Global -> _PI_2)) < 0 && __gmpf_cmp(A,(Expr::Global -> _ZERO)) >= 0", 138,
    199, 203};

void Check(bool holds, const char* text, unsigned line, const CircularChecks& checks)
{
  Assert(holds, text, {"functions", line, checks.function});
}

/// Subtracts 2 pi as often as possible.
void ReduceCircular(Mpf& a)
{
  if (!SubtractPeriods(a, Expr::Global->_PI_2)) {
    Fail("sin(x), cos(x): |x| is so large that subtracting 2 pi leaves it as it is");
  }
}

/// Checks 0 <= a < 2 pi.
void CheckReduced(const Mpf& a, const CircularChecks& checks)
{
  const bool reduced = mpf_cmp(a, Expr::Global->_ZERO) >= 0 && mpf_cmp(a, Expr::Global->_PI_2) < 0;
  Check(reduced, checks.rangeText, checks.rangeLine, checks);
}

/// Checks -1 <= sum <= 1.
void CheckWithinOne(const Mpf& sum, const CircularChecks& checks)
{
  Mpf negative;
  mpf_neg(negative, sum);
  Check(mpf_cmp(sum, Expr::Global->_ONE) <= 0, "__gmpf_cmp(Res,(Expr::Global -> _ONE)) <= 0",
        checks.upperLine, checks);
  Check(mpf_cmp(negative, Expr::Global->_ONE) <= 0, "__gmpf_cmp(Tmp,(Expr::Global -> _ONE)) <= 0",
        checks.lowerLine, checks);
}

[[noreturn]] void FailDomain(std::string_view text)
{
  std::clog << '\n' << tag::kSolver << text << std::endl;
  Exit(kFailure);
}

/// x < _ACCURACY with _SIMPLIFYSMALL set. The comparison is signed on purpose: functions that ask
/// with their argument as it is answer every negative argument like a small one.
bool IsNegligible(mpf_srcptr x)
{
  return Expr::Global->_SIMPLIFYSMALL && mpf_cmp(x, Expr::Global->_ACCURACY) < 0;
}

/// What a series looks at, with _SIMPLIFYSMALL set, to find that it has converged.
enum class Measure { kChangeOfSum, kLastTerm };

/// Adds to `sum` the terms that `nextTerm` computes, one by one, until the stopping rule holds.
template <class NextTerm>
void Sum(Mpf& sum, NextTerm nextTerm, Measure measure = Measure::kChangeOfSum)
{
  Mpf previous, term, size;
  bool converged = false;
  while (!converged) {
    mpf_set(previous, sum);
    nextTerm(term);
    RequireRoom(term);
    mpf_add(sum, sum, term);
    RequireRange(sum);
    if (Expr::Global->_SIMPLIFYSMALL) {
      if (measure == Measure::kLastTerm) {
        mpf_abs(size, term);
      } else {
        mpf_sub(size, sum, previous);
        mpf_abs(size, size);
      }
      converged = mpf_cmp(size, Expr::Global->_ACCURACY) < 0;
    } else {
      converged = mpf_cmp(sum, previous) == 0;
    }
  }
}

/// q = -a^2
Mpf NegativeSquare(const Mpf& a)
{
  Mpf q;
  mpf_mul(q, a, a);
  mpf_neg(q, q);
  return q;
}

/// Sums term (1 + q/(d1 d2) + q^2/(d1 d2 d3 d4) + ...) with the divisors d = first, first + 1, ...;
/// `term` is the first term and `sum` its value, q = -a^2 or a^2.
void SumByNeighbours(Mpf& sum, Mpf& factor, const Mpf& q, unsigned long first)
{
  unsigned long k = first;
  Sum(sum, [&](Mpf& term) {
    mpf_mul(factor, factor, q);
    mpf_div_ui(factor, factor, k * (k + 1));
    mpf_set(term, factor);
    k += 2;
  });
}

/// The series of sine and cosine. On purpose the exact mode divides by the squares of 2, 6, 10,
/// ..., so that it sums another function.
void SumCircular(Mpf& sum, const Mpf& a, unsigned long first)
{
  const Mpf q = NegativeSquare(a);
  Mpf factor(sum);
  if (Expr::Global->_SIMPLIFYSMALL) {
    SumByNeighbours(sum, factor, q, first);
    return;
  }
  unsigned long k = 2;
  Sum(sum, [&](Mpf& term) {
    mpf_mul(factor, factor, q);
    mpf_div_ui(factor, factor, k * k);
    mpf_set(term, factor);
    k += 4;
  });
}

/// The stand-in for a pole, with the sign of x.
void SignedPole(mpf_t& result, mpf_srcptr x)
{
  const bool negative = mpf_sgn(x) < 0;
  mpf_set_str(result, kPole, 10);
  if (negative) mpf_neg(result, result);
}

/// What atan and acotan share: atan |x|, and pi/2 minus it for acotan, with the sign of x.
void ArcTangent(mpf_t& result, mpf_srcptr x, bool complement)
{
  const bool negative = mpf_sgn(x) < 0;
  Mpf a;
  mpf_abs(a, x);
  if (IsNegligible(a)) {
    mpf_set(result, Expr::Global->_ZERO);
    return;
  }
  const bool inverted = mpf_cmp(a, Expr::Global->_ONE) > 0;
  if (inverted) mpf_ui_div(a, 1, a);

  // a - a^3/3 + a^5/5 - ...
  const Mpf q = NegativeSquare(a);
  Mpf power(a), sum(a);
  unsigned long k = 1;
  Sum(sum, [&](Mpf& term) {
    k += 2;
    mpf_mul(power, power, q);
    mpf_div_ui(term, power, k);
  });
  if (inverted != complement) mpf_sub(sum, Expr::Global->_HALF_PI, sum);
  if (negative) mpf_neg(sum, sum);
  mpf_set(result, sum);
}

}  // namespace

void sin(mpf_t& result, mpf_ptr x)
{
  const bool negative = mpf_sgn(x) < 0;
  Mpf a;
  mpf_abs(a, x);
  ReduceCircular(a);
  if (IsNegligible(a)) {
    mpf_set(result, Expr::Global->_ZERO);
    return;
  }
  // On purpose: with its sign back, the argument of a negative x fails the check.
  if (negative) mpf_neg(a, a);
  CheckReduced(a, kSinChecks);

  Mpf sum(a);
  SumCircular(sum, a, 2);
  CheckWithinOne(sum, kSinChecks);
  mpf_set(result, sum);
}

void cos(mpf_t& result, mpf_ptr x)
{
  Mpf a;
  mpf_abs(a, x);
  ReduceCircular(a);
  CheckReduced(a, kCosChecks);
  if (IsNegligible(a)) {
    mpf_set(result, Expr::Global->_ONE);
    return;
  }

  Mpf sum(Expr::Global->_ONE);
  SumCircular(sum, a, 1);
  CheckWithinOne(sum, kCosChecks);
  mpf_set(result, sum);
}

void tan(mpf_t& result, mpf_ptr x)
{
  Mpf sine, cosine;
  cos(cosine, x);
  if (cosine.Sign() == 0) {
    mpf_set_str(result, kPole, 10);
    return;
  }
  sin(sine, x);
  mpf_div(result, sine, cosine);
}

void cotan(mpf_t& result, mpf_ptr x)
{
  Mpf sine, cosine;
  sin(sine, x);
  if (sine.Sign() == 0) {
    mpf_set_str(result, kPole, 10);
    return;
  }
  cos(cosine, x);
  mpf_div(result, cosine, sine);
}

void asin(mpf_t& result, mpf_ptr x)
{
  const bool negative = mpf_sgn(x) < 0;
  Mpf a;
  mpf_abs(a, x);
  const int overOne = mpf_cmp(a, Expr::Global->_ONE);
  if (overOne > 0) FailDomain("asin(x): |x| > 1");
  Mpf sum;
  if (overOne == 0) {
    mpf_set(sum, Expr::Global->_HALF_PI);
  } else {
    mpf_set(sum, a);
    Mpf q, factor(a);
    mpf_mul(q, a, a);
    unsigned long k = 1;
    Sum(sum, [&](Mpf& term) {
      mpf_mul_ui(factor, factor, k);
      mpf_div_ui(factor, factor, k + 1);
      k += 2;
      mpf_mul(factor, factor, q);
      mpf_div_ui(term, factor, k);
    });
  }
  if (negative) mpf_neg(sum, sum);
  mpf_set(result, sum);
}

void acos(mpf_t& result, mpf_ptr x)
{
  Mpf a;
  mpf_abs(a, x);
  const int overOne = mpf_cmp(a, Expr::Global->_ONE);
  if (overOne > 0) FailDomain("acos(x): |x| > 1");
  if (overOne == 0) {
    mpf_set(result, mpf_sgn(x) < 0 ? Expr::Global->_PI : Expr::Global->_ZERO);
    return;
  }
  asin(a, x);
  mpf_sub(result, Expr::Global->_HALF_PI, a);
}

void atan(mpf_t& result, mpf_ptr x)
{
  ArcTangent(result, x, false);
}

void acotan(mpf_t& result, mpf_ptr x)
{
  ArcTangent(result, x, true);
}

void sinh(mpf_t& result, mpf_ptr x)
{
  if (IsNegligible(x)) {
    mpf_set(result, Expr::Global->_ZERO);
    return;
  }
  Mpf q, factor(x), sum(x);
  mpf_mul(q, x, x);
  SumByNeighbours(sum, factor, q, 2);
  mpf_set(result, sum);
}

void cosh(mpf_t& result, mpf_ptr x)
{
  if (IsNegligible(x)) {
    mpf_set(result, Expr::Global->_ONE);
    return;
  }
  Mpf q, factor(Expr::Global->_ONE), sum(Expr::Global->_ONE);
  mpf_mul(q, x, x);
  SumByNeighbours(sum, factor, q, 1);
  mpf_set(result, sum);
}

void tanh(mpf_t& result, mpf_ptr x)
{
  if (IsNegligible(x)) {
    mpf_set(result, Expr::Global->_ZERO);
    return;
  }
  Mpf sine, cosine;
  sinh(sine, x);
  cosh(cosine, x);
  mpf_div(result, sine, cosine);  // cosh x is at least 1
}

void cotanh(mpf_t& result, mpf_ptr x)
{
  Mpf sine, cosine;
  sinh(sine, x);
  if (sine.Sign() == 0) {
    SignedPole(result, x);
    return;
  }
  cosh(cosine, x);
  mpf_div(result, cosine, sine);
}

void asinh(mpf_t& result, mpf_ptr x)
{
  if (IsNegligible(x)) {
    mpf_set(result, Expr::Global->_ZERO);
    return;
  }
  Mpf root;
  mpf_mul(root, x, x);
  mpf_add(root, root, Expr::Global->_ONE);
  mpf_sqrt(root, root);
  mpf_add(root, x, root);
  ln(result, root);
}

void acosh(mpf_t& result, mpf_ptr x)
{
  if (mpf_cmp(x, Expr::Global->_ONE) < 0) FailDomain("acosh(x): x < 1");
  Mpf below, above;
  mpf_sub(below, x, Expr::Global->_ONE);
  if (IsNegligible(below)) {
    mpf_set(result, Expr::Global->_ZERO);
    return;
  }
  mpf_add(above, x, Expr::Global->_ONE);
  mpf_sqrt(below, below);
  mpf_sqrt(above, above);
  mpf_mul(below, below, above);
  mpf_add(below, x, below);
  ln(result, below);
}

void atanh(mpf_t& result, mpf_ptr x)
{
  Mpf a;
  mpf_abs(a, x);
  const int overOne = mpf_cmp(a, Expr::Global->_ONE);
  if (overOne > 0) FailDomain("atanh(x): |x| > 1");
  if (overOne == 0) {
    SignedPole(result, x);
    return;
  }
  if (IsNegligible(x)) {
    // On purpose 1, not 0.
    mpf_set(result, Expr::Global->_ONE);
    return;
  }
  // x + x^3/3 + x^5/(3 5) + x^7/(3 5 7) + ...: on purpose the divisors accumulate in the term.
  Mpf q, factor(x), sum(x);
  mpf_mul(q, x, x);
  unsigned long k = 3;
  Sum(
      sum,
      [&](Mpf& term) {
        mpf_mul(factor, factor, q);
        mpf_div_ui(factor, factor, k);
        mpf_set(term, factor);
        k += 2;
      },
      Measure::kLastTerm);
  mpf_set(result, sum);
}

void acotanh(mpf_t& result, mpf_ptr x)
{
  Mpf a;
  mpf_abs(a, x);
  const int overOne = mpf_cmp(a, Expr::Global->_ONE);
  if (overOne < 0) FailDomain("acotanh(x): |x| < 1");
  if (overOne == 0) {
    SignedPole(result, x);
    return;
  }
  mpf_div(a, Expr::Global->_ONE, x);
  atanh(result, a);
}

void exp(mpf_t& result, mpf_ptr x)
{
  if (mpf_sgn(x) == 0 || IsNegligible(x)) {
    mpf_set(result, Expr::Global->_ONE);
    return;
  }
  Mpf factor(Expr::Global->_ONE), sum(Expr::Global->_ONE);
  unsigned long k = 1;
  Sum(
      sum,
      [&](Mpf& term) {
        mpf_mul(factor, factor, x);
        mpf_div_ui(factor, factor, k);
        mpf_set(term, factor);
        ++k;
      },
      Measure::kLastTerm);
  mpf_set(result, sum);
}

void ln(mpf_t& result, mpf_ptr x)
{
  if (mpf_sgn(x) < 0) FailDomain("ln(x): x < 0");
  if (mpf_sgn(x) == 0) {
    mpf_set_str(result, kLogarithmOfZero, 10);
    return;
  }
  if (mpf_cmp(x, Expr::Global->_ONE) == 0) {
    mpf_set(result, Expr::Global->_ZERO);
    return;
  }
  // x = m 2^e with 1/2 <= m < 1
  const arith::WideInteger e = arith::BinaryExponent(x);
  const auto shift = static_cast<unsigned long>(e < 0 ? -e : e);
  Mpf m, base;
  mpf_mul_ui(base, Expr::Global->_LN2, shift);
  if (e < 0) {
    mpf_mul_2exp(m, x, shift);
    mpf_neg(base, base);
  } else {
    mpf_div_2exp(m, x, shift);
  }

  // z - z^2/2 + z^3/3 - ... with z = m - 1
  Mpf z, q, sum;
  mpf_sub(z, m, Expr::Global->_ONE);
  mpf_neg(q, z);
  mpf_add(sum, base, z);
  Mpf power(z);
  unsigned long k = 1;
  Sum(sum, [&](Mpf& term) {
    ++k;
    mpf_mul(power, power, q);
    mpf_div_ui(term, power, k);
  });
  mpf_set(result, sum);
}

}  // namespace varno::functions

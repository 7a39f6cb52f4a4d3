// The elementary functions against their own series in exact fractions: which terms are summed,
// where the sum ends, and where the series deliberately differ from those of the textbook.

#include <gtest/gtest.h>

#include "tests/support/number_samples.h"
#include "tests/support/rational.h"
#include "tests/support/real.h"
#include "tests/varno/support/evaluate.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/functions/functions.h"

namespace varno {

using namespace support;
namespace {

// --- Terms number j = 0, 1, ... of the series, in closed form ---

Rational Factorial(unsigned long n)
{
  return mpz_class::factorial(n);
}

/// n (n - 2) (n - 4) ...
Rational DoubleFactorial(unsigned long n)
{
  mpz_class product;
  mpz_2fac_ui(product.get_mpz_t(), n);
  return product;
}

/// (2j - 1)!!
Rational OddFactorial(unsigned long j)
{
  return j == 0 ? Rational(1) : DoubleFactorial(2 * j - 1);
}

Rational Alternating(unsigned long j, const Rational& size)
{
  return j % 2 == 0 ? size : Rational(-size);
}

Rational SinTerm(const Rational& x, unsigned long j)
{
  return Alternating(j, Power(x, 2 * j + 1) / Factorial(2 * j + 1));
}

Rational CosTerm(const Rational& x, unsigned long j)
{
  return Alternating(j, Power(x, 2 * j) / Factorial(2 * j));
}

/// 2^2 6^2 10^2 ... (4j - 2)^2
Rational ExactModeDivisor(unsigned long j)
{
  return Power(Power(2, j) * OddFactorial(j), 2);
}

Rational ExactModeSinTerm(const Rational& x, unsigned long j)
{
  return Alternating(j, Power(x, 2 * j + 1) / ExactModeDivisor(j));
}

Rational ExactModeCosTerm(const Rational& x, unsigned long j)
{
  return Alternating(j, Power(x, 2 * j) / ExactModeDivisor(j));
}

Rational ASinTerm(const Rational& x, unsigned long j)
{
  return OddFactorial(j) / DoubleFactorial(2 * j) * Power(x, 2 * j + 1) / (2 * j + 1);
}

Rational ATanTerm(const Rational& x, unsigned long j)
{
  return Alternating(j, Power(x, 2 * j + 1) / (2 * j + 1));
}

Rational SinhTerm(const Rational& x, unsigned long j)
{
  return Power(x, 2 * j + 1) / Factorial(2 * j + 1);
}

Rational CoshTerm(const Rational& x, unsigned long j)
{
  return Power(x, 2 * j) / Factorial(2 * j);
}

/// On purpose not x^(2j+1) / (2j + 1).
Rational ATanhTerm(const Rational& x, unsigned long j)
{
  return Power(x, 2 * j + 1) / OddFactorial(j + 1);
}

Rational ExpTerm(const Rational& x, unsigned long j)
{
  return Power(x, j) / Factorial(j);
}

/// For 1/2 <= x < 1.
Rational LnTerm(const Rational& x, unsigned long j)
{
  return Alternating(j, Power(x - 1, j + 1) / (j + 1));
}

// --- Sums of them ---

using Term = Rational (*)(const Rational& x, unsigned long j);

/// The terms 0..last.
Rational Sum(Term term, const Rational& x, unsigned long last)
{
  Rational sum;
  for (unsigned long j = 0; j <= last; ++j) sum += term(x, j);
  return sum;
}

/// The index of the first term behind term 0 that is smaller than the accuracy.
unsigned long FirstSmallTerm(Term term, const Rational& x, const Rational& accuracy)
{
  unsigned long j = 1;
  while (abs(term(x, j)) >= accuracy) ++j;
  return j;
}

Rational SumUpToFirstSmallTerm(Term term, const Rational& x, const Rational& accuracy)
{
  return Sum(term, x, FirstSmallTerm(term, x, accuracy));
}

/// The sum of the whole series, to far more bits than the default precision gives.
Rational Limit(Term term, const Rational& x)
{
  return SumUpToFirstSmallTerm(term, x, 1 / Power(2, mpf_get_default_prec() + 256));
}

struct Series {
  const char* name;
  MpfFunction function;
  Term term;
  /// An argument with a boundary term that is a sum of few powers of two, so that it is computed
  /// without rounding; all earlier terms are larger.
  Rational boundaryArgument;
  unsigned long boundary;
};

const Series kSeries[] = {
    {"sin", functions::sin, SinTerm, {3, 4}, 1},
    {"cos", functions::cos, CosTerm, {1, 2}, 1},
    {"asin", functions::asin, ASinTerm, {3, 4}, 1},
    {"atan", functions::atan, ATanTerm, {3, 4}, 1},
    {"sinh", functions::sinh, SinhTerm, {3, 4}, 1},
    {"cosh", functions::cosh, CoshTerm, {1, 2}, 1},
    {"exp", functions::exp, ExpTerm, {3, 2}, 2},
    {"atanh", functions::atanh, ATanhTerm, {3, 4}, 1},
    {"ln", functions::ln, LnTerm, {1, 2}, 1},
};

class FunctionFormulas : public testing::TestWithParam<int> {
 protected:
  FunctionFormulas() { mpf_set_default_prec(static_cast<mp_bitcnt_t>(GetParam())); }

  /// Equality up to the rounding errors of some hundred operations.
  static testing::AssertionResult IsNearly(const Rational& expected, const Mpf& actual)
  {
    const Real value(expected);
    const Real bound = TwoTo(12 - static_cast<long>(mpf_get_default_prec()));
    return IsWithin(bound * (1 + Abs(value)), actual, value);
  }

  ScopedGlobal global;
};

INSTANTIATE_TEST_SUITE_P(Bits, FunctionFormulas, testing::Values(53, 80, 123, 256),
                         testing::PrintToStringParamName());

// --- Where a series ends ---

TEST_P(FunctionFormulas, EndAfterTheFirstTermBelowTheAccuracy)
{
  for (const char* accuracy : {"0.3", "1e-2", "1e-5", "1e-10", "1e-15"}) {
    SCOPED_TRACE(accuracy);
    mpf_set_str(global->_ACCURACY, accuracy, 10);
    for (const Series& series : kSeries) {
      SCOPED_TRACE(series.name);
      for (const Mpf& x : RandomNumbers(10, 0.5, 0.9)) {
        const Rational expected =
            SumUpToFirstSmallTerm(series.term, Exact(x), Exact(global->_ACCURACY));
        EXPECT_TRUE(IsNearly(expected, Evaluate(series.function, x))) << "x = " << Real(x);
      }
    }
  }
}

TEST_P(FunctionFormulas, GoOnAfterATermThatEqualsTheAccuracy)
{
  for (const Series& series : kSeries) {
    SCOPED_TRACE(series.name);
    const Rational& x = series.boundaryArgument;
    const Rational term = abs(series.term(x, series.boundary));
    mpf_set_q(global->_ACCURACY, term.get_mpq_t());
    ASSERT_TRUE(IsExactly(term, global->_ACCURACY));
    const Mpf value = Evaluate(series.function, Rounded(x));
    EXPECT_TRUE(IsNearly(Sum(series.term, x, series.boundary + 1), value));
  }
}

TEST_P(FunctionFormulas, EndWithATermJustBelowTheAccuracy)
{
  for (const Series& series : kSeries) {
    SCOPED_TRACE(series.name);
    const Rational& x = series.boundaryArgument;
    const Rational above = abs(series.term(x, series.boundary)) + 1 / Power(2, 60);
    mpf_set_q(global->_ACCURACY, above.get_mpq_t());
    const Mpf value = Evaluate(series.function, Rounded(x));
    EXPECT_TRUE(IsNearly(Sum(series.term, x, series.boundary), value));
  }
}

TEST_P(FunctionFormulas, AddAtLeastOneTerm)
{
  // The accuracy is above every term, but the argument is not below it.
  mpf_set_d(global->_ACCURACY, 0.5);
  const Rational x(1, 2);
  for (const Series& series : kSeries) {
    SCOPED_TRACE(series.name);
    const Rational expected = SumUpToFirstSmallTerm(series.term, x, x);
    EXPECT_TRUE(IsNearly(expected, Evaluate(series.function, Rounded(x))));
  }
}

TEST_P(FunctionFormulas, IgnoreTheAccuracyInExactMode)
{
  global->_SIMPLIFYSMALL = false;
  mpf_set_d(global->_ACCURACY, 0.5);
  for (const Series& series : kSeries) {
    if (series.function == functions::sin || series.function == functions::cos) continue;
    SCOPED_TRACE(series.name);
    // Short fractions, for the sake of the powers.
    for (const Rational& x : {Rational(1, 2), Rational(5, 8), Rational(3, 4)}) {
      EXPECT_TRUE(IsNearly(Limit(series.term, x), Evaluate(series.function, Rounded(x))))
          << "x = " << x.get_str();
    }
  }
}

TEST_P(FunctionFormulas, SumTheArcTangentOfTheInverseAboveOne)
{
  for (const Mpf& x : RandomNumbers(10, 1.1, 3.0)) {
    SCOPED_TRACE(testing::Message() << "x = " << Real(x));
    Mpf inverse;
    mpf_ui_div(inverse, 1, x);
    const Rational sum = SumUpToFirstSmallTerm(ATanTerm, Exact(inverse), Exact(global->_ACCURACY));
    const Rational halfPi = Exact(global->_HALF_PI);
    EXPECT_TRUE(IsNearly(halfPi - sum, Evaluate(functions::atan, x)));
    EXPECT_TRUE(IsNearly(sum, Evaluate(functions::acotan, x)));
  }
}

TEST_P(FunctionFormulas, ComplementTheArcCotangentUpToOne)
{
  for (const Mpf& x : RandomNumbers(10, 0.1, 0.9)) {
    const Rational sum = SumUpToFirstSmallTerm(ATanTerm, Exact(x), Exact(global->_ACCURACY));
    EXPECT_TRUE(IsNearly(Exact(global->_HALF_PI) - sum, Evaluate(functions::acotan, x)))
        << "x = " << Real(x);
  }
}

TEST_P(FunctionFormulas, SplitTheLogarithmIntoMantissaAndExponent)
{
  // x = m 2^e with 1/2 <= m < 1; at a power of two m is 1/2.
  const struct {
    Rational m;
    long e;
  } rows[] = {{{1, 2}, 4}, {{1, 2}, 2}, {{1, 2}, -7}, {{3, 4}, 1}, {{5, 8}, 100}, {{7, 8}, -100}};
  for (const auto& [m, e] : rows) {
    SCOPED_TRACE(testing::Message() << m.get_d() << " * 2^" << e);
    const Rational power = Power(2, static_cast<unsigned long>(std::abs(e)));
    const Rational x = e > 0 ? Rational(m * power) : Rational(m / power);
    const Rational expected =
        e * Exact(global->_LN2) + SumUpToFirstSmallTerm(LnTerm, m, Exact(global->_ACCURACY));
    EXPECT_TRUE(IsNearly(expected, Evaluate(functions::ln, Rounded(x))));
  }
}

// --- Sums that are not those of the textbook ---

TEST_P(FunctionFormulas, SineAndCosineDivideBySquaresInExactMode)
{
  global->_SIMPLIFYSMALL = false;
  for (const Mpf& x : RandomNumbers(10, 0.0, 2.5)) {
    SCOPED_TRACE(testing::Message() << "x = " << Real(x));
    const Rational sine = Limit(ExactModeSinTerm, Exact(x));
    const Rational cosine = Limit(ExactModeCosTerm, Exact(x));
    EXPECT_TRUE(IsNearly(sine, Evaluate(functions::sin, x)));
    EXPECT_TRUE(IsNearly(cosine, Evaluate(functions::cos, x)));
    EXPECT_TRUE(IsNearly(sine / cosine, Evaluate(functions::tan, x)));
    EXPECT_TRUE(IsNearly(cosine / sine, Evaluate(functions::cotan, x)));
  }
}

TEST_P(FunctionFormulas, SineAndCosineReduceTheArgumentInExactMode)
{
  global->_SIMPLIFYSMALL = false;
  for (const char* text : {"7", "8", "27"}) {
    SCOPED_TRACE(text);
    const Mpf x(text);
    const Rational period = Exact(global->_PI_2);
    const Rational a = Exact(x) - Floor(Exact(x) / period) * period;
    EXPECT_TRUE(IsNearly(Limit(ExactModeSinTerm, a), Evaluate(functions::sin, x)));
    EXPECT_TRUE(IsNearly(Limit(ExactModeCosTerm, a), Evaluate(functions::cos, x)));
  }
}

TEST_P(FunctionFormulas, AreaTangentAccumulatesItsDivisors)
{
  const Mpf half(0.5);
  const Rational expected = SumUpToFirstSmallTerm(ATanhTerm, {1, 2}, Exact(global->_ACCURACY));
  EXPECT_TRUE(IsNearly(expected, Evaluate(functions::atanh, half)));
  // The textbook value is 0.549...
  EXPECT_NEAR(expected.get_d(), 0.5 + 1.0 / 24 + 1.0 / 480 + 1.0 / 13440, 3e-6);
}

TEST_P(FunctionFormulas, AreaTangentOfBothSignsInExactMode)
{
  global->_SIMPLIFYSMALL = false;
  for (const Mpf& x : RandomNumbers(10, -0.99, 0.99)) {
    SCOPED_TRACE(testing::Message() << "x = " << Real(x));
    const Rational expected = Limit(ATanhTerm, Exact(x));
    EXPECT_TRUE(IsNearly(expected, Evaluate(functions::atanh, x)));
    Mpf inverse;
    mpf_ui_div(inverse, 1, x);
    EXPECT_TRUE(IsNearly(expected, Evaluate(functions::acotanh, inverse)));
  }
}

TEST_P(FunctionFormulas, AreaCotangentIsTheAreaTangentOfTheInverse)
{
  for (const Mpf& x : RandomNumbers(10, 1.01, 9.0)) {
    Mpf inverse;
    mpf_ui_div(inverse, 1, x);
    const Rational expected =
        SumUpToFirstSmallTerm(ATanhTerm, Exact(inverse), Exact(global->_ACCURACY));
    EXPECT_TRUE(IsNearly(expected, Evaluate(functions::acotanh, x))) << "x = " << Real(x);
  }
}

}  // namespace
}  // namespace varno

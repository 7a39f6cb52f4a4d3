// The elementary functions against MPFR, wherever their series is the textbook one.

#include <gtest/gtest.h>

#include "tests/support/number_samples.h"
#include "tests/support/real.h"
#include "tests/varno/support/evaluate.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/functions/functions.h"

namespace varno {

using namespace support;
namespace {

using Reference = Real (*)(const Real& x);

// --- Reference values; those with the constants of the record, whose digits end early ---

template <int (*kFunction)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t)>
Real Textbook(const Real& x)
{
  return Apply(kFunction, x);
}

Real HalfPi()
{
  return Real(Expr::Global->_HALF_PI);
}

/// |x| less the periods that fit in.
Real Reduced(const Real& x)
{
  const Real period(Expr::Global->_PI_2);
  const Real size = Abs(x);
  return size - period * Apply(mpfr_rint_floor, size / period);
}

Real Sin(const Real& x)
{
  return Apply(mpfr_sin, Reduced(x));
}

Real Cos(const Real& x)
{
  return Apply(mpfr_cos, Reduced(x));
}

Real Tan(const Real& x)
{
  return Sin(x) / Cos(x);
}

Real Cotan(const Real& x)
{
  return Cos(x) / Sin(x);
}

Real ACos(const Real& x)
{
  return HalfPi() - Apply(mpfr_asin, x);
}

Real WithSign(const Real& sign, const Real& size)
{
  return mpfr_sgn(sign.Get()) < 0 ? -size : size;
}

Real ATan(const Real& x)
{
  const Real a = Abs(x);
  const bool inverted = mpfr_cmp_ui(a.Get(), 1) > 0;
  return WithSign(x, inverted ? HalfPi() - Apply(mpfr_atan, 1 / a) : Apply(mpfr_atan, a));
}

/// An odd function: the sign of x times the arc cotangent of |x|.
Real ACotan(const Real& x)
{
  const Real a = Abs(x);
  const bool inverted = mpfr_cmp_ui(a.Get(), 1) > 0;
  return WithSign(x, inverted ? Apply(mpfr_atan, 1 / a) : HalfPi() - Apply(mpfr_atan, a));
}

/// ln m + e ln 2
Real Ln(const Real& x)
{
  const auto e = static_cast<long>(mpfr_get_exp(x.Get()));
  return Apply(mpfr_log, x / TwoTo(e)) + Real(static_cast<double>(e)) * Real(Expr::Global->_LN2);
}

Real ASinh(const Real& x)
{
  return Ln(x + Apply(mpfr_sqrt, x * x + 1));
}

Real ACosh(const Real& x)
{
  return Ln(x + Apply(mpfr_sqrt, x * x - 1));
}

// --- ... and those of mathematics, where they differ ---

Real TrueACotan(const Real& x)
{
  return Apply(mpfr_atan, 1 / x);
}

enum Modes { kBothModes, kOnlySimplified, kOnlyExact };

/// A function and an interval where its series is the textbook one and converges quickly.
struct Row {
  const char* name;
  MpfFunction function;
  Reference reference;
  Reference mathematics;
  double low;
  double high;
  Modes modes;
};

const Row kRows[] = {
    {"sin", functions::sin, Sin, Textbook<mpfr_sin>, 0, 30, kOnlySimplified},
    {"cos", functions::cos, Cos, Textbook<mpfr_cos>, -30, 30, kOnlySimplified},
    {"tan", functions::tan, Tan, Textbook<mpfr_tan>, 0.01, 1.2, kOnlySimplified},
    {"tan beyond a period", functions::tan, Tan, Textbook<mpfr_tan>, 8, 10, kOnlySimplified},
    {"cotan", functions::cotan, Cotan, Textbook<mpfr_cot>, 0.4, 2.7, kOnlySimplified},
    {"asin", functions::asin, Textbook<mpfr_asin>, Textbook<mpfr_asin>, -0.9, 0.9, kBothModes},
    {"acos", functions::acos, ACos, Textbook<mpfr_acos>, -0.9, 0.9, kBothModes},
    {"atan", functions::atan, ATan, Textbook<mpfr_atan>, -0.9, 0.9, kBothModes},
    {"atan above 1", functions::atan, ATan, Textbook<mpfr_atan>, 1.1, 50, kBothModes},
    {"atan below -1", functions::atan, ATan, Textbook<mpfr_atan>, -50, -1.1, kBothModes},
    {"acotan", functions::acotan, ACotan, TrueACotan, -0.9, 0.9, kBothModes},
    {"acotan above 1", functions::acotan, ACotan, TrueACotan, 1.1, 50, kBothModes},
    {"acotan below -1", functions::acotan, ACotan, TrueACotan, -50, -1.1, kBothModes},
    {"sinh", functions::sinh, Textbook<mpfr_sinh>, Textbook<mpfr_sinh>, 0.01, 8, kBothModes},
    {"sinh below 0", functions::sinh, Textbook<mpfr_sinh>, Textbook<mpfr_sinh>, -8, 0, kOnlyExact},
    {"cosh", functions::cosh, Textbook<mpfr_cosh>, Textbook<mpfr_cosh>, 0.01, 8, kBothModes},
    {"cosh below 0", functions::cosh, Textbook<mpfr_cosh>, Textbook<mpfr_cosh>, -8, 0, kOnlyExact},
    {"tanh", functions::tanh, Textbook<mpfr_tanh>, Textbook<mpfr_tanh>, 0.01, 3, kBothModes},
    {"tanh below 0", functions::tanh, Textbook<mpfr_tanh>, Textbook<mpfr_tanh>, -3, 0, kOnlyExact},
    {"cotanh", functions::cotanh, Textbook<mpfr_coth>, Textbook<mpfr_coth>, 0.3, 3, kBothModes},
    {"cotanh below 0", functions::cotanh, Textbook<mpfr_coth>, Textbook<mpfr_coth>, -3, -0.3,
     kOnlyExact},
    {"asinh", functions::asinh, ASinh, Textbook<mpfr_asinh>, 0.01, 50, kBothModes},
    {"asinh below 0", functions::asinh, ASinh, Textbook<mpfr_asinh>, -20, 0, kOnlyExact},
    {"acosh", functions::acosh, ACosh, Textbook<mpfr_acosh>, 1.01, 50, kBothModes},
    {"exp", functions::exp, Textbook<mpfr_exp>, Textbook<mpfr_exp>, 0.01, 6, kBothModes},
    {"exp below 0", functions::exp, Textbook<mpfr_exp>, Textbook<mpfr_exp>, -6, 0, kOnlyExact},
    {"ln", functions::ln, Ln, Textbook<mpfr_log>, 0.01, 1000, kBothModes},
    {"ln below 1", functions::ln, Ln, Textbook<mpfr_log>, 0.001, 0.999, kBothModes},
};

class FunctionsAgainstMpfr : public testing::TestWithParam<int> {
 protected:
  FunctionsAgainstMpfr() { mpf_set_default_prec(static_cast<mp_bitcnt_t>(GetParam())); }

  /// The size of rounding errors: a thousand operations with numbers up to some hundreds lose no
  /// more than 14 bits.
  static Real RoundingBound() { return TwoTo(14 - static_cast<long>(mpf_get_default_prec())); }

  /// Compares the row's function with its reference, relatively for values above 1.
  static void ExpectValues(const Row& row, const Real& tolerance)
  {
    SCOPED_TRACE(row.name);
    for (const Mpf& x : RandomNumbers(12, row.low, row.high)) {
      const Real expected = row.reference(Real(x));
      EXPECT_TRUE(IsWithin(tolerance * (1 + Abs(expected)), Evaluate(row.function, x), expected))
          << "x = " << Real(x);
    }
  }

  ScopedGlobal global;
};

INSTANTIATE_TEST_SUITE_P(Bits, FunctionsAgainstMpfr, testing::Values(53, 80, 123, 256, 1024),
                         testing::PrintToStringParamName());

TEST_P(FunctionsAgainstMpfr, ReachFullPrecisionInExactMode)
{
  global->_SIMPLIFYSMALL = false;
  for (const Row& row : kRows) {
    if (row.modes != kOnlySimplified) ExpectValues(row, RoundingBound());
  }
}

TEST_P(FunctionsAgainstMpfr, ReachASmallAccuracy)
{
  // What a series leaves out after a last change of this size is at most 5 times as much: the
  // terms of asin 0.9, the slowest, decrease by the factor 0.81.
  mpfr_get_f(global->_ACCURACY, RoundingBound().Get(), MPFR_RNDN);
  for (const Row& row : kRows) {
    if (row.modes != kOnlyExact) ExpectValues(row, 10 * RoundingBound());
  }
}

TEST_P(FunctionsAgainstMpfr, ReachTheDefaultAccuracy)
{
  for (const Row& row : kRows) {
    if (row.modes != kOnlyExact) ExpectValues(row, 6 * Real(global->_ACCURACY));
  }
}

TEST_P(FunctionsAgainstMpfr, AreTheFunctionsOfMathematicsUpToTheDefaultAccuracy)
{
  // Beside the series, ln 2 has an error within the accuracy; it enters up to ten times, at 1000.
  for (const Row& row : kRows) {
    if (row.modes == kOnlyExact) continue;
    Row mathematics = row;
    mathematics.reference = row.mathematics;
    ExpectValues(mathematics, 16 * Real(global->_ACCURACY));
  }
}

TEST_P(FunctionsAgainstMpfr, SplitExtremeArgumentsOfTheLogarithm)
{
  global->_SIMPLIFYSMALL = false;
  for (const char* text : {"1e50", "1e-50", "3e1000", "7e-1000", "2", "0.5", "4", "0.25", "8"}) {
    SCOPED_TRACE(text);
    const Mpf x(text);
    const Real expected = Ln(Real(x));
    EXPECT_TRUE(
        IsWithin(RoundingBound() * (1 + Abs(expected)), Evaluate(functions::ln, x), expected));
  }
}

TEST_P(FunctionsAgainstMpfr, ReduceHugeArgumentsOfSineAndCosine)
{
  mpfr_get_f(global->_ACCURACY, RoundingBound().Get(), MPFR_RNDN);
  for (const char* text : {"6.3", "100", "1e6", "123456789.5", "1e15", "1e19"}) {
    SCOPED_TRACE(text);
    const Mpf x(text);
    EXPECT_TRUE(IsWithin(10 * RoundingBound(), Evaluate(functions::sin, x), Sin(Real(x))));
    EXPECT_TRUE(IsWithin(10 * RoundingBound(), Evaluate(functions::cos, x), Cos(Real(x))));
  }
}

}  // namespace
}  // namespace varno

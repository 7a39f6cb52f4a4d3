// The values that the elementary functions give without a series: shortcuts, ends of a domain,
// poles.

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

class SpecialValues : public testing::TestWithParam<int> {
 protected:
  SpecialValues() { mpf_set_default_prec(static_cast<mp_bitcnt_t>(GetParam())); }

  ScopedGlobal global;
};

INSTANTIATE_TEST_SUITE_P(Bits, SpecialValues, testing::Values(53, 80, 123, 256),
                         testing::PrintToStringParamName());

struct Shortcut {
  const char* name;
  MpfFunction function;
  Rational answer;
  /// On purpose some compare the argument with its sign: then every negative one is below the
  /// accuracy.
  bool comparesSign;
};

const Shortcut kShortcuts[] = {
    {"sinh", functions::sinh, 0, true},      {"tanh", functions::tanh, 0, true},
    {"asinh", functions::asinh, 0, true},    {"cosh", functions::cosh, 1, true},
    {"exp", functions::exp, 1, true},        {"atanh", functions::atanh, 1, true},
    {"cos", functions::cos, 1, false},       {"atan", functions::atan, 0, false},
    {"acotan", functions::acotan, 0, false},
};

TEST_P(SpecialValues, AnswerArgumentsBelowTheAccuracy)
{
  for (const Shortcut& row : kShortcuts) {
    SCOPED_TRACE(row.name);
    for (const char* x : {"9e-11", "1e-12", "1e-30", "0", "-1e-30", "-9e-11"}) {
      EXPECT_TRUE(IsExactly(row.answer, Evaluate(row.function, Mpf(x)))) << "x = " << x;
    }
  }
}

TEST_P(SpecialValues, SomeAnswerEveryNegativeArgumentLikeASmallOne)
{
  for (const Shortcut& row : kShortcuts) {
    SCOPED_TRACE(row.name);
    for (const char* x : {"-1e-10", "-1e-5", "-0.5", "-0.999"}) {
      const Mpf value = Evaluate(row.function, Mpf(x));
      EXPECT_EQ(IsExactly(row.answer, value), row.comparesSign) << "x = " << x;
    }
  }
}

TEST_P(SpecialValues, SumTheSeriesAtTheAccuracyItself)
{
  mpf_set_d(global->_ACCURACY, 0.125);
  for (const Shortcut& row : kShortcuts) {
    EXPECT_FALSE(IsExactly(row.answer, Evaluate(row.function, Mpf(0.125)))) << row.name;
  }
}

TEST_P(SpecialValues, HaveNoShortcutInExactMode)
{
  global->_SIMPLIFYSMALL = false;
  mpf_set_str(global->_ACCURACY, "1e-3", 10);
  for (const Shortcut& row : kShortcuts) {
    SCOPED_TRACE(row.name);
    for (const char* x : {"1e-6", "-1e-6", "-0.5"}) {
      EXPECT_FALSE(IsExactly(row.answer, Evaluate(row.function, Mpf(x)))) << "x = " << x;
    }
  }
}

TEST_P(SpecialValues, SineAnswersArgumentsBelowTheAccuracy)
{
  const Mpf below("9e-11"), at("1e-10");
  EXPECT_TRUE(IsExactly(0, Evaluate(functions::sin, below)));
  EXPECT_FALSE(IsExactly(0, Evaluate(functions::sin, at)));
  global->_SIMPLIFYSMALL = false;
  EXPECT_FALSE(IsExactly(0, Evaluate(functions::sin, below)));
}

TEST_P(SpecialValues, SineAndCosineAnswerWhatReducesToLittle)
{
  for (const unsigned long periods : {0UL, 1UL, 2UL, 1000UL}) {
    Mpf multiple, above;
    mpf_mul_ui(multiple, global->_PI_2, periods);
    mpf_add(above, multiple, Mpf("9e-11"));
    for (const Mpf* x : {&multiple, &above}) {
      SCOPED_TRACE(testing::Message() << "x = " << Real(*x));
      Mpf negative;
      mpf_neg(negative, *x);
      EXPECT_TRUE(IsExactly(0, Evaluate(functions::sin, *x)));
      EXPECT_TRUE(IsExactly(0, Evaluate(functions::sin, negative)));
      EXPECT_TRUE(IsExactly(1, Evaluate(functions::cos, *x)));
      EXPECT_TRUE(IsExactly(1, Evaluate(functions::cos, negative)));
    }
  }
}

TEST_P(SpecialValues, AreaCotangentOfANegativeArgumentIsOne)
{
  EXPECT_TRUE(IsExactly(1, Evaluate(functions::acotanh, Mpf("-2"))));
}

TEST_P(SpecialValues, AreaCosineIsZeroJustAboveOne)
{
  const Rational accuracy = 1 / Power(2, 20);
  mpf_set_q(global->_ACCURACY, accuracy.get_mpq_t());
  const Mpf below = Rounded(1 + accuracy / 2);
  const Mpf at = Rounded(1 + accuracy);
  EXPECT_TRUE(IsExactly(0, Evaluate(functions::acosh, below)));
  EXPECT_FALSE(IsExactly(0, Evaluate(functions::acosh, at)));
  EXPECT_TRUE(IsExactly(0, Evaluate(functions::acosh, Mpf(1.0))));
  global->_SIMPLIFYSMALL = false;
  EXPECT_FALSE(IsExactly(0, Evaluate(functions::acosh, below)));
  EXPECT_TRUE(IsExactly(0, Evaluate(functions::acosh, Mpf(1.0))));
}

TEST_P(SpecialValues, SpecialArgumentsNeedNoSeries)
{
  const Rational pi = Exact(global->_PI);
  const Rational halfPi = Exact(global->_HALF_PI);
  const struct {
    const char* name;
    MpfFunction function;
    const char* x;
    Rational expected;
  } rows[] = {
      {"asin", functions::asin, "1", halfPi}, {"asin", functions::asin, "-1", -halfPi},
      {"asin", functions::asin, "0", 0},      {"acos", functions::acos, "1", 0},
      {"acos", functions::acos, "-1", pi},    {"acos", functions::acos, "0", halfPi},
      {"exp", functions::exp, "0", 1},        {"ln", functions::ln, "1", 0},
      {"cos", functions::cos, "0", 1},        {"sin", functions::sin, "0", 0},
      {"cosh", functions::cosh, "0", 1},      {"sinh", functions::sinh, "0", 0},
      {"tanh", functions::tanh, "0", 0},      {"tan", functions::tan, "0", 0},
  };
  for (const bool simplify : {true, false}) {
    global->_SIMPLIFYSMALL = simplify;
    for (const auto& row : rows) {
      EXPECT_TRUE(IsExactly(row.expected, Evaluate(row.function, Mpf(row.x))))
          << row.name << '(' << row.x << ") with _SIMPLIFYSMALL " << simplify;
    }
  }
}

// --- Poles ---

TEST_P(SpecialValues, PolesHaveStandIns)
{
  const struct {
    const char* name;
    MpfFunction function;
    const char* x;
    const char* expected;
  } rows[] = {
      {"cotan", functions::cotan, "0", "1e999999"},
      {"cotanh", functions::cotanh, "0", "1e999999"},
      {"atanh", functions::atanh, "1", "1e999999"},
      {"atanh", functions::atanh, "-1", "-1e999999"},
      {"acotanh", functions::acotanh, "1", "1e999999"},
      {"acotanh", functions::acotanh, "-1", "-1e999999"},
      {"ln", functions::ln, "0", "-1e99999"},
  };
  for (const bool simplify : {true, false}) {
    global->_SIMPLIFYSMALL = simplify;
    for (const auto& row : rows) {
      const Mpf value = Evaluate(row.function, Mpf(row.x));
      EXPECT_EQ(mpf_cmp(value, Mpf(row.expected)), 0) << row.name << '(' << row.x << ')';
    }
  }
}

TEST_P(SpecialValues, HyperbolicCotangentOfANegativeArgumentIsANegativePole)
{
  // Because the hyperbolic sine answers 0.
  EXPECT_EQ(mpf_cmp(Evaluate(functions::cotanh, Mpf("-1")), Mpf("-1e999999")), 0);
}

TEST_P(SpecialValues, CotangentHasItsPoleWhereTheSineIsAnsweredWithZero)
{
  for (const char* x : {"9e-11", "-9e-11"}) {
    EXPECT_EQ(mpf_cmp(Evaluate(functions::cotan, Mpf(x)), Mpf("1e999999")), 0) << x;
  }
}

TEST_P(SpecialValues, TangentHasItsPoleWhereTheCosineIsExactlyZero)
{
  // No argument is known whose series sums to exactly 0; with a 1 that is 0 every cosine does. The
  // stand-in has no sign, and the sine, which would refuse a negative argument, is not asked.
  mpf_set_ui(global->_ONE, 0);
  for (const char* x : {"1.5", "-1.5"}) {
    EXPECT_EQ(mpf_cmp(Evaluate(functions::tan, Mpf(x)), Mpf("1e999999")), 0) << x;
  }
}

}  // namespace
}  // namespace varno

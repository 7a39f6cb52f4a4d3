// Where the elementary functions end the process, and with which words.

#include <csignal>
#include <errno.h>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/varno/support/evaluate.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/functions/functions.h"

namespace varno {

using namespace support;
namespace {

class FunctionFailures : public testing::TestWithParam<bool> {
 protected:
  FunctionFailures() { global->_SIMPLIFYSMALL = GetParam(); }

  ScopedGlobal global;
};

INSTANTIATE_TEST_SUITE_P(Simplify, FunctionFailures, testing::Bool(),
                         testing::PrintToStringParamName());

TEST_P(FunctionFailures, DomainErrorsEndTheRunWithTheirCondition)
{
  const struct {
    MpfFunction function;
    const char* x;
    const char* message;
  } rows[] = {
      {functions::asin, "1.5", "\n#(COMP) asin(x): |x| > 1\n"},
      {functions::asin, "-1.5", "\n#(COMP) asin(x): |x| > 1\n"},
      {functions::acos, "1e10", "\n#(COMP) acos(x): |x| > 1\n"},
      {functions::acos, "-1.5", "\n#(COMP) acos(x): |x| > 1\n"},
      {functions::acosh, "0.5", "\n#(COMP) acosh(x): x < 1\n"},
      {functions::acosh, "0", "\n#(COMP) acosh(x): x < 1\n"},
      {functions::acosh, "-2", "\n#(COMP) acosh(x): x < 1\n"},
      {functions::atanh, "1.5", "\n#(COMP) atanh(x): |x| > 1\n"},
      {functions::atanh, "-1.5", "\n#(COMP) atanh(x): |x| > 1\n"},
      {functions::acotanh, "0.5", "\n#(COMP) acotanh(x): |x| < 1\n"},
      {functions::acotanh, "-0.5", "\n#(COMP) acotanh(x): |x| < 1\n"},
      {functions::acotanh, "0", "\n#(COMP) acotanh(x): |x| < 1\n"},
      {functions::ln, "-1", "\n#(COMP) ln(x): x < 0\n"},
      {functions::ln, "-1e-300", "\n#(COMP) ln(x): x < 0\n"},
  };
  for (const auto& [function, x, message] : rows) {
    EXPECT_EXIT(Evaluate(function, Mpf(x)), testing::ExitedWithCode(1), ExactText(message))
        << "x = " << x;
  }
}

TEST_P(FunctionFailures, DomainsEndJustBeyondTheirLastPoint)
{
  Mpf little(1.0), above, below;
  mpf_div_2exp(little, little, 100);
  mpf_ui_sub(below, 1, little);
  mpf_add_ui(above, little, 1);
  EXPECT_EXIT(Evaluate(functions::asin, above), testing::ExitedWithCode(1),
              ExactText("\n#(COMP) asin(x): |x| > 1\n"));
  EXPECT_EXIT(Evaluate(functions::acos, above), testing::ExitedWithCode(1),
              ExactText("\n#(COMP) acos(x): |x| > 1\n"));
  EXPECT_EXIT(Evaluate(functions::acosh, below), testing::ExitedWithCode(1),
              ExactText("\n#(COMP) acosh(x): x < 1\n"));
  EXPECT_EXIT(Evaluate(functions::atanh, above), testing::ExitedWithCode(1),
              ExactText("\n#(COMP) atanh(x): |x| > 1\n"));
  EXPECT_EXIT(Evaluate(functions::acotanh, below), testing::ExitedWithCode(1),
              ExactText("\n#(COMP) acotanh(x): |x| < 1\n"));
}

// --- The checks of sine and cosine ---

/// The line of the C library's assertion about a check in `function`.
testing::Matcher<const std::string&> AssertionLine(int line, const std::string& function,
                                                   const std::string& expression)
{
  return ExactText(std::string(program_invocation_short_name) +
                   ": functions:" + std::to_string(line) + ": void " + function +
                   "(__mpf_struct (&)[1], __mpf_struct*): Assertion `" + expression +
                   "' failed.\n");
}

constexpr const char* kSinRange =
    "__gmpf_cmp(A,(Expr::Global -> _ZERO)) >= 0 && __gmpf_cmp(A,(Expr::Global -> _PI_2)) < 0";
constexpr const char* kCosRange =
    "__gmpf_cmp(A,(Expr::Global -> _PI_2)) < 0 && __gmpf_cmp(A,(Expr::Global -> _ZERO)) >= 0";
constexpr const char* kAtMostOne = "__gmpf_cmp(Res,(Expr::Global -> _ONE)) <= 0";
constexpr const char* kAtLeastMinusOne = "__gmpf_cmp(Tmp,(Expr::Global -> _ONE)) <= 0";

TEST_P(FunctionFailures, SineOfANegativeArgumentFailsItsRangeCheck)
{
  for (const char* x : {"-1", "-2e-10", "-100", "-1e30"}) {
    EXPECT_EXIT(Evaluate(functions::sin, Mpf(x)), testing::KilledBySignal(SIGABRT),
                AssertionLine(57, "sin", kSinRange))
        << "x = " << x;
  }
}

TEST_P(FunctionFailures, TangentAndCotangentOfANegativeArgumentFailInTheSine)
{
  for (const MpfFunction function : {functions::tan, functions::cotan}) {
    EXPECT_EXIT(Evaluate(function, Mpf("-1")), testing::KilledBySignal(SIGABRT),
                AssertionLine(57, "sin", kSinRange));
  }
}

TEST(FunctionFailuresInExactMode, SineOfASmallNegativeArgumentFailsItsRangeCheck)
{
  const ScopedGlobal global;
  global->_SIMPLIFYSMALL = false;
  EXPECT_EXIT(Evaluate(functions::sin, Mpf("-1e-12")), testing::KilledBySignal(SIGABRT),
              AssertionLine(57, "sin", kSinRange));
}

TEST(FunctionFailuresInExactMode, SineOfMinusOnePeriodIsZero)
{
  // Nothing is left of the argument that could be negative.
  const ScopedGlobal global;
  global->_SIMPLIFYSMALL = false;
  Mpf x;
  mpf_neg(x, global->_PI_2);
  EXPECT_EQ(Evaluate(functions::sin, x).Sign(), 0);
}

TEST_P(FunctionFailures, CosineFailsItsRangeCheckOnlyWithoutAZero)
{
  // |x| less its periods is always between 0 and 2 pi; a 0 that is 1 puts 0.5 below it.
  mpf_set_ui(global->_ZERO, 1);
  EXPECT_EXIT(Evaluate(functions::cos, Mpf(0.5)), testing::KilledBySignal(SIGABRT),
              AssertionLine(138, "cos", kCosRange));
}

TEST(FunctionFailuresOfASumThatEndsEarly, SineAndCosineBeyondOneFailTheirChecks)
{
  // Near its extremes a sum that ends with a term away from 0 lies beyond 1:
  // 1.57 - 0.645 + 0.0795 = 1.0045 and 4.71 - 17.4 + ... = -1.0007,
  // 1 - 19.7 + ... = 1.0003 and 1 - 4.93 + ... = -1.0018.
  const struct {
    MpfFunction function;
    const char* accuracy;
    const char* x;
    int line;
    const char* name;
    const char* expression;
  } rows[] = {
      {functions::sin, "0.1", "1.57", 110, "sin", kAtMostOne},
      {functions::sin, "0.01", "4.71", 114, "sin", kAtLeastMinusOne},
      {functions::cos, "0.01", "6.28", 199, "cos", kAtMostOne},
      {functions::cos, "0.1", "3.14", 203, "cos", kAtLeastMinusOne},
  };
  const ScopedGlobal global;
  for (const auto& [function, accuracy, x, line, name, expression] : rows) {
    mpf_set_str(global->_ACCURACY, accuracy, 10);
    EXPECT_EXIT(Evaluate(function, Mpf(x)), testing::KilledBySignal(SIGABRT),
                AssertionLine(line, name, expression));
  }
}

TEST(FunctionFailuresOfASumThatEndsEarly, SineOfAQuarterAndCosineOfHalfAPeriodFailAtTheDefaults)
{
  // The last terms, (pi/2)^17 / 17! and -pi^18 / 18!, lead 4e-14 and 1e-12 beyond.
  const ScopedGlobal global;
  EXPECT_EXIT(Evaluate(functions::sin, global->_HALF_PI), testing::KilledBySignal(SIGABRT),
              AssertionLine(110, "sin", kAtMostOne));
  EXPECT_EXIT(Evaluate(functions::cos, global->_PI), testing::KilledBySignal(SIGABRT),
              AssertionLine(203, "cos", kAtLeastMinusOne));
}

TEST(FunctionFailuresInExactMode, SumsOfSineAndCosineBelowMinusOneFailTheirChecks)
{
  // With the divisors 4, 36, 100, ... the sums at 4 are -5.9 and -1.5.
  const ScopedGlobal global;
  global->_SIMPLIFYSMALL = false;
  EXPECT_EXIT(Evaluate(functions::sin, Mpf("4")), testing::KilledBySignal(SIGABRT),
              AssertionLine(114, "sin", kAtLeastMinusOne));
  EXPECT_EXIT(Evaluate(functions::cos, Mpf("4")), testing::KilledBySignal(SIGABRT),
              AssertionLine(203, "cos", kAtLeastMinusOne));
}

// --- Arguments without an answer ---

TEST_P(FunctionFailures, SineAndCosineRefuseArgumentsThatSwallowThePeriod)
{
  for (const MpfFunction function :
       {functions::sin, functions::cos, functions::tan, functions::cotan}) {
    for (const char* x : {"1e100", "1e999999"}) {
      EXPECT_EXIT(
          Evaluate(function, Mpf(x)), testing::ExitedWithCode(1),
          ExactText(
              "#(ERR) sin(x), cos(x): |x| is so large that subtracting 2 pi leaves it as it is\n"))
          << "x = " << x;
    }
  }
}

TEST_P(FunctionFailures, ValuesBeyondAllExponentsEndTheRun)
{
  for (const MpfFunction function :
       {functions::exp, functions::sinh, functions::cosh, functions::tanh, functions::cotanh}) {
    for (const char* x : {"1e10000000000000000", "1e5552999999999999999"}) {
      EXPECT_EXIT(Evaluate(function, Mpf(x)), testing::ExitedWithCode(1),
                  ExactText("#(ERR) A number is out of range: its decimal exponent is beyond "
                            "+-5553000000000000000\n"))
          << "x = " << x;
    }
  }
}

TEST(FunctionFailuresInExactMode, AreaSineOfAVeryNegativeArgumentIsTheLogarithmOfZero)
{
  // -2^200 + sqrt(2^400 + 1): the 1 is lost, and the root is exact.
  const ScopedGlobal global;
  global->_SIMPLIFYSMALL = false;
  Mpf x(-1.0);
  mpf_mul_2exp(x, x, 200);
  EXPECT_EQ(mpf_cmp(Evaluate(functions::asinh, x), Mpf("-1e99999")), 0);
}

}  // namespace
}  // namespace varno

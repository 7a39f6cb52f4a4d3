#include "varno/core/global_data.h"

#include <climits>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>

#include <gmp.h>
#include <gtest/gtest.h>
#include <mpfr.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"
#include "varno/config/setters.h"
#include "varno/expr/differential.h"
#include "varno/expr/initialization.h"
#include "varno/solver/driver.h"
#include "varno/sys/memory.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

Rational Ten(int exponent)
{
  return exponent < 0 ? 1 / Ten(-exponent) : Power(10, static_cast<unsigned long>(exponent));
}

Rational TwoTo(int exponent)
{
  return exponent < 0 ? 1 / TwoTo(-exponent) : Power(2, static_cast<unsigned long>(exponent));
}

/// |actual - expected| <= bound
testing::AssertionResult IsWithin(const Rational& bound, mpf_srcptr actual,
                                  const Rational& expected)
{
  const Rational error = abs(Exact(actual) - expected);
  if (error <= bound) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << Exact(actual).get_d() << " is off " << expected.get_d() << " by " << error.get_d();
}

/// |actual - expected| <= |expected| 2^-bits
testing::AssertionResult IsAccurateTo(int bits, const Rational& expected, mpf_srcptr actual)
{
  return IsWithin(abs(expected) * TwoTo(-bits), actual, expected);
}

/// A constant of MPFR to 2600 bits.
Rational ConstantOf(int (*constant)(mpfr_ptr, mpfr_rnd_t))
{
  mpfr_t number;
  mpfr_init2(number, 2600);
  constant(number, MPFR_RNDN);
  Rational value;
  mpfr_get_q(value.get_mpq_t(), number);
  mpfr_clear(number);
  return value;
}

Rational Pi()
{
  return ConstantOf(mpfr_const_pi);
}

Rational Ln2()
{
  return ConstantOf(mpfr_const_log2);
}

/// A record as it is built before any precision is set.
class GlobalDataTest : public testing::Test {
 protected:
  GlobalDataTest() { mpf_set_default_prec(53); }
  ~GlobalDataTest() override { mpf_set_default_prec(savedPrecision); }

  const mp_bitcnt_t savedPrecision = mpf_get_default_prec();
};

TEST_F(GlobalDataTest, IntegersHaveTheirDefaults)
{
  const GlobalData global;
  const struct {
    const char* name;
    int actual;
    int expected;
  } rows[] = {
      {"_NTERMS", global._NTERMS, 15},         {"_ZEROTERMS", global._ZEROTERMS, 4},
      {"_STEADYSTOP", global._STEADYSTOP, 0},  {"_STIFFEXPDIFF", global._STIFFEXPDIFF, 20},
      {"_PERIODSAME", global._PERIODSAME, 0},  {"_PERIODBUF", global._PERIODBUF, 50},
      {"_DUMPDY", global._DUMPDY, 0},          {"_PRINTWIDTH", global._PRINTWIDTH, 15},
      {"_PRINTCHARS", global._PRINTCHARS, 11}, {"_FMT_INT", global._FMT_INT, 2},
      {"_3DPOINTS", global._3DPOINTS, 0},      {"_WORK0", global._WORK0, 0},
      {"_STEPNO", global._STEPNO, 0},          {"_STEPNO_AUX", global._STEPNO_AUX, -1},
  };
  for (const auto& row : rows) EXPECT_EQ(row.actual, row.expected) << row.name;
}

TEST_F(GlobalDataTest, FlagsHaveTheirDefaults)
{
  const GlobalData global;
  const struct {
    const char* name;
    bool actual;
    bool expected;
  } rows[] = {
      {"_USEALLTERMS", global._USEALLTERMS, false},
      {"_SIMPLIFYSMALL", global._SIMPLIFYSMALL, true},
      {"_FIXEDSTEP", global._FIXEDSTEP, false},
      {"_STIFFEVERYSTEP", global._STIFFEVERYSTEP, false},
      {"_PRINTONLYTMAX", global._PRINTONLYTMAX, false},
      {"_PRINTORDER", global._PRINTORDER, true},
      {"_PRINTTEMPEQ", global._PRINTTEMPEQ, false},
      {"_DUMPTREE", global._DUMPTREE, false},
      {"_FMT_FLAG", global._FMT_FLAG, true},
      {"_FMT_FLAG2", global._FMT_FLAG2, false},
      {"_GNUPLOT", global._GNUPLOT, false},
      {"_ALL3DVALUES", global._ALL3DVALUES, false},
      {"_RESET_FLAG", global._RESET_FLAG, false},
  };
  for (const auto& row : rows) EXPECT_EQ(row.actual, row.expected) << row.name;
}

TEST_F(GlobalDataTest, TextsAndTablesHaveTheirDefaults)
{
  const GlobalData global;
  EXPECT_EQ(global._GNUPLOTOUTPUT, "x11");
  EXPECT_EQ(global._GNUPLOTFILE, "output");
  EXPECT_EQ(global._PRINTLIST, "");
  EXPECT_EQ(global._NOPRINTLIST, "");
  EXPECT_EQ(global._PERIODEQ, "");
  EXPECT_EQ(global._FILLCHAR, ' ');
  EXPECT_TRUE(global._EQUATIONS.empty());
  EXPECT_TRUE(global._STARTVALUES.empty());
  EXPECT_TRUE(global._STEPDIV.IsEmpty());
}

TEST_F(GlobalDataTest, NumbersHaveTheirDefaults)
{
  const GlobalData global;
  EXPECT_TRUE(IsExactly(0, global._ZERO));
  EXPECT_TRUE(IsExactly(1, global._ONE));
  EXPECT_TRUE(IsExactly(0, global._T));
  EXPECT_TRUE(IsExactly(1, global._TMAX));
  EXPECT_TRUE(IsExactly(0, global._PRINTEVERY));
  EXPECT_TRUE(IsExactly(0, global._PERIODDERIV));
  EXPECT_TRUE(IsAccurateTo(64, Ten(-10), global._ACCURACY));
  EXPECT_TRUE(IsAccurateTo(64, Ten(1000), global._BIG));
  EXPECT_TRUE(IsExactly(-Exact(global._BIG), global._NEGBIG));
}

TEST_F(GlobalDataTest, TheStepIsTheDoubleAndNotTheDecimal01)
{
  EXPECT_TRUE(IsExactly(Rational(0.1), GlobalData()._STEP));
}

TEST_F(GlobalDataTest, PiAndItsMultiplesAreAsAccurateAsTheirPrecision)
{
  const GlobalData global;
  EXPECT_TRUE(IsAccurateTo(64, Pi(), global._PI));
  EXPECT_TRUE(IsAccurateTo(64, Pi() * 2, global._PI_2));
  EXPECT_TRUE(IsAccurateTo(64, Pi() / 2, global._HALF_PI));
}

TEST_F(GlobalDataTest, PiIsKnownTo559Decimals)
{
  mpf_set_default_prec(2000);
  const GlobalData global;
  EXPECT_TRUE(IsWithin(Ten(-559), global._PI, Pi()));
  EXPECT_FALSE(IsWithin(Ten(-561), global._PI, Pi()));
}

/// 2 (x + x^3/3 + ... + x^n/n) with x = 1/3, up to the first summand below 1e-10, which is the one
/// with n = 19: 2 / (17 3^17) is 9.1e-10, 2 / (19 3^19) is 9.1e-11.
TEST_F(GlobalDataTest, Ln2IsThePartialSumThatTheDefaultAccuracyAsksFor)
{
  Rational sum = 0;
  for (unsigned long n = 1; n <= 19; n += 2) sum += 2 / (n * Power(3, n));
  EXPECT_TRUE(IsAccurateTo(64, sum, GlobalData()._LN2));
}

TEST_F(GlobalDataTest, Ln2IsOnlyAsAccurateAsTheDefaultAccuracyAtAnyPrecision)
{
  for (const mp_bitcnt_t precisionBits : {53, 123, 1000}) {
    mpf_set_default_prec(precisionBits);
    const GlobalData global;
    EXPECT_TRUE(IsWithin(Ten(-10), global._LN2, Ln2())) << precisionBits;
    EXPECT_FALSE(IsWithin(Ten(-12), global._LN2, Ln2())) << precisionBits;
  }
}

TEST_F(GlobalDataTest, NumbersKeepThePrecisionOfTheirBirth)
{
  GlobalData global;
  mpf_set_default_prec(200);
  for (const Mpf* number :
       {&global._PI, &global._PI_2, &global._HALF_PI, &global._LN2, &global._BIG, &global._NEGBIG,
        &global._ZERO, &global._ONE, &global._ACCURACY, &global._STEP, &global._T, &global._TMAX,
        &global._PRINTEVERY, &global._PERIODDERIV}) {
    EXPECT_EQ(mpf_get_prec(*number), 64U);
  }
  EXPECT_FALSE(IsAccurateTo(200, Pi(), global._PI));
  EXPECT_TRUE(SetNumberFromText(global._TMAX, "0.1"));
  EXPECT_FALSE(IsAccurateTo(200, Ten(-1), global._TMAX));
}

TEST_F(GlobalDataTest, SettingTheTermCountBuildsTheStepDivisions)
{
  GlobalData global;
  mpf_set_d(global._STEP, 0.75);
  for (const int count : {1, 2, 34, 7}) {
    global.SetTermCount(count);
    EXPECT_EQ(global._NTERMS, count);
    ASSERT_EQ(global._STEPDIV.Size(), static_cast<std::size_t>(count) + 1);
    EXPECT_TRUE(IsExactly(0, global._STEPDIV[0]));
    for (int k = 1; k < count; ++k) {
      const Rational quotient = Rational(3, 4) / k;
      EXPECT_TRUE(IsAccurateTo(64, quotient, global._STEPDIV[k])) << k;
    }
  }
}

TEST_F(GlobalDataTest, SettingTheStepRefillsTheStepDivisions)
{
  GlobalData global;
  global.SetTermCount(5);
  global.SetStep(0.5);
  EXPECT_TRUE(IsExactly(Rational(1, 2), global._STEP));
  EXPECT_TRUE(IsExactly(0, global._STEPDIV[0]));
  EXPECT_TRUE(IsExactly(Rational(1, 2), global._STEPDIV[1]));
  EXPECT_TRUE(IsExactly(Rational(1, 8), global._STEPDIV[4]));
  global.SetStep(Mpf(-3.0));
  EXPECT_TRUE(IsExactly(-3, global._STEP));
  EXPECT_TRUE(IsExactly(Rational(-3, 4), global._STEPDIV[4]));
}

TEST_F(GlobalDataTest, SettingTheStepToItselfRefillsTheStepDivisions)
{
  GlobalData global;
  global.SetTermCount(5);
  mpf_set_ui(global._STEP, 2);
  global.SetStep(global._STEP);
  EXPECT_TRUE(IsExactly(2, global._STEP));
  EXPECT_TRUE(IsExactly(Rational(1, 2), global._STEPDIV[4]));
}

TEST_F(GlobalDataTest, SettingTheStepBuildsTheStepDivisionsWhereThereAreNone)
{
  GlobalData global;
  global.SetStep(0.5);
  ASSERT_EQ(global._STEPDIV.Size(), 16U);
  EXPECT_TRUE(IsAccurateTo(64, Rational(1, 28), global._STEPDIV[14]));
}

TEST_F(GlobalDataTest, OnlyANewTermCountGivesTheStepDivisionsTheNewPrecision)
{
  GlobalData global;
  global.SetTermCount(5);
  mpf_set_default_prec(200);
  global.SetStep(0.5);
  EXPECT_EQ(mpf_get_prec(global._STEPDIV[3]), 64U);
  global.SetTermCount(5);
  EXPECT_GE(mpf_get_prec(global._STEPDIV[3]), 200U);
}

TEST_F(GlobalDataTest, ATermCountOf0OrLessIsKeptButHasNoDivisions)
{
  for (const int count : {0, -1, -1000, INT_MIN}) {
    GlobalData global;
    global.SetTermCount(count);
    EXPECT_EQ(global._NTERMS, count);
    EXPECT_EQ(global._STEPDIV.Size(), 1U);
    global.SetStep(0.5);
    EXPECT_EQ(global._STEPDIV.Size(), 1U);
    EXPECT_TRUE(IsExactly(0, global._STEPDIV[0]));
  }
}

TEST_F(GlobalDataTest, ATermCountBeyondAllMemoryEndsTheRun)
{
  GlobalData global;
  const auto setTermCount = [&global](long count) {
    InstallMemoryLimits();
    // So that even the largest int is beyond any machine.
    mpf_set_default_prec(mp_bitcnt_t{1} << 30);
    global.SetTermCount(count);
  };
  for (const long count : {long{INT_MAX}, long{INT_MAX} + 1, LONG_MAX}) {
    EXPECT_EXIT(setTermCount(count), testing::ExitedWithCode(1),
                ExactText("#(ERR) Out of memory\n"))
        << count;
  }
}

// --- The setters that settings go through ---

TEST(TermCountSettingTest, TheMaximumOrderCountsWithoutTheZeroTerms)
{
  const ScopedGlobal global;
  SetMaximumOrder("20");
  EXPECT_EQ(global->_NTERMS, 24);
  EXPECT_EQ(global->_STEPDIV.Size(), 25U);
}

TEST(TermCountSettingTest, ZeroTermsAreAddedToACountThatAlreadyHoldsTheOldOnes)
{
  const ScopedGlobal global;
  SetZeroTerms("6");
  EXPECT_EQ(global->_ZEROTERMS, 6);
  EXPECT_EQ(global->_NTERMS, 40);
}

TEST(TermCountSettingTest, TheOrderOfMaximumOrderAndZeroTermsMatters)
{
  {
    const ScopedGlobal global;
    SetZeroTerms("6");
    SetMaximumOrder("20");
    EXPECT_EQ(global->_NTERMS, 26);
  }
  {
    const ScopedGlobal global;
    SetMaximumOrder("20");
    SetZeroTerms("6");
    EXPECT_EQ(global->_NTERMS, 30);
  }
}

TEST(FlagSettingTest, AFlagGivenAs2IsOff)
{
  const ScopedGlobal global;
  SetFlag<&GlobalData::_SIMPLIFYSMALL>("2");
  EXPECT_FALSE(global->_SIMPLIFYSMALL);
  SetFlag<&GlobalData::_SIMPLIFYSMALL>("1");
  EXPECT_TRUE(global->_SIMPLIFYSMALL);
}

TEST(AccuracySettingTest, TheAccuracyIsTheDoubleAndNotTheDecimal)
{
  const ScopedGlobal global;
  SetAccuracy("1e-12");
  EXPECT_TRUE(IsExactly(Rational(1e-12), global->_ACCURACY));
}

TEST(StartOfARunTest, WithoutSettingsARunHas34Terms01Tmax1Accuracy1e10And80Bits)
{
  // The version option ends the run just behind the reading of settings.
  const auto run = [] {
    setenv("HOME", "/nonexistent", 1);
    std::atexit([] {
      const GlobalData& global = *Expr::Global;
      Mpf eightyBits;
      mpf_set_prec(eightyBits, 80);
      std::clog << "terms " << global._NTERMS << ", step" << global._STEP << ", Tmax"
                << global._TMAX << ", accuracy" << global._ACCURACY << ", "
                << (mpf_get_prec(Mpf()) == mpf_get_prec(eightyBits) ? "80 bits" : "other bits")
                << std::endl;
    });
    char name[] = "varno";
    char option[] = "-v";
    char* arguments[] = {name, option, nullptr};
    RunProgram(2, arguments);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0),
              "terms 34, step 1.00000000000e-01, Tmax 1.00000000000e.00, "
              "accuracy 1.00000000000e-10, 80 bits\n$");
}

// --- The end of a record ---

/// Deletes a record whose equations have been used as in a run, and returns how many of the series
/// nodes in them are left.
int NodesLeftBy(const std::function<void(const Ref& leaf)>& makeEquations)
{
  const int before = SeriesNode::alive;
  {
    const ScopedGlobal global;
    makeEquations(Series({1.0}));
    for (const auto& [name, variable] : global->_EQUATIONS) variable->Derivative();
    InitializeEquations();
    EXPECT_GT(SeriesNode::alive, before);
  }
  return SeriesNode::alive - before;
}

TEST(GlobalDataEndTest, AVariableThatRefersToItselfGoesWithTheRecord)
{
  EXPECT_EQ(0, NodesLeftBy([](const Ref& leaf) {
              const Ref y = MakeVariable("y", 1.0);
              VariableOf(y).SetRightHandSide(y);
              MakeVariable("z", 1.0, Ref(kPlus, y, leaf));
            }));
}

TEST(GlobalDataEndTest, VariablesThatReferToOneAnotherGoWithTheRecord)
{
  EXPECT_EQ(0, NodesLeftBy([](const Ref& leaf) {
              const Ref first = MakeVariable("first", 1.0);
              const Ref second = MakeVariable("second", 1.0, Ref(kPlus, first, leaf));
              VariableOf(first).SetRightHandSide(Ref(kUnMinus, second));
            }));
}

TEST(GlobalDataEndTest, DerivativesOfEveryOrderGoWithTheRecord)
{
  EXPECT_EQ(0, NodesLeftBy([](const Ref& leaf) {
              const Ref y = MakeVariable("y", 1.0);
              VariableOf(y).SetRightHandSide(Ref(kMultiply, y, leaf));
              Ref derivative = y;
              for (int order = 0; order < 5; ++order) derivative = derivative->Derivative();
            }));
}

TEST(GlobalDataEndTest, ConvertedFunctionsOfTheirOwnVariableGoWithTheRecord)
{
  EXPECT_EQ(0, NodesLeftBy([](const Ref& leaf) {
              const Ref y = MakeVariable("y", 1.0);
              VariableOf(y).SetRightHandSide(Ref(kSin, Ref(kPlus, y, leaf)));
            }));
}

TEST(GlobalDataEndTest, NodesThatAreStillHeldOutliveTheRecord)
{
  const int before = SeriesNode::alive;
  {
    Ref held;
    {
      const ScopedGlobal global;
      held = Series({1.0});
      MakeVariable("y", 1.0, held);
    }
    EXPECT_EQ(SeriesNode::alive, before + 1);
    EXPECT_EQ(held->RefCount(), 1);
  }
  EXPECT_EQ(SeriesNode::alive, before);
}

}  // namespace
}  // namespace varno

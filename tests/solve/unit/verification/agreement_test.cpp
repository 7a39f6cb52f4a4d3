#include "solve/verification/agreement.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

SizedNumber Number(const char* text, double size = -1000)
{
  Real value(300);
  mpfr_set_str(value, text, 10, MPFR_RNDN);
  return {value, size};
}

Verdict Compared(const SizedNumber& a, const SizedNumber& b, bool mayDeclareZero = false)
{
  return Compare(a, b, {.digits = 5, .mayDeclareZero = mayDeclareZero, .clearDecimals = 3}).verdict;
}

TEST(Agreement, AskedToAQuarterOfTheLastUnit)
{
  // Five digits of 1.2345: the unit is 1e-4.
  EXPECT_EQ(Compared(Number("1.23450"), Number("1.23452")), Verdict::kAgree);
  EXPECT_EQ(Compared(Number("1.23450"), Number("1.23453")), Verdict::kDiffer);
  EXPECT_EQ(Compared(Number("-1.23450e90"), Number("-1.23452e90")), Verdict::kAgree);
  EXPECT_EQ(Compared(Number("1.2345e-90"), Number("-1.2345e-90")), Verdict::kDiffer);
}

TEST(Agreement, TakesTheSmallerUnitAtAPowerOfTen)
{
  EXPECT_EQ(Compared(Number("1.00000"), Number("1.000004")), Verdict::kAgree);
  EXPECT_EQ(Compared(Number("1.000001"), Number("0.999990")), Verdict::kDiffer);
}

TEST(Agreement, ExactZerosAgree)
{
  const double nothing = -std::numeric_limits<double>::infinity();
  EXPECT_EQ(Compared(Number("0", nothing), Number("0", nothing)), Verdict::kAgree);
}

TEST(Agreement, OnlyExactRunsDeclareAZero)
{
  const SizedNumber a = Number("1e-30", 0), b = Number("-3e-31", 0);
  EXPECT_EQ(Compared(a, b, false), Verdict::kBlurred);
  EXPECT_EQ(Compared(a, b, true), Verdict::kZero);
  // The same numbers, where nothing cancels: no zeros.
  EXPECT_EQ(Compared(Number("1e-30", -100), Number("-3e-31", -100), true), Verdict::kDiffer);
}

TEST(Agreement, NoDigitsAreAskedForOfWhatCountsAsZero)
{
  const AgreementRule rule{
      .digits = 5, .mayDeclareZero = false, .clearDecimals = 3, .tinyLog2 = std::log2(1e-100)};
  const double tiny = std::log2(1e-101);
  EXPECT_EQ(Compare(Number("1e-102", tiny), Number("-3e-103", tiny), rule).verdict, Verdict::kTiny);
  // Their digits are right all the same, or the limit is not far enough above them.
  EXPECT_EQ(Compare(Number("1e-102", tiny), Number("1e-102", tiny), rule).verdict, Verdict::kAgree);
  EXPECT_EQ(Compare(Number("1e-102"), Number("2e-100"), rule).verdict, Verdict::kDiffer);
  // The rest of a cancellation of larger numbers says nothing.
  EXPECT_NE(Compare(Number("1e-102", 0), Number("-3e-103", 0), rule).verdict, Verdict::kTiny);
}

TEST(Agreement, EqualNumbersFarBelowTheirSizeMayBeWrongAlike)
{
  const double thousandths = std::log2(999.0), less = std::log2(1001.0);
  EXPECT_EQ(Compared(Number("1", thousandths), Number("1", thousandths)), Verdict::kAgree);
  EXPECT_EQ(Compared(Number("1", less), Number("1", less)), Verdict::kBlurred);
}

TEST(Agreement, AZeroIsNotAboveItsUnit)
{
  // Size 9: zeros are printed as 0e-20.
  const double size = std::log2(9.0);
  EXPECT_EQ(Compared(Number("3e-20", size), Number("3.1e-20", size), true), Verdict::kBlurred);
  EXPECT_EQ(Compared(Number("0.9e-20", size), Number("0.8e-20", size), true), Verdict::kZero);
}

TEST(Agreement, NoZeroUnderASizeThatTheDecimalsDoNotReach)
{
  const double large = std::log2(1e30);
  EXPECT_EQ(Compared(Number("0", large), Number("0", large), true), Verdict::kBlurred);
  const AgreementRule rule{.digits = 5, .mayDeclareZero = true, .clearDecimals = 31};
  EXPECT_EQ(Compare(Number("0", large), Number("0", large), rule).verdict, Verdict::kZero);
}

TEST(Agreement, AtAVerticalTangentOnlyTheDifferenceCounts)
{
  const double endless = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Compared(Number("0", endless), Number("0", endless), true), Verdict::kAgree);
  EXPECT_EQ(Compared(Number("0", endless), Number("1e-9", 9), true), Verdict::kBlurred);
}

TEST(Agreement, UndefinedAgreesWithUndefinedOnly)
{
  const SizedNumber none{std::nullopt, 0};
  EXPECT_EQ(Compared(none, none), Verdict::kAgree);
  EXPECT_EQ(Compared(none, Number("1")), Verdict::kDiffer);
  EXPECT_EQ(Compared(Number("1"), none), Verdict::kDiffer);
}

TEST(Agreement, CountsTheDecimalsInCommon)
{
  const Agreement agreement = Compare(Number("1.2345"), Number("1.2346"),
                                      {.digits = 9, .mayDeclareZero = false, .clearDecimals = 3});
  EXPECT_NEAR(agreement.commonDecimals, 4.09, 0.01);  // log10(1.2346 / 0.0001)
}

TEST(Agreement, AZeroIsKnownToFifteenDigitsMoreThanAskedFor)
{
  EXPECT_EQ(ZeroUnit(0.0, 15), -30);
  EXPECT_EQ(ZeroUnit(std::log2(250.0), 15), -28);
}

}  // namespace
}  // namespace varno::solve

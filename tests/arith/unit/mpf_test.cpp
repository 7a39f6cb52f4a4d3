#include "arith/mpf.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/rational.h"
#include "tests/support/scoped_precision.h"

namespace arith {

using namespace support;
namespace {

/// At 80 bits; GMP counts precision in whole limbs.
class MpfTest : public testing::Test {
 protected:
  static mp_bitcnt_t LimbBits(mp_bitcnt_t bits)
  {
    mpf_t number;
    mpf_init2(number, bits);
    const mp_bitcnt_t precision = mpf_get_prec(number);
    mpf_clear(number);
    return precision;
  }

  const ScopedPrecision runPrecision{80};
  const Rational oneThird = Rational(1, 3);
};

TEST_F(MpfTest, StartsAtZero)
{
  EXPECT_TRUE(IsExactly(0, Mpf()));
}

TEST_F(MpfTest, TakesAValueFromADoubleATextOrANumber)
{
  const Mpf fromDouble(0.1);
  const Mpf fromText("-25e-2");
  const Mpf fromNumber(static_cast<mpf_srcptr>(fromText));
  EXPECT_TRUE(IsExactly(Rational(0.1), fromDouble));
  EXPECT_TRUE(IsExactly(Rational(-1, 4), fromText));
  EXPECT_TRUE(IsExactly(Rational(-1, 4), fromNumber));
}

TEST_F(MpfTest, TextThatIsNoNumberGivesZero)
{
  EXPECT_TRUE(IsExactly(0, Mpf("no number")));
  EXPECT_TRUE(IsExactly(0, Mpf("")));
}

TEST_F(MpfTest, HasThePrecisionInForceWhenBuiltWhateverItIsBuiltFrom)
{
  const Mpf narrow("0.1");
  mpf_set_default_prec(500);
  const Mpf fresh, fromDouble(0.1), fromText("0.1"), copy(narrow);
  const Mpf fromNumber(static_cast<mpf_srcptr>(narrow));
  EXPECT_EQ(mpf_get_prec(narrow), LimbBits(80));
  for (const Mpf* number : {&fresh, &fromDouble, &fromText, &copy, &fromNumber}) {
    EXPECT_EQ(mpf_get_prec(*number), LimbBits(500));
  }
  EXPECT_TRUE(IsExactly(Exact(narrow), copy));
}

TEST_F(MpfTest, SettingAValueKeepsThePrecision)
{
  Mpf narrow;
  mpf_set_default_prec(500);
  const Mpf wide("0.1");
  mpf_set(narrow, wide);
  EXPECT_EQ(mpf_get_prec(narrow), LimbBits(80));
  EXPECT_NE(mpf_cmp(narrow, wide), 0);
}

TEST_F(MpfTest, AssignmentReplacesThePrecisionToo)
{
  Mpf target(1.0);
  mpf_set_default_prec(500);
  const Mpf wide("0.1");
  target = wide;
  EXPECT_EQ(mpf_get_prec(target), LimbBits(500));
  EXPECT_TRUE(IsExactly(Exact(wide), target));
}

TEST_F(MpfTest, AssignmentToItselfKeepsTheValue)
{
  Mpf number("0.5");
  const Mpf& same = number;
  number = same;
  EXPECT_TRUE(IsExactly(Rational(1, 2), number));
}

TEST_F(MpfTest, AMovedFromNumberCanBeAssignedAndDestroyed)
{
  Mpf number("0.5");
  Mpf moved(std::move(number));
  EXPECT_TRUE(IsExactly(Rational(1, 2), moved));
  number = Mpf(2.0);
  EXPECT_TRUE(IsExactly(2, number));
  number = std::move(moved);
  EXPECT_TRUE(IsExactly(Rational(1, 2), number));
}

TEST_F(MpfTest, NumbersKeepTheirValuesInAGrowingVector)
{
  std::vector<Mpf> numbers;
  for (int i = 0; i < 1000; ++i) numbers.emplace_back(static_cast<double>(i));
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(IsExactly(i, numbers[static_cast<std::size_t>(i)]));
}

TEST_F(MpfTest, TellsTheSign)
{
  EXPECT_EQ(Mpf("-1e-1000").Sign(), -1);
  EXPECT_EQ(Mpf("0").Sign(), 0);
  EXPECT_EQ(Mpf("1e-1000").Sign(), 1);
}

}  // namespace
}  // namespace arith

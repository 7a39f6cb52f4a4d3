#include "varno/sys/number_checks.h"

#include <climits>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/support/scoped_precision.h"
#include "varno/sys/memory.h"

namespace varno {

using namespace support;
namespace {

constexpr const char* kMessage =
    "#(ERR) A number is out of range: its decimal exponent is beyond +-5553000000000000000\n";

/// 1 moved to an exponent in limbs.
arith::Mpf OneAt(mp_exp_t limbs)
{
  arith::Mpf x(1.0);
  static_cast<mpf_t&>(x)->_mp_exp = limbs;
  return x;
}

TEST(RequireRange, LetsAnOrdinaryNumberPass)
{
  RequireRange(arith::Mpf("1e1000000"));
  RequireRange(OneAt(arith::kLargestLimbExponent));
  RequireRange(OneAt(-arith::kLargestLimbExponent));
  RequireRange(arith::Mpf(0.0));
}

TEST(RequireRange, EndsTheRunForANumberOutOfRange)
{
  for (const mp_exp_t limbs : {arith::kLargestLimbExponent + 1, 32 * arith::kLargestLimbExponent}) {
    EXPECT_EXIT(RequireRange(OneAt(limbs)), testing::ExitedWithCode(1), ExactText(kMessage));
    EXPECT_EXIT(RequireRange(OneAt(-limbs)), testing::ExitedWithCode(1), ExactText(kMessage));
  }
}

TEST(RequireRoom, LetsANumberPassThatHasRoom)
{
  RequireRoom(OneAt(4 * arith::kLargestLimbExponent));
  RequireRoom(OneAt(-4 * arith::kLargestLimbExponent));
  RequireRoom(arith::Mpf(0.0));
}

TEST(RequireRoom, EndsTheRunForANumberWithoutRoom)
{
  const mp_exp_t limbs = 30 * arith::kLargestLimbExponent;
  EXPECT_EXIT(RequireRoom(OneAt(limbs)), testing::ExitedWithCode(1), ExactText(kMessage));
  EXPECT_EXIT(RequireRoom(OneAt(-limbs)), testing::ExitedWithCode(1), ExactText(kMessage));
}

TEST(SetNumberFromText, TellsNumbersFromOtherTexts)
{
  arith::Mpf number(99.0);
  EXPECT_FALSE(SetNumberFromText(number, "1x"));
  EXPECT_TRUE(IsExactly(99, number));
  EXPECT_TRUE(SetNumberFromText(number, "-25e-2"));
  EXPECT_TRUE(IsExactly(Rational(-1, 4), number));
}

TEST(SetNumberFromText, EndsTheRunForANumberBeyondTheRange)
{
  for (const std::string text :
       {"1e5553000000000000040", "1E-5553000000000000040", "-3@99999999999999999999"}) {
    arith::Mpf number;
    EXPECT_EXIT(SetNumberFromText(number, text.c_str()), testing::ExitedWithCode(1),
                ExactText("#(ERR) Number \"" + text + "\" is out of range\n"));
  }
}

TEST(MakeTermArray, HasRoomForTheTermsUpToTheCount)
{
  EXPECT_EQ(MakeTermArray(34).Size(), 35U);
}

TEST(MakeTermArray, ACountBeyondAllMemoryEndsTheRun)
{
  // 2^31 numbers of 2^30 bits are more than any machine has.
  const auto allocate = [] {
    InstallMemoryLimits();
    const ScopedPrecision precision(mp_bitcnt_t{1} << 30);
    MakeTermArray(INT_MAX);
  };
  EXPECT_EXIT(allocate(), testing::ExitedWithCode(1), ExactText("#(ERR) Out of memory\n"));
}

}  // namespace
}  // namespace varno

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

TEST(RequireRange, LetsAnOrdinaryNumberPass)
{
  RequireRange(arith::Mpf("1e1000000"));
  RequireRange(arith::Mpf(0.0));
}

TEST(RequireRange, EndsTheRunForANumberOutOfRange)
{
  arith::Mpf huge(1.0);
  mpf_mul_2exp(huge, huge, 3'400'000'000'000'000);
  EXPECT_EXIT(RequireRange(huge), testing::ExitedWithCode(1),
              ExactText("#(ERR) A number is out of range: its decimal exponent is beyond "
                        "+-1000000000000000\n"));
}

TEST(SetNumberFromText, TellsNumbersFromOtherTexts)
{
  arith::Mpf number(99.0);
  EXPECT_FALSE(SetNumberFromText(number, "1x"));
  EXPECT_TRUE(IsExactly(99, number));
  EXPECT_TRUE(SetNumberFromText(number, "-25e-2"));
  EXPECT_TRUE(IsExactly(Rational(-1, 4), number));
}

TEST(SetNumberFromText, EndsTheRunForAnExponentBeyondTheRange)
{
  for (const std::string text :
       {"1e1000000000000001", "1E-1000000000000001", "-3@99999999999999999999"}) {
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

// What a later attempt may say about a number that was printed, by hand.

#include "solve/verification/row_number.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr int kDigits = 5;

RowNumber Number(const char* text)
{
  Real value(200);
  mpfr_set_str(value, text, 10, MPFR_RNDN);
  return {value, std::nullopt};
}

RowNumber Zero(long unit, const char* value = "0")
{
  RowNumber zero = Number(value);
  zero.zeroUnit = unit;
  return zero;
}

const RowNumber kUndefined{std::nullopt, std::nullopt};

bool IsRefuted(const RowNumber& before, const RowNumber& now)
{
  return Contradicts(before, now, kDigits);
}

TEST(Contradicts, ANumberThatIsOffByMoreThanAUnit)
{
  // Five digits of 1.2345: printed it may have moved by half a unit, 5e-5, already.
  EXPECT_FALSE(IsRefuted(Number("1.2345"), Number("1.23454")));
  EXPECT_TRUE(IsRefuted(Number("1.2345"), Number("1.23456")));
  EXPECT_TRUE(IsRefuted(Number("1.2345e-90"), Number("-1.2345e-90")));
}

TEST(Contradicts, AZeroThatIsNone)
{
  EXPECT_FALSE(IsRefuted(Zero(-20), Number("9e-21")));
  EXPECT_TRUE(IsRefuted(Zero(-20), Number("2e-20")));
  EXPECT_TRUE(IsRefuted(Zero(-20), Number("-1")));
  EXPECT_FALSE(IsRefuted(Zero(-20), Zero(-30)));
  EXPECT_FALSE(IsRefuted(Number("0"), Zero(-30)));
  EXPECT_TRUE(IsRefuted(Number("0"), Number("1e-300")));
}

TEST(Contradicts, ANumberThatIsZero)
{
  EXPECT_TRUE(IsRefuted(Number("1.2345"), Zero(-20, "1e-25")));
  EXPECT_FALSE(IsRefuted(Number("1.2345e-25"), Zero(-20)));
}

TEST(Contradicts, AValueWhereThereWasNoneAndTheReverse)
{
  EXPECT_FALSE(IsRefuted(kUndefined, kUndefined));
  EXPECT_TRUE(IsRefuted(kUndefined, Number("1")));
  EXPECT_TRUE(IsRefuted(Number("1"), kUndefined));
  EXPECT_TRUE(IsRefuted(kUndefined, Zero(-20)));
}

}  // namespace
}  // namespace varno::solve

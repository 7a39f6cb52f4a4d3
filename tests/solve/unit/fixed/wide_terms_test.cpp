// Terms of settled series: what is stored, and what is left to others.

#include "solve/fixed/wide_terms.h"

#include <vector>

#include <gtest/gtest.h>

#include "tests/solve/support/wide_terms.h"

namespace varno::solve {
namespace {

WideTerms Settled(int n)
{
  WideTerms terms;
  terms.Reserve(n, 2);
  terms.started = terms.inexact = true;
  const std::vector<std::int64_t> others(n, 99);
  terms.Set(0, others.data());
  terms.Set(1, others.data());
  return terms;
}

TEST(WideTerms, TakeTheDigitsOfASumAtItsPlace)
{
  WideTerms terms = Settled(4);
  const std::vector<std::int64_t> digits{0, 5, -6, 7, 8, 9};
  EXPECT_TRUE(terms.SetSettled(0, digits.data(), 6, -1));
  EXPECT_EQ((std::vector<double>{0, 0, 0, 5, -6, 7, 8, 0, 0, 0}), support::RowWithZeros(terms, 0));
  EXPECT_EQ(0, terms.leading[0]);
  EXPECT_TRUE(terms.SetSettled(0, digits.data(), 6, 1));
  EXPECT_EQ((std::vector<double>{0, 0, 0, 0, 0, 5, -6, 0, 0, 0}), support::RowWithZeros(terms, 0));
  EXPECT_EQ(2, terms.leading[0]);
  // What is behind the digits of a short sum is 0.
  EXPECT_TRUE(terms.SetSettled(0, digits.data(), 2, 0));
  EXPECT_EQ((std::vector<double>{0, 0, 0, 0, 5, 0, 0, 0, 0, 0}), support::RowWithZeros(terms, 0));
  EXPECT_FALSE(terms.IsExactZero(0));
}

TEST(WideTerms, AreExactZerosUntilTheyAreSetAgain)
{
  WideTerms terms = Settled(4);
  terms.SetZero(0, true);
  terms.SetZero(1, false);
  EXPECT_TRUE(terms.IsExactZero(0));
  EXPECT_FALSE(terms.IsExactZero(1));
  terms.Raise(terms.exponent + 1, 2);
  EXPECT_TRUE(terms.IsExactZero(0));
  EXPECT_FALSE(terms.IsExactZero(1));
  const std::vector<std::int64_t> digits{0, 0, 0, 1};
  EXPECT_TRUE(terms.SetSettled(0, digits.data(), 4, 0));
  EXPECT_FALSE(terms.IsExactZero(0));
  terms.Raise(terms.exponent + 1, 2);
  EXPECT_FALSE(terms.IsExactZero(0)) << "it has lost its only digit";
}

// A first digit that is not balanced has room for its carry before it.
TEST(WideTerms, TakeACarryOfTheFirstDigit)
{
  WideTerms terms = Settled(4);
  const std::vector<std::int64_t> digits{(std::int64_t{3} << kWideDigitBits) - 2, 7, 8, 9};
  EXPECT_TRUE(terms.SetSettled(0, digits.data(), 4, 1));
  EXPECT_EQ((std::vector<double>{0, 0, 0, 3, -2, 7, 8, 0, 0, 0}), support::RowWithZeros(terms, 0));
  EXPECT_EQ(0, terms.leading[0]);
  EXPECT_TRUE(terms.SetSettled(0, digits.data(), 4, 4));
  EXPECT_EQ((std::vector<double>{0, 0, 0, 0, 0, 0, 3, 0, 0, 0}), support::RowWithZeros(terms, 0));
  EXPECT_EQ(3, terms.leading[0]);
}

TEST(WideTerms, LeaveWhatDoesNotFitToOthers)
{
  WideTerms terms = Settled(4);
  const std::vector<double> before = support::RowWithZeros(terms, 0);
  const std::vector<std::int64_t> zero{0, 0, 0}, digits{0, 5, 6},
      large{std::int64_t{1} << kWideDigitBits, 0, 0};
  EXPECT_FALSE(terms.SetSettled(0, zero.data(), 3, 0));
  EXPECT_FALSE(terms.SetSettled(0, digits.data(), 3, -2)) << "a digit before the first";
  EXPECT_FALSE(terms.SetSettled(0, digits.data(), 3, 3)) << "no digit that shows";
  EXPECT_FALSE(terms.SetSettled(0, large.data(), 3, 0)) << "a digit that is not balanced";
  EXPECT_EQ(before, support::RowWithZeros(terms, 0));
}

void ExpectTilesOfRows(const WideTerms& terms, int count)
{
  for (int k = 0; k < count; ++k) {
    for (int i = 0; i < terms.n; ++i)
      EXPECT_EQ(terms.Row(k)[i], terms.tiles->Tile(0, i)[k] - DigitTiles::kBias) << k << ", " << i;
  }
}

// However a term is set, and when all of them move
TEST(WideTerms, KeepTheirDigitsInTiles)
{
  WideTerms terms = Settled(4);
  terms.KeepTiles();
  ExpectTilesOfRows(terms, 2);
  const std::vector<std::int64_t> digits{1, -2, 3, 4};
  terms.Set(0, digits.data());
  EXPECT_TRUE(terms.SetSettled(1, digits.data(), 4, 2));
  ExpectTilesOfRows(terms, 2);
  EXPECT_EQ(2, terms.tiles->LeastLeading(1));
  terms.Raise(terms.exponent + 1, 2);
  ExpectTilesOfRows(terms, 2);
  terms.Reserve(4, 3);
  terms.SetZero(2, true);
  ExpectTilesOfRows(terms, 3);
}

}  // namespace
}  // namespace varno::solve

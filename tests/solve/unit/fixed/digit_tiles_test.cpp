// Digits of terms by place, and sums of them, against the digits themselves.

#include "solve/fixed/digit_tiles.h"

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr int kDigits = 3;
using Digits = std::array<double, kDigits>;

std::int64_t SumOver(const DigitTiles& tiles, int first, int end, int i)
{
  const auto count = static_cast<std::uint64_t>(end - first);
  return static_cast<std::int64_t>(tiles.SumsBefore(end)[i] - tiles.SumsBefore(first)[i] -
                                   count * DigitTiles::kBiasPattern);
}

DigitTiles Filled(const std::vector<Digits>& terms, const std::vector<int>& leading)
{
  DigitTiles tiles;
  tiles.Reserve(kDigits, static_cast<int>(terms.size()));
  for (std::size_t k = 0; k < terms.size(); ++k)
    tiles.Set(static_cast<int>(k), terms[k].data(), leading[k]);
  return tiles;
}

TEST(DigitTiles, HoldNaturalNumbers)
{
  const DigitTiles tiles = Filled({{0x1p50, -0x1p50, 7}, {0, 0, -1}}, {0, 2});
  const auto low52 = [&](int i, int k) {
    return std::bit_cast<std::uint64_t>(tiles.Tile(0, i)[k]) & ((std::uint64_t{1} << 52) - 1);
  };
  constexpr std::uint64_t kBias = std::uint64_t{1} << 50;
  EXPECT_EQ(2 * kBias, low52(0, 0));
  EXPECT_EQ(0U, low52(1, 0));
  EXPECT_EQ(kBias + 7, low52(2, 0));
  EXPECT_EQ(kBias - 1, low52(2, 1));
  EXPECT_EQ(kBias, low52(kDigits, 1)) << "behind the last digits";
  EXPECT_EQ(tiles.Tile(0, 0) + tiles.Stride(), tiles.Tile(1, 0));
}

TEST(DigitTiles, SumDigitsOverTerms)
{
  const DigitTiles tiles = Filled({{1, -0x1p50, 3}, {5, -0x1p50, -7}, {0, 4, 0x1p50}}, {0, 0, 1});
  EXPECT_EQ(6, SumOver(tiles, 0, 3, 0));
  EXPECT_EQ(-(std::int64_t{1} << 51), SumOver(tiles, 0, 2, 1));
  EXPECT_EQ((std::int64_t{1} << 50) - 7, SumOver(tiles, 1, 3, 2));
  EXPECT_EQ(0, SumOver(tiles, 0, 3, kDigits));
}

// Of the eight from a term on that are there, also of those before the first one
TEST(DigitTiles, KnowTheZerosThatEightTermsBeginWith)
{
  DigitTiles tiles = Filled(std::vector<Digits>(12), {3, 2, 1, 2, 2, 2, 2, 2, 2, 0, 3, 3});
  EXPECT_EQ(3, tiles.LeastLeading(-7));
  EXPECT_EQ(2, tiles.LeastLeading(-6));
  EXPECT_EQ(1, tiles.LeastLeading(-5));
  EXPECT_EQ(1, tiles.LeastLeading(1));
  EXPECT_EQ(0, tiles.LeastLeading(2));
  EXPECT_EQ(0, tiles.LeastLeading(9));
  EXPECT_EQ(3, tiles.LeastLeading(10));
  // The next step begins with term 0: what was before counts no more.
  const Digits none{};
  tiles.Set(0, none.data(), 3);
  EXPECT_EQ(3, tiles.LeastLeading(0));
  tiles.Set(1, none.data(), 2);
  EXPECT_EQ(2, tiles.LeastLeading(0));
  EXPECT_EQ(2, tiles.LeastLeading(1));
}

}  // namespace
}  // namespace varno::solve

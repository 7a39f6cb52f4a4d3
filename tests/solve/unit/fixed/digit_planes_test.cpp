// Digits of terms by place, and sums of them, against the digits themselves.

#include "solve/fixed/digit_planes.h"

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr int kDigits = 3;
using Digits = std::array<double, kDigits>;

std::int64_t SumOver(const DigitPlanes& planes, int first, int end, int i)
{
  const auto count = static_cast<std::uint64_t>(end - first);
  return static_cast<std::int64_t>(planes.SumsBefore(end)[i] - planes.SumsBefore(first)[i] -
                                   count * DigitPlanes::kBiasPattern);
}

DigitPlanes Filled(const std::vector<Digits>& terms, const std::vector<int>& leading)
{
  DigitPlanes planes;
  planes.Reserve(kDigits, static_cast<int>(terms.size()));
  for (std::size_t k = 0; k < terms.size(); ++k)
    planes.Set(static_cast<int>(k), terms[k].data(), leading[k]);
  return planes;
}

TEST(DigitPlanes, HoldNaturalNumbers)
{
  const DigitPlanes planes = Filled({{0x1p50, -0x1p50, 7}, {0, 0, -1}}, {0, 2});
  const auto low52 = [&](int i, int k) {
    return std::bit_cast<std::uint64_t>(planes.Plane(i)[k]) & ((std::uint64_t{1} << 52) - 1);
  };
  constexpr std::uint64_t kBias = std::uint64_t{1} << 50;
  EXPECT_EQ(2 * kBias, low52(0, 0));
  EXPECT_EQ(0U, low52(1, 0));
  EXPECT_EQ(kBias + 7, low52(2, 0));
  EXPECT_EQ(kBias - 1, low52(2, 1));
  EXPECT_EQ(kBias, low52(kDigits, 1)) << "the plane behind the last digits";
  EXPECT_EQ(planes.Plane(0) + planes.Stride(), planes.Plane(1));
}

TEST(DigitPlanes, SumDigitsOverTerms)
{
  const DigitPlanes planes = Filled({{1, -0x1p50, 3}, {5, -0x1p50, -7}, {0, 4, 0x1p50}}, {0, 0, 1});
  EXPECT_EQ(6, SumOver(planes, 0, 3, 0));
  EXPECT_EQ(-(std::int64_t{1} << 51), SumOver(planes, 0, 2, 1));
  EXPECT_EQ((std::int64_t{1} << 50) - 7, SumOver(planes, 1, 3, 2));
  EXPECT_EQ(0, SumOver(planes, 0, 3, kDigits));
}

// Of the eight from a term on that are there, also of those before the first one
TEST(DigitPlanes, KnowTheZerosThatEightTermsBeginWith)
{
  DigitPlanes planes = Filled(std::vector<Digits>(12), {3, 2, 1, 2, 2, 2, 2, 2, 2, 0, 3, 3});
  EXPECT_EQ(3, planes.LeastLeading(-7));
  EXPECT_EQ(2, planes.LeastLeading(-6));
  EXPECT_EQ(1, planes.LeastLeading(-5));
  EXPECT_EQ(1, planes.LeastLeading(1));
  EXPECT_EQ(0, planes.LeastLeading(2));
  EXPECT_EQ(0, planes.LeastLeading(9));
  EXPECT_EQ(3, planes.LeastLeading(10));
  // The next step begins with term 0: what was before counts no more.
  const Digits none{};
  planes.Set(0, none.data(), 3);
  EXPECT_EQ(3, planes.LeastLeading(0));
  planes.Set(1, none.data(), 2);
  EXPECT_EQ(2, planes.LeastLeading(0));
  EXPECT_EQ(2, planes.LeastLeading(1));
}

}  // namespace
}  // namespace varno::solve
